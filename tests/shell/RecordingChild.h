#pragma once
// A document window for the frame's tests: it answers to every command name the frame calls and
// records the calls in order, with their arguments.
#include <QStringList>
#include <QWidget>

class RecordingChild : public QWidget {
    Q_OBJECT

public:
    QStringList Calls;

#define TS_RECORD(name) Q_INVOKABLE void name() { Calls << QStringLiteral(#name); }
#define TS_RECORD_INDEX(name) Q_INVOKABLE void name(int index) { Calls << QStringLiteral(#name "(%1)").arg(index); }
    TS_RECORD(mnuEditUndoAll_Click)
    TS_RECORD(mnuEditUndo_Click)
    TS_RECORD(mnuEditRedo_Click)
    TS_RECORD(mnuEditCut_Click)
    TS_RECORD(mnuEditCopy_Click)
    TS_RECORD(mnuEditPaste_Click)
    TS_RECORD(mnuEditPasteTransparent_Click)
    TS_RECORD_INDEX(Do_mnuEffectsSubClick)
    TS_RECORD(Do_ckbFitInClick)
    TS_RECORD(Do_cmdGlassClick)
    TS_RECORD_INDEX(Do_cmdZoomClick)
    TS_RECORD(Do_cboMagnifyClick)
    TS_RECORD(Do_cboGlassClick)
    TS_RECORD(Notify_BrushSize_FromMDI)
    TS_RECORD(Notify_CustomBrushShape_FromMDI)
    TS_RECORD_INDEX(Do_imgToolsClick)
    TS_RECORD(Notify_BrushStyle_FromMDI)
    TS_RECORD(Notify_PaintBrushTranslucencyPercent)
    TS_RECORD(Notify_SprayDensity)
    TS_RECORD(Notify_SprayTranslucencyPercent)
    TS_RECORD(Do_cmdCustomBrushClick)
    TS_RECORD(Do_cmdCustomPatternClick)
    TS_RECORD_INDEX(Do_cmdStampLoadClick)
    TS_RECORD(Notify_FillPattern_FromMDI)
    TS_RECORD(Notify_LineType_FromMDI)
    TS_RECORD(Notify_RectangleCornerShape_FromMDI)
    TS_RECORD(Notify_OvalEnhancement_FromMDI)
    TS_RECORD(Notify_PolygonOperationType_FromMDI)
    TS_RECORD(Notify_PolygonDrawMethod_FromMDI)
    TS_RECORD(Notify_PolygonSetting_FromMDI)
    TS_RECORD(Notify_ColorToUse_FromMDI)
    TS_RECORD(Notify_BezierFillColor_FromMDI)
    TS_RECORD(Notify_BezierOp_FromMDI)
    TS_RECORD(do_cmdPalette256Click)
    TS_RECORD_INDEX(Do_cmdRegionOperation)
    TS_RECORD(Do_imgUpperLeftClick)
    TS_RECORD(Do_imgLowerRightClick)
    TS_RECORD(Do_imgPanoramicClick)
    TS_RECORD(Notify_SetScrollOp_FromMDI)
    TS_RECORD(UpdateAllowableMenusForScreenMode)
    TS_RECORD(Do_UpdateZoomButtons)
    TS_RECORD(Do_UpdateGlassButton)
    TS_RECORD(Do_UpdateModeChange)
    TS_RECORD(Do_cmdFileNewClick)
    TS_RECORD(Do_cmdFileOpenClick)
    TS_RECORD(Do_cmdFileBrowserClick)
#undef TS_RECORD
#undef TS_RECORD_INDEX

    Q_INVOKABLE void LoadOpenFile(const QString& path, int mode)
    {
        Calls << QStringLiteral("LoadOpenFile(%1, %2)").arg(path).arg(mode);
    }

    // The calls after the colour notifications that every new window receives.
    QStringList CommandCalls() const
    {
        QStringList calls = Calls;
        calls.removeAll(QStringLiteral("Notify_ColorToUse_FromMDI"));
        calls.removeAll(QStringLiteral("Notify_BezierFillColor_FromMDI"));
        return calls;
    }
};

// A document window that answers to nothing: every call on it is a fault.
class MuteChild : public QWidget {
    Q_OBJECT
};

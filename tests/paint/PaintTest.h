#pragma once
// A frame with real paint documents for the document's tests: fresh application and temporary
// folders, scripted message boxes and file dialogs, and mouse strokes on a document's canvas.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QToolButton>

#include "PictureBox.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsTsDialog.h"
#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

inline const QString Suite = QStringLiteral(TESSAVO_TESTDATA "/bmpsuite/g/");

class PaintTest : public ::testing::Test {
protected:
    QTemporaryDir AppDir, TempDir, Files;
    basMsgBox::MsgBoxScript Boxes;
    TsDialogScript Dialogs;
    std::unique_ptr<frmTsMainPro> Frame;

    void SetUp() override
    {
        basTsMainPro::SetAppFolder(AppDir.path());
        basTsMainPro::TempFolder = TempDir.path() + "/";
        basTsMainPro::ResetDocSlots();
        basTsMainPro::ColorFirst = 0x0000FF;
        frmTsPaint::Register();
        Frame = std::make_unique<frmTsMainPro>();
        Frame->resize(1000, 700);
        Frame->show();
        QApplication::processEvents();
    }
    void TearDown() override
    {
        // Whatever is still open closes without questions.
        for (basTsMainPro::DocSlot& Slot : basTsMainPro::DocSlots())
            Slot.Dirty = false;
        Frame->close();
        Frame.reset();
        basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPaint"), nullptr);
        basTsMainPro::SetAppFolder(QString());
    }

    frmTsPaint* OpenThroughMenu(const QString& Path)
    {
        Dialogs.Answer(Path);
        Frame->mnuFileOpen->trigger();
        for (int I = 0; I < 5; ++I)
            QApplication::processEvents();
        return qobject_cast<frmTsPaint*>(Frame->ActiveChild());
    }

    // A drag with the left button, from one picture point to another (zoom 1, no scroll).
    void Stroke(frmTsPaint* Doc, QPoint From, QPoint To, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        QWidget* Box = Doc->Canvas->picDisp;
        auto Send = [Box, Mods](QEvent::Type Type, QPoint P, Qt::MouseButton B, Qt::MouseButtons Bs) {
            QMouseEvent E(Type, QPointF(P), Box->mapToGlobal(QPointF(P)), B, Bs, Mods);
            QApplication::sendEvent(Box, &E);
        };
        Send(QEvent::MouseButtonPress, From, Qt::LeftButton, Qt::LeftButton);
        Send(QEvent::MouseMove, (From + To) / 2, Qt::NoButton, Qt::LeftButton);
        Send(QEvent::MouseMove, To, Qt::NoButton, Qt::LeftButton);
        Send(QEvent::MouseButtonRelease, To, Qt::LeftButton, Qt::NoButton);
        QApplication::processEvents();
    }

    static std::vector<uint32_t> Pixels(clsDIB& Dib)
    {
        std::vector<uint32_t> All;
        for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
            for (int X = 0; X < Dib.DIBWidth(); ++X)
                All.push_back(Dib.DIBhDC()->GetPixel(X, Y) & 0xFFFFFF);
        return All;
    }
};


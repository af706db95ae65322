#pragma once
// What the frame's tests share: a settings file in a fresh application folder, the recording
// document window registered as the paint document, and a frame made on that folder.
#include "RecordingChild.h"
#include "SettingsFileTest.h"

#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"

#include <QMdiArea>
#include <QMdiSubWindow>

#include <memory>

class FrameTest : public SettingsFileTest {
protected:
    void SetUp() override
    {
        basTsMainPro::SetAppFolder(Dir.path());
        basTsMainPro::ResetDocSlots();
        basTsMainPro::ColorFirst = 0x000000;
        basTsMainPro::ColorSecond = 0xFFFFFF;
        basTsMainPro::ColorBezierFill = 0x0000FF;
        basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPaint"), [] { return new RecordingChild; });
    }

    void TearDown() override
    {
        if (Frame) {
            Frame->close();
            Frame.reset();
        }
        basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPaint"), nullptr);
        basTsMainPro::SetAppFolder(QString());
    }

    frmTsMainPro& MakeFrame(const QString& commandLine = QString())
    {
        Frame = std::make_unique<frmTsMainPro>(commandLine);
        return *Frame;
    }

    // A document window as File Open makes one, for the dispatch to reach.
    RecordingChild* OpenChild(const QString& caption = QStringLiteral("Untitled:1"))
    {
        basTsMainPro::DocOpenMode = basTsMainPro::DocOpenFromFileNew;
        auto* child = static_cast<RecordingChild*>(
            Frame->ShowDocumentWindow(basTsMainPro::NextFreeDocSlot(), caption));
        child->Calls.clear();
        return child;
    }

    template <typename T>
    T* Control(const QString& name)
    {
        T* control = Frame->findChild<T*>(name);
        EXPECT_NE(control, nullptr) << name.toStdString();
        return control;
    }

    basMsgBox::MsgBoxScript Boxes;
    std::unique_ptr<frmTsMainPro> Frame;
};

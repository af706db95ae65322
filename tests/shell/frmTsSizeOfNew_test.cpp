// The size dialog of a new picture or animation, driven through its controls.
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "frmTsSizeOfNew.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <memory>

namespace {

class frmTsSizeOfNewTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        basTsMainPro::NewImageWidth = 1234;
        basTsMainPro::NewImageHeight = 567;
    }

    frmTsSizeOfNew& Open(bool forAnimation)
    {
        Dialog = std::make_unique<frmTsSizeOfNew>(forAnimation);
        Dialog->show();
        QApplication::setActiveWindow(Dialog.get());
        EXPECT_TRUE(QTest::qWaitForWindowActive(Dialog.get()));
        return *Dialog;
    }

    template <typename T>
    T* Control(const QString& name)
    {
        T* control = Dialog->findChild<T*>(name);
        EXPECT_NE(control, nullptr) << name.toStdString();
        return control;
    }

    // Clicks near the left edge: an option answers only on its circle and caption.
    void Click(const QString& name)
    {
        QAbstractButton* button = Control<QAbstractButton>(name);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }

    // Types into a field as a user does and leaves it with Tab.
    void TypeAndLeave(const QString& name, const QString& text)
    {
        QLineEdit* field = Control<QLineEdit>(name);
        field->setFocus();
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Tab);
    }

    basMsgBox::MsgBoxScript Boxes;
    std::unique_ptr<frmTsSizeOfNew> Dialog;
};

QString Threshold(const char* field, int width, int height)
{
    return QStringLiteral("Value entered in %1 will result in %2 x %3 exceeding the threshhold.")
        .arg(QLatin1String(field))
        .arg(width)
        .arg(height);
}

const QString RatherLarge = QStringLiteral("Value entered in width and/or height appear to be rather large.  Sure?");

} // namespace

TEST_F(frmTsSizeOfNewTest, EachPresetGivesItsSize)
{
    const struct {
        bool Animation;
        const char* Option; // null: as the dialog starts
        int Width;
        int Height;
    } cases[] = {
        {false, nullptr, 640, 480},           {false, "optImageSize_0", 320, 200},
        {false, "optImageSize_2", 800, 600},  {false, "optImageSize_3", 1024, 768},
        {false, "optImageSize_4", 680, 860},  {true, "optGIFaniSize_0", 50, 50},
        {true, "optGIFaniSize_1", 75, 75},    {true, "optGIFaniSize_2", 100, 100},
        {true, "optGIFaniSize_3", 120, 120},  {true, "optGIFaniSize_4", 240, 240},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Option ? c.Option : "start");
        Open(c.Animation);
        EXPECT_EQ(Control<QGroupBox>(QStringLiteral("fraImageSize"))->isVisible(), !c.Animation);
        EXPECT_EQ(Control<QGroupBox>(QStringLiteral("fraGIFaniSize"))->isVisible(), c.Animation);
        if (c.Option != nullptr)
            Click(QString::fromLatin1(c.Option));
        Click(QStringLiteral("cmdOK"));
        EXPECT_EQ(Dialog->result(), QDialog::Accepted);
        EXPECT_EQ(basTsMainPro::NewImageWidth, c.Width);
        EXPECT_EQ(basTsMainPro::NewImageHeight, c.Height);
    }
    EXPECT_TRUE(Boxes.Calls().empty());
    EXPECT_EQ(Dialog->findChild<QRadioButton*>(QStringLiteral("optGIFaniSize_5")), nullptr);
}

TEST_F(frmTsSizeOfNewTest, LeavingACustomFieldWarnsAndPutsBackTooLargeValues)
{
    const struct {
        bool Animation;
        const char* Field;
        const char* Typed;
        const char* Kept;
        QString Message; // empty: none
    } cases[] = {
        {false, "txbImageWidth", "5000", "5000", QString()},
        {false, "txbImageHeight", "12156", "10000", Threshold("height", 1234, 12156)},
        {false, "txbImageWidth", "26455", "10000", QString()}, // 14999985 pixels
        {false, "txbImageWidth", "26456", "10000", Threshold("width", 26456, 567)},
        {false, "txbImageWidth", "0", "1", QString()},
        {false, "txbImageWidth", "12a3", "123", QString()}, // digits only
        {true, "txbGIFaniWidth", "5000", "1000", QString()},
        {true, "txbGIFaniHeight", "0", "1", QString()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Typed);
        Boxes.Clear();
        Open(c.Animation);
        Click(QString::fromLatin1(c.Animation ? "optGIFaniSize_6" : "optImageSize_5"));
        TypeAndLeave(QString::fromLatin1(c.Field), QString::fromLatin1(c.Typed));
        EXPECT_EQ(Control<QLineEdit>(QString::fromLatin1(c.Field))->text(), QString::fromLatin1(c.Kept));
        if (c.Message.isEmpty()) {
            EXPECT_TRUE(Boxes.Calls().empty());
        } else {
            ASSERT_EQ(Boxes.Calls().size(), 1u);
            EXPECT_EQ(Boxes.Calls()[0].Text, c.Message);
            EXPECT_EQ(Boxes.Calls()[0].Icon, basMsgBox::MsgBoxIcon::Exclamation);
        }
    }
}

TEST_F(frmTsSizeOfNewTest, CustomFieldsStartAtTheCurrentSizeAndLargeOnesAskFirst)
{
    Open(false);
    EXPECT_EQ(Control<QLineEdit>(QStringLiteral("txbImageWidth"))->text(), QStringLiteral("1234"));
    EXPECT_EQ(Control<QLineEdit>(QStringLiteral("txbImageHeight"))->text(), QStringLiteral("567"));
    EXPECT_FALSE(Control<QLineEdit>(QStringLiteral("txbImageWidth"))->isEnabled());
    Click(QStringLiteral("optImageSize_5"));
    EXPECT_TRUE(Control<QLineEdit>(QStringLiteral("txbImageWidth"))->hasFocus());

    // No keeps the dialog open and writes nothing; Yes takes the size.
    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    Click(QStringLiteral("cmdOK"));
    ASSERT_EQ(Boxes.Texts(), std::vector<QString>{RatherLarge});
    EXPECT_EQ(Boxes.Calls()[0].Buttons, basMsgBox::MsgBoxButtons::YesNo);
    EXPECT_EQ(Boxes.Calls()[0].Icon, basMsgBox::MsgBoxIcon::Question);
    EXPECT_TRUE(Dialog->isVisible());
    EXPECT_EQ(basTsMainPro::NewImageWidth, 1234);

    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
    Click(QStringLiteral("cmdOK"));
    EXPECT_EQ(Dialog->result(), QDialog::Accepted);
    EXPECT_EQ(basTsMainPro::NewImageWidth, 1234);
    EXPECT_EQ(basTsMainPro::NewImageHeight, 567);

    // Within 800 x 600 nothing is asked; Enter is OK.
    Boxes.Clear();
    Open(false);
    Click(QStringLiteral("optImageSize_5"));
    TypeAndLeave(QStringLiteral("txbImageWidth"), QStringLiteral("800"));
    TypeAndLeave(QStringLiteral("txbImageHeight"), QStringLiteral("600"));
    QTest::keyClick(Dialog.get(), Qt::Key_Return);
    EXPECT_EQ(Dialog->result(), QDialog::Accepted);
    EXPECT_TRUE(Boxes.Calls().empty());
    EXPECT_EQ(basTsMainPro::NewImageWidth, 800);
    EXPECT_EQ(basTsMainPro::NewImageHeight, 600);
}

TEST_F(frmTsSizeOfNewTest, CancelAndEscapeChangeNothingAndCheckNothing)
{
    for (const bool escape : {false, true}) {
        Open(false);
        Click(QStringLiteral("optImageSize_5"));
        QLineEdit* width = Control<QLineEdit>(QStringLiteral("txbImageWidth"));
        QTest::keyClick(width, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(width, QStringLiteral("30000")); // over the threshold, never left
        ASSERT_EQ(width->text(), QStringLiteral("30000"));
        if (escape)
            QTest::keyClick(Dialog.get(), Qt::Key_Escape);
        else
            Click(QStringLiteral("cmdCancel"));
        EXPECT_EQ(Dialog->result(), QDialog::Rejected);
        EXPECT_FALSE(Dialog->isVisible());
        EXPECT_EQ(basTsMainPro::NewImageWidth, 1234);
        EXPECT_EQ(basTsMainPro::NewImageHeight, 567);
    }
    EXPECT_TRUE(Boxes.Calls().empty());
}

// The file dialogs: the filter handed to the platform, the scripted answers, the preview setting
// and the preview panel of a real dialog.
#include "SettingsFileTest.h"

#include "basTsMainPro.h"
#include "clsTsDialog.h"

#include <QApplication>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QTimer>

TEST(clsTsDialogTest, PlatformFilterTurnsPairsIntoNameFilters)
{
    const struct {
        const char* Filter;
        const char* Expected;
    } cases[] = {
        {"", ""},
        {"Bitmap (*.bmp)|*.bmp|", "Bitmap (*.bmp)"},
        {"All pictures|*.bmp;*.gif;*.png", "All pictures (*.bmp *.gif *.png)"},
        // Patterns already shown in the description are rewritten in place, not repeated.
        {"All Pictures (*.bmp;*.gif)|*.bmp;*.gif|(*.jpg, *.jpeg)|*.jpg;*.jpeg|",
         "All Pictures (*.bmp *.gif);;(*.jpg *.jpeg)"},
        {"Bitmap files (*.bmp)|*.bmp|(*.*)|*.*|", "Bitmap files (*.bmp);;(*)"},
        // Words in parentheses are not patterns.
        {"Bitmap (Windows)|*.bmp|", "Bitmap (Windows) (*.bmp)"},
        {"Palette|*.pal; *.PAL |Text files|", "Palette (*.pal *.PAL);;Text files (*)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(clsTsDialog::PlatformFilter(QString::fromLatin1(c.Filter)), QString::fromLatin1(c.Expected))
            << c.Filter;
    }
}

TEST(clsTsDialogTest, ScriptAnswersAndRecordsEveryDialog)
{
    TsDialogScript script;
    script.Answer(QStringLiteral("/pictures/cat.gif"));
    script.Answer(QString());

    clsTsDialog dialog;
    dialog.Filter = QStringLiteral("(*.gif)|*.gif|");
    dialog.InitDir = QStringLiteral("/pictures");
    dialog.DialogTitle = QStringLiteral("Open");
    dialog.ShowPreview = false;
    EXPECT_TRUE(dialog.ShowOpen());
    EXPECT_EQ(dialog.FileName, QStringLiteral("/pictures/cat.gif"));

    dialog.DialogTitle = QStringLiteral("Save As");
    dialog.FileName = QStringLiteral("dog.gif");
    EXPECT_FALSE(dialog.ShowSave()); // an empty answer is a cancel
    EXPECT_TRUE(dialog.FileName.isEmpty());
    EXPECT_FALSE(dialog.ShowFolder()); // so is an empty queue

    const std::vector<TsDialogCall>& calls = script.Calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].Kind, TsDialogKind::Open);
    EXPECT_EQ(calls[0].Filter, QStringLiteral("(*.gif)|*.gif|"));
    EXPECT_EQ(calls[0].InitDir, QStringLiteral("/pictures"));
    EXPECT_EQ(calls[0].DialogTitle, QStringLiteral("Open"));
    EXPECT_FALSE(calls[0].ShowPreview);
    EXPECT_EQ(calls[1].Kind, TsDialogKind::Save);
    EXPECT_EQ(calls[1].DialogTitle, QStringLiteral("Save As"));
    EXPECT_EQ(calls[1].FileName, QStringLiteral("dog.gif"));
    EXPECT_EQ(calls[2].Kind, TsDialogKind::Folder);
}

class clsTsDialogFileTest : public SettingsFileTest {
protected:
    void SetUp() override { basTsMainPro::SetAppFolder(Dir.path()); }
    void TearDown() override { basTsMainPro::SetAppFolder(QString()); }

    // Runs `inside` on the dialog once it is up, then lets the dialog end as `inside` left it.
    template <typename Inside>
    static void WhenShown(Inside inside)
    {
        QTimer::singleShot(0, [inside] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            inside(*dialog);
        });
    }
};

TEST_F(clsTsDialogFileTest, ShowPreviewFollowsTheSettingsFile)
{
    const struct {
        const char* Ini;
        bool Expected;
    } cases[] = {
        {nullptr, true},
        {"[DialogShowPreview]\r\nShowPreview=0\r\n", false},
        {"[DialogShowPreview]\r\nShowPreview=-1\r\n", true},
        {"[DialogShowPreview]\r\nShowPreview=1\r\n", false},
        {"[DialogShowPreview]\r\nShowPreview=\r\n", true},
    };
    for (const auto& c : cases) {
        QFile::remove(Ini);
        if (c.Ini != nullptr)
            WriteFile(Ini, c.Ini);
        EXPECT_EQ(clsTsDialog().ShowPreview, c.Expected) << (c.Ini ? c.Ini : "no settings file");
    }
}

TEST_F(clsTsDialogFileTest, OpenDialogPreviewsThePictureAndReportsTheChosenFilter)
{
    const QString picture = Dir.filePath(QStringLiteral("wide.png"));
    QImage image(300, 200, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(picture));

    clsTsDialog dialog;
    dialog.ShowPreview = true;
    dialog.Filter = QStringLiteral("Bitmap (*.bmp)|*.bmp|PNG (*.png)|*.png|");
    dialog.FilterIndex = 2;
    dialog.InitDir = Dir.path();
    QString filterShown;
    QString sizeShown;
    QSize thumbnail;
    WhenShown([&](QFileDialog& shown) {
        filterShown = shown.selectedNameFilter();
        emit shown.currentChanged(picture);
        if (auto* size = shown.findChild<QLabel*>(QStringLiteral("lblPreviewSize")))
            sizeShown = size->text();
        if (auto* box = shown.findChild<QLabel*>(QStringLiteral("picPreview")))
            thumbnail = box->pixmap().size();
        shown.selectFile(picture);
        static_cast<QDialog&>(shown).accept(); // as the Open button does
    });
    ASSERT_TRUE(dialog.ShowOpen());
    EXPECT_EQ(filterShown, QStringLiteral("PNG (*.png)"));
    EXPECT_EQ(sizeShown, QStringLiteral("300 x 200"));
    EXPECT_EQ(thumbnail.width(), 160); // scaled while decoding, aspect kept
    EXPECT_LT(thumbnail.height(), 160);
    EXPECT_EQ(dialog.FileName, picture);
    EXPECT_EQ(dialog.FilterIndex, 2);

    // Without the preview there is no panel; a cancel leaves no file name.
    dialog.ShowPreview = false;
    bool hadPanel = true;
    WhenShown([&](QFileDialog& shown) {
        hadPanel = shown.findChild<QWidget*>(QStringLiteral("fraPreview")) != nullptr;
        shown.selectNameFilter(shown.nameFilters().constFirst());
        shown.reject();
    });
    EXPECT_FALSE(dialog.ShowOpen());
    EXPECT_FALSE(hadPanel);
    EXPECT_TRUE(dialog.FileName.isEmpty());
    EXPECT_EQ(dialog.FilterIndex, 2); // only an accepted dialog reports its filter
}

// The open, save and folder dialogs on QFileDialog, with the picture preview beside the file list.
#include "clsTsDialog.h"

#include "basSettings.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QImageReader>
#include <QLabel>
#include <QRegularExpression>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

TsDialogScript*& ActiveScript()
{
    static TsDialogScript* script = nullptr;
    return script;
}

// The patterns of one filter entry, as the platform dialog wants them: space separated. "*.*"
// means every file here, extension or not.
QStringList PatternList(const QString& patterns)
{
    QStringList list;
    for (QString pattern : patterns.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        pattern = pattern.trimmed();
        if (pattern == QLatin1String("*.*"))
            pattern = QStringLiteral("*");
        if (!pattern.isEmpty() && !list.contains(pattern))
            list.append(pattern);
    }
    if (list.isEmpty())
        list.append(QStringLiteral("*"));
    return list;
}

// True when the text in the description's closing parentheses is a list of wildcards, such as
// "*.jpg, *.jpeg", rather than words ("Bitmap (Windows)").
bool IsPatternGroup(const QString& group)
{
    const QStringList tokens = group.split(QRegularExpression(QStringLiteral("[;,\\s]+")), Qt::SkipEmptyParts);
    if (tokens.isEmpty())
        return false;
    for (const QString& token : tokens) {
        if (!token.contains(QLatin1Char('*')) && !token.contains(QLatin1Char('?')))
            return false;
    }
    return true;
}

QString PlatformEntry(QString description, const QString& patterns)
{
    const QString group = QLatin1Char('(') + PatternList(patterns).join(QLatin1Char(' ')) + QLatin1Char(')');
    description = description.trimmed();
    // The platform dialog takes its patterns from the last parentheses, so a description that
    // already shows them gets them rewritten in place instead of repeated.
    static const QRegularExpression trailingGroup(QStringLiteral("\\(([^()]*)\\)$"));
    const QRegularExpressionMatch match = trailingGroup.match(description);
    if (match.hasMatch() && IsPatternGroup(match.captured(1)))
        description.truncate(match.capturedStart());
    description = description.trimmed();
    return description.isEmpty() ? group : description + QLatin1Char(' ') + group;
}

// The panel beside the file list: a thumbnail of the picture under the cursor and its size.
class PreviewPanel : public QWidget {
public:
    static constexpr int BoxSize = 160;

    explicit PreviewPanel(QWidget* parent) : QWidget(parent)
    {
        setObjectName(QStringLiteral("fraPreview"));
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(6, 0, 0, 0);
        Picture = new QLabel(this);
        Picture->setObjectName(QStringLiteral("picPreview"));
        Picture->setFixedSize(BoxSize + 4, BoxSize + 4);
        Picture->setFrameShape(QFrame::StyledPanel);
        Picture->setAlignment(Qt::AlignCenter);
        SizeText = new QLabel(this);
        SizeText->setObjectName(QStringLiteral("lblPreviewSize"));
        SizeText->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        layout->addWidget(Picture);
        layout->addWidget(SizeText);
        layout->addStretch(1);
    }

    void ShowFile(const QString& path)
    {
        Picture->clear();
        SizeText->clear();
        if (!QFileInfo(path).isFile())
            return;
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (!reader.canRead()) {
            SizeText->setText(QCoreApplication::translate("clsTsDialog", "No preview"));
            return;
        }
        // Decoding straight to the thumbnail size keeps large photographs quick.
        if (size.isValid() && (size.width() > BoxSize || size.height() > BoxSize))
            reader.setScaledSize(size.scaled(BoxSize, BoxSize, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
        const QImage image = reader.read();
        if (image.isNull()) {
            SizeText->setText(QCoreApplication::translate("clsTsDialog", "No preview"));
            return;
        }
        Picture->setPixmap(QPixmap::fromImage(image));
        const QSize shown = size.isValid() ? size : image.size();
        SizeText->setText(QStringLiteral("%1 x %2").arg(shown.width()).arg(shown.height()));
    }

private:
    QLabel* Picture = nullptr;
    QLabel* SizeText = nullptr;
};

void AddPreview(QFileDialog& dialog)
{
    dialog.setOption(QFileDialog::DontUseNativeDialog, true);
    auto* panel = new PreviewPanel(&dialog);
    if (auto* splitter = dialog.findChild<QSplitter*>(QStringLiteral("splitter"))) {
        splitter->addWidget(panel);
        splitter->setCollapsible(splitter->indexOf(panel), false);
    } else if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
        grid->addWidget(panel, 1, grid->columnCount(), 1, 1);
    }
    QObject::connect(&dialog, &QFileDialog::currentChanged, panel, &PreviewPanel::ShowFile);
    // Room for the list beside the panel.
    dialog.resize(dialog.sizeHint().expandedTo(QSize(760, 440)));
}

void SelectFilter(QFileDialog& dialog, int filterIndex)
{
    const QStringList filters = dialog.nameFilters();
    if (filterIndex >= 1 && filterIndex <= filters.size())
        dialog.selectNameFilter(filters[filterIndex - 1]);
}

int ChosenFilterIndex(const QFileDialog& dialog, int fallback)
{
    const qsizetype index = dialog.nameFilters().indexOf(dialog.selectedNameFilter());
    return index >= 0 ? static_cast<int>(index) + 1 : fallback;
}

// The extension a save gets when the user types a bare name: the first pattern of the chosen
// filter, when it names one plain extension ("*.bmp").
QString SuffixOfFilter(const QString& nameFilter)
{
    static const QRegularExpression plain(QStringLiteral("\\(\\*\\.([A-Za-z0-9]+)[ )]"));
    const QRegularExpressionMatch match = plain.match(nameFilter);
    return match.hasMatch() ? match.captured(1) : QString();
}

} // namespace

TsDialogScript::TsDialogScript() : Previous(ActiveScript())
{
    ActiveScript() = this;
}

TsDialogScript::~TsDialogScript()
{
    ActiveScript() = Previous;
}

bool TsDialogScript::Take(const TsDialogCall& call, QString& answer)
{
    Recorded.push_back(call);
    answer.clear();
    if (!Answers.empty()) {
        answer = Answers.front();
        Answers.pop_front();
    }
    return !answer.isEmpty();
}

clsTsDialog::clsTsDialog() : ShowPreview(basSettings::ReadShowPreview(basSettings::SettingsFilePath())) {}

QString clsTsDialog::PlatformFilter(const QString& filter)
{
    QStringList parts = filter.split(QLatin1Char('|'));
    if (!parts.isEmpty() && parts.last().trimmed().isEmpty())
        parts.removeLast();
    QStringList entries;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const QString patterns = i + 1 < parts.size() ? parts[i + 1] : QString();
        if (parts[i].trimmed().isEmpty() && patterns.trimmed().isEmpty())
            continue;
        entries.append(PlatformEntry(parts[i], patterns));
    }
    return entries.join(QStringLiteral(";;"));
}

namespace {

// Runs a scripted answer in place of the dialog; false when no script is installed.
bool Scripted(TsDialogKind kind, const clsTsDialog& dialog, QString& answer, bool& accepted)
{
    TsDialogScript* script = ActiveScript();
    if (script == nullptr)
        return false;
    TsDialogCall call;
    call.Kind = kind;
    call.Filter = dialog.Filter;
    call.InitDir = dialog.InitDir;
    call.DialogTitle = dialog.DialogTitle;
    call.FileName = dialog.FileName;
    call.ShowPreview = dialog.ShowPreview;
    accepted = script->Take(call, answer);
    return true;
}

// What the open and save dialogs share: the preview panel and the filter chosen at the start.
void PrepareFileDialog(QFileDialog& dialog, bool showPreview, int filterIndex)
{
    if (showPreview)
        AddPreview(dialog);
    SelectFilter(dialog, filterIndex);
}

// Shows the dialog; on OK gives the chosen file and the filter that was chosen with it.
bool RunFileDialog(QFileDialog& dialog, QString& answer, int& filterIndex)
{
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    answer = dialog.selectedFiles().constFirst();
    filterIndex = ChosenFilterIndex(dialog, filterIndex);
    return true;
}

} // namespace

bool clsTsDialog::ShowOpen(QWidget* parent)
{
    QString answer;
    bool accepted = false;
    if (!Scripted(TsDialogKind::Open, *this, answer, accepted)) {
        QFileDialog dialog(parent, DialogTitle, InitDir, PlatformFilter(Filter));
        dialog.setObjectName(QStringLiteral("dlgOpen"));
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
        dialog.setFileMode(QFileDialog::ExistingFile);
        PrepareFileDialog(dialog, ShowPreview, FilterIndex);
        accepted = RunFileDialog(dialog, answer, FilterIndex);
    }
    FileName = accepted ? answer : QString();
    return accepted;
}

bool clsTsDialog::ShowSave(QWidget* parent)
{
    QString answer;
    bool accepted = false;
    if (!Scripted(TsDialogKind::Save, *this, answer, accepted)) {
        QFileDialog dialog(parent, DialogTitle, InitDir, PlatformFilter(Filter));
        dialog.setObjectName(QStringLiteral("dlgSave"));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        PrepareFileDialog(dialog, ShowPreview, FilterIndex);
        dialog.setDefaultSuffix(SuffixOfFilter(dialog.selectedNameFilter()));
        QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog,
                         [&dialog](const QString& chosen) { dialog.setDefaultSuffix(SuffixOfFilter(chosen)); });
        if (!FileName.isEmpty())
            dialog.selectFile(FileName);
        accepted = RunFileDialog(dialog, answer, FilterIndex);
    }
    FileName = accepted ? answer : QString();
    return accepted;
}

bool clsTsDialog::ShowFolder(QWidget* parent)
{
    QString answer;
    bool accepted = false;
    if (!Scripted(TsDialogKind::Folder, *this, answer, accepted)) {
        QFileDialog dialog(parent, DialogTitle, InitDir);
        dialog.setObjectName(QStringLiteral("dlgFolder"));
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly, true);
        accepted = dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty();
        if (accepted)
            answer = dialog.selectedFiles().constFirst();
    }
    FileName = accepted ? answer : QString();
    return accepted;
}

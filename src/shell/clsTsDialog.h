#pragma once

// The open, save and folder dialogs of the program. A caller fills in the filter, the initial
// folder and the title, shows the dialog and reads FileName. The file dialogs show a preview of
// the picture under the cursor while "DialogShowPreview" says so. Tests install a TsDialogScript,
// which answers in place of the user and records what was asked.

#include <QString>

#include <deque>
#include <vector>

class QWidget;

class clsTsDialog {
public:
    clsTsDialog();

    // Pairs of description and patterns, separated by "|":
    // "Bitmap (*.bmp)|*.bmp|All pictures|*.bmp;*.gif;*.png". A trailing "|" is allowed.
    QString Filter;
    int FilterIndex = 1; // 1-based, as chosen (in) and as left by the user (out)
    QString InitDir;
    QString DialogTitle;
    QString FileName; // the initial name for a save; the chosen path afterwards
    bool ShowPreview = true; // read from the settings file when the object is made

    bool ShowOpen(QWidget* parent = nullptr);
    bool ShowSave(QWidget* parent = nullptr);
    bool ShowFolder(QWidget* parent = nullptr); // FileName is the chosen folder

    // The filter in the form the platform dialog takes: "Bitmap (*.bmp);;All pictures (...)".
    static QString PlatformFilter(const QString& filter);
};

enum class TsDialogKind { Open, Save, Folder };

struct TsDialogCall {
    TsDialogKind Kind = TsDialogKind::Open;
    QString Filter;
    QString InitDir;
    QString DialogTitle;
    QString FileName;
    bool ShowPreview = false;
};

// While an object of this class lives, dialogs are answered from its queue (an empty answer is a
// cancel; an empty queue cancels too) and recorded instead of shown.
class TsDialogScript {
public:
    TsDialogScript();
    ~TsDialogScript();
    TsDialogScript(const TsDialogScript&) = delete;
    TsDialogScript& operator=(const TsDialogScript&) = delete;

    void Answer(const QString& path) { Answers.push_back(path); }
    const std::vector<TsDialogCall>& Calls() const { return Recorded; }
    // Records `call` and gives the next answer; false for a cancel.
    bool Take(const TsDialogCall& call, QString& answer);

private:
    std::deque<QString> Answers;
    std::vector<TsDialogCall> Recorded;
    TsDialogScript* Previous = nullptr;
};

#pragma once

// Every message box of the program goes through MsgBox, titled with the product's name, and every
// one-line question through InputBox. Tests install a MsgBoxScript, which answers instead of the
// user and keeps the exact words that were shown.

#include <QString>

#include <deque>
#include <vector>

namespace basMsgBox {

enum class MsgBoxButtons { OK, OKCancel, YesNo, YesNoCancel };
enum class MsgBoxIcon { None, Information, Exclamation, Question, Critical };
enum class MsgBoxResult { OK, Cancel, Yes, No };

MsgBoxResult MsgBox(const QString& text, MsgBoxButtons buttons = MsgBoxButtons::OK,
                    MsgBoxIcon icon = MsgBoxIcon::None);

// Asks for one line of text; `accepted` is false when the user cancelled. Returns the text.
QString InputBox(const QString& prompt, const QString& title, const QString& defaultText,
                 bool* accepted = nullptr);

struct MsgBoxCall {
    QString Text;                 // for InputBox: the prompt
    QString Title;                // the product title, or the InputBox's own title
    QString DefaultText;          // InputBox only
    MsgBoxButtons Buttons = MsgBoxButtons::OK;
    MsgBoxIcon Icon = MsgBoxIcon::None;
    bool IsInputBox = false;
};

// While an object of this class lives, boxes are answered from its queue (then with the default
// answer: OK, Yes for YesNo boxes, the default text for InputBox) and recorded instead of shown.
class MsgBoxScript {
public:
    MsgBoxScript();
    ~MsgBoxScript();
    MsgBoxScript(const MsgBoxScript&) = delete;
    MsgBoxScript& operator=(const MsgBoxScript&) = delete;

    void Answer(MsgBoxResult result) { Answers.push_back(result); }
    void AnswerText(const QString& text) { TextAnswers.push_back(text); }
    const std::vector<MsgBoxCall>& Calls() const { return Recorded; }
    void Clear() { Recorded.clear(); }
    // The texts shown, in order.
    std::vector<QString> Texts() const;

private:
    friend MsgBoxResult MsgBox(const QString&, MsgBoxButtons, MsgBoxIcon);
    friend QString InputBox(const QString&, const QString&, const QString&, bool*);
    std::deque<MsgBoxResult> Answers;
    std::deque<QString> TextAnswers;
    std::vector<MsgBoxCall> Recorded;
    MsgBoxScript* Previous = nullptr;
};

} // namespace basMsgBox

#include "basMsgBox.h"

#include "basTsMainPro.h"

#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>

namespace basMsgBox {

namespace {

MsgBoxScript*& ActiveScript()
{
    static MsgBoxScript* script = nullptr;
    return script;
}

QMessageBox::StandardButtons ButtonsFor(MsgBoxButtons buttons)
{
    switch (buttons) {
    case MsgBoxButtons::OKCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case MsgBoxButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MsgBoxButtons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case MsgBoxButtons::OK:
        break;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon IconFor(MsgBoxIcon icon)
{
    switch (icon) {
    case MsgBoxIcon::Information:
        return QMessageBox::Information;
    case MsgBoxIcon::Exclamation:
        return QMessageBox::Warning;
    case MsgBoxIcon::Question:
        return QMessageBox::Question;
    case MsgBoxIcon::Critical:
        return QMessageBox::Critical;
    case MsgBoxIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

MsgBoxResult DefaultAnswer(MsgBoxButtons buttons)
{
    return buttons == MsgBoxButtons::OK || buttons == MsgBoxButtons::OKCancel ? MsgBoxResult::OK
                                                                              : MsgBoxResult::Yes;
}

} // namespace

MsgBoxScript::MsgBoxScript() : Previous(ActiveScript())
{
    ActiveScript() = this;
}

MsgBoxScript::~MsgBoxScript()
{
    ActiveScript() = Previous;
}

std::vector<QString> MsgBoxScript::Texts() const
{
    std::vector<QString> texts;
    for (const MsgBoxCall& call : Recorded)
        texts.push_back(call.Text);
    return texts;
}

MsgBoxResult MsgBox(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon)
{
    const QString title = QString::fromUtf8(basTsMainPro::ProductTitle);
    if (MsgBoxScript* script = ActiveScript()) {
        script->Recorded.push_back({text, title, QString(), buttons, icon, false});
        if (script->Answers.empty())
            return DefaultAnswer(buttons);
        const MsgBoxResult answer = script->Answers.front();
        script->Answers.pop_front();
        return answer;
    }
    QMessageBox box(IconFor(icon), title, text, ButtonsFor(buttons), QApplication::activeWindow());
    switch (box.exec()) {
    case QMessageBox::Yes:
        return MsgBoxResult::Yes;
    case QMessageBox::No:
        return MsgBoxResult::No;
    case QMessageBox::Cancel:
        return MsgBoxResult::Cancel;
    default:
        // Escape on a Yes/No box means No, on the others Cancel or OK.
        if (buttons == MsgBoxButtons::YesNo)
            return MsgBoxResult::No;
        return buttons == MsgBoxButtons::OK ? MsgBoxResult::OK : MsgBoxResult::Cancel;
    }
}

QString InputBox(const QString& prompt, const QString& title, const QString& defaultText, bool* accepted)
{
    if (MsgBoxScript* script = ActiveScript()) {
        script->Recorded.push_back({prompt, title, defaultText, MsgBoxButtons::OKCancel, MsgBoxIcon::None, true});
        if (accepted)
            *accepted = true;
        if (script->TextAnswers.empty())
            return defaultText;
        const QString answer = script->TextAnswers.front();
        script->TextAnswers.pop_front();
        return answer;
    }
    bool ok = false;
    const QString text = QInputDialog::getText(QApplication::activeWindow(), title, prompt, QLineEdit::Normal,
                                               defaultText, &ok);
    if (accepted)
        *accepted = ok;
    return ok ? text : QString();
}

} // namespace basMsgBox

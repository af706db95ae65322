// The loader's run: shown to the user, or answered by a StampOrBrushScript in tests.
#include <QCheckBox>
#include <QFontComboBox>
#include <QLineEdit>
#include <QSpinBox>

#include "frmTsStampOrBrush.h"

namespace {

StampOrBrushScript*& ActiveScript()
{
    static StampOrBrushScript* Script = nullptr;
    return Script;
}

} // namespace

StampOrBrushScript::StampOrBrushScript() : Previous(ActiveScript())
{
    ActiveScript() = this;
}

StampOrBrushScript::~StampOrBrushScript()
{
    ActiveScript() = Previous;
}

StampOrBrushScript* StampOrBrushScript::Active()
{
    return ActiveScript();
}

bool frmTsStampOrBrush::Run()
{
    if (StampOrBrushScript::Active())
        return RunScripted();
    if (IsImageTarget() && !cmdBrowse_Click())
        return false;
    return exec() == QDialog::Accepted;
}

bool frmTsStampOrBrush::RunScripted()
{
    StampOrBrushScript* Script = StampOrBrushScript::Active();
    StampOrBrushCall Call;
    Call.Target = For;
    if (cboFontName) {
        Call.FontName = cboFontName->currentFont().family();
        Call.FontSize = txtFontSize->value();
    }
    Call.TextColor = TextColor;
    Script->Recorded.push_back(Call);
    if (IsImageTarget() && !cmdBrowse_Click())
        return false;
    while (!Script->Answers.empty()) {
        const StampOrBrushAnswer Answer = Script->Answers.front();
        Script->Answers.pop_front();
        if (!Answer.Accept)
            return false;
        if (txtStampText) {
            if (Answer.SetColor) {
                TextColor = Answer.Color;
                ShowTextColor();
            }
            if (!Answer.FontName.isEmpty())
                cboFontName->setCurrentFont(QFont(Answer.FontName));
            if (Answer.FontSize > 0)
                txtFontSize->setValue(Answer.FontSize);
            ckbBold->setChecked(Answer.Bold);
            ckbItalic->setChecked(Answer.Italic);
            ckbSmooth->setChecked(Answer.Smooth);
            if (!Answer.Text.isEmpty())
                txtStampText->setText(Answer.Text);
            RedrawText();
        }
        if (cmdOK_Click())
            return true;
    }
    return false;
}

// The program-wide routines that work on windows: finding, activating and closing them, the
// percent bar, the RAM reminder, and the registry of window factories.
#include "basTsMainPro.h"

#include "basMsgBox.h"

#include <QApplication>
#include <QLabel>
#include <QMap>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QWidget>

#include <algorithm>

namespace basTsMainPro {

namespace {

QMap<QString, FormFactory>& Factories()
{
    static QMap<QString, FormFactory> factories;
    return factories;
}

// Every window of the program in the order it was made: top-level windows, and the document
// windows inside the frame's MDI area.
QList<QWidget*> LoadedForms()
{
    QList<QWidget*> forms;
    for (QWidget* top : QApplication::topLevelWidgets()) {
        forms.append(top);
        for (QMdiArea* area : top->findChildren<QMdiArea*>()) {
            for (QMdiSubWindow* sub : area->subWindowList(QMdiArea::CreationOrder)) {
                if (sub->widget())
                    forms.append(sub->widget());
            }
        }
    }
    return forms;
}

void CloseForm(QWidget* form)
{
    if (auto* sub = qobject_cast<QMdiSubWindow*>(form->parentWidget()))
        sub->close();
    else
        form->close();
}

} // namespace

QWidget* FindForm(const QString& name)
{
    const QList<QWidget*> forms = LoadedForms();
    for (auto it = forms.crbegin(); it != forms.crend(); ++it) {
        if ((*it)->objectName().compare(name, Qt::CaseInsensitive) == 0)
            return *it;
    }
    return nullptr;
}

bool IsFormLoaded(const QString& name)
{
    return FindForm(name) != nullptr;
}

bool ActivateFormIfLoaded(const QString& name)
{
    QWidget* form = FindForm(name);
    if (form == nullptr)
        return false;
    if (auto* sub = qobject_cast<QMdiSubWindow*>(form->parentWidget())) {
        if (QMdiArea* area = sub->mdiArea())
            area->setActiveSubWindow(sub);
    } else {
        form->show();
        form->raise();
        form->activateWindow();
    }
    form->setFocus();
    return true;
}

void UnloadForm(const QString& name)
{
    // A window may leave another open behind it under the same name; close them all. The name goes
    // first, so a window that only hides on close is not found again.
    while (QWidget* form = FindForm(name)) {
        QPointer<QWidget> guard(form);
        form->setObjectName(QString());
        CloseForm(form);
        if (guard && !guard->isVisible())
            guard->deleteLater();
    }
}

void CloseToolWindows()
{
    for (const char* name : {"frmTsPanoramic", "frmTsColorChart", "frmTsFileSaveGIForPNG", "frmTsFileBrowser"})
        UnloadForm(QString::fromLatin1(name));
}

void CloseAllDocuments()
{
    std::vector<DocSlot>& docSlots = DocSlots();
    std::vector<QWidget*>& forms = DocForms();
    for (size_t i = 0; i < docSlots.size() && i < forms.size(); ++i) {
        if (docSlots[i].Closed || forms[i] == nullptr)
            continue;
        QWidget* form = forms[i];
        CloseForm(form);
    }
}

void ShowPercentBar(QWidget* outer, QLabel* inner, int percent, bool showText)
{
    if (outer == nullptr || inner == nullptr)
        return;
    percent = std::clamp(percent, 1, 99);
    inner->setGeometry(0, 0, outer->width() * percent / 100, outer->height());
    inner->setText(showText ? QString::number(percent) + QLatin1Char('%') : QString());
    inner->show();
}

bool CheckRamLevel()
{
    const int32_t limit = RamLimitKB(WatchRAMIndex);
    if (limit == 0)
        return true;
    const int64_t available = AvailablePhysicalKB();
    if (available < 0 || available >= limit)
        return true;
    basMsgBox::MsgBox(RamLowMessage(available), basMsgBox::MsgBoxButtons::OK, basMsgBox::MsgBoxIcon::Information);
    return false;
}

void RegisterFormFactory(const QString& name, FormFactory factory)
{
    Factories().insert(name.toLower(), std::move(factory));
}

bool HasFormFactory(const QString& name)
{
    return Factories().contains(name.toLower());
}

QWidget* CreateForm(const QString& name)
{
    const auto it = Factories().constFind(name.toLower());
    if (it == Factories().constEnd() || !*it)
        return nullptr;
    QWidget* form = (*it)();
    if (form != nullptr && form->objectName().isEmpty())
        form->setObjectName(name);
    return form;
}

void SetChartColor(ColorChartTarget target, uint32_t color)
{
    switch (target) {
    case ColorChartTarget::Second:
        ColorSecond = color;
        break;
    case ColorChartTarget::First:
        ColorFirst = color;
        break;
    case ColorChartTarget::BezierFill:
        ColorBezierFill = color;
        break;
    }
}

} // namespace basTsMainPro

#include "UiScript.h"

#include "UiDriver.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QWindow>

#include <algorithm>
#include <memory>

namespace {

using Words = QStringList;
using Picture = std::function<void(const QString&)>;

bool IsOnScreen(const QWidget* widget)
{
    return widget && widget->windowHandle() && widget->windowHandle()->isExposed();
}

QTableWidget* Table()
{
    return qobject_cast<QTableWidget*>(UiDriver::Find("tableWidget"));
}

QPushButton* RowButton(int row, int column)
{
    const QWidget* cell = Table() ? Table()->cellWidget(row, column) : nullptr;
    auto* button = cell ? cell->findChild<QPushButton*>() : nullptr;
    return button && button->isEnabled() && UiDriver::IsReachable(button) ? button : nullptr;
}

void PressRow(UiDriver& driver, int row, int column)
{
    driver.Step(
        QString("press the button in row %1").arg(row), [=] { return RowButton(row, column) != nullptr; },
        [=] { UiDriver::PressNow(RowButton(row, column)); });
}

bool Shows(const QString& objectName, const QString& text)
{
    const QWidget* widget = UiDriver::Find(objectName);
    const QString shown = widget ? widget->property("text").toString() : QString();
    return text.startsWith("...") ? shown.endsWith(text.mid(3)) : shown == text;
}

bool CellShows(int row, int column, const QString& text)
{
    const QTableWidgetItem* item = Table() ? Table()->item(row, column) : nullptr;
    return item && item->text() == text && UiDriver::IsReachable(Table());
}

bool PopupIsOnScreen()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* window) {
        return window->windowType() == Qt::ToolTip && window->isModal() && IsOnScreen(window);
    });
}

UiDriver::Condition BarStands()
{
    constexpr int Unmoved = 700;
    const auto since = std::make_shared<QElapsedTimer>();
    const auto last = std::make_shared<int>(-1);
    return [=] {
        const auto* bar = qobject_cast<QProgressBar*>(UiDriver::Find("progressBar"));
        if (!bar || bar->value() < bar->maximum() / 3)
            return false;
        if (*last != bar->value())
            since->start();
        *last = bar->value();
        return since->elapsed() > Unmoved;
    };
}

/// Every verb with the count of its words.
const QHash<QString, int> Verbs{{"press", 1},  {"press-row", 2},  {"enter", 2}, {"choose", 3},
                                {"answer", 2}, {"text", 2},       {"cell", 3},  {"box", 1},
                                {"popup", 0},  {"bar-stands", 0}, {"quit", 0},  {"picture", 1}};

void Add(UiDriver& driver, const QString& verb, const Words& w, const Picture& picture)
{
    const auto wait = [&](const UiDriver::Condition& until) { driver.Step(verb + ' ' + w.join(" | "), until); };
    if (verb == "press")
        driver.Press(w[0]);
    else if (verb == "press-row")
        PressRow(driver, w[0].toInt(), w[1].toInt());
    else if (verb == "enter")
        driver.EnterFolder(w[0], w[1]);
    else if (verb == "choose")
        driver.ChooseFile(w[0], w[1], [=] { picture(w[2]); });
    else if (verb == "answer")
        driver.AnswerBox(w[0], w[1]);
    else if (verb == "text")
        wait([=] { return Shows(w[0], w[1]); });
    else if (verb == "cell")
        wait([=] { return CellShows(w[0].toInt(), w[1].toInt(), w[2]); });
    else if (verb == "box")
        wait([=] { return IsOnScreen(UiDriver::OpenBox()) && UiDriver::OpenBox()->text() == w[0]; });
    else if (verb == "popup")
        wait(PopupIsOnScreen);
    else if (verb == "bar-stands")
        wait(BarStands());
    else if (verb == "quit")
        driver.Do([] { QCoreApplication::exit(); });
    else
        driver.Do([=] { picture(w[0]); });
}

} // namespace

QString AddScript(UiDriver& driver, const QString& path, const std::function<void(const QString&)>& picture)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].trimmed().isEmpty() || lines[i].startsWith('#'))
            continue;
        Words words = QString(lines[i]).replace("\\n", "\n").split(" | ");
        const QString verb = words.takeFirst().trimmed();
        if (Verbs.value(verb, -1) != words.size())
            return QString("line %1: no such step: %2 with %3 words").arg(i + 1).arg(verb).arg(words.size());
        Add(driver, verb, words, picture);
    }
    // A caret that blinks would make every picture another one.
    QApplication::setCursorFlashTime(0);
    return {};
}

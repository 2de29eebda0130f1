#include "UiScript.h"

#include "UiDriver.h"
#include "WindowTexts.h"

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
#include <chrono>
#include <cstdio>
#include <memory>
#include <unistd.h>

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

bool Shows(const QString& objectName, const QString& text)
{
    const QWidget* widget = UiDriver::Find(objectName);
    const QString shown = widget ? widget->property("text").toString() : QString();
    return text.startsWith("...") ? shown.endsWith(text.mid(3)) : shown == text;
}

bool IsUsable(const QString& objectName)
{
    const QWidget* widget = UiDriver::Find(objectName);
    return widget && widget->isEnabled() && UiDriver::IsReachable(widget);
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

bool IsPast(int percent)
{
    const auto* bar = qobject_cast<QProgressBar*>(UiDriver::Find("progressBar"));
    return bar && bar->value() > bar->maximum() / 100.0 * percent;
}

UiDriver::Condition BarStands()
{
    constexpr int Unmoved = 700;
    const auto since = std::make_shared<QElapsedTimer>();
    const auto last = std::make_shared<int>(-1);
    return [=] {
        const auto* bar = qobject_cast<QProgressBar*>(UiDriver::Find("progressBar"));
        if (!IsPast(33))
            return false;
        if (*last != bar->value())
            since->start();
        *last = bar->value();
        return since->elapsed() > Unmoved;
    };
}

/// The texts of a column of the table.
Words Column(int column)
{
    Words texts;
    for (int row = 0; Table() && row < Table()->rowCount(); ++row) {
        const QTableWidgetItem* item = Table()->item(row, column);
        texts.append(item ? item->text() : QString());
    }
    return texts;
}

bool IsFilled(int column)
{
    const Words texts = Column(column);
    return !texts.isEmpty() && !texts.contains(QString()) && UiDriver::IsReachable(Table());
}

QString MarkedNames()
{
    const Words names = Column(0);
    Words marked;
    for (int row = 0; row < names.size(); ++row) {
        const QPushButton* button = RowButton(row, 4);
        if (button && !button->isChecked())
            marked.append(names[row]);
    }
    return marked.join(' ');
}

double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Say(QString words)
{
    words.replace("%now", QString::number(Now(), 'f', 6)).replace("%marked", MarkedNames());
    std::printf("%s\n", qPrintable(words.replace("%new", Column(2).join(' '))));
    std::fflush(stdout);
}

void StandStill()
{
    char line = 0;
    if (::read(STDIN_FILENO, &line, 1) != 1)
        std::_Exit(1);
}

UiDriver::Condition Pause(double seconds)
{
    const auto end = std::make_shared<double>(0);
    return [=] {
        if (*end == 0)
            *end = Now() + seconds;
        return Now() > *end;
    };
}

using Step = std::function<void(UiDriver& driver, const Words& w, const Picture& picture)>;
using Wait = std::function<UiDriver::Condition(UiDriver& driver, const Words& w)>;
using Act = std::function<UiDriver::Action(const Words& w, const Picture& picture)>;

/// Each verb with the number of its words.
const QHash<QPair<QString, int>, Step> Steps{
    {{"press", 1}, [](UiDriver& driver, const Words& w, const Picture&) { driver.Press(w[0]); }},
    {{"press-row", 2},
     [](UiDriver& driver, const Words& w, const Picture&) {
         const int row = w[0].toInt();
         const int column = w[1].toInt();
         driver.Step(
             "press the button in row " + w[0], [=] { return RowButton(row, column) != nullptr; },
             [=] { UiDriver::PressNow(RowButton(row, column)); });
     }},
    {{"enter", 2}, [](UiDriver& driver, const Words& w, const Picture&) { driver.EnterFolder(w[0], w[1]); }},
    {{"choose", 2}, [](UiDriver& driver, const Words& w, const Picture&) { driver.ChooseFile(w[0], w[1]); }},
    {{"choose", 3},
     [](UiDriver& driver, const Words& w, const Picture& picture) {
         driver.ChooseFile(w[0], w[1], [=] { picture(w[2]); });
     }},
    {{"answer", 2}, [](UiDriver& driver, const Words& w, const Picture&) { driver.AnswerBox(w[0], w[1]); }},
    {{"close", 0},
     [](UiDriver& driver, const Words&, const Picture&) {
         driver.Do([] { UiDriver::Find("MainWindowClass")->close(); });
     }},
    {{"quit", 0}, [](UiDriver& driver, const Words&, const Picture&) { driver.Do([] { QCoreApplication::exit(); }); }},
    {{"picture", 1},
     [](UiDriver& driver, const Words& w, const Picture& picture) { driver.Do([=] { picture(w[0]); }); }},
};

const QHash<QPair<QString, int>, Wait> Waits{
    {{"text", 2}, [](UiDriver&, const Words& w) { return [=] { return Shows(w[0], w[1]); }; }},
    {{"cell", 3},
     [](UiDriver&, const Words& w) { return [=] { return CellShows(w[0].toInt(), w[1].toInt(), w[2]); }; }},
    {{"versions", 0}, [](UiDriver&, const Words&) { return [] { return IsFilled(1) && Shows("label_Update", {}); }; }},
    {{"new-versions", 0}, [](UiDriver&, const Words&) { return [] { return IsFilled(2); }; }},
    {{"search", 0},
     [](UiDriver&, const Words&) {
         return [] {
             return Shows("button_DeviceType", Searching) && IsUsable("buttonClose") && !IsUsable("buttonArchive");
         };
     }},
    {{"enabled", 1}, [](UiDriver&, const Words& w) { return [=] { return IsUsable(w[0]); }; }},
    {{"dialog", 0},
     [](UiDriver&, const Words&) { return [] { return !UiDriver::OpenBox() && IsOnScreen(UiDriver::OpenDialog()); }; }},
    {{"box", 1},
     [](UiDriver&, const Words& w) {
         return [=] { return IsOnScreen(UiDriver::OpenBox()) && UiDriver::OpenBox()->text() == w[0]; };
     }},
    {{"no-dialog", 0}, [](UiDriver&, const Words&) { return [] { return !UiDriver::OpenDialog(); }; }},
    {{"popup", 0}, [](UiDriver&, const Words&) { return PopupIsOnScreen; }},
    {{"bar", 1}, [](UiDriver&, const Words& w) { return [=] { return IsPast(w[0].toInt()); }; }},
    {{"bar-stands", 0}, [](UiDriver&, const Words&) { return BarStands(); }},
    {{"painted", 0}, [](UiDriver& driver, const Words&) { return [&driver] { return driver.HasPainted(); }; }},
    {{"pause", 1}, [](UiDriver&, const Words& w) { return Pause(w[0].toDouble()); }},
};

const QHash<QPair<QString, int>, Act> Acts{
    {{"show", 2},
     [](const Words& w, const Picture& picture) {
         return [=] {
             static int number = 0;
             Say("  " + w[0]);
             picture(QString("%1-%2").arg(++number, 2, 10, QChar('0')).arg(w[1]));
         };
     }},
    {{"say", 1}, [](const Words& w, const Picture&) { return [=] { Say(w[0]); }; }},
    {{"stand", 0}, [](const Words&, const Picture&) { return StandStill; }},
};

/// Adds the lines as steps: a wait together with the output that follows it.
class Reader
{
public:
    Reader(UiDriver& driver, Picture picture)
        : m_driver(driver)
        , m_picture(std::move(picture))
    {}
    ~Reader() { Flush(); }
    Q_DISABLE_COPY_MOVE(Reader)

    /// False when there is no such verb with this number of words.
    bool Read(const QString& line)
    {
        QString text = line;
        text.replace("\\n", "\n").replace("%success", Success).replace("%failure", Failure);
        text.replace("%searching", Searching).replace("%reading", Reading);
        Words words = text.split(" | ");
        const QString verb = words.takeFirst().trimmed();
        const QPair<QString, int> key(verb, int(words.size()));
        if (Acts.contains(key)) {
            m_acts.append(Acts[key](words, m_picture));
            return true;
        }
        Flush();
        if (Waits.contains(key)) {
            m_wait = Waits[key](m_driver, words);
            m_name = line;
            return true;
        }
        if (Steps.contains(key))
            Steps[key](m_driver, words, m_picture);
        return Steps.contains(key);
    }

private:
    void Flush()
    {
        const auto act = [acts = m_acts] {
            for (const UiDriver::Action& action : acts)
                action();
        };
        if (m_wait && m_acts.isEmpty())
            m_driver.Step(m_name, m_wait);
        else if (m_wait)
            m_driver.Catch(m_name, m_wait, act);
        else if (!m_acts.isEmpty())
            m_driver.Do(act);
        m_wait = {};
        m_acts.clear();
    }

    UiDriver& m_driver;
    Picture m_picture;
    UiDriver::Condition m_wait;
    QString m_name;
    QList<UiDriver::Action> m_acts;
};

} // namespace

QString AddScript(UiDriver& driver, const QString& path, const std::function<void(const QString&)>& picture)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    Reader reader(driver, picture);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!lines[i].trimmed().isEmpty() && !lines[i].startsWith('#') && !reader.Read(lines[i]))
            return QString("line %1: no such step, or not with so many words: %2").arg(i + 1).arg(lines[i]);
    }
    // A blinking caret would make screenshots differ.
    QApplication::setCursorFlashTime(0);
    return {};
}

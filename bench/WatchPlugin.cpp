// Loaded into a program by the toolkit (QT_QPA_GENERIC_PLUGINS=watch), it tells on standard output when the program has
// come to something. UPDATER_WATCH names what:
//   paint    "painted TIME" when the first window was painted and handed to the window system; then it ends the program
//   idle     "idle" when every module's version is in the table, or, in a window without a table, when it was painted
//   write    "idle"; takes bench.zip, "taken"; updates, "writing" when nine tenths of an image are written
//   update   takes bench.zip, "taken"; updates, "updated SECONDS" from the press to the box that tells the outcome
// TIME counts on the system's monotonic clock. After "idle", "taken" and "writing" the program stands still until a
// line comes on standard input.

#include "Clock.h"
#include "UiDriver.h"

#include <QApplication>
#include <QGenericPlugin>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>

#include <chrono>
#include <cstdio>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

void TellAndStand(const char* what)
{
    std::printf("%s\n", what);
    std::fflush(stdout);
    char line = 0;
    if (::read(STDIN_FILENO, &line, 1) != 1)
        std::_Exit(1);
}

bool IsFull(const QTableWidget* table)
{
    for (int row = 0; row < table->rowCount(); ++row) {
        const QTableWidgetItem* version = table->item(row, 1);
        if (!version || version->text().isEmpty() || version->text() == "???")
            return false;
    }
    return table->rowCount() > 0;
}

class Watcher : public UiDriver
{
public:
    Watcher()
        : m_task(qEnvironmentVariable("UPDATER_WATCH"))
    {
        setParent(qApp);
        qApp->installEventFilter(this);
        if (m_task == "idle" || m_task == "write" || m_task == "update")
            TakeSteps();
        connect(this, &UiDriver::Finished, this, [this](bool all) {
            if (all)
                return;
            std::fprintf(stderr, "watch: gave up waiting: %s\n", qPrintable(Failure));
            std::_Exit(4);
        });
    }

private:
    void TakeSteps()
    {
        Step("the window is ready", [this] {
            const auto* table = qobject_cast<QTableWidget*>(Find("tableWidget"));
            return table ? IsFull(table) : m_isPainted;
        });
        // What was only needed for the start has been given back by then.
        const auto since = std::make_shared<double>(0);
        Do([=] { *since = Now(); });
        Step("a second has passed", [=] { return Now() - *since > 1; });
        if (m_task != "update")
            Do([] { TellAndStand("idle"); });
        if (m_task == "idle")
            return Start(60s);
        Press("buttonArchive");
        ChooseFile("Открыть архив с прошивками", "bench.zip");
        Step("the archive is taken",
             [] { return IsReachable(Find("buttonUpdate")) && Find("buttonUpdate")->isEnabled(); });
        Do([] { TellAndStand("taken"); });
        Press("buttonUpdate");
        if (m_task == "write") {
            Step(
                "an image is being written",
                [] {
                    const auto* bar = qobject_cast<QProgressBar*>(Find("progressBar"));
                    return bar && bar->value() > bar->maximum() / 10 * 9;
                },
                [] { TellAndStand("writing"); });
        }
        AnswerBox("Все модули успешно обновлены!\nПрибор необходимо перезагрузить", "Нет");
        Press("buttonClose");
        Start(60s);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && !m_isPainted && qobject_cast<QWidget*>(object)) {
            m_isPainted = true;
            // The backing store goes to the window system before the event loop has control again.
            if (m_task == "paint")
                QTimer::singleShot(0, this, &Watcher::TellPainted);
        }
        // Before the program's own slot, which does the whole update.
        if (event->type() == QEvent::MouseButtonRelease && object->objectName() == "buttonUpdate")
            m_pressed = Now();
        if (event->type() == QEvent::Show && m_task == "update" && qobject_cast<QMessageBox*>(object)) {
            std::printf("updated %.6f\n", Now() - m_pressed);
            std::fflush(stdout);
        }
        return false;
    }

    void TellPainted()
    {
        std::printf("painted %.6f\n", Now());
        std::fflush(stdout);
        QCoreApplication::quit();
    }

    QString m_task;
    bool m_isPainted = false;
    double m_pressed = 0;
};

} // namespace

class WatchPlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "watch.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        // The application object is still being made; the first window must not be painted before this watches.
        QMetaObject::invokeMethod(
            qApp, [] { new Watcher; }, Qt::QueuedConnection);
        return new QObject(this);
    }
};

#include "WatchPlugin.moc"

// For every distinct state of the window during a full update: restart the window and, in that state, press one enabled
// button (once, twice) or close the window; then check rows, message boxes, controls and what the instrument received.
// The update searches, reads versions, opens an archive, searches again with marked rows, and writes two processors and
// a program; after a stop it is run once more. The test answers every dialog and continues.
//
// A state is what can be observed whenever Qt's event dispatcher wakes up: requests and connections at the instrument,
// texts, table cells, status icons, marks, progress, enabled buttons, open dialog. A first session lists the states;
// each later one acts when it reaches the state of its row. Presses are events of the window system, also on windows
// that a modal one blocks: there they must have no effect. A mark is not pressed twice, which would only undo it. The
// window is closed as at the end of the desktop's session, also while dialogs are open. Buttons are push buttons, not
// the tool buttons of Qt's file dialog.

#include "AppState.h"
#include "ScriptedBoard.h"
#include "TimeLimits.h"
#include "WindowFixture.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDeadlineTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <optional>

using namespace std::chrono_literals;

/// One session of the window, in which one button is pressed, or the window closed, in one state.
class WindowSession : public QObject
{
public:
    QList<QPair<QString, QStringList>> States; ///< each with its enabled buttons
    QStringList Wrong;
    QStringList Boxes; ///< the message box at the end of each run: "success", "failure" or its text
    bool Acted = false;

    /// `control` is a button's name, which " twice" may follow, or "close" for the window.
    WindowSession(const QString& state, const QString& control)
        : m_actIn(state)
        , m_control(control)
    {
        QGuiApplication::setQuitOnLastWindowClosed(true);
        QCoreApplication::setQuitLockEnabled(true);
        g_timeLimits.connectAttempt = g_timeLimits.popupExposure = 20ms;
        g_timeLimits.firstSearch = 30ms;
        g_timeLimits.restartPause = 10ms;
        g_timeLimits.pollPause = 1ms;
        QFile::remove(WindowFixture::Path("viewer"));
        testdata::WriteFile(WindowFixture::Path("viewer.ver"), "1.0");
        for (const auto& [name, content] : Images("3.0"))
            testdata::WriteFile(WindowFixture::Path("firmware/" + name), content);
        const QString ip = "127.0.0.1";
        m_instrument = m_fixture.Play(
            testdata::Device("П", 7,
                             {testdata::Board("Один", "DEV", ip, 0, 1, 0), testdata::Board("Два", "DEV", ip, 0, 1, 1),
                              testdata::Program("Три", "viewer", "viewer")}),
            3ms);
        connect(m_instrument, &Instrument::Event, this,
                [this](const QString& line) { m_connections += line.contains("connected from"); });
        connect(m_instrument, &Instrument::Requested, this, [this](int, bool isBinary) { m_writes += isBinary; });
        m_fixture.Open({m_instrument->Device()});
        WindowFixture::PackArchive(Images("2.0")
                                   + testdata::Files{{"viewer/viewer", "#!/bin/sh\n"}, {"viewer/viewer.ver", "2.0"}});
        m_table = m_fixture.window->findChild<QTableWidget*>();
        // Called after the program's slot: when this press started a run, that run is over.
        connect(m_fixture.window->findChild<QPushButton*>("buttonUpdate"), &QPushButton::clicked, this, [this] {
            if (m_fixture.Text("buttonUpdate") == "Отмена")
                m_lastWrite = m_writes + 1;
        });
    }

    /// The application's exit status once the window and all work have ended.
    int Run()
    {
        QTimer ticks;
        ticks.start(2ms);
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this, &WindowSession::Look);
        const int status = QCoreApplication::exec();
        QAbstractEventDispatcher::instance()->disconnect(this);
        Expect(!m_fixture.window->isVisible() && Boxes.size() == m_runs,
               "a window is still open, or a run ended without a message box");
        if (m_closed) {
            Expect(HasBackup() == m_backupAtClose, "a backup was made after the close");
        } else {
            Expect(m_fixture.Controls() == "idle" && !g_updateAborted, m_fixture.Controls() + ", aborted or not");
            // A stop at the very end of the last module reports a failure although everything is written.
            Expect(!m_fixture.IsEnabled("buttonUpdate") || Boxes.value(Boxes.size() - 1, "success") == "success",
                   "the last run failed");
            Expect(HasBackup() == Boxes.contains("success"), "backup without success");
            Expect(!m_isBlocked || Boxes == QStringList("success"), "a press on a blocked window had an effect");
            Expect(WindowFixture::SudoLog().contains("reboot") == m_control.startsWith("Да"), "reboot without a yes");
        }
        for (int row = 0; row < m_table->rowCount(); ++row)
            CheckRow(row, m_fixture.Status(row));
        return status;
    }

private:
    static testdata::Files Images(const QString& version)
    {
        return testdata::WithCertificates({{"fw_7_1_0_v" + version + ".bin", testdata::Image(version, 700)},
                                           {"fw_7_1_1_v" + version + ".rpd", testdata::Image(version, 300)}});
    }
    static bool HasBackup() { return QFileInfo::exists(WindowFixture::Path("update.old")); }
    QByteArray Held(int row) const
    {
        return row < 2 ? m_instrument->Image(row) : testdata::ReadFile(WindowFixture::Path("viewer"));
    }
    QByteArray Offered(int row) const
    {
        return testdata::ReadFile(m_table->item(row, 2)->data(Qt::UserRole).toString());
    }
    void Expect(bool right, const QString& what)
    {
        if (!right && !Wrong.contains(what))
            Wrong.append(what);
    }

    void CheckRow(int row, const QString& status)
    {
        const QString name = m_fixture.Cell(row, 0);
        const QString current = m_fixture.Cell(row, 1);
        const QString version =
            row < 2 ? m_instrument->Version(row) : testdata::ReadFile(WindowFixture::Path("viewer.ver"));
        Expect(Held(row).isEmpty() || m_given[row].contains(Held(row)), "another image in " + name);
        Expect(status != "ok" || (Held(row) == Offered(row) && current == m_fixture.Cell(row, 2)),
               "untrue ok of " + name);
        const bool isSettled = QString("ok").startsWith(status) && current == version;
        Expect(m_closed || isSettled || Boxes.value(Boxes.size() - 1) == "failure", "wrong version or icon of " + name);
    }

    /// The enabled buttons by name. Names the buttons of the rows.
    QMap<QString, QPushButton*> Buttons() const
    {
        for (int row = 0; row < m_table->rowCount(); ++row) {
            m_fixture.window->GetButton(row, 3)->setObjectName("file " + m_fixture.Cell(row, 0));
            m_fixture.window->GetButton(row, 4)->setObjectName("mark " + m_fixture.Cell(row, 0));
        }
        QList<QPushButton*> all = m_fixture.window->findChildren<QPushButton*>();
        if (const QMessageBox* box = UiDriver::OpenBox())
            all += box->findChildren<QPushButton*>();
        QMap<QString, QPushButton*> enabled;
        for (QPushButton* button : all) {
            if (button->isVisible() && button->isEnabled())
                enabled[button->objectName().isEmpty() ? button->text() : button->objectName()] = button;
        }
        return enabled;
    }

    QString State() const
    {
        const auto* bar = m_fixture.window->findChild<QProgressBar*>();
        const QWidget* modal = QApplication::activeModalWidget();
        QStringList parts{QString("%1 %2").arg(m_instrument->RequestCount()).arg(m_connections),
                          bar->isVisible() ? QString::number(bar->value()) : "no bar",
                          modal ? modal->windowTitle() + modal->property("text").toString() : "no dialog"};
        for (const char* name : {"button_DeviceType", "buttonUpdate", "label_Update"})
            parts += m_fixture.Text(name);
        for (int row = 0; row < m_table->rowCount(); ++row) {
            for (const int column : {0, 1, 2})
                parts += m_fixture.Cell(row, column);
            parts += QString::number(m_table->item(row, 0)->data(Qt::UserRole).toInt());
            parts += m_fixture.window->IsRowMarked(row) ? "marked" : "not";
        }
        return (parts + Buttons().keys()).join('|').replace('\n', ' ');
    }

    /// Called whenever the event dispatcher wakes up.
    void Look()
    {
        const QString state = State();
        if (m_limit.hasExpired()) {
            Expect(false, "hangs at " + state);
            m_limit.setRemainingTime(1s);
            QCoreApplication::exit(1);
        }
        Watch();
        if (!m_seen.contains(state) && m_fixture.window->isVisible()) {
            m_seen.insert(state);
            States.append({state, Buttons().keys()});
        }
        // A dialog closes one pass of the event loop before the program continues, and no operator is faster: wait for
        // a stable state. A press that had no effect is repeated later.
        if (m_state != state)
            m_rest.setRemainingTime(4ms);
        m_state = state;
        const bool acts = state == m_actIn && !Acted;
        if (!acts && !m_rest.hasExpired())
            return;
        m_rest.setRemainingTime(60ms);
        acts ? Act() : GoOn();
    }

    void Act()
    {
        Acted = true;
        const QString name = QString(m_control).remove(" twice");
        const QPushButton* button = Buttons().value(name);
        m_isBlocked = button && !UiDriver::IsReachable(button);
        m_closed = !button || (name == "buttonClose" && !m_isBlocked);
        m_backupAtClose = HasBackup();
        if (button)
            return Press(name, m_control == name ? 1 : 2);
        m_lastWrite = m_writes + 1;
        m_fixture.window->close();
    }

    void Press(const QString& name, int times = 1)
    {
        for (QPushButton* button = Buttons().value(name); times > 0 && button; --times)
            UiDriver::PressNow(button);
    }

    void Watch()
    {
        const bool running = m_fixture.Text("buttonUpdate") == "Отмена";
        const bool starts = running && !m_running;
        m_running = running;
        m_runs += starts;
        const QMessageBox* box = UiDriver::OpenBox();
        const bool ends = box && Boxes.size() < m_runs;
        if (ends)
            Boxes.append(box->text() == Success ? "success" : box->text() == Failure ? "failure" : box->text());
        for (int row = 0; row < m_table->rowCount(); ++row) {
            if (starts && (m_marked[row] = m_fixture.window->IsRowMarked(row)))
                m_given[row].append(Offered(row));
            Expect(!ends || box->text() != Success || !m_marked[row] || Held(row) == Offered(row), "untrue success");
        }
        // A step is done when its effect is visible: a press may be lost when a modal window has just opened.
        const QString step = m_plan.first();
        if ((step == "buttonArchive" && qobject_cast<QFileDialog*>(UiDriver::OpenDialog()))
            || (step == "button_DeviceType" && m_fixture.Text(step) == Searching) || (step == "buttonUpdate" && starts))
            m_plan.removeFirst();
        Expect(m_writes <= m_lastWrite, "written after a stop");
        if (!running && !m_closed)
            m_lastWrite = INT_MAX;
        for (const QString& name : Buttons().keys())
            Expect(!g_busy || name == (running ? "buttonUpdate" : "buttonClose"), name + " is enabled while busy");
    }

    void GoOn()
    {
        if (const QMessageBox* box = UiDriver::OpenBox())
            return UiDriver::PressNow(box->buttons().last());
        if (auto* dialog = qobject_cast<QFileDialog*>(UiDriver::OpenDialog())) {
            const QString filter = dialog->nameFilters().first();
            const QString name = filter == "*.zip" ? "new.zip" : QString(filter).replace('*', "3.0");
            auto* edit = dialog->findChild<QLineEdit*>("fileNameEdit");
            // A program is always copied from the archive's folder, whichever file is chosen here.
            if (filter == "viewer" || edit->text() == name)
                return Press(filter == "viewer" ? "Отмена" : "Открыть");
            return edit->setText(name);
        }
        const bool reading = m_fixture.window->findChild<QWidget*>("label_Update")->isVisible()
                             && m_fixture.Text("label_Update") == Reading;
        const bool reachable = m_fixture.window->isVisible() && UiDriver::IsReachable(m_fixture.window.get());
        if (!reachable || g_busy || reading || m_fixture.Cell(2, 1).isEmpty())
            return;
        while (m_plan.size() > 1 && !m_fixture.IsEnabled(m_plan.first()))
            m_plan.removeFirst();
        Press(m_plan.first());
    }

    QString m_actIn;
    QString m_control;
    WindowFixture m_fixture;
    Instrument* m_instrument = nullptr;
    QTableWidget* m_table = nullptr;
    QStringList m_plan{"buttonArchive", "button_DeviceType", "buttonUpdate", "buttonUpdate", "buttonClose"};
    QSet<QString> m_seen;
    QString m_state;
    QDeadlineTimer m_rest{0};
    QDeadlineTimer m_limit{60s};
    int m_connections = 0;
    int m_writes = 0;
    int m_runs = 0;
    bool m_running = false;
    std::array<bool, 3> m_marked{};
    std::array<QByteArrayList, 3> m_given; ///< the row's file in each run for which it was marked
    int m_lastWrite = INT_MAX;
    bool m_closed = false;
    bool m_backupAtClose = false;
    bool m_isBlocked = false;
};

class SweepClicks : public QObject
{
    Q_OBJECT

    QMap<QString, int> m_figures;

private slots:
    void EveryState_data()
    {
        QLoggingCategory::setFilterRules("*=false");
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("control");
        WindowSession first({}, {});
        QCOMPARE(first.Run(), 0);
        QCOMPARE(first.Wrong + first.Boxes, QStringList("success"));
        m_figures["states"] = 0;
        for (const auto& [state, enabled] : first.States) {
            QStringList controls = enabled + QStringList("close");
            for (const QString& name : enabled)
                controls += name.startsWith("mark") ? QStringList() : QStringList(name + " twice");
            const int number = ++m_figures["states"];
            for (const QString& control : controls)
                QTest::addRow("%d %s", number, qPrintable(control)) << state << control;
        }
    }
    void EveryState()
    {
        QFETCH(QString, state);
        QFETCH(QString, control);
        std::optional<WindowSession> session;
        int status = 0;
        // A busy machine may skip a state that lasts some milliseconds.
        for (int tries = 0; tries < 5 && (!session || !session->Acted); ++tries) {
            session.emplace(state, control);
            status = session->Run();
        }
        const QString how = control == "close" ? "closed" : control.endsWith(" twice") ? "pressed twice" : "pressed";
        ++m_figures["sessions"];
        ++m_figures[how + ", " + (session->Boxes.isEmpty() ? "no run" : session->Boxes.join(", then "))];
        QVERIFY2(session->Wrong.isEmpty(), qPrintable(session->Wrong.join("; ") + " after " + state));
        QVERIFY2(session->Acted, qPrintable("this session did not reach " + state));
        QCOMPARE(status, 0);
    }
    void cleanupTestCase()
    {
        for (auto figure = m_figures.cbegin(); figure != m_figures.cend(); ++figure)
            std::printf("sweep_clicks: %5d %s\n", figure.value(), qPrintable(figure.key()));
    }
};

QTEST_MAIN(SweepClicks)
#include "sweep_clicks.moc"

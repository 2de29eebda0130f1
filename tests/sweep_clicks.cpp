// For every state that the window passes through in a whole update: the window is started anew and, in that state, one
// enabled button is pressed (once, and twice) or the window is closed. The update searches, reads versions, takes an
// archive, searches again over marked rows, and writes two processors and a program; behind a stop it is run once more.
// The driver answers every dialog and goes on.
//
// A state is what can be observed at an entry of Qt's event dispatcher: requests and connections at the instrument,
// texts, cells, status icons, marks, progress, enabled buttons, open dialog. A first run lists the states; a cell acts
// when its own run shows the same one. Presses are events of the window system, also on what something modal blocks:
// there they must come to nothing. A mark is not pressed twice, which only takes it back. The window is closed as by
// the end of the desktop's session, so behind open dialogs too. Buttons are push buttons, without Qt's small tools of
// the file dialog.

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

/// One session of the window, with one thing done to it at a point.
class WindowSession : public QObject
{
public:
    QList<QPair<QString, QStringList>> Points; ///< pictures, and the buttons enabled in each
    QStringList Wrong;
    QStringList Boxes;
    bool Struck = false;

    /// `control` is a button's name, with " twice" behind it or not, or "close" for the window.
    WindowSession(const QString& picture, const QString& control)
        : m_strikeAt(picture)
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
        // Behind the program's own slot: when this press began a run, that run is over.
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
               "a window is still there, or a run had no box");
        if (m_closed) {
            Expect(HasBackup() == m_backupAtClose, "a backup was made behind the close");
        } else {
            Expect(m_fixture.Controls() == "idle" && !g_updateAborted, m_fixture.Controls() + ", aborted or not");
            // A stop in the last module's last moment ends a run as failed that has written everything.
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

    /// The enabled buttons by name; those of the rows get names of theirs.
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

    QString Picture() const
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

    /// At every entry of the dispatcher.
    void Look()
    {
        const QString picture = Picture();
        if (m_limit.hasExpired()) {
            Expect(false, "hangs at " + picture);
            m_limit.setRemainingTime(1s);
            QCoreApplication::exit(1);
        }
        Watch();
        if (!m_seen.contains(picture) && m_fixture.window->isVisible()) {
            m_seen.insert(picture);
            Points.append({picture, Buttons().keys()});
        }
        // A dialog is gone a pass before its work goes on, and no operator is quicker; what had no effect is done
        // again.
        if (m_picture != picture)
            m_rest.setRemainingTime(4ms);
        m_picture = picture;
        const bool strikes = picture == m_strikeAt && !Struck;
        if (!strikes && !m_rest.hasExpired())
            return;
        m_rest.setRemainingTime(60ms);
        strikes ? Strike() : GoOn();
    }

    void Strike()
    {
        Struck = true;
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
        // A step of the plan is done when it shows: a press may be lost to a window that is just being blocked.
        const QString step = m_plan.first();
        if ((step == "buttonArchive" && qobject_cast<QFileDialog*>(UiDriver::OpenDialog()))
            || (step == "button_DeviceType" && m_fixture.Text(step) == "Поиск прибора...")
            || (step == "buttonUpdate" && starts))
            m_plan.removeFirst();
        Expect(m_writes <= m_lastWrite, "written behind a stop");
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
            // A program always comes from the archive's folder: nothing is to be learnt from choosing another file.
            if (filter == "viewer" || edit->text() == name)
                return Press(filter == "viewer" ? "Отмена" : "Открыть");
            return edit->setText(name);
        }
        const bool reading = m_fixture.window->findChild<QWidget*>("label_Update")->isVisible()
                             && m_fixture.Text("label_Update") == "Считываю версии модулей...";
        const bool reachable = m_fixture.window->isVisible() && UiDriver::IsReachable(m_fixture.window.get());
        if (!reachable || g_busy || reading || m_fixture.Cell(2, 1).isEmpty())
            return;
        while (m_plan.size() > 1 && !m_fixture.IsEnabled(m_plan.first()))
            m_plan.removeFirst();
        Press(m_plan.first());
    }

    QString m_strikeAt;
    QString m_control;
    WindowFixture m_fixture;
    Instrument* m_instrument = nullptr;
    QTableWidget* m_table = nullptr;
    QStringList m_plan{"buttonArchive", "button_DeviceType", "buttonUpdate", "buttonUpdate", "buttonClose"};
    QSet<QString> m_seen;
    QString m_picture;
    QDeadlineTimer m_rest{0};
    QDeadlineTimer m_limit{60s};
    int m_connections = 0;
    int m_writes = 0;
    int m_runs = 0;
    bool m_running = false;
    std::array<bool, 3> m_marked{};
    std::array<QByteArrayList, 3> m_given; ///< what the row offered in each run for which it was marked
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
    void EveryPoint_data()
    {
        QLoggingCategory::setFilterRules("*=false");
        QTest::addColumn<QString>("picture");
        QTest::addColumn<QString>("control");
        WindowSession rehearsal({}, {});
        QCOMPARE(rehearsal.Run(), 0);
        QCOMPARE(rehearsal.Wrong + rehearsal.Boxes, QStringList("success"));
        m_figures["points"] = 0;
        for (const auto& [picture, enabled] : rehearsal.Points) {
            QStringList controls = enabled + QStringList("close");
            for (const QString& name : enabled)
                controls += name.startsWith("mark") ? QStringList() : QStringList(name + " twice");
            const int point = ++m_figures["points"];
            for (const QString& control : controls)
                QTest::addRow("%d %s", point, qPrintable(control)) << picture << control;
        }
    }
    void EveryPoint()
    {
        QFETCH(QString, picture);
        QFETCH(QString, control);
        std::optional<WindowSession> session;
        int status = 0;
        // A machine with much to do may skip a picture that lasts some milliseconds.
        for (int tries = 0; tries < 5 && (!session || !session->Struck); ++tries) {
            session.emplace(picture, control);
            status = session->Run();
        }
        const QString how = control == "close" ? "closed" : control.endsWith(" twice") ? "pressed twice" : "pressed";
        ++m_figures["cells"];
        ++m_figures[how + ", " + (session->Boxes.isEmpty() ? "no run" : session->Boxes.join(", then "))];
        QVERIFY2(session->Wrong.isEmpty(), qPrintable(session->Wrong.join("; ") + " after " + picture));
        QVERIFY2(session->Struck, qPrintable("this session did not show " + picture));
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

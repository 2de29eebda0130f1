// Updates with a faulty board or an exchanged instrument: the window shows the true outcome and is idle afterwards.
// See sweep_clicks.cpp for buttons pressed at unexpected moments.

#include "AppState.h"
#include "RecordKeeper.h"
#include "ScriptedBoard.h"
#include "Table.h"
#include "TimeLimits.h"
#include "WindowFixture.h"

#include <QDialog>
#include <QFileInfo>
#include <QPushButton>
#include <QTest>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(Misbehaviour)

class TestRunFaults : public QObject
{
    Q_OBJECT

private slots:
    void RunWithAFault_data()
    {
        const QString next = ExtractionFolder() + "/fw_7_2_1_v2.0.rpd";
        const Misbehaviour removeNext = [=](const Call&) {
            QFile::remove(next);
            return false;
        };
        const Misbehaviour replaceNext = [=](const Call&) {
            testdata::WriteFile(next, "other");
            return false;
        };
        const Misbehaviour loader = [](const Call& call) {
            call.scripted.type = call.scripted.finished ? "DEV" : "LOADER";
            return false;
        };
        // Status and version of the faulty module, then of the next one.
        const Table<QString, QString, QString, QString, Misbehaviour> row("box", "status", "versions", "record",
                                                                          "fault");
        const QString good = "start updated updated success backup";
        row("none", Success, "ok ok", "2.0 2.0", good, {});
        row("the next module's file vanishes: silently skipped", Success, "ok ", "2.0 1.0",
            "start updated skipped-no-file success backup", removeNext);
        row("the next module's file is replaced after its certificate was checked", Failure, "ok cancel", "2.0 1.0",
            "start updated file-changed failure", replaceNext);
        row("another type until it is written, as a boot loader answers", Success, "ok ok", "2.0 2.0", good, loader);
        // What a press on the button during a run, or closing the window, sets.
        const auto stop = [](const std::function<bool(const Call&)>& when) {
            return [=](const Call& call) {
                g_stopRequested = g_stopRequested || when(call);
                return false;
            };
        };
        row("stopped in the transfer", Failure, "cancel ", "1.0 1.0", "start stopped failure stop",
            stop([](const Call& call) { return call.word == 0xA001; }));
        row("stopped before the board is polled again", Failure, "cancel ", "1.0 1.0",
            "start stopped-after-writing failure stop",
            stop([](const Call& call) { return call.scripted.finished && call.Asks("DEVICETYPE ?;"); }));
    }
    void RunWithAFault()
    {
        QFETCH(Misbehaviour, fault);
        QFETCH(QString, box);
        const LogKeeper log;
        ScriptedBoard first;
        ScriptedBoard second;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {first.Record("a", 1, 0), second.Record("b", 2, 1)})});
        fixture.TakeArchive(BothImages());
        fixture.driver.Do([&] { first.fault = fault; });
        fixture.driver.Press("buttonUpdate");
        fixture.driver.AnswerBox(box, box == Success ? "Нет" : "OK");
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QTEST(fixture.Status(0) + " " + fixture.Status(1), "status");
        QTEST(fixture.Versions(), "versions");
        QCOMPARE(fixture.Controls(), "idle");
        QTEST(Summary(LogKeeper::Records()), "record");
        QVERIFY(first.blocks > 0);
        QCOMPARE(second.blocks > 0, fixture.Status(1) == "ok");
        QCOMPARE(QFileInfo::exists(WindowFixture::Path("update.old")), box == Success);
    }

    void BoardWithoutVersionIsTriedAgain()
    {
        ScriptedBoard first;
        ScriptedBoard second;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {first.Record("a", 1, 0), second.Record("b", 2, 1)})});
        fixture.TakeArchive(BothImages());
        bool keepsVersion = true;
        second.fault = [&](const Call& c) { return keepsVersion && c.scripted.finished && c.Asks("VER ?;"); };
        QStringList seen;
        const auto look = [&] {
            QString buttons;
            for (const int row : {0, 1}) {
                for (const int column : {3, 4})
                    buttons += fixture.window->GetButton(row, column)->isEnabled() ? '+' : '-';
            }
            seen.append(fixture.Versions() + ' ' + buttons);
        };
        fixture.driver.Press("buttonUpdate");
        fixture.driver.AnswerBox(Failure, "OK");
        fixture.driver.Do(look);
        fixture.driver.Do([&] { keepsVersion = false; });
        fixture.driver.Press("buttonUpdate");
        fixture.driver.AnswerBox(Success, "Нет");
        fixture.driver.Do(look);
        fixture.driver.Do([&] { keepsVersion = true; });
        fixture.driver.Press("button_DeviceType");
        fixture.WaitForVersions();
        fixture.driver.Do(look);
        QVERIFY2(fixture.driver.Run(30s), qPrintable(fixture.driver.Failure));
        // A run enables every row button; only reading the versions again disables those of a row without one.
        QCOMPARE(seen, (QStringList{"2.0 ??? ++++", "2.0 2.0 ++++", "2.0 ??? ++--"}));
        QCOMPARE(first.blocks, 9);
    }

    void RecordHasTheSerialOfTheLastSearch()
    {
        const LogKeeper log;
        ScriptedBoard board;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {board.Record("a", 1, 0)})});
        fixture.TakeArchive(BothImages().first(2));
        fixture.driver.Do([&] { board.fault = [](const Call& c) { return c.Asks("SERIAL ?;") && c.Refuse(); }; });
        fixture.driver.Press("button_DeviceType");
        fixture.WaitForVersions();
        fixture.driver.Press("buttonUpdate");
        fixture.driver.AnswerBox(Success, "Нет");
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        // The button keeps the number of the instrument that answered before.
        QCOMPARE(fixture.Text("button_DeviceType"), "Прибор П  № 55");
        QCOMPARE(LogKeeper::Records()[0]["serial"], QJsonValue());
    }

    void MarksStayWithTheirDevice()
    {
        ScriptedBoard board;
        WindowFixture fixture;
        const TBoardRecord record = board.Record("a", 1, 0);
        TBoardRecord other = record;
        other.Type = "DEV2";
        fixture.Open({testdata::Device("П", 7, {record}), testdata::Device("Р", 7, {other, record})});
        fixture.TakeArchive(BothImages().first(2));
        bool onlyCloseInSearch = true;
        board.fault = [&](const Call& c) {
            const bool right = !fixture.IsEnabled("buttonUpdate") && fixture.IsEnabled("buttonClose");
            onlyCloseInSearch = onlyCloseInSearch && (right || !c.Asks("DEVICETYPE ?;"));
            return false;
        };
        fixture.PressRow(0, 4);
        fixture.driver.Press("button_DeviceType");
        fixture.WaitForVersions();
        fixture.driver.Step("a mark taken off stays off", [&] { return !fixture.IsEnabled("buttonUpdate"); });
        fixture.PressRow(0, 4);
        fixture.driver.Press("button_DeviceType");
        fixture.WaitForVersions();
        fixture.driver.Step("same device: kept",
                            [&] { return fixture.Cell(0, 2) == "2.0" && fixture.IsEnabled("buttonUpdate"); });
        fixture.driver.Do([&] { board.type = "DEV2"; });
        fixture.driver.Press("button_DeviceType");
        fixture.driver.Step("other device: dropped", [&] {
            return fixture.Text("button_DeviceType") == "Прибор Р  № 55" && fixture.Cell(0, 2).isEmpty()
                   && !fixture.IsEnabled("buttonUpdate") && fixture.Controls() == "idle";
        });
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QVERIFY(onlyCloseInSearch);
    }

    void SearchInTheMiddleOfReading_data()
    {
        const Table<QString, QString, QString> row("type", "device", "versions"); // type: the main board's by then
        row("selects a device with fewer modules", "DEV2", "Прибор Р  № 55", "1.0");
        row("finds nothing", "NOBODY", "Прибор не найден!", "1.0 1.0 1.0");
    }
    void SearchInTheMiddleOfReading()
    {
        QFETCH(QString, type);
        ScriptedBoard main;
        ScriptedBoard slow;
        WindowFixture fixture;
        TBoardRecord other = main.Record("other", 1, 0);
        other.Type = "DEV2";
        const QList<TBoardRecord> boards{main.Record("a", 1, 0), slow.Record("b", 2, 1), main.Record("c", 3, 0)};
        fixture.Open({testdata::Device("П", 7, boards), testdata::Device("Р", 8, {other})});
        // The second module does not answer with its version until the button has been pressed.
        bool silent = false;
        bool reading = false;
        slow.fault = [&](const Call& c) { return reading = silent && c.Asks("VER ?;"); };
        fixture.driver.Do([&] { silent = true; });
        fixture.driver.Press("button_DeviceType");
        fixture.driver.Step("in the middle", [&] { return reading; });
        fixture.driver.Do([&] {
            main.type = type.toLatin1();
            silent = false;
        });
        fixture.driver.Press("button_DeviceType");
        fixture.driver.Step("all is idle", [&] {
            return fixture.Controls() == "idle" && fixture.Text("label_Update").isEmpty()
                   && fixture.Text("button_DeviceType") != Searching;
        });
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QTest::qWait(50);
        QCOMPARE(fixture.Controls(), "idle");
        QTEST(fixture.Versions(), "versions");
        QTEST(fixture.Text("button_DeviceType"), "device");
    }

    void OperatorIsQuickerThanTheFirstSearch()
    {
        ScriptedBoard board;
        WindowFixture fixture;
        g_timeLimits.firstSearch = 400ms;
        int searches = 0;
        bool noneYet = false;
        board.fault = [&](const Call& c) {
            searches += c.Asks("DEVICETYPE ?;");
            return false;
        };
        fixture.driver.Press("buttonArchive");
        fixture.driver.Step("no search under a dialog", [] { return UiDriver::OpenDialog(); });
        fixture.driver.Do([] { QTest::qWait(900); });
        fixture.driver.Do([&] {
            noneYet = searches == 0;
            UiDriver::OpenDialog()->reject();
        });
        fixture.driver.Press("button_DeviceType");
        fixture.Open({testdata::Device("П", 7, {board.Record("a", 1, 0)})});
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QTest::qWait(200);
        QVERIFY(noneYet);
        QCOMPARE(searches, 1);
    }
};

QTEST_MAIN(TestRunFaults)
#include "tst_run_faults.moc"

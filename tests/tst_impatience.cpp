// What a bad board or an exchanged instrument makes of the road: every end is told truly, and nothing is left behind.
// What an impatient operator makes of it, sweep_hand.cpp tells.

#include "Actor.h"
#include "Panel.h"
#include "Table.h"
#include "TimeLimits.h"

#include <QDialog>
#include <QFileInfo>
#include <QPushButton>
#include <QTest>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(Misdeed)

class TestImpatience : public QObject
{
    Q_OBJECT

private slots:
    void RunWithAFault_data()
    {
        const QString next = ExtractionFolder() + "/fw_7_2_1_v2.0.rpd";
        const Misdeed removeNext = [=](const Call&) {
            QFile::remove(next);
            return false;
        };
        const Misdeed replaceNext = [=](const Call&) {
            testdata::WriteFile(next, "other");
            return false;
        };
        const Misdeed loader = [](const Call& call) {
            call.actor.type = call.actor.finished ? "DEV" : "LOADER";
            return false;
        };
        // Status and version of the faulty module, then of the next one.
        const Table<QString, QString, QString, Misdeed> row("box", "status", "versions", "fault");
        row("none", Success, "ok ok", "2.0 2.0", {});
        row("the next module's file vanishes: silently skipped", Success, "ok ", "2.0 1.0", removeNext);
        row("the next module's file is replaced behind its certificate", Failure, "ok cancel", "2.0 1.0", replaceNext);
        row("another type until it is written, as a boot loader answers", Success, "ok ok", "2.0 2.0", loader);
    }
    void RunWithAFault()
    {
        QFETCH(Misdeed, fault);
        QFETCH(QString, box);
        Actor first;
        Actor second;
        Panel panel;
        panel.Open({testdata::Device("П", 7, {first.Record("a", 1, 0), second.Record("b", 2, 1)})});
        panel.TakeArchive(BothImages());
        panel.driver.Do([&] { first.fault = fault; });
        panel.driver.Press("buttonUpdate");
        panel.driver.AnswerBox(box, box == Success ? "Нет" : "OK");
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
        QTEST(panel.Status(0) + " " + panel.Status(1), "status");
        QTEST(panel.Versions(), "versions");
        QCOMPARE(panel.Controls(), "idle");
        QCOMPARE(first.blocks > 0, panel.Status(0) == "ok");
        QCOMPARE(second.blocks > 0, panel.Status(1) == "ok");
        QCOMPARE(QFileInfo::exists(Panel::Path("update.old")), box == Success);
    }

    void BoardWithoutVersionIsTriedAgain()
    {
        Actor first;
        Actor second;
        Panel panel;
        panel.Open({testdata::Device("П", 7, {first.Record("a", 1, 0), second.Record("b", 2, 1)})});
        panel.TakeArchive(BothImages());
        bool keepsVersion = true;
        second.fault = [&](const Call& c) { return keepsVersion && c.actor.finished && c.Asks("VER ?;"); };
        QStringList seen;
        const auto look = [&] {
            QString buttons;
            for (const int row : {0, 1}) {
                for (const int column : {3, 4})
                    buttons += panel.window->GetButton(row, column)->isEnabled() ? '+' : '-';
            }
            seen.append(panel.Versions() + ' ' + buttons);
        };
        panel.driver.Press("buttonUpdate");
        panel.driver.AnswerBox(Failure, "OK");
        panel.driver.Do(look);
        panel.driver.Do([&] { keepsVersion = false; });
        panel.driver.Press("buttonUpdate");
        panel.driver.AnswerBox(Success, "Нет");
        panel.driver.Do(look);
        panel.driver.Do([&] { keepsVersion = true; });
        panel.driver.Press("button_DeviceType");
        panel.WaitForVersions();
        panel.driver.Do(look);
        QVERIFY2(panel.driver.Run(30s), qPrintable(panel.driver.Failure));
        // A run enables every row button; only reading the versions anew disables those of a row without one.
        QCOMPARE(seen, (QStringList{"2.0 ??? ++++", "2.0 2.0 ++++", "2.0 ??? ++--"}));
        QCOMPARE(first.blocks, 9);
    }

    void MarksStayWithTheirDevice()
    {
        Actor board;
        Panel panel;
        const TBoardRecord record = board.Record("a", 1, 0);
        TBoardRecord other = record;
        other.Type = "DEV2";
        panel.Open({testdata::Device("П", 7, {record}), testdata::Device("Р", 7, {other, record})});
        panel.TakeArchive(BothImages().first(2));
        bool onlyCloseInSearch = true;
        board.fault = [&](const Call& c) {
            const bool right = !panel.IsEnabled("buttonUpdate") && panel.IsEnabled("buttonClose");
            onlyCloseInSearch = onlyCloseInSearch && (right || !c.Asks("DEVICETYPE ?;"));
            return false;
        };
        panel.PressRow(0, 4);
        panel.driver.Press("button_DeviceType");
        panel.WaitForVersions();
        panel.driver.Step("a mark taken off stays off", [&] { return !panel.IsEnabled("buttonUpdate"); });
        panel.PressRow(0, 4);
        panel.driver.Press("button_DeviceType");
        panel.WaitForVersions();
        panel.driver.Step("same device: kept",
                          [&] { return panel.Cell(0, 2) == "2.0" && panel.IsEnabled("buttonUpdate"); });
        panel.driver.Do([&] { board.type = "DEV2"; });
        panel.driver.Press("button_DeviceType");
        panel.driver.Step("other device: dropped", [&] {
            return panel.Text("button_DeviceType") == "Прибор Р  № 55" && panel.Cell(0, 2).isEmpty()
                   && !panel.IsEnabled("buttonUpdate") && panel.Controls() == "idle";
        });
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
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
        Actor main;
        Actor slow;
        Panel panel;
        TBoardRecord other = main.Record("other", 1, 0);
        other.Type = "DEV2";
        const QList<TBoardRecord> boards{main.Record("a", 1, 0), slow.Record("b", 2, 1), main.Record("c", 3, 0)};
        panel.Open({testdata::Device("П", 7, boards), testdata::Device("Р", 8, {other})});
        // The second module keeps its version back until the button has been pressed.
        bool silent = false;
        bool reading = false;
        slow.fault = [&](const Call& c) { return reading = silent && c.Asks("VER ?;"); };
        panel.driver.Do([&] { silent = true; });
        panel.driver.Press("button_DeviceType");
        panel.driver.Step("in the middle", [&] { return reading; });
        panel.driver.Do([&] {
            main.type = type.toLatin1();
            silent = false;
        });
        panel.driver.Press("button_DeviceType");
        panel.driver.Step("all is idle", [&] {
            return panel.Controls() == "idle" && panel.Text("label_Update").isEmpty()
                   && panel.Text("button_DeviceType") != "Поиск прибора...";
        });
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
        QTest::qWait(50);
        QCOMPARE(panel.Controls(), "idle");
        QTEST(panel.Versions(), "versions");
        QTEST(panel.Text("button_DeviceType"), "device");
    }

    void OperatorIsQuickerThanTheFirstSearch()
    {
        Actor board;
        Panel panel;
        g_timeLimits.firstSearch = 400ms;
        int searches = 0;
        bool noneYet = false;
        board.fault = [&](const Call& c) {
            searches += c.Asks("DEVICETYPE ?;");
            return false;
        };
        panel.driver.Press("buttonArchive");
        panel.driver.Step("no search under a dialog", [] { return UiDriver::OpenDialog(); });
        panel.driver.Do([] { QTest::qWait(900); });
        panel.driver.Do([&] {
            noneYet = searches == 0;
            UiDriver::OpenDialog()->reject();
        });
        panel.driver.Press("button_DeviceType");
        panel.Open({testdata::Device("П", 7, {board.Record("a", 1, 0)})});
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
        QTest::qWait(200);
        QVERIFY(noneYet);
        QCOMPARE(searches, 1);
    }
};

QTEST_MAIN(TestImpatience)
#include "tst_impatience.moc"

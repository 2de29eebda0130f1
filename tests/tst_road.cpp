// The operator's road in the real window over real TCP: search, versions, archive, update, and what an
// impatient hand or a bad board makes of it.

#include "AppState.h"
#include "FakeBoard.h"
#include "MessageBoxes.h"
#include "Panel.h"
#include "Stage.h"
#include "Table.h"
#include "TimeLimits.h"

#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr char Success[] = "Все модули успешно обновлены!\nПрибор необходимо перезагрузить";
constexpr char Failure[] = "Произошла ошибка обновления!";

/// A board that can be told to misbehave.
struct Actor
{
    struct Call
    {
        Actor& actor;
        QTcpSocket& socket;
        QByteArray request;
        int word = 0; ///< of a binary request, otherwise 0

        bool Asks(const char* command) const { return FakeBoard::Command(request) == command; }
        bool Refuse() const { return socket.write(FakeBoard::Answer(request, char(0xC8), "\3")) > 0; }
        bool HangUp() const { return socket.abort(), true; }
    };
    QByteArray type = "DEV";
    QByteArray version = "1.0";
    QByteArray nextVersion = "2.0"; ///< after a finished transfer
    int blocks = 0;
    bool finished = false;
    /// True when it has dealt with the request itself.
    std::function<bool(const Call&)> fault;
    FakeBoard board{[this](QTcpSocket& socket, const QByteArray& request) { Play(socket, request); }};

    void Play(QTcpSocket& socket, const QByteArray& request)
    {
        const bool isBinary = request.at(7) == 0x48;
        const int word = isBinary ? quint8(request.at(10)) + quint8(request.at(11)) * 256 : 0;
        const Call call{*this, socket, request, word};
        if (fault && fault(call))
            return;
        blocks += word == 0xA001;
        finished = finished || word >= 0xA003;
        version = finished ? nextVersion : version;
        const QByteArray answer = call.Asks("DEVICETYPE ?;") ? "DEVICETYPE " + type
                                  : call.Asks("SERIAL ?;")   ? QByteArray("SERIAL 55")
                                                             : "VER " + version;
        socket.write(isBinary ? FakeBoard::Answer(request, 0x48, QByteArray("\2\0", 2) + request.mid(10, 2))
                              : FakeBoard::Text(request, answer + ";"));
    }
    TBoardRecord Record(const QString& name, int unit, int cpu) const
    {
        return stage::Board(name, type, "127.0.0.1", board.serverPort(), unit, cpu);
    }
};
using Call = Actor::Call;
using Fault = decltype(Actor::fault);

/// Answers every box with its first button and keeps what was read.
class BoxReader : public QObject
{
public:
    BoxReader() { startTimer(15); }
    QStringList texts;

private:
    void timerEvent(QTimerEvent*) override
    {
        QMessageBox* box = Hand::OpenBox();
        if (!box || box->property("read").toBool())
            return;
        texts.append(box->windowTitle() + ": " + box->text());
        box->setProperty("read", true);
        Hand::PressNow(box->buttons().first());
    }
};

stage::Files BothImages()
{
    return stage::WithCertificates(
        {{"fw_7_1_0_v2.0.bin", stage::Image("2.0", 2000)}, {"fw_7_2_1_v2.0.rpd", stage::Image("2.0", 900)}});
}

} // namespace

Q_DECLARE_METATYPE(Fault)

class TestRoad : public QObject
{
    Q_OBJECT

    /// A device of three firmware modules, two of them on one board, and a program module.
    static TDeviceRecord FullDevice()
    {
        return stage::Device(
            "П-7", 7,
            {stage::Board("Один", "DEV", "127.0.0.1", 0, 1, 0), stage::Board("Два", "DEV", "127.0.0.1", 0, 1, 1),
             stage::Board("Три", "MVPROBER-3", "127.0.0.2", 0, 2, 2), stage::Program("Программа", "viewer", "viewer")});
    }

    static stage::Files FullArchive()
    {
        return stage::WithCertificates({{"fw/fw_7_1_0_v1.5.bin", stage::Image("1.5", 5000)},
                                        {"fw/fw_7_1_1_v2.1.rpd", stage::Image("2.1", 240)},
                                        {"fw/fw_7_2_2_v3.0.rpd", stage::Image("3.0", 241)},
                                        {"viewer/viewer", "#!/bin/sh\n"},
                                        {"viewer/viewer.ver", "4.0"}});
    }

private slots:
    void init() { stage::WriteFile(Panel::Path("viewer.ver"), "1.0"); }

    void WholeRoad_data()
    {
        const Table<QString, QString> row("answer", "sudo");
        const QString chmod = "chmod 777 " + Panel::Path("viewer");
        row("no", "Нет", chmod);
        row("yes", "Да", chmod + ";reboot");
    }
    void WholeRoad()
    {
        QFETCH(QString, answer);
        Panel panel;
        Instrument* instrument = panel.Play(FullDevice());
        const int port = instrument->Device().Boards[0].Port;
        panel.Open(
            {stage::Device("Чужой", 8, {stage::Board("x", "OTHER", "127.0.0.1", port, 1, 0)}), instrument->Device()});
        panel.TakeArchive(FullArchive());
        panel.hand.Press("buttonUpdate");
        panel.hand.Step("row buttons stay disabled in the run", [&] {
            return panel.Cell(0, 1) == "1.5" && panel.Text("buttonUpdate") == "Отмена"
                   && !panel.window->GetButton(0, 3)->isEnabled() && !panel.window->GetButton(0, 4)->isEnabled();
        });
        panel.hand.AnswerBox(Success, answer);
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));

        QCOMPARE(panel.Text("button_DeviceType"), "Прибор П-7  № 777");
        const stage::Files files = FullArchive();
        for (int row = 0; row < 4; ++row) {
            QCOMPARE(instrument->Image(row), row < 3 ? files[row * 2].second : QByteArray());
            QCOMPARE(panel.Cell(row, 1), QStringList({"1.5", "2.1", "3.0", "4.0"})[row]);
            QCOMPARE(panel.Status(row), "ok");
        }
        QCOMPARE(panel.Controls(), "idle");
        QVERIFY(!panel.IsEnabled("buttonUpdate"));
        QTEST(Panel::SudoLog().join(';'), "sudo");
        QVERIFY(QFileInfo::exists(Panel::Path("update.old/tst_road")));
    }

    void NothingFound_data()
    {
        const Table<QList<TDeviceRecord>, QString> row("devices", "versions");
        TDeviceRecord device = FullDevice();
        device.Boards[0].Port = stage::FreePort("127.0.0.1");
        const TDeviceRecord absurd =
            stage::Device("!", -1, {stage::Board("a", "", "127.0.0.1", 70000, 258, 2147483647)});
        row("empty catalogue", {}, "");
        row("nobody there, and absurd numbers", {device, absurd}, "??? ??? ??? 1.0");
    }
    void NothingFound()
    {
        QFETCH(QList<TDeviceRecord>, devices);
        Panel panel;
        panel.Open(devices);
        QTRY_COMPARE(panel.Text("button_DeviceType"), "Прибор не найден!");
        QCOMPARE(panel.Controls(), "idle");
        QTEST(panel.Versions(), "versions");
        QCOMPARE(panel.window->windowTitle(), "Обновление ПО приборов, версия 1.38");
        QCOMPARE(panel.Text("label_Version"), "v1.38");
        QVERIFY(panel.window->close());
        QVERIFY(!g_stopRequested && !g_updateAborted);
    }

    void Boxes_data()
    {
        const Table<bool, QString, int> row("question", "press", "result"); // press "": Escape
        row("alert, button", false, "OK", QMessageBox::Ok);
        row("alert, Escape", false, "", QMessageBox::Ok);
        row("question, yes", true, "Да", QMessageBox::Yes);
        row("question, no", true, "Нет", QMessageBox::No);
        row("question, Escape", true, "", QMessageBox::No);
    }
    void Boxes()
    {
        QFETCH(bool, question);
        QFETCH(QString, press);
        const QString text = "<b>Текст</b>";
        const auto icon = question ? QMessageBox::Question : QMessageBox::Critical;
        Hand hand;
        hand.Step("the box", [=] {
            const QMessageBox* box = Hand::OpenBox();
            return box && g_currentMessageBox == box && box->textFormat() == Qt::PlainText && box->icon() == icon
                   && box->windowFlags().testFlag(Qt::FramelessWindowHint);
        });
        if (press.isEmpty())
            hand.Do([] { QTest::keyClick(Hand::OpenBox(), Qt::Key_Escape); });
        else
            hand.AnswerBox(text, press);
        hand.Start(5s);
        QTEST(question ? AskYesNo(nullptr, "Вопрос", text) : ShowAlert(nullptr, "Внимание!", text, "OK"), "result");
        QVERIFY(!g_currentMessageBox);
        QVERIFY2(hand.Failure.isEmpty(), qPrintable(hand.Failure));
    }

    void Certificates_data()
    {
        const Table<stage::Files, QStringList, QString> row("files", "boxes", "versions");
        const QString missing = "Внимание!: Не найден сертификат fw_7_1_0_v2.0.bin.sha256";
        const QString different = "Внимание!: Не соответствует сертификат fw_7_1_0_v2.0.bin.sha256";
        const stage::Files good = BothImages();
        const auto certified = stage::WithCertificates;
        row("good", good, {}, "2.0 2.0");
        row("missing: told for every row", {good[0], good[2], good[3]}, {missing, missing}, " 2.0");
        row("hexadecimal", {good[0], {good[1].first, good[1].second.toHex()}}, {different, different}, " ");
        row("wrong kind of image", certified({{"fw_7_1_0_v9.rpd", "x"}, {"fw_7_2_1_v9.bin", "x"}}), {}, " ");
        row("a later entry wins", certified({{"a/fw_7_1_0_v3.bin", "x"}, {"b/fw_7_1_0_v2.5.bin", "y"}}), {}, "2.5 ");
        row("empty archive", {}, {}, " ");
    }
    void Certificates()
    {
        QFETCH(stage::Files, files);
        Actor one;
        Panel panel;
        panel.Open({stage::Device("П", 7, {one.Record("a", 1, 0), one.Record("b", 2, 1)})});
        BoxReader boxes;
        panel.TakeArchive(files);
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));
        QTEST(boxes.texts, "boxes");
        QTEST(panel.Cell(0, 2) + " " + panel.Cell(1, 2), "versions");
    }

    void ArchiveThatCannotBeExtracted()
    {
        Actor one;
        Panel panel;
        panel.Open({stage::Device("П", 7, {one.Record("a", 1, 0)})});
        // In a "firmware" folder the extraction folder is not made, and it is not there.
        stage::WriteZip(Panel::Path("firmware.zip"), BothImages());
        panel.hand.Press("buttonArchive");
        panel.hand.ChooseFile("Открыть архив с прошивками", "firmware.zip");
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));
        QTRY_VERIFY(QApplication::activeModalWidget()->windowType() == Qt::ToolTip);
        QTest::qWait(50);
        QCOMPARE(panel.Cell(0, 2), "");
        QVERIFY(QApplication::activeModalWidget()->close());
        QFile::remove(Panel::Path("firmware.zip"));
    }

    void OneFileForOneRow()
    {
        Actor one;
        Panel panel;
        panel.Open({stage::Device("П", 7, {one.Record("a", 1, 0)})});
        for (const auto& [name, content] : stage::WithCertificates({{"fw_7_1_0_v1.4.bin", "image"}}))
            stage::WriteFile(Panel::Path("firmware/" + name), content);
        const auto marked = [&] {
            return panel.IsEnabled("buttonUpdate") && !panel.window->GetButton(0, 4)->icon().isNull();
        };
        panel.PressRow(0, 3);
        panel.hand.ChooseFile("Открыть файл с прошивкой", "fw_7_1_0_v1.4.bin");
        panel.hand.Step("taken", [&] { return panel.Cell(0, 2) == "1.4" && marked(); });
        panel.PressRow(0, 4);
        panel.hand.Step("off", [=] { return !marked(); });
        panel.PressRow(0, 4);
        panel.hand.Step("on again", marked);
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));
        QCOMPARE(panel.Controls(), "idle");
    }

    void RunWithAFault_data()
    {
        // Status and version of the faulty module, then of the next one.
        const Table<QString, QString, QString, Fault> row("box", "status", "versions", "fault");
        row("none", Success, "ok ok", "2.0 2.0", {});
        row("block refused", Failure, "cancel ", "1.0 1.0",
            [](const Call& c) { return c.word == 0xA001 && c.actor.blocks == 1 && c.Refuse(); });
        row("gone in a block", Failure, "cancel ", "1.0 1.0",
            [](const Call& c) { return c.word == 0xA001 && c.HangUp(); });
        row("bare finish unanswered", Success, "ok ok", "2.0 2.0", [](const Call& c) {
            c.actor.finished = c.actor.finished || c.word == 0xA003;
            return c.word == 0xA003 && c.HangUp();
        });
        row("never restarts: the next module is still written", Failure, "cancel ok", "1.0 2.0",
            [](const Call& c) { return c.actor.finished && c.HangUp(); });
        row("restarts with the old version: told by the icon", Success, "cancel ok", "1.0 2.0",
            [](const Call& c) { return c.actor.nextVersion = "1.0", false; });
        row("restarts as another type", Failure, "cancel ok", "1.0 2.0",
            [](const Call& c) { return c.actor.type = c.actor.finished ? "X" : "DEV", false; });
        row("no version after the restart", Failure, "cancel ok", "??? 2.0",
            [](const Call& c) { return c.actor.finished && c.Asks("VER ?;") && c.HangUp(); });
        row("switched off: silently skipped", Success, " ok", "1.0 2.0",
            [](const Call& c) { return c.actor.board.close(), c.HangUp(); });
        row("the next module's file vanishes: silently skipped", Success, "ok ", "2.0 1.0",
            [](const Call&) { return QFile::remove(ExtractionFolder() + "/fw_7_2_1_v2.0.rpd"), false; });
        row("the next module's file is replaced behind its certificate", Failure, "ok cancel", "2.0 1.0",
            [](const Call&) { return stage::WriteFile(ExtractionFolder() + "/fw_7_2_1_v2.0.rpd", "other"), false; });
        row("another instrument in its place: not written", Failure, "cancel ", "1.0 1.0", [](const Call& c) {
            return c.actor.type = "X", QTest::qVerify(c.word == 0, "no write", "", "", 0), false;
        });
    }
    void RunWithAFault()
    {
        QFETCH(Fault, fault);
        QFETCH(QString, box);
        Actor first;
        Actor second;
        Panel panel;
        panel.Open({stage::Device("П", 7, {first.Record("a", 1, 0), second.Record("b", 2, 1)})});
        panel.TakeArchive(BothImages());
        panel.hand.Do([&] { first.fault = fault; });
        panel.hand.Press("buttonUpdate");
        panel.hand.AnswerBox(box, box == Success ? "Нет" : "OK");
        QVERIFY2(panel.hand.Run(30s), qPrintable(panel.hand.Failure));
        QTEST(panel.Status(0) + " " + panel.Status(1), "status");
        QTEST(panel.Versions(), "versions");
        QCOMPARE(panel.Controls(), "idle");
        QCOMPARE(second.blocks > 0, panel.Status(1) == "ok");
        QCOMPARE(QFileInfo::exists(Panel::Path("update.old")), box == Success);
    }

    void Stop_data()
    {
        const Table<int, bool> row("presses", "isLast"); // presses 1: in the transfer; 2: in the sleep behind it
        row("in the transfer", 1, false);
        row("twice in the blocking sleep", 2, false);
        row("twice in the last module's sleep", 2, true);
    }
    void Stop()
    {
        QFETCH(int, presses);
        QFETCH(bool, isLast);
        Actor first;
        Actor second;
        Panel panel;
        QList<TBoardRecord> boards{first.Record("a", 1, 0), second.Record("b", 2, 1)};
        panel.Open({stage::Device("П", 7, boards.first(isLast ? 1 : 2))});
        const auto press = [&] { Hand::PressNow(panel.window->findChild<QPushButton*>("buttonUpdate")); };
        std::jthread inTheSleep;
        first.fault = [&](const Call& c) {
            if (presses == 1 && c.actor.blocks == 1)
                press();
            // From another thread: this one will be in the blocking sleep behind the finish command.
            if (presses == 2 && c.word == 0xA003)
                inTheSleep = std::jthread([=] {
                    std::this_thread::sleep_for(100ms);
                    press(), press();
                });
            return false;
        };
        g_timeLimits.restartPause = 400ms;
        panel.TakeArchive(BothImages());
        panel.hand.Press("buttonUpdate");
        panel.hand.AnswerBox(Failure, "OK");
        QVERIFY2(panel.hand.Run(30s), qPrintable(panel.hand.Failure));
        QTest::qWait(100);
        QCOMPARE(panel.Controls(), "idle");
        QCOMPARE(second.blocks, 0);
        QCOMPARE(isLast ? QString() : panel.Status(1), "");
        QVERIFY(first.blocks < 3 || presses == 2);
        QVERIFY(!QFileInfo::exists(Panel::Path("update.old")));
    }

    void MarksStayWithTheirDevice()
    {
        Actor board;
        Panel panel;
        const TBoardRecord record = board.Record("a", 1, 0);
        TBoardRecord other = record;
        other.Type = "DEV2";
        panel.Open({stage::Device("П", 7, {record}), stage::Device("Р", 7, {other, record})});
        panel.TakeArchive(BothImages());
        bool onlyCloseInSearch = true;
        board.fault = [&](const Call& c) {
            const bool right = !panel.IsEnabled("buttonUpdate") && panel.IsEnabled("buttonClose");
            onlyCloseInSearch = onlyCloseInSearch && (right || !c.Asks("DEVICETYPE ?;"));
            return false;
        };
        panel.PressRow(0, 4);
        panel.hand.Press("button_DeviceType");
        panel.WaitForVersions();
        panel.hand.Step("a mark taken off stays off", [&] { return !panel.IsEnabled("buttonUpdate"); });
        panel.PressRow(0, 4);
        panel.hand.Press("button_DeviceType");
        panel.WaitForVersions();
        panel.hand.Step("same device: kept",
                        [&] { return panel.Cell(0, 2) == "2.0" && panel.IsEnabled("buttonUpdate"); });
        panel.hand.Do([&] { board.type = "DEV2"; });
        panel.hand.Press("button_DeviceType");
        panel.hand.Step("other device: dropped", [&] {
            return panel.Text("button_DeviceType") == "Прибор Р  № 55" && panel.Cell(0, 2).isEmpty()
                   && !panel.IsEnabled("buttonUpdate") && panel.Controls() == "idle";
        });
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));
        QVERIFY(onlyCloseInSearch);
    }

    void PressedInTheMiddleOfReading_data()
    {
        const Table<QString, QString, QString> row("type", "device",
                                                   "versions"); // type: the main board's after the press
        row("search that selects a device with fewer modules", "DEV2", "Прибор Р  № 55", "1.0");
        row("search that finds nothing", "NOBODY", "Прибор не найден!", "1.0 1.0 1.0");
        row("archive", "DEV", "Прибор П  № 55", "1.0 ??? 1.0");
        // Never a version of before the run behind the run.
        row("update", "DEV", "Прибор П  № 55", "2.0 2.0 2.0");
    }
    void PressedInTheMiddleOfReading()
    {
        const QString press = QTest::currentDataTag();
        QFETCH(QString, type);
        Actor main;
        Actor slow;
        Panel panel;
        TBoardRecord other = main.Record("other", 1, 0);
        other.Type = "DEV2";
        const QList<TBoardRecord> boards{main.Record("a", 1, 0), slow.Record("b", 2, 1), main.Record("c", 3, 0)};
        panel.Open({stage::Device("П", 7, boards), stage::Device("Р", 8, {other})});
        g_timeLimits.reply = 3s;
        if (press == "update")
            panel.TakeArchive(BothImages());
        // The second module keeps its version back until the hand has pressed; behind an archive it stays silent.
        bool silent = false;
        bool reading = false;
        slow.fault = [&](const Call& c) { return reading = silent && c.Asks("VER ?;"); };
        panel.hand.Do([&] { silent = true; });
        panel.hand.Press("button_DeviceType");
        panel.hand.Step("in the middle", [&] { return reading; });
        panel.hand.Do([&] {
            main.type = type.toLatin1();
            silent = press == "archive";
        });
        if (press == "archive")
            panel.TakeArchive(BothImages());
        else
            panel.hand.Press(press == "update" ? "buttonUpdate" : "button_DeviceType");
        if (press == "update")
            panel.hand.AnswerBox(Success, "Нет");
        panel.hand.Step("all is idle", [&] {
            return panel.Controls() == "idle" && panel.Text("label_Update").isEmpty()
                   && panel.Text("button_DeviceType") != "Поиск прибора...";
        });
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));
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
        board.fault = [&](const Call& c) { return searches += c.Asks("DEVICETYPE ?;"), false; };
        panel.hand.Press("buttonArchive");
        panel.hand.Step("no search under a dialog", [] { return Hand::OpenDialog(); });
        panel.hand.Do([] { QTest::qWait(900); });
        panel.hand.Do([&] { noneYet = searches == 0, Hand::OpenDialog()->reject(); });
        panel.hand.Press("button_DeviceType");
        panel.Open({stage::Device("П", 7, {board.Record("a", 1, 0)})});
        QVERIFY2(panel.hand.Run(), qPrintable(panel.hand.Failure));
        QTest::qWait(200);
        QVERIFY(noneYet);
        QCOMPARE(searches, 1);
    }
};

QTEST_MAIN(TestRoad)
#include "tst_road.moc"

// An update by the operator in the real window over real TCP: search, versions, archive, update and message boxes.

#include "AlertRecorder.h"
#include "AppState.h"
#include "MessageBoxes.h"
#include "RecordKeeper.h"
#include "ScriptedBoard.h"
#include "Table.h"
#include "WindowFixture.h"

#include <QCryptographicHash>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

using namespace std::chrono_literals;

class TestOperatorFlow : public QObject
{
    Q_OBJECT

    /// A device of three firmware modules, two of them on one board, and a program module.
    static TDeviceRecord FullDevice()
    {
        return testdata::Device("П-7", 7,
                                {testdata::Board("Один", "DEV", "127.0.0.1", 0, 1, 0),
                                 testdata::Board("Два", "DEV", "127.0.0.1", 0, 1, 1),
                                 testdata::Board("Три", "MVPROBER-3", "127.0.0.2", 0, 2, 2),
                                 testdata::Program("Программа", "viewer", "viewer")});
    }

    static testdata::Files FullArchive()
    {
        return testdata::WithCertificates({{"fw/fw_7_1_0_v1.5.bin", testdata::Image("1.5", 5000)},
                                           {"fw/fw_7_1_1_v2.1.rpd", testdata::Image("2.1", 240)},
                                           {"fw/fw_7_2_2_v3.0.rpd", testdata::Image("3.0", 241)},
                                           {"viewer/viewer", "#!/bin/sh\n"},
                                           {"viewer/viewer.ver", "4.0"}});
    }

private slots:
    void init() { testdata::WriteFile(WindowFixture::Path("viewer.ver"), "1.0"); }

    void WholeRoad_data()
    {
        const Table<QString, QString> row("answer", "sudo");
        const QString chmod = "chmod 777 " + WindowFixture::Path("viewer");
        row("no", "Нет", chmod);
        row("yes", "Да", chmod + ";reboot");
    }
    void WholeRoad()
    {
        QFETCH(QString, answer);
        const LogKeeper log;
        WindowFixture fixture;
        Instrument* instrument = fixture.Play(FullDevice());
        const int port = instrument->Device().Boards[0].Port;
        fixture.Open({testdata::Device("Чужой", 8, {testdata::Board("x", "OTHER", "127.0.0.1", port, 1, 0)}),
                      instrument->Device()});
        fixture.TakeArchive(FullArchive());
        fixture.driver.Press("buttonUpdate");
        fixture.driver.Step("row buttons stay disabled in the run", [&] {
            return fixture.Cell(0, 1) == "1.5" && fixture.Text("buttonUpdate") == "Отмена"
                   && !fixture.window->GetButton(0, 3)->isEnabled() && !fixture.window->GetButton(0, 4)->isEnabled();
        });
        fixture.driver.AnswerBox(Success, answer);
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));

        QCOMPARE(fixture.Text("button_DeviceType"), "Прибор П-7  № 777");
        const testdata::Files files = FullArchive();
        for (int row = 0; row < 4; ++row) {
            QCOMPARE(instrument->Image(row), row < 3 ? files[row * 2].second : QByteArray());
            QCOMPARE(fixture.Cell(row, 1), QStringList({"1.5", "2.1", "3.0", "4.0"})[row]);
            QCOMPARE(fixture.Status(row), "ok");
        }
        QCOMPARE(fixture.Controls(), "idle");
        QVERIFY(!fixture.IsEnabled("buttonUpdate"));
        QTEST(WindowFixture::SudoLog().join(';'), "sudo");
        QVERIFY(QFileInfo::exists(WindowFixture::Path("update.old/tst_operator_flow")));

        const QList<QJsonObject> records = LogKeeper::Records();
        QCOMPARE(Summary(records), "start updated updated updated updated success backup");
        const QJsonObject start{{"device", 7},       {"event", "start"}, {"instrument", "П-7"},     {"marked", 4},
                                {"program", "1.38"}, {"serial", "777"},  {"run", records[5]["run"]}};
        QCOMPARE(records[0], start);
        for (int row = 0; row < 4; ++row) {
            const auto& [name, content] = files[row * 2];
            const QString version = fixture.Cell(row, 1);
            const QByteArray sha256 = QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
            const QJsonObject module{{"event", "module"},
                                     {"run", records[5]["run"]},
                                     {"name", fixture.Cell(row, 0)},
                                     {"before", "1.0"},
                                     {"offered", version},
                                     {"after", version},
                                     {"outcome", "updated"},
                                     {"size", content.size()},
                                     {"sha256", QString(sha256)},
                                     {"file", FileNameOf(name)},
                                     {"kind", row < 3 ? "firmware" : "program"},
                                     {"seconds", records[row + 1]["seconds"].toDouble(-1)}};
            QCOMPARE(records[row + 1], module);
        }
        QCOMPARE(records[5]["modules"], 4);
    }

    void NothingFound_data()
    {
        const Table<QList<TDeviceRecord>, QString> row("devices", "versions");
        TDeviceRecord device = FullDevice();
        device.Boards[0].Port = testdata::FreePort("127.0.0.1");
        const TDeviceRecord absurd =
            testdata::Device("!", -1, {testdata::Board("a", "", "127.0.0.1", 70000, 258, 2147483647)});
        row("empty catalogue", {}, "");
        row("nobody there, and absurd numbers", {device, absurd}, "??? ??? ??? 1.0");
    }
    void NothingFound()
    {
        QFETCH(QList<TDeviceRecord>, devices);
        WindowFixture fixture;
        fixture.Open(devices);
        QTRY_COMPARE(fixture.Text("button_DeviceType"), "Прибор не найден!");
        QCOMPARE(fixture.Controls(), "idle");
        QTEST(fixture.Versions(), "versions");
        QCOMPARE(fixture.window->windowTitle(), "Обновление ПО приборов, версия 1.38");
        QCOMPARE(fixture.Text("label_Version"), "v1.38");
        QVERIFY(fixture.window->close());
        QVERIFY(!g_stopRequested && !g_updateAborted);
    }

    void Alerts_data()
    {
        const Table<bool, QString, int> row("question", "press", "result"); // press "": Escape
        row("alert, button", false, "OK", QMessageBox::Ok);
        row("alert, Escape", false, "", QMessageBox::Ok);
        row("question, yes", true, "Да", QMessageBox::Yes);
        row("question, no", true, "Нет", QMessageBox::No);
        row("question, Escape", true, "", QMessageBox::No);
    }
    void Alerts()
    {
        QFETCH(bool, question);
        QFETCH(QString, press);
        const QString text = "<b>Текст</b>";
        const auto icon = question ? QMessageBox::Question : QMessageBox::Critical;
        UiDriver driver;
        driver.Step("the message box", [=] {
            const QMessageBox* box = UiDriver::OpenBox();
            return box && g_currentMessageBox == box && box->textFormat() == Qt::PlainText && box->icon() == icon
                   && box->windowFlags().testFlag(Qt::FramelessWindowHint);
        });
        if (press.isEmpty())
            driver.Do([] { QTest::keyClick(UiDriver::OpenBox(), Qt::Key_Escape); });
        else
            driver.AnswerBox(text, press);
        driver.Start();
        QTEST(question ? AskYesNo(nullptr, "Вопрос", text) : ShowAlert(nullptr, "Внимание!", text, "OK"), "result");
        QVERIFY(!g_currentMessageBox);
        QVERIFY2(driver.Failure.isEmpty(), qPrintable(driver.Failure));
    }

    void Certificates_data()
    {
        const Table<testdata::Files, QStringList, QString> row("files", "alerts", "versions");
        const QString missing = "Внимание!: Не найден сертификат fw_7_1_0_v2.0.bin.sha256";
        const QString different = "Внимание!: Не соответствует сертификат fw_7_1_0_v2.0.bin.sha256";
        const testdata::Files good = BothImages();
        const auto certified = testdata::WithCertificates;
        row("good", good, {}, "2.0 2.0");
        row("missing: reported for every row", {good[0], good[2], good[3]}, {missing, missing}, " 2.0");
        row("hexadecimal", {good[0], {good[1].first, good[1].second.toHex()}}, {different, different}, " ");
        row("wrong kind of image", certified({{"fw_7_1_0_v9.rpd", "x"}, {"fw_7_2_1_v9.bin", "x"}}), {}, " ");
        row("a later entry wins", certified({{"a/fw_7_1_0_v3.bin", "x"}, {"b/fw_7_1_0_v2.5.bin", "y"}}), {}, "2.5 ");
        row("empty archive", {}, {}, " ");
    }
    void Certificates()
    {
        QFETCH(testdata::Files, files);
        ScriptedBoard one;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {one.Record("a", 1, 0), one.Record("b", 2, 1)})});
        AlertRecorder alerts;
        fixture.TakeBadArchive(files);
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QTEST(alerts.texts, "alerts");
        QTEST(fixture.Cell(0, 2) + " " + fixture.Cell(1, 2), "versions");
    }

    void ArchiveThatCannotBeExtracted()
    {
        ScriptedBoard one;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {one.Record("a", 1, 0)})});
        // A program in a "firmware" folder does not create the extraction folder, and here none exists.
        testdata::WriteZip(WindowFixture::Path("firmware.zip"), BothImages());
        fixture.driver.Press("buttonArchive");
        fixture.driver.ChooseFile("Открыть архив с прошивками", "firmware.zip");
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QTRY_VERIFY(QApplication::activeModalWidget()->windowType() == Qt::ToolTip);
        QTest::qWait(50);
        QCOMPARE(fixture.Cell(0, 2), "");
        QVERIFY(QApplication::activeModalWidget()->close());
        QFile::remove(WindowFixture::Path("firmware.zip"));
    }

    void OneFileForOneRow()
    {
        ScriptedBoard one;
        WindowFixture fixture;
        fixture.Open({testdata::Device("П", 7, {one.Record("a", 1, 0)})});
        for (const auto& [name, content] : testdata::WithCertificates({{"fw_7_1_0_v1.4.bin", "image"}}))
            testdata::WriteFile(WindowFixture::Path("firmware/" + name), content);
        const auto marked = [&] {
            return fixture.IsEnabled("buttonUpdate") && !fixture.window->GetButton(0, 4)->icon().isNull();
        };
        fixture.PressRow(0, 3);
        fixture.driver.ChooseFile("Открыть файл с прошивкой", "fw_7_1_0_v1.4.bin");
        fixture.driver.Step("taken", [&] { return fixture.Cell(0, 2) == "1.4" && marked(); });
        fixture.PressRow(0, 4);
        fixture.driver.Step("off", [=] { return !marked(); });
        fixture.PressRow(0, 4);
        fixture.driver.Step("on again", marked);
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        QCOMPARE(fixture.Controls(), "idle");
    }
};

QTEST_MAIN(TestOperatorFlow)
#include "tst_operator_flow.moc"

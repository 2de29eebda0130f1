// The operator's road in the real window over real TCP: search, versions, archive, update, and the boxes on the way.

#include "Actor.h"
#include "AppState.h"
#include "BoxReader.h"
#include "MessageBoxes.h"
#include "Panel.h"
#include "Table.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTest>

using namespace std::chrono_literals;

class TestRoad : public QObject
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
    void init() { testdata::WriteFile(Panel::Path("viewer.ver"), "1.0"); }

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
        panel.Open({testdata::Device("Чужой", 8, {testdata::Board("x", "OTHER", "127.0.0.1", port, 1, 0)}),
                    instrument->Device()});
        panel.TakeArchive(FullArchive());
        panel.driver.Press("buttonUpdate");
        panel.driver.Step("row buttons stay disabled in the run", [&] {
            return panel.Cell(0, 1) == "1.5" && panel.Text("buttonUpdate") == "Отмена"
                   && !panel.window->GetButton(0, 3)->isEnabled() && !panel.window->GetButton(0, 4)->isEnabled();
        });
        panel.driver.AnswerBox(Success, answer);
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));

        QCOMPARE(panel.Text("button_DeviceType"), "Прибор П-7  № 777");
        const testdata::Files files = FullArchive();
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
        device.Boards[0].Port = testdata::FreePort("127.0.0.1");
        const TDeviceRecord absurd =
            testdata::Device("!", -1, {testdata::Board("a", "", "127.0.0.1", 70000, 258, 2147483647)});
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
        UiDriver driver;
        driver.Step("the box", [=] {
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
        const Table<testdata::Files, QStringList, QString> row("files", "boxes", "versions");
        const QString missing = "Внимание!: Не найден сертификат fw_7_1_0_v2.0.bin.sha256";
        const QString different = "Внимание!: Не соответствует сертификат fw_7_1_0_v2.0.bin.sha256";
        const testdata::Files good = BothImages();
        const auto certified = testdata::WithCertificates;
        row("good", good, {}, "2.0 2.0");
        row("missing: told for every row", {good[0], good[2], good[3]}, {missing, missing}, " 2.0");
        row("hexadecimal", {good[0], {good[1].first, good[1].second.toHex()}}, {different, different}, " ");
        row("wrong kind of image", certified({{"fw_7_1_0_v9.rpd", "x"}, {"fw_7_2_1_v9.bin", "x"}}), {}, " ");
        row("a later entry wins", certified({{"a/fw_7_1_0_v3.bin", "x"}, {"b/fw_7_1_0_v2.5.bin", "y"}}), {}, "2.5 ");
        row("empty archive", {}, {}, " ");
    }
    void Certificates()
    {
        QFETCH(testdata::Files, files);
        Actor one;
        Panel panel;
        panel.Open({testdata::Device("П", 7, {one.Record("a", 1, 0), one.Record("b", 2, 1)})});
        BoxReader boxes;
        panel.TakeBadArchive(files);
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
        QTEST(boxes.texts, "boxes");
        QTEST(panel.Cell(0, 2) + " " + panel.Cell(1, 2), "versions");
    }

    void ArchiveThatCannotBeExtracted()
    {
        Actor one;
        Panel panel;
        panel.Open({testdata::Device("П", 7, {one.Record("a", 1, 0)})});
        // In a "firmware" folder the extraction folder is not made, and it is not there.
        testdata::WriteZip(Panel::Path("firmware.zip"), BothImages());
        panel.driver.Press("buttonArchive");
        panel.driver.ChooseFile("Открыть архив с прошивками", "firmware.zip");
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
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
        panel.Open({testdata::Device("П", 7, {one.Record("a", 1, 0)})});
        for (const auto& [name, content] : testdata::WithCertificates({{"fw_7_1_0_v1.4.bin", "image"}}))
            testdata::WriteFile(Panel::Path("firmware/" + name), content);
        const auto marked = [&] {
            return panel.IsEnabled("buttonUpdate") && !panel.window->GetButton(0, 4)->icon().isNull();
        };
        panel.PressRow(0, 3);
        panel.driver.ChooseFile("Открыть файл с прошивкой", "fw_7_1_0_v1.4.bin");
        panel.driver.Step("taken", [&] { return panel.Cell(0, 2) == "1.4" && marked(); });
        panel.PressRow(0, 4);
        panel.driver.Step("off", [=] { return !marked(); });
        panel.PressRow(0, 4);
        panel.driver.Step("on again", marked);
        QVERIFY2(panel.driver.Run(), qPrintable(panel.driver.Failure));
        QCOMPARE(panel.Controls(), "idle");
    }
};

QTEST_MAIN(TestRoad)
#include "tst_road.moc"

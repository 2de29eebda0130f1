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
        hand.Start();
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
        panel.TakeBadArchive(files);
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
};

QTEST_MAIN(TestRoad)
#include "tst_road.moc"

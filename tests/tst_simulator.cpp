#include "Instrument.h"
#include "Table.h"
#include "TestData.h"

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace std::chrono_literals;

namespace {

/// Frames written as hex and joined by "|": unit and PDU, to which a header is added, or, after "raw", all
/// of the frame. The names stand for the frames that transfer an image of the nine bytes "123456789".
QByteArray Frames(const QByteArray& hexes)
{
    const QHash<QByteArray, QByteArray> names = {
        {"block", "01 48 1300 01a0 0000 0000 09000000 313233343536373839"},
        {"blockOk", "01 48 0200 01a0"},
        {"crc", "01 48 0600 02a0 374b 0000"},
        {"crcOk", "01 48 0200 02a0"},
        {"finish", "01 48 0600 05a0 0900 0000"},
        {"finishOk", "01 48 0200 05a0"},
        {"no", "01 c8 03"},
        {"ver", "01 47 0600 564552203f3b"},
    };
    QByteArray frames;
    for (const QByteArray& hex : hexes.split('|')) {
        const QByteArray bytes = QByteArray::fromHex(names.value(hex, hex).replace("raw", ""));
        if (!hex.startsWith("raw") && !bytes.isEmpty())
            frames += QByteArray::fromHex("0007 0000 00") + char(bytes.size());
        frames += bytes;
    }
    return frames;
}

/// Unit 1 with the processors 0 and 2 and unit 3 with the processor 1, on one address and port.
TDeviceRecord SharedSocket()
{
    TDeviceRecord device;
    device.BoardCount = 4;
    device.Boards[0] = {"", "Main", "127.0.0.9", true, 0, 0, 1, "", "", ""};
    device.Boards[1] = {"", "Main", "127.0.0.9", false, 2, 0, 1, "", "", ""};
    device.Boards[2] = {"", "WindowFixture", "127.0.0.9", false, 0, 0, 9, "/opt", "", ""};
    device.Boards[3] = {"", "Aux", "127.0.0.9", false, 1, 0, 3, "", "", ""};
    return device;
}

void Connect(QTcpSocket& socket, const Instrument& instrument)
{
    socket.connectToHost("127.0.0.9", quint16(instrument.Device().Boards[3].Port));
    QTRY_COMPARE(socket.state(), QTcpSocket::ConnectedState);
}

} // namespace

class TestSimulator : public QObject
{
    Q_OBJECT
private slots:
    void wire_data()
    {
        const Table<QByteArray, QByteArray, bool> row("sent", "answers", "closes");
        row("type", "raw 0102 0000 0011 01 47 0d00 44455649434554595045203f3b",
            "raw 0102 0000 0014 01 47 1000 44455649434554595045204d61696e3b", false);
        row("serial", "01 47 0900 53455249414c203f3b", "01 47 0e00 53455249414c203030303030313b", false);
        row("versions with a gap", "ver", "01 47 1000 56455220312e3020302e3020312e303b", false);
        row("one processor, one version", "03 47 0600 564552203f3b", "03 47 0800 56455220312e303b", false);
        row("image started again", "block|block|crc|finish", "blockOk|blockOk|crcOk|finishOk", true);
        row("two blocks", "block|01 48 0b00 01a0 0900 0000 01000000 ff|01 48 0600 02a0 4a96 0000",
            "blockOk|blockOk|crcOk", false);
        row("gap between blocks", "block|01 48 0b00 01a0 0a00 0000 01000000 ff", "blockOk|no", false);
        row("offset's high half", "block|01 48 0b00 01a0 0900 0100 01000000 ff", "blockOk|no", false);
        row("block shorter than its size", "01 48 0b00 01a0 0000 0000 02000000 ff", "no", false);
        row("binary length wrong", "block|01 48 0700 02a0 374b 0000|crc", "blockOk|no|crcOk", false);
        row("wrong CRC drops the image", "block|01 48 0600 02a0 384b 0000|crc", "blockOk|no|no", false);
        row("wrong size drops the image", "block|crc|01 48 0600 05a0 0900 0100|finish", "blockOk|crcOk|no|no", false);
        row("no CRC before the finish", "block|finish", "blockOk|no", false);
        row("block after the CRC", "block|crc|01 48 0b00 01a0 0900 0000 01000000 ff|01 48 0600 05a0 0a00 0000",
            "blockOk|crcOk|blockOk|no", false);
        row("no such processor", "block|crc|01 48 0600 04a0 0900 0000", "blockOk|crcOk|no", false);
        row("unknown text", "01 47 0700 5245424f4f543b", "01 c7 03", false);
        row("text length wrong", "01 47 0700 564552203f3b|01 47", "01 c7 03|01 c7 03", false);
        row("unknown function", "01 03 0000 0001", "01 83 01", false);
        row("unknown unit", "09 47 0600 564552203f3b", "09 c7 0b", false);
        row("protocol not 0", "block|raw 0007 0001 000a 01 47 0600 564552203f3b", "blockOk", true);
        row("length without a function", "raw 0007 0000 0001 01", "", true);
        row("length over a frame", "raw 0007 0000 00ff 01 47", "", true);
    }

    void wire()
    {
        QFETCH(QByteArray, sent);
        QFETCH(QByteArray, answers);
        QFETCH(bool, closes);
        // All requests in one segment, then every byte in a separate segment.
        for (const int segment : {1000, 1}) {
            Instrument instrument(SharedSocket(), {});
            QString error;
            QVERIFY2(instrument.Start(&error), qPrintable(error));
            QTcpSocket socket;
            Connect(socket, instrument);
            const QByteArray bytes = Frames(sent);
            for (qsizetype at = 0; at < bytes.size(); at += segment) {
                socket.write(bytes.mid(at, segment));
                QTest::qWait(1);
            }
            QByteArray received;
            QTRY_COMPARE((received += socket.readAll()).toHex(' '), Frames(answers).toHex(' '));
            QTRY_COMPARE(socket.state(), closes ? QTcpSocket::UnconnectedState : QTcpSocket::ConnectedState);
        }
    }

    void faults_data()
    {
        const Table<QByteArray, bool> row("answer", "closes"); // to "VER ?;" asked of unit 3
        const QByteArray text = "56455220312e303b";
        row("silent", "", false);
        row("unheard", "", false);
        for (const char* name : {"off", "refuse", "close", "reset", "power-loss"})
            row(name, "", true);
        row("late", "0007 0000 000c 03 47 0800" + text, false);
        row("trickle", "0007 0000 000c 03 47 0800" + text, false);
        row("exception", "0007 0000 0003 03 c7 04", false);
        row("transaction", "0008 0000 000c 03 47 0800" + text, false);
        row("unit", "0007 0000 000c 04 47 0800" + text, false);
        row("twice", "0007 0000 000c 03 47 0800" + text + "0007 0000 000c 03 47 0800" + text, false);
        row("joined", "0006 0000 000c 03 47 0800" + text + "0007 0000 000c 03 47 0800" + text, false);
        row("length-small", "0007 0000 000b 03 47 0800" + text, false);
        row("length-large", "0007 0000 0011 03 47 0800" + text, false);
        row("length-zero", "0007 0000 0000 03 47 0800" + text, false);
        row("truncated", "0007 0000 000c 03 47 08", false);
        row("inner-small", "0007 0000 000c 03 47 0600" + text, false);
        row("inner-large", "0007 0000 000c 03 47 0b00" + text, false);
    }
    void faults()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, closes);
        QString error;
        const auto plan = Fault::Parse(QString(QTest::currentDataTag()) + "@2,exception@3", &error);
        QVERIFY2(plan, qPrintable(error));
        Instrument instrument(SharedSocket(), {.restart = 50ms, .faults = *plan, .late = 50ms});
        QVERIFY2(instrument.Start(&error), qPrintable(error));
        QTcpSocket socket;
        Connect(socket, instrument);
        const QByteArray question = Frames("03 47 0600 564552203f3b");
        const QByteArray right = Frames("03 47 0800 56455220312e303b");
        QByteArray received;
        socket.write(question);
        QTRY_COMPARE((received += socket.readAll()), right);
        socket.write(question);
        received.clear();
        QTRY_COMPARE((received += socket.readAll()).toHex(), QByteArray::fromHex(answer).toHex());
        QTRY_COMPARE(socket.state(), closes ? QTcpSocket::UnconnectedState : QTcpSocket::ConnectedState);
        if (closes)
            return;
        // The same request again counts as a repetition, a different one as the third request.
        socket.write(question);
        socket.write(Frames("01 47 0600 564552203f3b"));
        received.clear();
        QTRY_VERIFY((received += socket.readAll()).endsWith(Frames("01 c7 04")));
        QCOMPARE(instrument.RequestCount(), 3);
        QCOMPARE(instrument.RepetitionCount(), 1);
    }

    void log_data()
    {
        const Table<QByteArray, QString, QStringList> row("sent", "faults", "lines");
        const QString ver = "unit 1: request %1: VER ?; answered VER 1.0 0.0 1.0;";
        row("numbers of requests", "ver|09 47 0600 564552203f3b|01 03 0000 0001|01 47 0300 41223b|ver", "",
            {ver.arg(1), "unit 9: request 2: no such unit here, refused with exception 0x0b",
             "unit 1: request 3: no function 0x03, refused with exception 0x01",
             "unit 1: request 4: unknown text command \"A%22;\", refused with exception 0x03", ver.arg(5)});
        const QByteArray next = "01 48 0b00 01a0 0900 0000 01000000 ff";
        row("blocks are one line", "ver|block|" + next + "|01 48 0600 02a0 4a96 0000|block", "",
            {ver.arg(1), "unit 1: requests 2..3: 2 blocks taken, 10 image bytes",
             "unit 1: request 4: CRC 0x964a of 10 image bytes right",
             "unit 1: request 5: block of 9 bytes at offset 0, image started anew, 10 bytes dropped"});
        row("blocks at the end", "block|" + next, "", {"unit 1: requests 1..2: 2 blocks taken, 10 image bytes"});
        row("block with a fault", "block|" + next + "|01 48 0b00 01a0 0a00 0000 01000000 ff", "trickle@2",
            {"unit 1: request 1: 1 block taken, 9 image bytes", "unit 1: request 3: 1 block taken, 1 image bytes",
             "unit 1: request 2: fault trickle, sent 00 | 07 | 00 | 00 | 00 | 06 | 01 | 48 | 02 | 00 | 01 | a0: "
             "block of 1 bytes at offset 9"});
        row("repeated", "ver|ver", "silent@1",
            {"unit 1: request 1: fault silent, nothing sent: VER ?;", "unit 1: request 1: repeated, not answered"});
        row("request lost", "ver", "unheard@1", {"unit 1: request 1: fault unheard, not carried out, nothing sent"});
        row("what went out", "crc", "exception@1,twice@2",
            {"unit 1: request 1: fault exception, not carried out, sent 00 07 00 00 00 03 01 c8 04",
             "fault twice@2 never struck"});
        row("two segments", "crc", "twice@1",
            {"unit 1: request 1: fault twice, sent 00 07 00 00 00 03 01 c8 03 | 00 07 00 00 00 03 01 c8 03: CRC wrong: "
             "0xffff expected for 0 bytes, 0x4b37 came"});
        row("late", "crc", "late@1",
            {"unit 1: request 1: fault late, answer in 0.02 s: CRC wrong: 0xffff expected for 0 bytes, 0x4b37 came",
             "unit 1: request 1: fault late, sent 00 07 00 00 00 03 01 c8 03"});
        row("faults that did not occur", "09 47 0600 564552203f3b", "silent@1,old-version@1,close@always",
            {"unit 9: request 1: no such unit here, refused with exception 0x0b", "fault silent@1 never struck",
             "fault old-version@1 never struck", "fault close@always never struck"});
    }
    void log()
    {
        QFETCH(QByteArray, sent);
        QFETCH(QString, faults);
        QFETCH(QStringList, lines);
        QString error;
        const auto plan = faults.isEmpty() ? QList<Fault>() : Fault::Parse(faults, &error);
        QVERIFY2(plan, qPrintable(error));
        Instrument instrument(SharedSocket(), {.faults = *plan, .late = 20ms});
        QStringList logged;
        connect(&instrument, &Instrument::Event, this, [&](const QString& line) {
            if (const qsizetype at = line.indexOf("unit "); at >= 0 || line.startsWith("fault "))
                logged.append(line.mid(std::max<qsizetype>(at, 0)));
        });
        QVERIFY2(instrument.Start(&error), qPrintable(error));
        QTcpSocket socket;
        Connect(socket, instrument);
        socket.write(Frames(sent));
        QTRY_COMPARE(instrument.RequestCount() + instrument.RepetitionCount(), int(sent.count('|') + 1));
        // Late answers are logged late, and these lines only at the end.
        const auto atEnd = lines.filter("never struck").size() + lines.filter("blocks taken").size();
        QTRY_VERIFY(logged.size() >= lines.size() - atEnd);
        instrument.End();
        QCOMPARE(logged, lines);
    }

    void imageAndRestart()
    {
        const QTemporaryDir folder;
        Instrument instrument(SharedSocket(), {"1", 1s, folder.path()});
        QString error;
        QVERIFY2(instrument.Start(&error), qPrintable(error));
        instrument.SetVersion(0, "3.1");
        const int port = instrument.Device().Boards[1].Port;
        const QString saved = folder.filePath(QString("127.0.0.9_%1_1_2.img").arg(port));
        testdata::WriteFile(saved, "");
        QStringList saves;
        connect(&instrument, &Instrument::Event, this, [&saves](const QString& line) {
            if (line.contains("image saved"))
                saves.append(line);
        });
        QTcpSocket first, second;
        Connect(first, instrument);
        Connect(second, instrument);
        first.write(Frames("01 48 2200 01a0 0000 0000 18000000 555044494d473120322e3500000000000000000000000000|"
                           "01 48 0600 02a0 4f5d 0000|01 48 0600 05a0 1800 0000"));
        QTRY_COMPARE(first.state(), QTcpSocket::UnconnectedState);
        const QByteArray image = "UPDIMG1 2.5" + QByteArray(13, '\0');
        QCOMPARE(instrument.Image(1), image);
        QCOMPARE(instrument.Version(1), "1.0");
        QCOMPARE(testdata::ReadFile(saved), image);
        // The restarting unit does not answer while the other unit of its socket still does.
        second.write(Frames("ver|03 47 0600 564552203f3b"));
        QByteArray received;
        QTRY_COMPARE((received += second.readAll()), Frames("03 47 0800 56455220312e303b"));
        // The second image's version "a;b" would break the answer. While both restart, nothing listens.
        second.write(Frames("03 48 2200 01a0 0000 0000 18000000 555044494d473120613b6200000000000000000000000000|"
                            "03 48 0600 02a0 b008 0000|03 48 0600 04a0 1800 0000"));
        QTRY_COMPARE(second.state(), QTcpSocket::UnconnectedState);
        first.connectToHost("127.0.0.9", quint16(port));
        QTRY_COMPARE(first.error(), QTcpSocket::ConnectionRefusedError);
        QTRY_COMPARE(instrument.Version(3), "0.0");
        first.connectToHost("127.0.0.9", quint16(port));
        first.write(Frames("ver"));
        received.clear();
        QTRY_COMPARE((received += first.readAll()).mid(10), "VER 3.1 0.0 2.5;");
        QCOMPARE(instrument.RequestCount(), 9);
        QCOMPARE(saves.size(), 2);
        QVERIFY(saves[0].endsWith("_1_2.img, in place of the one before") && saves[1].endsWith("_3_1.img"));
    }

    void program_data()
    {
        const Table<QByteArray, QString, QByteArray> row("board", "options", "word");
        const char* const good = "'Ip': '127.0.0.2', 'Port': TAKEN";
        const QByteArray fine =
            QByteArray(good) + ", 'Name': 'B', 'Type': 'T', 'Main': true, 'IdCPU': 28, 'MBAddr': 255";
        const QString file = "--catalogue|FILE";
        row("good", good, file + "|--fault|silent@1|--fault|close@2", "");
        row("good, by number", fine, file + "|-d|7|--fault|silent@1,close@2", "");
        row("unknown option", good, file + "|--speed|2", "speed");
        row("no catalogue", good, "--device|7", "--catalogue");
        row("no such file", good, file + ".gone", "updater.json.gone");
        row("empty file", "EMPTY", file, "empty");
        row("not JSON", "'Ip' 1", file, "updater.json:2:6: ");
        row("no devices", "}]}], 'Devices': [], 'Other': [{'Boards': [{", file, "reads no device");
        row("no such device", good, file + "|--device|1", "choose one of 7");
        row("device empty", good, file + "|--device|", "--device is empty");
        row("programs only", "'Path': '/opt'", file, "no firmware modules");
        row("IPv6 address", "'Ip': '::1', 'Port': 1", file, "updater.json:2:7: Devices[0].Boards[0].Ip: \"::1\" is no");
        row("no Path", "'File': 'x'", file, "Boards[0].Path: Without a \"Path\"");
        row("text for port", "'Ip': '127.0.0.2', 'Port': '1'", file, "Boards[0].Port: \"1\" is no whole number");
        row("port 0", "'Ip': '127.0.0.2', 'Port': 0", file, "Boards[0].Port: No connection to port 0");
        row("port too high", "'Ip': '127.0.0.2', 'Port': 65536", file, "port 65536");
        row("port taken", "'Ip': '127.0.0.1', 'Port': TAKEN", file, "IdDev 7: cannot listen on 127.0.0.1:");
        row("unit address", "'Ip': '127.0.0.2', 'Port': 1, 'MBAddr': 256", file, "Boards[0].MBAddr: ");
        row("processor", "'Ip': '127.0.0.2', 'Port': 1, 'IdCPU': -1", file, "Boards[0].IdCPU: ");
        row("far processor", "'Ip': '127.0.0.2', 'Port': 1, 'IdCPU': 29", file, "Boards[0].IdCPU");
        for (const char* serial : {"", "a b", "a;b", "\u00e4"})
            row(qPrintable("serial " + QString(serial)), good, file + "|--serial|" + serial, "--serial");
        for (const char* time : {"x", "-1", "3600.1", "nan"})
            row(qPrintable("restart " + QString(time)), good, file + "|--restart|" + time, "--restart");
        row("option twice", good, file + "|--restart|1|--restart|2", "--restart is given more than once");
        row("log unwritable", good, file, "standard output");
        row("unknown fault", good, file + "|--fault|silent@1,shy@2", "shy");
        row("fault at no request", good, file + "|--fault|silent@0", "silent@0");
        row("no folder", good, file + "|--images|FILE", "--images");
    }

    void program()
    {
        QFETCH(QByteArray, board);
        QFETCH(QString, options);
        QFETCH(QByteArray, word);
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress("127.0.0.1")));
        board = "{'Devices': [{'Name': 'X', 'IdDev': 7, 'Boards': [{\n" + board + "}]}]}";
        board.replace('\'', '"').replace("TAKEN", QByteArray::number(taken.serverPort()));
        const QTemporaryDir folder;
        const QString file = folder.filePath("updater.json");
        testdata::WriteFile(file, board.contains("EMPTY") ? "" : board);
        QProcess process;
        if (word == "standard output")
            process.setStandardOutputFile("/dev/full");
        process.start(SIMULATOR_PROGRAM, options.replace("FILE", file).split('|'));
        if (word.isEmpty()) {
            QByteArray start;
            QTRY_VERIFY((start += process.readAllStandardOutput()).contains(" ready: "));
            QVERIFY2(start.endsWith(" ready: X, modules: 1, addresses: 1\n"), start);
            QCOMPARE(start.contains("updater.json has findings: "), !board.contains("Main"));
            ::kill(pid_t(process.processId()), board.contains("Main") ? SIGHUP : SIGTERM);
            QVERIFY(process.waitForFinished());
            const QByteArray end = process.readAllStandardOutput();
            QVERIFY2(end.contains("silent@1 never struck\n") && end.endsWith("close@2 never struck\n"), end);
            QCOMPARE(process.exitCode(), 0);
            return;
        }
        QVERIFY(process.waitForFinished());
        const QByteArray line = process.readAllStandardError();
        QCOMPARE(line.count('\n'), 1);
        QVERIFY2(line.contains(word), line);
        QCOMPARE(process.exitCode(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSimulator)
#include "tst_simulator.moc"

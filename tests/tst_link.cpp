// The Modbus TCP client: the exact bytes it sends, and its result for every answer that a board may give.

#include "AppState.h"
#include "FakeBoard.h"
#include "Table.h"
#include "TcpModbus.h"
#include "TimeLimits.h"

#include <QDeadlineTimer>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace std::chrono_literals;

namespace {

QByteArray Hex(const char* text)
{
    return QByteArray::fromHex(text);
}

/// Answers every request as a good board does.
void Obey(QTcpSocket& socket, const QByteArray& request)
{
    if (request.at(7) == 0x47)
        socket.write(FakeBoard::Text(request, "OK x;"));
    else
        socket.write(FakeBoard::Answer(request, 0x48, Hex("0200") + request.mid(10, 2)));
}

/// Number of attempts of a connection that fails.
int Attempts(TcpModbus& link)
{
    static int attempts;
    attempts = 0;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            attempts += text.startsWith("Try to reconnect ");
        });
    const bool connected = link.Connect();
    qInstallMessageHandler(before);
    return connected ? -1 : attempts;
}

/// The command word, both parameters and the payload of a binary request, as hexadecimal text.
QByteArray Words(const QByteArray& request)
{
    const auto word = [&](int at) { return QByteArray() + request.at(at + 1) + request.at(at); };
    return (word(10) + word(12) + word(14)).toHex(' ') + " +" + QByteArray::number(request.size() - 16);
}

} // namespace

Q_DECLARE_METATYPE(FakeBoard::Handler)

class TestLink : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        g_stopRequested = false;
        g_timeLimits.connectAttempt = g_timeLimits.reply = 1h;
    }

    void RequestBytes_data()
    {
        // After the transaction number: protocol 0, length, unit | function | data (MODBUS Messaging on TCP/IP, 3.1).
        const Table<int, QByteArray, QByteArray> row("command", "text", "frame"); // command -1: a text
        row("version query", -1, "VER ?;", Hex("0000 000a 03 47 0600 5645 5220 3f3b"));
        row("empty text", -1, "", Hex("0000 0004 03 47 0000"));
        row("image CRC", 0xA002, "", Hex("0000 000a 03 48 0600 02a0 3412 0000"));
        row("block at 74565", 0xA001, "abc", Hex("0000 0011 03 48 0d00 01a0 4523 0100 0300 0000 616263"));
    }
    void RequestBytes()
    {
        QFETCH(int, command);
        QFETCH(QByteArray, text);
        FakeBoard board(Obey);
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 3);
        QVERIFY(link.Connect());
        QString reply;
        if (command < 0)
            QVERIFY(link.StrCommand(text, reply));
        else if (command == CmdWriteBlock)
            QVERIFY(link.BinCommand(CmdWriteBlock, 0x2345, 1, text));
        else
            QVERIFY(link.BinCommand(quint16(command), 0x1234, 0, "a payload that is not sent"));
        QCOMPARE(board.Requests.size(), 1);
        QTEST(board.Requests.first().mid(2), "frame");
    }

    void LongestRequests()
    {
        FakeBoard board(Obey);
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 3);
        QVERIFY(link.Connect());
        QTest::ignoreMessage(QtDebugMsg, "Allready connected!");
        QVERIFY(link.Connect());
        QString reply = "before";
        QVERIFY(link.StrCommand(QString(250, 'x'), reply));
        QTest::ignoreMessage(QtDebugMsg, "Invalid Modbus request.");
        QVERIFY(!link.StrCommand(QString(251, 'x'), reply));
        QVERIFY(link.BinCommand(CmdWriteBlock, 0, 0, QByteArray(240, 'x')));
        QTest::ignoreMessage(QtDebugMsg, "Invalid Modbus request.");
        QVERIFY(!link.BinCommand(CmdWriteBlock, 0, 0, QByteArray(241, 'x')));
        QCOMPARE(board.Requests.size(), 2);
    }

    void Answers_data()
    {
        // Reply "failed": there is none. The time limit ends the wait only where nothing else can.
        const Table<FakeBoard::Handler, QString, bool> row("handler", "reply", "atTheLimit");
        const auto data = [](const char* hex) -> FakeBoard::Handler {
            return [=](QTcpSocket& socket, const QByteArray& request) {
                socket.write(FakeBoard::Answer(request, 0x47, Hex(hex)));
            };
        };
        row("good", Obey, "OK x;", false);
        row("empty text", data("0000"), "", false);
        row("one character per byte", data("0200 e9ff"), "\u00e9\u00ff", false);
        row("no length field", data("05"), "failed", false);
        row("private length too large", data("0900 41"), "failed", false);
        row(
            "silent", [](QTcpSocket&, const QByteArray&) {}, "failed", true);
        row(
            "closes", [](QTcpSocket& socket, const QByteArray&) { socket.close(); }, "failed", false);
        row(
            "resets", [](QTcpSocket& socket, const QByteArray&) { socket.abort(); }, "failed", false);
        row(
            "garbage", [](QTcpSocket& socket, const QByteArray&) { socket.write(QByteArray(40, char(0xA5))); },
            "failed", true);
        row(
            "half a frame", [](QTcpSocket& s, const QByteArray& r) { s.write(FakeBoard::Text(r, "OK x;").first(11)); },
            "failed", true);
        row(
            "exception", [](QTcpSocket& s, const QByteArray& r) { s.write(FakeBoard::Answer(r, char(0xC7), "\3")); },
            "failed", false);
        row(
            "another transaction",
            [](QTcpSocket& s, QByteArray r) { Obey(s, r.replace(1, 1, QByteArray(1, char(r[1] + 1)))); }, "failed",
            true);
    }
    void Answers()
    {
        QFETCH(FakeBoard::Handler, handler);
        QFETCH(QString, reply);
        QFETCH(bool, atTheLimit);
        if (atTheLimit)
            g_timeLimits.reply = 300ms;
        FakeBoard board(handler);
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 1);
        QVERIFY(link.Connect());
        QString text = "failed";
        QCOMPARE(link.StrCommand("VER ?;", text), reply != "failed");
        QCOMPARE(text, reply);
    }

    void OnlyTheBareFinishMayGoUnanswered_data()
    {
        const Table<int, bool, bool> row("command", "stop", "result");
        row("block", 0xA001, false, false);
        row("CRC", 0xA002, false, false);
        row("finish of processor 0", 0xA003, false, true);
        row("finish of processor 1", 0xA004, false, false);
        row("finish of processor 0, stopped", 0xA003, true, false);
    }
    void OnlyTheBareFinishMayGoUnanswered()
    {
        QFETCH(int, command);
        QFETCH(bool, stop);
        FakeBoard board([=](QTcpSocket& socket, const QByteArray&) {
            g_stopRequested = stop;
            if (!stop)
                socket.close();
        });
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 1);
        QVERIFY(link.Connect());
        QTEST(link.BinCommand(quint16(command), 0, 0, {}), "result");
    }

    void Image_data()
    {
        using List = QByteArrayList;
        const Table<int, int, int, List> row("size", "type", "requests", "last");
        row("empty", 0, 0, 2, List{"a0 02 ff ff 00 00 +0", "a0 03 00 00 00 00 +0"});
        row("one block", 240, 0, 3, List{"a0 01 00 00 00 00 +244", "a0 02 0f 63 00 00 +0", "a0 03 00 f0 00 00 +0"});
        row("one more byte", 241, 2, 4, List{"a0 01 00 f0 00 00 +5", "a0 02 0b 4f 00 00 +0", "a0 05 00 f1 00 00 +0"});
        row("beyond 64 KiB, the word wraps", 65761, 0x6000, 277,
            List{"a0 01 00 e0 00 01 +5", "a0 02 da fe 00 00 +0", "00 03 00 e1 00 01 +0"});
    }
    void Image()
    {
        QFETCH(int, size);
        QFETCH(int, type);
        QFETCH(QByteArrayList, last);
        FakeBoard board(Obey);
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 1);
        QList<int> progress;
        connect(&link, &TcpModbus::onWriteBlock, this, [&](int index) { progress.append(index); });
        QVERIFY(link.Connect());
        QVERIFY(link.WriteFirmware(QByteArray(size, 'x'), type, 244));
        QTEST(int(board.Requests.size()), "requests");
        QByteArrayList sent;
        for (const QByteArray& request : board.Requests.last(last.size()))
            sent.append(Words(request));
        QCOMPARE(sent, last);
        QCOMPARE(progress.size(), board.Requests.size() - 2);
        QCOMPARE(progress.isEmpty() ? 0 : progress.last(), size);
    }

    void ImageEndsEarly_data()
    {
        const Table<bool> row("stop");
        row("block refused", false);
        // The stop flag is checked after the accepted block, before its progress is reported.
        row("stop", true);
    }
    void ImageEndsEarly()
    {
        QFETCH(bool, stop);
        FakeBoard board([&](QTcpSocket& socket, const QByteArray& request) {
            const bool second = board.Requests.size() == 2;
            g_stopRequested = stop && second;
            if (second && !stop)
                socket.write(FakeBoard::Answer(request, char(0xC8), "\3"));
            else
                Obey(socket, request);
        });
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 1);
        QList<int> progress;
        connect(&link, &TcpModbus::onWriteBlock, this, [&](int index) { progress.append(index); });
        QVERIFY(link.Connect());
        QVERIFY(!link.WriteFirmware(QByteArray(1000, 'x'), 0, 244));
        QCOMPARE(board.Requests.size(), 2);
        QCOMPARE(progress, QList<int>{240});
    }

    void Refused_data()
    {
        const Table<QString, int> row("host", "port");
        row("nobody listens", "127.0.0.1", 0);
        row("absurd port", "127.0.0.1", 70000);
        row("negative port", "127.0.0.1", -1);
        row("no address", "", 502);
        row("no address at all", "a b:c", 502);
    }
    void Refused()
    {
        QFETCH(QString, host);
        QFETCH(int, port);
        {
            FakeBoard board(Obey);
            port = port == 0 ? board.serverPort() : port;
        }
        g_timeLimits.connectAttempt = 30ms;
        TcpModbus link(nullptr, host, port, 1);
        QCOMPARE(Attempts(link), 10);
        // The stop flag is checked after each attempt, not before the first.
        g_stopRequested = true;
        const QDeadlineTimer attempt(g_timeLimits.connectAttempt);
        QCOMPARE(Attempts(link), 1);
        QVERIFY(attempt.hasExpired());
        QString reply;
        QVERIFY(!link.StrCommand("VER ?;", reply));
    }

    void DeletedWhileConnecting()
    {
        FakeBoard board(Obey);
        g_timeLimits.connectAttempt = 0ms;
        auto* link = new TcpModbus(nullptr, "127.0.0.1", board.serverPort(), 1);
        QVERIFY(!link->Connect());
        delete link;
        // Inside a slot, as the program always is, Qt deletes nothing that was to be deleted later.
        for (const QDeadlineTimer end(200); !end.hasExpired();)
            QCoreApplication::processEvents();
        QCOMPARE(board.OpenConnections(), 0);
    }

    void AbandonedInTheMiddle()
    {
        FakeBoard board([](QTcpSocket&, const QByteArray&) {});
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 1);
        QVERIFY(link.Connect());
        QTimer::singleShot(50, &link, [&] { link.Abandon(); });
        // Not even the command whose missing answer is accepted counts as done.
        QVERIFY(!link.BinCommand(CmdFinish, 0, 0, {}));
        QVERIFY(!link.Connect());
        QTRY_COMPARE(board.OpenConnections(), 0);
    }
};

QTEST_GUILESS_MAIN(TestLink)
#include "tst_link.moc"

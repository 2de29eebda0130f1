// One command of the link over real TCP, and a board that answers it with any bytes and hangs up. The first byte of the
// input chooses the command ("t": text, else binary), the others are what the board sends.

#include "FakeBoard.h"
#include "Fuzz.h"
#include "TcpModbus.h"
#include "TimeLimits.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>

namespace {

/// The bytes after the header of each frame that answers the first request and is no exception. Qt accepts an answer
/// with any unit and function, and of two answers in one segment the last one.
QList<QByteArray> Answers(const QByteArray& sent)
{
    QList<QByteArray> answers;
    for (qsizetype at = 0; sent.size() - at >= 8;) {
        const qsizetype end = at + 6 + qsizetype(quint8(sent[at + 4])) * 256 + quint8(sent[at + 5]);
        if (end <= sent.size() && sent.mid(at, 2) == QByteArray(2, '\0') && (sent[at + 7] & 0x80) == 0)
            answers.append(sent.mid(at + 7));
        at = end;
    }
    return answers;
}

bool IsText(const QByteArray& answer, const QString& reply)
{
    if (answer.size() < 3 || answer[0] != 0x47)
        return answer[0] != 0x47;
    const int length = quint8(answer[1]) + quint8(answer[2]) * 256;
    return length <= 250 && answer.size() >= 3 + length && reply == QString::fromLatin1(answer.mid(3, length));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QByteArray sent;
    // One server for all inputs: each closed connection keeps the port of its server in use for a minute.
    static FakeBoard board([](QTcpSocket& socket, const QByteArray&) {
        socket.write(sent);
        socket.disconnectFromHost();
    });
    g_timeLimits.reply = std::chrono::milliseconds(50);
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    sent = bytes.mid(1);
    QElapsedTimer timer;
    timer.start();
    {
        TcpModbus link(nullptr, "127.0.0.1", board.serverPort(), 1);
        Require(link.Connect(), "the board is there");
        QString reply = "as before";
        const bool isText = bytes.startsWith('t');
        const bool succeeded =
            isText ? link.StrCommand("VER ?;", reply) : link.BinCommand(CmdWriteBlock, 0, 0, "block");
        const QList<QByteArray> answers = Answers(sent);
        Require(!succeeded || !answers.isEmpty(), "nothing passes for an answer but an answer");
        Require(succeeded || reply == "as before", "a failure leaves the text alone");
        const auto isReply = [&reply](const QByteArray& answer) { return IsText(answer, reply); };
        Require(!succeeded || !isText || std::any_of(answers.begin(), answers.end(), isReply),
                "the text is what was sent, one character for each byte");
    }
    Require(timer.elapsed() < 5000, "every answer comes to an end");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    qDeleteAll(board.findChildren<QTcpSocket*>());
    board.Requests.clear();
    return 0;
}

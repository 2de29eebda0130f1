// The simulated instrument receives any bytes, in one piece and byte by byte.

#include "Board.h"
#include "Fuzz.h"

#include <QtEndian>

namespace {

/// The size of the first Modbus TCP frame in `stream`, by its header alone; 0 for an incomplete one, -1 for no frame.
qsizetype FirstFrame(const QByteArray& stream)
{
    if (stream.size() < 6)
        return 0;
    const int length = quint8(stream[4]) * 256 + quint8(stream[5]);
    if (stream[2] != 0 || stream[3] != 0 || length < 2 || length > 254)
        return -1;
    return stream.size() >= 6 + length ? 6 + length : 0;
}

/// Updates `image` by the requests, and requires the answers that follow from it.
void RequireTransfer(const QByteArray& pdu, bool isRefused, const Processor* accepted, QByteArray& image)
{
    const quint16 word = qFromLittleEndian<quint16>(pdu.constData() + 3);
    const quint32 value = qFromLittleEndian<quint32>(pdu.constData() + 5);
    const bool isEnd = pdu.startsWith(QByteArray("\x48\x06\x00", 3)) && pdu.size() == 9;
    if (word == 0xA001 && !isRefused)
        image = (value == 0 ? QByteArray() : image) + pdu.mid(13);
    if (word == 0xA002 && isEnd) {
        const bool isRight = !image.isEmpty() && value == Frame::Crc16(image);
        Require(isRefused != isRight, "the right CRC of what was taken is accepted, and no other");
    }
    const bool isFinish = (word == 0xA003 || word == 0xA005) && isEnd;
    Require(!accepted || (isFinish && accepted->image == image), "the accepted image is the blocks that were taken");
    if ((word == 0xA002 && isEnd && isRefused) || (isFinish && (accepted || value != quint32(image.size()))))
        image.clear();
}

void Handle(Board& board, const Frame::Request& request, QByteArray& image)
{
    const Board::Outcome outcome = board.Handle(request.pdu);
    Require(outcome.pdu.size() >= 2 && outcome.pdu.size() <= 253, "an answer fits a frame");
    Require((quint8(outcome.pdu[0]) | 0x80) == (quint8(request.pdu[0]) | 0x80), "an answer repeats the function");
    Require(FirstFrame(Frame::Answer(request, outcome.pdu)) == 7 + outcome.pdu.size(), "what is answered is a frame");
    const bool isRefused = (quint8(outcome.pdu[0]) & 0x80) != 0;
    Require(!outcome.accepted || !isRefused, "an image is not accepted and refused");
    if (request.pdu[0] == 0x48 && request.pdu.size() >= 9)
        RequireTransfer(request.pdu, isRefused, outcome.accepted, image);
    if (!outcome.accepted)
        return;
    board.GoSilent();
    Require(!board.ComeBack().contains(';'), "the versions after a restart are words");
}

QList<QByteArray> Play(const QByteArray& bytes, qsizetype piece)
{
    Board board("TYPE", "1");
    board.AddProcessor(0);
    board.AddProcessor(2);
    QByteArray stream;
    QByteArray image;
    QList<QByteArray> taken;
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        stream += bytes.mid(at, piece);
        Frame::Request request;
        for (qsizetype size = FirstFrame(stream); size > 0; size = FirstFrame(stream)) {
            const qsizetype before = stream.size();
            Require(Frame::TakeRequest(stream, request) == Frame::Taken::Whole, "a whole frame is taken");
            Require(stream.size() == before - size && request.pdu.size() == size - 7, "and nothing else");
            taken.append(request.pdu);
            Handle(board, request, image);
        }
        const bool isLost = FirstFrame(stream) < 0;
        Require(Frame::TakeRequest(stream, request) == (isLost ? Frame::Taken::Malformed : Frame::Taken::Incomplete),
                "what is no whole frame is not taken");
        if (isLost)
            break;
    }
    return taken;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    Require(Play(bytes, bytes.size()) == Play(bytes, 1), "pieces on the wire make no difference");
    return 0;
}

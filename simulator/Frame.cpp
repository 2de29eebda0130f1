#include "Frame.h"

#include <QtEndian>

namespace Frame {

namespace {

// Transaction, protocol and length; the length counts the unit byte and the PDU after it.
constexpr int PrefixSize = 6;
constexpr int MinLength = 2;
constexpr int MaxLength = 254;
// The 252 data bytes of a PDU less the length word.
constexpr int MaxContent = 250;

void RequireSize(qsizetype expected, qsizetype came)
{
    if (came != expected)
        throw Refusal(IllegalDataValue, QString("%1 command bytes expected, %2 came").arg(expected).arg(came));
}

} // namespace

Taken TakeRequest(QByteArray& stream, Request& request)
{
    if (stream.size() < PrefixSize)
        return Taken::Incomplete;
    const int protocol = qFromBigEndian<quint16>(stream.constData() + 2);
    const int length = qFromBigEndian<quint16>(stream.constData() + 4);
    if (protocol != 0 || length < MinLength || length > MaxLength)
        return Taken::Malformed;
    if (stream.size() < PrefixSize + length)
        return Taken::Incomplete;
    request.transaction = qFromBigEndian<quint16>(stream.constData());
    request.unit = quint8(stream.at(PrefixSize));
    request.pdu = stream.mid(PrefixSize + 1, length - 1);
    stream.remove(0, PrefixSize + length);
    return Taken::Whole;
}

QByteArray Answer(const Request& request, const QByteArray& pdu)
{
    QByteArray frame(PrefixSize, '\0');
    qToBigEndian<quint16>(request.transaction, frame.data());
    qToBigEndian<quint16>(quint16(pdu.size() + 1), frame.data() + 4);
    return frame + char(request.unit) + pdu;
}

QByteArray ExceptionPdu(quint8 function, Code code)
{
    return QByteArray(1, char(function | 0x80)) + char(code);
}

QByteArray ContentPdu(Function function, const QByteArray& content)
{
    const QByteArray kept = content.left(MaxContent);
    QByteArray pdu(3, char(function));
    qToLittleEndian<quint16>(quint16(kept.size()), pdu.data() + 1);
    return pdu + kept;
}

QByteArray Content(const QByteArray& pdu)
{
    if (pdu.size() < 3)
        throw Refusal(IllegalDataValue, "length word expected, none came");
    RequireSize(qFromLittleEndian<quint16>(pdu.constData() + 1), pdu.size() - 3);
    return pdu.mid(3);
}

BinaryCommand BinaryOf(const QByteArray& content)
{
    // Command word and two parameters; a block's size follows them.
    const QByteArray head = content.leftJustified(10, '\0');
    BinaryCommand command;
    command.word = qFromLittleEndian<quint16>(head.constData());
    command.value = qFromLittleEndian<quint32>(head.constData() + 2);
    command.payload = content.mid(10);
    if (command.word == BlockWord)
        RequireSize(qsizetype(10) + qFromLittleEndian<quint32>(head.constData() + 6), content.size());
    else
        RequireSize(6, content.size());
    return command;
}

quint16 Crc16(const QByteArray& data, quint16 start)
{
    quint16 crc = start;
    for (const char byte : data) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? quint16((crc >> 1) ^ 0xA001) : quint16(crc >> 1);
    }
    return crc;
}

} // namespace Frame

#pragma once

#include "Error.h"

#include <QByteArray>

/// The server's side of the wire. The header is big-endian (MODBUS Messaging on TCP/IP Implementation
/// Guide); everything inside the two private functions is little-endian, as the boards have it.
namespace Frame {

/// From the range MODBUS Application Protocol leaves to the user.
enum Function : quint8 { TextFunction = 0x47, BinaryFunction = 0x48 };

/// Exception codes of MODBUS Application Protocol.
enum Code : quint8 {
    IllegalFunction = 0x01,
    IllegalDataValue = 0x03,
    ServerDeviceFailure = 0x04,
    TargetDoesNotRespond = 0x0B,
};

/// Thrown for a request that is answered with an exception code.
class Refusal : public Error
{
public:
    Refusal(Code code, const QString& why)
        : Error(why)
        , code(code)
    {}

    const Code code;
};

struct Request
{
    quint16 transaction = 0;
    int unit = 0;
    QByteArray pdu; ///< function code and data, never empty

    bool operator==(const Request&) const = default;
};

struct BinaryCommand
{
    quint16 word = 0;
    quint32 value = 0;  ///< parameter 1 is the low half, parameter 2 the high half
    QByteArray payload; ///< block write only
};

constexpr quint16 BlockWord = 0xA001;
constexpr quint16 CrcWord = 0xA002;
/// The processor's number is added to it, in 16 bits.
constexpr quint16 FinishWord = 0xA003;

enum class Taken { Incomplete, Whole, Malformed };

/// Moves one request from the front of `stream` into `request`; both keep their contents unless it is
/// Whole. After Malformed the stream has no frame boundary any more.
Taken TakeRequest(QByteArray& stream, Request& request);
/// The frame that answers `request` with `pdu`.
QByteArray Answer(const Request& request, const QByteArray& pdu);

QByteArray ExceptionPdu(quint8 function, Code code);
/// Answer of a private function; what does not fit one frame is cut off `content`.
QByteArray ContentPdu(Function function, const QByteArray& content);

/// What follows the length word of a private function. Throws Refusal when that is not as long.
QByteArray Content(const QByteArray& pdu);
/// Throws Refusal when lengths contradict; the command word is not judged.
BinaryCommand BinaryOf(const QByteArray& content);

/// CRC-16/MODBUS of `data`; a CRC of what stands before `data` as `start` continues it.
quint16 Crc16(const QByteArray& data, quint16 start = 0xFFFF);

} // namespace Frame

#pragma once

#include "Error.h"

#include <QByteArray>

/// Modbus TCP frames as a server reads and writes them. The header is big-endian (MODBUS Messaging on TCP/IP
/// Implementation Guide); everything inside the two private functions is little-endian, as the boards have it.
namespace Frame {

/// Function codes from the user-defined range of MODBUS Application Protocol.
enum Function : quint8 { TextFunction = 0x47, BinaryFunction = 0x48 };

/// Exception codes of MODBUS Application Protocol.
enum Code : quint8 {
    IllegalFunction = 0x01,
    IllegalDataValue = 0x03,
    ServerDeviceFailure = 0x04,
    TargetDoesNotRespond = 0x0B,
};

/// Thrown for a request that must be answered with an exception code; Board::Handle catches it.
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

/// Moves one request from the front of `stream` into `request`; both are unchanged unless it returns Whole. After
/// Malformed the next frame in the stream cannot be found.
Taken TakeRequest(QByteArray& stream, Request& request);
/// The frame that answers `request` with `pdu`.
QByteArray Answer(const Request& request, const QByteArray& pdu);

QByteArray ExceptionPdu(quint8 function, Code code);
/// Answer of a private function; `content` is cut to the 250 bytes that fit in a frame.
QByteArray ContentPdu(Function function, const QByteArray& content);

/// What follows the length word of a private function. Throws Refusal when its size is not that length.
QByteArray Content(const QByteArray& pdu);
/// Throws Refusal when the size of `content` does not match the command; an unknown command word is accepted.
BinaryCommand BinaryOf(const QByteArray& content);

/// CRC-16/MODBUS of `data`. To continue a CRC, pass the CRC of the bytes before `data` as `start`.
quint16 Crc16(const QByteArray& data, quint16 start = 0xFFFF);

} // namespace Frame

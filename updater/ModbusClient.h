#pragma once

#include <QModbusTcpClient>

/// The private function codes of the instruments (user-defined range of the MODBUS Application Protocol).
/// Request and response data of both begin with a 16-bit length, low byte first, of the bytes that follow.
enum class PrivateCode : quint8 {
    Text = 0x47,   ///< an ASCII command and its one-line answer
    Binary = 0x48, ///< a command word and two 16-bit parameters; the answer repeats the command word
};

/// Modbus TCP client that also frames and decodes the two private codes. Their answers come as a data unit
/// of holding registers from address 1 with one value, 0..255, per answer byte.
class ModbusClient : public QModbusTcpClient
{
    Q_OBJECT

public:
    /// Registers the data-size calculators of both codes with Qt, for the whole process.
    explicit ModbusClient(QObject* parent = nullptr);

    /// False when the data is too short to hold its length field. `data` may be null.
    bool processPrivateResponse(const QModbusResponse& response, QModbusDataUnit* data) override;
};

/// Size of the data part of a private response as its length field announces it; -1 while that is unknown.
int PrivateResponseDataSize(const QModbusResponse& response);

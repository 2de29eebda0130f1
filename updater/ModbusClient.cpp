#include "ModbusClient.h"

namespace {

constexpr int LengthFieldSize = 2;
/// The command word that a binary answer repeats before its result.
constexpr int RepeatedCommandSize = 2;

} // namespace

int PrivateResponseDataSize(const QModbusResponse& response)
{
    const QByteArray data = response.data();
    if (!response.isValid() || data.size() < LengthFieldSize)
        return -1;
    return quint8(data[0]) + quint8(data[1]) * 256 + LengthFieldSize;
}

ModbusClient::ModbusClient(QObject* parent)
    : QModbusTcpClient(parent)
{
    for (const PrivateCode code : {PrivateCode::Text, PrivateCode::Binary})
        QModbusResponse::registerDataSizeCalculator(QModbusPdu::FunctionCode(code), PrivateResponseDataSize);
}

bool ModbusClient::processPrivateResponse(const QModbusResponse& response, QModbusDataUnit* data)
{
    if (!response.isValid())
        return QModbusClient::processPrivateResponse(response, data);
    int stripped = LengthFieldSize;
    switch (PrivateCode(response.functionCode())) {
    case PrivateCode::Text:
        break;
    case PrivateCode::Binary:
        stripped += RepeatedCommandSize;
        break;
    default:
        return QModbusClient::processPrivateResponse(response, data);
    }
    if (response.data().size() < LengthFieldSize)
        return false;
    if (!data)
        return true;
    QList<quint16> values;
    for (const char byte : response.data().mid(stripped))
        values.append(quint8(byte));
    *data = QModbusDataUnit(QModbusDataUnit::HoldingRegisters, 1, values);
    return true;
}

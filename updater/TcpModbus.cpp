#include "TcpModbus.h"

#include "AppState.h"
#include "ModbusClient.h"
#include "TimeLimits.h"

#include <QAbstractSocket>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDebug>
#include <QModbusReply>
#include <QVariant>

#include <algorithm>
#include <memory>

namespace {

constexpr int ConnectAttempts = 10;
/// Seed of a second checksum, which the boards' protocol reserves and does not use.
constexpr char ChecksumSeed[] = "QX4+k27";

void AppendLittleEndian(QByteArray& data, quint16 value)
{
    data.append(char(value & 0xFF));
    data.append(char(value >> 8));
}

QModbusRequest TextRequest(const QString& command)
{
    QByteArray data;
    // Counted in UTF-16 units: equal to the byte count for ASCII, which is all that the boards know.
    AppendLittleEndian(data, quint16(command.size()));
    data.append(command.toUtf8());
    return QModbusRequest(QModbusPdu::FunctionCode(PrivateCode::Text), data);
}

QModbusRequest BinaryRequest(quint16 command, quint16 p1, quint16 p2, const QByteArray& payload)
{
    const bool isBlock = command == CmdWriteBlock;
    QByteArray data;
    AppendLittleEndian(data, quint16(isBlock ? 6 + 4 + payload.size() : 6));
    AppendLittleEndian(data, command);
    AppendLittleEndian(data, p1);
    AppendLittleEndian(data, p2);
    if (isBlock) {
        AppendLittleEndian(data, quint16(payload.size()));
        AppendLittleEndian(data, quint16(quint32(payload.size()) >> 16));
        data.append(payload);
    }
    return QModbusRequest(QModbusPdu::FunctionCode(PrivateCode::Binary), data);
}

quint32 ReadValue(const QModbusDataUnit& unit)
{
    return unit.value(0) | quint32(unit.value(1)) << 8 | quint32(unit.value(2)) << 16 | quint32(unit.value(3)) << 24;
}

QString Text(const QModbusDataUnit& unit)
{
    QString text;
    for (const quint16 value : unit.values())
        text.append(QChar(value));
    return text;
}

bool Succeeded(const QModbusReply& reply)
{
    return reply.isFinished() && reply.error() == QModbusDevice::NoError;
}

} // namespace

TcpModbus::TcpModbus(QObject* parent, const QString& host, int port, int serverAddress)
    : QObject(parent)
    , client(new ModbusClient)
    , serverAddress(serverAddress)
{
    client->setConnectionParameter(QModbusDevice::NetworkAddressParameter, host);
    client->setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
    client->setTimeout(int(g_timeLimits.reply.count()));
}

TcpModbus::~TcpModbus()
{
    if (client->state() == QModbusDevice::ConnectedState) {
        client->disconnectDevice();
        qDebug() << "Disconnected";
    }
    AbortConnection();
    client->deleteLater();
}

void TcpModbus::AbortConnection()
{
    // The client exists until the outermost event loop deletes it, and its own disconnect first waits for a pending
    // connection: a board that serves one connection only would then refuse the next session.
    auto* socket = qobject_cast<QAbstractSocket*>(client->device());
    if (socket && socket->state() != QAbstractSocket::UnconnectedState)
        socket->abort();
}

void TcpModbus::HangUp()
{
    if (client->state() == QModbusDevice::ConnectedState)
        client->disconnectDevice();
    AbortConnection();
}

void TcpModbus::Abandon()
{
    abandoned = true;
    HangUp();
}

bool TcpModbus::Connect()
{
    if (client->state() == QModbusDevice::ConnectedState) {
        qDebug() << "Allready connected!";
        return true;
    }
    for (int attempt = 0; attempt < ConnectAttempts && !abandoned; ++attempt) {
        client->connectDevice();
        const QDeadlineTimer deadline(g_timeLimits.connectAttempt);
        while (!deadline.hasExpired()) {
            QCoreApplication::processEvents();
            if (abandoned)
                return false;
            if (client->state() == QModbusDevice::ConnectedState) {
                qDebug() << "Connected!";
                return true;
            }
        }
        qDebug().nospace() << "Try to reconnect " << attempt + 1;
        if (g_stopRequested)
            return false;
    }
    qDebug() << client->state();
    return client->state() == QModbusDevice::ConnectedState;
}

TcpModbus::WaitEnd TcpModbus::Wait(const QModbusReply& reply) const
{
    const QDeadlineTimer deadline(g_timeLimits.reply);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents();
        // Before isFinished: abandoning also finishes the reply, which could then count as an accepted one.
        if (abandoned)
            return WaitEnd::Stopped;
        if (reply.isFinished())
            break;
        if (g_stopRequested)
            return WaitEnd::Stopped;
    }
    return WaitEnd::AnsweredOrLate;
}

std::unique_ptr<QModbusReply> TcpModbus::Send(const QModbusRequest& request)
{
    std::unique_ptr<QModbusReply> reply(client->sendRawRequest(request, serverAddress));
    // At once, instead of one pass through the event loop later: an image is tens of thousands of requests.
    if (auto* socket = qobject_cast<QAbstractSocket*>(client->device()))
        socket->flush();
    return reply;
}

bool TcpModbus::StrCommand(const QString& command, QString& reply)
{
    const QModbusRequest request = TextRequest(command);
    if (!request.isValid()) {
        qDebug() << "Invalid Modbus request.";
        return false;
    }
    qDebug().noquote().nospace() << "StrCommand: " << command;
    const std::unique_ptr<QModbusReply> answer = Send(request);
    if (!answer || Wait(*answer) == WaitEnd::Stopped)
        return false;
    if (answer->isFinished())
        qDebug() << "isFinished";
    if (!Succeeded(*answer)) {
        qInfo().noquote() << answer->errorString();
        return false;
    }
    const QString text = Text(answer->result());
    qDebug().noquote().nospace() << "Reply: " << text;
    reply = text;
    return true;
}

bool TcpModbus::BinCommand(quint16 command, quint16 p1, quint16 p2, QByteArray payload)
{
    const QModbusRequest request = BinaryRequest(command, p1, p2, payload);
    if (!request.isValid()) {
        qDebug() << "Invalid Modbus request.";
        return false;
    }
    const std::unique_ptr<QModbusReply> answer = Send(request);
    if (!answer || Wait(*answer) == WaitEnd::Stopped)
        return false;
    if (Succeeded(*answer)) {
        // No caller needs the value yet. It is decoded here because no other place sees the answer.
        if (command == CmdReadValue) {
            [[maybe_unused]] const quint32 value = ReadValue(answer->result());
        }
        return true;
    }
    if (command == CmdFinish)
        return true;
    qInfo().noquote() << answer->errorString();
    return false;
}

bool TcpModbus::WriteFirmware(const QByteArray& image, int type, quint32 blockLimit)
{
    Q_ASSERT(blockLimit > 4);
    const auto size = quint32(image.size());
    const quint16 imageCrc = Crc16(0xFFFF, image);
    // Calculated as the boards' protocol has it; nothing that is sent depends on it.
    [[maybe_unused]] const quint16 seededCrc = Crc16(imageCrc, QByteArray(ChecksumSeed));

    for (quint32 offset = 0; offset < size;) {
        const quint32 chunk = std::min(size - offset, blockLimit - 4);
        if (!BinCommand(CmdWriteBlock, quint16(offset), quint16(offset >> 16), image.mid(offset, chunk)))
            return false;
        offset += chunk;
        if (g_stopRequested)
            return false;
        emit onWriteBlock(int(offset));
    }
    return BinCommand(CmdImageCrc, imageCrc, 0, {})
           && BinCommand(FinishCommand(type), quint16(size), quint16(size >> 16), {});
}

quint16 TcpModbus::Crc16(quint16 init, const QByteArray& data)
{
    quint16 crc = init;
    for (const char byte : data) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? quint16((crc >> 1) ^ 0xA001) : quint16(crc >> 1);
    }
    return crc;
}

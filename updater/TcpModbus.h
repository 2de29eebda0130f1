#pragma once

#include "BinaryCommand.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class ModbusClient;
class QModbusReply;
class QModbusRequest;

/// One connection to one board, for one step of the work. Each call sends, then processes the program's
/// events until the answer is there, a limit of g_timeLimits has passed, or g_stopRequested is set; so any
/// slot of the program may run inside a call. Failures go to the log and come back as false.
class TcpModbus : public QObject
{
    Q_OBJECT

public:
    /// Connects nothing yet. `serverAddress` is the Modbus unit address as the catalogue has it; the frame takes its
    /// low byte.
    TcpModbus(QObject* parent, const QString& host, int port, int serverAddress);
    ~TcpModbus() override;

    /// True when connected on return. Ten attempts; a stop request is seen after each of them.
    bool Connect();
    /// Sends a text command such as "VER ?;" (the caller writes the ";") and stores the answer line, one
    /// character per byte, in `reply`; on failure `reply` is left as it was.
    bool StrCommand(const QString& command, QString& reply);
    /// Sends a binary command; `payload` counts for CmdWriteBlock only. A failed or missing answer to the
    /// bare word CmdFinish is success: a board with the one processor 0 may restart before it answers.
    bool BinCommand(quint16 command, quint16 p1, quint16 p2, QByteArray payload);
    /// Writes a whole image in blocks of at most `blockLimit` - 4 bytes, then its CRC, then closes the
    /// transfer for the processor `type` (IdCPU). The first failure or a stop request ends it with false.
    bool WriteFirmware(const QByteArray& image, int type, quint32 blockLimit);

    /// CRC-16/MODBUS (MODBUS over Serial Line, appendix B) of `data`, continued from `init`; 0xFFFF starts.
    static quint16 Crc16(quint16 init, const QByteArray& data);

    /// Closes the connection at once; the next Connect makes a new one. After a truncated answer the TCP stream is out
    /// of frame sync and later answers would be misread.
    void HangUp();
    /// Hangs up for good and ends a waiting call with false. For work that starts in a wait of other work: some boards
    /// serve one connection only.
    void Abandon();

signals:
    /// After each accepted block, with the count of image bytes accepted so far.
    void onWriteBlock(int index);

private:
    /// Nothing when it cannot be sent.
    std::unique_ptr<QModbusReply> Send(const QModbusRequest& request);
    enum class WaitEnd { AnsweredOrLate, Stopped };
    WaitEnd Wait(const QModbusReply& reply) const;
    void AbortConnection();

    ModbusClient* client;
    qint32 serverAddress = 2; // always replaced by the constructor
    bool abandoned = false;
};

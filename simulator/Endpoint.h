#pragma once

#include "Board.h"
#include "Instrument.h"

#include <QHash>
#include <QHostAddress>
#include <QPointer>
#include <QSet>

#include <functional>

class QTcpServer;
class QTcpSocket;

/// One listening socket and the units that answer on it.
class Endpoint : public QObject
{
    Q_OBJECT
public:
    /// Port 0: the system chooses one when Listen is called. `plan` is not owned and must outlive the endpoint.
    Endpoint(const QString& ip, quint16 port, Instrument::Options options, FaultPlan* plan, QObject* parent);

    /// The unit at `address`, made with `type` when there is none. Owned by the endpoint.
    Board* Unit(int address, const QString& type);
    /// On failure returns false and sets *error to one line.
    bool Listen(QString* error);
    /// Stops listening and closes all connections.
    void Stop();
    /// Logs the blocks that were counted since the last log line.
    void LogBlocks();
    /// The port in use, once Listen has succeeded.
    quint16 Port() const { return m_port; }

signals:
    void Event(const QString& line);
    void Requested(int number, bool isBinary);

private:
    struct Connection
    {
        QByteArray stream;
        QSet<int> units;                  ///< unit addresses that the client sent requests to
        std::optional<Fault::Kind> fault; ///< that was applied to `last`
        Frame::Request last;
        int number = 0; ///< of `last`
    };

    /// Consecutive blocks: there may be thousands, and the log has one line for all.
    struct Blocks
    {
        int unit = 0;
        int first = 0; ///< number of the request
        int last = 0;
        int count = 0;
        qsizetype bytes = 0;
    };

    /// Segments to send, and the log line to write afterwards.
    struct Sending
    {
        QPointer<QTcpSocket> socket;
        QList<QByteArray> segments;
        int unit = 0;
        QString line;                       ///< start of the line, before the bytes sent; empty: no line
        QString event = {};                 ///< end of the line, after the bytes sent
        std::function<void()> then = [] {}; ///< called when all is sent or the client is gone
        QByteArrayList sent = {};           ///< so far, each segment as hex
    };

    void AcceptConnections();
    void Read(QTcpSocket* socket);
    void Serve(QTcpSocket* socket, const Frame::Request& request);
    /// Carries out a fault that keeps the request from the board.
    void DropRequest(QTcpSocket* socket, const Frame::Request& request, Fault::Kind fault);
    /// Answers `request` and calls `then` when all of the answer is sent.
    void Answer(QTcpSocket* socket, const Frame::Request& request, const Board::Outcome& outcome,
                const std::function<void()>& then);
    /// Sends the first segment, and each of the others after a pause.
    void Send(Sending sending);
    void CountBlock(int unit, int number, qsizetype bytes);
    void Restart(int address);
    void Save(int address, const Processor& processor);
    void ListenAgain();
    void Close(QTcpSocket* socket);
    void Log(const QString& what);
    void Log(int address, const QString& what);

    /// Makes the unit silent and closes its connections; stops listening when all units are silent.
    void Silence(int address);
    void ComeBack(int address);

    QHostAddress m_ip;
    quint16 m_port;
    Instrument::Options m_options;
    FaultPlan* m_plan;
    QTcpServer* m_server;                         // child
    std::map<int, Board> m_units;                 // by unit address; std::map keeps pointers to units valid
    QHash<QTcpSocket*, Connection> m_connections; // the sockets are children of m_server
    Blocks m_blocks;
    bool m_isOff = false;
};

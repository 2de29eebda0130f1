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

/// One listening socket with the units behind it.
class Endpoint : public QObject
{
    Q_OBJECT
public:
    /// Port 0: the system gives one out when Listen is called.
    /// `plan` is the instrument's and outlives the endpoint.
    Endpoint(const QString& ip, quint16 port, Instrument::Options options, FaultPlan* plan, QObject* parent);

    /// The unit at `address`, made with `type` when it is new. The endpoint keeps it.
    Board* Unit(int address, const QString& type);
    /// False with one line in *error.
    bool Listen(QString* error);
    /// Neither listens nor has connections any more.
    void Stop();
    /// Logs the blocks that came since the last line.
    void LogBlocks();
    quint16 Port() const { return m_port; }

signals:
    void Event(const QString& line);
    void Requested(int number, bool isBinary);

private:
    struct Connection
    {
        QByteArray stream;
        QSet<int> units;                  ///< unit addresses it sent requests to
        std::optional<Fault::Kind> fault; ///< that struck `last`
        Frame::Request last;
        int number = 0; ///< of `last`
    };

    /// Blocks that came one after the other: thousands of them are one line of the log.
    struct Blocks
    {
        int unit = 0;
        int first = 0; ///< number of the request
        int last = 0;
        int count = 0;
        qsizetype bytes = 0;
    };

    /// What is to be sent, and the line that says so when it was.
    struct Sending
    {
        QPointer<QTcpSocket> socket;
        QList<QByteArray> segments;
        int unit = 0;
        QString line;       ///< goes before what was sent; empty: no line
        QString event = {}; ///< goes behind it
        std::function<void()> then = [] {};
        QByteArrayList sent = {}; ///< so far, each segment as hex
    };

    void AcceptConnections();
    void Read(QTcpSocket* socket);
    void Serve(QTcpSocket* socket, const Frame::Request& request);
    /// What a fault does by which the board never sees the request.
    void Lose(QTcpSocket* socket, const Frame::Request& request, Fault::Kind fault);
    /// Answers `request`, calls `then` when all of it is sent.
    void Answer(QTcpSocket* socket, const Frame::Request& request, const Board::Outcome& outcome,
                const std::function<void()>& then);
    /// Sends the first segment, and each of the others by itself behind it.
    void Send(Sending sending);
    void CountBlock(int unit, int number, qsizetype bytes);
    void Restart(int address);
    void Save(int address, const Processor& processor);
    void ListenAgain();
    void Close(QTcpSocket* socket);
    void Log(const QString& what);
    void Log(int address, const QString& what);

    /// Takes the unit off the network.
    void Silence(int address);
    void ComeBack(int address);

    QHostAddress m_ip;
    quint16 m_port;
    Instrument::Options m_options;
    FaultPlan* m_plan;
    QTcpServer* m_server;                         // child
    std::map<int, Board> m_units;                 // by unit address; a map, so that units never move
    QHash<QTcpSocket*, Connection> m_connections; // the sockets are children of m_server
    Blocks m_blocks;
    bool m_isOff = false;
};

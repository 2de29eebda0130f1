#pragma once

#include "Board.h"
#include "Instrument.h"

#include <QHash>
#include <QHostAddress>
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
    };

    void AcceptConnections();
    void Read(QTcpSocket* socket);
    void Serve(QTcpSocket* socket, const Frame::Request& request);
    /// What a fault does by which the board never sees the request.
    void Lose(QTcpSocket* socket, const Frame::Request& request, Fault::Kind fault);
    /// Answers `request`, calls `then` when all of it is sent.
    void Answer(QTcpSocket* socket, const Frame::Request& request, const QByteArray& pdu,
                const std::function<void()>& then);
    /// Sends the first of `segments`, and each of the others by itself behind it.
    void Send(QTcpSocket* socket, QList<QByteArray> segments, const std::function<void()>& then);
    void Restart(int address);
    void Save(int address, const Processor& processor);
    void ListenAgain();
    void Close(QTcpSocket* socket);
    void Tell(const QString& what);
    void Tell(int address, const QString& what);

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
    bool m_isOff = false;
};

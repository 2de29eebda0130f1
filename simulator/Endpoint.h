#pragma once

#include "Board.h"
#include "Instrument.h"

#include <QHash>
#include <QHostAddress>
#include <QSet>

class QTcpServer;
class QTcpSocket;

/// One listening socket with the units behind it.
class Endpoint : public QObject
{
    Q_OBJECT
public:
    /// Port 0: the system gives one out when Listen is called.
    Endpoint(const QString& ip, quint16 port, Instrument::Options options, QObject* parent);

    /// The unit at `address`, made with `type` when it is new. The endpoint keeps it.
    Board* Unit(int address, const QString& type);
    /// False with one line in *error.
    bool Listen(QString* error);
    /// Neither listens nor has connections any more.
    void Stop();
    quint16 Port() const { return m_port; }
    int RequestCount() const { return m_requestCount; }

signals:
    void Event(const QString& line);

private:
    struct Connection
    {
        QByteArray stream;
        QSet<int> units; ///< unit addresses it sent requests to
    };

    void AcceptConnections();
    void Read(QTcpSocket* socket);
    void Serve(QTcpSocket* socket, const Frame::Request& request);
    void Restart(int address);
    void Save(int address, const Processor& processor);
    void ListenAgain();
    void Close(QTcpSocket* socket);
    void Tell(const QString& what);
    void Tell(int address, const QString& what);

    QHostAddress m_ip;
    quint16 m_port;
    Instrument::Options m_options;
    QTcpServer* m_server;                         // child
    std::map<int, Board> m_units;                 // by unit address; a map, so that units never move
    QHash<QTcpSocket*, Connection> m_connections; // the sockets are children of m_server
    int m_requestCount = 0;
};

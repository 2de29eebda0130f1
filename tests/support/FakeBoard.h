#pragma once

#include <QByteArray>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>

/// A board without behaviour: it records every request and leaves the answer to the handler.
class FakeBoard : public QTcpServer
{
public:
    /// `request` is a whole Modbus TCP frame.
    using Handler = std::function<void(QTcpSocket& socket, const QByteArray& request)>;

    /// Listens on a free port of 127.0.0.1.
    explicit FakeBoard(Handler handler);

    QList<QByteArray> Requests;
    int OpenConnections() const;

    /// A frame that answers `request` with this function code and data.
    static QByteArray Answer(const QByteArray& request, char function, const QByteArray& data);
    /// The frame of a text answer.
    static QByteArray Text(const QByteArray& request, const QByteArray& text);
    /// The command text in a text request.
    static QByteArray Command(const QByteArray& request) { return request.mid(10); }
};

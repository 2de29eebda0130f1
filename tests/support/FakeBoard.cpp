#include "FakeBoard.h"

#include <QtEndian>

#include <memory>

FakeBoard::FakeBoard(Handler handler)
{
    if (!listen(QHostAddress::LocalHost))
        qFatal("no port on 127.0.0.1");
    connect(this, &QTcpServer::newConnection, this, [this, handler] {
        QTcpSocket* socket = nextPendingConnection();
        const auto buffer = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::readyRead, this, [=, this] {
            buffer->append(socket->readAll());
            while (buffer->size() > 6) {
                const int size = 6 + qFromBigEndian<quint16>(buffer->constData() + 4);
                if (buffer->size() < size)
                    return;
                Requests.append(buffer->first(size));
                buffer->remove(0, size);
                handler(*socket, Requests.last());
            }
        });
    });
}

int FakeBoard::OpenConnections() const
{
    int open = 0;
    for (const QTcpSocket* socket : findChildren<QTcpSocket*>())
        open += socket->state() == QAbstractSocket::ConnectedState;
    return open;
}

QByteArray FakeBoard::Answer(const QByteArray& request, char function, const QByteArray& data)
{
    const auto length = quint16(2 + data.size());
    return request.first(4) + char(length >> 8) + char(length) + request.at(6) + function + data;
}

QByteArray FakeBoard::Text(const QByteArray& request, const QByteArray& text)
{
    return Answer(request, 0x47, QByteArray() + char(text.size()) + char(text.size() >> 8) + text);
}

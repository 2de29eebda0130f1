#include "Endpoint.h"

#include "AtomicWrite.h"

#include <QDir>
#include <QSaveFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <utility>

#include <sys/socket.h>

namespace {

/// Long enough for the client to see each segment by itself.
constexpr std::chrono::milliseconds SegmentPause{1};

/// The start of a log line about a request.
QString RequestPrefix(int number)
{
    return QString("request %1: ").arg(number);
}

double Seconds(std::chrono::milliseconds time)
{
    return double(time.count()) / 1000;
}

} // namespace

Endpoint::Endpoint(const QString& ip, quint16 port, Instrument::Options options, FaultPlan* plan, QObject* parent)
    : QObject(parent)
    , m_ip(ip)
    , m_port(port)
    , m_options(std::move(options))
    , m_plan(plan)
    , m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, &Endpoint::AcceptConnections);
}

Board* Endpoint::Unit(int address, const QString& type)
{
    return &m_units.try_emplace(address, type, m_options.serial).first->second;
}

bool Endpoint::Listen(QString* error)
{
    // With a null address Qt would listen on all addresses of the machine.
    if (!m_ip.isNull() && m_server->listen(m_ip, m_port)) {
        m_port = m_server->serverPort();
        return true;
    }
    *error = QString("cannot listen on %1:%2 (").arg(m_ip.toString()).arg(m_port) + m_server->errorString()
             + "); give this machine the address and keep the port free";
    return false;
}

void Endpoint::Stop()
{
    m_server->close();
    const QList<QTcpSocket*> sockets = m_connections.keys();
    for (QTcpSocket* socket : sockets)
        Close(socket);
}

void Endpoint::AcceptConnections()
{
    while (QTcpSocket* socket = m_server->nextPendingConnection()) {
        m_connections.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { Read(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            if (m_connections.remove(socket))
                Log("client gone");
            socket->deleteLater();
        });
        Log(QString("connected from %1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort()));
    }
}

void Endpoint::Read(QTcpSocket* socket)
{
    const QByteArray bytes = socket->readAll();
    if (m_connections.contains(socket))
        m_connections[socket].stream += bytes;
    // Looked up again for every request: serving one may close this connection.
    while (m_connections.contains(socket)) {
        Frame::Request request;
        const Frame::Taken taken = Frame::TakeRequest(m_connections[socket].stream, request);
        if (taken == Frame::Taken::Incomplete)
            return;
        if (taken == Frame::Taken::Whole) {
            Serve(socket, request);
        } else {
            Log("not a Modbus TCP header, connection closed");
            Close(socket);
        }
    }
}

void Endpoint::Serve(QTcpSocket* socket, const Frame::Request& request)
{
    Connection& connection = m_connections[socket];
    if (connection.fault && connection.last == request) {
        m_plan->CountRepetition();
        return Log(request.unit, RequestPrefix(connection.number) + "repeated, not answered");
    }
    const auto unit = m_units.find(request.unit);
    const std::optional<Fault::Kind> fault = m_plan->CountRequest(unit != m_units.end() && !unit->second.IsSilent());
    const int number = m_plan->RequestCount();
    if (fault)
        LogBlocks();
    connection.fault = fault;
    connection.last = request;
    connection.number = number;
    connection.units.insert(request.unit);
    emit Requested(number, request.pdu.at(0) == char(Frame::BinaryFunction));
    if (unit == m_units.end()) {
        const quint8 function = quint8(request.pdu.at(0));
        socket->write(Frame::Answer(request, Frame::ExceptionPdu(function, Frame::TargetDoesNotRespond)));
        return Log(request.unit, RequestPrefix(number) + "no such unit here, refused with exception 0x0b");
    }
    if (unit->second.IsSilent())
        return Log(request.unit, RequestPrefix(number) + "restarting, not answered");
    if (fault && !Fault::LetsBoardAct(*fault))
        return DropRequest(socket, request, *fault);
    const Board::Outcome outcome = unit->second.Handle(request.pdu);
    if (!fault && outcome.block > 0)
        CountBlock(request.unit, number, outcome.block);
    else if (!fault)
        Log(request.unit, RequestPrefix(number) + outcome.event + outcome.reply);
    if (outcome.accepted != nullptr && !m_options.imageFolder.isEmpty())
        Save(request.unit, *outcome.accepted);
    // The restart begins while the answer is still in Qt's buffer. The event loop sends it before it closes the
    // connection, so a client that has the answer finds the unit already off the network.
    const std::function<void()> restart = [this, address = request.unit] { Restart(address); };
    Answer(
        socket, request, outcome, outcome.accepted != nullptr ? restart : [] {});
}

void Endpoint::DropRequest(QTcpSocket* socket, const Frame::Request& request, Fault::Kind fault)
{
    Send({socket, Fault::Segments(fault, request, {}), request.unit,
          RequestPrefix(m_plan->RequestCount()) + "fault " + Fault::Name(fault) + ", not carried out"});
    if (fault == Fault::Off || fault == Fault::Refuse)
        Stop();
    m_isOff = m_isOff || fault == Fault::Off;
    if (fault == Fault::Refuse)
        QTimer::singleShot(m_options.restart, Qt::PreciseTimer, this, &Endpoint::ListenAgain);
    if (fault == Fault::Reset) {
        // Without a linger time the system resets the connection.
        const linger none{1, 0};
        setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof none);
        m_connections.remove(socket);
        socket->abort();
    }
    if (fault == Fault::PowerLoss) {
        m_units.at(request.unit).ForgetNewImages();
        Silence(request.unit);
        QTimer::singleShot(m_options.restart, Qt::PreciseTimer, this,
                           [this, address = request.unit] { ComeBack(address); });
    }
}

void Endpoint::Answer(QTcpSocket* socket, const Frame::Request& request, const Board::Outcome& outcome,
                      const std::function<void()>& then)
{
    const QByteArray answer = Frame::Answer(request, outcome.pdu);
    const std::optional<Fault::Kind> fault = m_connections[socket].fault;
    if (!fault)
        return Send({socket, {answer}, request.unit, {}, {}, then});
    const QString line = RequestPrefix(m_plan->RequestCount()) + "fault " + Fault::Name(*fault);
    const QList<QByteArray> segments = Fault::Segments(*fault, request, answer);
    if (fault != Fault::Late && fault != Fault::TooLate) {
        Send({socket, segments, request.unit, line, ": " + outcome.event, then});
        if (fault == Fault::Close)
            Close(socket);
        return;
    }
    const auto delay = fault == Fault::Late ? m_options.late : m_options.tooLate;
    Log(request.unit, line + QString(", answer in %1 s: ").arg(Seconds(delay)) + outcome.event);
    const Sending sending{socket, segments, request.unit, line, {}, then};
    QTimer::singleShot(delay, Qt::PreciseTimer, this, [this, sending] { Send(sending); });
}

void Endpoint::Send(Sending sending)
{
    // When the client is gone the rest is not sent, but the board still does what follows.
    if (!sending.segments.isEmpty() && m_connections.contains(sending.socket)) {
        const QByteArray segment = sending.segments.takeFirst();
        sending.socket->write(segment);
        sending.sent.append(segment.toHex(' '));
    } else {
        sending.segments.clear();
    }
    if (sending.segments.isEmpty()) {
        const QByteArray sent = sending.sent.isEmpty() ? "nothing sent" : "sent " + sending.sent.join(" | ");
        if (!sending.line.isEmpty())
            Log(sending.unit, sending.line + ", " + sent + sending.event);
        return sending.then();
    }
    sending.socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    sending.socket->flush();
    QTimer::singleShot(SegmentPause, Qt::PreciseTimer, this, [this, sending] { Send(sending); });
}

void Endpoint::CountBlock(int unit, int number, qsizetype bytes)
{
    if (m_blocks.count > 0 && m_blocks.unit != unit)
        LogBlocks();
    m_blocks = {unit, m_blocks.count == 0 ? number : m_blocks.first, number, m_blocks.count + 1,
                m_blocks.bytes + bytes};
}

void Endpoint::LogBlocks()
{
    const Blocks blocks = std::exchange(m_blocks, {});
    if (blocks.count == 0)
        return;
    const QString which =
        blocks.count == 1 ? RequestPrefix(blocks.first) + "1 block"
                          : QString("requests %1..%2: %3 blocks").arg(blocks.first).arg(blocks.last).arg(blocks.count);
    Log(blocks.unit, which + QString(" taken, %1 image bytes").arg(blocks.bytes));
}

void Endpoint::Silence(int address)
{
    m_units.at(address).GoSilent();
    Log(address, QString("silent for %1 s").arg(Seconds(m_options.restart)));
    // When every unit is silent nothing listens, as with a board that restarts.
    if (std::all_of(m_units.begin(), m_units.end(), [](const auto& unit) { return unit.second.IsSilent(); }))
        Stop();
    const QList<QTcpSocket*> sockets = m_connections.keys();
    for (QTcpSocket* socket : sockets) {
        if (m_connections[socket].units.contains(address))
            Close(socket);
    }
}

void Endpoint::ComeBack(int address)
{
    Log(address, "back with version " + m_units.at(address).ComeBack());
    ListenAgain();
}

void Endpoint::Restart(int address)
{
    const std::optional<Fault::Kind> fault = m_plan->TakePending();
    Silence(address);
    if (fault == Fault::NeverRestarts)
        return Log(address, "fault never-restarts");
    QTimer::singleShot(m_options.restart, Qt::PreciseTimer, this, [this, address, fault] {
        Board& board = m_units.at(address);
        if (fault == Fault::OldVersion)
            board.ForgetNewImages();
        if (fault == Fault::OtherType)
            board.SetType("ANOTHER");
        if (fault)
            Log(address, "fault " + Fault::Name(*fault));
        ComeBack(address);
    });
}

void Endpoint::Save(int address, const Processor& processor)
{
    const QString place = m_ip.toString() + QString("_%1_%2_%3").arg(m_port).arg(address).arg(processor.id);
    QSaveFile file(QDir(m_options.imageFolder).filePath(place + ".img"));
    const QString former = QFile::exists(file.fileName()) ? ", in place of the one before" : "";
    if (file.open(QIODevice::WriteOnly) && WriteAndCommit(file, processor.image))
        Log(address, "image saved as " + file.fileName() + former);
    else
        Log(address, "image NOT saved as " + file.fileName() + " (" + file.errorString() + "); make room for it there");
}

void Endpoint::ListenAgain()
{
    QString error;
    if (m_isOff || m_server->isListening() || Listen(&error))
        return;
    Log(error + "; trying again in 1 s");
    QTimer::singleShot(std::chrono::seconds(1), this, &Endpoint::ListenAgain);
}

void Endpoint::Close(QTcpSocket* socket)
{
    m_connections.remove(socket);
    socket->disconnectFromHost();
}

void Endpoint::Log(const QString& what)
{
    LogBlocks();
    emit Event(m_ip.toString() + ':' + QString::number(m_port) + ' ' + what);
}

void Endpoint::Log(int address, const QString& what)
{
    Log("unit " + QString::number(address) + ": " + what);
}

#include "BareClient.h"

#include "BinaryCommand.h"
#include "Figure.h"

#include <QtEndian>

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr quint32 BlockSize = 240;
/// MODBUS Messaging on TCP/IP Implementation Guide: transaction, protocol, length, unit.
constexpr size_t HeaderSize = 7;

} // namespace

BareClient::BareClient(quint16 port, Waiting waiting)
    : m_socket(socket(AF_INET, SOCK_STREAM, 0))
    , m_waiting(waiting)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw Unmeasurable{QString("127.0.0.1:%1 cannot be reached: ").arg(port) + std::strerror(errno)};
}

BareClient::~BareClient()
{
    close(m_socket);
}

bool BareClient::WriteImage(const QByteArray& image, quint16 crc)
{
    const auto size = quint32(image.size());
    for (quint32 offset = 0; offset < size; offset += BlockSize) {
        if (!Ask(CmdWriteBlock, offset, image.constData() + offset, quint16(std::min(BlockSize, size - offset))))
            return false;
    }
    return Ask(CmdImageCrc, crc, nullptr, 0) && Ask(CmdFinish, size, nullptr, 0);
}

bool BareClient::Ask(quint16 command, quint32 value, const char* payload, quint16 size)
{
    uchar frame[HeaderSize + 13 + BlockSize] = {};
    const quint16 content = quint16(payload != nullptr ? 10 + size : 6);
    qToBigEndian<quint16>(++m_transaction, frame);
    qToBigEndian<quint16>(quint16(content + 4), frame + 4);
    frame[6] = 1;
    frame[7] = 0x48;
    qToLittleEndian<quint16>(content, frame + 8);
    qToLittleEndian<quint16>(command, frame + 10);
    qToLittleEndian<quint32>(value, frame + 12);
    if (payload != nullptr) {
        qToLittleEndian<quint32>(size, frame + 16);
        std::memcpy(frame + 20, payload, size);
    }
    const size_t length = HeaderSize + 3 + content;
    if (send(m_socket, frame, length, MSG_NOSIGNAL) != ssize_t(length))
        return false;
    uchar answer[HeaderSize + 253];
    size_t got = 0;
    while (got < HeaderSize || got < size_t(6) + qFromBigEndian<quint16>(answer + 4)) {
        const int flags = m_waiting == Waiting::Spinning ? MSG_DONTWAIT : 0;
        const ssize_t count = recv(m_socket, answer + got, sizeof answer - got, flags);
        if (count > 0)
            got += size_t(count);
        else if (count == 0 || errno != EAGAIN)
            return false;
    }
    return answer[7] == 0x48;
}

#pragma once

#include <QByteArray>

/// The lower bound of an image transfer: a socket that sends each request, waits for its answer, and does nothing else.
/// Throws Unmeasurable.
class BareClient
{
public:
    enum class Waiting {
        Asleep,  ///< blocks until the answer arrives, although an idle processor takes long to wake up
        Spinning ///< polls for the answer without sleeping, as the program does
    };
    /// Connects to 127.0.0.1.
    BareClient(quint16 port, Waiting waiting);
    ~BareClient();
    Q_DISABLE_COPY_MOVE(BareClient)

    /// Writes `image` to processor 0 of unit 1 with the same requests that the program sends. False when an answer is
    /// an exception.
    bool WriteImage(const QByteArray& image, quint16 crc);

private:
    /// Sends a binary command (function 0x48; everything after the header is little-endian) and reads its answer.
    bool Ask(quint16 command, quint32 value, const char* payload, quint16 size);

    int m_socket;
    Waiting m_waiting;
    quint16 m_transaction = 0;
};

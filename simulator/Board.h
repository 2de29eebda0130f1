#pragma once

#include "Frame.h"

#include <map>

/// Whether `text` can stand as one word in an answer: not empty, printable ASCII without space and ";".
bool IsAnswerWord(const QByteArray& text);

struct Processor
{
    int id = 0;
    QString version = "1.0";
    QByteArray image;   ///< the last one accepted
    bool isNew = false; ///< the image runs only after the restart
};

/// One unit address: its processors and the image being received. Uses neither sockets nor timers.
class Board
{
public:
    struct Outcome
    {
        QByteArray pdu;                      ///< the answer
        QString event;                       ///< for the log: what was requested and what was done
        QString reply;                       ///< for the log, after `event`, when the answer is sent unchanged
        qsizetype block = 0;                 ///< image bytes of a block that needs no log line of its own; else 0
        const Processor* accepted = nullptr; ///< the processor that accepted its image now; owned by the board
    };

    Board(QString type, QString serial);

    /// The processor with that number, added when there is none. Owned by the board; valid as long as the board.
    Processor* AddProcessor(int id);
    /// Answers one request. Needs at least one processor and a PDU that is not empty; must not be called while the
    /// unit is silent. After an accepted image the owner calls GoSilent, and ComeBack after the restart.
    Outcome Handle(const QByteArray& pdu);

    /// Starts the silence of a restart; an image being received is lost.
    void GoSilent();
    /// Ends the silence: accepted images run from now on. Returns the versions as in the answer to "VER ?;".
    QString ComeBack();
    /// Accepted images that do not run yet will not run after the restart either.
    void ForgetNewImages();
    /// Changes the answer to "DEVICETYPE ?;".
    void SetType(const QString& type) { m_type = type; }
    bool IsSilent() const { return m_isSilent; }

private:
    // These five throw Frame::Refusal; CheckCrc and Finish return the text for `Outcome::event`.
    Outcome HandleText(const QByteArray& command) const;
    Outcome HandleBinary(const Frame::BinaryCommand& command);
    void WriteBlock(const Frame::BinaryCommand& command, Outcome& outcome);
    QString CheckCrc(quint32 crc);
    QString Finish(Processor* target, quint32 size);
    QString Versions() const;
    void DropImage();

    QString m_type;
    QString m_serial;
    std::map<int, Processor> m_processors;
    bool m_isSilent = false;
    // Blocks name no processor, so the whole unit receives one image at a time.
    QByteArray m_image;
    quint16 m_imageCrc = 0xFFFF;
    bool m_isCrcConfirmed = false;
};

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
    bool isNew = false; ///< the image does not run yet
};

/// One unit address: its processors and the image under way. It knows no socket and no time.
class Board
{
public:
    struct Outcome
    {
        QByteArray pdu;                      ///< the answer
        QString event;                       ///< one line for people: what came and what was done
        QString reply;                       ///< what follows the event when the answer goes out as it is
        qsizetype block = 0;                 ///< image bytes of a block that was simply taken
        const Processor* accepted = nullptr; ///< took a new image with this request; the board's
    };

    Board(QString type, QString serial);

    /// The processor with that number, made when it is new; it stays where it is as long as the board.
    Processor* AddProcessor(int id);
    /// Answers one request; never call it while the unit is silent. After an accepted image the owner
    /// calls GoSilent, and ComeBack after the restart.
    Outcome Handle(const QByteArray& pdu);

    void GoSilent();
    /// Ends the silence: accepted images now run. Returns the versions as in the answer to "VER ?;".
    QString ComeBack();
    /// The accepted images that do not run yet never will.
    void ForgetNewImages();
    /// What it answers to "DEVICETYPE ?;" from now on.
    void Become(const QString& type) { m_type = type; }
    bool IsSilent() const { return m_isSilent; }

private:
    Outcome HandleText(const QByteArray& command) const;
    Outcome HandleBinary(const Frame::BinaryCommand& command);
    /// These three throw Frame::Refusal; two return the event's text.
    void WriteBlock(const Frame::BinaryCommand& command, Outcome& outcome);
    QString CheckCrc(quint32 crc);
    QString Finish(Processor* target, quint32 size);
    QString Versions() const;
    void DropImage();

    QString m_type;
    QString m_serial;
    std::map<int, Processor> m_processors;
    bool m_isSilent = false;
    // Blocks name no processor, so there is one image under way for the whole unit.
    QByteArray m_image;
    quint16 m_imageCrc = 0xFFFF;
    bool m_isCrcConfirmed = false;
};

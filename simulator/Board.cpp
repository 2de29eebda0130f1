#include "Board.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace {

constexpr qsizetype MaxImage = qsizetype(64) * 1024 * 1024;

[[noreturn]] void Refuse(const QString& why)
{
    throw Frame::Refusal(Frame::IllegalDataValue, why);
}

QString VersionOf(const QByteArray& image)
{
    constexpr int headerSize = 24;
    const QByteArray magic("UPDIMG1 ");
    if (image.size() < headerSize || !image.startsWith(magic))
        return "0.0";
    QByteArray version = image.mid(magic.size(), headerSize - magic.size());
    if (const qsizetype end = version.indexOf('\0'); end >= 0)
        version.truncate(end);
    return IsAnswerWord(version) ? QString::fromLatin1(version) : "0.0";
}

} // namespace

bool IsAnswerWord(const QByteArray& text)
{
    return !text.isEmpty()
           && std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~' && c != ';'; });
}

Board::Board(QString type, QString serial)
    : m_type(std::move(type))
    , m_serial(std::move(serial))
{}

Processor* Board::AddProcessor(int id)
{
    Processor* processor = &m_processors[id];
    processor->id = id;
    return processor;
}

Board::Outcome Board::Handle(const QByteArray& pdu)
{
    const quint8 function = quint8(pdu.at(0));
    try {
        if (function == Frame::TextFunction)
            return HandleText(Frame::Content(pdu));
        if (function == Frame::BinaryFunction)
            return HandleBinary(Frame::BinaryOf(Frame::Content(pdu)));
        throw Frame::Refusal(Frame::IllegalFunction, QString::asprintf("no function 0x%02x", function));
    } catch (const Frame::Refusal& refusal) {
        return {Frame::ExceptionPdu(function, refusal.code), refusal.Text(),
                QString::asprintf(", refused with exception 0x%02x", refusal.code)};
    }
}

Board::Outcome Board::HandleText(const QByteArray& command) const
{
    QString answer;
    if (command == "DEVICETYPE ?;")
        answer = "DEVICETYPE " + m_type + ";";
    else if (command == "SERIAL ?;")
        answer = "SERIAL " + m_serial + ";";
    else if (command == "VER ?;")
        answer = "VER " + Versions() + ";";
    else // percent encoding keeps bytes that cannot be printed out of the log
        Refuse("unknown text command \"" + command.toPercentEncoding(" ?;") + '"');
    return {Frame::ContentPdu(Frame::TextFunction, answer.toUtf8()), command, " answered " + answer};
}

Board::Outcome Board::HandleBinary(const Frame::BinaryCommand& command)
{
    Outcome outcome;
    if (command.word == Frame::BlockWord) {
        WriteBlock(command, outcome);
    } else if (command.word == Frame::CrcWord) {
        outcome.event = CheckCrc(command.value);
    } else {
        const auto target = m_processors.find(quint16(command.word - Frame::FinishWord));
        if (target == m_processors.end())
            Refuse(QString::asprintf("command word 0x%04x is no command and no finish for a processor here",
                                     command.word));
        outcome.event = Finish(&target->second, command.value);
        outcome.accepted = &target->second;
    }
    const char echo[] = {char(command.word & 0xFF), char(command.word >> 8)};
    outcome.pdu = Frame::ContentPdu(Frame::BinaryFunction, QByteArray(echo, sizeof echo));
    return outcome;
}

void Board::WriteBlock(const Frame::BinaryCommand& command, Outcome& outcome)
{
    const qsizetype before = m_image.size();
    const quint32 offset = command.value;
    const QByteArray& payload = command.payload;
    if (offset != 0 && offset != before)
        Refuse(QString("block at offset %1 expected, %2 came").arg(before).arg(offset));
    if (payload.isEmpty() || offset + payload.size() > MaxImage)
        Refuse(QString("1 to %1 image bytes expected, %2 came").arg(MaxImage).arg(offset + payload.size()));
    if (offset == 0)
        DropImage();
    m_image += payload;
    m_imageCrc = Frame::Crc16(payload, m_imageCrc);
    m_isCrcConfirmed = false;
    outcome.event = QString("block of %1 bytes at offset %2").arg(payload.size()).arg(offset);
    if (offset == 0 && before > 0)
        outcome.event += QString(", image started anew, %1 bytes dropped").arg(before);
    else
        outcome.block = payload.size();
}

QString Board::CheckCrc(quint32 crc)
{
    const qsizetype size = m_image.size();
    const quint16 expected = m_imageCrc;
    if (size == 0 || crc != expected) {
        DropImage();
        Refuse(QString::asprintf("CRC wrong: 0x%04x expected for %lld bytes, 0x%04x came", expected, qlonglong(size),
                                 crc));
    }
    m_isCrcConfirmed = true;
    return QString::asprintf("CRC 0x%04x of %lld image bytes right", crc, qlonglong(size));
}

QString Board::Finish(Processor* target, quint32 size)
{
    if (const qsizetype received = m_image.size(); received != size) {
        DropImage();
        Refuse(QString("image size %1 expected, %2 came").arg(received).arg(size));
    }
    if (!m_isCrcConfirmed)
        Refuse("right CRC expected before the finish, none came for this image");
    target->image = std::exchange(m_image, {});
    target->isNew = true;
    return QString("processor %1: image of %2 bytes accepted, version ").arg(target->id).arg(size)
           + VersionOf(target->image);
}

void Board::GoSilent()
{
    m_isSilent = true;
    DropImage();
}

QString Board::ComeBack()
{
    m_isSilent = false;
    for (auto& [id, processor] : m_processors) {
        if (std::exchange(processor.isNew, false))
            processor.version = VersionOf(processor.image);
    }
    return Versions();
}

void Board::ForgetNewImages()
{
    for (auto& [id, processor] : m_processors)
        processor.isNew = false;
}

QString Board::Versions() const
{
    // Clients take the only word of the answer, whatever the number of a single processor is.
    if (m_processors.size() == 1)
        return m_processors.begin()->second.version;
    QStringList words(m_processors.rbegin()->first + 1, "0.0");
    for (const auto& [id, processor] : m_processors)
        words[id] = processor.version;
    return words.join(' ');
}

void Board::DropImage()
{
    m_image.clear();
    m_imageCrc = 0xFFFF;
    m_isCrcConfirmed = false;
}

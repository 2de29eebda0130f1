#include "Fault.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace {

// Offsets in a frame of a private function: the header's length field, and the function's length word.
constexpr int LengthAt = 4;
constexpr int InnerLengthAt = 8;

QByteArray WithLength(QByteArray frame, int change)
{
    const int length = quint8(frame[LengthAt]) * 256 + quint8(frame[LengthAt + 1]) + change;
    frame[LengthAt] = char(length >> 8);
    frame[LengthAt + 1] = char(length);
    return frame;
}

QByteArray WithInnerLength(QByteArray frame, int change)
{
    // An exception answer has no length word.
    if (frame.size() > InnerLengthAt + 1)
        frame[InnerLengthAt] = char(frame[InnerLengthAt] + change);
    return frame;
}

QByteArray WithTransaction(QByteArray frame, int change)
{
    const int transaction = quint8(frame[0]) * 256 + quint8(frame[1]) + change;
    frame[0] = char(transaction >> 8);
    frame[1] = char(transaction);
    return frame;
}

QList<QByteArray> SingleBytes(const QByteArray& frame)
{
    QList<QByteArray> bytes;
    for (const char byte : frame)
        bytes.append(QByteArray(1, byte));
    return bytes;
}

} // namespace

const QList<Fault::Entry>& Fault::Table()
{
    static const QList<Entry> table{
        {"off", "switched off at the request, for good: connections are refused"},
        {"refuse", "the request is lost, and connections are refused for the restart time"},
        {"unheard", "the request is lost, the connection stays open"},
        {"silent", "carried out, no answer"},
        {"close", "carried out, the connection is closed instead of an answer"},
        {"reset", "the request is lost, the connection is reset"},
        {"late", "the answer comes late, inside the client's limit"},
        {"too-late", "the answer comes after the client's limit"},
        {"exception", "not carried out, answered with exception 0x04 (server device failure)"},
        {"transaction", "the answer carries the number of another transaction"},
        {"unit", "the answer carries another unit address"},
        {"twice", "the answer comes twice"},
        {"joined", "the answer and one to an older transaction come in one segment"},
        {"trickle", "the answer comes in segments of one byte"},
        {"length-small", "the header's length is one too small"},
        {"length-large", "the header's length is five too large"},
        {"length-zero", "the header's length is zero"},
        {"truncated", "half of the answer, then nothing"},
        {"inner-small", "the length inside the frame is two too small"},
        {"inner-large", "the length inside the frame is three too large"},
        {"garbage", "bytes that are no frame instead of the answer"},
        {"never-restarts", "from the request on, the next accepted image is the unit's end"},
        {"old-version", "from the request on, the next accepted image is not what starts"},
        {"other-type", "from the request on, the next accepted image starts as another type"},
        {"power-loss", "the unit loses power at the request and starts again; an image under way is gone"},
    };
    return table;
}

QString Fault::Name(Kind kind)
{
    return Table().at(kind).name;
}

QString Fault::Text() const
{
    return Name(kind) + '@' + (request == Always ? "always" : QString::number(request));
}

std::optional<QList<Fault>> Fault::Parse(const QString& text, QString* error)
{
    QList<Fault> faults;
    for (const QString& part : text.split(',')) {
        const QString name = part.section('@', 0, 0);
        const QString when = part.section('@', 1);
        const auto entry =
            std::find_if(Table().begin(), Table().end(), [&](const Entry& entry) { return entry.name == name; });
        if (entry == Table().end()) {
            QStringList names;
            for (const Entry& known : Table())
                names.append(known.name);
            *error = "\"" + name + "\" is no fault; there are " + names.join(", ");
            return std::nullopt;
        }
        const int request = when == "always" ? Always : when.toInt();
        if (request < 1 && when != "always") {
            *error = "\"" + part + "\" must be " + name + "@N with a request number from 1, or " + name + "@always";
            return std::nullopt;
        }
        faults.append({Kind(entry - Table().begin()), request});
    }
    return faults;
}

bool Fault::LetsBoardAct(Kind kind)
{
    static const QList<Kind> lost{Off, Refuse, Unheard, Reset, Exception, PowerLoss};
    return !lost.contains(kind);
}

bool Fault::WaitsForAnImage(Kind kind)
{
    return kind == NeverRestarts || kind == OldVersion || kind == OtherType;
}

QList<QByteArray> Fault::Segments(Kind kind, const Frame::Request& request, const QByteArray& answer)
{
    switch (kind) {
    case Off:
    case Refuse:
    case Unheard:
    case Silent:
    case Close:
    case Reset:
    case PowerLoss:
        return {};
    case Exception:
        return {Frame::Answer(request, Frame::ExceptionPdu(quint8(request.pdu.at(0)), Frame::ServerDeviceFailure))};
    case Transaction:
        return {WithTransaction(answer, 1)};
    case Unit:
        return {answer.first(6) + char(request.unit + 1) + answer.mid(7)};
    case Twice:
        return {answer, answer};
    case Joined:
        return {WithTransaction(answer, -1) + answer};
    case Trickle:
        return SingleBytes(answer);
    case LengthSmall:
        return {WithLength(answer, -1)};
    case LengthLarge:
        return {WithLength(answer, 5)};
    case LengthZero:
        return {answer.first(LengthAt) + QByteArray(2, '\0') + answer.mid(LengthAt + 2)};
    case Truncated:
        return {answer.first(answer.size() / 2)};
    case InnerSmall:
        return {WithInnerLength(answer, -2)};
    case InnerLarge:
        return {WithInnerLength(answer, 3)};
    case Garbage:
        return {QByteArray::fromHex("deadbeef c0ffee00 55aa55aa 0badf00d 12")};
    case Late:
    case TooLate:
    case NeverRestarts:
    case OldVersion:
    case OtherType:
        break;
    }
    return {answer};
}

std::optional<Fault::Kind> FaultPlan::CountRequest(bool isHeard)
{
    ++m_requests;
    for (qsizetype i = 0; i < m_faults.size(); ++i) {
        const Fault& fault = m_faults[i];
        if (fault.request != Fault::Always && fault.request != m_requests)
            continue;
        if (Fault::WaitsForAnImage(fault.kind)) {
            m_pending = i;
        } else if (isHeard) {
            m_applied.insert(i);
            return fault.kind;
        }
    }
    return std::nullopt;
}

std::optional<Fault::Kind> FaultPlan::TakePending()
{
    const auto pending = std::exchange(m_pending, std::nullopt);
    if (!pending)
        return std::nullopt;
    m_applied.insert(*pending);
    return m_faults[*pending].kind;
}

void FaultPlan::Set(const QList<Fault>& faults)
{
    m_faults = faults;
    m_applied.clear();
    m_pending.reset();
}

QList<Fault> FaultPlan::NeverApplied() const
{
    QList<Fault> neverApplied;
    for (qsizetype i = 0; i < m_faults.size(); ++i) {
        if (!m_applied.contains(i))
            neverApplied.append(m_faults[i]);
    }
    return neverApplied;
}

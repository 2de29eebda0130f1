#pragma once

#include "Frame.h"

#include <QList>
#include <QSet>

#include <optional>

/// One way for a board to misbehave, at one request or at all of them.
struct Fault
{
    enum Kind {
        Off,
        Refuse,
        Unheard,
        Silent,
        Close,
        Reset,
        Late,
        TooLate,
        Exception,
        Transaction,
        Unit,
        Twice,
        Joined,
        Trickle,
        LengthSmall,
        LengthLarge,
        LengthZero,
        Truncated,
        InnerSmall,
        InnerLarge,
        Garbage,
        NeverRestarts,
        OldVersion,
        OtherType,
        PowerLoss,
    };
    static constexpr int Always = 0;

    Kind kind = Off;
    int request = Always; ///< which request it strikes, counted from 1 over all units of the instrument

    /// What the command line and the log call a kind, and what the board does.
    struct Entry
    {
        QString name;
        QString meaning;
    };
    /// By kind.
    static const QList<Entry>& Table();
    static QString Name(Kind kind);
    /// "KIND@N" or "KIND@always", as Parse reads it.
    QString Text() const;
    /// Reads "KIND@N[,KIND@N…]", N a number from 1 or "always". Nothing, with one line in *error, for what is none.
    static std::optional<QList<Fault>> Parse(const QString& text, QString* error);

    /// Whether the board carries the request out before the fault shows.
    static bool LetsBoardAct(Kind kind);
    /// Whether it shows at the next accepted image, not at the request itself.
    static bool WaitsForAnImage(Kind kind);
    /// What is sent instead of the frame `answer`, each part in a segment of its own; empty: nothing.
    static QList<QByteArray> Segments(Kind kind, const Frame::Request& request, const QByteArray& answer);
};

/// Decides which fault strikes the request that comes now. One for all sockets of an instrument.
class FaultPlan
{
public:
    /// Counts a request. The kind that strikes it, if any; `isHeard`: there is a unit that can misbehave.
    std::optional<Fault::Kind> Strike(bool isHeard);
    /// A client sends a request once more that was struck already; it keeps its number.
    void CountRepetition() { ++m_repetitions; }
    /// The armed fault for an image that was accepted just now; it strikes one image only, unless it always does.
    std::optional<Fault::Kind> TakeArmed();
    void Set(const QList<Fault>& faults);
    /// Those that never showed so far.
    QList<Fault> Unstruck() const;

    int RequestCount() const { return m_requests; }
    int RepetitionCount() const { return m_repetitions; }

private:
    QList<Fault> m_faults;
    QSet<qsizetype> m_struck; // indexes in m_faults
    std::optional<qsizetype> m_armed;
    int m_requests = 0;
    int m_repetitions = 0;
};

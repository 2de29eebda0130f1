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
    int request = Always; ///< number of the request it applies to, counted from 1 over all units

    /// The name of a kind on the command line and in the log, and what the board does.
    struct Entry
    {
        QString name;
        QString meaning;
    };
    /// Indexed by Kind.
    static const QList<Entry>& Table();
    static QString Name(Kind kind);
    /// "KIND@N" or "KIND@always", as Parse reads it.
    QString Text() const;
    /// Reads "KIND@N[,KIND@N…]", N a number from 1 or "always". For any other text returns
    /// std::nullopt and sets *error to one line.
    static std::optional<QList<Fault>> Parse(const QString& text, QString* error);

    /// Whether the board still carries out the request.
    static bool LetsBoardAct(Kind kind);
    /// Whether the fault applies to the next accepted image, not to the request itself.
    static bool WaitsForAnImage(Kind kind);
    /// What is sent instead of the frame `answer`, one TCP segment for each element; empty: nothing is sent.
    static QList<QByteArray> Segments(Kind kind, const Frame::Request& request, const QByteArray& answer);
};

/// Counts requests and decides which fault applies to each. All sockets of an instrument share one.
class FaultPlan
{
public:
    /// Counts a request and returns the fault that applies to it, if any. `isHeard`: a unit that is not silent gets it;
    /// without one only faults that wait for an image take effect.
    std::optional<Fault::Kind> CountRequest(bool isHeard);
    /// Counts a request that the client repeats after a fault; it gets no new number.
    void CountRepetition() { ++m_repetitions; }
    /// The fault that is pending for the image accepted just now, if any; it is no longer pending afterwards.
    std::optional<Fault::Kind> TakePending();
    /// Replaces all faults; the numbers of requests go on.
    void Set(const QList<Fault>& faults);
    /// The faults that have not been applied so far.
    QList<Fault> NeverApplied() const;

    int RequestCount() const { return m_requests; }
    int RepetitionCount() const { return m_repetitions; }

private:
    QList<Fault> m_faults;
    QSet<qsizetype> m_applied; // indexes in m_faults
    std::optional<qsizetype> m_pending;
    int m_requests = 0;
    int m_repetitions = 0;
};

#include "Spelling.h"

#include "Kit.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace {

constexpr int MaxLength = 60;
/// With more differences one word is not taken for a misspelling of the other.
constexpr int MaxDistance = 2;

/// Number of single letters to add, drop or change (Levenshtein), whatever their case.
int Distance(const QString& a, const QString& b)
{
    QList<int> row(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = std::exchange(row[0], i + 1);
        for (int j = 0; j < b.size(); ++j) {
            const int changed = diagonal + (a[i].toLower() == b[j].toLower() ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
        }
    }
    return row.last();
}

} // namespace

QString Nearest(const QString& text, const QStringList& candidates)
{
    QString nearest;
    int least = MaxDistance + 1;
    for (const QString& candidate : candidates) {
        if (text.size() > MaxLength || Distance(text, candidate) >= least)
            continue;
        least = Distance(text, candidate);
        nearest = candidate;
    }
    return nearest;
}

QString WhyNotParsed(const QCommandLineParser& parser, const QString& help)
{
    // The parser lists its options in its help only.
    static const QRegularExpression Option("^  (?:-\\w, )?--(\\w+)", QRegularExpression::MultilineOption);
    QStringList known;
    for (const QRegularExpressionMatch& match : Option.globalMatch(parser.helpText()))
        known.append(match.captured(1));
    const QString nearest = Nearest(parser.unknownOptionNames().value(0), known);
    return parser.errorText() + ' '
           + (nearest.isEmpty() ? Kit::tr("See %1.").arg(help) : Kit::tr("Did you mean --%1?").arg(nearest));
}

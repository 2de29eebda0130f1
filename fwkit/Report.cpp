#include "Report.h"

#include "UsageError.h"

#include <QJsonDocument>

#include <algorithm>
#include <cstdio>

namespace {

/// `kept` stays as it is although it cannot be printed.
QString Escaped(const QString& text, QChar kept)
{
    QString out;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = i + 1 < text.size() && text[i].isHighSurrogate() && text[i + 1].isLowSurrogate();
        const bool prints = isPair ? QChar::isPrint(QChar::surrogateToUcs4(text[i], text[i + 1])) : text[i].isPrint();
        const qsizetype units = isPair ? 2 : 1;
        for (const QChar unit : text.mid(i, units))
            out +=
                prints || unit == kept ? QString(unit) : QString("\\u%1").arg(int(unit.unicode()), 4, 16, QChar('0'));
        i += units - 1;
    }
    return out;
}

} // namespace

QString Printable(const QString& text)
{
    return Escaped(text, {});
}

QString LineOf(const Finding& finding)
{
    QString line = finding.file;
    for (const QString& part : {finding.place, finding.effect + "; " + finding.remedy}) {
        if (!part.isEmpty())
            line += ": " + part;
    }
    return Printable(line);
}

QString TableOf(const QList<QStringList>& rows)
{
    QList<qsizetype> widths(rows.first().size(), 0);
    QList<QStringList> cells;
    for (const QStringList& row : rows) {
        QStringList line;
        for (const QString& cell : row)
            line.append(Printable(cell));
        for (qsizetype i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], line[i].size());
        cells.append(line);
    }
    QString text;
    for (const QStringList& row : cells) {
        QString line;
        for (qsizetype i = 0; i < row.size(); ++i)
            line += row[i].leftJustified(widths[i] + 2);
        while (line.endsWith(' '))
            line.chop(1);
        text += line + '\n';
    }
    return text;
}

QJsonObject JsonOf(const Finding& finding)
{
    return {{"kind", finding.kind},
            {"file", finding.file},
            {"place", finding.place},
            {"effect", finding.effect},
            {"remedy", finding.remedy}};
}

QString JsonText(const QJsonObject& object)
{
    return Escaped(QString::fromUtf8(QJsonDocument(object).toJson()), '\n');
}

void Print(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
}

void RequireWritten(const QString& failure)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        throw UsageError(failure);
}

void Warn(const QString& verb, const QString& line)
{
    std::fputs((Printable("fwkit " + verb + ": " + line) + '\n').toUtf8().constData(), stderr);
}

#include "CatalogueCheck.h"
#include "CatalogueText.h"
#include "Options.h"
#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonObject>

namespace {

struct Judged
{
    QString file;
    CatalogueReport report;
};

QString LinesOf(const Judged& judged)
{
    const CatalogueReport& report = judged.report;
    const QString file = Printable(judged.file);
    QString text;
    // The format of compilers' messages: editors can jump to the place.
    for (const Finding& finding : report.findings)
        text += Printable(file + ':' + finding.place + ": " + finding.effect + "; " + finding.remedy + " ["
                          + finding.kind + ']')
                + '\n';
    if (report.omitted > 0)
        text += file + ": " + Kit::tr("%1 more of these kinds").arg(report.omitted) + '\n';
    return text;
}

QString SummaryOf(const Judged& judged)
{
    const CatalogueReport& report = judged.report;
    const QString count = report.findings.isEmpty()
                              ? Kit::tr("fine")
                              : Kit::tr("findings: %1").arg(report.findings.size() + report.omitted);
    return Printable(judged.file) + ": " + count
           + Kit::tr(", devices: %1, modules: %2").arg(report.devices).arg(report.modules) + '\n';
}

QJsonObject AsJson(const QList<Judged>& all)
{
    QJsonArray catalogues;
    QJsonArray findings;
    int omitted = 0;
    for (const auto& [file, report] : all) {
        catalogues.append(QJsonObject{{"file", file}, {"devices", report.devices}, {"modules", report.modules}});
        omitted += report.omitted;
        for (const Finding& finding : report.findings)
            findings.append(QJsonObject{{"kind", finding.kind},
                                        {"file", finding.file},
                                        {"place", finding.place},
                                        {"line", finding.place.section(':', 0, 0).toInt()},
                                        {"column", finding.place.section(':', 1, 1).toInt()},
                                        {"path", finding.place.section(": ", 1)},
                                        {"effect", finding.effect},
                                        {"remedy", finding.remedy}});
    }
    return {{"catalogues", catalogues}, {"findings", findings}, {"omitted", omitted}};
}

Status Run(const QCommandLineParser& parser)
{
    const QStringList files = parser.positionalArguments();
    if (files.isEmpty())
        throw UsageError(Kit::tr("no catalogue; name at least one updater.json"));
    QList<Judged> all;
    QString text;
    Status status = Fine;
    for (const QString& file : files) {
        try {
            all.append({file, CheckCatalogue(file, ReadCatalogueText(file))});
        } catch (const UsageError& error) {
            // The remaining catalogues are still checked.
            Warn("check", error.Text());
            status = IsMisused;
            continue;
        }
        if (status == Fine && !all.last().report.findings.isEmpty())
            status = HasFindings;
        text += LinesOf(all.last()) + (parser.isSet("quiet") ? QString() : SummaryOf(all.last()));
    }
    Print(parser.isSet("json") ? JsonText(AsJson(all)) : text);
    return status;
}

} // namespace

Verb CheckVerb()
{
    return {"check", Kit::tr("Tells what the panel would make of a catalogue."), "updater.json...",
            [](QCommandLineParser& parser) { AddQuietOption(parser); }, Run};
}

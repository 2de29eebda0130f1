#include "CatalogueCheck.h"
#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

namespace {

constexpr qint64 MaxFileSize = qint64(4) * 1024 * 1024;

struct Judged
{
    QString file;
    CatalogueReport report;
};

/// Throws Misuse.
QByteArray ReadText(const QString& path)
{
    QFile file(path);
    QByteArray text;
    // As the panel opens it: line ends and places are then the same.
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        text = file.read(MaxFileSize + 1);
    if (file.error() != QFile::NoError)
        throw Misuse{{path + ": cannot be read (" + file.errorString() + "); name a readable catalogue",
                      path + ": не читается (" + file.errorString() + "); назовите каталог, который читается"}};
    if (text.size() > MaxFileSize)
        throw Misuse{{path + QString(": over %1 bytes; name a catalogue").arg(MaxFileSize),
                      path + QString(": больше %1 байт; назовите каталог").arg(MaxFileSize)}};
    return text;
}

QString AsText(const Judged& judged)
{
    const CatalogueReport& report = judged.report;
    const QString file = Printable(judged.file);
    QString text;
    // As compilers write it, so that editors lead to the place.
    for (const Finding& finding : report.findings)
        text += Printable(file + ':' + finding.place + ": " + Say(finding.effect) + "; " + Say(finding.remedy) + " ["
                          + finding.kind + ']')
                + '\n';
    if (report.omitted > 0)
        text += file + ": " + Say({"%1 more of these kinds", "и ещё %1 того же вида"}).arg(report.omitted) + '\n';
    const QString count = report.findings.isEmpty()
                              ? Say({"fine", "всё в порядке"})
                              : Say({"findings: %1", "замечаний: %1"}).arg(report.findings.size() + report.omitted);
    return text + file + ": " + count
           + Say({", devices: %1, modules: %2", ", приборов: %1, модулей: %2"}).arg(report.devices).arg(report.modules)
           + '\n';
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
                                        {"effect", Say(finding.effect)},
                                        {"remedy", Say(finding.remedy)}});
    }
    return {{"catalogues", catalogues}, {"findings", findings}, {"omitted", omitted}};
}

Status Run(const QCommandLineParser& parser)
{
    QList<Judged> all;
    const QStringList files = parser.positionalArguments();
    if (files.isEmpty())
        throw Misuse{
            {"no catalogue; name at least one updater.json", "нет каталога; назовите хотя бы один updater.json"}};
    QString text;
    bool isFine = true;
    for (const QString& file : files) {
        all.append({file, CheckCatalogue(file, ReadText(file))});
        text += AsText(all.last());
        isFine = isFine && all.last().report.findings.isEmpty();
    }
    Print(parser.isSet("json") ? JsonText(AsJson(all)) : text);
    return isFine ? Fine : HasFindings;
}

} // namespace

Verb CheckVerb()
{
    return {"check",
            {"Tells what the panel would make of a catalogue.", "Говорит, что панель сделает из каталога."},
            {"updater.json...", "updater.json..."},
            [](QCommandLineParser& parser) {
                parser.addOption({"json", Say({"Write one JSON object.", "Вывести один объект JSON."})});
            },
            Run};
}

#include "ArchiveFindings.h"
#include "ArchiveList.h"
#include "JudgementText.h"
#include "Options.h"
#include "Progress.h"
#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QJsonArray>

#include <algorithm>

namespace {

const char* Verdict(const ListedFile& file)
{
    return file.certificate ? VerdictOf(*file.certificate) : QT_TRANSLATE_NOOP("Kit", "damaged");
}

QString Names(const QList<ListedFile>& files)
{
    QString text;
    for (const ListedFile& file : files)
        text += Printable(file.path) + '\n';
    return text;
}

QString AsText(const QList<ListedFile>& files, const QString& archive)
{
    QList<QStringList> rows{{Kit::tr("FILE"), Kit::tr("SIZE"), Kit::tr("VERSION"), Kit::tr("CERTIFICATE")}};
    for (const ListedFile& file : files)
        rows.append({file.path, QString::number(file.size), file.version.isEmpty() ? "-" : VersionText(file.version),
                     Kit::tr(Verdict(file))});
    const auto matching = std::count_if(
        files.begin(), files.end(), [](const ListedFile& file) { return file.certificate == Certificate::Matches; });
    return TableOf(rows) + '\n'
           + Kit::tr("%1: files with a certificate that matches: %2 of %3.\n")
                 .arg(Printable(archive), QString::number(matching), QString::number(files.size()));
}

QJsonObject AsJson(const QList<ListedFile>& files, const QString& archive)
{
    QJsonArray list;
    for (const ListedFile& file : files)
        list.append(QJsonObject{
            {"name", file.path}, {"size", file.size}, {"version", file.version}, {"certificate", Verdict(file)}});
    return {{"archive", archive}, {"files", list}};
}

Status Run(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().size() != 1)
        throw UsageError(Kit::tr("name one archive"));
    const QString archive = parser.positionalArguments().first();
    QList<ListedFile> files;
    {
        Progress progress(!parser.isSet("quiet"));
        files = ListArchive(archive, progress);
    }
    if (parser.isSet("json"))
        Print(JsonText(AsJson(files, archive)));
    else
        Print(parser.isSet("quiet") ? Names(files) : AsText(files, archive));
    return Fine;
}

} // namespace

Verb ListVerb()
{
    return {"list", Kit::tr("Shows the files of an archive without a catalogue: size, version, certificate."),
            "FILE.zip",
            [](QCommandLineParser& parser) {
                parser.addOption({{"q", "quiet"}, Kit::tr("Writes the names alone.")});
            },
            Run};
}

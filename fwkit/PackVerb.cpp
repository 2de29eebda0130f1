#include "JudgementText.h"
#include "Options.h"
#include "Pack.h"
#include "Progress.h"
#include "Report.h"
#include "Selection.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QJsonArray>

namespace {

/// What is no finding but worth to know before the archive is made.
QList<Finding> NotesBefore(const Selection& selection, const PackOrder& order)
{
    QList<Finding> notes;
    if (selection.note)
        notes.append(*selection.note);
    if (QFileInfo(order.output).absolutePath().contains("firmware"))
        notes.append({"firmware-in-folder",
                      order.output,
                      {},
                      Kit::tr("The folder's name contains \"firmware\": from a folder with such a name the panel does "
                              "not make its extraction folder"),
                      Kit::tr("copy the archive to a folder with another name")});
    return notes;
}

QJsonObject AsJson(const PackResult& result, const PackOrder& order)
{
    Judgement judgement = result.judgement;
    judgement.findings = result.findings;
    QJsonObject object = JsonOf(judgement, order.output);
    QJsonArray leftOut;
    for (const InputFiles::LeftOut& left : result.leftOut)
        leftOut.append(JsonOf(left));
    object.insert("leftOut", leftOut);
    object.insert("files", result.findings.isEmpty() ? result.fileCount : 0);
    return object;
}

void WarnOf(const PackResult& result, bool isQuiet)
{
    for (const InputFiles::LeftOut& left : result.leftOut) {
        if (!isQuiet)
            Warn("pack", LineOf(left));
    }
    for (const Finding& finding : result.findings)
        Warn("pack", LineOf(finding));
}

QString AsText(const PackResult& result, const PackOrder& order)
{
    return TextOf(result.judgement, order.output)
           + Kit::tr("%1: files with their certificates: %2.\n")
                 .arg(Printable(order.output), QString::number(result.fileCount))
           + ServedLines(result.judgement, order.output);
}

Status Run(const QCommandLineParser& parser)
{
    Require(parser, {"catalogue", "device", "output"}, "FILE|FOLDER...");
    const bool isJson = parser.isSet("json");
    const bool isQuiet = parser.isSet("quiet");
    const Selection selection = SelectDevices(parser.value("catalogue"), parser.value("device"));
    const PackOrder order{selection, parser.positionalArguments(), parser.value("output"), parser.isSet("force")};
    const QList<Finding> notes = NotesBefore(selection, order);
    for (const Finding& note : notes) {
        if (!isJson && !isQuiet)
            Warn("pack", Kit::tr("note: %1").arg(LineOf(note)));
    }
    PackResult result;
    {
        Progress progress(!isQuiet);
        result = Pack(order, progress);
    }
    const bool isPacked = result.findings.isEmpty();
    if (!isJson)
        WarnOf(result, isQuiet);
    else
        result.judgement.notes = notes + result.judgement.notes;
    if (isJson)
        Print(JsonText(AsJson(result, order)));
    else if (isPacked && !isQuiet)
        Print(AsText(result, order));
    if (isPacked)
        RequireWritten(Kit::tr("%1: the archive is written; only the report cannot be, to standard output: make room "
                               "where that goes")
                           .arg(order.output));
    return isPacked ? Fine : HasFindings;
}

} // namespace

Verb PackVerb()
{
    return {
        "pack",
        Kit::tr(
            "Makes an archive that the instrument's panel takes without a box. Refuses, and writes nothing, when there "
            "is none."),
        "FILE|FOLDER...",
        [](QCommandLineParser& parser) {
            AddCatalogueOption(parser);
            AddDeviceOption(parser);
            AddQuietOption(parser);
            parser.addOption({{"o", "output"}, Kit::tr("The archive to make."), "FILE.zip"});
            parser.addOption({{"f", "force"}, Kit::tr("Replaces an archive that is there already.")});
        },
        Run};
}

#include "JudgementText.h"
#include "Options.h"
#include "Progress.h"
#include "Report.h"
#include "Selection.h"
#include "Verb.h"

#include <QCommandLineParser>

namespace {

Status Run(const QCommandLineParser& parser)
{
    Require(parser, {"catalogue"}, "FILE.zip");
    if (parser.positionalArguments().size() != 1)
        throw UsageError(Kit::tr("name one archive"));
    const bool isJson = parser.isSet("json");
    const bool isQuiet = parser.isSet("quiet");
    const Selection selection = SelectDevices(parser.value("catalogue"), parser.value("device"));
    if (selection.note && !isJson && !isQuiet)
        Warn("verify", Kit::tr("note: %1").arg(LineOf(*selection.note)));
    const QString archive = parser.positionalArguments().first();
    Judgement judgement;
    {
        Progress progress(!isQuiet);
        judgement = JudgeArchive(archive, archive, selection, progress);
    }
    if (selection.note && isJson)
        judgement.notes.prepend(*selection.note);
    if (isJson)
        Print(JsonText(JsonOf(judgement, archive)));
    else
        Print(isQuiet ? LinesOf(judgement.findings) : TextOf(judgement, archive) + ServedLines(judgement, archive));
    return judgement.findings.isEmpty() ? Fine : HasFindings;
}

} // namespace

Verb VerifyVerb()
{
    return {
        "verify",
        Kit::tr("Shows what the panel would do with an archive: the file that each module would take, and every box."),
        "FILE.zip",
        [](QCommandLineParser& parser) {
            AddCatalogueOption(parser);
            AddDeviceOption(parser);
            AddQuietOption(parser);
        },
        Run};
}

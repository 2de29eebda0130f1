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
    const Selection selection = SelectDevices(Required(parser, "catalogue"), parser.value("device"));
    if (parser.positionalArguments().size() != 1)
        throw UsageError(Kit::tr("name one archive"));
    const QString archive = parser.positionalArguments().first();
    Judgement judgement;
    {
        Progress progress;
        judgement = JudgeArchive(archive, archive, selection.devices, progress);
    }
    Print(parser.isSet("json") ? JsonText(JsonOf(judgement, archive)) : TextOf(judgement, archive));
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
            AddJsonOption(parser);
        },
        Run};
}

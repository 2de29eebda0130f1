#include "JudgementText.h"
#include "Options.h"
#include "Pack.h"
#include "Progress.h"
#include "Report.h"
#include "Selection.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

PackOrder ReadOrder(const QCommandLineParser& parser, const Selection& selection)
{
    const PackOrder order{selection.devices, parser.positionalArguments(), Required(parser, "output"),
                          parser.isSet("force")};
    if (order.inputs.isEmpty())
        throw UsageError(Kit::tr("name the files or folders to pack"));
    if (QFileInfo(order.output).absolutePath().contains("firmware"))
        TellOnStderr(
            "pack",
            Kit::tr("note: the folder's name contains \"firmware\"; from a folder with such a name the panel does "
                    "not make its extraction folder"));
    return order;
}

Status Run(const QCommandLineParser& parser)
{
    const Selection selection = SelectDevices(Required(parser, "catalogue"), Required(parser, "device"));
    const PackOrder order = ReadOrder(parser, selection);
    PackResult result;
    {
        Progress progress;
        result = Pack(order, progress);
    }
    for (const InputFiles::LeftOut& left : result.leftOut)
        TellOnStderr("pack", Printable(left.path) + ": " + Kit::tr("left out") + " (" + Reason(left.why) + ")");
    for (const Finding& finding : result.findings)
        TellOnStderr("pack", LineOf(finding));
    if (!result.findings.isEmpty())
        return HasFindings;
    Print(TextOf(result.judgement, order.output)
          + Kit::tr("%1: %2 files with their certificates.\n")
                .arg(Printable(order.output), QString::number(result.fileCount)));
    return Fine;
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
            parser.addOption({"output", Kit::tr("The archive to make."), "FILE.zip"});
            parser.addOption({"force", Kit::tr("Replaces an archive that is there already.")});
        },
        Run};
}

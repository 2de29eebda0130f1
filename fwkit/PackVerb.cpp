#include "JudgementText.h"
#include "Options.h"
#include "Pack.h"
#include "Progress.h"
#include "Report.h"
#include "Selection.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <cstdio>

namespace {

void TellOnStderr(const QString& line)
{
    std::fputs(("fwkit pack: " + line + '\n').toUtf8().constData(), stderr);
}

PackOrder ReadOrder(const QCommandLineParser& parser, const Selection& selection)
{
    const PackOrder order{selection.devices, parser.positionalArguments(), Required(parser, "output")};
    if (order.inputs.isEmpty())
        throw Misuse{{"name the files or folders to pack", "укажите файлы или папки для упаковки"}};
    if (QFileInfo(order.output).absolutePath().contains("firmware"))
        TellOnStderr(
            Say({"note: the folder's name contains \"firmware\"; from a folder with such a name the panel does "
                 "not make its extraction folder",
                 "замечание: в имени папки есть «firmware»; для архива из такой папки панель не создаёт папку "
                 "распаковки"}));
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
        TellOnStderr(Printable(left.path) + ": " + Say({"left out", "пропущен"}) + " (" + Say(Reason(left.why)) + ")");
    for (const Finding& finding : result.findings)
        TellOnStderr(LineOf(finding));
    if (!result.findings.isEmpty())
        return HasFindings;
    Print(TextOf(result.judgement, order.output)
          + Say(Filled("%1: %2 files with their certificates.\n", "%1: файлов с сертификатами: %2.\n",
                       Printable(order.output), QString::number(result.fileCount))));
    return Fine;
}

} // namespace

Verb PackVerb()
{
    return {
        "pack",
        {"Makes an archive that the instrument's panel takes without a box. Refuses, and writes nothing, when there "
         "is none.",
         "Собирает архив, который панель прибора принимает без единого окна. Если такой невозможен, отказывается и "
         "ничего не пишет."},
        {"FILE|FOLDER...", "FILE|FOLDER..."},
        [](QCommandLineParser& parser) {
            AddCatalogueOption(parser);
            AddDeviceOption(parser);
            parser.addOption({"output", Say({"The archive to make.", "Архив, который будет собран."}), "FILE.zip"});
        },
        Run};
}

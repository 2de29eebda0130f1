#include "Options.h"

#include "UsageError.h"

#include <QCommandLineParser>

void AddCatalogueOption(QCommandLineParser& parser)
{
    parser.addOption({{"c", "catalogue"}, Kit::tr("The device catalogue."), "updater.json"});
}

void AddDeviceOption(QCommandLineParser& parser)
{
    parser.addOption({{"d", "device"}, Kit::tr("The instrument's IdDev in the catalogue."), "ID"});
}

void AddJsonOption(QCommandLineParser& parser)
{
    parser.addOption({{"j", "json"}, Kit::tr("Writes JSON for a script.")});
}

void AddQuietOption(QCommandLineParser& parser)
{
    parser.addOption({{"q", "quiet"}, Kit::tr("Writes findings and errors only.")});
}

void Require(const QCommandLineParser& parser, const QStringList& options, const QString& arguments)
{
    QStringList missing;
    for (const QString& option : options) {
        if (parser.value(option).isEmpty())
            missing.append("--" + option);
    }
    if (parser.positionalArguments().isEmpty())
        missing.append(arguments);
    if (!missing.isEmpty())
        throw UsageError(Kit::tr("missing: %1; see --help").arg(missing.join(", ")));
}

void RefuseRepeated(const QCommandLineParser& parser)
{
    for (const QString& name : parser.optionNames()) {
        if (parser.values(name).size() > 1)
            throw UsageError(
                Kit::tr("%1 is given more than once; give it once").arg((name.size() == 1 ? "-" : "--") + name));
    }
}

#include "Options.h"

#include "UsageError.h"

#include <QCommandLineParser>

void AddCatalogueOption(QCommandLineParser& parser)
{
    parser.addOption({"catalogue", Kit::tr("The device catalogue."), "updater.json"});
}

void AddDeviceOption(QCommandLineParser& parser)
{
    parser.addOption({"device", Kit::tr("The instrument's IdDev in the catalogue."), "ID"});
}

void AddJsonOption(QCommandLineParser& parser)
{
    parser.addOption({"json", Kit::tr("Writes JSON for a script.")});
}

QString Required(const QCommandLineParser& parser, const QString& option)
{
    const QString value = parser.value(option);
    if (value.isEmpty())
        throw UsageError(Kit::tr("--%1 is missing; it must be given").arg(option));
    return value;
}

#include "Options.h"

#include "Misuse.h"

#include <QCommandLineParser>

void AddCatalogueOption(QCommandLineParser& parser)
{
    parser.addOption({"catalogue", Say({"The device catalogue.", "Каталог приборов."}), "updater.json"});
}

void AddDeviceOption(QCommandLineParser& parser)
{
    parser.addOption({"device", Say({"The instrument's IdDev in the catalogue.", "IdDev прибора в каталоге."}), "ID"});
}

void AddJsonOption(QCommandLineParser& parser)
{
    parser.addOption({"json", Say({"Writes JSON for a script.", "Пишет JSON для сценариев."})});
}

QString Required(const QCommandLineParser& parser, const QString& option)
{
    const QString value = parser.value(option);
    if (value.isEmpty())
        throw Misuse{Filled("--%1 is missing; it must be given", "нет --%1; этот ключ обязателен", option)};
    return value;
}

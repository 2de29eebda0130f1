#include "Options.h"
#include "Report.h"
#include "Selection.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QJsonArray>

namespace {

QStringList Modules(const TDeviceRecord& device)
{
    QStringList names;
    for (int b = 0; b < device.BoardCount; ++b)
        names.append(device.Boards.at(b).Name);
    return names;
}

QString Numbers(const Selection& selection)
{
    QStringList numbers;
    for (const TDeviceRecord* device : selection.devices)
        numbers.append(QString::number(device->IdDev));
    numbers.removeDuplicates();
    return numbers.join('\n') + '\n';
}

QString AsText(const Selection& selection)
{
    QList<QStringList> rows{{"IdDev", Kit::tr("NAME"), Kit::tr("MODULES")}};
    for (const TDeviceRecord* device : selection.devices)
        rows.append({QString::number(device->IdDev), device->Name, Modules(*device).join(", ")});
    return TableOf(rows);
}

QJsonObject AsJson(const Selection& selection, const QString& catalogue)
{
    QJsonArray devices;
    for (const TDeviceRecord* device : selection.devices)
        devices.append(QJsonObject{
            {"id", device->IdDev}, {"name", device->Name}, {"modules", QJsonArray::fromStringList(Modules(*device))}});
    return {{"catalogue", catalogue}, {"devices", devices}};
}

Status Run(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().size() != 1)
        throw UsageError(Kit::tr("name one catalogue"));
    const QString catalogue = parser.positionalArguments().first();
    const Selection selection = SelectDevices(catalogue, {});
    if (parser.isSet("json"))
        Print(JsonText(AsJson(selection, catalogue)));
    else
        Print(parser.isSet("quiet") ? Numbers(selection) : AsText(selection));
    return Fine;
}

} // namespace

Verb DevicesVerb()
{
    return {"devices", Kit::tr("Shows the instruments of a catalogue, by the IdDev that --device takes."),
            "updater.json",
            [](QCommandLineParser& parser) {
                parser.addOption({{"q", "quiet"}, Kit::tr("Writes the numbers alone.")});
            },
            Run};
}

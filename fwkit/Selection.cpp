#include "Selection.h"

#include "CatalogueCheck.h"
#include "CatalogueText.h"
#include "UsageError.h"

#include <QStringList>

namespace {

std::optional<Finding> AboutCatalogue(const QString& path, const QByteArray& text)
{
    const CatalogueReport report = CheckCatalogue(path, text);
    if (report.findings.isEmpty())
        return std::nullopt;
    return Finding{
        "catalogue-findings",
        path,
        {},
        Kit::tr("The catalogue itself has findings: %1").arg(QString::number(report.findings.size() + report.omitted)),
        Kit::tr("see what \"fwkit check %1\" says").arg(path)};
}

} // namespace

Selection SelectDevices(const QString& path, const QString& id)
{
    const QByteArray text = ReadCatalogueText(path);
    const auto config = std::make_shared<TAppConfigStruct>();
    config->LoadFromFile(path);
    Selection selection{config, {}, AboutCatalogue(path, text)};
    QStringList known;
    for (int d = 0; d < config->DeviceCount; ++d) {
        const QString number = QString::number(config->Devices[d].IdDev);
        known.append(number + " (" + config->Devices[d].Name + ')');
        if (id.isEmpty() || id == number)
            selection.devices.append(&config->Devices[d]);
    }
    if (known.isEmpty())
        throw UsageError(Kit::tr("%1: the panel reads no device from it; see what \"fwkit check %1\" says").arg(path));
    if (selection.devices.isEmpty())
        throw UsageError(
            Kit::tr("%1: no device has IdDev %2; choose one of %3 with --device").arg(path, id, known.join(", ")));
    return selection;
}

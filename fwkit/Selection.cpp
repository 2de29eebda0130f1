#include "Selection.h"

#include "Misuse.h"

#include <QFile>
#include <QStringList>

Selection SelectDevices(const QString& path, const QString& id)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Misuse{Filled("%1: cannot be read (%2); name the catalogue with --catalogue",
                            "%1: не читается (%2); укажите каталог ключом --catalogue", path, file.errorString())};
    const auto config = std::make_shared<TAppConfigStruct>();
    config->LoadFromFile(path);
    Selection selection{config, {}};
    QStringList known;
    for (int d = 0; d < config->DeviceCount; ++d) {
        const QString number = QString::number(config->Devices[d].IdDev);
        known.append(number);
        if (id.isEmpty() || id == number)
            selection.devices.append(&config->Devices[d]);
    }
    if (known.isEmpty())
        throw Misuse{Filled("%1: the panel reads no device from it; see what \"fwkit check %1\" says",
                            "%1: панель не находит в нём ни одного прибора; посмотрите, что скажет «fwkit check %1»",
                            path)};
    if (selection.devices.isEmpty())
        throw Misuse{Filled("%1: no device has IdDev %2; choose one of %3 with --device",
                            "%1: нет прибора с IdDev %2; выберите ключом --device один из %3", path, id,
                            known.join(", "))};
    return selection;
}

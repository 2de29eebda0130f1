#pragma once

#include "AppConfig.h"

#include <QList>

#include <memory>

/// The devices that a verb works for.
struct Selection
{
    std::shared_ptr<const TAppConfigStruct> config;
    QList<const TDeviceRecord*> devices; ///< owned by `config`; at least one
};

/// Reads the catalogue as the panel does. `id` is an IdDev, which several devices may have in common; every device is
/// meant when it is empty. Throws UsageError.
Selection SelectDevices(const QString& path, const QString& id);

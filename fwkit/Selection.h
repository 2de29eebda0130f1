#pragma once

#include "AppConfig.h"
#include "Finding.h"

#include <QList>

#include <memory>
#include <optional>

/// The devices that a verb works for.
struct Selection
{
    std::shared_ptr<const TAppConfigStruct> config;
    QList<const TDeviceRecord*> devices; ///< owned by `config`; at least one
    std::optional<Finding> note;         ///< when "fwkit check" has something to say of the catalogue
};

/// Reads the catalogue as the panel does. `id` is an IdDev, which several devices may have in common; every device is
/// meant when it is empty. Throws UsageError.
Selection SelectDevices(const QString& path, const QString& id);

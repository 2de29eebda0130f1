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
    std::optional<Finding> note;         ///< set when "fwkit check" has findings for the catalogue
};

/// Reads the catalogue as the panel does and selects the devices with the IdDev `id` (there may be several), or all
/// when `id` is empty. Throws UsageError when the catalogue cannot be read or has no such device.
Selection SelectDevices(const QString& path, const QString& id);

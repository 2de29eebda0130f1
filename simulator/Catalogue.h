#pragma once

#include "AppConfig.h"

/// The device to simulate.
struct SimulatedDevice
{
    TDeviceRecord device;
    QString note; ///< one line for the log when "fwkit check" has findings for the catalogue; else empty
};

/// The first device with the IdDev `id`, or the catalogue's first device when `id` is empty. Throws UsageError when the
/// catalogue cannot be read, or the device has no firmware modules or an address or number out of range.
SimulatedDevice LoadDevice(const QString& path, const QString& id);

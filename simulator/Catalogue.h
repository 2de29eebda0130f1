#pragma once

#include "AppConfig.h"

/// What is played, and what is to be said of the catalogue that it comes from.
struct Played
{
    TDeviceRecord device;
    QString note; ///< one line; empty when "fwkit check" has nothing to say
};

/// The device with that IdDev, the catalogue's first for an empty `id`, checked for all a simulation needs of it.
/// Throws UsageError.
Played LoadDevice(const QString& path, const QString& id);

#pragma once

#include "AppConfig.h"

/// Thrown for options or a catalogue that cannot be used: one line that names place and remedy.
struct BadInput
{
    QString why;
};

/// Device `index`, counted from 0, of the catalogue file, checked for all a simulation needs of it.
/// Throws BadInput.
TDeviceRecord LoadDevice(const QString& path, int index);

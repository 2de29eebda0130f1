#pragma once

#include "Selection.h"

#include <optional>

/// Why no module takes a file of an archive, and what to do.
struct Unused
{
    const char* kind; ///< of the finding
    QString effect;
    QString remedy;
};

/// std::nullopt when a module of the selected devices would take `entry` with a matching certificate.
std::optional<Unused> WhyUnused(const QString& entry, const Selection& selection);

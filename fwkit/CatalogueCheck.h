#pragma once

#include "Finding.h"

#include <QByteArray>
#include <QList>

/// What is wrong with one catalogue.
struct CatalogueReport
{
    /// At most this many findings of each kind.
    static constexpr int MaxOfKind = 20;

    QList<Finding> findings; ///< in the order of the text
    int omitted = 0;         ///< beyond MaxOfKind
    int devices = 0;         ///< that the panel would read
    int modules = 0;
};

/// Whether it is four numbers 0..255 without leading zeros.
bool IsIPv4(const QString& ip);

/// Judges the text of a catalogue, read as the panel reads it; `file` is its name in the findings. Nothing in `text`
/// is a failure: whatever it holds, the report says so.
CatalogueReport CheckCatalogue(const QString& file, const QByteArray& text);

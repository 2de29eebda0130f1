#pragma once

#include "Finding.h"

#include <QByteArray>
#include <QList>

/// What is wrong with one catalogue.
struct CatalogueReport
{
    /// At most this many findings of each kind.
    static constexpr int MaxOfKind = 20;

    QList<Finding> findings; ///< in the order of their places in the text
    int omitted = 0;         ///< number of findings beyond MaxOfKind
    int devices = 0;         ///< that the panel would read
    int modules = 0;
};

/// Whether `ip` is four numbers 0..255 without leading zeros, separated by points.
bool IsIPv4(const QString& ip);

/// Checks the text of a catalogue as ReadCatalogueText returns it; `file` is its name in the findings. Does not throw:
/// a text that is no JSON is a finding too.
CatalogueReport CheckCatalogue(const QString& file, const QByteArray& text);

#pragma once

#include <QByteArray>
#include <QString>

/// The text of a catalogue as CheckCatalogue takes it. Throws UsageError when it cannot be read, or is too large to be
/// one.
QByteArray ReadCatalogueText(const QString& path);

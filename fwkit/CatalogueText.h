#pragma once

#include <QByteArray>
#include <QString>

/// The text of the catalogue `path`, with line ends as CheckCatalogue expects them. Throws UsageError when it cannot be
/// read or is over 4 MiB.
QByteArray ReadCatalogueText(const QString& path);

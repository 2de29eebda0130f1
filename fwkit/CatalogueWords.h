#pragma once

#include "Finding.h"

#include <QList>

/// The finding of `kind`, its texts filled with `args` (%1, %2, ... in each); file and place are left empty. An
/// unknown kind stops the program.
Finding CatalogueFinding(const QString& kind, const QList<Words>& args);
/// Every kind there is.
QStringList CatalogueKinds();

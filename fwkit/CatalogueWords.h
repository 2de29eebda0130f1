#pragma once

#include "Finding.h"

#include <QStringList>

/// The finding of `kind` with `args` inserted in its effect and `remedyArg` in its remedy; file and place are empty.
/// Aborts the program for an unknown kind.
Finding CatalogueFinding(const QString& kind, const QStringList& args, const QString& remedyArg);
/// Every kind that CatalogueFinding knows.
QStringList CatalogueKinds();

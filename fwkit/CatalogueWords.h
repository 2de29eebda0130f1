#pragma once

#include "Finding.h"

#include <QStringList>

/// The finding of `kind`, its effect filled with `args`, its remedy with `remedyArg`; file and place are left empty.
/// An unknown kind stops the program.
Finding CatalogueFinding(const QString& kind, const QStringList& args, const QString& remedyArg);
/// Every kind there is.
QStringList CatalogueKinds();

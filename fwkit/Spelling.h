#pragma once

#include <QStringList>

/// The one of `candidates` that differs least from `text`, upper and lower case aside; empty when all of them differ in
/// more than two letters.
QString Nearest(const QString& text, const QStringList& candidates);

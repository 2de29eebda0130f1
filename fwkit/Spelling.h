#pragma once

#include <QStringList>

/// The one of `candidates` that `text` is most likely a misspelling of; empty when all are too far from it.
QString Nearest(const QString& text, const QStringList& candidates);

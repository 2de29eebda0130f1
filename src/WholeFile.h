#pragma once

#include <QByteArray>

class QSaveFile;

/// Writes `content` into the opened `file` and gives it its name. False leaves what had that name before: the
/// toolkit's save file alone commits what a short write left behind without a word.
bool CommitWhole(QSaveFile& file, const QByteArray& content);

#pragma once

#include <QByteArray>

class QSaveFile;

/// Writes `content` into the opened `file` and gives it its name. False leaves what had that name before, and the
/// reason as the error of `file`: QSaveFile
/// alone commits what a short write left behind without a word.
bool CommitWhole(QSaveFile& file, const QByteArray& content);

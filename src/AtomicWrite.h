#pragma once

#include <QByteArray>

class QSaveFile;

/// Writes `content` into the opened `file` and commits it. False leaves the file that had the name before. QSaveFile
/// alone reports no error when a short write was committed.
bool WriteAndCommit(QSaveFile& file, const QByteArray& content);

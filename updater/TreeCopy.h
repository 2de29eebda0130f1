#pragma once

#include <QString>

#include <functional>

/// Called with one line for each folder that was made or was there, and each file that was copied.
using CopyLog = std::function<void(const QString& line)>;

/// Copies the files and folders of `src` over those of `dst` (absolute paths; `dst` exists). Hidden entries and folders
/// that IsNeverCopied names are left out at every level, also `src` itself. Of such a named folder below `src` an empty
/// target folder is made.
/// False at the first entry that fails; what was copied before it stays.
/// Each file is replaced in one step: after a power cut or on a full disk its name holds the old file or the new one,
/// also while a program runs from it. Hidden temporary files that an interrupted copy left in a folder of `dst` are
/// removed.
bool CopyTree(const QString& src, const QString& dst, const CopyLog& log);

#pragma once

#include <QString>

#include <functional>

/// Takes one line for each folder and file that is in its place.
using CopyLog = std::function<void(const QString& line)>;

/// Copies the files and folders of `src` over those of `dst` (absolute paths; `dst` exists). Hidden entries and folders
/// that IsNeverCopied names are left out at every level; their target folder is made all the same, and stays empty.
/// False at the first entry that fails; what was copied before it stays.
/// Each file is replaced in one step: after a power cut or on a full disk its name holds the old file or the new one,
/// also while a program runs from it. What an interrupted copy left hidden in a folder of `dst` is removed.
bool CopyTree(const QString& src, const QString& dst, const CopyLog& log);

#pragma once

#include <QString>

#include <functional>

/// Called with one line for each folder that was made or was there, and each file that was copied.
using CopyLog = std::function<void(const QString& line)>;

/// Copies the files and folders of `src` over those of `dst` (absolute paths; `dst` exists). Hidden entries are left
/// out at every level. So are folders that IsNeverCopied names: for one below `src` the target folder is made if it is
/// missing, and not filled; if `src` has such a name, nothing is copied and the result is true. Nothing else in `dst`
/// is removed. Links are followed; one that leads back into the copy is left out in the same way. False when `src` does
/// not exist, or at the first entry that fails; what was copied before it stays. Each file is replaced in one step:
/// after a power cut or on a full disk its name holds the old file or the new one, also while a program runs from it.
/// Hidden temporary files that an interrupted copy left are removed from each target folder that this copy fills.
bool CopyTree(const QString& src, const QString& dst, const CopyLog& log);

/// Removes the temporary files that interrupted copies left in `folder` and below, silently also where it cannot.
/// Links are not followed. No copy may be running.
void RemoveCopyLeftovers(const QString& folder);

#pragma once

#include "FirmwareArchive.h"
#include "FirmwareFiles.h"

#include <functional>

/// How the rows of the module table get their files out of an archive, without the table.

/// Returns when the operator has closed the box.
using ShowBox = std::function<void(const Box& box)>;

/// Whose rows the files are for: the panel's table, or a report on what the panel would do. In the loop of a box
/// anything may happen, so everything is asked anew each time.
struct ArchiveRows
{
    std::function<int()> rowCount;
    std::function<const TDeviceRecord&()> device; ///< its board i is row i
    ShowBox show;
    /// Text of `folder`/`name`.ver, or UnknownVersion after a box that tells why.
    std::function<QString(const QString& folder, const QString& name)> programVersion;
    /// A later file of the same row takes the place of an earlier one.
    std::function<void(int row, const QString& version, const QString& path, const QByteArray& sha256)> take;
};

/// Offers every entry to every row. `folder` is where the archive was extracted; each file is read once for
/// `digests`, and judged once for every row: a wrong certificate is told even where no row wants the file.
void WalkArchive(const QList<ArchiveEntry>& entries, const QString& folder, DigestCache& digests,
                 const ArchiveRows& rows);

/// Whether an entry is looked at: a file without ".sha256" in its path.
bool IsJudged(const ArchiveEntry& entry);

/// Whether `path` and its certificate agree; if not, a box tells why.
bool HasItsCertificate(const QString& path, DigestCache& digests, const ShowBox& show);

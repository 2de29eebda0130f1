#pragma once

#include "FirmwareArchive.h"
#include "FirmwareFiles.h"

#include <optional>

/// What an archive does to the rows of the module table: decisions only, no widget.

/// Whether a file and its certificate agree, and what the operator is shown of them.
struct CertificateCheck
{
    bool isValid = false;
    QList<Box> boxes; ///< in this order; one that says the file cannot be opened does not decide
};
/// `path` is read unless it is in `digests`, and is there afterwards.
CertificateCheck CheckFile(const QString& path, DigestCache& digests);

/// One thing that happens to a row.
struct ArchiveStep
{
    int row;
    std::optional<Box> box; ///< to be shown; without one the row takes `entry`
    QString entry = {};     ///< path below the extraction folder
};

/// What happens to the rows of `device` (row i is its board i) for an archive that was extracted into `folder`, in
/// order: each row is offered every entry. Every file is judged for every row, so a wrong certificate has a box for
/// each row; a later file of a row takes the place of an earlier one.
QList<ArchiveStep> AssignEntries(const QList<ArchiveEntry>& entries, const QString& folder, const TDeviceRecord& device,
                                 DigestCache& digests);

/// Whether an entry is looked at: a file without ".sha256" in its path.
bool IsJudged(const ArchiveEntry& entry);

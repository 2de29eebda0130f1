#pragma once

#include "FirmwareArchive.h"
#include "FirmwareFiles.h"

#include <optional>

/// What an archive does to the rows of the module table: decisions only, no widget.

/// Valid: the certificate equals the file's digest. A file that cannot be opened has the empty digest, so an empty
/// certificate makes it valid, although an alert is shown.
struct CertificateCheck
{
    bool isValid = false;
    QList<Alert> alerts; ///< in this order
};
/// `path` is read unless it is in `digests`, and is there afterwards.
CertificateCheck CheckFile(const QString& path, DigestCache& digests);

/// One thing that happens to a row.
struct ArchiveStep
{
    std::optional<Alert> alert; ///< to be shown; without one the row takes `entry`
    QString entry = {};         ///< path below the extraction folder
};

/// The steps for row `row` of `device` (its board `row`) with an archive that was extracted into `folder`: for each
/// entry in the archive's order its alerts, then the taking of it, if it is taken. Every file is judged for every row,
/// also one that fits none, so a wrong certificate has an alert for each row; a later file takes the place of an
/// earlier one. One row at a time, because an archive may have 65,535 entries without certificates, and all rows'
/// alerts at once would fill a panel's memory.
QList<ArchiveStep> AssignEntries(const QList<ArchiveEntry>& entries, const QString& folder, const TDeviceRecord& device,
                                 int row, DigestCache& digests);

/// Whether an entry is looked at: a file without ".sha256" in its path.
bool IsJudged(const ArchiveEntry& entry);

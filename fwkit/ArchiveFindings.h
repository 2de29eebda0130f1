#pragma once

#include "ArchiveAssignment.h"
#include "ArchiveJudge.h"

#include <QSet>

struct TakenFile
{
    QString entry;
    QString version;
    bool isEmpty = false;
};

/// The files of an archive that one device's modules take.
struct DeviceAssignment
{
    const TDeviceRecord* device;   ///< not owned; must outlive this
    QList<QList<TakenFile>> taken; ///< one list per row, in the archive's order; the last file is the one in use
    QList<AlertReport> alerts;
};

/// By entry path; only of the files that the panel checks.
using EntryCertificates = QHash<QString, Certificate>;

/// Makes the findings and notes about an archive from what the panel would do with it.
class ArchiveFindings
{
public:
    /// Keeps references to all three arguments. `name` is the archive's name in findings.
    ArchiveFindings(const QString& name, const QList<ArchiveEntry>& entries, const EntryCertificates& certificates);

    /// Certificates, and entries that the panel ignores. `folder` is where the archive was extracted.
    void AboutEntries(const QString& folder);
    /// Several files for one module, files in the wrong folder, empty files, versions.
    void AboutModules(const DeviceAssignment& assignment);
    /// Files that no module of the devices uses.
    void AboutLeftOver(const QList<DeviceAssignment>& assignments, const Selection& selection);

    const QList<Finding>& Findings() const { return m_findings; }
    const QList<Finding>& Notes() const { return m_notes; }

private:
    void Add(const char* kind, const QString& place, const QString& effect, const QString& remedy);
    void AboutCertificate(const ArchiveEntry& entry, Certificate certificate, bool isLost);
    void AboutSharing(const DeviceAssignment& assignment);
    void AboutProgram(const TBoardRecord& board, const TakenFile& file);
    void AboutEmptiness(const TBoardRecord& board, const TakenFile& file);
    void AboutVersion(const TDeviceRecord& device, const TBoardRecord& board, const TakenFile& file);

    const QString& m_name;
    const QList<ArchiveEntry>& m_entries;
    const EntryCertificates& m_certificates;
    QList<Finding> m_findings;
    QList<Finding> m_notes;
    QSet<QString> m_added; // kind, place and effect of each finding
};

/// The finding that the panel refuses the archive because of `refused`. `isOutside`: the entry would be refused by
/// itself, not because it contradicts another entry.
Finding Refused(const QString& name, const ArchiveEntry& refused, bool isOutside);
/// The finding that the panel finds no entry in the archive.
Finding NothingInside(const QString& name);

/// A version for a table, on one line: a line break and what follows it are replaced by a remark.
QString VersionText(const QString& version);

/// The entry path from which the update copies a program module's file.
QString ProgramEntry(const TBoardRecord& board);

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

/// What came of offering an archive to one device's rows.
struct DeviceWalk
{
    const TDeviceRecord* device;
    QList<QList<TakenFile>> taken; ///< by row; the last one counts
    QList<BoxReport> boxes;
};

/// By entry path; of the files that the panel looks at.
using EntryCertificates = QHash<QString, Certificate>;

/// Puts what the panel did with an archive into words.
class ArchiveFindings
{
public:
    /// All three must outlive it. `name` is what findings call the archive.
    ArchiveFindings(const QString& name, const QList<ArchiveEntry>& entries, const EntryCertificates& certificates);

    /// Certificates, and entries that are never looked at.
    void AboutEntries(const QString& folder);
    /// Fights, wrong places, versions.
    void AboutModules(const DeviceWalk& walk);
    /// Files that no device's panel has a use for.
    void AboutLeftOver(const QList<DeviceWalk>& walks, const Selection& selection);

    const QList<Finding>& Findings() const { return m_findings; }
    const QList<Finding>& Notes() const { return m_notes; }

private:
    void Add(const char* kind, const QString& place, const QString& effect, const QString& remedy);
    void AboutCertificate(const ArchiveEntry& entry, Certificate certificate, bool isLost);
    void AboutSharing(const DeviceWalk& walk);
    void AboutProgram(const TBoardRecord& board, const TakenFile& file);
    void AboutEmptiness(const TBoardRecord& board, const TakenFile& file);
    void AboutVersion(const TDeviceRecord& device, const TBoardRecord& board, const TakenFile& file);

    const QString& m_name;
    const QList<ArchiveEntry>& m_entries;
    const EntryCertificates& m_certificates;
    QList<Finding> m_findings;
    QList<Finding> m_notes;
    QSet<QString> m_said;
};

/// `isOutside`: its own path is the reason, not what else is in the archive.
Finding Refused(const QString& name, const ArchiveEntry& culprit, bool isOutside);
Finding NothingInside(const QString& name);

/// A version for a table: what the panel shows behind a line break is told in words.
QString VersionText(const QString& version);

/// Where the update takes a program module's file from.
QString ProgramEntry(const TBoardRecord& board);

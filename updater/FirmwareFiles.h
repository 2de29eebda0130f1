#pragma once

#include "AppConfig.h"

#include <QByteArray>
#include <QHash>
#include <QString>

/// How firmware files are named, found, checked and compared: decisions only, no widget.

/// Firmware module: wildcard of its image, as "fw_12_3_1_v*.rpd". Program module: its File.
QString FilePattern(const TDeviceRecord& device, const TBoardRecord& board);
/// What an archive entry's path must contain to be the row's: the pattern without its wildcard end.
QString NamePrefix(const QString& pattern);
/// Whether an archive entry may be taken for `board`. An image must also bear the board's extension, so that
/// the wrong kind is never offered; a program file has no "." in its path, its companions have.
bool EntryFits(const QString& entryPath, const QString& prefix, const TBoardRecord& board);
/// Stands in the table for the version of an image whose name has another form.
inline constexpr char NoVersionInName[] = "BAD";
/// Version in an image's name, as 1.4.7 in fw_3_2_0_v1.4.7.bin, or NoVersionInName.
QString VersionInName(const QString& name);
/// Part of `path` after the last "/".
QString FileNameOf(const QString& path);

/// Folder below the temporary directory into which every archive is extracted.
QString ExtractionFolder();
/// The extracted folder that is copied for a program module.
QString ProgramSource(const TBoardRecord& board);
/// The command line that follows the copy. It is split at spaces.
QString MakeExecutableCommand(const QString& programFolder, const TBoardRecord& board);
/// Where a file dialog opens: the root of the panel's removable media below `mediaParent` when something is
/// mounted there, otherwise the program's folder (its "firmware" folder when `inFirmwareFolder`).
QString StartFolder(const QString& programFolder, bool inFirmwareFolder, const QString& hostName,
                    const QString& mediaParent);

/// Result of reading a file for its digest.
struct FileDigest
{
    bool opened = false;
    QByteArray sha256; ///< 32 raw bytes; empty when the file could not be opened or read to its end
    qint64 size = 0;   ///< of what was read
};
/// Digests of the files already read, by full path, so that each is read once per archive.
using DigestCache = QHash<QString, FileDigest>;

FileDigest ReadDigest(const QString& path);

/// A message alert with one button that names a problem to the operator.
struct Alert
{
    QString title;
    QString text;
};

/// The version file beside a program file.
struct VersionFile
{
    QString path;
    QString version; ///< its text as it stands, a closing line break included; UnknownVersion when it was not opened
    QString fault;   ///< why it was not opened; empty when it was

    /// The title says nothing to the operator; it is kept as it always was.
    Alert ErrorAlert() const { return {"test", path + ": " + fault}; }
};
/// Reads `folder`/`name`.ver.
VersionFile ReadVersionFile(const QString& folder, const QString& name);

/// Whether the update leaves out folders of this name, at every level: what is made on the panel stays there.
bool IsNeverCopied(const QString& folderName);

enum class Certificate { Missing, Different, Matches };
/// Compares the raw bytes of `path` + ".sha256" with `digest`. A digest is all that a certificate is: it
/// shows that the file is whole, not who made it. An empty certificate matches the empty digest of an
/// unreadable file.
Certificate JudgeCertificate(const QString& path, const QByteArray& digest);

/// What a row's two version texts allow.
struct RowVerdict
{
    bool valid = false;     ///< the current version is known, and there is a new one ("???" too)
    bool upToDate = true;   ///< nothing to update, also for a row that is not valid
    bool takesFile = false; ///< the current version is known, so a file may be chosen

    bool operator==(const RowVerdict&) const = default;
};
/// Versions count as numbers here, so "1.50" equals "1.5", and a text that is no number ("1.4.7") counts as
/// 0.
RowVerdict JudgeRow(const QString& current, const QString& offered);

/// Stands in the table for a version that could not be read.
inline constexpr char UnknownVersion[] = "???";

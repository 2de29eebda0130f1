#pragma once

class QIODevice;
struct ZipClaim;

enum class Unpacked {
    Whole,
    Damaged,   ///< not the bytes that were packed: cut off, encrypted, packed in an unknown way, not as claimed
    Unwritable ///< the target took no more
};

/// Unpacks one entry into `target`, piece by piece: it costs the same little memory whatever the archive claims, and
/// never writes more than the claimed size. `target` keeps what was written before a fault.
/// `archive` is open for reading and seekable; the directory counts where the entry's local header disagrees with it.
Unpacked UnpackZipEntry(QIODevice& archive, const ZipClaim& claim, QIODevice& target);

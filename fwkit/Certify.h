#pragma once

#include <QString>

/// The certificate was written (New, Replaced) or was right already (Unchanged); or nothing was written because it does
/// not exist (Missing), is of another content (Different), or the file is empty (Empty).
enum class Certified { New, Unchanged, Replaced, Missing, Different, Empty };
enum class CertifyMode {
    Write,   ///< writes missing certificates
    Force,   ///< also replaces those that do not match, and certifies empty files
    OnlyLook ///< writes nothing
};

/// Writes the certificate of the file `path` to `path` + ".sha256", completely or not at all; one that is right already
/// is not touched. Throws UsageError when the file cannot be read or the certificate not be written; an existing
/// certificate is then unchanged.
Certified CertifyFile(const QString& path, CertifyMode mode);

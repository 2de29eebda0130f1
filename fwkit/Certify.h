#pragma once

#include <QString>

/// New, Unchanged and Replaced: the certificate is right now. Missing, Different and Empty: nothing was written.
enum class Certified { New, Unchanged, Replaced, Missing, Different, Empty };
enum class CertifyMode {
    Write, ///< certificates that are not there
    Force, ///< those of another content and of empty files too
    OnlyLook
};

/// Writes the certificate of the file `path`, `path` + ".sha256", in one step; one that is right already is not
/// touched. Throws UsageError, and what was there before stands.
Certified CertifyFile(const QString& path, CertifyMode mode);

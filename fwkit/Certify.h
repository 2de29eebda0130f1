#pragma once

#include <QString>

enum class Certified { Written, Unchanged };

/// Writes the certificate of the file `path`, `path` + ".sha256", in one step; one that is right already is not
/// touched. Throws UsageError, and what was there before stands.
Certified CertifyFile(const QString& path);

#include "Certify.h"

#include "FirmwareFiles.h"
#include "Interruption.h"
#include "UsageError.h"
#include "WholeFile.h"

#include <QFileInfo>
#include <QSaveFile>

Certified CertifyFile(const QString& path)
{
    const QByteArray digest = ReadDigest(path).sha256;
    if (digest.isEmpty())
        throw UsageError(
            Kit::tr("%1: cannot be read to its end; nothing was certified: give a readable file").arg(path));
    const QString certificate = path + ".sha256";
    const QFileInfo there(certificate);
    // The save file would write to where the link leads, or put a file in a device's place.
    if (there.isSymLink() || (there.exists() && !there.isFile()))
        throw UsageError(Kit::tr("%1: is no regular file; remove it and certify again").arg(certificate));
    if (JudgeCertificate(path, digest) == Certificate::Matches)
        return Certified::Unchanged;
    const Interruption untilWritten;
    QSaveFile file(certificate);
    if (!file.open(QIODevice::WriteOnly) || !CommitWhole(file, digest))
        throw UsageError(Kit::tr("%1: cannot be written (%2); make room, or give yourself the right to write there")
                             .arg(certificate, file.errorString()));
    return Certified::Written;
}

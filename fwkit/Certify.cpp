#include "Certify.h"

#include "AtomicWrite.h"
#include "FirmwareFiles.h"
#include "Interruption.h"
#include "UsageError.h"

#include <QFileInfo>
#include <QSaveFile>

namespace {

void Write(const QString& certificate, const QByteArray& digest)
{
    const Interruption untilWritten;
    QSaveFile file(certificate);
    if (file.open(QIODevice::WriteOnly) && WriteAndCommit(file, digest))
        return;
    throw UsageError(QFileInfo(QFileInfo(certificate).path()).isWritable()
                         ? Kit::tr("%1: cannot be written (%2); make room there").arg(certificate, file.errorString())
                         : Kit::tr("%1: cannot be written (%2); give yourself the right to write there")
                               .arg(certificate, file.errorString()));
}

} // namespace

Certified CertifyFile(const QString& path, CertifyMode mode)
{
    const QByteArray digest = ReadDigest(path).sha256;
    if (digest.isEmpty())
        throw UsageError(
            Kit::tr("%1: cannot be read to its end and gets no certificate; give a readable file").arg(path));
    const QString certificate = path + ".sha256";
    const QFileInfo there(certificate);
    // QSaveFile would write to the target of a link, or replace a device node by a file.
    if (there.isSymLink() || (there.exists() && !there.isFile()))
        throw UsageError(Kit::tr("%1: is no regular file; remove it and certify again").arg(certificate));
    // A full disk leaves empty files, and without a catalogue it is unknown whether one may be empty.
    if (QFileInfo(path).size() == 0 && mode != CertifyMode::Force)
        return Certified::Empty;
    if (JudgeCertificate(path, digest) == Certificate::Matches)
        return Certified::Unchanged;
    if (there.exists() && mode != CertifyMode::Force)
        return Certified::Different;
    if (mode == CertifyMode::OnlyLook)
        return Certified::Missing;
    Write(certificate, digest);
    return there.exists() ? Certified::Replaced : Certified::New;
}

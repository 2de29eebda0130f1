#include "Certify.h"

#include "FirmwareFiles.h"
#include "Misuse.h"
#include "WholeFile.h"

#include <QFileInfo>
#include <QSaveFile>

Certified CertifyFile(const QString& path)
{
    const QByteArray digest = ReadDigest(path).sha256;
    if (digest.isEmpty())
        throw Misuse{Filled("%1: cannot be read to its end; nothing was certified: give a readable file",
                            "%1: не читается до конца; сертификат не записан: укажите читаемый файл", path)};
    const QString certificate = path + ".sha256";
    const QFileInfo there(certificate);
    // The save file would write to where the link leads, or put a file in a device's place.
    if (there.isSymLink() || (there.exists() && !there.isFile()))
        throw Misuse{Filled("%1: is no regular file; remove it and certify again",
                            "%1: не обычный файл; удалите его и повторите", certificate)};
    if (JudgeCertificate(path, digest) == Certificate::Matches)
        return Certified::Unchanged;
    QSaveFile file(certificate);
    if (!file.open(QIODevice::WriteOnly) || !CommitWhole(file, digest))
        throw Misuse{Filled("%1: cannot be written (%2); make room, or give yourself the right to write there",
                            "%1: не записывается (%2); освободите место или дайте себе право на запись", certificate,
                            file.errorString())};
    return Certified::Written;
}

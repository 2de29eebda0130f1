#include "Certify.h"
#include "InputFiles.h"
#include "Progress.h"
#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace {

constexpr char CertificateEnd[] = ".sha256";

/// The files to certify. Throws UsageError before any is touched.
QStringList Files(const QStringList& arguments)
{
    QStringList files;
    for (const QString& argument : arguments) {
        const QFileInfo info(QDir::cleanPath(argument));
        if (info.isDir()) {
            const InputFiles found = FilesBelow(info.filePath());
            for (const InputFiles::LeftOut& left : found.leftOut)
                Print(Printable(left.path) + ": " + Kit::tr("left out") + " (" + Reason(left.why) + ")\n");
            for (const QString& file : found.files) {
                if (!file.contains(CertificateEnd))
                    files.append(info.filePath() + '/' + file);
            }
            continue;
        }
        if (!info.isFile())
            throw UsageError(Kit::tr("%1: no such file or folder; name what is to be certified").arg(argument));
        if (info.fileName().contains(CertificateEnd) || IsPassingName(info.fileName()))
            throw UsageError(
                Kit::tr("%1: a certificate, hidden or temporary file gets no certificate; name the file itself")
                    .arg(argument));
        files.append(info.filePath());
    }
    return files;
}

Status Run(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().isEmpty())
        throw UsageError(Kit::tr("name the files or folders to certify"));
    const QStringList files = Files(parser.positionalArguments());
    qsizetype written = 0;
    {
        Progress progress;
        for (qsizetype i = 0; i < files.size(); ++i) {
            progress.Tell(Kit::tr("Certifying"), i, files.size());
            if (CertifyFile(files[i]) == Certified::Unchanged)
                continue;
            ++written;
            Print(Printable(files[i]) + CertificateEnd + ": " + Kit::tr("written") + '\n');
        }
    }
    Print(Kit::tr("%1 certificates written, %2 were right already.\n")
              .arg(QString::number(written), QString::number(files.size() - written)));
    return Fine;
}

} // namespace

Verb CertifyVerb()
{
    return {"certify",
            Kit::tr("Writes the certificate of each file beside it: its SHA-256 as 32 raw bytes in FILE.sha256."),
            "FILE|FOLDER...", [](QCommandLineParser&) {}, Run};
}

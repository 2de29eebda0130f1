#include "Certify.h"
#include "Finding.h"
#include "InputFiles.h"
#include "Progress.h"
#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <optional>

namespace {

constexpr char CertificateEnd[] = ".sha256";

/// The files to certify. Throws UsageError before any is touched.
QStringList Files(const QStringList& arguments)
{
    QStringList files;
    QList<InputFiles::LeftOut> leftOut;
    for (const QString& argument : arguments) {
        const QFileInfo info(QDir::cleanPath(argument));
        if (info.isDir()) {
            const InputFiles found = FilesBelow(info.filePath());
            leftOut += found.leftOut;
            for (const QString& file : found.files) {
                if (!file.contains(CertificateEnd))
                    files.append(info.filePath() + '/' + file);
            }
        } else if (!info.isFile()) {
            throw UsageError(Kit::tr("%1: no such file or folder; name what is to be certified").arg(argument));
        } else if (info.fileName().contains(CertificateEnd)) {
            // The shell names certificates too when it is given a pattern for all files.
            continue;
        } else if (const auto why = WhyPassedBy(info.fileName())) {
            leftOut.append({info.filePath(), *why});
        } else {
            files.append(info.filePath());
        }
    }
    for (const InputFiles::LeftOut& left : leftOut)
        Print(Printable(left.path) + ": " + Kit::tr("left out") + " (" + Reason(left.why) + ")\n");
    if (files.isEmpty())
        throw UsageError(Kit::tr(
            "nothing to certify: only certificates and what is left out were named; name the files themselves"));
    return files;
}

CertifyMode Mode(const QCommandLineParser& parser)
{
    if (parser.isSet("check") && parser.isSet("force"))
        throw UsageError(Kit::tr("--check only looks and --force replaces; give one of them"));
    return parser.isSet("check")   ? CertifyMode::OnlyLook
           : parser.isSet("force") ? CertifyMode::Force
                                   : CertifyMode::Write;
}

std::optional<Finding> About(const QString& file, Certified result)
{
    if (result == Certified::Empty)
        return Finding{"empty-file",
                       file,
                       {},
                       Kit::tr("It is empty and gets no certificate"),
                       Kit::tr("copy it anew, or certify it with --force when it is to be empty")};
    if (result == Certified::Different)
        return Finding{"wrong-certificate",
                       file,
                       {},
                       Kit::tr("It does not match its certificate, which stays as it is"),
                       Kit::tr("restore the file, or replace the certificate with --force")};
    if (result == Certified::Missing)
        return Finding{"missing-certificate",
                       file,
                       {},
                       Kit::tr("It has no certificate"),
                       Kit::tr("write the certificate with fwkit certify")};
    return std::nullopt;
}

void Tell(const QString& file, Certified result)
{
    if (const auto finding = About(file, result))
        TellOnStderr("certify", LineOf(*finding));
    else
        Print(Printable(file) + ": "
              + (result == Certified::New         ? Kit::tr("new")
                 : result == Certified::Unchanged ? Kit::tr("unchanged")
                                                  : Kit::tr("replaced"))
              + '\n');
}

Status Run(const QCommandLineParser& parser)
{
    const CertifyMode mode = Mode(parser);
    if (parser.positionalArguments().isEmpty())
        throw UsageError(Kit::tr("name the files or folders to certify"));
    const QStringList files = Files(parser.positionalArguments());
    QHash<Certified, int> counts;
    {
        Progress progress;
        for (qsizetype i = 0; i < files.size(); ++i) {
            progress.Tell(Kit::tr("Certifying"), i, files.size());
            const Certified result = CertifyFile(files[i], mode);
            ++counts[result];
            progress.Wipe();
            Tell(files[i], result);
        }
    }
    const int fine = counts[Certified::New] + counts[Certified::Unchanged] + counts[Certified::Replaced];
    Print(Kit::tr("Certificates: %1 new, %2 unchanged, %3 replaced; findings: %4.\n")
              .arg(QString::number(counts[Certified::New]), QString::number(counts[Certified::Unchanged]),
                   QString::number(counts[Certified::Replaced]), QString::number(files.size() - fine)));
    return fine == files.size() ? Fine : HasFindings;
}

} // namespace

Verb CertifyVerb()
{
    return {
        "certify",
        Kit::tr("Writes the certificate of each file beside it: its SHA-256 as 32 raw bytes in FILE.sha256. One "
                "that does not match is told and left as it is."),
        "FILE|FOLDER...",
        [](QCommandLineParser& parser) {
            parser.addOption({"check", Kit::tr("Only looks, and writes nothing.")});
            parser.addOption({"force", Kit::tr("Replaces certificates that do not match, and certifies empty files.")});
        },
        Run};
}

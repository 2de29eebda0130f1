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

/// The files to certify. Throws Misuse before any is touched.
QStringList Files(const QStringList& arguments)
{
    QStringList files;
    for (const QString& argument : arguments) {
        const QFileInfo info(QDir::cleanPath(argument));
        if (info.isDir()) {
            const InputFiles found = FilesBelow(info.filePath());
            for (const InputFiles::LeftOut& left : found.leftOut)
                Print(Printable(left.path) + ": " + Say({"left out", "пропущен"}) + " (" + Say(Reason(left.why))
                      + ")\n");
            for (const QString& file : found.files) {
                if (!file.contains(CertificateEnd))
                    files.append(info.filePath() + '/' + file);
            }
            continue;
        }
        if (!info.isFile())
            throw Misuse{Filled("%1: no such file or folder; name what is to be certified",
                                "%1: нет такого файла или папки; укажите, что сертифицировать", argument)};
        if (info.fileName().contains(CertificateEnd) || IsPassingName(info.fileName()))
            throw Misuse{Filled("%1: a certificate, hidden or temporary file gets no certificate; name the file itself",
                                "%1: сертификат, скрытый или временный файл не сертифицируется; укажите сам файл",
                                argument)};
        files.append(info.filePath());
    }
    return files;
}

Status Run(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().isEmpty())
        throw Misuse{{"name the files or folders to certify", "укажите файлы или папки"}};
    const QStringList files = Files(parser.positionalArguments());
    qsizetype written = 0;
    {
        Progress progress;
        for (qsizetype i = 0; i < files.size(); ++i) {
            progress.Tell({"Certifying", "Сертификаты"}, i, files.size());
            if (CertifyFile(files[i]) == Certified::Unchanged)
                continue;
            ++written;
            Print(Printable(files[i]) + CertificateEnd + ": " + Say({"written", "записан"}) + '\n');
        }
    }
    Print(
        Say(Filled("%1 certificates written, %2 were right already.\n", "Записано сертификатов: %1; уже верных: %2.\n",
                   QString::number(written), QString::number(files.size() - written))));
    return Fine;
}

} // namespace

Verb CertifyVerb()
{
    return {"certify",
            {"Writes the certificate of each file beside it: its SHA-256 as 32 raw bytes in FILE.sha256.",
             "Записывает рядом с каждым файлом его сертификат: SHA-256 в виде 32 байт в FILE.sha256."},
            {"FILE|FOLDER...", "FILE|FOLDER..."},
            [](QCommandLineParser&) {},
            Run};
}

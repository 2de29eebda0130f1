#include "Certify.h"
#include "Finding.h"
#include "InputFiles.h"
#include "Options.h"
#include "Progress.h"
#include "Report.h"
#include "Verb.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>

#include <optional>

namespace {

constexpr char CertificateEnd[] = ".sha256";

/// The files to certify, and what is left out. Throws UsageError before any is touched.
InputFiles Files(const QStringList& arguments)
{
    InputFiles all;
    for (const QString& argument : arguments) {
        const QFileInfo info(QDir::cleanPath(argument));
        if (info.isDir()) {
            const InputFiles found = FilesBelow(info.filePath());
            all.leftOut += found.leftOut;
            for (const QString& file : found.files) {
                if (!file.contains(CertificateEnd))
                    all.files.append(info.filePath() + '/' + file);
            }
        } else if (!info.isFile()) {
            throw UsageError(Kit::tr("%1: %2; name what is to be certified").arg(argument, WhyNoInput(info)));
        } else if (info.fileName().contains(CertificateEnd)) {
            // A shell pattern for all files includes the certificates.
            continue;
        } else if (const auto why = WhyHiddenOrTemporary(info.fileName())) {
            all.leftOut.append({info.filePath(), *why});
        } else {
            all.files.append(info.filePath());
        }
    }
    return all;
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

/// The untranslated word for JSON; Kit::tr() translates the first three, the others are shown as findings.
const char* WordOf(Certified result)
{
    switch (result) {
    case Certified::New:
        return QT_TRANSLATE_NOOP("Kit", "new");
    case Certified::Unchanged:
        return QT_TRANSLATE_NOOP("Kit", "unchanged");
    case Certified::Replaced:
        return QT_TRANSLATE_NOOP("Kit", "replaced");
    case Certified::Missing:
        return "missing";
    case Certified::Different:
        return "different";
    case Certified::Empty:
        break;
    }
    return "empty";
}

/// Reports the result for each file, as text or as JSON.
class CertifyReport
{
public:
    explicit CertifyReport(const QCommandLineParser& parser)
        : m_isJson(parser.isSet("json"))
        , m_isQuiet(parser.isSet("quiet"))
    {}

    void Add(const InputFiles::LeftOut& left)
    {
        if (left.why == InputFiles::Why::OddBytes)
            return Add(Finding{"odd-name", left.path, {}, Reason(left.why), Kit::tr("rename it")});
        m_leftOut.append(JsonOf(left));
        Show(LineOf(left) + '\n');
    }
    void Add(const QString& file, Certified result)
    {
        ++m_counts[result];
        m_files.append(QJsonObject{{"file", file}, {"result", WordOf(result)}});
        const std::optional<Finding> finding = About(file, result);
        if (!finding) {
            Show(Printable(file) + ": " + Kit::tr(WordOf(result)) + '\n');
            return;
        }
        Add(*finding);
    }
    void Add(const UsageError& error)
    {
        m_isMisused = true;
        Warn("certify", error.Text());
    }
    Status Close() const
    {
        Show(Kit::tr("Certificates: %1 new, %2 unchanged, %3 replaced; findings: %4.\n")
                 .arg(QString::number(m_counts[Certified::New]), QString::number(m_counts[Certified::Unchanged]),
                      QString::number(m_counts[Certified::Replaced]), QString::number(m_findings.size())));
        if (m_isJson)
            Print(JsonText({{"files", m_files}, {"leftOut", m_leftOut}, {"findings", m_findings}}));
        return m_isMisused ? IsMisused : m_findings.isEmpty() ? Fine : HasFindings;
    }

private:
    void Add(const Finding& finding)
    {
        m_findings.append(JsonOf(finding));
        if (!m_isJson)
            Warn("certify", LineOf(finding));
    }
    void Show(const QString& text) const
    {
        if (!m_isJson && !m_isQuiet)
            Print(text);
    }

    bool m_isJson;
    bool m_isQuiet;
    bool m_isMisused = false;
    QHash<Certified, int> m_counts;
    QJsonArray m_files;
    QJsonArray m_leftOut;
    QJsonArray m_findings;
};

Status Run(const QCommandLineParser& parser)
{
    const CertifyMode mode = Mode(parser);
    Require(parser, {}, "FILE|FOLDER...");
    const InputFiles input = Files(parser.positionalArguments());
    CertifyReport report(parser);
    for (const InputFiles::LeftOut& left : input.leftOut)
        report.Add(left);
    if (input.files.isEmpty())
        throw UsageError(Kit::tr(
            "nothing to certify: only certificates and what is left out were named; name the files themselves"));
    {
        Progress progress(!parser.isSet("quiet"));
        for (qsizetype i = 0; i < input.files.size(); ++i) {
            progress.Show(Kit::tr("Certifying"), i, input.files.size());
            try {
                const Certified result = CertifyFile(input.files[i], mode);
                progress.Wipe();
                report.Add(input.files[i], result);
            } catch (const UsageError& error) {
                // The remaining files still get their certificates.
                progress.Wipe();
                report.Add(error);
            }
        }
    }
    const Status status = report.Close();
    if (mode != CertifyMode::OnlyLook)
        RequireWritten(Kit::tr("the certificates are written; only the report cannot be, to standard output: make room "
                               "where that goes"));
    return status;
}

} // namespace

Verb CertifyVerb()
{
    return {"certify",
            Kit::tr("Writes the certificate of each file beside it: its SHA-256 as 32 raw bytes in FILE.sha256. One "
                    "that does not match is told and left as it is."),
            "FILE|FOLDER...",
            [](QCommandLineParser& parser) {
                parser.addOption({"check", Kit::tr("Only looks, and writes nothing.")});
                parser.addOption(
                    {{"f", "force"}, Kit::tr("Replaces certificates that do not match, and certifies empty files.")});
                AddQuietOption(parser);
            },
            Run};
}

#include "PackPlan.h"

#include "FirmwareArchive.h"
#include "FirmwareFiles.h"
#include "UsageError.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace {

constexpr char CertificateEnd[] = ".sha256";
/// Above these limits the archive would need zip64, which marks it by the highest value of the fields for both.
constexpr qint64 MostEntries = 65534;
constexpr qint64 LargestArchive = 0xFFFF0000;

struct Input
{
    QString path;
    QString below; ///< relative path that begins with the name of the folder the user named
};

QList<const TBoardRecord*> Programs(const QList<const TDeviceRecord*>& devices)
{
    QList<const TBoardRecord*> programs;
    for (const TDeviceRecord* device : devices) {
        for (int b = 0; b < device->BoardCount; ++b) {
            if (device->Boards.at(b).IsProgram())
                programs.append(&device->Boards.at(b));
        }
    }
    return programs;
}

QString EntryOf(const QString& below, const QList<const TBoardRecord*>& programs)
{
    const QStringList parts = below.split('/');
    for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
        for (const TBoardRecord* program : programs) {
            const QString folder = QDir::cleanPath(program->Folder);
            if (!folder.isEmpty() && parts[i] == FileNameOf(folder))
                return folder + '/' + parts.mid(i + 1).join('/');
        }
    }
    for (const TBoardRecord* program : programs) {
        for (const QString& name : {program->File, program->File + ".ver"}) {
            if (parts.last() == name)
                return QDir::cleanPath(program->Folder + '/' + name);
        }
    }
    return parts.last();
}

QList<Input> InputsOf(const QStringList& names, QList<InputFiles::LeftOut>& leftOut)
{
    QList<Input> inputs;
    for (const QString& name : names) {
        const QFileInfo info(QDir::cleanPath(name));
        if (!info.isDir() && !info.isFile())
            throw UsageError(Kit::tr("%1: %2; name what is to be packed").arg(name, WhyNoInput(info)));
        if (info.isFile()) {
            // A shell pattern for all files includes the certificates.
            if (!info.fileName().endsWith(CertificateEnd))
                inputs.append({info.filePath(), info.fileName()});
            continue;
        }
        const InputFiles found = FilesBelow(info.filePath());
        leftOut += found.leftOut;
        const QString ownName = FileNameOf(info.canonicalFilePath());
        for (const QString& file : found.files)
            inputs.append({info.filePath() + '/' + file, ownName + '/' + file});
    }
    return inputs;
}

bool IsPlain(const QString& name)
{
    return std::all_of(name.begin(), name.end(),
                       [](QChar c) { return (c.isPrint() || c.isSurrogate()) && c != '\\' && c != QChar(0xFFFD); });
}

class Planner
{
public:
    explicit Planner(const QList<const TDeviceRecord*>& devices)
        : m_programs(Programs(devices))
    {}

    void Add(const Input& input)
    {
        const PackFile file{EntryOf(input.below, m_programs), input.path,
                            QFileInfo(input.path).permission(QFile::ExeOwner)};
        const auto there = m_sources.constFind(file.entry);
        if (!IsPlain(input.below))
            AddFinding("odd-name", file, Kit::tr("Its name has characters that not every system reads alike"),
                       Kit::tr("rename it"));
        else if (there != m_sources.cend() && *there != QFileInfo(input.path).canonicalFilePath())
            AddFinding("fight", file, Kit::tr("%1 has the same place in the archive").arg(*there),
                       Kit::tr("pack one of them"));
        else if (QFileInfo(input.path).size() > FirmwareArchive::LargestEntry)
            AddFinding(
                "too-large", file,
                Kit::tr("The panel unpacks no file over %1 bytes").arg(QString::number(FirmwareArchive::LargestEntry)),
                Kit::tr("make it smaller"));
        // Also with a finding: without it files that belong to it would seem to be nobody's.
        if (there == m_sources.cend())
            m_plan.files.append(file);
        m_sources.insert(file.entry, QFileInfo(input.path).canonicalFilePath());
        m_size += QFileInfo(input.path).size();
    }

    void AddCertificate(const Input& input, const QSet<QString>& files)
    {
        if (!files.contains(input.path.chopped(qsizetype(sizeof CertificateEnd) - 1)))
            AddFinding("never-looked-at", {{}, input.path}, Kit::tr("It is a certificate without its file"),
                       Kit::tr("add the file, or leave it out"));
    }

    void AboutLeftOut(const QList<InputFiles::LeftOut>& leftOut)
    {
        for (const InputFiles::LeftOut& left : leftOut) {
            if (left.why == InputFiles::Why::Hidden || left.why == InputFiles::Why::Temporary)
                m_plan.leftOut.append(left);
            else if (left.why == InputFiles::Why::OddBytes)
                AddFinding("odd-name", {{}, left.path}, Reason(left.why), Kit::tr("rename it"));
            else
                AddFinding("no-file", {{}, left.path}, Reason(left.why), Kit::tr("put the file itself there"));
        }
    }

    PackPlan Plan()
    {
        if (m_plan.files.size() * 2 > MostEntries || m_size > LargestArchive)
            throw UsageError(Kit::tr("%1 files with %2 bytes are too many for one archive; pack fewer")
                                 .arg(QString::number(m_plan.files.size()), QString::number(m_size)));
        if (m_plan.files.isEmpty() && m_plan.findings.isEmpty())
            throw UsageError(Kit::tr("the inputs hold no file to pack; name files or folders"));
        return m_plan;
    }

private:
    void AddFinding(const char* kind, const PackFile& file, const QString& effect, const QString& remedy)
    {
        m_plan.findings.append({kind, file.source, {}, effect, remedy});
    }

    QList<const TBoardRecord*> m_programs;
    QHash<QString, QString> m_sources;
    PackPlan m_plan;
    qint64 m_size = 0;
};

} // namespace

PackPlan PlanPack(const QStringList& inputs, const QList<const TDeviceRecord*>& devices, const QString& output)
{
    Planner planner(devices);
    QList<InputFiles::LeftOut> leftOut;
    const QList<Input> found = InputsOf(inputs, leftOut);
    const QString ownPath = QFileInfo(output).canonicalFilePath();
    QSet<QString> files;
    for (const Input& input : found)
        files.insert(input.path);
    for (const Input& input : found) {
        if (input.path.endsWith(CertificateEnd))
            planner.AddCertificate(input, files);
        else if (ownPath.isEmpty() || QFileInfo(input.path).canonicalFilePath() != ownPath)
            planner.Add(input);
    }
    planner.AboutLeftOut(leftOut);
    return planner.Plan();
}

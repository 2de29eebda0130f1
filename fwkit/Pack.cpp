#include "Pack.h"

#include "FirmwareArchive.h"
#include "PackPlan.h"
#include "Progress.h"
#include "UsageError.h"
#include "WorkFolder.h"
#include "ZipFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace {

/// The path to write: when the output is a link, the link is kept and the file that it points to is replaced.
QString Target(const QString& output)
{
    const QFileInfo info(output);
    if ((info.exists() && !info.isFile()) || (info.isSymLink() && !info.exists()))
        throw UsageError(Kit::tr("%1: is no regular file; choose another --output").arg(output));
    return info.isSymLink() ? info.canonicalFilePath() : info.absoluteFilePath();
}

void RequireFree(const PackOrder& order, const QString& target)
{
    if (QFileInfo::exists(target) && !order.isReplacing)
        throw UsageError(
            Kit::tr("%1: is there already; choose another --output, or replace it with --force").arg(order.output));
}

QByteArray Digest(const PackFile& file)
{
    const FileDigest digest = ReadDigest(file.source);
    if (digest.sha256.isEmpty())
        throw UsageError(Kit::tr("%1: cannot be read to its end; give a readable file").arg(file.source));
    return digest.sha256;
}

/// A certificate on the disk that does not match shows that the file was changed after it was certified.
QList<Finding> AboutOldCertificate(const PackFile& file, const QByteArray& digest)
{
    if (JudgeCertificate(file.source, digest) != Certificate::Different)
        return {};
    return {{"wrong-certificate",
             file.source,
             {},
             Kit::tr("Its certificate on the disk is of another content"),
             Kit::tr("restore the file, or replace the certificate with fwkit certify --force")}};
}

QList<ZipItem> Items(const QList<PackFile>& files, QList<Finding>& findings, Progress& progress)
{
    QList<ZipItem> items;
    for (qsizetype i = 0; i < files.size(); ++i) {
        Interruption::Check();
        progress.Show(Kit::tr("Certifying"), i, files.size());
        const QByteArray digest = Digest(files[i]);
        findings += AboutOldCertificate(files[i], digest);
        items.append({files[i].entry, files[i].source, {}, files[i].isExecutable});
        items.append({files[i].entry + ".sha256", {}, digest, false});
    }
    std::sort(items.begin(), items.end(), [](const ZipItem& a, const ZipItem& b) { return a.name < b.name; });
    return items;
}

/// Replaces the entry that a finding is about by the input file that the entry was made from.
QList<Finding> OfSources(const QList<Finding>& findings, const QList<PackFile>& files)
{
    QHash<QString, QString> sources;
    for (const PackFile& file : files)
        sources.insert(file.entry, file.source);
    QList<Finding> named = findings;
    for (Finding& finding : named) {
        if (sources.contains(finding.place))
            finding.file = sources.value(std::exchange(finding.place, {}));
    }
    return named;
}

/// Flushes the finished file to the disk and renames it to `target`; `name` is its name in error texts.
void Publish(const QString& path, const QString& target, const QString& name)
{
    QFile file(path);
    const bool isOnDisk = file.open(QIODevice::ReadWrite) && ::fsync(file.handle()) == 0;
    file.close();
    if (!isOnDisk || std::rename(QFile::encodeName(path).constData(), QFile::encodeName(target).constData()) != 0)
        throw UsageError(Kit::tr("%1: cannot be put in its place; choose another --output").arg(name));
}

} // namespace

PackResult Pack(const PackOrder& order, Progress& progress)
{
    const QString target = Target(order.output);
    RequireFree(order, target);
    PackPlan plan = PlanPack(order.inputs, order.selection.devices, target);
    PackResult result{plan.findings, {}, plan.files.size(), plan.leftOut};
    const WorkFolder beside(QFileInfo(target).path() + "/.fwkit-");
    if (!beside.ErrorString().isEmpty())
        throw UsageError(Kit::tr("%1: its folder takes no files (%2); choose another --output")
                             .arg(order.output, beside.ErrorString()));
    const QList<ZipItem> items = Items(plan.files, result.findings, progress);
    // Packing takes long: what is wrong is said before, and all of it at once.
    if (!items.isEmpty())
        result.judgement = JudgeItems(items, order.output, order.selection, progress);
    result.findings += OfSources(result.judgement.findings, plan.files);
    if (!result.findings.isEmpty())
        return result;
    const QString written = beside.FilePath("archive.zip");
    WriteZipFile(written, order.output, items, progress);
    result.judgement = JudgeArchive(written, order.output, order.selection, progress);
    result.findings = OfSources(result.judgement.findings, plan.files);
    Interruption::Check();
    if (result.findings.isEmpty()) {
        RequireFree(order, target);
        Publish(written, target, order.output);
    }
    return result;
}

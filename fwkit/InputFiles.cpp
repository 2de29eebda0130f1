#include "InputFiles.h"

#include "Report.h"
#include "UsageError.h"

#include <QDir>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <filesystem>

namespace {

bool IsTemporary(const QString& name)
{
    const auto ends = [&](const char* end) { return name.endsWith(QLatin1String(end)); };
    return ends("~") || ends(".tmp") || ends(".part") || ends(".swp") || ends(".bak") || name.startsWith('#');
}

std::optional<InputFiles::Why> WhyNot(const QFileInfo& info, const QString& root)
{
    using Why = InputFiles::Why;
    if (const auto why = WhyHiddenOrTemporary(info.fileName()))
        return why;
    if (info.isSymLink() && !info.exists())
        return Why::LeadsNowhere;
    // A link to a folder inside would list the same files twice, or recurse without end.
    if (info.isSymLink() && (info.isDir() || !info.canonicalFilePath().startsWith(root + '/')))
        return Why::LeadsOutside;
    if (!info.isDir() && !info.isFile())
        return Why::NoFile;
    return std::nullopt;
}

/// Entries of `folder` that Qt does not list because their names are no UTF-8. Throws UsageError when the list ends
/// with an error, which Qt would not report either.
QList<InputFiles::LeftOut> OddNames(const QString& folder)
{
    QList<InputFiles::LeftOut> odd;
    std::error_code error;
    std::filesystem::directory_iterator entry(QFile::encodeName(folder).toStdString(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        QStringDecoder utf8(QStringDecoder::Utf8);
        const QString name = utf8(QByteArray::fromStdString(entry->path().filename().string()));
        if (utf8.hasError())
            odd.append({folder + '/' + name, InputFiles::Why::OddBytes});
    }
    if (error)
        throw UsageError(Kit::tr("%1: the folder cannot be listed to its end (%2); copy its files to another disk")
                             .arg(folder, qt_error_string(error.value())));
    return odd;
}

} // namespace

InputFiles FilesBelow(const QString& folder)
{
    const QString root = QFileInfo(folder).canonicalFilePath();
    InputFiles found;
    QStringList open{QString()};
    while (!open.isEmpty()) {
        const QString below = open.takeLast();
        const QDir dir(folder + '/' + below);
        if (!QFileInfo(dir.path()).isReadable() || !QFileInfo(dir.path()).isExecutable())
            throw UsageError(
                Kit::tr("%1: the folder cannot be listed; give yourself the right to read it").arg(dir.path()));
        found.leftOut += OddNames(QDir::cleanPath(dir.path()));
        for (const QFileInfo& info :
             dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort)) {
            const QString path = below + info.fileName();
            if (const auto why = WhyNot(info, root))
                found.leftOut.append({folder + '/' + path, *why});
            else if (info.isDir())
                open.append(path + '/');
            else
                found.files.append(path);
        }
    }
    std::sort(found.files.begin(), found.files.end());
    std::sort(found.leftOut.begin(), found.leftOut.end(), [](auto& a, auto& b) { return a.path < b.path; });
    return found;
}

std::optional<InputFiles::Why> WhyHiddenOrTemporary(const QString& name)
{
    if (name.startsWith('.'))
        return InputFiles::Why::Hidden;
    if (IsTemporary(name))
        return InputFiles::Why::Temporary;
    return std::nullopt;
}

QString Reason(InputFiles::Why why)
{
    switch (why) {
    case InputFiles::Why::Hidden:
        return Kit::tr("hidden");
    case InputFiles::Why::Temporary:
        return Kit::tr("temporary");
    case InputFiles::Why::LeadsOutside:
        return Kit::tr("a link out of the folder or to a folder");
    case InputFiles::Why::LeadsNowhere:
        return Kit::tr("a link that leads nowhere");
    case InputFiles::Why::OddBytes:
        return Kit::tr("its name is no UTF-8");
    case InputFiles::Why::NoFile:
        return Kit::tr("no regular file");
    }
    return {};
}

QString LineOf(const InputFiles::LeftOut& left)
{
    return Printable(left.path) + ": " + Kit::tr("left out") + " (" + Reason(left.why) + ')';
}

QJsonObject JsonOf(const InputFiles::LeftOut& left)
{
    return {{"file", left.path}, {"reason", Reason(left.why)}};
}

QString WhyNoInput(const QFileInfo& info)
{
    if (info.isSymLink() && !info.exists())
        return Reason(InputFiles::Why::LeadsNowhere);
    return info.exists() ? Reason(InputFiles::Why::NoFile) : Kit::tr("no such file or folder");
}

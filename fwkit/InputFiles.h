#pragma once

#include <QList>
#include <QStringList>

#include <optional>

class QFileInfo;
class QJsonObject;

/// The files below a folder that the user named.
struct InputFiles
{
    enum class Why { Hidden, Temporary, LeadsOutside, LeadsNowhere, OddBytes, NoFile };
    struct LeftOut
    {
        QString path; ///< begins with the folder as the user named it
        Why why;
    };
    QStringList files; ///< paths relative to the folder, sorted by UTF-16 code units
    QList<LeftOut> leftOut;
};

/// Regular files at every depth. Links are followed only to files inside the folder. Throws UsageError when a folder
/// cannot be listed.
InputFiles FilesBelow(const QString& folder);
/// Why a file or folder called `name` is left out: it is hidden, or the name is one that editors and downloads give to
/// temporary files. std::nullopt: it is not left out.
std::optional<InputFiles::Why> WhyHiddenOrTemporary(const QString& name);
QString Reason(InputFiles::Why why);
/// One line for a terminal: the path and the reason.
QString LineOf(const InputFiles::LeftOut& left);
QJsonObject JsonOf(const InputFiles::LeftOut& left);
/// Why a path that the user named cannot be used: it is neither a file nor a folder.
QString WhyNoInput(const QFileInfo& info);

#pragma once

#include <QList>
#include <QStringList>

#include <optional>

class QFileInfo;
class QJsonObject;

/// What lies below a folder that the user named.
struct InputFiles
{
    enum class Why { Hidden, Temporary, LeadsOutside, LeadsNowhere, OddBytes, NoFile };
    struct LeftOut
    {
        QString path; ///< with the folder in front
        Why why;
    };
    QStringList files; ///< paths below the folder, sorted by code units
    QList<LeftOut> leftOut;
};

/// Regular files at every depth. Links are followed to files inside of the folder only. Throws UsageError when a folder
/// cannot be listed.
InputFiles FilesBelow(const QString& folder);
/// Hidden, or with a name that editors and downloads give to what is not finished.
std::optional<InputFiles::Why> WhyPassedBy(const QString& name);
QString Reason(InputFiles::Why why);
/// For people: the path and the reason.
QString LineOf(const InputFiles::LeftOut& left);
QJsonObject JsonOf(const InputFiles::LeftOut& left);
/// The reason for a path that the user named and that is neither a file nor a folder.
QString WhyNoInput(const QFileInfo& info);

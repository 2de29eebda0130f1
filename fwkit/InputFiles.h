#pragma once

#include <QList>
#include <QStringList>

#include <optional>

/// What lies below a folder that the user named.
struct InputFiles
{
    enum class Why { Hidden, Temporary, LeadsOutside, NoFile };
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

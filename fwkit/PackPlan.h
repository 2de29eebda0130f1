#pragma once

#include "AppConfig.h"
#include "Finding.h"
#include "InputFiles.h"

/// A file to be packed; its certificate is added when it is packed.
struct PackFile
{
    QString entry;  ///< path in the archive
    QString source; ///< path on the disk
    bool isExecutable = false;
};

struct PackPlan
{
    QList<PackFile> files; ///< in the order of the inputs; each entry once
    QList<Finding> findings;
    QList<InputFiles::LeftOut> leftOut; ///< hidden and temporary files
};

/// Decides on the entry of each input: a file below a folder with the name of a program module's Folder, or a file with
/// the name of its File or that name with ".ver", goes into that Folder; any other to the top level. `output` is left
/// out of the inputs. Throws UsageError when an input cannot be used, there is none, or they do not fit in one archive.
PackPlan PlanPack(const QStringList& inputs, const QList<const TDeviceRecord*>& devices, const QString& output);

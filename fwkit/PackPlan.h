#pragma once

#include "AppConfig.h"
#include "Finding.h"
#include "InputFiles.h"

/// A file of the archive that is to be made; its certificate comes with it.
struct PackFile
{
    QString entry;
    QString source;
    bool isExecutable = false;
};

struct PackPlan
{
    QList<PackFile> files; ///< by entry; no two for one
    QList<Finding> findings;
    QList<InputFiles::LeftOut> leftOut; ///< hidden and temporary files
};

/// Where each input goes: what lies in a folder called as a program module's Folder, or is called as its File, into
/// that Folder; anything else on top. `output` is never an input. Throws UsageError.
PackPlan PlanPack(const QStringList& inputs, const QList<const TDeviceRecord*>& devices, const QString& output);

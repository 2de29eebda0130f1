#pragma once

#include "ArchiveJudge.h"
#include "InputFiles.h"

class Progress;

struct PackOrder
{
    Selection selection;
    QStringList inputs; ///< files and folders
    QString output;
    bool isReplacing = false; ///< the output may be there already
};

struct PackResult
{
    QList<Finding> findings;            ///< nothing was written when there are any
    Judgement judgement;                ///< of what was written
    qsizetype fileCount = 0;            ///< without certificates
    QList<InputFiles::LeftOut> leftOut; ///< hidden and temporary files
};

/// Makes the archive of which the devices' panels take every file without a box: images on top, program modules in
/// their folders, a certificate for each file. The output comes into being in one step, after it was tried. Throws
/// UsageError, also when there is an output that is not to be replaced.
PackResult Pack(const PackOrder& order, Progress& progress);

#pragma once

#include "ArchiveJudge.h"
#include "InputFiles.h"

class Progress;

struct PackOrder
{
    Selection selection;
    QStringList inputs; ///< files and folders
    QString output;
    bool isReplacing = false; ///< an existing output is replaced
};

struct PackResult
{
    QList<Finding> findings;            ///< the output was written only when there are none
    Judgement judgement;                ///< of the archive, or of the inputs when these have findings
    qsizetype fileCount = 0;            ///< without certificates
    QList<InputFiles::LeftOut> leftOut; ///< hidden and temporary files
};

/// Packs the inputs into an archive: images at the top level, program modules in their folders, a certificate for each
/// file. The inputs are judged by JudgeItems; the archive is written to a temporary folder beside the output, judged by
/// JudgeArchive, and renamed to the output when there are no findings. Throws UsageError when a file cannot be read or
/// written, or the output exists and is not to be replaced; Interrupted when a signal has come.
PackResult Pack(const PackOrder& order, Progress& progress);

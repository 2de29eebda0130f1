#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The record of a run: lines of the log that updater-history(1) reads in the journal. Each is a fixed word and a JSON
/// object, on one line whatever the texts contain. What is not known is null in it.

/// How the work on one module ended; docs/reliability.md explains the names that stand in the record.
enum class ModuleOutcome {
    Updated,
    AnotherVersion,
    NoRestart,
    NoVersion,
    TransferFailed,
    CopyFailed,
    FileChanged,
    SkippedNoFile,
    SkippedNoConnection,
    Stopped,
    StoppedAfterWriting
};

/// Whether the run reports a failure because of it.
bool IsFailure(ModuleOutcome outcome);
/// Whether no later module is touched.
bool EndsRun(ModuleOutcome outcome);

struct RunStart
{
    QString program;    ///< version of this program
    QString instrument; ///< its name in the catalogue; empty when none has been found
    std::optional<int> device;
    QString serial; ///< what the last search read; empty when it read none
    int marked = 0; ///< modules that are to be taken
};

struct ModuleRecord
{
    QString name;
    bool isProgram = false;
    QString before; ///< the current version as the table has it when the module's turn comes
    QString offered;
    QString after; ///< the version that was read after the update
    QString file;  ///< name without folders
    std::optional<qint64> size;
    QByteArray sha256; ///< raw bytes, of what the run read; empty when it read no file
    ModuleOutcome outcome = ModuleOutcome::Updated;
    double seconds = 0;
};

struct RunEnd
{
    bool succeeded = false; ///< as the message box says it
    bool stopped = false;
    bool backup = false; ///< made, and completely
    int modules = 0;     ///< recorded of this run
};

/// `run` is the same for all lines of a run and for no other run's.
QString RecordLine(const QString& run, const RunStart& start);
QString RecordLine(const QString& run, const ModuleRecord& module);
QString RecordLine(const QString& run, const RunEnd& end);

#include "UpdateRecord.h"

#include "FirmwareFiles.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonValue Known(const QString& text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

/// A version file's text may end with a line break.
QJsonValue Version(const QString& text)
{
    return text == UnknownVersion || text == NoVersionInName ? QJsonValue() : Known(text.trimmed());
}

template <typename Number>
QJsonValue Known(const std::optional<Number>& number)
{
    return number ? QJsonValue(*number) : QJsonValue();
}

QString NameOf(ModuleOutcome outcome)
{
    switch (outcome) {
    case ModuleOutcome::Updated:
        return "updated";
    case ModuleOutcome::AnotherVersion:
        return "another-version";
    case ModuleOutcome::NoRestart:
        return "no-restart";
    case ModuleOutcome::NoVersion:
        return "no-version";
    case ModuleOutcome::TransferFailed:
        return "transfer-failed";
    case ModuleOutcome::CopyFailed:
        return "copy-failed";
    case ModuleOutcome::FileChanged:
        return "file-changed";
    case ModuleOutcome::SkippedNoFile:
        return "skipped-no-file";
    case ModuleOutcome::SkippedNoConnection:
        return "skipped-no-connection";
    case ModuleOutcome::Stopped:
        return "stopped";
    case ModuleOutcome::StoppedAfterWriting:
        return "stopped-after-writing";
    }
    return {};
}

QString Line(const QString& run, const QString& event, QJsonObject object)
{
    object.insert("run", run);
    object.insert("event", event);
    QString line = "UpdateRecord ";
    // JSON leaves these as they are, but some readers end a line there, and the journal takes such a text for binary.
    for (const QChar c : QString(QJsonDocument(object).toJson(QJsonDocument::Compact))) {
        const bool isControl =
            c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
        line += isControl ? QString("\\u%1").arg(c.unicode(), 4, 16, QChar('0')) : QString(c);
    }
    return line;
}

} // namespace

bool IsFailure(ModuleOutcome outcome)
{
    switch (outcome) {
    case ModuleOutcome::Updated:
    case ModuleOutcome::AnotherVersion:
    case ModuleOutcome::SkippedNoFile:
    case ModuleOutcome::SkippedNoConnection:
        return false;
    default:
        return true;
    }
}

bool EndsRun(ModuleOutcome outcome)
{
    return IsFailure(outcome) && outcome != ModuleOutcome::NoRestart && outcome != ModuleOutcome::NoVersion;
}

QString RecordLine(const QString& run, const RunStart& start)
{
    return Line(run, "start",
                {{"program", start.program},
                 {"instrument", Known(start.instrument)},
                 {"device", Known(start.device)},
                 {"serial", Known(start.serial)},
                 {"marked", start.marked}});
}

QString RecordLine(const QString& run, const ModuleRecord& module)
{
    return Line(run, "module",
                {{"name", Known(module.name)},
                 {"kind", module.isProgram ? "program" : "firmware"},
                 {"before", Version(module.before)},
                 {"offered", Version(module.offered)},
                 {"after", Version(module.after)},
                 {"file", Known(module.file)},
                 {"size", Known(module.size)},
                 {"sha256", Known(QString(module.sha256.toHex()))},
                 {"outcome", NameOf(module.outcome)},
                 {"seconds", module.seconds}});
}

QString RecordLine(const QString& run, const RunEnd& end)
{
    return Line(run, "end",
                {{"outcome", end.succeeded ? "success" : "failure"},
                 {"stopped", end.stopped},
                 {"backup", end.backup},
                 {"modules", end.modules}});
}

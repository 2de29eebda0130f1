#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>

/// Common to all targets. libFuzzer calls this with one input; an input that breaks a property ends the process.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// Prints `property` and ends the process when it does not hold; the stack trace shows the place.
void Require(bool holds, const char* property);

/// Up to `count` lines of a readable input, each without its "\n"; the rest belongs to the last one.
/// Always `count` of them.
QList<QByteArray> Lines(const uint8_t* data, size_t size, qsizetype count);

/// A file in memory that can be opened by a path.
class MemoryFile
{
public:
    explicit MemoryFile(const QByteArray& bytes);
    ~MemoryFile();
    Q_DISABLE_COPY_MOVE(MemoryFile)

    QString Path() const;

private:
    int m_handle = -1;
};

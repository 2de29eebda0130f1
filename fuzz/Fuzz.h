#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>

/// What every target shares. libFuzzer calls this with one input; an input that breaks a property ends the process.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// Ends the process, after telling `property`, when it does not hold; the trace names the place.
void Require(bool holds, const char* property);

/// Up to `count` lines of a readable input, each without its "\n"; what lies behind them belongs to the last one.
/// Always `count` of them.
QList<QByteArray> Lines(const uint8_t* data, size_t size, qsizetype count);

/// Bytes that can be opened by a path and touch no disk.
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

#include "Fuzz.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// Suppress the log of the many inputs, but not the line of a failed assertion.
void Quiet(QtMsgType type, const QMessageLogContext&, const QString& line)
{
    if (type == QtFatalMsg)
        fprintf(stderr, "%s\n", qPrintable(line));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    if (!qEnvironmentVariableIsSet("FUZZ_LOG"))
        qInstallMessageHandler(Quiet);
    // Sets the locale as in the program: names in archives are read in its encoding. It stays to the end.
    new QCoreApplication(*argc, *argv);
    return 0;
}

void Require(bool holds, const char* property)
{
    if (holds)
        return;
    fprintf(stderr, "does not hold: %s\n", property);
    abort();
}

QList<QByteArray> Lines(const uint8_t* data, size_t size, qsizetype count)
{
    QByteArray rest(reinterpret_cast<const char*>(data), qsizetype(size));
    QList<QByteArray> lines;
    while (lines.size() < count - 1) {
        const qsizetype end = rest.indexOf('\n');
        lines.append(end < 0 ? rest : rest.first(end));
        rest = end < 0 ? QByteArray() : rest.mid(end + 1);
    }
    lines.append(rest);
    return lines;
}

MemoryFile::MemoryFile(const QByteArray& bytes)
    : m_handle(memfd_create("input", 0))
{
    Require(m_handle >= 0 && write(m_handle, bytes.constData(), size_t(bytes.size())) == bytes.size(),
            "the machine has memory for the file");
}

MemoryFile::~MemoryFile()
{
    close(m_handle);
}

QString MemoryFile::Path() const
{
    return QString("/proc/self/fd/%1").arg(m_handle);
}

#pragma once

#include "TestData.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

/// Runs the real fwkit in a temporary folder with inputs for it.

struct Outcome
{
    int status = -1;
    QString out;
    QString err;
};

/// The environment of fwkit: temporary files go to `folder`.
inline QProcessEnvironment MakersEnvironment(const QTemporaryDir& folder, const QByteArray& locale)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", locale);
    environment.insert("LANGUAGE", "ru"); // LC_ALL is stronger
    environment.insert("TMPDIR", folder.path());
    return environment;
}

/// Starts fwkit and does not wait for its end.
inline void Start(QProcess& process, const QTemporaryDir& folder, QStringList arguments)
{
    process.setProcessEnvironment(MakersEnvironment(folder, "C.UTF-8"));
    process.start(FWKIT_PROGRAM, arguments.replaceInStrings("@", folder.path()));
    process.waitForStarted();
}

/// "@" in an argument is the folder. `limit`: how large a file may become, in blocks of 512 bytes; -1: any size.
inline Outcome Run(const QTemporaryDir& folder, QStringList arguments, int limit = -1,
                   const QByteArray& locale = "C.UTF-8")
{
    QProcess process;
    QProcessEnvironment environment = MakersEnvironment(folder, locale);
    // The file size limit would truncate the counter files of a coverage build and invalidate every later run's.
    const QTemporaryDir counters;
    environment.insert("GCOV_PREFIX", counters.path());
    environment.insert("GCOV_ERROR_FILE", "/dev/null");
    process.setProcessEnvironment(environment);
    arguments.replaceInStrings("@", folder.path());
    const QString limited =
        QString("ulimit -f %1; exec \"$0\" \"$@\"").arg(limit < 0 ? "unlimited" : QString::number(limit));
    process.start("/bin/sh", QStringList{"-c", limited, FWKIT_PROGRAM} + arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        qFatal("fwkit did not end by itself");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

inline void WriteFiles(const QTemporaryDir& folder, const testdata::Files& files)
{
    for (const auto& [name, content] : files)
        testdata::WriteFile(folder.filePath(name), content);
}

/// Everything in the folder, hidden files too.
inline QStringList Listing(const QTemporaryDir& folder)
{
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// Two boards, and program modules that are correct, conflicting, never copied, or never offered.
inline void WriteCatalogue(const QTemporaryDir& folder)
{
    testdata::WriteCatalogue(
        folder.filePath("updater.json"),
        {testdata::Device("П", 7,
                          {testdata::Board("Один", "T", "127.0.0.1", 1, 1, 0),
                           testdata::Board("Два", "T", "127.0.0.1", 1, 2, 1), testdata::Program("П1", "view", "prog"),
                           testdata::Program("П2", "deep", "prog2"), testdata::Program("П3", "base", "kernel"),
                           testdata::Program("П4", "dot", "p.x")})});
}

/// Two boards and a program, with nothing for a check to find.
inline TDeviceRecord GoodDevice()
{
    return testdata::Device("П", 7,
                            {testdata::Board("Один", "T", "127.0.0.1", 1, 1, 0),
                             testdata::Board("Два", "T", "127.0.0.1", 1, 2, 1),
                             testdata::Program("П1", "view", "prog")});
}

inline testdata::Files Good()
{
    return {{"fw_7_1_0_v2.0.bin", "image"}, {"view/prog", "code"}, {"view/prog.ver", "1.5"}, {"view/lib/l.so", "l"}};
}

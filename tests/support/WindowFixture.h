#pragma once

#include "AppConfig.h"
#include "Instrument.h"
#include "MainWindow.h"
#include "TestData.h"
#include "UiDriver.h"

#include <QTemporaryDir>

#include <memory>

/// The program's window in this process, with short time limits and the catalogue in the folder of the test's
/// executable, and the simulated instruments that a test starts.
class WindowFixture
{
public:
    WindowFixture();
    ~WindowFixture();

    /// Starts a simulated instrument, which this object owns and which runs until it is destroyed.
    Instrument* Play(const TDeviceRecord& device, std::chrono::milliseconds restart = std::chrono::milliseconds(100));
    /// Writes the catalogue and shows the window; the driver's first step waits for the versions.
    void Open(const QList<TDeviceRecord>& devices);

    /// Path of an archive or file in the executable's folder, where the file dialogs open.
    static QString Path(const QString& name);
    QString Cell(int row, int column) const;
    /// The current versions of all rows, separated by spaces.
    QString Versions() const;
    /// "ok", "cancel", "question" or "lighting" by a row's status icon, "" when it shows none.
    QString Status(int row) const;
    bool IsEnabled(const QString& name) const;
    /// "idle" when the controls are in the state required while nothing runs, otherwise what is wrong.
    QString Controls() const;
    QString Text(const QString& name) const;
    /// Packs `files` into new.zip with fwkit, for the current catalogue.
    static void PackArchive(const testdata::Files& files);
    /// The arguments of each call of the replacement for sudo, one line each.
    static QStringList SudoLog();

    /// Steps of `driver` that nearly every test needs. `files` are packed into the archive with fwkit.
    void WaitForVersions();
    void TakeArchive(const testdata::Files& files);
    /// The same for an archive that fwkit would refuse to pack.
    void TakeBadArchive(const testdata::Files& files);
    /// Presses `row`'s file button (column 3) or mark button (column 4).
    void PressRow(int row, int column);

    UiDriver driver;
    std::unique_ptr<MainWindow> window;

private:
    void ChooseArchive();

    std::vector<std::unique_ptr<Instrument>> m_instruments;
};

#pragma once

#include "AppConfig.h"
#include "Instrument.h"
#include "MainWindow.h"
#include "TestData.h"
#include "UiDriver.h"

#include <QTemporaryDir>

#include <memory>

/// The program's window in this process, with the catalogue beside the test's executable and short time
/// limits, and the instruments that a test switches on.
class WindowFixture
{
public:
    WindowFixture();
    ~WindowFixture();

    /// Switches an instrument on. It stays on as long as the panel.
    Instrument* Play(const TDeviceRecord& device, std::chrono::milliseconds restart = std::chrono::milliseconds(100));
    /// Writes the catalogue and shows the window; the driver's first step waits for the versions.
    void Open(const QList<TDeviceRecord>& devices);

    /// Archive or file beside the executable, where the dialogs open.
    static QString Path(const QString& name);
    QString Cell(int row, int column) const;
    /// The current versions of all rows, with spaces between.
    QString Versions() const;
    /// "ok", "cancel", "question" or "lighting" by a row's status icon, "" when it shows none.
    QString Status(int row) const;
    bool IsEnabled(const QString& name) const;
    /// "idle" when the controls are as they must be while nothing runs, otherwise what is wrong.
    QString Controls() const;
    QString Text(const QString& name) const;
    /// Makes new.zip of `files` with the maker's tool, for the catalogue that is there.
    static void PackArchive(const testdata::Files& files);
    /// What the stand-in for sudo was asked, one line each.
    static QStringList SudoLog();

    /// Steps of `driver` that nearly every test shares; `files` become the archive, packed as a maker would.
    void WaitForVersions();
    void TakeArchive(const testdata::Files& files);
    /// One that no maker's tool would pack.
    void TakeBadArchive(const testdata::Files& files);
    /// Presses `row`'s file button (column 3) or mark button (column 4).
    void PressRow(int row, int column);

    UiDriver driver;
    std::unique_ptr<MainWindow> window;

private:
    void ChooseArchive();

    std::vector<std::unique_ptr<Instrument>> m_instruments;
};

#pragma once

#include "AppConfig.h"
#include "FirmwareFiles.h"
#include "ui_MainWindow.h"

#include <QHash>
#include <QIcon>
#include <QMainWindow>

#include <array>
#include <memory>
#include <optional>

class QPushButton;
class TcpModbus;

/// The controller of the whole program. Row i of the module table is board i of the device
/// g_selectedDevice. Long work runs as straight loops on the GUI thread that process events in their waits,
/// so any slot may run in the middle of any loop: after a wait nothing is taken for granted.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    enum ModuleColumn { ColumnName, ColumnCurrent, ColumnNew, ColumnFile, ColumnMark };
    enum class RowStatus { Unknown, None, Ok, Failed, Working };
    enum class ButtonKind { File, Mark };
    /// In the new-version cell, beside the accepted file's path under Qt::UserRole: its SHA-256 when it was accepted.
    static constexpr int DigestRole = Qt::UserRole + 1;
    /// Of status icons and row buttons: the largest that a row holds, to be read at arm's length.
    static constexpr QSize RowIconSize{24, 24};

    /// Builds the window, loads the catalogue beside the executable and starts the first search a moment
    /// later.
    explicit MainWindow(QWidget* parent);

public slots:
    /// Runs the update; pressed again while it runs, asks it to stop.
    void Update();
    /// Lets the operator choose an archive and takes from it what fits the rows.
    void Archive();
    /// Shows the count of image bytes written.
    void onWriteBlock(int index);

public:
    // MainWindow.cpp: the table's rows, the busy state, closing
    /// The push button in the cell's widget; null when there is none. Good until the next event processing.
    QPushButton* GetButton(int row, int column) const;
    bool IsRowMarked(int row) const;
    void EnableRowButtons(bool on);
    void UpdateUpdateButton();
    void SetBusy(bool on);
    /// Shows the icon at once: processes events.
    void SetRowStatus(int row, RowStatus status);
    std::unique_ptr<TcpModbus> CreateLink(int device, int board);

    // MainWindowDiscovery.cpp: which instrument is connected
    void FindMainBoard();

    // MainWindowVersions.cpp: the modules and their versions
    void FillTable(bool announce);
    /// False when the board could not be asked, or when the answer came too late to be the row's.
    bool ReadVersion(int row, bool compare);
    /// Sets the row's buttons by its two versions; no button is enabled while busy.
    void CheckRow(int row);
    QString GetFilePattern(int row, bool* isProgram) const;

    // MainWindowArchive.cpp: firmware from outside
    bool SelectFile(QString& path, const QString& title, const QString& filter, bool inFirmwareFolder);
    /// The caller closes it, which deletes it. Null when the main window was closed meanwhile; that may also delete it
    /// later.
    QWidget* ShowWaitPopup(const QString& text);
    bool CheckCertificate(const QString& path, DigestCache& digests);
    QString VersionFromFileName(const QString& folder, const QString& name, bool isProgram);
    QWidget* MakeRowButton(int row, ButtonKind kind, const QIcon& icon);
    void RowButtonClicked(QPushButton* button, int row, ButtonKind kind);

    // MainWindowUpdate.cpp: the run
    bool WaitReboot(int board);
    bool CopyFolder(int board);
    bool BackupProgram();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // MainWindow.cpp
    const TDeviceRecord& Device() const;
    const TBoardRecord& Board(int row) const;
    QString CellText(int row, int column) const;
    void SetCellText(int row, int column, const QString& text);
    void SetUpTable();
    /// A compiled-in icon, unpacked once: ten rows would hold thirty copies of the same pixels.
    QIcon Icon(const QString& path);
    /// Ends the waits of work that this work starts in the middle of, and frees its connections.
    void AbandonLinks();

    // MainWindowDiscovery.cpp
    void SelectDevice(int device, int board, TcpModbus& link);
    void ShowDevice(bool found);

    // MainWindowVersions.cpp
    void BuildRows();
    void BuildRow(int row);
    void SettleMark(int row);
    void StartFirstSearch();
    bool AskVersion(int row, QString& answer);

    // MainWindowArchive.cpp
    void TakeEntries(const QString& folder, const class FirmwareArchive& archive);
    void TakeFile(int row, const QString& version, const QString& path, const QByteArray& sha256);

    // MainWindowUpdate.cpp
    enum class ModuleResult { Succeeded, Skipped, Failed, FailedAndLast };
    void BeginRun();
    bool UpdateModules();
    ModuleResult UpdateProgram(int row, const TBoardRecord& board, const QString& path);
    ModuleResult UpdateFirmware(int row, const TBoardRecord& board, const QString& path);
    /// The bytes with this digest are those that were accepted: a later archive may have replaced the file by one
    /// that was refused.
    bool IsAccepted(int row, const QByteArray& sha256) const;
    bool WriteImage(int row, const TBoardRecord& board, TcpModbus& link, const QByteArray& image);
    void EndRun();
    void ShowResult(bool allSucceeded);

    Ui::MainWindowClass ui;
    QHash<QString, QIcon> m_icons;
    /// Counters of started work; work that finds its number outdated after a wait gives up.
    int m_searches = 0;
    int m_fillings = 0;
    int m_runs = 0;
    /// FillTable calls in progress: versions are read with the controls enabled, one may start in another.
    int m_readings = 0;
    /// What a row's versions allowed before they were read anew; a mark outlives a reading that changes nothing.
    std::array<std::optional<RowVerdict>, TDeviceRecord::MaxBoards> m_settledVerdicts;
    /// The device whose rows the table holds; -1 before the first filling.
    int m_tableDevice = -1;
};

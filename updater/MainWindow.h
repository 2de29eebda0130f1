#pragma once

#include "AppConfig.h"
#include "FirmwareFiles.h"
#include "UpdateRecord.h"
#include "ui_MainWindow.h"

#include <QHash>
#include <QIcon>
#include <QMainWindow>

#include <array>
#include <memory>
#include <optional>

class QPushButton;
class TcpModbus;

/// The controller of the whole program. Row i of the module table is board i of the device m_tableDevice, which is
/// g_selectedDevice but for the end of a search that has found another device. Long work runs as straight loops on the
/// GUI thread that process events in their waits, so any slot may run in the middle of any loop: after a wait rows,
/// device and flags are read again.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    enum ModuleColumn { ColumnName, ColumnCurrent, ColumnNew, ColumnFile, ColumnMark };
    enum class RowStatus { Unknown, None, Ok, Failed, Working };
    enum class ButtonKind { File, Mark };
    /// In the new-version cell, beside the accepted file's path under Qt::UserRole: its SHA-256 when it was accepted.
    static constexpr int DigestRole = Qt::UserRole + 1;

    /// Builds the window, loads the catalogue beside the executable and starts the first search a moment later.
    explicit MainWindow(QWidget* parent);

    /// The push button in the cell's widget; null when there is none. Good until the next event processing.
    QPushButton* GetButton(int row, int column) const;
    bool IsRowMarked(int row) const;

public slots:
    /// Runs the update; pressed again while it runs, asks it to stop.
    void Update();
    /// Lets the operator choose an archive and takes from it what fits the rows.
    void Archive();
    /// Shows the count of image bytes written.
    void onWriteBlock(int index);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    /// Of status icons and row buttons: the largest that a row holds, to be read at arm's length.
    static constexpr QSize RowIconSize{24, 24};
    static constexpr char ProgramVersion[] = "1.38";
    /// What asking a module for its version came to.
    struct VersionReading
    {
        bool answered = false;
        bool isOffered = false; ///< the table has the same text in both columns now
        QString version;        ///< empty when none was read
    };

    // MainWindow.cpp: the table's cells and buttons, the busy state, closing; also closeEvent, onWriteBlock
    void SetUpTable();
    void StartFirstSearch();
    const TDeviceRecord& Device() const;
    const TBoardRecord& Board(int row) const;
    QString CellText(int row, int column) const;
    void SetCellText(int row, int column, const QString& text);
    QIcon Icon(const QString& path);
    void SetMark(QPushButton& button, bool marked);
    void EnableRowButtons(bool on);
    void UpdateUpdateButton();
    void SetBusy(bool on);
    /// Shows the icon at once: processes events.
    void SetRowStatus(int row, RowStatus status);
    std::unique_ptr<TcpModbus> CreateLink(int device, int board);
    int StartWork();

    // MainWindowDiscovery.cpp: which instrument is connected
    void FindMainBoard();
    void SelectDevice(int device, int board, TcpModbus& link);
    void ShowDevice(bool found);

    // MainWindowVersions.cpp: the modules and their versions
    /// `announce`: label_Update says that versions are read. False when a newer reading has rebuilt the rows, or the
    /// window was closed. (Cancelling a run does not end a reading: EndRun clears the stop first.)
    bool FillTable(bool announce);
    void BuildRows();
    void BuildRow(int row);
    bool ReadRow(int row, bool announce, int reading);
    /// `compare`, after a write: sets tick or cross by the new version, and the buttons. A program module's version
    /// file is read, which counts as an answer; a message box shows why it cannot be. Firmware: not answered when the
    /// board could not be asked or did not answer, or when newer work has started meanwhile. A version that is then
    /// read is discarded.
    VersionReading ReadVersion(int row, bool compare);
    bool AskVersion(int row, QString& answer);
    /// Sets the row's two buttons by its two versions. While busy it enables none.
    void CheckRow(int row);
    void RestoreMark(int row);
    QString GetFilePattern(int row, bool* isProgram) const;

    // MainWindowArchive.cpp: files from outside, and the row buttons; also Archive
    void TakeEntries(const QString& folder, const class FirmwareArchive& archive);
    void TakeFile(int row, const QString& version, const QString& path, const QByteArray& sha256);
    void RowButtonClicked(QPushButton* button, int row, ButtonKind kind);
    QWidget* MakeRowButton(int row, ButtonKind kind, const QIcon& icon);
    bool CheckCertificate(const QString& path, DigestCache& digests);
    QString VersionFromFileName(const QString& folder, const QString& name, bool isProgram);
    bool SelectFile(QString& path, const QString& title, const QString& filter, bool inFirmwareFolder);
    /// The caller closes the pop-up, which deletes it. Null when the main window was closed meanwhile; closing the main
    /// window later may delete the pop-up too.
    QWidget* ShowWaitPopup(const QString& text);

    // MainWindowUpdate.cpp: the run; also Update
    void BeginRun();
    void RecordStart(const QString& run);
    bool IsToBeUpdated(int row) const;
    /// `recorded` counts the modules that it recorded.
    bool UpdateModules(const QString& run, int& recorded);
    ModuleOutcome UpdateModule(int row, const QString& run);
    /// Both complete the module's record, except for its outcome.
    ModuleOutcome UpdateProgram(int row, const TBoardRecord& board, const QString& path, ModuleRecord& record);
    ModuleOutcome UpdateFirmware(int row, const TBoardRecord& board, const QString& path, ModuleRecord& record);
    bool IsAccepted(int row, const QByteArray& sha256) const;
    bool WriteImage(int row, const TBoardRecord& board, TcpModbus& link, const QByteArray& image);
    bool WaitReboot(int board);
    bool CopyFolder(int board);
    bool BackupProgram();
    void EndRun();
    void ShowResult(bool allSucceeded);

    Ui::MainWindowClass ui;
    QHash<QString, QIcon> m_icons;
    /// Searches, readings of the table and runs are numbered in the order in which they start. A search or a run may
    /// start in a wait of a reading, whose buttons are enabled; nothing starts during a search or a run. After the wait
    /// the reading sees that m_started has changed and discards the answer.
    int m_started = 0;
    /// Number of the reading that built the table's rows. Work on rows ends when a newer reading has rebuilt them.
    int m_rowsBuiltBy = 0;
    /// A reading is in progress. It leaves the controls enabled, so g_busy does not say it.
    bool m_isReading = false;
    /// Serial number that the last search read; empty when it read none. g_deviceSerial may be an earlier search's.
    QString m_serial;
    /// The device whose rows the table holds; -1 before the first reading.
    int m_tableDevice = -1;
    /// What a row's versions allowed before they were read anew: a mark stays through a reading that changes nothing.
    /// nullopt for a row that has taken a file since, or that is another instrument's.
    std::array<std::optional<RowVerdict>, TDeviceRecord::MaxBoards> m_previousVerdicts;
};

#include "MainWindow.h"

#include "Answers.h"
#include "AppState.h"
#include "MessageBoxes.h"
#include "TcpModbus.h"
#include "TimeLimits.h"
#include "Util.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QEventLoopLocker>
#include <QFile>
#include <QPushButton>
#include <QThread>

namespace {

/// Largest block request: 4 bytes of block size and 240 of image. With length, command word and two parameters (8
/// bytes) that fills the 252 data bytes of a Modbus PDU.
constexpr quint32 BlockLimit = 244;
constexpr int PollAttempts = 10;

std::chrono::milliseconds RestartPause(const TBoardRecord& board)
{
    const bool slow = board.Type == "MV-Panel" || board.Type.contains("MVPROBER");
    return slow ? g_timeLimits.slowRestartPause : g_timeLimits.restartPause;
}

/// Blocks without processing events: an instrument that is starting must not be asked anything.
void Sleep(std::chrono::milliseconds duration)
{
    QThread::msleep(static_cast<unsigned long>(duration.count()));
}

QByteArray ReadImage(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray Sha256(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256);
}

} // namespace

void MainWindow::Update()
{
    if (g_busy) {
        if (!g_stopRequested) {
            g_stopRequested = true;
            ui.buttonUpdate->setEnabled(false);
        }
        return;
    }
    // Closing the last window would quit the program, and every message box shown later would return at once.
    const QEventLoopLocker programStays;
    BeginRun();
    bool allSucceeded = UpdateModules();
    if (allSucceeded) {
        ui.label_Update->setText("Создаю резервную копию...");
        QCoreApplication::processEvents();
        // A stop is seen up to here: a stopped run makes no backup.
        allSucceeded = !g_stopRequested;
        if (allSucceeded)
            BackupProgram();
    }
    EndRun();
    ShowResult(allSucceeded);
    if (g_updateAborted) {
        // The run may have started in a wait of a reading, which must end too.
        g_stopRequested = true;
        close();
    }
}

void MainWindow::BeginRun()
{
    StartWork();
    g_stopRequested = false;
    SetBusy(true);
    ui.buttonUpdate->setText("Отмена");
    ui.buttonUpdate->setEnabled(true);
    for (int row = 0; row < ui.tableWidget->rowCount(); ++row)
        SetRowStatus(row, RowStatus::None);
    ui.label_Update->show();
    ui.progressBar->show();
    ui.label_Update->setText(QString());
}

void MainWindow::EndRun()
{
    g_stopRequested = false;
    ui.buttonUpdate->setText("Запустить\nобновление");
    ui.label_Update->hide();
    ui.progressBar->hide();
    // Enables all row buttons, also those of a board that did not answer: that is how it is tried again.
    SetBusy(false);
}

void MainWindow::ShowResult(bool allSucceeded)
{
    if (!allSucceeded) {
        ShowAlert(this, "Информация", "Произошла ошибка обновления!", "OK");
        return;
    }
    const int answer = AskYesNo(this, "Информация", "Все модули успешно обновлены!\nПрибор необходимо перезагрузить");
    // A message box that ends because the program quits returns 0: only the button itself reboots the panel.
    if (answer == QMessageBox::Yes)
        Util::BashCommand("sudo reboot");
}

bool MainWindow::UpdateModules()
{
    bool allSucceeded = true;
    for (int row = 0; row < Device().BoardCount; ++row) {
        // A stop ends the run at the current module, also when that module's step looks like a silent skip.
        if (g_stopRequested)
            return false;
        const QTableWidgetItem* offered = ui.tableWidget->item(row, ColumnNew);
        if (!offered || offered->text().isEmpty() || !IsRowMarked(row))
            continue;
        const QString path = offered->data(Qt::UserRole).toString();
        const TBoardRecord& board = Board(row);
        const ModuleResult result =
            board.IsProgram() ? UpdateProgram(row, board, path) : UpdateFirmware(row, board, path);
        if (result == ModuleResult::Failed || result == ModuleResult::FailedAndLast)
            allSucceeded = false;
        if (result == ModuleResult::FailedAndLast)
            break;
    }
    return allSucceeded && !g_stopRequested;
}

MainWindow::ModuleResult MainWindow::UpdateProgram(int row, const TBoardRecord& board, const QString& path)
{
    ui.label_Update->setText(board.Name + ". Обновление...");
    SetRowStatus(row, RowStatus::Working);
    const FileDigest digest = ReadDigest(path);
    if (g_stopRequested || (digest.opened && !IsAccepted(row, digest.sha256)) || !CopyFolder(row)) {
        SetRowStatus(row, RowStatus::Failed);
        return ModuleResult::FailedAndLast;
    }
    ReadVersion(row, true);
    CheckRow(row);
    SetRowStatus(row, RowStatus::Ok);
    return ModuleResult::Succeeded;
}

MainWindow::ModuleResult MainWindow::UpdateFirmware(int row, const TBoardRecord& board, const QString& path)
{
    const QByteArray image = ReadImage(path);
    if (image.isEmpty())
        return ModuleResult::Skipped;
    if (!IsAccepted(row, Sha256(image))) {
        SetRowStatus(row, RowStatus::Failed);
        return ModuleResult::FailedAndLast;
    }
    ui.progressBar->reset();
    ui.progressBar->setMaximum(int(image.size()));
    // The poll only lets an instrument that is still starting come up; its result does not count. A board that sits in
    // its boot loader may answer nothing, or another type, and is exactly the one that must be written.
    WaitReboot(row);
    {
        const std::unique_ptr<TcpModbus> link = CreateLink(g_selectedDevice, row);
        if (!link->Connect())
            return ModuleResult::Skipped;
        if (!WriteImage(row, board, *link, image)) {
            SetRowStatus(row, RowStatus::Failed);
            return ModuleResult::FailedAndLast;
        }
        ui.label_Update->setText(board.Name + ". Ожидание перезагрузки...");
    }
    QCoreApplication::processEvents();
    Sleep(RestartPause(board));
    if (!WaitReboot(row)) {
        SetRowStatus(row, RowStatus::Failed);
        return ModuleResult::Failed;
    }
    return ReadVersion(row, true) ? ModuleResult::Succeeded : ModuleResult::Failed;
}

/// Whether the bytes with this digest are those whose certificate was right: a later archive may have replaced the file
/// by one that was refused.
bool MainWindow::IsAccepted(int row, const QByteArray& sha256) const
{
    const QTableWidgetItem* offered = ui.tableWidget->item(row, ColumnNew);
    return offered && offered->data(DigestRole).toByteArray() == sha256;
}

bool MainWindow::WriteImage(int row, const TBoardRecord& board, TcpModbus& link, const QByteArray& image)
{
    connect(&link, &TcpModbus::onWriteBlock, this, &MainWindow::onWriteBlock);
    SetRowStatus(row, RowStatus::Working);
    ui.label_Update->setText(board.Name + ". Обновление...");
    // After a stop no first block is sent: a board with half an image does not start again.
    return !g_stopRequested && link.WriteFirmware(image, board.IdCPU, BlockLimit);
}

bool MainWindow::WaitReboot(int board)
{
    const TBoardRecord& record = Board(board);
    const std::unique_ptr<TcpModbus> link = CreateLink(g_selectedDevice, board);
    for (int attempt = 0; attempt < PollAttempts; ++attempt) {
        qDebug() << "WaitReboot" << attempt;
        QString answer;
        const bool connected = link->Connect();
        if (connected && link->StrCommand("DEVICETYPE ?;", answer)) {
            const QString type = DeviceTypeIn(answer);
            qDebug().noquote() << "WaitReboot" << answer << type;
            if (type == record.Type)
                return true;
        } else if (connected) {
            link->HangUp();
        }
        Sleep(g_timeLimits.pollPause);
    }
    return false;
}

bool MainWindow::CopyFolder(int board)
{
    const TBoardRecord& record = Board(board);
    const QString programFolder = QCoreApplication::applicationDirPath();
    const QString source = ProgramSource(record);
    if (!Util::CopyPath(source, programFolder)) {
        qDebug().noquote().nospace() << "Cannot copy " << source << " to " << programFolder << "\n";
        return false;
    }
    return Util::BashCommand(MakeExecutableCommand(programFolder, record));
}

bool MainWindow::BackupProgram()
{
    const QString programFolder = QCoreApplication::applicationDirPath();
    const QString backup = QDir::cleanPath(programFolder + "/update.old");
    // The copy makes sub-folders only, so a program folder without any would have nowhere to go.
    return QDir().mkpath(backup) && Util::CopyPath(programFolder, backup);
}

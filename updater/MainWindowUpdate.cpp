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
#include <QElapsedTimer>
#include <QEventLoopLocker>
#include <QFile>
#include <QPushButton>
#include <QThread>
#include <QUuid>

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
    const QString run = QUuid::createUuid().toString(QUuid::WithoutBraces);
    RecordStart(run);
    RunEnd end;
    bool allSucceeded = UpdateModules(run, end.modules);
    if (allSucceeded) {
        ui.label_Update->setText("Создаю резервную копию...");
        QCoreApplication::processEvents();
        // A stop is seen up to here: a stopped run makes no backup.
        allSucceeded = !g_stopRequested;
        if (allSucceeded)
            end.backup = BackupProgram();
    }
    end.succeeded = allSucceeded;
    end.stopped = g_stopRequested;
    qInfo().noquote() << RecordLine(run, end);
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
    // Enables all row buttons, also those of a board that did not answer: that is how it is tried again. (When the run
    // started inside a reading, the reading's end sets them by the versions once more.)
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

void MainWindow::RecordStart(const QString& run)
{
    RunStart start{.program = ProgramVersion, .instrument = {}, .device = {}, .serial = m_serial};
    if (g_deviceFound) {
        start.instrument = Device().Name;
        start.device = Device().IdDev;
    }
    for (int row = 0; row < Device().BoardCount; ++row)
        start.marked += IsToBeUpdated(row);
    qInfo().noquote() << RecordLine(run, start);
}

bool MainWindow::IsToBeUpdated(int row) const
{
    return !CellText(row, ColumnNew).isEmpty() && IsRowMarked(row);
}

bool MainWindow::UpdateModules(const QString& run, int& recorded)
{
    bool allSucceeded = true;
    for (int row = 0; row < Device().BoardCount; ++row) {
        // A stop ends the run at the current module, also when that module's step looks like a silent skip.
        if (g_stopRequested)
            return false;
        if (!IsToBeUpdated(row))
            continue;
        const ModuleOutcome outcome = UpdateModule(row, run);
        ++recorded;
        if (IsFailure(outcome))
            allSucceeded = false;
        if (EndsRun(outcome))
            break;
    }
    return allSucceeded && !g_stopRequested;
}

ModuleOutcome MainWindow::UpdateModule(int row, const QString& run)
{
    const TBoardRecord& board = Board(row);
    const QString path = ui.tableWidget->item(row, ColumnNew)->data(Qt::UserRole).toString();
    ModuleRecord record{.name = board.Name,
                        .isProgram = board.IsProgram(),
                        .before = CellText(row, ColumnCurrent),
                        .offered = CellText(row, ColumnNew),
                        .after = {},
                        .file = FileNameOf(path),
                        .size = {},
                        .sha256 = {}};
    QElapsedTimer clock;
    clock.start();
    record.outcome =
        board.IsProgram() ? UpdateProgram(row, board, path, record) : UpdateFirmware(row, board, path, record);
    record.seconds = double(clock.elapsed()) / 1000;
    qInfo().noquote() << RecordLine(run, record);
    return record.outcome;
}

ModuleOutcome MainWindow::UpdateProgram(int row, const TBoardRecord& board, const QString& path, ModuleRecord& record)
{
    ui.label_Update->setText(board.Name + ". Обновление...");
    SetRowStatus(row, RowStatus::Working);
    const FileDigest digest = ReadDigest(path);
    record.sha256 = digest.sha256;
    if (!digest.sha256.isEmpty())
        record.size = digest.size;
    ModuleOutcome outcome = ModuleOutcome::Updated;
    if (g_stopRequested)
        outcome = ModuleOutcome::Stopped;
    else if (digest.opened && !IsAccepted(row, digest.sha256))
        outcome = ModuleOutcome::FileChanged;
    else if (!CopyFolder(row))
        outcome = ModuleOutcome::CopyFailed;
    if (outcome != ModuleOutcome::Updated) {
        SetRowStatus(row, RowStatus::Failed);
        return outcome;
    }
    record.after = ReadVersion(row, true).version;
    CheckRow(row);
    SetRowStatus(row, RowStatus::Ok);
    return outcome;
}

ModuleOutcome MainWindow::UpdateFirmware(int row, const TBoardRecord& board, const QString& path, ModuleRecord& record)
{
    const QByteArray image = ReadImage(path);
    if (image.isEmpty())
        return ModuleOutcome::SkippedNoFile;
    record.size = image.size();
    record.sha256 = Sha256(image);
    if (!IsAccepted(row, record.sha256)) {
        SetRowStatus(row, RowStatus::Failed);
        return ModuleOutcome::FileChanged;
    }
    ui.progressBar->reset();
    ui.progressBar->setMaximum(int(image.size()));
    // The poll only lets an instrument that is still starting come up; its result does not count. A board that sits in
    // its boot loader may answer nothing, or another type, and is exactly the one that must be written.
    WaitReboot(row);
    {
        const std::unique_ptr<TcpModbus> link = CreateLink(g_selectedDevice, row);
        if (!link->Connect())
            return g_stopRequested ? ModuleOutcome::Stopped : ModuleOutcome::SkippedNoConnection;
        if (!WriteImage(row, board, *link, image)) {
            const bool isStopped = g_stopRequested;
            SetRowStatus(row, RowStatus::Failed);
            return isStopped ? ModuleOutcome::Stopped : ModuleOutcome::TransferFailed;
        }
        ui.label_Update->setText(board.Name + ". Ожидание перезагрузки...");
    }
    QCoreApplication::processEvents();
    Sleep(RestartPause(board));
    if (!WaitReboot(row)) {
        const bool isStopped = g_stopRequested;
        SetRowStatus(row, RowStatus::Failed);
        return isStopped ? ModuleOutcome::StoppedAfterWriting : ModuleOutcome::NoRestart;
    }
    const VersionReading reading = ReadVersion(row, true);
    record.after = reading.version;
    if (!reading.answered)
        return g_stopRequested ? ModuleOutcome::StoppedAfterWriting : ModuleOutcome::NoVersion;
    return reading.isOffered ? ModuleOutcome::Updated : ModuleOutcome::AnotherVersion;
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

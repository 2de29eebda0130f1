#include "MainWindow.h"

#include "Answers.h"
#include "AppState.h"
#include "TcpModbus.h"
#include "Util.h"

#include <QPushButton>
#include <QScopedValueRollback>

namespace {

bool HasFailed(const QTableWidgetItem* item)
{
    return item && item->data(Qt::UserRole) == int(MainWindow::RowStatus::Failed);
}

} // namespace

bool MainWindow::FillTable(bool announce)
{
    const QScopedValueRollback<bool> isReading(m_isReading, true);
    const int reading = m_rowsBuiltBy = StartWork();
    BuildRows();
    for (int row = 0; row < ui.tableWidget->rowCount(); ++row) {
        if (!ReadRow(row, announce, reading))
            return false;
    }
    for (int row = 0; row < ui.tableWidget->rowCount(); ++row)
        RestoreMark(row);
    UpdateUpdateButton();
    return true;
}

/// Reads the row's version for the reading with the number `reading`; false when FillTable is to end.
bool MainWindow::ReadRow(int row, bool announce, int reading)
{
    // A run may start while this row's answer is awaited. It reads the versions of the modules that it updates; the
    // answer to this reading is then discarded. A row that is still empty, because the run left it out or failed before
    // it asked for the version, is asked again: one more turn for each such run. A search that starts meanwhile
    // rebuilds the rows, found or not, and ends this reading.
    while (CellText(row, ColumnCurrent).isEmpty()) {
        const int started = m_started;
        if (announce) {
            ui.label_Update->setVisible(true);
            ui.label_Update->setText("Считываю версии модулей...");
        }
        const bool failed = HasFailed(ui.tableWidget->item(row, ColumnName));
        ReadVersion(row, false);
        // A run that started inside this reading left a cross here (BuildRow removed all older ones), and ReadVersion
        // has just removed it: put it back. If a run came during this very call, the icon is already that run's.
        if (failed && started == m_started)
            SetRowStatus(row, RowStatus::Failed);
        if (reading != m_rowsBuiltBy || g_stopRequested)
            return false;
        // Asked without newer work in between: the cell stays empty if the module gave no version.
        if (started == m_started)
            break;
    }
    return true;
}

/// CheckRow, but a mark that the operator set or took off stays while the versions allow the same as before.
void MainWindow::RestoreMark(int row)
{
    const bool wasMarked = IsRowMarked(row);
    const RowVerdict verdict = JudgeRow(CellText(row, ColumnCurrent), CellText(row, ColumnNew));
    CheckRow(row);
    if (verdict.valid && m_previousVerdicts.at(row) == verdict)
        SetMark(*GetButton(row, ColumnMark), wasMarked);
}

void MainWindow::BuildRows()
{
    // A file chosen for one instrument must never reach a board of another.
    if (m_tableDevice != g_selectedDevice) {
        ui.tableWidget->setRowCount(0);
        m_previousVerdicts = {};
    }
    m_tableDevice = g_selectedDevice;
    ui.tableWidget->setRowCount(Device().BoardCount);
    for (int row = 0; row < Device().BoardCount; ++row)
        BuildRow(row);
    UpdateUpdateButton();
}

void MainWindow::BuildRow(int row)
{
    QTableWidget* table = ui.tableWidget;
    // An empty cell: the last reading did not get here, or the module gave no version. The older verdict is kept.
    if (!CellText(row, ColumnCurrent).isEmpty())
        m_previousVerdicts.at(row) = JudgeRow(CellText(row, ColumnCurrent), CellText(row, ColumnNew));
    auto* name = new QTableWidgetItem(Board(row).Name);
    // Grey until the row gets its first icon, which comes with an item of its own.
    name->setFlags(Qt::ItemIsSelectable | Qt::ItemNeverHasChildren);
    table->setItem(row, ColumnName, name);
    table->setItem(row, ColumnCurrent, new QTableWidgetItem);
    if (!table->item(row, ColumnNew))
        table->setItem(row, ColumnNew, new QTableWidgetItem);
    for (const int column : {ColumnCurrent, ColumnNew})
        table->item(row, column)->setTextAlignment(Qt::AlignCenter);
    if (!table->cellWidget(row, ColumnFile))
        table->setCellWidget(row, ColumnFile, MakeRowButton(row, ButtonKind::File, Icon(":/icons/onebit_13_open.png")));
    if (!table->cellWidget(row, ColumnMark))
        table->setCellWidget(row, ColumnMark, MakeRowButton(row, ButtonKind::Mark, Icon(":/icons/onebit_34_ok.png")));
}

MainWindow::VersionReading MainWindow::ReadVersion(int row, bool compare)
{
    const auto outdated = [this, started = m_started] { return started != m_started; };
    const TBoardRecord& board = Board(row);
    if (board.IsProgram()) {
        const QString version = Util::GetVersion(this, QCoreApplication::applicationDirPath(), board.File, true);
        if (!outdated())
            SetCellText(row, ColumnCurrent, version);
        return {.answered = true, .version = version};
    }
    if (!g_deviceFound) {
        SetCellText(row, ColumnCurrent, UnknownVersion);
        return {};
    }
    SetRowStatus(row, RowStatus::Unknown);
    QString answer;
    const bool answered = !outdated() && AskVersion(row, answer);
    if (outdated())
        return {};
    if (!answered) {
        SetCellText(row, ColumnCurrent, UnknownVersion);
        SetRowStatus(row, RowStatus::Failed);
        return {};
    }
    const std::optional<QString> version = VersionIn(answer, board.IdCPU);
    if (version)
        SetCellText(row, ColumnCurrent, *version);
    if (!compare) {
        SetRowStatus(row, RowStatus::None);
        return {.answered = true, .version = version.value_or(QString())};
    }
    // Compared as texts here and as numbers in CheckRow: the board must answer exactly the version in the file's name.
    const bool same = CellText(row, ColumnCurrent) == CellText(row, ColumnNew);
    SetRowStatus(row, same ? RowStatus::Ok : RowStatus::Failed);
    CheckRow(row);
    return {.answered = true, .isOffered = same, .version = version.value_or(QString())};
}

bool MainWindow::AskVersion(int row, QString& answer)
{
    const std::unique_ptr<TcpModbus> link = CreateLink(g_selectedDevice, row);
    return link->Connect() && link->StrCommand("VER ?;", answer);
}

void MainWindow::CheckRow(int row)
{
    const RowVerdict verdict = JudgeRow(CellText(row, ColumnCurrent), CellText(row, ColumnNew));
    if (QPushButton* mark = GetButton(row, ColumnMark)) {
        mark->setEnabled(verdict.valid && !g_busy);
        SetMark(*mark, !verdict.upToDate);
    }
    if (QPushButton* file = GetButton(row, ColumnFile))
        file->setEnabled(verdict.takesFile && !g_busy);
}

QString MainWindow::GetFilePattern(int row, bool* isProgram) const
{
    *isProgram = Board(row).IsProgram();
    return FilePattern(Device(), Board(row));
}

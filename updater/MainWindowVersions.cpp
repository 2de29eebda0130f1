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

void MainWindow::FillTable(bool announce)
{
    const QScopedValueRollback<int> reading(m_readings, m_readings + 1);
    const int filling = ++m_fillings;
    const auto gaveUp = [&] { return filling != m_fillings || g_stopRequested; };
    BuildRows();
    const int rows = ui.tableWidget->rowCount();
    for (int row = 0; row < rows; ++row) {
        // A run that was started in the middle has read the rows it wrote; the one it interrupted is asked
        // again, since an answer from before the run says nothing any more.
        for (int runs = -1; runs != m_runs && CellText(row, ColumnCurrent).isEmpty();) {
            runs = m_runs;
            if (announce) {
                ui.label_Update->setVisible(true);
                ui.label_Update->setText("Считываю версии модулей...");
            }
            const bool failed = HasFailed(ui.tableWidget->item(row, ColumnName));
            ReadVersion(row, false);
            if (gaveUp())
                return;
            // The run's verdict on the row is not for a reading to wipe off.
            if (failed)
                SetRowStatus(row, RowStatus::Failed);
        }
    }
    for (int row = 0; row < rows; ++row)
        SettleMark(row);
    UpdateUpdateButton();
}

void MainWindow::SettleMark(int row)
{
    const QPushButton* mark = GetButton(row, ColumnMark);
    const bool marked = mark && !mark->isChecked();
    const RowVerdict verdict = JudgeRow(CellText(row, ColumnCurrent), CellText(row, ColumnNew));
    const bool keeps = verdict.valid && m_settledVerdicts.at(row) == verdict;
    CheckRow(row);
    if (keeps && marked != IsRowMarked(row)) {
        GetButton(row, ColumnMark)->setChecked(!marked);
        GetButton(row, ColumnMark)->setIcon(marked ? Icon(":/icons/onebit_34_ok.png") : QIcon());
    }
}

void MainWindow::BuildRows()
{
    // What was chosen for one instrument must never reach a board of another.
    if (m_tableDevice != g_selectedDevice) {
        ui.tableWidget->setRowCount(0);
        m_settledVerdicts = {};
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
    // Empty where a reading was interrupted: what the reading before it had found still counts.
    if (!CellText(row, ColumnCurrent).isEmpty())
        m_settledVerdicts.at(row) = JudgeRow(CellText(row, ColumnCurrent), CellText(row, ColumnNew));
    auto* name = new QTableWidgetItem(Board(row).Name);
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

bool MainWindow::ReadVersion(int row, bool compare)
{
    const int filling = m_fillings;
    const int runs = m_runs;
    const int searches = m_searches;
    const auto outdated = [&] { return filling != m_fillings || runs != m_runs || searches != m_searches; };
    const TBoardRecord& board = Board(row);
    if (board.IsProgram()) {
        const QString version = Util::GetVersion(this, QCoreApplication::applicationDirPath(), board.File, true);
        if (!outdated())
            SetCellText(row, ColumnCurrent, version);
        return true;
    }
    if (!g_deviceFound) {
        SetCellText(row, ColumnCurrent, UnknownVersion);
        return false;
    }
    SetRowStatus(row, RowStatus::Unknown);
    QString answer;
    const bool answered = !outdated() && AskVersion(row, answer);
    if (outdated())
        return false;
    if (!answered) {
        SetCellText(row, ColumnCurrent, UnknownVersion);
        SetRowStatus(row, RowStatus::Failed);
        return false;
    }
    if (const std::optional<QString> version = VersionIn(answer, board.IdCPU))
        SetCellText(row, ColumnCurrent, *version);
    if (!compare) {
        SetRowStatus(row, RowStatus::None);
        return true;
    }
    // As texts here, as numbers in CheckRow: the board must say exactly what the file's name says.
    const bool same = CellText(row, ColumnCurrent) == CellText(row, ColumnNew);
    SetRowStatus(row, same ? RowStatus::Ok : RowStatus::Failed);
    CheckRow(row);
    return true;
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
        mark->setChecked(verdict.upToDate);
        mark->setIcon(verdict.upToDate ? QIcon() : Icon(":/icons/onebit_34_ok.png"));
    }
    if (QPushButton* file = GetButton(row, ColumnFile))
        file->setEnabled(verdict.takesFile && !g_busy);
}

QString MainWindow::GetFilePattern(int row, bool* isProgram) const
{
    *isProgram = Board(row).IsProgram();
    return FilePattern(Device(), Board(row));
}

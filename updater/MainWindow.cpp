#include "MainWindow.h"

#include "AppState.h"
#include "FingerUse.h"
#include "TcpModbus.h"
#include "TimeLimits.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QHeaderView>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr char HeaderStyle[] =
    "QHeaderView { height: 40px; border-top: 1px solid #ecedef; border-bottom: 1px solid #b1b1b5; }"
    "QHeaderView::section:horizontal { height: 40px; border-style: none; border-left: 1px solid #ecedef; "
    "border-right: 1px solid #b1b1b5;background-color: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, "
    "stop: 1 #EBEBEB, stop: 0 #FFFFFF); }";

QString IconPath(MainWindow::RowStatus status)
{
    switch (status) {
    case MainWindow::RowStatus::Unknown:
        return ":/icons/onebit_37_question.png";
    case MainWindow::RowStatus::None:
        return {};
    case MainWindow::RowStatus::Ok:
        return ":/icons/onebit_34_ok.png";
    case MainWindow::RowStatus::Failed:
        return ":/icons/onebit_33_cancel.png";
    case MainWindow::RowStatus::Working:
        return ":/icons/onebit_20_lighting.png";
    }
    return {};
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
{
    ui.setupUi(this);
    connect(ui.buttonClose, &QPushButton::clicked, this, &QWidget::close);
    ui.buttonUpdate->setEnabled(false);
    connect(ui.buttonUpdate, &QPushButton::clicked, this, &MainWindow::Update);
    connect(ui.buttonArchive, &QPushButton::clicked, this, &MainWindow::Archive);
    connect(ui.button_DeviceType, &QPushButton::clicked, this, &MainWindow::FindMainBoard);

    g_appConfig.LoadFromFile(QDir(QCoreApplication::applicationDirPath()).filePath("updater.json"));

    SetUpTable();
    ui.progressBar->reset();
    ui.label_Update->setText(QString());
    // Shown during a run; the label also by a reading of versions, which leaves it there without a text.
    ui.progressBar->hide();
    ui.label_Update->hide();

    setWindowTitle(QString("Обновление ПО приборов, версия ") + ProgramVersion);
    ui.label_Version->setText(QString("v") + ProgramVersion);

    StartFirstSearch();
}

void MainWindow::StartFirstSearch()
{
    QTimer::singleShot(g_timeLimits.firstSearch, this, [this] {
        // A search that starts inside a dialog's event loop would keep the dialog's exec() from returning. The main
        // window is window-modal itself.
        const QWidget* modal = QApplication::activeModalWidget();
        if (modal && modal != this)
            StartFirstSearch();
        else if (m_started == 0) // otherwise the operator has already started a search
            FindMainBoard();
    });
}

void MainWindow::SetUpTable()
{
    QTableWidget* table = ui.tableWidget;
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setFocusPolicy(Qt::NoFocus);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->verticalHeader()->setVisible(false);
    QHeaderView* header = table->horizontalHeader();
    header->setSectionResizeMode(ColumnName, QHeaderView::Stretch);
    for (const int column : {ColumnCurrent, ColumnNew, ColumnFile, ColumnMark})
        header->setSectionResizeMode(column, QHeaderView::Fixed);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    for (const int column : {ColumnCurrent, ColumnNew, ColumnFile, ColumnMark})
        table->setColumnWidth(column, 90);
    table->setIconSize(RowIconSize);
    if (header->styleSheet().isEmpty())
        header->setStyleSheet(HeaderStyle);
    // The longest word must not touch the edges of its column.
    QFont headerFont = header->font();
    headerFont.setPointSize(12);
    header->setFont(headerFont);
    table->verticalHeader()->setDefaultSectionSize(36);
    ScrollByFinger(*table);
}

const TDeviceRecord& MainWindow::Device() const
{
    return g_appConfig.Devices.at(g_selectedDevice);
}

const TBoardRecord& MainWindow::Board(int row) const
{
    return Device().Boards.at(row);
}

QString MainWindow::CellText(int row, int column) const
{
    const QTableWidgetItem* item = ui.tableWidget->item(row, column);
    return item ? item->text() : QString();
}

void MainWindow::SetCellText(int row, int column, const QString& text)
{
    if (QTableWidgetItem* item = ui.tableWidget->item(row, column))
        item->setText(text);
}

/// Loads each icon once: ten rows would hold thirty copies of the same pixels.
QIcon MainWindow::Icon(const QString& path)
{
    const auto known = m_icons.constFind(path);
    return known != m_icons.cend() ? *known : *m_icons.insert(path, QIcon(path));
}

QPushButton* MainWindow::GetButton(int row, int column) const
{
    const QWidget* cell = ui.tableWidget->cellWidget(row, column);
    if (!cell)
        return nullptr;
    for (QObject* child : cell->children()) {
        if (auto* button = qobject_cast<QPushButton*>(child))
            return button;
    }
    return nullptr;
}

bool MainWindow::IsRowMarked(int row) const
{
    const QPushButton* button = GetButton(row, ColumnMark);
    return button && !button->isChecked();
}

void MainWindow::SetMark(QPushButton& button, bool marked)
{
    button.setChecked(!marked);
    button.setIcon(marked ? Icon(":/icons/onebit_34_ok.png") : QIcon());
}

void MainWindow::EnableRowButtons(bool on)
{
    for (int row = 0; row < ui.tableWidget->rowCount(); ++row) {
        for (const int column : {ColumnFile, ColumnMark}) {
            if (QPushButton* button = GetButton(row, column))
                button->setEnabled(on);
        }
    }
}

void MainWindow::UpdateUpdateButton()
{
    bool marked = false;
    for (int row = 0; row < ui.tableWidget->rowCount() && !marked; ++row)
        marked = IsRowMarked(row);
    ui.buttonUpdate->setEnabled(marked);
}

void MainWindow::SetBusy(bool on)
{
    g_busy = on;
    ui.buttonClose->setEnabled(!on);
    ui.buttonArchive->setEnabled(!on);
    ui.button_DeviceType->setEnabled(!on);
    EnableRowButtons(!on);
    UpdateUpdateButton();
}

void MainWindow::SetRowStatus(int row, RowStatus status)
{
    auto* item = new QTableWidgetItem(Icon(IconPath(status)), Board(row).Name);
    item->setData(Qt::UserRole, int(status));
    ui.tableWidget->setItem(row, ColumnName, item);
    QCoreApplication::processEvents();
}

std::unique_ptr<TcpModbus> MainWindow::CreateLink(int device, int board)
{
    const TBoardRecord& record = g_appConfig.Devices.at(device).Boards.at(board);
    return std::make_unique<TcpModbus>(this, record.Ip, record.Port, record.MBAddr);
}

/// Numbers the work that starts now. Work in whose wait it starts loses its connection: some boards serve one only.
int MainWindow::StartWork()
{
    for (TcpModbus* link : findChildren<TcpModbus*>(QString(), Qt::FindDirectChildrenOnly))
        link->Abandon();
    return ++m_started;
}

void MainWindow::onWriteBlock(int index)
{
    ui.progressBar->setValue(index);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // A reading must end too for the process to end.
    if (g_busy || m_isReading) {
        g_stopRequested = true;
        g_updateAborted = true;
    }
    event->accept();
}

#include "MainWindow.h"

#include "Answers.h"
#include "AppState.h"
#include "TcpModbus.h"

#include <QDebug>
#include <QPushButton>

void MainWindow::FindMainBoard()
{
    StartWork();
    m_serial.clear();
    ui.label_Update->setText(QString());
    ui.button_DeviceType->setText("Поиск прибора...");
    SetBusy(true);
    // Only closing is possible during a search. Rows keep their marks, but no run may start.
    ui.buttonClose->setEnabled(true);
    ui.buttonUpdate->setEnabled(false);

    bool found = false;
    for (int d = 0; d < g_appConfig.DeviceCount && !found; ++d) {
        const TDeviceRecord& device = g_appConfig.Devices.at(d);
        for (int b = 0; b < device.BoardCount && !found; ++b) {
            if (g_stopRequested)
                return;
            const TBoardRecord& board = device.Boards.at(b);
            if (!board.Main)
                continue;
            qDebug().noquote() << "Try connect" << device.Name << board.Name;
            const std::unique_ptr<TcpModbus> link = CreateLink(d, b);
            QString answer;
            if (!link->Connect() || !link->StrCommand("DEVICETYPE ?;", answer))
                continue;
            const QString type = DeviceTypeIn(answer);
            qDebug().noquote() << "FindMainBoard" << type;
            found = type == board.Type;
            if (!found)
                continue;
            qDebug().noquote().nospace() << "Found: " << type;
            SelectDevice(d, b, *link);
        }
    }
    if (!g_stopRequested)
        ShowDevice(found);
}

void MainWindow::SelectDevice(int device, int board, TcpModbus& link)
{
    g_selectedDevice = device;
    g_selectedMainBoard = board;
    g_deviceFound = true;
    QString answer;
    if (link.StrCommand("SERIAL ?;", answer))
        m_serial = g_deviceSerial = SerialIn(answer);
}

void MainWindow::ShowDevice(bool found)
{
    if (found)
        ui.button_DeviceType->setText("Прибор " + Device().Name + "  № " + g_deviceSerial);
    SetBusy(false);
    // A search that was started during the reading has shown its own result, or the window was closed.
    if (!FillTable(found))
        return;
    ui.label_Update->setText(QString());
    if (!found)
        ui.button_DeviceType->setText("Прибор не найден!");
}

#pragma once

#include <QString>

/// The program's state, shared by the MainWindow*.cpp files and TcpModbus. All of it is written and read on the GUI
/// thread only; plain values are enough although events are processed inside long loops.

/// Index in the catalogue's Devices of the device that answered last; 0 until one has.
extern int g_selectedDevice;
/// Index, in that device's Boards, of the main board that answered. Nothing reads it yet.
extern int g_selectedMainBoard;
/// A main board has answered with its expected type; never cleared.
extern bool g_deviceFound;
/// Serial number of the found device as the device button shows it.
extern QString g_deviceSerial;
/// A search or an update is running. Written by MainWindow::SetBusy only.
extern bool g_busy;
/// A stop is requested: every wait of the link and every loop over modules gives up when it sees this.
extern bool g_stopRequested;
/// The window was closed during a search, a reading or a run.
extern bool g_updateAborted;

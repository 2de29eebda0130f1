#include "AppState.h"

int g_selectedDevice = 0;
int g_selectedMainBoard = 0;
bool g_deviceFound = false;
QString g_deviceSerial;
bool g_busy = false;
bool g_stopRequested = false;
bool g_updateAborted = false;

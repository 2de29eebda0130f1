#include "WindowFixture.h"

#include "AppState.h"
#include "Error.h"
#include "Pack.h"
#include "Progress.h"
#include "Report.h"
#include "Selection.h"
#include "TimeLimits.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTableWidget>

using namespace std::chrono_literals;

WindowFixture::WindowFixture()
{
    // One test program opens several windows one after another; closing one must not end the program.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setQuitLockEnabled(false);
    g_appConfig = {};
    g_selectedDevice = g_selectedMainBoard = 0;
    g_deviceFound = g_busy = g_stopRequested = g_updateAborted = false;
    g_deviceSerial.clear();
    g_timeLimits = {.firstSearch = 10ms,
                    .connectAttempt = 40ms,
                    .reply = 10s,
                    .restartPause = 50ms,
                    .slowRestartPause = 120ms,
                    .pollPause = 30ms,
                    .systemCommand = 5s,
                    .killedCommand = 1s,
                    .popupExposure = 100ms};
    QDir(ExtractionFolder()).removeRecursively();
    QFile::remove(qEnvironmentVariable("SUDO_LOG"));
    for (const char* leftOver : {"update.old", "firmware"})
        QDir(Path(leftOver)).removeRecursively();
}

WindowFixture::~WindowFixture()
{
    QFile::remove(Path("updater.json"));
}

Instrument* WindowFixture::Play(const TDeviceRecord& device, std::chrono::milliseconds restart)
{
    m_instruments.push_back(std::make_unique<Instrument>(
        device, Instrument::Options{.serial = "777", .restart = restart, .imageFolder = {}}));
    QString error;
    if (!m_instruments.back()->Start(&error))
        qFatal("%s", qPrintable(error));
    return m_instruments.back().get();
}

void WindowFixture::Open(const QList<TDeviceRecord>& devices)
{
    testdata::WriteCatalogue(Path("updater.json"), devices);
    window = std::make_unique<MainWindow>(nullptr);
    window->show();
    WaitForVersions();
}

QString WindowFixture::Path(const QString& name)
{
    return QCoreApplication::applicationDirPath() + '/' + name;
}

QString WindowFixture::Cell(int row, int column) const
{
    const auto* table = window->findChild<QTableWidget*>("tableWidget");
    return table->item(row, column) ? table->item(row, column)->text() : QString();
}

QString WindowFixture::Versions() const
{
    QStringList versions;
    for (int row = 0; row < window->findChild<QTableWidget*>("tableWidget")->rowCount(); ++row)
        versions.append(Cell(row, 1));
    return versions.join(' ');
}

QString WindowFixture::Status(int row) const
{
    const QTableWidgetItem* item = window->findChild<QTableWidget*>("tableWidget")->item(row, 0);
    if (!item || item->icon().isNull())
        return {};
    for (const QString& file : QDir(":/icons").entryList({"*.png"})) {
        if (item->icon().pixmap(24).toImage() == QIcon(":/icons/" + file).pixmap(24).toImage())
            return file.section('_', 2).section('.', 0, 0);
    }
    return "another icon";
}

bool WindowFixture::IsEnabled(const QString& name) const
{
    return window->findChild<QWidget*>(name)->isEnabled();
}

QString WindowFixture::Controls() const
{
    for (const char* name : {"buttonClose", "buttonArchive", "button_DeviceType"}) {
        if (!IsEnabled(name))
            return QString(name) + " is disabled";
    }
    bool marked = false;
    const int rows = window->findChild<QTableWidget*>("tableWidget")->rowCount();
    for (int row = 0; row < rows; ++row) {
        const RowVerdict verdict = JudgeRow(Cell(row, 1), Cell(row, 2));
        marked = marked || window->IsRowMarked(row);
        if (verdict.takesFile && !window->GetButton(row, 3)->isEnabled())
            return QString("the file button of row %1 is disabled").arg(row);
        if (verdict.valid && !window->GetButton(row, 4)->isEnabled())
            return QString("the mark button of row %1 is disabled").arg(row);
    }
    if (IsEnabled("buttonUpdate") != marked)
        return "buttonUpdate does not tell whether a row is marked";
    if (Text("buttonUpdate") != "Запустить\nобновление")
        return "buttonUpdate shows " + Text("buttonUpdate");
    return g_busy || g_stopRequested ? "a flag is still set" : "idle";
}

QString WindowFixture::Text(const QString& name) const
{
    return window->findChild<QWidget*>(name)->property("text").toString();
}

QStringList WindowFixture::SudoLog()
{
    return QString(testdata::ReadFile(qEnvironmentVariable("SUDO_LOG"))).split('\n', Qt::SkipEmptyParts);
}

void WindowFixture::WaitForVersions()
{
    driver.Step("versions are read", [this] {
        const auto* table = window->findChild<QTableWidget*>("tableWidget");
        return table->rowCount() > 0 && Controls() == "idle" && Text("label_Update").isEmpty()
               && !Cell(table->rowCount() - 1, 1).isEmpty();
    });
}

void WindowFixture::PackArchive(const testdata::Files& files)
{
    const QTemporaryDir folder;
    for (const auto& [name, content] : files)
        testdata::WriteFile(folder.filePath(name), content);
    try {
        Progress progress;
        const Selection selection = SelectDevices(Path("updater.json"), {});
        const PackResult packed = Pack({selection, {folder.path()}, Path("new.zip"), true}, progress);
        if (!packed.findings.isEmpty())
            qFatal("%s", qPrintable(LineOf(packed.findings.first())));
    } catch (const Error& error) {
        qFatal("%s", qPrintable(error.Text()));
    }
}

void WindowFixture::TakeArchive(const testdata::Files& files)
{
    PackArchive(files);
    ChooseArchive();
}

void WindowFixture::TakeBadArchive(const testdata::Files& files)
{
    testdata::WriteZip(Path("new.zip"), files);
    ChooseArchive();
}

void WindowFixture::ChooseArchive()
{
    driver.Press("buttonArchive");
    driver.ChooseFile("Открыть архив с прошивками", "new.zip");
    driver.Step("the archive is analysed",
                [this] { return Controls() == "idle" && UiDriver::IsReachable(window.get()); });
}

void WindowFixture::PressRow(int row, int column)
{
    driver.Do([=, this] { UiDriver::PressNow(window->GetButton(row, column)); });
}

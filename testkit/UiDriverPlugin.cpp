// Loaded into the real, unchanged program by Qt (QT_QPA_GENERIC_PLUGINS=uidriver), it operates the window as an
// operator would:
//   UPDATER_UI_SCRIPT    the file whose lines it follows (see UiScript.h)
//   UPDATER_UI_SHOTS     the folder for the screenshots; without it none is taken
//   UPDATER_UI_PATIENCE  seconds to wait for one step, for slow machines
//   UPDATER_UI_CAMERA    where Qt cannot read the screen: a program that writes it into a given file
// When a step is not reached in time, or the program ends before the last step, the exit status is 4.

#include "UiDriver.h"
#include "UiScript.h"

#include <QApplication>
#include <QEventLoop>
#include <QGenericPlugin>
#include <QProcess>
#include <QScreen>
#include <QWidget>

#include <chrono>
#include <cstdio>

using namespace std::chrono_literals;

namespace {

class Operator : public UiDriver
{
public:
    Operator()
    {
        setParent(qApp);
        const QString file = qEnvironmentVariable("UPDATER_UI_SCRIPT");
        const QString mistake = AddScript(*this, file, [this](const QString& name) { Picture(name); });
        if (!mistake.isEmpty()) {
            std::fprintf(stderr, "uidriver: %s: %s\n", qPrintable(file), qPrintable(mistake));
            std::_Exit(4);
        }
        connect(this, &UiDriver::Finished, this, [this](bool all) {
            if (all)
                return;
            Picture("gave-up");
            std::fprintf(stderr, "uidriver: gave up waiting: %s\n", qPrintable(Failure));
            std::_Exit(4);
        });
        connect(qApp, &QCoreApplication::aboutToQuit, this, &Operator::CheckTheEnd);
        const std::chrono::seconds patience(qEnvironmentVariableIntValue("UPDATER_UI_PATIENCE"));
        Start(patience > 0s ? patience : GivesUp);
    }

private:
    /// The program must not end before its last step. That the last message box has closed need not be seen.
    void CheckTheEnd()
    {
        if (Next().isEmpty() || Next() == BoxIsGone)
            return;
        std::fprintf(stderr, "uidriver: the program ended before: %s\n", qPrintable(Next()));
        std::_Exit(4);
    }

    /// A screenshot of what the window shows now, also where it has not been painted yet.
    void Picture(const QString& name)
    {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                window->repaint();
        }
        Save(name);
    }

    void Save(const QString& name)
    {
        const QString folder = qEnvironmentVariable("UPDATER_UI_SHOTS");
        if (folder.isEmpty())
            return;
        const QString file = QString("%1/%2.png").arg(folder, name);
        const QString camera = qEnvironmentVariable("UPDATER_UI_CAMERA");
        if (camera.isEmpty() ? !QGuiApplication::primaryScreen()->grabWindow(0).save(file)
                             : !Photograph(camera, file)) {
            std::fprintf(stderr, "uidriver: cannot write %s\n", qPrintable(file));
            std::_Exit(4);
        }
    }

    /// Processes events meanwhile: the window system may not have shown yet what was painted.
    bool Photograph(const QString& camera, const QString& file)
    {
        QProcess process;
        QEventLoop loop;
        connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
        connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
        Stop();
        process.start(camera, {file});
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        GoOn();
        return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }
};

} // namespace

class UiDriverPlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "uidriver.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        // The application object is still being constructed, but the event filter is needed before the first window is
        // painted.
        QMetaObject::invokeMethod(
            qApp, [] { new Operator; }, Qt::QueuedConnection);
        return new QObject(this);
    }
};

#include "UiDriverPlugin.moc"

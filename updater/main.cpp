#include "DialogTexts.h"
#include "MainWindow.h"
#include "RunGuard.h"
#include "TreeCopy.h"

#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QScreen>
#include <QTimer>

int main(int argc, char** argv)
{
    QCoreApplication::setSetuidAllowed(true);
    QCoreApplication::setOrganizationName("KESTAL");
    QCoreApplication::setOrganizationDomain("kestal.example");
    QCoreApplication::setApplicationName("updater");
    QCoreApplication::setApplicationVersion("1.0");

    // Before the application object: a second copy ends without a trace on the screen.
    RunGuard guard("updater_single_instance_app");
    if (!guard.tryToRun())
        return 0;

    QApplication application(argc, argv);
    DialogTexts texts;
    QCoreApplication::installTranslator(&texts);
    QApplication::setStyle("Fusion");
    // The panel is worked by touch: no pointer for the whole run.
    const QCursor cursor(Qt::BlankCursor);
    QGuiApplication::setOverrideCursor(cursor);
    QGuiApplication::changeOverrideCursor(cursor);
    QCoreApplication::setAttribute(Qt::AA_SynthesizeTouchForUnhandledMouseEvents, true);

    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    MainWindow window(nullptr);
    window.move((available.width() - window.width()) / 2, (available.height() - window.height()) / 2);
    window.setWindowFlags(window.windowFlags() | Qt::FramelessWindowHint);
    window.showMaximized();
    QGuiApplication::setWindowIcon(QIcon(":/images/kestal_icon.png"));
    // Once the window is on the screen, because to remove hundreds of files takes a second. A copy blocks this thread,
    // so none is under way then.
    QTimer::singleShot(200, [] { RemoveCopyLeftovers(QCoreApplication::applicationDirPath()); });
    return QApplication::exec();
}

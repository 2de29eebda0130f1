#include <QApplication>
#include <QCursor>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace {

struct Entry
{
    const char* text;
    QString program;
    QStringList arguments;
};

void AddButton(QVBoxLayout& layout, const Entry& entry)
{
    auto* button = new QPushButton(entry.text);
    button->setFont(QFont("Liberation Sans", 18, QFont::Bold));
    button->setFixedSize(560, 96);
    layout.addWidget(button, 0, Qt::AlignCenter);
    QObject::connect(button, &QPushButton::clicked, button, [button, entry] {
        // What was pressed takes some seconds to show. A second tap meanwhile must not start it twice.
        QWidget* menu = button->parentWidget();
        menu->setEnabled(false);
        QTimer::singleShot(5000, menu, [menu] { menu->setEnabled(true); });
        QProcess::startDetached(entry.program, entry.arguments);
    });
}

} // namespace

/// What lies behind the updater on a panel without a keyboard: after its window was closed or could not be started, a
/// finger can start it again, or restart or switch off the panel.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    QGuiApplication::setOverrideCursor(QCursor(Qt::BlankCursor));

    QWidget menu;
    // Behind the updater: the window manager keeps it below all others.
    menu.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
    // In the middle, away from the place of the button that closes the updater: a double tap there does no harm here.
    auto* layout = new QVBoxLayout(&menu);
    layout->addStretch();
    for (const Entry& entry :
         {Entry{"Запустить программу обновления", "updater-start", {}},
          Entry{"Перезагрузить панель", "systemctl", {"reboot"}}, Entry{"Выключить панель", "systemctl", {"poweroff"}}})
        AddButton(*layout, entry);
    layout->addStretch();
    menu.setGeometry(QGuiApplication::primaryScreen()->geometry());
    menu.show();
    return QApplication::exec();
}

// The floor of start and memory: a window of Qt in the same style and size, with nothing in it. With a word on the
// command line it shows that word, in the program's font: what it takes more is Qt's price for any text.

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    QMainWindow window;
    window.resize(1024, 600);
    window.setWindowFlags(window.windowFlags() | Qt::FramelessWindowHint);
    if (argc > 1) {
        auto* label = new QLabel(QString::fromLocal8Bit(argv[1]));
        label->setFont(QFont("Liberation Sans", 13, QFont::Bold));
        window.setCentralWidget(label);
    }
    window.showMaximized();
    return QApplication::exec();
}

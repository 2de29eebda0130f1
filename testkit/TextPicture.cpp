// Draws the text on standard input as a terminal would show it, into a picture.

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    QFile input;
    if (argc != 2 || !input.open(stdin, QIODevice::ReadOnly)) {
        std::fprintf(stderr, "usage: %s PICTURE.png <TEXT\n", argv[0]);
        return 2;
    }
    constexpr int Margin = 12;
    const QString text = QString::fromUtf8(input.readAll()).trimmed();
    QFont font("Liberation Mono");
    font.setPixelSize(15);
    const QRect area = QFontMetrics(font).boundingRect(QRect(0, 0, 4000, 4000), Qt::AlignLeft, text);
    QImage picture(area.size() + QSize(2 * Margin, 2 * Margin), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setFont(font);
    painter.drawText(area.translated(Margin, Margin), Qt::AlignLeft, text);
    painter.end();
    if (picture.save(argv[1]))
        return 0;
    std::fprintf(stderr, "%s cannot be written\n", argv[1]);
    return 1;
}

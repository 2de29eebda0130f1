// Prints a guide in Markdown as a PDF: A4, every section of the second level on a new page.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPageSize>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextTable>

#include <cstdio>

namespace {

/// Width of a screenshot at the 96 dots per inch of a document; the page has 640 between its margins.
constexpr qreal PictureWidth = 440;
constexpr qreal IconWidth = 18;

/// Sets the size of the images, and absolute names under which a copy of the document still finds them.
void PlaceImages(QTextDocument& document, const QDir& folder)
{
    QList<QTextFragment> images;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            if (part.fragment().charFormat().isImageFormat())
                images.append(part.fragment());
        }
    }
    for (const QTextFragment& image : images) {
        QTextImageFormat format = image.charFormat().toImageFormat();
        format.setWidth(format.name().contains("pictures/") ? PictureWidth : IconWidth);
        format.setName(folder.absoluteFilePath(format.name()));
        QTextCursor cursor(&document);
        cursor.setPosition(image.position());
        cursor.setPosition(image.position() + image.length(), QTextCursor::KeepAnchor);
        cursor.setCharFormat(format);
    }
}

/// Space between paragraphs, and a new page for each section of the second level.
void PlaceBlocks(QTextDocument& document)
{
    constexpr qreal Space = 6;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextCursor cursor(block);
        if (cursor.currentTable())
            continue;
        QTextBlockFormat format;
        format.setBottomMargin(Space);
        if (block.blockFormat().headingLevel() == 2)
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        cursor.mergeBlockFormat(format);
    }
}

void DrawTables(QTextDocument& document)
{
    for (QTextFrame* frame : document.rootFrame()->childFrames()) {
        auto* table = qobject_cast<QTextTable*>(frame);
        if (!table)
            continue;
        QTextTableFormat format = table->format();
        format.setBorder(1);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(Qt::gray);
        format.setBorderCollapse(true);
        format.setCellPadding(4);
        format.setHeaderRowCount(1);
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        table->setFormat(format);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    QFile source(argc == 3 ? argv[1] : "");
    if (argc != 3 || !source.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "usage: %s GUIDE.md GUIDE.pdf, with a guide that can be read\n", argv[0]);
        return 2;
    }
    QTextDocument document;
    document.setDefaultFont(QFont("Liberation Sans", 10));
    document.setMarkdown(QString::fromUtf8(source.readAll()));
    PlaceImages(document, QFileInfo(source).absoluteDir());
    PlaceBlocks(document);
    DrawTables(document);

    QFile target(argv[2]);
    if (!target.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "%s: %s\n", argv[2], qPrintable(target.errorString()));
        return 1;
    }
    QPdfWriter writer(&target);
    writer.setPageSize(QPageSize(QPageSize::A4));
    document.print(&writer);
    return 0;
}

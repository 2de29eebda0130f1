// Measures the figures of docs/performance.md. ./run starts it: it needs a screen, and writes into the working folder.

#include "Figure.h"

#include <QApplication>
#include <benchmark/benchmark.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (!QDir::current().isEmpty()) {
        std::fprintf(stderr, "%s is not empty, and what is measured would be written there: start bench/run\n",
                     qPrintable(QDir::currentPath()));
        return 2;
    }
    // The same environment as the program: the window system determines what each pass of the event loop costs.
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    QApplication::setQuitOnLastWindowClosed(false);
    AddTransferFigures();
    AddArchiveFigure();
    AddCopyFigure();
    AddProgramFigures();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    const bool ran = benchmark::RunSpecifiedBenchmarks() > 0;
    DropFigure();
    return ran ? 0 : 1;
}

// Creates the folder in which ./demo runs: a catalogue of two instruments on free ports, a program module
// that is "installed", and in "new" the files to pack: new firmware for all but one module.

#include "TestData.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2 || !QDir(argv[1]).exists()) {
        std::fprintf(stderr, "%s: name one folder that exists\n", argv[0]);
        return 2;
    }
    const QString folder = QDir(argv[1]).absolutePath();
    const QString controllerIp = "127.0.0.2";
    const int controllerPort = testdata::FreePort(controllerIp);
    const QString converterIp = "127.0.0.3";
    const QString powerIp = "127.0.0.4";

    // Both instruments have the same address: only the answered type distinguishes them.
    const TDeviceRecord other = testdata::Device(
        "Демо-100", 11, {testdata::Board("Контроллер", "DEMO-100", controllerIp, controllerPort, 1, 0)});
    const TDeviceRecord device = testdata::Device(
        "Демо-200", 12,
        {testdata::Board("Контроллер", "DEMO-200", controllerIp, controllerPort, 1, 0),
         testdata::Board("Контроллер, второй процессор", "DEMO-200", controllerIp, controllerPort, 1, 1),
         testdata::Board("Преобразователь", "DEMO-ADC", converterIp, testdata::FreePort(converterIp), 3, 2),
         testdata::Board("Блок питания", "DEMO-PWR", powerIp, testdata::FreePort(powerIp), 4, 0),
         testdata::Program("Программа просмотра", "viewer", "demo-viewer")});
    testdata::WriteCatalogue(folder + "/updater.json", {other, device});
    testdata::WriteFile(folder + "/demo-viewer", "#!/bin/sh\necho viewer 1.0\n");
    testdata::WriteFile(folder + "/demo-viewer.ver", "1.0");

    constexpr int ControllerSize = 1500 * 1024;
    const testdata::Files files{{"boards/fw_12_1_0_v1.5.bin", testdata::Image("1.5", ControllerSize)},
                                {"boards/fw_12_1_1_v2.1.rpd", testdata::Image("2.1", 300 * 1024 + 7)},
                                {"boards/fw_12_3_2_v1.2.rpd", testdata::Image("1.2", 64 * 1024)},
                                {"viewer/demo-viewer", "#!/bin/sh\necho viewer 2.0\n"},
                                {"viewer/demo-viewer.ver", "2.0"}};
    for (const auto& [name, content] : files)
        testdata::WriteFile(folder + "/new/" + name, content);
    return 0;
}

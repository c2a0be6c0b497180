// hxdcheck-host: a host in miniature, which hxdcheck starts with the driver's file as its argument.
#include "hxdcheck/host/HostChecks.h"

#include "HxdVersion.h"
#include "hxdpanel/host/DriverLibrary.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

std::unique_ptr<DriverLibrary> LoadDriver(Findings& findings, const char* file) {
    std::unique_ptr<DriverLibrary> driver;
    findings.Group("The driver");
    findings.Run("load", [&] {
        std::string error;
        return Timed(2000.0F, [&] {
            driver = DriverLibrary::Load(file, error);
            return driver != nullptr ? Ok("loaded")
                                     : Wrong(error, "what is wrong with its file above tells more");
        });
    });
    return driver;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0)
        return std::puts(HXD_VERSION_TEXT) < 0 ? 3 : 0;
    if (argc < 2 || argv[1][0] == '-') {
        std::fputs("hxdcheck-host is started by hxdcheck\n", stderr);
        return 3;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // shown as it comes
    QCoreApplication application(argc, argv);
    // What is compared here are bytes; Qt has set the locale of the environment.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        std::setlocale(LC_CTYPE, "C");
    bool act = false;
    bool channelsOnly = false;
    for (int i = 2; i < argc; ++i) {
        act = act || std::strcmp(argv[i], "--act") == 0;
        channelsOnly = channelsOnly || std::strcmp(argv[i], "--channels") == 0;
    }

    FindingPipe findings;
    if (!channelsOnly) {
        CheckQt(findings);
        CheckPlatform(findings);
        CheckClock(findings);
        CheckFolders(findings);
        CheckNames(findings);
    }
    const Usage before = CurrentUsage();
    const std::unique_ptr<DriverLibrary> driver = LoadDriver(findings, argv[1]);
    if (driver != nullptr && CheckInterface(findings, *driver))
        CheckDevice(findings, *driver, before, act);
    if (act)
        ActVisibly(findings);
    findings.Done();
    return 0;
}

#include "hxdcheck/host/HostChecks.h"

#include <QCoreApplication>
#include <QImageReader>
#include <QImageWriter>

#include <cstdlib>

namespace {

Finding CheckVersion() {
    const std::string here = qVersion();
    const std::string versions = here + " here, built with " QT_VERSION_STR;
    if (std::atoi(here.c_str()) != QT_VERSION >> 16)
        return Wrong(versions, "build with the panel's Qt: -DHXD_QT=4 or 5");
    if (here.compare(0, here.rfind('.'), QT_VERSION_STR, 0, here.rfind('.')) != 0)
        return Look(versions, "works if the one here is the newer");
    return Ok(versions);
}

Finding CheckApplication() {
    return QCoreApplication::instance() != nullptr
               ? Ok("there (a host makes it before its first device)")
               : Wrong("none", "another Qt is in this process than the one it was built with");
}

// Screenshots come as BMP and are stored as what their name says.
Finding CheckFormats() {
    if (!QImageReader::supportedImageFormats().contains("bmp"))
        return Wrong("Qt does not read bmp: no screenshot can be saved", "bring Qt's bmp support");
    std::string missing;
    for (const char* const format : {"png", "jpg", "bmp"}) {
        if (!QImageWriter::supportedImageFormats().contains(format))
            missing += std::string(missing.empty() ? "" : ", ") + format;
    }
    return missing.empty() ? Ok("png, jpg and bmp")
                           : Look("screenshots cannot be saved as " + missing,
                                  "install Qt's plug-in for it (imageformats), or set "
                                  "QT_PLUGIN_PATH");
}

const Check QT[] = {
    {"version", CheckVersion}, {"application", CheckApplication}, {"image formats", CheckFormats}};

}  // namespace

void CheckQt(Findings& findings) {
    RunAll(findings, "Qt", QT);
}

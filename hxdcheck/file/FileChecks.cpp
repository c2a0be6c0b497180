#include "hxdcheck/file/FileChecks.h"

#include "hxdcheck/file/Loader.h"

#include <sys/auxv.h>
#include <unistd.h>

#include <elf.h>

#include <algorithm>

namespace {

const char* const EXPORTS[] = {"CreateDeviceCtrl", "DestroyDeviceCtrl"};

// VFP of version 3 with 16 registers, in the kernel's words for ARM processors.
constexpr unsigned long ARM_VFPV3 = 1UL << 13;
constexpr unsigned long ARM_VFPV3D16 = 1UL << 14;

std::string List(const std::vector<std::string>& names) {
    constexpr std::size_t SHOWN = 8;
    std::string list;
    for (std::size_t i = 0; i < names.size() && i < SHOWN; ++i)
        list += (i > 0 ? "; " : "") + names[i];
    return names.size() > SHOWN ? list + "; and " + std::to_string(names.size() - SHOWN) + " more"
                                : list;
}

Finding CheckDriver(const std::string& path, ElfFile& driver) {
    std::string error;
    if (!driver.Read(path, error))
        return Wrong(path + ": " + error, "install the package again, or name the driver's file");
    const bool isLibrary =
        std::all_of(std::begin(EXPORTS), std::end(EXPORTS),
                    [&](const char* name) { return driver.defined.count(name) != 0; });
    if (!isLibrary)
        return Wrong(path + " does not export CreateDeviceCtrl and DestroyDeviceCtrl",
                     "it is another library; name the driver's file");
    if (driver.version.empty())
        return Look(path + " does not tell its version", "it was not built from these sources");
    return Ok(path + ", " + driver.version);
}

Finding CheckProcessor(const ElfFile& driver) {
    ElfFile self;
    std::string error;
    if (!self.Read("/proc/self/exe", error))
        return Look("cannot be told: /proc/self/exe " + error, "mount /proc");
    if (!driver.SameProcessor(self))
        return Wrong(
            "the driver is for " + driver.Processor() + ", this program for " + self.Processor(),
            "take both from the same package, made for this panel");
    if (driver.machine == EM_ARM && (::getauxval(AT_HWCAP) & (ARM_VFPV3 | ARM_VFPV3D16)) == 0)
        return Wrong("has no VFPv3 floating point", "build for this processor: docs/porting.md");
    return Ok(driver.Processor());
}

Finding CheckLoader(const ElfFile& host) {
    if (::access(host.interpreter.c_str(), X_OK) != 0)
        return Wrong(host.interpreter + " is not there, so no program of this kind starts",
                     "the panel's system is for another processor or float kind: `ls /lib/ld-*` "
                     "shows which; build with its toolchain");
    return Ok(host.interpreter);
}

Finding CheckLibraries(const LoadedSet& loaded) {
    std::vector<std::string> lines;
    for (const Missing& missing : loaded.MissingLibraries())
        lines.push_back(missing.name + " (for " + missing.neededBy + ")" +
                        (missing.unfit.empty() ? "" : ", but " + missing.unfit));
    if (!lines.empty())
        return Wrong("not found: " + List(lines),
                     "install them where the loader looks, or start hxdcheck with the "
                     "LD_LIBRARY_PATH that the HMI runtime has (/proc/PID/environ)");
    return Ok("all " + std::to_string(loaded.Files().size()) + " found");
}

Finding CheckVersions(const LoadedSet& loaded) {
    const std::vector<std::string> missing = loaded.MissingVersions();
    if (!missing.empty())
        return Wrong("too old here: " + List(missing),
                     "build the driver with the toolchain of this panel's system, or bring its "
                     "libraries up to date");
    return Ok("all that are asked for are here");
}

Finding CheckFunctions(const LoadedSet& loaded, const ElfFile& driver) {
    if (!loaded.MissingLibraries().empty())
        return Look("cannot be told while a library is missing", "see above");
    const std::vector<std::string> missing = loaded.MissingFunctions(driver);
    if (missing.empty())
        return Ok("all " + std::to_string(driver.undefined.size()) + " found");
    const bool isText = std::any_of(missing.begin(), missing.end(), [](const std::string& name) {
        return name.find("__cxx11") != std::string::npos;
    });
    return Wrong("no library has " + List(missing),
                 isText ? "the platform has the std::string of older compilers: build with "
                          "-D_GLIBCXX_USE_CXX11_ABI=0"
                        : "the panel's libraries are older than the SDK, or not its libraries");
}

enum TextKind { NO_TEXTS, OLD_TEXTS, NEW_TEXTS };

// Which std::string a file uses, by the names of the functions that it asks for and has.
TextKind TextsOf(const ElfFile& file) {
    TextKind kind = NO_TEXTS;
    for (const auto* names : {&file.undefined, &file.defined}) {
        for (const std::string& name : *names) {
            if (name.find("__cxx1112basic_string") != std::string::npos)
                return NEW_TEXTS;
            if (name.compare(0, 5, "_ZNSs") == 0 || name.compare(0, 6, "_ZNKSs") == 0 ||
                name.find("RKSs") != std::string::npos)
                kind = OLD_TEXTS;
        }
    }
    return kind;
}

// "Qt5" or "Qt"; "" for a file without Qt.
std::string QtOf(const ElfFile& file) {
    for (const std::string& name : file.needed) {
        const std::size_t end = name.find("Core.so.");
        if (name.compare(0, 5, "libQt") == 0 && end != std::string::npos)
            return "Qt " + name.substr(end + 8);
    }
    return "";
}

Finding CheckRuntime(const std::string& path, const ElfFile& driver) {
    ElfFile runtime;
    std::string error;
    if (!runtime.Read(path, error))
        return Wrong(path + ": " + error,
                     "name the program of the HMI runtime, as `ls -l "
                     "/proc/PID/exe` shows it");
    if (!driver.SameProcessor(runtime))
        return Wrong(
            "the runtime is for " + runtime.Processor() + ", the driver for " + driver.Processor(),
            "build the driver for the runtime's processor and float kind");
    if (!QtOf(runtime).empty() && QtOf(runtime) != QtOf(driver))
        return Wrong("the runtime uses " + QtOf(runtime) + ", the driver " + QtOf(driver),
                     "build the driver with -DHXD_QT=" + QtOf(runtime).substr(3));
    const TextKind texts = TextsOf(runtime);
    if (texts != NO_TEXTS && texts != TextsOf(driver))
        return Wrong("the runtime and the driver have different kinds of std::string",
                     std::string("build the driver with -D_GLIBCXX_USE_CXX11_ABI=") +
                         (texts == OLD_TEXTS ? "0" : "1"));
    return Ok(path + ": same processor" + (QtOf(runtime).empty() ? "" : ", " + QtOf(runtime)) +
              (texts == NO_TEXTS ? "" : ", same std::string"));
}

}  // namespace

bool CheckFiles(Findings& findings, const std::string& driverPath, const std::string& hostPath,
                const std::string& runtime) {
    findings.Group("The driver's file");
    ElfFile driver;
    if (findings.Run("driver", [&] { return CheckDriver(driverPath, driver); }).status ==
        Finding::WRONG)
        return false;
    if (findings.Run("processor", [&] { return CheckProcessor(driver); }).status == Finding::WRONG)
        return false;
    ElfFile host;
    std::string error;
    if (!host.Read(hostPath, error)) {
        findings.Run("test host", [&] {
            return Wrong(hostPath + ": " + error, "keep hxdcheck-host in one folder with hxdcheck");
        });
        return false;
    }
    LoadedSet loaded;
    loaded.Add(driver);
    loaded.Add(host);
    Finding::Status worst = Finding::OK;
    const auto run = [&](const char* name, const Finding& finding) {
        worst = std::max(worst, findings.Run(name, [&] { return finding; }).status);
    };
    run("loader", CheckLoader(host));
    run("libraries", CheckLibraries(loaded));
    run("versions", CheckVersions(loaded));
    run("functions", CheckFunctions(loaded, driver));
    const bool loadable = worst < Finding::WRONG;
    if (!runtime.empty())
        run("HMI runtime", CheckRuntime(runtime, driver));
    return loadable;
}

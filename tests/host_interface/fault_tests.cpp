// Operations of a device, of every kind, while the system refuses something: whatever it answers,
// it returns, the settings stay whole, and the device works again when the fault is gone. Each case
// runs in a process of its own, which a fault may keep.
#include "Adversity.h"
#include "FakeHost.h"
#include "FaultyMemory.h"
#include "SimPanel.h"
#include "SystemCalls.h"
#include "TestFiles.h"
#include "WaitStatus.h"
#include "driver/record/ChannelTable.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <QtGlobal>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr const char* SETTINGS = "/usr/olma_app/config/olma_app_conf.ini";
constexpr const char* TIME_SETTINGS = "/usr/olma_app/config/ntp_param_cfg.ini";
constexpr char OLD_SETTINGS[] =
    "[DEVICE]\nbuzz_duration=30\nbacklight_status=1\n[OTHER]\nkey=kept\n";
constexpr int OLD_VALUE = 30;
constexpr int NEW_VALUE = 777;
constexpr int LAST_VALUE = 40;  // when all is well again
const unsigned char PARAMETERS[] = {2, 0, 0, 0, 1, 0, 0, 0, 200, 0, 0, 0};

// A device with its host, in the process of a case.
struct Panel {
    explicit Panel(void* library)
        : create(
              reinterpret_cast<decltype(&CreateDeviceCtrl)>(::dlsym(library, "CreateDeviceCtrl"))),
          destroy(reinterpret_cast<decltype(&DestroyDeviceCtrl)>(
              ::dlsym(library, "DestroyDeviceCtrl"))),
          device(create("faults", &host)) {
        host.ints = {{"i", 0}, {"one", 1}, {"r", 0}};
        host.texts = {{"t", "text"}, {"server", "127.0.0.11"}, {"none", "none.test"}};
    }
    int Init() { return device->InitDevice(PARAMETERS, sizeof PARAMETERS); }
    int Collect() {
        const int channels[32] = {};  // the operations themselves need no memory
        return device->CollectDevData(channels, 32);
    }
    void Write(int channel, const char* text) {
        device->WriteChannel(channel - 1, DATATYPE_TEXT, const_cast<char*>(text));
    }
    // The written setting is the old or the new one, and everything can be done.
    bool Works() {
        if (Init() != 0 || device->DevIOCtrl("REFLESH()") != 0 || Collect() != 0)
            return false;
        const double value = host.numberChannels[3];
        int next = LAST_VALUE;
        return (value == OLD_VALUE || value == NEW_VALUE) &&
               device->WriteChannel(3, DATATYPE_INTEGER, &next) == 0 && Collect() == 0 &&
               host.numberChannels[3] == LAST_VALUE;
    }

    FakeHost host;
    decltype(&CreateDeviceCtrl) const create;
    decltype(&DestroyDeviceCtrl) const destroy;
    IDeviceCtrl* const device;
};

// How many refused allocations may end in Qt 5: none, unless a thread is late with the program's
// first message; of those in which a setting is written, a third, and of those of a ping some.
constexpr int LATE_ONES = 2;
constexpr int ENDS_OF_A_PING = 12;

struct Operation {
    const char* name;
    std::function<void(Panel&)> run;
    int mostEndsOfQt;
};

void Synchronise(Panel& panel) {
    for (const char* command : {"SetNTPServer(none,,,)", "ExecNTP(r)"})
        panel.device->DevIOCtrl(command);
}

void LiveAndDie(Panel& panel) {
    IDeviceCtrl* const device = panel.create("another", &panel.host);
    if (device != nullptr)
        device->InitDevice(PARAMETERS, sizeof PARAMETERS);
    panel.destroy(device);
}

void WriteHardware(Panel& panel) {
    for (const int channel : {CHANNEL_NETMASK_1, CHANNEL_BUZZER_TEST, CHANNEL_LOCAL_INPUT_LOCKED,
                              CHANNEL_REMOTE_INPUT_LOCKED})
        panel.Write(channel, channel == CHANNEL_NETMASK_1 ? "255.255.0.0" : "1");
}

Operation Command(const char* text) {
    return {text, [text](Panel& panel) { panel.device->DevIOCtrl(text); }, LATE_ONES};
}

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = {
        {"InitDevice",
         [](Panel& panel) {
             panel.device->CleanupDevice();
             panel.Init();
         },
         LATE_ONES},
        {"CleanupDevice", [](Panel& panel) { panel.device->CleanupDevice(); }, LATE_ONES},
        {"CollectDevData", [](Panel& panel) { panel.Collect(); }, LATE_ONES},
        {"ChannelRefChange",
         [](Panel& panel) {
             const int channel = 1;
             panel.device->ChannelRefChange(&channel, 1000);
         },
         LATE_ONES},
        {"a setting", [](Panel& panel) { panel.Write(4, std::to_string(NEW_VALUE).c_str()); }, 110},
        {"an address", [](Panel& panel) { panel.Write(1, "10.0.0.9"); }, LATE_ONES},
        {"a password", [](Panel& panel) { panel.Write(19, "secret"); }, LATE_ONES},
        {"a time server", [](Panel& panel) { panel.Write(15, "time.example.org"); }, LATE_ONES},
        {"another device", LiveAndDie, LATE_ONES},
        {"the hardware", WriteHardware, LATE_ONES},
        {"a synchronisation", Synchronise, ENDS_OF_A_PING},
        Command("GetCpuUse(10)"),
        Command("GetMemUse(11)"),
        Command("ReadAppLog(i,one,t,r)"),
        Command("ReadSysLog(i,one,t,r)"),
        Command("GetMacInfo(i,t,t)"),
        Command("SetNetworkMode(i,one,r)"),
        Command("STRSHA256(server,t)"),
        Command("ModVncPwd(server,r)"),
        Command("SetNTPServer(server,server,,,r)"),
        Command("SetNTPFreq(one,r)"),
        Command("SetNTPMode(one,r)"),
        Command("EnableNTP(one,r)"),
        Command("REFLESH()"),
        Command("SAVESCREEN($OLMA_DIR_USR/a/b.png,0,0,20,20)"),
        Command("Nothing(server)"),
    };
    return operations;
}

#ifdef __x86_64__  // the emulator has no filters
// The calls that a filter refuses; mask and value are of an argument's lower half.
struct Refusal {
    int call;
    unsigned argument, mask, value;
    bool whenEqual;
};

// For good, for this process and the threads that it starts from now on.
void Refuse(const std::vector<Refusal>& refusals, unsigned error) {
    std::vector<sock_filter> filter;
    for (const Refusal& refusal : refusals) {
        const auto offset =
            static_cast<unsigned>(offsetof(seccomp_data, args)) + 8 * refusal.argument;
        const unsigned char refused = refusal.whenEqual ? 0 : 1;
        const unsigned char passed = refusal.whenEqual ? 1 : 0;
        filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
        filter.push_back(
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(refusal.call), 0, 4));
        filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset));
        filter.push_back(BPF_STMT(BPF_ALU | BPF_AND | BPF_K, refusal.mask));
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, refusal.value, refused, passed));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        ::_exit(70);
}
#endif

void Limit(__rlimit_resource resource, rlim_t most) {
    rlimit limit = {};
    ::getrlimit(resource, &limit);
    limit.rlim_cur = most;
    ::setrlimit(resource, &limit);
}

struct Fault {
    const char* name;
    std::function<void()> begin;
    std::function<void()> end;  // null: it does not end
};

const std::vector<Fault>& AllFaults() {
    static std::unique_ptr<InterruptingTimer> timer;
    static const std::vector<Fault> faults = {
#ifndef __SANITIZE_ADDRESS__  // UndefinedBehaviorSanitizer opens a pipe to look at an object
        {"no descriptors", [] { Limit(RLIMIT_NOFILE, 0); }, [] { Limit(RLIMIT_NOFILE, 1024); }},
#endif
        {"no threads", [] { g_systemCalls.threads = 0; }, [] { g_systemCalls.threads = -1; }},
        {"interrupted and short calls", [] { g_systemCalls.interrupts = true; },
         [] { g_systemCalls.interrupts = false; }},
        {"no space",
         [] {
             ::signal(SIGXFSZ, SIG_IGN);
             Limit(RLIMIT_FSIZE, 0);
         },
         [] { Limit(RLIMIT_FSIZE, RLIM_INFINITY); }},
        {"interruptions", [] { timer = std::make_unique<InterruptingTimer>(3000); },
         [] { timer.reset(); }},
        {"a slow platform",
         [] {
             for (const std::string& function : sim::FailableFunctions())
                 sim::SimPanel::Instance().Fail(function, {0, -1, 0, 3, false, 0});
         },
         [] { sim::SimPanel::Instance().Reset(); }},
#ifdef __x86_64__
        {"no processes",  // no thread, and the newer call cannot be looked into
         [] {
             Refuse({{SYS_fork, 0, 0, 0, true},
                     {SYS_vfork, 0, 0, 0, true},
                     {SYS_clone, 0, 0x10000, 0, true}},
                    EAGAIN);
             Refuse({{SYS_clone3, 0, 0, 0, true}}, ENOSYS);
         },
         nullptr},
        {"read-only",
         [] {
             std::vector<Refusal> refusals;
             for (const int call : {SYS_mkdir, SYS_mkdirat, SYS_rename, SYS_renameat, SYS_renameat2,
                                    SYS_unlink, SYS_unlinkat, SYS_rmdir, SYS_utimensat, SYS_fchmod})
                 refusals.push_back({call, 0, 0, 0, true});
             refusals.push_back({SYS_openat, 2, O_ACCMODE | O_CREAT, 0, false});
             refusals.push_back({SYS_open, 1, O_ACCMODE | O_CREAT, 0, false});
             Refuse(refusals, EROFS);
         },
         nullptr},
        {"unreadable settings",  // their copy, which is longer, can be read
         [] {
             Refuse({{SYS_read, 2, UINT_MAX, sizeof OLD_SETTINGS - 1, true}}, EIO);
         },
         nullptr},
#endif
    };
    return faults;
}

class Faults : public testing::Test {
protected:
    Faults() : library(::dlopen(HXD_DRIVER_FILE, RTLD_NOW | RTLD_LOCAL)) {
        ::mkdir("/run/shims", 0755);
        writeFile("/run/shims/dmesg", "echo line\n");
        writeFile("/storage/log/restart.log", "log\n");
        writeFile("/etc/resolv.conf", "nameserver 127.0.0.53\n");
        writeFile("/etc/iot_cfg/vncConfig.ini", "[VNCCONFIG]\npasswd=panel\n");
        writeFile(TIME_SETTINGS, "[NTP_PARAM]\nntp_switch=1\nntp_mode=0\n");
        Restore();
    }

    static void Restore() { writeFile(SETTINGS, OLD_SETTINGS); }
    // What other programs keep in the file is still there, and the setting is one that was written.
    static bool IsWhole() {
        const std::string text = readFile(SETTINGS);
        bool isWritten = false;
        for (const int value : {OLD_VALUE, NEW_VALUE, LAST_VALUE})
            isWritten |= text.find("buzz_duration=" + std::to_string(value) + "\n") != text.npos;
        return isWritten && text.find("key=kept") != text.npos;
    }

    // In a process of its own; its status.
    template <class BODY>
    static int Apart(BODY body) {
        std::fflush(stdout);
        const pid_t child = ::fork();
        if (child == 0) {
            if (std::freopen("/dev/null", "w", stdout) == nullptr)  // what the driver prints
                ::_exit(73);
            g_systemCalls.flushes = false;
            sim::SimPanel::Instance().RunClock(1000.0);
            body();
            ::_exit(0);
        }
        return WaitStatus(child);
    }

    void EachAllocationFails(const Operation& operation, void (*refuse)(int number), int most);

    void* library;
};

}  // namespace

TEST_F(Faults, LeaveTheDeviceWorking) {
    for (const Fault& fault : AllFaults()) {
        const int status = Apart([&] {
            Panel panel(library);
            panel.Init();
            Synchronise(panel);  // Qt 4 starts the thread that sees processes end with the first
            for (const Operation& operation : Operations()) {
                Restore();
                panel.Init();
                panel.device->DevIOCtrl("REFLESH()");
                if (fault.end == nullptr)
                    continue;
                fault.begin();
                operation.run(panel);
                fault.end();
                if (!panel.Works() || !IsWhole()) {
                    std::fprintf(stderr, "%s: %s\n", fault.name, operation.name);
                    ::_exit(71);
                }
            }
            if (fault.end == nullptr)
                fault.begin();
            for (const Operation& operation : Operations()) {
                panel.Init();
                operation.run(panel);
            }
        });
        EXPECT_EQ(status, 0) << fault.name;
        EXPECT_TRUE(IsWhole()) << fault.name;
        const int after = Apart([&] {
            Restore();
            ::_exit(Panel(library).Works() ? 0 : 72);
        });
        EXPECT_EQ(after, 0) << fault.name;
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void Faults::EachAllocationFails(const Operation& operation, void (*refuse)(int number), int most) {
    void* const shared =
        ::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    int& number = *static_cast<int*>(shared);
    int endsOfQt = 0;
    for (bool reachedAll = false; !reachedAll;) {
        const int status = Apart([&] {
            faulty_memory::TellQtsEnds();
            sim::SimPanel::Instance().Fail("__gui_screen_capture", {});  // draws for long
            Panel panel(library);
            bool refused = true;
            while (refused && number < most) {
                ++number;
                Restore();
                panel.Init();
                panel.device->DevIOCtrl("REFLESH()");
                refuse(number);
                operation.run(panel);
                refused = faulty_memory::Stop();
                if (!panel.Works() || !IsWhole())
                    ::_exit(71);
            }
        });
        reachedAll = status == 0;
        const bool isQts = WIFEXITED(status) && WEXITSTATUS(status) == faulty_memory::QTS_END;
        endsOfQt += isQts ? 1 : 0;
        if (!reachedAll && !isQts) {
            ADD_FAILURE() << operation.name << ": allocation " << number << ", status " << status;
            break;
        }
    }
    std::printf("%s: %d allocations, %d ends of Qt\n", operation.name, number - 1, endsOfQt);
#if QT_VERSION >= 0x050000  // Qt 4.8 ends in half of what it is refused
    EXPECT_LE(endsOfQt, operation.mostEndsOfQt) << operation.name;
#endif
    ::munmap(shared, sizeof(int));
}

// The first, the second, ... allocation of each operation fails, and then of the threads that work
// for it; these never end, so it is the first sixty of theirs. Where Qt ends the process, the next
// one goes on behind that; nobody else may.
TEST_F(Faults, EveryAllocationMayFail) {
    for (const Operation& operation : Operations()) {
        EachAllocationFails(operation, faulty_memory::Refuse, INT_MAX);
        EachAllocationFails(operation, faulty_memory::RefuseOthers, 60);
    }
}
#endif

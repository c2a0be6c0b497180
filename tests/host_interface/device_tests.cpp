// The built library, driven as a host drives it: through dlopen and the abstract classes.
#include "Adversity.h"
#include "FakeHost.h"
#include "FakeLink.h"
#include "Resources.h"
#include "SimPanel.h"
#include "SystemCalls.h"
#include "WaitStatus.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <ctime>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

const unsigned char BLOB[] = {2, 0, 0, 0, 1, 0, 0, 0, 200, 0, 0, 0};

class Device : public testing::Test {
protected:
    Device() {
        library = ::dlopen(HXD_DRIVER_FILE, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            throw std::runtime_error(::dlerror());
        create =
            reinterpret_cast<decltype(&CreateDeviceCtrl)>(::dlsym(library, "CreateDeviceCtrl"));
        destroy =
            reinterpret_cast<decltype(&DestroyDeviceCtrl)>(::dlsym(library, "DestroyDeviceCtrl"));
        device = create("panel", &host);
    }
    ~Device() override {
        destroy(device);
        ::dlclose(library);
        sim::SimPanel::Instance().Reset();
    }

    int Init() { return device->InitDevice(BLOB, sizeof BLOB); }
    int Collect(int count = 32) {
        const std::vector<int> channels(static_cast<std::size_t>(count), 1);
        return device->CollectDevData(channels.data(), count);
    }

    FakeHost host;
    void* library = nullptr;
    decltype(&CreateDeviceCtrl) create = nullptr;
    decltype(&DestroyDeviceCtrl) destroy = nullptr;
    IDeviceCtrl* device = nullptr;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int CYCLES = 500;
#else
constexpr int CYCLES = 10000;
#endif

void RunInAThread(std::function<void()> body) {
    pthread_t thread = {};
    const auto run = [](void* work) -> void* {
        (*static_cast<std::function<void()>*>(work))();
        return nullptr;
    };
    ASSERT_EQ(::pthread_create(&thread, nullptr, run, &body), 0);
    ::pthread_join(thread, nullptr);
}

}  // namespace

TEST_F(Device, RefusesBadArgumentsInEveryState) {
    int channel = 1;
    int value = 7;
    for (const char* state : {"created", "initialised", "cleaned up"}) {
        EXPECT_EQ(device->InitDevice(nullptr, 5), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->InitDevice(BLOB, 0), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->InitDevice(BLOB, -1), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->DevIOCtrl(nullptr), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->WriteChannel(-1, DATATYPE_INTEGER, &value), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->WriteChannel(0, DATATYPE_INTEGER, nullptr), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->WriteChannel(2147483647, DATATYPE_INTEGER, &value), 0) << state;
        EXPECT_EQ(device->WriteChannel(0, static_cast<DATATYPE>(-2), &value), 0) << state;
        EXPECT_EQ(device->UpdataCommunication(nullptr), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->ChannelRefChange(nullptr, 5), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->ChannelRefChange(&channel, 0), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->ChannelRefChange(&channel, 65537), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->ChannelRefChange(&channel, 65536), 0) << state;
        EXPECT_EQ(device->ChannelRefChange(&channel, 1), 0) << state;
        EXPECT_EQ(device->CollectDevData(nullptr, 5), 0) << state;
        EXPECT_EQ(device->CollectDevData(&channel, -5), 0) << state;
        EXPECT_EQ(device->CollectDevData(&channel, 65537), HOST_BAD_ARGUMENT) << state;
        EXPECT_EQ(device->SetChannelAddress(-1, -1), 0) << state;
        EXPECT_EQ(Collect(65536), 0) << state;
        if (std::string(state) == "created")
            EXPECT_EQ(Init(), 0);
        else
            EXPECT_EQ(device->CleanupDevice(), 0);
    }
    EXPECT_EQ(device->CleanupDevice(), 0);
    EXPECT_EQ(destroy(nullptr), 1);
    ForeignDevice foreign;
    EXPECT_EQ(destroy(&foreign), 0);
    EXPECT_EQ(destroy(create(nullptr, nullptr)), 0);
    EXPECT_EQ(host.unexpectedCalls, 0);
}

// The thread of the time control or the one of the network task is refused.
TEST_F(Device, StartsEverythingOrNothing) {
    for (const int threads : {0, 1}) {
        g_systemCalls.threads = threads;
        EXPECT_EQ(Init(), 0);
        g_systemCalls.threads = -1;
        EXPECT_EQ(Collect(), 0);
        EXPECT_TRUE(host.numberChannels.empty()) << threads;
        EXPECT_EQ(Init(), 0);
        EXPECT_EQ(Collect(), 0);
        EXPECT_EQ(host.numberChannels.size(), 32u) << threads;
        device->CleanupDevice();
        host.numberChannels.clear();
    }
}

TEST_F(Device, DeliversTheChannelsByTheirTypes) {
    const std::vector<int> texts = {0, 1, 7, 8, 14, 15, 16, 17, 18, 19, 21, 22};
    host.channelType = [&](int channel) {
        if (std::count(texts.begin(), texts.end(), channel) != 0)
            return 3;
        return channel == 20 ? 1 : channel == 5 ? 77 : 2;  // 77: no type that anybody knows
    };
    sim::SimPanel::Instance().Change([](sim::PanelState& state) {
        state.interfaces[0].macAddress = "02:48:58:44:00:2a";
        state.uarts[0] = {true, {7350, 2650, 0, 4200}};
        state.uarts[2].present = false;
    });
    ASSERT_EQ(Init(), 0);
    EXPECT_EQ(Collect(1), 0);  // fewer than the fixed channels: all are delivered all the same
    EXPECT_EQ(host.textChannels[0], "192.168.1.20");
    EXPECT_EQ(host.textChannels[8], "255.255.255.0");
    EXPECT_EQ(host.textChannels[21], "02:48:58:44:00:2A");
    EXPECT_EQ(host.intChannels[20], 80);
    EXPECT_GT(host.numberChannels[9], 0.0);
    EXPECT_GT(host.numberChannels[10], 1.0);
    EXPECT_EQ(host.numberChannels[28], 42.0);
    EXPECT_EQ(host.numberChannels[30], -2.0);
    EXPECT_EQ(host.numberChannels.count(5), 0u);
    EXPECT_EQ(host.textChannels.size() + host.intChannels.size() + host.numberChannels.size(), 31u);
}

TEST_F(Device, ReadsItsSourcesAgainOnlyAfterACommandThatExpiresThem) {
    ASSERT_EQ(Init(), 0);
    Collect();
    sim::SimPanel::Instance().Change([](sim::PanelState& state) { state.brightness = 35; });
    Collect();
    EXPECT_EQ(host.numberChannels[20], 80.0);
    EXPECT_EQ(device->DevIOCtrl("GetCpuUse(10)"), 0);
    Collect();
    EXPECT_EQ(host.numberChannels[20], 80.0);
    EXPECT_EQ(device->DevIOCtrl("REFLESH()"), 0);
    Collect();
    EXPECT_EQ(host.numberChannels[20], 35.0);
    double brightness = 52.9;
    EXPECT_EQ(device->WriteChannel(20, DATATYPE_DOUBLE, &brightness), 0);
    EXPECT_EQ(Collect(), 0);
    EXPECT_EQ(host.numberChannels[20], 50.0);
    int tooBright = 101;
    EXPECT_EQ(device->WriteChannel(20, DATATYPE_INTEGER, &tooBright), 5);
    EXPECT_EQ(Collect(), 5);  // the last result stays in element 0
    EXPECT_EQ(Init(), 0);     // changes nothing
    EXPECT_EQ(Collect(), 5);
    EXPECT_EQ(device->CollectDevData(&tooBright, 0), 0) << "nobody asks";
}

TEST_F(Device, CrossesTheLinkKindsAndNamesItselfOnEveryCall) {
    FakeLink link;
    EXPECT_EQ(device->UpdataCommunication(&link), 0);
    link.kind = 2;
    EXPECT_EQ(device->UpdataCommunication(&link), 0);
    link.kind = 3;
    EXPECT_EQ(device->UpdataCommunication(&link), HOST_BAD_ARGUMENT);
    int value = 0;
    device->DevIOCtrl("x");
    device->WriteChannel(50, DATATYPE_INTEGER, &value);
    Collect();
    EXPECT_EQ(link.deviceName, "panelpanelpanel");  // kept although it was refused
}

TEST_F(Device, CopesWithAnyBlob) {
    for (int length = 1; length <= 64; ++length) {
        for (const int count : {-1, 0, 2, 4133, 2147483647}) {
            for (const int mark : {0, 20000, 20001}) {
                std::vector<unsigned char> blob;
                for (int i = 0; mark != 0 && i < 2; ++i)
                    blob.push_back(static_cast<unsigned char>(mark >> 8 * i));
                for (int i = 0; i < 4; ++i)
                    blob.push_back(static_cast<unsigned char>(count >> 8 * i));
                blob.resize(64, 0xA5);
                // The exact length on the heap, so that a sanitizer sees a byte too many.
                const std::vector<unsigned char> cut(blob.begin(), blob.begin() + length);
                EXPECT_EQ(device->InitDevice(cut.data(), length), 0);
                EXPECT_EQ(device->CleanupDevice(), 0);
            }
        }
    }
}

TEST_F(Device, SurvivesCommandsBetweenAndWithinLargerCollections) {
    ASSERT_EQ(Init(), 0);
    int deliveries = 0;
    host.onDelivery = [&] { ++deliveries; };
    EXPECT_EQ(Collect(40), 0);
    EXPECT_EQ(deliveries, 40);
    EXPECT_EQ(device->DevIOCtrl("nothing"), 0);  // cuts the values to 33, the flags stay
    EXPECT_EQ(Collect(40), 0);
    EXPECT_EQ(deliveries, 40 + 32);
    host.onDelivery = [&] { device->DevIOCtrl("REFLESH()"); };
    EXPECT_EQ(Collect(60), 0);
    host.onDelivery = [] {};
    host.numberChannels.clear();
    host.channelType = [&](int channel) {
        if (channel == 40)
            device->DevIOCtrl("nothing");
        return 2;
    };
    EXPECT_EQ(Collect(61), 0);
    EXPECT_EQ(host.numberChannels.size(), 40u);  // the values are cut, so this was the last
    host.onDelivery = [] { throw std::runtime_error("host"); };
    EXPECT_EQ(Collect(32), HOST_BAD_ARGUMENT);
    host.onDelivery = [] {};
    host.status = -1;  // every callback fails
    EXPECT_EQ(Collect(32), 0);
    EXPECT_EQ(device->DevIOCtrl("GetMacInfo(i,n,m)"), 0);
}

TEST_F(Device, AnswersAnyCommandText) {
    ASSERT_EQ(Init(), 0);
    const std::string mebibyte(1 << 20, 'a');
    // So many that a splitting whose time grows with their square runs into the time-out.
    const std::string commas(1 << 21, ',');
    const std::string commands[] = {"",
                                    "(",
                                    ")",
                                    ")(",
                                    "()",
                                    "((((",
                                    "))))",
                                    "OLMA_WRITE)(",
                                    "OLMA_WRITE(",
                                    "OLMA_WRITE(1=(",
                                    "OLMA_WRITE(=)",
                                    "OLMA_WRITE(999999999999=1)",
                                    "OLMA_WRITE(nan=nan)",
                                    "SAVESCREEN(,,,,,,)",
                                    "GetMacInfo(,,)",
                                    "SetNetworkMode(,,)",
                                    "STRSHA256(,)",
                                    "ModVncPwd(,)",
                                    "ReadAppLog(,,,)",
                                    "\xff\xfe(\x80)",
                                    "ReadAppLog(%s%n,%d,%s,%s)",
                                    mebibyte,
                                    mebibyte + "(" + mebibyte + ")",
                                    "OLMA_WRITE(19=" + mebibyte + ")",
                                    "STRSHA256(" + mebibyte + ",x)",
                                    "ReadAppLog(" + mebibyte + ",1,2,3)",
                                    "GetCpuUse(" + commas + ")",
                                    "GetMacInfo(" + commas + ")",
                                    "SetNetworkMode(" + commas + ")",
                                    "SetNTPServer(" + commas + ")",
                                    "SAVESCREEN($" + std::string(1 << 20, '/') + ")"};
    for (const std::string& command : commands)
        device->DevIOCtrl(command.c_str());
    EXPECT_EQ(device->DevIOCtrl("REFLESH()"), 0);
}

// What the host does from within a callback, for each way that leads to one.
class FromWithin : public Device {
protected:
    FromWithin() { host.ints = {{"n", 1}, {"r", 0}}; }
    ~FromWithin() override { device->UpdataCommunication(&silent); }

    void OfEach(const std::function<void()>& callback,
                const std::function<void(const std::function<int()>& call)>& make) {
        const auto command = [&](const char* text) {
            return [this, text] { return device->DevIOCtrl(text); };
        };
        const std::pair<std::function<void()>*, std::function<int()>> ways[] = {
            {&host.onParameter, command("SetNetworkMode(n,n,r)")},
            {&host.onParameter, command("EnableNTP(n,r)")},
            {&host.onParameter, command("ReadAppLog(n,n,t,s)")},
            {&host.onValue, command("EnableNTP(n)")},    // is read
            {&host.onValue, command("EnableNTP(1,r)")},  // is written
            {&host.onDelivery, [this] { return Collect(); }},
            {&link.onCall, command("STRSHA256(t,r)")},
            {&link.onCall, [this] { return device->WriteChannel(32, DATATYPE_INTEGER, &zero); }},
            {&link.onCall, [this] { return Collect(); }},
            {&link.onCall, [this] { return device->UpdataCommunication(&link); }},
        };
        for (const auto& way : ways) {
            ASSERT_EQ(Init(), 0);
            device->UpdataCommunication(&link);
            *way.first = callback;
            make(way.second);
            *way.first = [] {};
        }
    }

    FakeLink link;
    FakeLink silent;
    int zero = 0;
};

TEST_F(FromWithin, AReleaseWaitsForTheEndOfTheOperation) {
    const auto release = [&] {
        EXPECT_EQ(device->CleanupDevice(), 0);
        EXPECT_EQ(Init(), HOST_BAD_ARGUMENT);  // not before it has been released
    };
    OfEach(release, [&](const std::function<int()>& call) {
        call();
        host.onDelivery = [] { ADD_FAILURE() << "it was to be released"; };
        Collect();
        host.onDelivery = [] {};
    });
    OfEach([&] { EXPECT_EQ(destroy(device), 0); },
           [&](const std::function<int()>& call) {
               const long threads = Resources::Used().threads;
               call();
               EXPECT_LT(Resources::Used(threads - 1).threads, threads);
               device = create("next", &host);
           });
}

TEST_F(FromWithin, CommandsAreDoneAtOnceAndExceptionsBecomeTheAnswer) {
    bool inside = false;
    const auto sends = [&] {
        if (inside)
            return;
        inside = true;
        EXPECT_EQ(device->DevIOCtrl("GetMacInfo(0)"), 5);
        inside = false;
    };
    OfEach(sends, [](const std::function<int()>& call) { call(); });
    OfEach([] { throw std::runtime_error("host"); },
           [](const std::function<int()>& call) { EXPECT_EQ(call(), HOST_BAD_ARGUMENT); });
    EXPECT_EQ(device->DevIOCtrl("REFLESH()"), 0);
}

TEST_F(Device, CommandsOfAllDevicesTakeTurns) {
    IDeviceCtrl* const other = create("other", nullptr);
    std::atomic<bool> answered{false};
    std::thread thread;
    host.onParameter = [&] {
        if (thread.joinable())
            return;
        thread = std::thread([&] {
            other->DevIOCtrl("REFLESH()");
            answered = true;
        });
        ::usleep(50000);
        EXPECT_FALSE(answered);
    };
    EXPECT_EQ(device->DevIOCtrl("STRSHA256(t,r)"), 0);
    thread.join();
    destroy(other);
}

// What ends the thread leaves neither a lock held nor the process dead.
TEST_F(FromWithin, TheHostsThreadMayEnd) {
    const auto cancelled = [] {
        ::pthread_cancel(::pthread_self());
        ::pthread_testcancel();
    };
    for (const std::function<void()>& end :
         {std::function<void()>(cancelled), std::function<void()>([] { ::pthread_exit(nullptr); })})
        OfEach(end, [&](const std::function<int()>& call) {
            bool returned = false;
            RunInAThread([&] {
                call();
                returned = true;
            });
            EXPECT_FALSE(returned);
        });
    EXPECT_EQ(device->DevIOCtrl("REFLESH()"), 0);
}

// Outside the host's code the operation comes to its end first.
TEST_F(Device, FinishesTheOperationOfACancelledThread) {
    int result = -1;
    bool ended = true;
    FakeLink link;  // the host has a turn before
    device->UpdataCommunication(&link);
    RunInAThread([&] {
        ::pthread_cancel(::pthread_self());
        const int started = Init();
        const int read = device->DevIOCtrl("GetMemUse(11)");  // opens and reads
        result = started | read | device->CleanupDevice();
        ::pthread_testcancel();
        ended = false;
    });
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(ended);
}

// Everything that a device reads, beside a timer of the host that interrupts it.
TEST_F(Device, ReadsTheSameUnderATimerThatRestartsNothing) {
    ASSERT_EQ(Init(), 0);
    host.texts["t"] = "";
    host.doubles["s"] = -1;
    host.channelType = [](int channel) { return channel == 0 || channel == 19 ? 3 : 2; };
    ::mkdir("/run/shims", 0755);
    std::ofstream("/run/shims/dmesg") << "sleep 0.03; echo one; sleep 0.03; echo two\n";
    const InterruptingTimer timer;
    for (int round = 0; round < 5; ++round) {
        const std::clock_t busyUntil = std::clock() + CLOCKS_PER_SEC / 20;
        while (std::clock() < busyUntil) {  // an idle machine's load is 0
        }
        device->DevIOCtrl("REFLESH()");
        EXPECT_EQ(Collect(), 0);
        EXPECT_EQ(host.textChannels[0], "192.168.1.20");
        EXPECT_NE(host.textChannels[19], "");
        EXPECT_EQ(host.numberChannels[20], 80.0);
        EXPECT_GT(host.numberChannels[9], 0.0);
        EXPECT_GT(host.numberChannels[10], 1.0);
        EXPECT_EQ(device->DevIOCtrl("ReadSysLog(0,1,t,s)"), 0);
        EXPECT_EQ(host.texts["t"], "one\ntwo\n");
    }
}

TEST_F(Device, RebootsThroughTheKernel) {
    // The panel inside the panel: a process namespace of its own is what restarts.
    const pid_t child = static_cast<pid_t>(
        ::syscall(SYS_clone, SIGCHLD | CLONE_NEWUSER | CLONE_NEWPID, nullptr, nullptr, nullptr, 0));
    if (child == 0) {
        device->DevIOCtrl(" reboot ()");
        ::_exit(0);
    }
    const int status = WaitStatus(child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGHUP) << status;
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// A sanitizer's allocator ends the program instead of failing.
TEST_F(Device, KeepsItsStateWhenMemoryRunsOut) {
    const auto withoutMemory = [](const std::function<void()>& call) {
        rlimit before = {};
        ::getrlimit(RLIMIT_AS, &before);
        const rlimit nothingMore = {1, before.rlim_max};
        ::setrlimit(RLIMIT_AS, &nothingMore);
        call();
        ::setrlimit(RLIMIT_AS, &before);
    };
    const int channel = 1;
    const std::vector<int> channels(65536, 1);
    const std::vector<unsigned char> blob(1 << 20);
    const std::string name(1 << 20, 'x');
    int sized = 0, collected = 0, initialised = -1;
    withoutMemory([&] {
        EXPECT_EQ(create(name.c_str(), &host), nullptr);
        sized = device->ChannelRefChange(&channel, 65536);
        collected = device->CollectDevData(channels.data(), 65536);
    });
    EXPECT_EQ(collected, sized);  // HOST_BAD_ARGUMENT, unless earlier cases left the heap large
    ASSERT_EQ(Init(), 0);
    withoutMemory([&] { initialised = device->InitDevice(blob.data(), 1 << 20); });
    EXPECT_EQ(initialised, 0);
    EXPECT_EQ(Collect(), 0);
    EXPECT_EQ(host.numberChannels.size(), 32u);  // the services are still there
}
#endif

TEST_F(Device, LeavesNothingBehind) {
    const auto cycles = [&](int count) {
        for (int i = 0; i < count; ++i) {
            IDeviceCtrl* const other = create("other", &host);
            other->InitDevice(BLOB, sizeof BLOB);
            if (i % 2 == 0)
                other->CleanupDevice();
            destroy(other);
        }
    };
    cycles(200);  // whatever is allocated once
    const Resources before = Resources::Used();
    cycles(CYCLES);
    const Resources after = Resources::Used(before.threads);
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(after.memoryKib - before.memoryKib, 1024);
#endif
}

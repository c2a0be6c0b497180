#include "Record.h"
#include "network/InterfaceSettings.h"
#include "network/NetworkCommands.h"
#include "network/NetworkTask.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>
#include <QSemaphore>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

namespace {

using CDevBas::ListInterfaceAddresses;
using network_commands::GetMacInfo;
using network_commands::SetNetworkMode;

class Interfaces : public RecordTest {
protected:
    static void Fail(const char* function, int result, int after = 0) {
        sim::Failure failure;
        failure.result = result;
        failure.after = after;
        sim::SimPanel::Instance().Fail(function, failure);
    }
    static void SetFlags(std::uint8_t flags) {
        ChangePanel([=](sim::PanelState& state) { state.interfaces[0].record.flags = flags; });
    }
    static void SetInterfaceCount(std::size_t count) {
        const sim::Interface usual = sim::PanelState().interfaces[0];
        ChangePanel([&](sim::PanelState& state) { state.interfaces.assign(count, usual); });
    }
    static bool SetIp(const char* address, int which, const std::string& name) {
        QString text = QLatin1String(address);
        QString interfaceName = QString::fromLatin1(name.c_str());
        return CDevBas::setLocalIp(text, which, interfaceName);
    }
};

// SetNetworkMode with a started task, "i", "m" and "r" being the host's variables.
class NetworkMode : public Interfaces {
protected:
    NetworkMode() {
        host.ints = {{"i", 0}, {"m", 1}, {"r", 99}};
        context.m_pNetworkTask = std::make_unique<NetworkTask>();
        context.m_pNetworkTask->start();
    }
    // The state a moment after the answer, when the next request is accepted.
    int Run() {
        const int result = SetNetworkMode(record, "i, m ,r");
        WaitFor(NetworkTask::STATE_IDLE);
        return result;
    }
    void WaitFor(NetworkTask::State state) const {
        while (context.m_pNetworkTask->GetState() != state)
            std::this_thread::yield();
    }
};

// What happens right after the answer of a task and right after its caller has got it.
std::function<void()> g_onAnswered, g_onReceived;

}  // namespace

// The tasks' semaphore: the program's functions come before the library's.
void QSemaphore::release(int n) {
    reinterpret_cast<void (*)(QSemaphore*, int)>(::dlsym(RTLD_NEXT, "_ZN10QSemaphore7releaseEi"))(
        this, n);
    if (g_onAnswered)
        g_onAnswered();
}
void QSemaphore::acquire(int n) {
    reinterpret_cast<void (*)(QSemaphore*, int)>(::dlsym(RTLD_NEXT, "_ZN10QSemaphore7acquireEi"))(
        this, n);
    if (g_onReceived)
        g_onReceived();
}

TEST(Addresses, AreFourNumbersInTheirRanges) {
    const struct {
        const char* text;
        bool address;
        bool mask;
    } cases[] = {
        {"1.0.0.0", true, false},
        {"223.255.255.255", true, true},
        {"224.0.0.1", false, true},
        {"192.0.0.255", true, true},  // bits need not be contiguous
        {"191.255.255.255", true, false},
        {"255.255.255.0", false, true},
        {"256.0.0.0", false, false},
        {"0.1.2.3", false, false},
        {"10.0.0", false, false},
        {"10.0.0.", false, false},
        {"10.0.0.256", false, false},
        {"10.-1.0.0", false, false},
        {"-10.0.0.1", false, false},
        {" +10. 0.\t0.007 and so on", true, false},
        {"10 .0.0.1", false, false},
        {"0x0a.0.0.1", false, false},
        {"10..0.1", false, false},
        {"4294967306.0.0.1", false, false},  // would be 10 after an overflow
        {"10.0.0.99999999999999999999999999", false, false},
        {"", false, false},
        {nullptr, false, false},
    };
    for (const auto& c : cases) {
        const char* const label = c.text != nullptr ? c.text : "null";
        EXPECT_EQ(CDevBas::IsAvailableIPAddr(c.text), c.address) << label;
        EXPECT_EQ(CDevBas::IsAvailableMaskAddr(c.text), c.mask) << label;
    }
}

TEST_F(Interfaces, AreListedUpToALimit) {
    for (const std::size_t count : {0u, 1u, 2u, 3u, 300u}) {
        SetInterfaceCount(count);
        unsigned int found = 77;
        std::vector<QString> names;
        EXPECT_EQ(CDevBas::getLocalcount_name(found, names), count != 0);
        const std::size_t expected = std::min<std::size_t>(count, 256);
        EXPECT_EQ(found, count != 0 ? expected : 77u);
        EXPECT_EQ(names.size(), expected);
        EXPECT_EQ(ListInterfaceAddresses().size(), expected);
    }
}

TEST_F(Interfaces, ThatCannotBeReadKeepTheirPlaceAmongTheNamesAndEndTheAddresses) {
    const std::vector<InterfaceAddress> list = ListInterfaceAddresses();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_STREQ(list[1].address, "10.0.0.20");
    EXPECT_STREQ(list[1].netmask, "255.255.255.0");

    unsigned int count = 0;
    std::vector<QString> names;
    Fail("hal_get_network", -5, 1);
    EXPECT_TRUE(CDevBas::getLocalcount_name(count, names));
    EXPECT_EQ(names, (std::vector<QString>{QLatin1String("eth0"), QString()}));
    Fail("hal_get_network", -5, 1);
    EXPECT_EQ(ListInterfaceAddresses().size(), 1u);

    names.clear();
    Fail("hal_get_network", -5);
    EXPECT_TRUE(CDevBas::getLocalcount_name(count, names));
    EXPECT_EQ(names, std::vector<QString>(2));
    EXPECT_TRUE(ListInterfaceAddresses().empty());

    Fail("hal_get_network_count", -5);
    EXPECT_FALSE(CDevBas::getLocalcount_name(count, names));
    EXPECT_TRUE(ListInterfaceAddresses().empty());
}

TEST_F(Interfaces, GetANewAddressOrMaskAndKeepTheRest) {
    const std::string longest(31, 'x');
    ChangePanel([&](sim::PanelState& state) {
        std::memset(state.interfaces[0].record.name, 'x', 32);  // too long to be asked for
        std::memcpy(state.interfaces[1].record.name, longest.c_str(), 32);
        state.interfaces[1].record.flags = 0xfd;
    });
    const hal_network_t before = Panel().interfaces[1].record;

    EXPECT_TRUE(SetIp("10.1.2.3", 0, longest));
    EXPECT_TRUE(SetIp("255.0.0.0", 1, longest));
    EXPECT_TRUE(SetIp("nothing", 2, longest));
    EXPECT_TRUE(SetIp("10.1.2.3/24", 0, longest));  // the platform may take it or not
    ASSERT_EQ(Panel().appliedRecords.size(), 4u);
    EXPECT_EQ(Panel().appliedRecords.back().address, 0xffffffffu);
    EXPECT_TRUE(SetIp("10.1.2.3 eth0", 0, longest));
    hal_network_t expected = before;
    expected.address = ::inet_addr("10.1.2.3");
    expected.netmask = ::inet_addr("255.0.0.0");
    const hal_network_t after = Panel().appliedRecords.back();
    EXPECT_EQ(std::memcmp(&after, &expected, sizeof expected), 0);

    EXPECT_FALSE(SetIp("10.1.2.3", 0, std::string(32, 'x')));
    EXPECT_FALSE(SetIp("10.1.2.3", 0, "eth7"));
    EXPECT_EQ(Panel().appliedRecords.size(), 5u);
    Fail("hal_set_ip_addr", -3);
    EXPECT_FALSE(SetIp("10.1.2.3", 0, longest));
}

TEST_F(Interfaces, TellTheirNameAndMacAddress) {
    ChangePanel([](sim::PanelState& state) {
        state.interfaces[0].macAddress = "aa:bb:cc:dd:ee:0f";
        std::memset(state.interfaces[1].record.name, 'n', 32);  // no end mark
        state.interfaces[1].macAddress = "";
    });
    host.texts = {{"name", ""}, {" mac ", ""}, {"text", "1"}};
    host.ints = {{",name, mac ", 1}};  // what the arguments as a whole would mean
    const struct {
        const char* args;
        int result;
        const char* name;
        const char* mac;
    } cases[] = {
        {"0,name", -5, "-", "-"},
        {"-1,name, mac ", -5, "-", "-"},
        {"3,name, mac ", -5, "-", "-"},
        {"2,name, mac ", -17, "-", "-"},  // the platform refuses it
        {"0,name, mac ,more", 0, "eth0", "AA:BB:CC:DD:EE:0F"},
        {"0,name,mac", 0, "eth0", "-"},  // pieces are not trimmed; the write is not looked at
        {"text,name, mac ", 0, "eth0", "AA:BB:CC:DD:EE:0F"},  // unreadable index: 0
        {",name, mac ", 0, "eth0", "AA:BB:CC:DD:EE:0F"},      // an empty one as well
        {"1,name, mac ", -17, "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn", "-"},
    };
    for (const auto& c : cases) {
        host.texts["name"] = host.texts[" mac "] = "-";
        EXPECT_EQ(GetMacInfo(record, c.args), c.result) << c.args;
        EXPECT_EQ(host.texts["name"], c.name) << c.args;
        EXPECT_EQ(host.texts[" mac "], c.mac) << c.args;
    }
    Fail("hal_get_network_count", -1);
    EXPECT_EQ(GetMacInfo(record, "0,name,mac"), -17);
}

TEST_F(NetworkMode, IsSwitchedInItsTwoBitsOnly) {
    const struct {
        std::uint8_t flags;
        int mode;
        std::uint8_t newFlags;
        std::uint32_t parameter;
    } cases[] = {
        {0xfc, 1, 0xfd, 5000},
        {0x01, 0, 0x00, 7},
        {0x02, 0, 0x00, 7},  // neither of the two modes
        {0x57, 1, 0x55, 5000},
    };
    for (const auto& c : cases) {
        SetFlags(c.flags);
        ChangePanel([](sim::PanelState& state) {
            state.interfaces[0].record.mode1_param = 7;
            state.appliedRecords.clear();
        });
        host.ints["m"] = c.mode;
        host.ints["r"] = 99;
        EXPECT_EQ(Run(), 0);
        EXPECT_EQ(host.ints["r"], 0);
        ASSERT_EQ(Panel().appliedRecords.size(), 1u);
        EXPECT_EQ(Panel().appliedRecords[0].flags, c.newFlags);
        EXPECT_EQ(Panel().appliedRecords[0].mode1_param, c.parameter);
    }

    Fail("hal_set_ip_addr", -33);  // nothing to be applied: the mode is set already
    testing::internal::CaptureStderr();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "mode not change......\n");
}

TEST_F(NetworkMode, FailuresAreReportedAsTheyAre) {
    Fail("hal_set_ip_addr", -33);
    EXPECT_EQ(Run(), -33);
    EXPECT_EQ(host.ints["r"], -33);
    EXPECT_EQ(SetNetworkMode(record, "i,m,nowhere"), -4);  // the result cannot be written
    WaitFor(NetworkTask::STATE_IDLE);

    Fail("hal_set_ip_addr", 33);  // shows in the result variable alone
    EXPECT_EQ(Run(), 33);
    EXPECT_EQ(host.ints["r"], 33);

    Fail("hal_get_network", -2);
    EXPECT_EQ(Run(), -6);
    EXPECT_EQ(host.ints["r"], -6);
}

TEST_F(NetworkMode, RefusesWhatIsOutside) {
    host.texts["text"] = "0";
    for (const char* args : {"2,m,r", "-1,m,r", "i,2,r", "i,-1,r", "text,m,r", "i,text,r"}) {
        host.ints["r"] = 99;
        EXPECT_EQ(SetNetworkMode(record, args), -4) << args;
        EXPECT_EQ(host.ints["r"], 4) << args;
    }
    host.ints["r"] = 99;
    for (const char* args : {"", "i,m", "i,m,r,"})
        EXPECT_EQ(SetNetworkMode(record, args), -5) << args;
    SetInterfaceCount(0);
    EXPECT_EQ(SetNetworkMode(record, "i,m,r"), -6);
    Fail("hal_get_network_count", -1);
    EXPECT_EQ(SetNetworkMode(record, "i,m,r"), -6);
    context.m_pNetworkTask.reset();
    EXPECT_EQ(SetNetworkMode(record, "i,m,r"), 0);
    EXPECT_EQ(host.ints["r"], 99);
    EXPECT_TRUE(Panel().appliedRecords.empty());
}

// While the panel's state is being changed the task's platform calls wait, and with them the
// request.
TEST_F(NetworkMode, IsNotQueuedBehindAnotherRequest) {
    int otherResult = -99;
    std::thread other;
    ChangePanel([&](sim::PanelState&) {
        other = std::thread([&] { context.m_pNetworkTask->Execute(1, 1, otherResult); });
        WaitFor(NetworkTask::STATE_EXECUTING);
        testing::internal::CaptureStdout();
        EXPECT_EQ(SetNetworkMode(record, "i,m,r"), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "network task is executing.......\n");
        EXPECT_EQ(host.ints["r"], 99);
    });
    other.join();
    EXPECT_EQ(otherResult, 0);
    EXPECT_EQ(Panel().appliedRecords.size(), 1u);
}

TEST_F(NetworkMode, IsNotQueuedBehindARequestThatBeginsWhileItReadsItsArguments) {
    std::atomic<bool> waiting{false}, done{false};
    std::thread holder, other;
    int otherResult = -99;
    host.onParameter = [&] {
        if (host.asked != "m")
            return;
        holder = std::thread([&] {
            ChangePanel([&](sim::PanelState&) {
                for (waiting = true; !done;)
                    std::this_thread::yield();
            });
        });
        while (!waiting)
            std::this_thread::yield();
        other = std::thread([&] { context.m_pNetworkTask->Execute(1, 1, otherResult); });
        WaitFor(NetworkTask::STATE_EXECUTING);
    };
    testing::internal::CaptureStdout();
    EXPECT_EQ(SetNetworkMode(record, "i,m,r"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "network task is executing.......\n");
    EXPECT_EQ(host.ints["r"], 99);
    done = true;
    holder.join();
    other.join();
    EXPECT_EQ(otherResult, 0);
}

TEST_F(NetworkMode, TaskEndsFromEveryState) {
    Run();  // the fixture's own task has said its word
    testing::internal::CaptureStderr();
    {
        NetworkTask neverStarted;
        int result = 99;
        EXPECT_EQ(neverStarted.Execute(0, 1, result), NetworkTask::REQUEST_NOT_RUNNING);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "task exit.....\n");
    for (int i = 0; i < 50; ++i) {  // as soon as it has been started, and right after a reply
        NetworkTask task;
        task.start();
        task.start();
        int result = 99;
        EXPECT_TRUE(i % 2 == 0 || task.Execute(0, i / 2 % 2, result) == NetworkTask::REQUEST_DONE);
        EXPECT_EQ(result, i % 2 == 0 ? 99 : 0);
    }
    // The caller of a request under way gets an answer, and the task outlives the call.
    int result = 99;
    std::thread caller, owner;
    ChangePanel([&](sim::PanelState&) {
        NetworkTask* const task = context.m_pNetworkTask.get();
        caller = std::thread(
            [&, task] { EXPECT_EQ(task->Execute(0, 1, result), NetworkTask::REQUEST_DONE); });
        WaitFor(NetworkTask::STATE_EXECUTING);
        owner = std::thread([&] { context.m_pNetworkTask.reset(); });
    });
    caller.join();
    owner.join();
    EXPECT_TRUE(result == 0 || result == -6) << result;  // -6: as in the next test
    context.m_pNetworkTask = std::make_unique<NetworkTask>();
    EXPECT_EQ(SetNetworkMode(record, "i,m,r"), -6);  // no thread to do it, but an answer
}

// The task hangs in its first line, which nobody reads.
TEST_F(NetworkMode, ARequestThatTheEndComesBeforeIsAnswered) {
    int ends[2] = {-1, -1};
    std::vector<char> page(4096);
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::fcntl(ends[1], F_SETPIPE_SZ, 4096), 4096);
    ASSERT_EQ(::write(ends[1], page.data(), page.size()), 4096);
    const int usual = ::dup(STDERR_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    auto* const task = new NetworkTask;
    task->start();
    int result = 99;
    std::thread caller([&] { task->Execute(0, 1, result); });
    while (task->GetState() != NetworkTask::STATE_EXECUTING)
        std::this_thread::yield();
    std::thread owner([task] { delete task; });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ::dup2(usual, STDERR_FILENO);
    EXPECT_EQ(::read(ends[0], page.data(), page.size()), 4096);
    caller.join();
    owner.join();
    EXPECT_EQ(result, -6);
    EXPECT_TRUE(Panel().appliedRecords.empty());
    for (const int descriptor : {ends[0], ends[1], usual})
        ::close(descriptor);
}

// The caller goes on while the task still shows its state; another request is refused meanwhile.
TEST_F(NetworkMode, AnswersBeforeItIsIdle) {
    std::atomic<int> answered{-99}, again{-99};
    Fail("hal_set_ip_addr", -33);
    g_onAnswered = [&] {
        for (int i = 0; i < 5000 && answered == -99; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        int result = 0;
        if (context.m_pNetworkTask->GetState() == NetworkTask::STATE_EXECUTING)
            again = context.m_pNetworkTask->Execute(0, 0, result);
    };
    answered = SetNetworkMode(record, "i,m,r");
    EXPECT_EQ(answered, -33);
    WaitFor(NetworkTask::STATE_IDLE);
    g_onAnswered = nullptr;
    EXPECT_EQ(again, NetworkTask::REQUEST_BUSY);
    again = -99;
    int result = 0;
    g_onReceived = [&] {  // idle, and the reply is not yet taken
        WaitFor(NetworkTask::STATE_IDLE);
        if (again.exchange(0) == -99)
            again = context.m_pNetworkTask->Execute(0, 0, result);
    };
    EXPECT_EQ(context.m_pNetworkTask->Execute(0, 1, result), NetworkTask::REQUEST_DONE);
    g_onReceived = nullptr;
    EXPECT_EQ(again, NetworkTask::REQUEST_BUSY);
}

TEST_F(NetworkMode, ATaskThatHasFailedTakesNoMoreRequests) {
    std::atomic<bool> failed{false};
    int result = 99;
    g_onAnswered = [&] {
        if (!failed.exchange(true))
            throw std::bad_alloc();
    };
    EXPECT_EQ(context.m_pNetworkTask->Execute(0, 1, result), NetworkTask::REQUEST_DONE);
    WaitFor(NetworkTask::STATE_IDLE);
    g_onAnswered = nullptr;
    EXPECT_EQ(context.m_pNetworkTask->Execute(0, 1, result), NetworkTask::REQUEST_NOT_RUNNING);
}

TEST_F(NetworkMode, TaskOutlivesItsCaller) {
    std::thread owner;
    std::atomic<bool> ended{false};
    g_onReceived = [&] {
        owner = std::thread([&] {
            context.m_pNetworkTask.reset();
            ended = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(ended);
    };
    EXPECT_EQ(SetNetworkMode(record, "i,m,r"), 0);
    g_onReceived = nullptr;
    owner.join();
}

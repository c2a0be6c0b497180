// Commands, workers and the control thread, against servers on the panel's own network.
#include "Adversity.h"
#include "FaultyMemory.h"
#include "SystemCalls.h"
#include "commands/ChannelWrite.h"
#include "common/QtText.h"
#include "network/NerworkCheck.h"
#include "ntp/NameLookup.h"
#include "tests/ntp/TimeControl.h"
#include "tests/ntp/TimeServer.h"

#include <netdb.h>

namespace {

constexpr long long SERVER_TIME = 1900000000;  // 2030-03-17 17:46:40 UTC
constexpr long long EVENING = 1900017100;      // 22:31:40 UTC

int Count(const std::string& text, const std::string& part) {
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace

TEST_F(TimeControl, CommandsSetWhatIsInRange) {
    using namespace CDevBas;
    NtpCtrl& control = Start();
    host.ints = {{"seven", 7}, {"one", 1}, {"minus", -1}, {"r", 99}};
    host.texts = {{"text", "x"}, {"a", "10.0.0.1"}};
    const struct {
        int (*run)(OLMA_DATA&, const CString&);
        const char* args;
        int result, variable;
    } cases[] = {
        {EnableNtp, "one,r", 0, 0},
        {EnableNtp, "seven , r", 0, 4},
        {EnableNtp, "minus,r", 0, 4},
        {SetNtpMode, "0,r", 0, 0},
        {SetNtpMode, "2,r", 0, 4},
        {SetNtpFreq, "seven", 0, 99},
        {SetNtpFreq, "0,r", 0, 4},
        {SetNtpFreq, "25,r", 0, 4},
        {SetNtpFreq, "text,r", -4, 4},
        {SetNtpFreq, "text", -4, 99},
        {SetNtpFreq, "3,nobody", -4, 99},
        {EnableNtp, "1,r,r", -5, 99},
        {SetNtpServer, "a,,text", -5, 99},
        {SetNtpServer, "a,,,,r,r", -5, 99},
        {SetNtpServer, "a,,text,one,r", -4, 4},
        {SetNtpServer, "a,,text,time.example.org,r", 0, 0},
        {SetNtpServer, "a,,text,time.example.org,nobody", -4, 99},
    };
    for (const auto& c : cases) {
        host.ints["r"] = 99;
        EXPECT_EQ(c.run(record, c.args), c.result) << c.args;
        EXPECT_EQ(host.ints["r"], c.variable) << c.args;
    }
    using namespace CDevBas;
    EXPECT_EQ(execSameCtrl(record, "1,r", static_cast<NTP_CTRL_TYPE>(3)), -5);
    EXPECT_EQ(host.ints["r"], 5);
    EXPECT_EQ(execSameCtrl(record, "1,nobody", static_cast<NTP_CTRL_TYPE>(-1)), -4);

    EXPECT_EQ(mfDevIOWriteChannel(record, "16=b"), 0);
    EXPECT_EQ(control.setNtpServer(QString(), 4), -4);
    EXPECT_EQ(control.setNtpServer(QString(), -1), -4);

    const std::string expected =
        "[NTP_PARAM]\nntp_freq=3\nntp_mode=0\nntp_server1=10.0.0.1\nntp_server2=b\nntp_server3=x\n"
        "ntp_server4=time.example.org\nntp_switch=1\n";
    EXPECT_EQ(readFile(SETTINGS), expected);
    ntpCfgParam reloaded;
    reloaded.ReadCfg();
    EXPECT_TRUE(control.getParam() == reloaded);

    ::unlink(SETTINGS);  // equal values are not written
    EXPECT_EQ(SetNtpServer(record, "a,b,text,time.example.org"), 0);
    EXPECT_EQ(control.enableNtp(1) | control.setNtpMode(0) | control.setNtpFreq(3), 0);
    EXPECT_NE(::access(SETTINGS, F_OK), 0);
}

TEST_F(TimeControl, SetsBothClocksToTheServersTime) {
    const TimeServer server("127.0.0.11", TimeServer::Showing(SERVER_TIME));
    const TimeServer evening("127.0.0.12", TimeServer::Showing(EVENING));
    NtpCtrl& control = StartOnDemand({"127.0.0.11"});
    testing::internal::CaptureStdout();
    EXPECT_EQ(Exec(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ClockReport(Panel().rtcSettings[0]) + "\n");
    ExpectClocksAt(SERVER_TIME);

    ::unlink("/etc/timezone");
    control.setNtpServer(QLatin1String("127.0.0.12"), 0);
    EXPECT_EQ(Exec(), 0);
    ExpectClocksAt(EVENING + 8 * 3600);
    EXPECT_EQ(Panel().rtcSettings.back().tm_hour, 30);
    EXPECT_EQ(Count(readFile(COMMANDS), " (refused)\n"), 1) << "but the other clock was set";

    ASSERT_EQ(::symlink("/usr/share/zoneinfo/Etc/GMT-3", "/etc/localtime"), 0);  // 3 hours east
    EXPECT_EQ(Exec(), 0);
    ExpectClocksAt(EVENING + 3 * 3600);
    ::unlink("/etc/localtime");
    sim::SimPanel::Instance().Fail("hal_set_rtc_time", sim::Failure());
    EXPECT_EQ(Exec(), 10);
    EXPECT_EQ(CDevBas::ExecNtp(record, "nobody"), -4);
    control.enableNtp(0);
    const int dates = Runs("date");
    EXPECT_EQ(Exec(), 0);
    EXPECT_EQ(Runs("date"), dates);
}

// Which servers are asked follows from what can be reached.
TEST_F(TimeControl, AsksOnlyServersThatCanBeReached) {
    writeFile("/etc/hosts", "127.0.0.12 time.test\n127.0.0.13 time.test\n");
    const auto answer = TimeServer::Showing(SERVER_TIME);
    const TimeServer literal("127.0.0.11", answer);
    const TimeServer named("127.0.0.12", answer), namedToo("127.0.0.13", answer);
    NtpCtrl& control = StartOnDemand({});
    const std::string literals = "127.0.0.11", name = "time.test";
    const struct {
        std::vector<std::string> servers;
        const char* ping;  // $6 is the address
        int result, literalAsked, nameAsked, pings;
    } cases[] = {
        {{literals, name, "", ""}, "exit 0", 0, 1, 1, 2},
        {{literals, name, "", ""}, "test $6 != 127.0.0.53", 0, 1, 0, 2},
        {{literals, name, "", ""}, "test $6 = 127.0.0.53", 0, 0, 1, 2},
        {{literals, name, "", ""}, "exit 1", 10, 0, 0, 2},
        {{name, "", "", ""}, "test $6 = 127.0.0.53", 0, 0, 1, 1},
        {{name, "", "", ""}, "exit 1", 10, 0, 0, 1},
        {{literals, literals, literals, literals}, "test $6 != 127.0.0.53", 0, 4, 0, 1},
        {{"", "", "", ""}, "exit 0", 10, 0, 0, 0},
    };
    testing::internal::CaptureStderr();
    for (const auto& c : cases) {
        const int label = static_cast<int>(&c - cases);
        const int before[] = {literal.Requests(), named.Requests(), namedToo.Requests(),
                              Runs("ping")};
        for (int i = 0; i < NTP_SERVER_COUNT; ++i)
            control.setNtpServer(QLatin1String(c.servers[static_cast<std::size_t>(i)].c_str()), i);
        OnPing(std::string("set -- x \"$@\"; ") + c.ping);
        EXPECT_EQ(Exec(), c.result) << label;
        EXPECT_TRUE(WaitFor([&] { return literal.Requests() == before[0] + c.literalAsked; }))
            << label;
        EXPECT_TRUE(WaitFor([&] { return named.Requests() == before[1] + c.nameAsked; })) << label;
        EXPECT_TRUE(WaitFor([&] { return namedToo.Requests() == before[2] + c.nameAsked; }))
            << label << ": every address is asked";
        EXPECT_EQ(Runs("ping"), before[3] + c.pings) << label;
    }
    EXPECT_EQ(Count(testing::internal::GetCapturedStderr(), "getaddrinfo error"), 0)
        << "empty names";
}

TEST_F(TimeControl, TakesTheOneServerThatAnswers) {
    const TimeServer silent("127.0.0.11", nullptr);
    writeFile("/etc/hosts", "2001:db8::1 none.test\n");  // no IPv4 address
    StartOnDemand({"127.0.0.11", "none.test", "127.0.0.14", "127.0.0.15"});
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(Exec(), 10);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string error = testing::internal::GetCapturedStderr();
    EXPECT_EQ(Count(error, "execNtp-----------\n"), 1);
    EXPECT_EQ(Count(error, "server:none.test,getaddrinfo error: Name or service not known\n"), 2);
    EXPECT_EQ(Count(out, "[tryToSend:214]等待服务器响应超时，终止 !:127.0.0.11\n\n"), 2);

    const TimeServer good("127.0.0.15", TimeServer::Showing(SERVER_TIME));
    EXPECT_EQ(Exec(), 0);
    ExpectClocksAt(SERVER_TIME);
}

TEST_F(TimeControl, SaysWhatCouldNotBeSentOrAwaited) {
    StartOnDemand({"255.255.255.255"});  // sending to everybody is not permitted
    testing::internal::CaptureStdout();
    EXPECT_EQ(Exec(), 10);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[tryToSend:187]发送请求数据包到服务器失败...:255.255.255.255\n\n"
              "[tryToSend:187]发送请求数据包到服务器失败...:255.255.255.255\n\n");
    NtpThread worker;
    std::int32_t seconds = 0;
    testing::internal::CaptureStdout();
    g_systemCalls.pollFails = true;
    worker.Start();
    worker.Post(QLatin1String("127.0.0.11"), REACH_BOTH);
    const auto hasEnded = [&] { return worker.Look(seconds) != NtpThread::Outcome::WORKING; };
    EXPECT_TRUE(WaitFor(hasEnded));
    testing::internal::CaptureStderr();
    worker.Post(QLatin1String("a.name.invalid"), REACH_BOTH);
    EXPECT_TRUE(WaitFor(hasEnded));
    EXPECT_EQ(
        testing::internal::GetCapturedStderr().find("server:a.name.invalid,getaddrinfo error: "),
        0u);
    g_systemCalls.pollFails = false;
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[tryToSend:208]select函数出错，被迫终止 !:127.0.0.11\n\n"
              "[tryToSend:208]select函数出错，被迫终止 !:127.0.0.11\n\n");
}

TEST_F(TimeControl, TakesAnyBytesForAnAnswer) {
    const auto honest = TimeServer::Showing(SERVER_TIME);
    const struct {
        const char* name;
        std::string datagram;  // after the honest answer, if that is to come first
        bool afterHonest;
        int latencyMs, result;
    } cases[] = {
        {"the first 48 bytes count", std::string(2000, '\xff'), true, 0, 0},
        {"the second attempt takes the answer to the first", "", true, 2100, 0},
        {"no byte", "", false, 0, 10},
        {"all bits", std::string(48, '\xff'), false, 0, 0},
        {"one byte short", std::string(47, '\0'), false, 0, 0},
        {"highest bits", std::string(48, '\x80'), false, 0, 0},
        {"what is missing counts as zero", "x", false, 0, 0},
    };
    std::atomic<int> current{0};
    const TimeServer server("127.0.0.11", [&](const sntp::Packet& request, int number) {
        const auto& c = cases[current];
        std::this_thread::sleep_for(std::chrono::milliseconds(c.latencyMs));
        return (c.afterHonest ? honest(request, number) : "") + c.datagram;
    });
    StartOnDemand({"127.0.0.11"});
    testing::internal::CaptureStdout();
    for (const auto& c : cases) {
        current = static_cast<int>(&c - cases);
        EXPECT_EQ(Exec(), c.result) << c.name;
    }
    const long long now = ::time(nullptr);
    EXPECT_EQ(Exec(), 0);                    // the last one again
    ExpectClocksAt((2085978496 + now) / 2);  // half way to 2036, where a timestamp of zero lies
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(Count(out,
                    "[getServerTime:305]读取返回数据失败\n\n"
                    "[sendPacketToServer:246]获取服务器数据失败 !\n\n"),
              1);
    EXPECT_EQ(Count(out, "[tryToSend:214]"), 1);
}

TEST_F(TimeControl, SynchronisesByItselfWhenDue) {
    const TimeServer server("127.0.0.11", TimeServer::Showing(SERVER_TIME));
    const auto synchronised = [&](int times) {
        return WaitFor([=] { return static_cast<int>(Panel().rtcSettings.size()) >= times; });
    };
    sim::SimPanel::Instance().HoldClock();
    NtpCtrl& control = StartAutomatic({"127.0.0.11"});
    ASSERT_TRUE(synchronised(1));
    // Two ticks, in which the end of the synchronisation is noted.
    std::this_thread::sleep_for(std::chrono::milliseconds(450));
    const int pings = Runs("ping");  // what each synchronisation begins with
    sim::SimPanel::Instance().AdvanceClock(2 * 3600000 - 1);
    control.setNtpServer(QLatin1String("127.0.0.11"), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(450));
    EXPECT_EQ(Runs("ping"), pings) << "neither the period is over nor do servers count";
    g_systemCalls.throwingTicks = 2;
    sim::SimPanel::Instance().AdvanceClock(1);
    ASSERT_TRUE(synchronised(2));
    EXPECT_EQ(g_systemCalls.throwingTicks, 0) << "a tick may throw";
    const int pingsOfTwo = Runs("ping");
    std::this_thread::sleep_for(std::chrono::milliseconds(450));
    EXPECT_EQ(Runs("ping"), pingsOfTwo) << "the period begins anew";
    control.setNtpFreq(3);
    ASSERT_TRUE(synchronised(3));
    control.setNtpMode(0);
    std::this_thread::sleep_for(std::chrono::milliseconds(450));
    control.setNtpMode(1);
    ASSERT_TRUE(synchronised(4));
    control.enableNtp(0);
    std::this_thread::sleep_for(std::chrono::milliseconds(450));
    // Two attempts of two pings each fail, then the network is there.
    OnPing("echo >>/run/attempts; test $(wc -l </run/attempts) -ge 5");
    const Stopwatch watch;
    control.enableNtp(1);
    ASSERT_TRUE(synchronised(5));
    EXPECT_GE(watch.Ms(), 2000);
    ::unlink("/run/attempts");
}

// Commands, channel reads and the control thread at once.
TEST_F(TimeControl, ServesSeveralThreads) {
    const TimeServer server("127.0.0.11", TimeServer::Showing(SERVER_TIME));
    NtpCtrl& control = StartAutomatic({"127.0.0.11", "", "", ""});
    std::thread writer([&] {
        for (int i = 0; i < 30; ++i) {
            control.setNtpServer(QLatin1String(i % 2 == 0 ? "127.0.0.11" : ""), 3);
            control.setNtpFreq(i % 24 + 1);
        }
    });
    std::thread commands([&] {
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(control.execNtp(), 0);
    });
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(control.getParam().servers.size(), NTP_SERVER_COUNT);
    writer.join();
    commands.join();
    EXPECT_EQ(control.getParam().freq, 6);
}

// Whatever a setter writes, everybody else waits for it.
TEST_F(TimeControl, ChangesOneSettingAtATime) {
    NtpCtrl& control = StartOnDemand({});
    const QString name = QLatin1String("a");
    const QStringList names = QStringList() << name << name << name << name;
    const std::function<void()> changes[] = {
        [&] { control.setNtpFreq(3); },
        [&] { control.setNtpServer(name, 0); },
        [&] { control.setNtpServers(names); },
    };
    const std::function<void()> others[] = {
        [&] { control.enableNtp(1); },
        [&] { control.setNtpServer(name, 4); },
        [&] { control.getParam(); },
    };
    for (const auto& change : changes) {
        std::atomic<int> done{0};
        std::vector<std::thread> threads;
        g_systemCalls.onFlush = [&](const std::string&) {
            for (const auto& other : others) {
                if (threads.size() < 3)
                    threads.emplace_back([&] {
                        other();
                        ++done;
                    });
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            EXPECT_EQ(done, 0) << &change - changes;
        };
        change();
        g_systemCalls.onFlush = nullptr;
        EXPECT_EQ(threads.size(), 3U) << &change - changes;
        for (std::thread& thread : threads)
            thread.join();
    }
}

TEST_F(TimeControl, AWorkerWithoutDescriptorsFailsAndIsStartedLater) {
    std::int32_t seconds = 0;
    NtpThread worker;
    testing::internal::CaptureStdout();
    {
        const DescriptorLimit none(0);
        worker.Start();
    }
    worker.Post(QLatin1String("127.0.0.11"), REACH_BOTH);
    EXPECT_EQ(worker.Look(seconds), NtpThread::Outcome::FAILED);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "open event fd failed!Too many open files\n");
    worker.Start();
    worker.Post(QLatin1String("127.0.0.11"), 3);  // an unknown mode lets nothing through
    EXPECT_TRUE(WaitFor([&] { return worker.Look(seconds) != NtpThread::Outcome::WORKING; }));
}

TEST_F(TimeControl, AWorkerEndsInTheMiddleOfARequest) {
    const TimeServer silent("127.0.0.11", nullptr);
    std::int32_t seconds = 0;
    NtpThread stopped;
    stopped.notifyStop();
    stopped.Start();
    stopped.Post(QLatin1String("127.0.0.11"), REACH_BOTH);
    EXPECT_EQ(stopped.Look(seconds), NtpThread::Outcome::FAILED) << "for good";
    testing::internal::CaptureStdout();
    {
        NtpThread worker;
        worker.Start();
        worker.Post(QLatin1String("127.0.0.11"), REACH_BOTH);
        EXPECT_TRUE(WaitFor([&] { return silent.Requests() == 1; }));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(worker.Look(seconds), NtpThread::Outcome::WORKING);
        worker.notifyStop();
        EXPECT_EQ(worker.Look(seconds), NtpThread::Outcome::FAILED);
        worker.Post(QLatin1String("127.0.0.11"), REACH_BOTH);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[tryToSend:220]FD_ISSET failed !:127.0.0.11\n\n");
    EXPECT_EQ(silent.Requests(), 1);
}

// Threads are short for the worker, then for its look-up; later calls are interrupted.
TEST_F(TimeControl, FailsWithoutThreadsAndGoesOnLater) {
    writeFile("/etc/hosts", "127.0.0.12 time.test\n");
    const TimeServer server("127.0.0.12", TimeServer::Showing(SERVER_TIME));
    StartOnDemand({"time.test"});
    NerworkCheck::pingNetWork(true);  // Qt 4 starts a thread with the first process
    for (const int threads : {0, 1}) {
        g_systemCalls.threads = threads;
        testing::internal::CaptureStderr();
        EXPECT_EQ(Exec(), 10) << threads;
        EXPECT_EQ(Count(testing::internal::GetCapturedStderr(), "getaddrinfo error"), 2 * threads);
    }
    g_systemCalls.threads = -1;
    EXPECT_EQ(Exec(), 0);
    const TimeServer silentNames("127.0.0.53", nullptr, 53);  // which is asked for a second
    writeFile("/etc/resolv.conf", "nameserver 127.0.0.53\noptions timeout:1 attempts:1\n");
    writeFile("/etc/nsswitch.conf", "hosts: dns files\n");
    g_systemCalls.interrupts = true;
    EXPECT_EQ(Exec(), 0);
    g_systemCalls.interrupts = false;
    EXPECT_EQ(server.Requests(), 2);
    EXPECT_EQ(CDevBas::SetNtpMode(record, "1"), 0);
    EXPECT_TRUE(WaitFor([&] { return server.Requests() > 2; })) << "its own thread goes on, too";
}

// Qt 4.8 ends where it has no memory for a message.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && QT_VERSION >= 0x050000
TEST_F(TimeControl, FailsWithoutMemory) {
    NtpCtrl& control = StartOnDemand({"127.0.0.11"});
    for (const auto refuse : {faulty_memory::Refuse, faulty_memory::RefuseOthers}) {
        refuse(1);
        EXPECT_EQ(control.execNtp(), RESULT_TIME_SYNC_FAILED);
        EXPECT_TRUE(faulty_memory::Stop()) << "its own, or its worker's";
    }
    Stop();
    int result = 0, before = 0, refusals = 0;
    while (refusals == 0 || faulty_memory::Stop()) {  // of the look-up's own thread
        std::vector<sockaddr_in> addresses;
        faulty_memory::RefuseOthers(++refusals);
        before = result;
        result = LookUpName("localhost", -1, addresses);
        EXPECT_TRUE(result != 0 || !addresses.empty()) << refusals;
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(before, EAI_MEMORY) << "the last refusal is the list's";
}
#endif

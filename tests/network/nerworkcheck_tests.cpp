#include "Adversity.h"
#include "SystemCalls.h"
#include "network/NerworkCheck.h"
#include "network/ResolverText.h"
#include "tests/ntp/TimePanel.h"

namespace {

using ReachCheck = TimePanel;
using NerworkCheck::pingNetWork;

void IgnoreEchoes(bool ignore) {
    writeFile("/proc/sys/net/ipv4/icmp_echo_ignore_all", ignore ? "1" : "0");
}

}  // namespace

TEST(IpAddress, IsFourNumbersWithDots) {
    for (const char* text : {"1.2.3.4", "0.0.0.0", "255.249.199.99", "1.20.100.203", "01.02.03.04"})
        EXPECT_TRUE(NerworkCheck::isIp(QLatin1String(text))) << text;
    for (const char* text :
         {"", "1.2.3.256", "1.2.3", "1.2.3.", " 1.2.3.4", "1.2.3.4 ", "1.2.3.4\n", "001.2.3.4",
          "1.2.3.4.5", "1a2.3.4", "-1.2.3.4", "time.example.org"})
        EXPECT_FALSE(NerworkCheck::isIp(QLatin1String(text))) << text;
}

TEST(ResolverText, NamesItsServers) {
    const struct {
        const char* text;
        bool good;
        std::vector<std::string> servers;
    } cases[] = {
        {"", true, {}},
        {"search example.org\noptions rotate\n", true, {}},
        {"nameserver 192.0.2.1", true, {"192.0.2.1"}},
        {"# nameserver 1.1.1.1\nnameserver  192.0.2.1 \t\r\n\nnameserver 8.9.10.255#x\n",
         true,
         {"192.0.2.1", "8.9.10.255"}},
        {"nameserver 192.0.2.53 # primary", true, {"192.0.2.53"}},
        {"nameserver # none", true, {}},
        {"#nameserver", true, {}},
        {"nameserver", false, {}},
        {"nameserver ", false, {}},
        {"nameserver\t192.0.2.1", false, {}},
        {"  nameserver 192.0.2.1", false, {}},
        {"options 1 nameserver 192.0.2.1", false, {}},
        {"nameserver x # late", false, {}},
        {"nameserver dns.example.org", false, {}},
        {"nameserver 2001:db8::1", false, {}},
        {"nameserver 192.0.2.256", false, {}},
        {"nameserver 192.0.2.1; reboot", false, {}},
        {"nameserver 192.0.2.1\nnameserver", false, {}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> servers = {"old"};
        EXPECT_EQ(ParseNameServers(c.text, servers), c.good) << c.text;
        EXPECT_EQ(servers, c.servers) << c.text;
    }
    std::vector<std::string> servers;
    EXPECT_FALSE(ParseNameServers("nameserver " + std::string(1 << 20, '1'), servers));
}

TEST_F(ReachCheck, PingsTheFirstNameServer) {
    writeFile("/etc/resolv.conf", "nameserver 127.0.0.53 # first\nnameserver 192.0.2.1\n");
    writeFile("/etc/resolv.conf.tmp", "nameserver\n");  // somebody is writing the next one
    EXPECT_TRUE(pingNetWork(false));
    EXPECT_EQ(Runs("ping\t-c 1 -W 2 127.0.0.53\n"), 1);
    EXPECT_EQ(readFile("/tmp/ping.sh"),
              "#!/bin/sh \nping -c 1 -W 2 127.0.0.53 > /dev/null 2>&1 \n"
              "if [ $? -eq 0 ];then \nexit 0 \nelse \nexit 1 \nfi \n");
    EXPECT_FALSE(pingNetWork(true)) << "the public address is out of the sandbox's reach";
    EXPECT_EQ(Runs(std::string("ping\t-c 1 -W 2 ") + NerworkCheck::testPingIpAddr), 1);

    IgnoreEchoes(true);
    const Stopwatch watch;
    EXPECT_FALSE(pingNetWork(false));
    IgnoreEchoes(false);
    EXPECT_GE(watch.Ms(), 1900);

    OnPing("kill -9 $PPID");  // a shell that is killed has not succeeded
    EXPECT_FALSE(pingNetWork(false));
}

TEST_F(ReachCheck, FindsTheNameServerOrPingsNothing) {
    OnPing("exit 0");
    ASSERT_EQ(::rename("/etc/resolv.conf", "/etc/resolv.conf.tmp"), 0);
    bool settled = false;
    g_systemCalls.onFlush = [&](const std::string&) {
        settled = ::access("/etc/resolv.conf", F_OK) == 0;
    };
    EXPECT_TRUE(pingNetWork(false)) << "the interrupted writer's file was to be moved into place";
    g_systemCalls.onFlush = nullptr;
    EXPECT_TRUE(settled);
    EXPECT_EQ(readFile("/etc/resolv.conf"), "nameserver 127.0.0.53\n");
    EXPECT_NE(::access("/etc/resolv.conf.tmp", F_OK), 0);
    const int pings = Runs("ping");

    writeFile("/etc/resolv.conf", "nameserver\n");
    const Stopwatch malformed;
    EXPECT_FALSE(pingNetWork(false));
    EXPECT_GE(malformed.Ms(), 400);

    const Stopwatch absent;
    writeFile("/etc/resolv.conf", "search example.org\n");
    EXPECT_FALSE(pingNetWork(false));
    ::unlink("/etc/resolv.conf");
    EXPECT_FALSE(pingNetWork(false));
    EXPECT_LT(absent.Ms(), 400);

    writeFile("/etc/resolv.conf", "nameserver\n");
    std::thread writer([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        writeFile("/etc/resolv.conf", "nameserver 127.0.0.9\n");
    });
    EXPECT_TRUE(pingNetWork(false)) << "the file was mended between two attempts";
    writer.join();
    EXPECT_EQ(Runs("ping"), pings + 1);
}

TEST_F(ReachCheck, WritesAndRunsOnlyItsOwnFiles) {
    OnPing("exit 0");
    writeFile("/tmp/victim", "precious");
    ::unlink("/tmp/ping.sh");
    ASSERT_EQ(::symlink("/tmp/victim", "/tmp/ping.sh"), 0);
    EXPECT_TRUE(pingNetWork(true));
    EXPECT_EQ(readFile("/tmp/victim"), "precious");

    ::unlink("/tmp/ping.sh");
    ASSERT_EQ(::mkdir("/tmp/ping.sh", 0755), 0);
    writeFile("/tmp/ping.sh/full", "");
    EXPECT_TRUE(pingNetWork(true));

    const int before = Runs("ping");
    g_systemCalls.diskFull = true;
    EXPECT_FALSE(pingNetWork(true));
    g_systemCalls.diskFull = false;
    EXPECT_EQ(Runs("ping"), before);
    const int next = ::dup(0);
    ::close(next);
    {
        const DescriptorLimit few(next + 2);  // for lock and script, not for the shell's pipes
        EXPECT_FALSE(pingNetWork(true));
    }

    for (const char* lock : {HXDCTRL::dnsFileLockPath, NerworkCheck::pingLckPath}) {
        const int pings = Runs("ping");
        ::unlink(lock);
        ASSERT_EQ(::symlink("/tmp/victim", lock), 0);
        {
            const FrozenTmp frozen;
            EXPECT_FALSE(pingNetWork(false)) << lock;
        }
        EXPECT_EQ(Runs("ping"), pings);
        EXPECT_TRUE(pingNetWork(false)) << lock;
    }
    const int pings = Runs("ping");
    ::chmod(HXDCTRL::dnsFileLockPath, 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(pingNetWork(false));
    }
    EXPECT_EQ(Runs("ping"), pings) << "nor the public address instead";
    EXPECT_EQ(readFile("/tmp/victim"), "precious");
}

TEST_F(ReachCheck, EndsAPingThatHangs) {
    OnPing("exit 0");
    EXPECT_TRUE(pingNetWork(true));  // Qt 4 keeps two descriptors from the first process on
    OnPing("exec sleep 60");
    const std::size_t descriptors = EntriesOf("/proc/self/fd");
    const std::size_t processes = EntriesOf("/proc");
    testing::internal::CaptureStderr();
    const Stopwatch watch;
    EXPECT_FALSE(pingNetWork(true));
    EXPECT_GE(watch.Ms(), 3000);
    EXPECT_LT(watch.Ms(), 4500);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(EntriesOf("/proc/self/fd"), descriptors);
    EXPECT_TRUE(WaitFor([&] { return EntriesOf("/proc") <= processes; })) << "shell or ping left";
}

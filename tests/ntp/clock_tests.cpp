// Clocks are set right also while they are being set. Against a real time server where that shows.
#include "WaitStatus.h"
#include "tests/ntp/TimeControl.h"
#include "tests/ntp/TimeServer.h"

#include <signal.h>
#include <spawn.h>
#include <sys/time.h>

#include <iterator>

namespace {

constexpr const char* CLOCK_AHEAD = "/run/clock-ahead";  // seconds
constexpr const char* CLOCK_STEPS = "/run/clock-steps";  // the same after each setting, a line each
constexpr const char* SETTING = "/run/clock-setting";    // there from the start of the first one
constexpr const char* ASKED = "/run/clock-asked";        // the far server has its second request
constexpr const char* OVERLAP = "/run/clock-overlap";    // if it is there, a setting waits for that
constexpr long long TEN_YEARS = 315532800;

// A shell's wait, two seconds at most.
std::string AwaitFile(const std::string& file) {
    return "for i in $(seq 200); do test -e " + file + " && break; sleep 0.01; done\n";
}

}  // namespace

// The panel's system clock as the driver reads it: the sandbox cannot set the real one, so setting
// it leaves a distance.
extern "C" int gettimeofday(timeval* __restrict tv, void* __restrict tz) noexcept {
    timespec real = {};
    ::clock_gettime(CLOCK_REALTIME, &real);
    long long ahead = 0;
    if (std::FILE* const file = std::fopen(CLOCK_AHEAD, "re")) {
        ahead = std::fscanf(file, "%lld", &ahead) == 1 ? ahead : 0;
        std::fclose(file);
    }
    tv->tv_sec = static_cast<time_t>(real.tv_sec + ahead);
    tv->tv_usec = static_cast<suseconds_t>(real.tv_nsec / 1000);
    static_cast<void>(tz);
    return 0;
}

namespace {

class PanelClock : public TimeControl {
protected:
    PanelClock() {
        writeFile("/run/shims/date",
                  "touch /run/clock-setting\n"
                  "test -e /run/clock-overlap && " +
                      AwaitFile(ASKED) +
                      "now=$(/usr/bin/date +%s)\n"
                      "ahead=$(($(/usr/bin/date -ud \"$2\" +%s) - now))\n"
                      "echo $ahead >/run/clock-new\n"
                      "mv /run/clock-new /run/clock-ahead\n"
                      "echo $ahead >>/run/clock-steps\n");
        writeFile("/etc/hosts", "127.0.0.20 time.test\n");
    }
    ~PanelClock() override {
        Stop();
        for (const char* file :
             {CLOCK_AHEAD, CLOCK_STEPS, SETTING, ASKED, OVERLAP, "/run/shims/date"})
            ::unlink(file);
    }
    static void SetAhead(long long seconds) {
        writeFile("/run/clock-test", std::to_string(seconds));
        ::rename("/run/clock-test", CLOCK_AHEAD);
    }
    // How far the system clock was ahead of the real one after each setting.
    static std::vector<long long> Steps() {
        std::istringstream text(readFile(CLOCK_STEPS));
        return {std::istream_iterator<long long>(text), {}};
    }
    // The arithmetic drops parts of a second three times.
    static void ExpectEverySettingRight() {
        for (const long long ahead : Steps()) {
            EXPECT_LE(ahead, 1) << readFile(CLOCK_STEPS);
            EXPECT_GE(ahead, -3) << readFile(CLOCK_STEPS);
        }
        EXPECT_EQ(Panel().rtcSettings.size(), Steps().size());
    }
};

// chronyd with the machine's time at 127.0.0.20.
class RealServer {
public:
    RealServer() {
        writeFile("/tmp/chrony.conf",
                  "local stratum 1\nallow all\ncmdport 0\nbindcmdaddress /\n"
                  "bindaddress 127.0.0.20\npidfile /tmp/chronyd.pid\n");
        const char* arguments[] = {"chronyd",          "-x",   "-d", "-u", "root", "-f",
                                   "/tmp/chrony.conf", nullptr};
        EXPECT_EQ(::posix_spawn(&m_daemon, "/usr/sbin/chronyd", nullptr, nullptr,
                                const_cast<char**>(arguments), environ),
                  0);
        for (int i = 0; i < 500 && ::access("/tmp/chronyd.pid", F_OK) != 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ~RealServer() {
        ::kill(m_daemon, SIGTERM);
        WaitStatus(m_daemon);
        ::unlink("/tmp/chronyd.pid");
    }
    static bool IsInstalled() { return ::access("/usr/sbin/chronyd", X_OK) == 0; }

    // Its answers, for a server that is far away. After the first one they come only when the clock
    // has been set.
    static TimeServer::Answer From(int awayMs) {
        return [=](const sntp::Packet& request, int number) {
            if (number > 1)
                writeFile(ASKED, "");
            std::this_thread::sleep_for(std::chrono::milliseconds(awayMs / 2));
            std::string answer = Ask(request);
            std::this_thread::sleep_for(std::chrono::milliseconds(awayMs / 2));
            for (int i = 0; i < 150 && number > 1 && ::access(CLOCK_STEPS, F_OK) != 0; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            return answer;
        };
    }

private:
    static std::string Ask(const sntp::Packet& request) {
        const HXDCTRL::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(sntp::PORT);
        address.sin_addr.s_addr = ::inet_addr("127.0.0.20");
        ::sendto(socket.Descriptor(), request.data(), request.size(), 0,
                 reinterpret_cast<const sockaddr*>(&address), sizeof address);
        pollfd watched = {socket.Descriptor(), POLLIN, 0};
        char answer[sntp::PACKET_BYTES];
        const ssize_t length = ::poll(&watched, 1, 5000) == 1
                                   ? ::recv(socket.Descriptor(), answer, sizeof answer, 0)
                                   : 0;
        return std::string(answer, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    }

    pid_t m_daemon = -1;
};

}  // namespace

TEST_F(PanelClock, AgreesWithARealServer) {
    if (!RealServer::IsInstalled())
        GTEST_SKIP() << "chrony is not installed";
    const RealServer server;
    ::unlink("/run/shims/ping");  // a real ping of the name server
    SetAhead(-TEN_YEARS);
    StartOnDemand({"time.test"});
    EXPECT_EQ(Exec(), 0);
    EXPECT_EQ(Steps().size(), 1u);
    ExpectEverySettingRight();
}

// The second one's request leaves before the first one sets the clock, and is answered after.
TEST_F(PanelClock, IsSetRightByTwoSynchronisationsAtOnce) {
    if (!RealServer::IsInstalled())
        GTEST_SKIP() << "chrony is not installed";
    const RealServer server;
    const TimeServer far("127.0.0.11", RealServer::From(150));
    const TimeServer silent("127.0.0.12", nullptr);
    // The second one's ping ends when the first one sets the clock, which waits for the request.
    OnPing("mkdir /run/pinged 2>/dev/null || " + AwaitFile(SETTING));
    writeFile(OVERLAP, "");
    SetAhead(-TEN_YEARS);
    // Four addresses, for which one ping is made.
    Settings("0", "1", "2", {"127.0.0.11", "127.0.0.12", "127.0.0.12", "127.0.0.12"});
    Start();
    host.ints["one"] = 1;
    EXPECT_EQ(CDevBas::EnableNtp(record, "one"), 0);
    EXPECT_EQ(Exec(), 0);
    EXPECT_TRUE(WaitFor([] { return Steps().size() == 2; })) << "the command's and the thread's";
    Stop();
    EXPECT_EQ(far.Requests(), 3) << "the answer that crossed the first setting is not used";
    ExpectEverySettingRight();
}

// Its good answer is there at once, and seconds old when the silent server lets it be used.
TEST_F(PanelClock, IsSetRightBehindASilentServer) {
    if (!RealServer::IsInstalled())
        GTEST_SKIP() << "chrony is not installed";
    const RealServer server;
    const TimeServer silent("127.0.0.12", nullptr);
    StartOnDemand({"127.0.0.20", "127.0.0.12"});
    EXPECT_EQ(Exec(), 0);
    const Stopwatch watch;
    EXPECT_EQ(Exec(), 0);
    EXPECT_GE(watch.Ms(), 3000);
    EXPECT_EQ(Steps().size(), 2u);
    ExpectEverySettingRight();
}

TEST_F(PanelClock, ThatIsSetMeanwhileMakesTheServerBeAskedOnceMore) {
    const struct {
        const char* name;
        std::vector<long long> ahead;  // when answering the first, second, ... request
        int firstMs;                   // until the first is answered
        int result, requests;
    } cases[] = {
        {"not set", {0, 0}, 500, 0, 1},
        {"not set in the other half of a second", {0, 0}, 500, 0, 1},
        {"once, forward", {2, 2}, 0, 0, 2},
        {"once, back", {-2, -2}, 0, 0, 2},
        {"twice", {-5, 5, 5}, 0, 10, 2},
        {"before the second attempt", {3600, 3600, 3600}, 2100, 0, 3},
    };
    std::atomic<int> current{0}, before{0};
    const TimeServer server("127.0.0.11", [&](const sntp::Packet& request, int number) {
        const int turn = number - before;
        SetAhead(cases[current].ahead.at(static_cast<std::size_t>(turn - 1)));
        if (turn == 1)
            std::this_thread::sleep_for(std::chrono::milliseconds(cases[current].firstMs));
        timespec now = {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        return TimeServer::Showing(now.tv_sec)(request, number);
    });
    StartOnDemand({"127.0.0.11"});
    for (const auto& c : cases) {
        current = static_cast<int>(&c - cases);
        before = server.Requests();
        SetAhead(0);
        EXPECT_EQ(Exec(), c.result) << c.name;
        EXPECT_EQ(server.Requests() - before, c.requests) << c.name;
    }
    ExpectEverySettingRight();
}

// Settings files as others leave them, and what a time server sends.
#include "commands/VncPassword.h"
#include "common/AppSettings.h"
#include "common/IniOperator.h"
#include "common/Mutex.h"
#include "common/QtText.h"
#include "common/SettingsFile.h"
#include "fuzz/FuzzDevice.h"
#include "fuzz/Machine.h"
#include "fuzz/Refusals.h"
#include "ntp/NtpThread.h"
#include "ntp/SntpPacket.h"
#include "ntp/ntpCfgParam.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <thread>

namespace {

constexpr const char* APP_SETTINGS = "/usr/olma_app/config/olma_app_conf.ini";
constexpr const char* TIME_SETTINGS = "/usr/olma_app/config/ntp_param_cfg.ini";
constexpr const char* PASSWORD = "/etc/iot_cfg/vncConfig.ini";

// Among the numbers of settings files and of time servers: from here on something is refused.
constexpr int FIRST_REFUSED_FILE = 16;
constexpr int FIRST_REFUSED_SERVER = 0x80;

void Put(const char* path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// What a write leaves, once it may have been refused something: what was written, or else all that
// was there before.
struct Written {
    explicit Written(int refusal) : refused(machine::Refuse(refusal)) {}
    template <class VALUE>
    void Expect(const VALUE& found, const VALUE& wanted, const VALUE& before) const {
        FUZZ_EXPECT(found == wanted || (refused && found == before));
    }
    const bool refused;
};

QString BuzzDuration(hxd::AppSettings& settings) {
    QString text;
    settings.Read(hxd::KEY_BUZZ_DURATION, text);
    return text;
}

void AppSettingsFile(const QString& value, int refusal) {
    hxd::AppSettings settings;
    const QString before = BuzzDuration(settings);
    const Written written(refusal);
    settings.Write(hxd::KEY_BUZZ_DURATION, value);
    BuzzDuration(settings);
    machine::Refuse(machine::NOTHING);
    written.Expect(BuzzDuration(settings), value, before);
}

void TimeSettingsFile(const QString& value, int refusal) {
    ntpCfgParam settings;
    settings.ReadCfg();
    const ntpCfgParam before = settings;
    settings.servers[0] = value;
    const Written written(refusal);
    settings.writeCfg();
    machine::Refuse(machine::NOTHING);
    ntpCfgParam again;
    again.ReadCfg();
    written.Expect(again, settings, before);
}

void PasswordFile(const QString& value, int refusal) {
    const CString before = CDevBas::ReadVncPwd();
    const Written written(refusal);
    CDevBas::writeVncPwd(hxd::ToHost(value));
    machine::Refuse(machine::NOTHING);
    written.Expect(CDevBas::ReadVncPwd(), hxd::ToHost(value), before);
}

// As the GUI uses it: names and default from outside.
void AnyFile(const QString& name) {
    const QString file = QLatin1String(APP_SETTINGS);
    const QString section = name.section(QLatin1Char('.'), 0, 0);
    const QString key = name.section(QLatin1Char('.'), 1, 1);
    QString value;
    IniOperator::FileIniReadValue(file, section, key, value, name);
    IniOperator::FileIniWriteValue(file, section, key, name);
    IniOperator::FileIniReadValue(file, section, key, value, QString());
}

// Only a loopback socket of its own hears what a worker asks for.
int ServerSocket() {
    const int made = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in own = {};
    own.sin_family = AF_INET;
    own.sin_port = htons(sntp::PORT);
    own.sin_addr.s_addr = ::inet_addr("127.0.0.1");
    FUZZ_EXPECT(::bind(made, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0);
    return made;
}

// The worker and its server take turns: on one processor that costs a fraction.
bool StayHere() {
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(static_cast<unsigned>(::sched_getcpu()), &here);
    return ::sched_setaffinity(0, sizeof here, &here) == 0;
}

// A moment of real time, or until the server is asked.
void Await(int server) {
    const timespec moment = {0, 20000};
    pollfd asked = {server, POLLIN, 0};
    ::ppoll(&asked, 1, &moment, nullptr);
}

// Waits for a request, or for the worker to give up.
bool AwaitRequest(int server, NtpThread& worker, sockaddr_in& client) {
    std::int32_t seconds = 0;
    char request[64];
    socklen_t length = sizeof client;
    while (::recvfrom(server, request, sizeof request, MSG_DONTWAIT,
                      reinterpret_cast<sockaddr*>(&client), &length) < 0) {
        if (worker.Look(seconds) != NtpThread::Outcome::WORKING)
            return false;
        Await(server);
    }
    return true;
}

// Answers on 127.0.0.1 what it is told to.
class TimeServer {
public:
    TimeServer() { std::thread(&TimeServer::Run, this).detach(); }
    void Answer(const std::string& answer) {
        const hxd::MutexLock locker(m_lock);
        m_answer = answer;
    }

private:
    void Run() {
        sockaddr_in client = {};
        char request[64];
        for (;;) {
            socklen_t length = sizeof client;
            ::recvfrom(m_socket, request, sizeof request, 0, reinterpret_cast<sockaddr*>(&client),
                       &length);
            const hxd::MutexLock locker(m_lock);
            ::sendto(m_socket, m_answer.data(), m_answer.size(), 0,
                     reinterpret_cast<const sockaddr*>(&client), length);
        }
    }

    const int m_socket = ServerSocket();
    hxd::Mutex m_lock;
    std::string m_answer HXD_GUARDED_BY(m_lock);
};

}  // namespace

// The file as it is found, a value that is written into it, and what is read then.
void fuzz::Settings(Input& input) {
    const int choice = input.ConsumeIntegral<std::uint8_t>();
    const int refusal = choice / 4 - FIRST_REFUSED_FILE;
    const QString value = hxd::FromHost(input.ConsumeRandomLengthString(40).c_str());
    const std::string text = input.ConsumeRemainingBytesAsString();
    switch (choice % 4) {
        case 0:
            Put(APP_SETTINGS, text);
            return AppSettingsFile(value, refusal);
        case 1:
            Put(TIME_SETTINGS, text);
            return TimeSettingsFile(value, refusal);
        case 2:
            Put(APP_SETTINGS, text);
            machine::Refuse(refusal);
            return AnyFile(value);
        default:
            Put(PASSWORD, text);
            return PasswordFile(value, refusal);
    }
}

// A worker asks, the input answers, and the clock may be set in between.
void fuzz::TimeAnswers(Input& input) {
    static const bool stays = StayHere();
    static_cast<void>(stays);
    static const int server = ServerSocket();
    static NtpThread& worker = *new NtpThread;
    worker.Start();
    const int kind = input.ConsumeIntegral<std::uint8_t>();
    machine::Refuse(kind - FIRST_REFUSED_SERVER);
    worker.Post(QLatin1String(kind == 0xFE   ? "localhost"
                              : kind == 0xFF ? "1.2.3"
                                             : "127.0.0.1"),
                kind % 8 == 7 ? input.ConsumeIntegral<std::int32_t>() : REACH_BOTH);
    std::int32_t seconds = 0;
    sockaddr_in client = {};
    while (AwaitRequest(server, worker, client)) {
        if (input.ConsumeIntegral<std::uint8_t>() == 1)
            machine::clockStepSeconds = input.ConsumeIntegral<std::int16_t>();
        const std::string answer = input.ConsumeRandomLengthString(100);
        ::sendto(server, answer.data(), answer.size(), 0,
                 reinterpret_cast<const sockaddr*>(&client), sizeof client);
    }
    while (worker.Look(seconds) == NtpThread::Outcome::WORKING)
        Await(server);
    machine::clockStepSeconds = 0;
}

// Commands and writes of the time synchronisation, the resolver's file, the ping and the server.
void fuzz::Time(Input& input) {
    static TimeServer& server = *new TimeServer;
    FuzzDevice& fuzz = FuzzDevice::Fresh(input);
    const bool renamed = input.ConsumeIntegral<std::uint8_t>() == 1;
    machine::pingAnswers = input.ConsumeIntegral<std::uint8_t>() != 1;
    ::unlink("/etc/resolv.conf");
    Put(renamed ? "/etc/resolv.conf.tmp" : "/etc/resolv.conf",
        input.ConsumeRandomLengthString(200));
    server.Answer(input.ConsumeRandomLengthString(100));
    constexpr int SYNCHRONISATION = 6;  // servers, modes, the switch, and then it is asked for
    fuzz.RunCommands(input, SYNCHRONISATION);
}

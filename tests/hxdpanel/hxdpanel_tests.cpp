// The built console program, run as a user or a script runs it. The panel of these tests is the
// sandbox that they run in, so it keeps what the runs of one case do to it.
#include "JsonSchema.h"
#include "PanelProgram.h"
#include "TestFiles.h"

#include "common/File.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/sandbox/HarmlessCommand.h"
#include "ntp/SntpPacket.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <QDir>
#include <QRegExp>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <sstream>

namespace {

const JsonSchema& Schema() {
    static const JsonSchema schema(
        nlohmann::json::parse(readFile(HXD_SOURCE_DIR "/docs/json-schema.json")));
    return schema;
}

TEST(Hxdpanel, PrintsJsonAndNothingElse) {
    const Outcome run = Hxdpanel({"channels", "--json", "--log", "4", "--no-vnc"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Contains(run.errors, "driver: Qt VNC plugin doesn't support lock")) << run.errors;
    const auto object = nlohmann::json::parse(run.out, nullptr, false);
    ASSERT_TRUE(object.is_object()) << run.out;
    const auto& channels = object["channels"];
    ASSERT_EQ(channels.size(), static_cast<std::size_t>(CHANNEL_COUNT)) << run.out;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const nlohmann::json& channel = channels[i];
        const bool isText = channel["type"] == "text";
        EXPECT_EQ(channel["number"], i + 1);
        EXPECT_EQ(channel["value"].is_string(), isText) << channel;
        EXPECT_EQ(channel["value"].is_number(), !isText) << channel;
    }
    EXPECT_EQ(channels[0]["value"], "192.168.1.20");
    EXPECT_GT(channels[10]["value"], 0.0);  // this machine's memory
    EXPECT_EQ(channels[30]["meaning"], "port cannot be queried");
}

TEST(Hxdpanel, EveryResultHasAnObject) {
    const struct {
        Words arguments;
        const char* kind;
        const char* member;
        const char* holds;  // as JSON
    } cases[] = {
        {{"channels", "21"}, "channels", "/channels/0/name", "\"Brightness\""},
        {{"read", "com3"}, "read", "/channel/meaning", "\"port cannot be queried\""},
        {{"write", "brightness", "42"}, "write", "/channel/value", "40"},
        {{"write", "4", "7000"}, "write", "/status/code", "4"},
        {{"write", "4", "7000"}, "write", "/notes/0", "\"channel 4 takes 0 to 6500\""},
        {{"exec", "--set", "r=9", "EnableNTP(2,r)"}, "command", "/variables/0/value", "4"},
        {{"exec", "SAVESCREEN($OLMA_DIR_USR/a.png)"},
         "command",
         "/saved/0",
         "\"/storage/user_dir/a.png\""},
        {{"exec", "set x a"}, "vars", "/variables/0/type", "\"text\""},
        {{"exec", "channels 20"}, "channels", "/channels/0/number", "20"},
        {{"watch", "3", "--count", "1"}, "watch", "/channels/0/value", "0"},
        {{"panel"}, "panel", "/interfaces/1/name", "\"eth1\""},
        {{"ntp"}, "ntp", "/settings/0/number", "12"},
        {{"help"}, "help", "/channels/31/sentinels/0/value", "-2"},
        {{"help", "execntp"}, "help", "/commands/0/arguments/0/direction", "\"out\""},
    };
    for (const auto& row : cases) {
        Words arguments = row.arguments;
        arguments.emplace_back("--json");
        const Outcome run = Hxdpanel(arguments);
        const auto object = nlohmann::json::parse(run.out, nullptr, false);
        ASSERT_TRUE(object.is_object()) << row.kind << ": " << run.out << run.errors;
        EXPECT_EQ(Schema().Mismatch(object), "") << run.out;
        EXPECT_EQ(object["kind"], row.kind);
        const nlohmann::json::json_pointer member(row.member);
        ASSERT_TRUE(object.contains(member)) << row.member << ": " << run.out;
        EXPECT_EQ(object[member], nlohmann::json::parse(row.holds)) << run.out;
    }
}

TEST(Hxdpanel, JsonTellsWhatWasSetByHandAndWhatThePanelDid) {
    const Outcome run =
        Hxdpanel({"--no-vnc", "--json", "exec", "fail hal_uart_info -5,3", "slow Olma_Beep 1",
                  "com COM2 50", "brightness none", "clock x60", "clock hold", "clock +1h",
                  "write 7 5", "write 8 10.9.8.7", "write 3 1", "SAVESCREEN($OLMA_DIR_USR/a.png)",
                  "ReadSysLog(0,9,a,b)", "read 29", "panel"});
    std::istringstream lines(run.out);
    nlohmann::json panel;
    for (std::string line; std::getline(lines, line);) {
        panel = nlohmann::json::parse(line, nullptr, false);
        EXPECT_EQ(Schema().Mismatch(panel), "") << line;
    }
    ASSERT_EQ(panel["kind"], "panel") << run.out << run.errors;
    const struct {
        const char* member;
        const char* holds;  // as JSON
    } members[] = {
        {"/brightness", "null"},
        {"/locks", "null"},
        {"/clock/held", "true"},
        {"/clock/speed", "0"},
        {"/memory", R"({"source": "panel", "bytes": null})"},
        {"/serialPorts/1", R"({"port": 2, "present": true, "percent": 50})"},
        {"/flash", "null"},
        {"/kept/1", "\"panel/brightness = none (described as 80)\""},
        {"/failures/0", R"({"function": "Olma_Beep", "result": null, "slowMs": 1,
                            "timesLeft": null, "after": 0, "hits": 1})"},
        {"/events/beeps/0", R"({"frequencyHz": 900, "milliseconds": 5})"},
        {"/events/interfacesSet/0/address", R"("10.9.8.7")"},
        {"/failures/1/result", "-5"},
    };
    for (const auto& row : members)
        EXPECT_EQ(panel[nlohmann::json::json_pointer(row.member)], nlohmann::json::parse(row.holds))
            << row.member << panel;
    EXPECT_GE(panel["clock"]["aheadMs"], 3000000);  // the hour, less what has passed since
}

TEST(Hxdpanel, WatchTellsChangesOnly) {
    const Outcome run =
        Hxdpanel({"watch", "1", "3", "--changes", "--count", "3", "--interval", "0.01"});
    const QRegExp once(
        QLatin1String("[-\\dT:.+]{29}  1 IP address 1 = 192\\.168\\.1\\.20\n"
                      "[-\\dT:.+]{29}  3 Buzzer enabled = 0\n"));
    EXPECT_TRUE(once.exactMatch(QString::fromUtf8(run.out.c_str()))) << run.out;
}

TEST(Hxdpanel, RunsBesideEachOtherKeepEachOthersHardwareSettings) {
    QProcess first;
    Start(first, {});
    first.write("read 21\n");
    ASSERT_TRUE(first.waitForReadyRead(20000));
    Hxdpanel({"write", "8", "10.9.8.7"});
    first.write("write 21 60\n");
    Finish(first);
    EXPECT_EQ(Hxdpanel({"read", "8"}).out, "10.9.8.7\n");
    EXPECT_EQ(Hxdpanel({"read", "21"}).out, "60\n");
}

TEST(Hxdpanel, GivesVariablesTheTypeOfTheirValue) {
    const struct {
        const char* definition;
        const char* shown;  // null: refused as wrong usage
    } cases[] = {
        {"x=5", "x = 5 (int)"},
        {"x=-2147483648", "x = -2147483648 (int)"},
        {"x=2147483648", "x = 2147483648 (double)"},
        {"x=0.1", "x = 0.1 (double)"},
        {"x=1e3", "x = 1000 (double)"},
        {"x=inf", "x = inf (text)"},
        {"x=1.2.3.4", "x = 1.2.3.4 (text)"},
        {"x:text=5", "x = 5 (text)"},
        {"x:double=5", "x = 5 (double)"},
        {"x:int=", "x = 0 (int)"},
        {"x=", "x = \"\" (text)"},
        {"x= a=b ", "x = \" a=b \" (text)"},
        {"x:int=2.5", nullptr},
        {"x:word=5", nullptr},
        {"x", nullptr},
        {"=5", nullptr},
        {"a,b=5", nullptr},
    };
    for (const auto& row : cases) {
        const Outcome run = Hxdpanel({"exec", "--set", row.definition, "vars"});
        EXPECT_EQ(run.exitCode, row.shown != nullptr ? 0 : 2) << row.definition;
        EXPECT_EQ(run.out, row.shown != nullptr ? std::string(row.shown) + "\n" : "");
    }
}

TEST(Hxdpanel, TellsScriptsAndUsersWhatACommandDid) {
    const struct {
        Words arguments;
        int exitCode;
        const char* out;
        const char* errors;
    } cases[] = {
        {{"exec", "--set", "name:text=", "--set", "mac:text=", "GetMacInfo(0,name,mac)"},
         0,
         "status 0 (done)\nname = eth0\nmac = 02:1A:7D:00:3C:11\n",
         ""},
        {{"exec", "GetMacInfo(0,name)"}, 1, "status 5", "usage: GetMacInfo(index,name,mac)"},
        {{"exec", "GetMacInfo(0,name,mac)"}, 0, "status 0", "no variable mac to receive"},
        {{"exec", "--set", "d=0", "STRSHA256(abc,d)"}, 0, "status 0", "d is of type int"},
        {{"exec", "ExecNTP(a,b)"}, 1, "status 4", "no variable a,b to receive"},  // not two of them
        {{"exec", "REFLEHS()"}, 2, "status 0", "did you mean REFLESH?"},
        {{"exec", "getcpuuse(10)"}, 2, "status 0", "exactly this spelling"},
        {{"exec", "SAVESCREEN($OLMA_DIR_USR/s/a.png)"}, 0, "saved /storage/user_dir/s/a.png", ""},
        {{"exec", "SAVESCREEN($NOWHERE/a.png)"}, 0, "status 0", "no file was saved"},
        {{"exec", "BACKLIGHTOFF()", "REFLESH"}, 2, "", "needs parentheses: REFLESH()"},
        {{"exec", "REFLESH("}, 2, "", "parenthesis is missing"},
        {{"BACKLIGHTOFF()"}, 2, "", "hxdpanel exec 'BACKLIGHTOFF()'"},
        {{"write", "21", "42"}, 0, "status 0 (done)\n21 Brightness = 40 %\n", ""},
        {{"exec", "panel"}, 0, "light on, brightness 40 %", ""},  // the hardware kept it
        {{"read", "21"}, 0, "40\n", ""},
        {{"exec", "read \"ip address 1\""}, 0, "192.168.1.20\n", ""},
        {{"channels", "server-2", "26-27", "life"}, 0, "\n27  Storage write gear", ""},
        {{"write", "buzzer", "1"}, 2, "", "buzzer may be 3 Buzzer enabled, 4 Buzzer duration, 7"},
        {{"channels", "channels"}, 2, "", "channels is no channel"},
        {{"read", "99"}, 2, "", "no channel 99"},
        {{"exec", "write 15"}, 2, "", "usage: write CHANNEL VALUE"},
        {{"exec", "write 15 \"\""}, 0, "Time server 1 = \"\"\n", ""},
        {{"exec", "panel foo"}, 2, "", "usage: panel, without foo"},
        {{"exec", "watch 0.5"}, 2, "", "0.5 is no channel"},
        {{"vars"},
         2,
         "",
         "vars means nothing here; to run a line of the console: hxdpanel exec 'vars'"},
        {{"chanels"}, 2, "", "did you mean channels?"},
        {{"help", "brightness"}, 0, "cannot be set\n\nchannel 21  Brightness\n", ""},
        {{"help", "write"}, 0, "write a value to a channel\n", ""},
        {{"help", "nope"}, 2, "", "no command or channel nope"},
        {{"help", "life"}, 0, "-1 means: storage not readable\n  -2 means: not known\n", ""},
        {{"help", "setnetworkmode"}, 0, "the panel's hardware library decides", ""},
        {{"--root", "", "channels"}, 2, "", "--root: needs a path"},
        {{"watch", "--json", "--csv", "-"}, 2, "", "excludes"},
        {{"write", "13", "1"}, 0, "status 0 (done)\n", ""},
        {{"write", "14", "6.0"}, 1, "status 4", ""},
        {{"write", "12", "1.0"}, 0, "Time sync switch = 0", "reads 1.0 as 0"},
        {{"exec", "EnableNTP()"}, 0, "status 0", "usage: EnableNTP(switch[,result])"},
        {{"exec", "write 15 \"a b\""}, 0, "Time server 1 = a b\n", ""},
        {{"watch", "--count", "1", "--csv", "/dev/full"}, 2, "", "cannot write all of /dev/full"},
        {{"--panel", "/tmp", "channels"}, 2, "", "neither panel.ini nor root/"},
        {{"write", "4", "7000"}, 1, "status 4", "channel 4 takes 0 to 6500"},
        {{"write", "7", "-5"}, 1, "status 4", ""},
        {{"write", "21", "bright"}, 2, "", "takes a number"},
        {{"write", "99", "1"}, 2, "", "no channel 99"},
        {{"--blob", "0", "channels"}, 2, "", "hexadecimal"},
        {{"write", "20", "x"}, 1, "status 1 (the channel cannot be written)\n", ""},
        {{"channels", "1-"}, 2, "", "1- is no range"},
        {{"exec", " "}, 2, "", "a command is empty"},
        {{"--over-default", "channels"}, 2, "", "--over-default requires --panel"},
        {{"script", "--json", "x"}, 2, "", "--tap and --junit instead"},
        {{"exec", "READ(1)x"}, 2, "status 5", "the driver has no command READ\n"},
        {{"exec", "write 15 \"a"}, 2, "", "quote is not closed"},
        {{"exec", "expect 1 = 2"}, 2, "", "expect stands in scripts only"},
        {{"help", "wait"}, 0, "wait 27 = 4 within 2h\n", ""},
        {{"help", "fail"}, 0, "\nExample\n  fail hal_uart_info\n", ""},
        {{"--blob", "", "channels"}, 3, "", "bad argument"},
        {{"--driver", "/nowhere.so", "channels"}, 3, "", "/nowhere.so"},
        {{"help", "savescreen"}, 0, "SAVESCREEN(path[,x1[,y1[,x2[,y2]]]])", ""},
    };
    for (const auto& row : cases) {
        const Outcome run = Hxdpanel(row.arguments);
        std::string what;
        for (const std::string& argument : row.arguments)
            what += argument + " ";
        EXPECT_EQ(run.exitCode, row.exitCode) << what;
        EXPECT_TRUE(Contains(run.out, row.out)) << what << ": " << run.out;
        EXPECT_TRUE(Contains(run.errors, row.errors)) << what << ": " << run.errors;
    }
}

TEST(Hxdpanel, ReadsLinesFromAPipe) {
    const Outcome run = Hxdpanel({}, "set r 7\n\nEnableNTP(2,r)\nquit\nvars\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "r = 7 (int)\nEnableNTP(2,r): status 0 (done)\nr = 4\n");
    EXPECT_EQ(Hxdpanel({}, "nonsense\nREFLESH()").exitCode, 2);
    EXPECT_EQ(Hxdpanel({}, "set x a\x1b[31m\xff\xc3\xa4\n").out,
              "x = \"a\\x1B[31m\\xFF\xc3\xa4\" (text)\n");
}

// The screen is drawn from what was collected: it does not grow by a later collection.
TEST(Hxdpanel, ConsoleCollectsAtItsStart) {
    Hxdpanel({}, "SAVESCREEN($OLMA_DIR_USR/a.png)\nchannels\nSAVESCREEN($OLMA_DIR_USR/b.png)\n");
    const auto first = static_cast<double>(readFile("/storage/user_dir/a.png").size());
    EXPECT_GT(first, 0.9 * static_cast<double>(readFile("/storage/user_dir/b.png").size()));
}

TEST(Hxdpanel, WatchWritesALinePerReadingUntilInterrupted) {
    QProcess process;
    Start(process, {"watch", "--interval", "0.05", "--csv", "-"});
    QByteArray out;
    while (out.count('\n') < 3 && process.waitForReadyRead(10000))
        out += process.readAllStandardOutput();
    ::kill(static_cast<pid_t>(hxd::ProcessId(process)), SIGINT);
    EXPECT_EQ(Finish(process).exitCode, 0);
    const QList<QByteArray> lines = out.split('\n');
    ASSERT_GE(lines.size(), 4) << out.constData();
    EXPECT_TRUE(lines[0].startsWith("time,\"IP address 1\","));
    const QRegExp reading(QLatin1String(
        "\\d{4}-\\d\\d-\\d\\dT[\\d:]{8}\\.\\d{3}[+-]\\d\\d:\\d\\d,192\\.168\\.1\\.20(,[^,]*){31}"));
    for (int i = 1; i <= 2; ++i)
        EXPECT_TRUE(reading.exactMatch(QString::fromUtf8(lines[i].constData())))
            << lines[i].constData();
}

TEST(Hxdpanel, RefusesDangerousCallsWithoutTheSandbox) {
    ASSERT_EQ(::unlink("/run/hxd-panel"), 0);  // what tells it that it is inside
    const QByteArray path = qgetenv("PATH");
    // No bubblewrap in there, and commands that leave a trace.
    ASSERT_TRUE(QDir().mkpath(QLatin1String("/tmp/bin")));
    for (const std::string name : {"dmesg", "find", "mount"}) {
        writeFile("/tmp/bin/" + name, "#!/bin/sh\n: >/tmp/ran-" + name + "\n");
        ASSERT_EQ(::chmod(("/tmp/bin/" + name).c_str(), 0755), 0);
    }
    qputenv("PATH", "/tmp/bin");
    const Outcome run = Hxdpanel({"--fresh", "exec", "REBOOT()", "ReadSysLog(0,1,a,b)", "panel"});
    EXPECT_EQ(::access("/tmp/ran-find", F_OK), 0) << "what is harmless runs";
    writeFile("/dev/mtd0", "");
    ASSERT_TRUE(QDir().mkpath(QLatin1String("/sys/class/ubi/ubi0")));
    writeFile("/sys/class/ubi/ubi0/total_eraseblocks", "256\n");
    const Outcome nand = Hxdpanel({"--fresh", "panel"});
    for (const char* trace : {"/tmp/ran-dmesg", "/tmp/ran-mount", "/tmp/dmesg.log"})
        EXPECT_NE(::access(trace, F_OK), 0) << trace;
    const Outcome timeServer = Hxdpanel({"--fresh", "--time-server", "ntp"});
    const Outcome reset = Hxdpanel({"--fresh", "exec", "write 4 500", "reset", "read 4"});
    qputenv("PATH", path);
    writeFile("/run/hxd-panel", "");
    EXPECT_EQ(run.exitCode, 1);
    for (const char* told : {"going on without the sandbox", "/storage/user_dir", "/tmp/ping.sh",
                             "kernel.unprivileged_userns_clone=1"})
        EXPECT_TRUE(Contains(run.errors, told)) << run.errors;
    EXPECT_TRUE(Contains(run.out, "refused: reboot\n")) << run.out;
    EXPECT_TRUE(Contains(run.out, "refused: dmesg > /tmp/dmesg.log\n")) << run.out;
    EXPECT_TRUE(Contains(nand.out, "refused: mount -t debugfs none /sys/kernel/debug\n"))
        << nand.out;
    EXPECT_TRUE(Contains(reset.out, " = 500 ms\nhardware and settings are as delivered; without"))
        << reset.out;
    EXPECT_TRUE(Contains(reset.out, " stays\n0\n")) << reset.out;
    EXPECT_EQ(timeServer.exitCode, 4);
    EXPECT_TRUE(Contains(timeServer.errors, "--time-server needs the sandbox\n"));
    EXPECT_FALSE(Contains(timeServer.errors, "going on")) << timeServer.errors;
}

TEST(HarmlessCommand, IsOneThatNeitherRunsNorRemovesAnything) {
    for (const char* command :
         {"find /sys/devices/platform -name life_time", "find / /sys -maxdepth 2 -type f",
          "mkdir -p /storage/user_dir/shots/", "mkdir -p '/media/usb0/it'\\''s; reboot'"})
        EXPECT_TRUE(guard::IsHarmless(command)) << command;
    for (const char* command : {"",
                                "find",
                                "find -delete",
                                "find /sys -delete",
                                "find /sys -name x -delete",
                                "find /sys -name -delete",
                                "find /sys -exec reboot",
                                "find /sys -exec reboot ;",
                                "find /sys -delete x",
                                "find /sys -execdir sh {} +",
                                "find /sys -ok reboot ;",
                                "find /sys -fprint /etc/passwd",
                                "find /sys -fls /etc/x",
                                "find /sys -name x; reboot",
                                "find /sys -name $(reboot)",
                                "find /sys\nreboot",
                                "find /sys -files0-from /x",
                                "mkdir /x",
                                "mkdir -p",
                                "mkdir -p -m 0777 /x",
                                "mkdir -p /x && reboot",
                                "mkdir -p 'x",
                                "mkdir -p 'x'y; reboot'",
                                "mkdir -p `reboot`",
                                "mkdir -p /x > /etc/passwd",
                                "mkdir -p '/x' --mode=0777",
                                "date -s 2020-01-01",
                                "dmesg > /tmp/dmesg.log",
                                "rm /tmp/dmesg.log"})
        EXPECT_FALSE(guard::IsHarmless(command)) << command;
}

TEST(Hxdpanel, SynchronisesWithItsOwnTimeServer) {
    const Words exec = {"exec",          "--set",      "r=99", "EnableNTP(1)",
                        "SetNTPMode(0)", "ExecNTP(r)", "ntp"};
    const Outcome without = Hxdpanel(exec);
    EXPECT_TRUE(Contains(without.out, "r = 10")) << without.out;
    EXPECT_TRUE(Contains(without.out, "result 10 (failed)")) << without.out;
    EXPECT_TRUE(Contains(without.out, "not set in this run")) << without.out;
    Words served = exec;
    served.insert(served.begin(), "--time-server");
    const Outcome run = Hxdpanel(served);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Contains(run.errors, "it was 0.pool.ntp.org\n")) << run.errors;
    EXPECT_TRUE(Contains(run.out, "15 Time server 1 = 127.0.0.1")) << run.out;
    EXPECT_TRUE(Contains(run.out, "result 0 (done")) << run.out;
    EXPECT_TRUE(Contains(run.out, "System clock     date -s ")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Real-time clock  set to 20")) << run.out;
    EXPECT_TRUE(Contains(Hxdpanel({"ntp"}).out, "Time server 1 = 0.pool.ntp.org\n"));
    Hxdpanel({"--time-server", "exec", "write 15 192.0.2.7"});  // the user's own choice stays
    EXPECT_TRUE(Contains(Hxdpanel({"ntp"}).out, "Time server 1 = 192.0.2.7\n"));
}

TEST(Hxdpanel, TimeServerAnswersRequestsOnlyAndEndsWithItsRun) {
    QProcess process;
    process.setReadChannel(QProcess::StandardError);
    Start(process, {"--time-server"});
    QByteArray notice;
    while (!notice.contains("it was") && process.waitForReadyRead(10000))
        notice += process.readAll();
    const HXDCTRL::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const timeval patience = {10, 0};
    ::setsockopt(socket.Descriptor(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in server = {};
    server.sin_family = AF_INET;
    server.sin_port = htons(sntp::PORT);
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::connect(socket.Descriptor(), reinterpret_cast<sockaddr*>(&server), sizeof server),
              0);
    // Of these only the last is a request, so the first answer is one to it.
    const struct {
        char firstByte;
        std::size_t length;
    } datagrams[] = {{0x1B, 0}, {0x1B, 1}, {0x1B, 47}, {0x1B, 49}, {0x1C, 48}, {0x23, 48}};
    for (const auto& row : datagrams) {
        const std::string datagram(row.length, row.firstByte);
        ::send(socket.Descriptor(), datagram.data(), datagram.size(), 0);
    }
    sntp::Packet answer = {};
    ASSERT_EQ(::recv(socket.Descriptor(), answer.data(), answer.size(), MSG_TRUNC), 48);
    EXPECT_EQ(answer[0], 0x24);  // in the version of the request
    EXPECT_EQ(sntp::ReadTimestamp(answer, sntp::ORIGINATE_OFFSET).seconds, 0x23232323u);
    const std::int64_t seconds = sntp::ReadTimestamp(answer, sntp::TRANSMIT_OFFSET).seconds;
    EXPECT_LT(std::abs(std::int64_t{::time(nullptr)} + sntp::SECONDS_1900_TO_1970 - seconds), 60);
    process.kill();
    process.waitForFinished();
    const Outcome next = Hxdpanel({"ntp"});
    EXPECT_TRUE(Contains(next.errors, "is 0.pool.ntp.org again")) << next.errors;
    EXPECT_TRUE(Contains(next.out, "Time server 1 = 0.pool.ntp.org\n")) << next.out;
    EXPECT_EQ(Hxdpanel({"ntp"}).errors, "");
}

}  // namespace

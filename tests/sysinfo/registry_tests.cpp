#include "Adversity.h"
#include "Record.h"
#include "TestFiles.h"
#include "sysinfo/CpuSample.h"
#include "sysinfo/DevLiunxCpuUse.h"
#include "sysinfo/DevLiunxMemUse.h"
#include "sysinfo/DoCmd.h"
#include "sysinfo/FileText.h"
#include "sysinfo/MemInfo.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QDir>
#include <algorithm>
#include <cmath>
#include <fstream>

namespace {

using Names = std::vector<std::string>;

class Registry : public RecordTest {
protected:
    Registry() {
        for (int operation = 0; operation <= 5; ++operation)
            registry.DevRegiter(static_cast<DEVSYSOPEAR>(operation));
        host.texts["txt"] = "before";
        host.doubles["st"] = -1;
    }
    int Run(const std::string& cmd) { return registry.DevOpear(record, cmd); }
    // The log lines as "function tag text".
    Names Log() {
        Names lines;
        for (const sim::LogLine& line : Panel().log)
            lines.push_back(std::to_string(line.level) + " " + line.function + " " + line.tag +
                            " " + line.text);
        return lines;
    }

    DevManger registry;
};

class ParseTool : public ToolsBase {};

using CpuUseOnAPanel = Registry;  // one whose /proc/stat can be written

// What of /proc/stat would be the result of a second sample after a first.
double UseBetween(const char* first, const char* second) {
    const cpu_occupy_ before = cpu::ParseSample(cpu::SplitAtBlanks(first));
    const cpu_occupy_ after = cpu::ParseSample(cpu::SplitAtBlanks(second));
    const double all = static_cast<double>(cpu::TotalJiffies(after) - cpu::TotalJiffies(before));
    const double idle = static_cast<double>(cpu::IdleJiffies(after) - cpu::IdleJiffies(before));
    return 1.0 - idle / all;
}

}  // namespace

TEST(CommandParser, SplitsNameAndArguments) {
    const struct {
        const char* cmd;
        int result;
        const char* name;
        Names args;
    } cases[] = {
        {"GetCpuUse(10)", 0, "GetCpuUse", {"10"}},
        {"GetCpuUse()", 0, "GetCpuUse", {}},
        {" f (a,,b , c,)", 0, " f ", {"a", "b ", " c"}},
        {"f(a(1),(b))", 0, "f", {"a(1)", "(b)"}},
        {"f)(a)", 0, "f)", {"a"}},
        {"f", -5, "", {}},
        {"f(a", -5, "", {}},
        {"f(a) ", -5, "", {}},
        {"(", -5, "", {}},
        {"", -5, "", {}},
        {"()", 0, "", {}},
        {"f(,)", 0, "f", {}},
    };
    for (const auto& c : cases) {
        std::string name;
        Names args;
        EXPECT_EQ(ParseTool().ParaCmd(name, args, c.cmd), c.result) << c.cmd;
        EXPECT_EQ(name, c.name) << c.cmd;
        EXPECT_EQ(args, c.args) << c.cmd;
    }
}

TEST_F(Registry, AnswersUnknownCommandsWithZeroAndMalformedOnesWithFive) {
    EXPECT_EQ(Run("Foo(1)"), 0);
    EXPECT_EQ(Run("getcpuuse(10)"), 0);  // names are case-sensitive
    EXPECT_EQ(context.m_dCpuUse, 0.0);
    EXPECT_EQ(Run(""), 0);
    ChangePanel([](sim::PanelState& state) { state.log.clear(); });
    EXPECT_EQ(Run("GetCpuUse"), -5);
    EXPECT_EQ(Log(), (Names{"4 DevOpear DevOpear begin strCmd = GetCpuUse",
                            "4 ParaCmd ParaCmd begin ordercmd = ",
                            "4 DevOpear DevOpear end strCmd = GetCpuUse error"}));
}

TEST_F(Registry, ShowsThisMachinesCpuUseAndMemory) {
    EXPECT_EQ(Run("GetCpuUse(10)"), 0);
    EXPECT_GT(context.m_dCpuUse, 0.0);  // since boot
    EXPECT_LE(context.m_dCpuUse, 1.0);
    EXPECT_EQ(Run("GetMemUse(11)"), 0);
    EXPECT_GT(context.m_dMemAvail, 1.0);
    EXPECT_EQ(context.m_dMemAvail, std::floor(context.m_dMemAvail));
    int estimateKb = 0;
    EXPECT_EQ(DevLiunxMemUse().DevCalcMemNoUseOld(estimateKb), 0);
    EXPECT_GT(estimateKb, 1024);
    context.m_dCpuUse = context.m_dMemAvail = -7;
    EXPECT_EQ(Run("GetCpuUse()"), 0);  // measured, but stored nowhere
    EXPECT_EQ(Run("GetMemUse()"), 0);
    EXPECT_EQ(context.m_dCpuUse, -7);
    EXPECT_EQ(context.m_dMemAvail, -7);
}

TEST(CpuUse, ComparesTwoSamples) {
    const struct {
        const char* line;
        long long total, idle;
    } samples[] = {
        {"cpu  1 2 3 4 5 6 7 8 9\n", 28, 4},  // steal and guest do not count
        {"cpu  1 2 3 4 5 6 7\n", 28, 4},      // iowait is not idle time
        {"cpu 1 2 3 4 5 6 7\n", 0, 0},        // one blank only: too few pieces
        {"", 0, 0},
        {"cpu  4294967296 9 0 0 0 0 0", 2147483656, 0},  // saturates, then wraps
        {"cpu  2147483647 2147483647 0 -1 0 0 5", 2, 4294967295},
    };
    for (const auto& c : samples) {
        const cpu_occupy_ sample = cpu::ParseSample(cpu::SplitAtBlanks(c.line));
        EXPECT_EQ(cpu::TotalJiffies(sample), c.total) << c.line;
        EXPECT_EQ(cpu::IdleJiffies(sample), c.idle) << c.line;
    }
    EXPECT_EQ(UseBetween("cpu  0 0 0 0 0 0 0", "cpu  750 0 0 250 0 0 0"), 0.75);
    const struct {
        double use;
        int hundredths;
    } roundings[] = {{0.004, 0}, {0.995, 100}, {0.12345, 12}, {0.125, 13}, {1.2, 120}, {-1, -99}};
    for (const auto& c : roundings)
        EXPECT_EQ(cpu::BusyHundredths(c.use), c.hundredths) << c.use;
}

TEST_F(CpuUseOnAPanel, KeepsTheLastGoodValueAndMeasuresOnFromABadSample) {
    const struct {
        const char* line;
        double use;
        std::string error;  // begin of the error line
    } samples[] = {
        {"cpu", 0.00, "CPUUSE DevOpear calc error od=0,"},
        {"cpu  750 0 0 250 0 0 0\n", 0.75, ""},  // since boot
        {"cpu  750 0 0 250 0 0 0\n", 0.75, "CPUUSE DevOpear calc error od=1000,"},
        {"cpu  850 0 0 250 0 0 0\n", 1.00, ""},
        {"cpu  850 0 0 350 0 0 0\n", 0.00, ""},
        {"cpu  950 0 0 1250 0 0 0\n", 0.10, ""},
        {"cpu  951 0 0 1250 0 0 0\n", 1.00, ""},
        {"cpu  10 0 0 20 0 0 0\n", 1.00, "CPUUSE DevOpear calc error od=30,"},
        {"cpu  60 0 0 70 0 0 0\n", 0.50, ""},
        {"cpu  -40 0 0 180 0 0 0\n", 0.50,
         "CPUUSE DevOpear calc error(out of range) cpu_use = 0.5"},
        {"cpu", 0.50, "CPUUSE DevOpear calc error od=0,"},
    };
    for (const auto& sample : samples) {
        std::ofstream("/proc/stat") << sample.line;
        ChangePanel([](sim::PanelState& state) { state.log.clear(); });
        EXPECT_EQ(Run("GetCpuUse(10)"), 0);
        EXPECT_EQ(context.m_dCpuUse, sample.use) << sample.line;
        std::string errors;
        for (const sim::LogLine& line : Panel().log)
            errors += line.level == 1 ? line.tag + " " + line.text : "";
        EXPECT_EQ(errors.substr(0, sample.error.size()), sample.error) << sample.line;
        EXPECT_EQ(errors.empty(), sample.error.empty()) << errors;
    }
}

// Between the lines that every command begins and ends with.
TEST_F(CpuUseOnAPanel, TellsEveryStep) {
    writeFile("/proc/stat", "cpu  1 2 3 4 5 6 7\n");
    writeFile("/proc/meminfo", "MemAvailable: 2048 kB\n");
    writeFile("/storage/log/restart.log", "x");
    ASSERT_EQ(::mkfifo("/storage/log/signal_recieved.log", 0600), 0);
    const std::string counters =
        "4 DevCalcCpuUse DevCalcCpuUse begin m_cpuname = cpu,m_user = 1,m_nice=2,m_system = 3,"
        "m_idle=4,m_iowait=5,m_irq=6,m_softirq=7";
    const struct {
        const char* cmd;
        Names steps;
    } cases[] = {
        {"GetCpuUse(10)",
         {"4 DevReadFile DevReadFile begin strFileName = /proc/stat",
          "4 DevReadFile DevReadFile end Read strFileContext = cpu  1 2 3 4 5 6 7\n ",
          "4 DevCalcCpuUse DevCalcCpuUse begin strFileContext = cpu  1 2 3 4 5 6 7\n",
          // As texts, then as numbers.
          counters + "\n", counters,
          "4 DevCalcCpuUse_1 CPUUSE DevOpear begin od = 28,_cpu_jiff_all=0",
          "4 DevCalcCpuUse_1 CPUUSE DevOpear begin sd = 4,_cpu_jiff_idle=0",
          "4 DevCalcCpuUse_1 CPUUSE DevOpear calc end cpu_use = 0.857143",
          "4 DevCalcCpuUse_1 CPUUSE DevOpear end cpu_use = 0.860000",
          "4 DevOpear CPUUSE DevOpear begin Chl = 10",
          "4 DevOpear CPUUSE DevOpear end Chl = 10,CpuUse = 0.860000"}},
        {"GetMemUse(11)",
         {"4 DevOpear CPUMem DevOpear begin Chl = 11",
          "4 DevOpear CPUMem DevOpear end Chl = 11,Mem = 2.000000"}},
        {"ReadAppLog(0,1,txt,st)",
         {"4 DevReadFile DevReadFile begin strFileName = /storage/log/restart.log",
          "4 DevReadFile DevReadFile begin strFileName = /storage/log/restart.log,flen = 1",
          "4 DevReadFile DevReadFile end Read strFileName = /storage/log/restart.log,len = 1",
          "4 DevSetContext AppAppLog DevOpear begin getLen = 1"}},
        {"ReadAppLog(1,1,txt,st)",
         {"4 DevReadFile DevReadFile begin strFileName = /storage/log/dmesg.log",
          "4 DevReadFile DevReadFile end Read strFileName = /storage/log/dmesg.log error",
          "4 DevSetContext AppAppLog DevOpear begin getLen = 1"}},
        {"ReadAppLog(2,1,txt,st)",
         {"4 DevReadFile DevReadFile begin strFileName = /storage/log/signal_recieved.log",
          "4 DevReadFile DevReadFile begin strFileName = /storage/log/signal_recieved.log,flen = "
          "-1",
          "4 DevReadFile DevReadFile end Read strFileName = /storage/log/signal_recieved.log error",
          "4 DevSetContext AppAppLog DevOpear begin getLen = 1"}},
    };
    for (const auto& c : cases) {
        ChangePanel([](sim::PanelState& state) { state.log.clear(); });
        EXPECT_EQ(Run(c.cmd), 0);
        const Names log = Log();
        ASSERT_GT(log.size(), 3u);
        EXPECT_EQ(Names(log.begin() + 2, log.end() - 1), c.steps);
        EXPECT_EQ(log.back(), "4 DevOpear DevOpear end strCmd = " + std::string(c.cmd));
    }
}

TEST_F(CpuUseOnAPanel, AndItsMemoryWithoutTheKernelsFigure) {
    writeFile("/proc/meminfo", "MemTotal: 9\nMemFree: 4096\nBuffers: 1024\nCached: 1025 kB\n");
    EXPECT_EQ(Run("GetMemUse(11)"), 0);
    EXPECT_EQ(context.m_dMemAvail, 6.0);
    writeFile("/proc/meminfo", "MemFree: 4096 kB\n");
    EXPECT_EQ(Run("GetMemUse(11)"), -1);
    EXPECT_EQ(context.m_dMemAvail, 6.0);
}

TEST(MemoryInfo, TakesTheKernelsFigureFromACompleteLine) {
    const struct {
        const char* content;
        bool found;
        int kb;
    } cases[] = {
        {"MemTotal: 9 kB\nMemAvailable:   512000 kB\n", true, 512000},
        {"MemAvailable: 1023 kB\nMemFree: 1 kB\n", true, 1023},
        {"MemAvailable: 512000 kB", false, 0},  // cut off
        {"MemAvailable:\n", false, 0},
        {"MemAvailable: \n5 kB\n", true, 0},
        {"MemAvailable 5\n", false, 0},
        {"", false, 0},
    };
    for (const auto& c : cases) {
        const auto kb = meminfo::ParseAvailable(c.content);
        EXPECT_EQ(static_cast<bool>(kb), c.found) << c.content;
        EXPECT_EQ(*kb, c.kb) << c.content;
    }
}

TEST(MemoryInfo, EstimatesOnOldKernels) {
    using Estimate = meminfo::OldEstimate;
    const struct {
        Names lines;
        Estimate::State state;
        int kb;
    } cases[] = {
        {{"MemTotal: 500000 kB\n", "MemFree: 100000 kB\n", "  \n", "\n", "Buffers: 2000 kB\n",
          "Cached: 50000 kB\n"},
         Estimate::COMPLETE,
         151999},
        {{"MemTotal: 1 kB\n", "MemFree: 100 kB\n", "Buffers: 20 kB\n", "SwapCached: 3 kB\n"},
         Estimate::COMPLETE,
         122},
        {{"MemTotal:"}, Estimate::BROKEN, -1},
        {{"MemTotal: 1\n", "MemFree: 2147483647\n", "Buffers: 2147483647\n", "Cached: 9\n"},
         Estimate::COMPLETE,
         6},  // wraps
    };
    for (const auto& c : cases) {
        Estimate estimate;
        Estimate::State state = Estimate::MORE;
        for (std::string line : c.lines)
            state = estimate.Feed(&line[0]);
        EXPECT_EQ(state, c.state) << testing::PrintToString(c.lines);
        EXPECT_EQ(estimate.FreeKb(), c.kb) << testing::PrintToString(c.lines);
    }
    const Names all = {"MemTotal: 1\n", "MemFree: 2\n", "Buffers: 3\n", "Cached: 4\n"};
    for (const std::string& missing : all) {
        Estimate estimate;
        for (std::string line : all)
            EXPECT_TRUE(line == missing || estimate.Feed(&line[0]) == Estimate::MORE) << missing;
    }
}

TEST_F(Registry, DeliversTheNewestPartOfALog) {
    std::string log;
    for (int i = 0; i < 100 * 1024 / 8; ++i)
        log += "line " + std::to_string(10 + i % 90) + "\n";
    std::ofstream("/storage/log/restart.log") << log;
    host.ints = {{"mode", 0}, {"one", 1}};
    host.doubles["half"] = 0.5;
    const struct {
        const char* cmd;
        int result;
        double status;
        std::size_t length;
    } cases[] = {
        {"ReadAppLog(0,64,txt,st)", 0, 0, 65536},
        {"ReadAppLog( 0,200,txt,st)", 0, 0, log.size()},
        {"ReadAppLog(mode,0,txt,st)", 0, 0, 0},
        {"ReadAppLog(mode,one,txt,st)", 0, 0, 1024},
        {"ReadAppLog(1,64,txt,st)", 0, 0, 0},  // no such file
        {"ReadAppLog(a,,64,txt,st)", 0, 0, 65536},
        {"ReadAppLog(3,64,txt,st)", -4, 4, 6},
        {"ReadAppLog(-1,64,txt,st)", -4, 4, 6},
        {"ReadAppLog(half,64,txt,st)", -4, 4, 6},
        {"ReadAppLog(0,half,txt,st)", -4, 4, 6},
        {"ReadAppLog(0,-1,txt,st)", -4, 4, 6},
        {"ReadAppLog(0,2097152,txt,st)", -4, 4, 6},
        {"ReadAppLog(0,2097151,txt,st)", 0, 0, log.size()},
        {"ReadAppLog(0,64,st,st)", -4, 4, 6},
        {"ReadAppLog(0,64,txt)", -5, -1, 6},
        {"ReadAppLog(0,64,txt,nowhere)", 0, -1, 65536},
    };
    for (const auto& c : cases) {
        host.texts["txt"] = "before";
        host.doubles["st"] = -1;
        EXPECT_EQ(Run(c.cmd), c.result) << c.cmd;
        EXPECT_EQ(host.doubles["st"], c.status) << c.cmd;
        EXPECT_EQ(host.texts["txt"].size(), c.length) << c.cmd;
    }
    EXPECT_EQ(host.texts["txt"], log.substr(log.size() - 65536));
    record.m_pfnGetParamValue = nullptr;  // a host that gives no values: 0
    EXPECT_EQ(Run("ReadAppLog(mode,1,txt,st)"), 0);
    EXPECT_EQ(host.texts["txt"].size(), 1024u);
    EXPECT_EQ(Run("ReadAppLog(0,mode,txt,st)"), 0);
    EXPECT_EQ(host.texts["txt"], "");
    EXPECT_EQ(Run("ReadAppLog(3,1,txt,one)"), -4);
    EXPECT_EQ(host.ints["one"], 4);
    FileText text("abc");
    EXPECT_STREQ(text.TakeTail(1), "c");
    EXPECT_EQ(text.Data(), nullptr) << "given back";
    EXPECT_TRUE(text.TakeTail(2).IsEmpty()) << "taken";
    HXDCTRL::File none;
    FileText old("abc");
    EXPECT_FALSE(old.Read(none, -1));
    EXPECT_EQ(old.Size(), 0u);
    EXPECT_TRUE(old.Read(none, 0));
}

TEST_F(Registry, ReadsOddLogFiles) {
    std::ofstream("/storage/log/restart.log") << "before" << '\0' << "after";
    Run("ReadAppLog(0,1,txt,st)");
    EXPECT_EQ(host.texts["txt"], "before");
    ::mkdir("/storage/log/dmesg.log", 0700);
    EXPECT_EQ(Run("ReadAppLog(1,1,txt,st)"), 0);
    EXPECT_EQ(host.texts["txt"], "");
    std::ofstream("/storage/log/signal_recieved.log") << "signal 11";
    EXPECT_EQ(Run("ReadAppLog(2,1,txt,st)"), 0);
    EXPECT_EQ(host.texts["txt"], "signal 11");
    ::unlink("/storage/log/signal_recieved.log");
    ASSERT_EQ(::mkfifo("/storage/log/signal_recieved.log", 0600), 0);
    EXPECT_EQ(Run("ReadAppLog(2,1,txt,st)"), 0);  // does not wait for a writer
    EXPECT_EQ(host.texts["txt"], "");
}

TEST(FirstLine, HasUpTo127Bytes) {
    const std::string ends[] = {std::string(126, 'x') + "\n", std::string(127, 'x') + "\n", "\n",
                                ""};
    for (const std::string& text : ends) {
        const std::string content = text + (text.empty() ? "" : "next\n");
        writeFile("/tmp/line", content);
        std::string path = "/tmp/line";
        EXPECT_EQ(DevLiunxCpuUse().DevReadFile(path, 0, DevLiunxBase::READ_FIRST_LINE),
                  text.substr(0, 127));
        EXPECT_EQ(DevLiunxCpuUse().DevReadFile(path, 0, DevLiunxBase::READ_WHOLE_FILE), content);
    }
    std::string none = "/tmp/none";
    EXPECT_EQ(DevLiunxCpuUse().DevReadFile(none, 0, DevLiunxBase::READ_FIRST_LINE), "");
    EXPECT_EQ(sim::SimPanel::Instance().State().log.back().text,
              "Read strFileName = /tmp/none error");
}

TEST_F(Registry, ReadsTheKernelLogThroughAFileOfItsOwn) {
    ::mkdir("/run/shims", 0755);
    writeFile("/run/shims/dmesg", "echo $(stat -c '%a %F' /tmp/dmesg.log)\n");
    writeFile("/tmp/victim", "keep");
    const std::function<int()> plants[] = {
        [] { return ::symlink("/tmp/victim", "/tmp/dmesg.log"); },
        [] { return ::mkfifo("/tmp/dmesg.log", 0666); },
        [] { return ::mkdir("/tmp/dmesg.log", 0777); },
        [] { return ::mkdir("/tmp/dmesg.log", 0777) + ::mkdir("/tmp/dmesg.log/full", 0777); },
    };
    for (const auto& plant : plants) {
        ASSERT_EQ(plant(), 0);
        {
            const FrozenTmp frozen;
            EXPECT_EQ(Run("ReadSysLog(0,64,txt,st)"), -3);
        }
        EXPECT_EQ(Run("ReadSysLog(0,64,txt,st)"), 0);
        EXPECT_EQ(host.texts["txt"], "600 regular empty file\n");
        EXPECT_NE(::access("/tmp/dmesg.log", F_OK), 0);
    }
    EXPECT_EQ(readFile("/tmp/victim"), "keep");
    EXPECT_EQ(QDir(QLatin1String("/tmp"), QLatin1String("dmesg.log*")).count(), 1u)
        << "the full one";

    std::ofstream("/run/shims/dmesg") << "#!/bin/sh\nexit 1\n";
    ::chmod("/run/shims/dmesg", 0755);
    host.texts["txt"] = "before";
    host.doubles["st"] = -1;
    EXPECT_EQ(Run("ReadSysLog(0,64,txt,st)"), -3);
    EXPECT_NE(::access("/tmp/dmesg.log", F_OK), 0);
    EXPECT_EQ(Run("ReadSysLog(1,64,nowhere,nothing)"), -4);
    EXPECT_EQ(host.texts["txt"], "before");
    EXPECT_EQ(host.doubles["st"], -1);
    writeFile("/run/shims/dmesg", "echo log\n");
    ::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Run("ReadSysLog(0,64,txt,st)"), -3) << "nobody learns how it has ended";
    ::signal(SIGCHLD, SIG_DFL);
    const std::string path = ::getenv("PATH");
    ::mkdir("/run/tools", 0755);
    writeFile("/run/tools/rm", "#!/bin/sh\nexit 1\n");
    ::chmod("/run/tools/rm", 0755);
    ::setenv("PATH", ("/run/tools:" + path).c_str(), 1);
    EXPECT_EQ(Run("ReadSysLog(0,64,txt,st)"), 0);
    EXPECT_NE(::access("/tmp/dmesg.log", F_OK), 0) << "removed without the command";
    ::setenv("PATH", path.c_str(), 1);
}

TEST_F(Registry, KeepsACommandApartFromOneThatAParameterCallSends) {
    writeFile("/storage/log/restart.log", "outer");
    writeFile("/storage/log/signal_recieved.log", "inner");
    host.texts["other"] = "";
    host.doubles["state"] = -1;
    bool sent = false;
    host.onParameter = [&] {
        if (!sent) {
            sent = true;
            EXPECT_EQ(Run("ReadAppLog(2,1,other,state)"), 0);
        }
    };
    EXPECT_EQ(Run("ReadAppLog(0,2,txt,st)"), 0);
    EXPECT_EQ(host.texts["txt"], "outer");
    EXPECT_EQ(host.texts["other"], "inner");
}

TEST(ShellRunner, CollectsWhatACommandSays) {
    std::string output = "before";
    EXPECT_TRUE(DoCmd::doCmdSync("printf 'a%02000d' 7; echo no >&2; exit 3", output));
    EXPECT_EQ(output.size(), 2001u);
    const InterruptingTimer timer;
    EXPECT_TRUE(DoCmd::doCmdSync("for i in 1 2 3; do sleep 0.03; printf $i; done", output));
    EXPECT_EQ(output, "123");
    EXPECT_TRUE(DoCmd::doCmdOnly("echo x > /tmp/said"));
    EXPECT_EQ(::access("/tmp/said", F_OK), 0);

    testing::internal::CaptureStderr();
    {
        const DescriptorLimit none(0);
        EXPECT_FALSE(DoCmd::doCmdSync("true", output) || DoCmd::doCmdOnly("true"));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "do_cmd_sync popen failed!\ndo_cmd_only popen failed!\n");
    EXPECT_EQ(output, "123");
}

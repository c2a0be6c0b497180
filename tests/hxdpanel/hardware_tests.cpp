// Scripts and hardware commands as a user meets them, through the built program. What the commands
// do to the driver is in scripts/, beside this file.
#include "PanelProgram.h"
#include "TestFiles.h"

#include "SimPanel.h"

#include <gtest/gtest.h>

namespace {

TEST(Scripts, FailLiveEveryFunctionThatCan) {
    const std::string script = readFile(HXD_SOURCE_DIR "/tests/hxdpanel/scripts/failures.script");
    for (const std::string& function : sim::FailableFunctions())
        EXPECT_TRUE(Contains(script, "fail " + function)) << function;
}

TEST(HardwareCommands, TellWhereEachFailureShows) {
    std::string lines;
    for (const std::string& function : sim::FailableFunctions())
        lines += "fail " + function + "\n";
    const std::string shown = Hxdpanel({}, lines).out;
    for (const std::string& function : sim::FailableFunctions()) {
        const std::size_t told = shown.find(function + " fails with -1, every call");
        const std::size_t next = shown.find(" fails with ", shown.find('\n', told));
        const std::string text = shown.substr(std::min(told, shown.size()), next - told);
        EXPECT_TRUE(Contains(text, "; seen in ") || Contains(text, "concerns ")) << function;
    }
}

TEST(Scripts, StopWhereTheyAreWrongAndSayWhere) {
    const struct {
        const char* script;
        int exitCode;
        const char* errors;
    } cases[] = {
        {"", 0, ""},
        {"\n# a comment\n  # another\n\t\nset r 5\nexpect r = 5\n", 0, ""},
        {"expect 1 = 192.168.1.20\nexpect 1 = \"192.168.1.20\"\nexpect 1 != 10.0.0.1", 0, ""},
        {"expect Brightness = 80\nexpect 21 >= 80\nexpect 21 < 80.5\nexpect 21 = 78 ~ 2", 0, ""},
        {"expect 20 = /^HX\\d+$/\nexpect 20 != /x/\nexpect 31 = -2", 0, ""},
        {"set t:text \" \"\nexpect t = \" \"\nset t:text 5\nexpect t = \"5\"\nexpect t < 6", 0, ""},
        {"write 4 7000\n\n# meant\nexpect status 4", 0, ""},
        {"GetMacInfo(0,n,m)\nexpect status 0x5", 1, "stdin:2: wanted an expectation"},
        {"write 7 50\nexpect panel beeped 900 Hz 50 ms\nexpect panel not beeped 90 Hz", 0, ""},
        {"write 7 50\nwrite 7 50\nexpect panel beeped 2 times\nexpect panel beeped /Hz/ 2 times", 0,
         ""},
        {"allow unknown\nFoo()", 0, ""},
        {"quit\nFoo()", 0, ""},
        {"expect 21 = 40\nFoo()", 1, "stdin:1: wanted 21 Brightness = 40, got 80\n"},
        {"expect 21 = 77 ~ 2", 1, "wanted 21 Brightness = 77 ~ 2, got 80"},
        {"expect 1 = 10", 1, "wanted 1 IP address 1 = 10, got \"192.168.1.20\""},
        {"expect 1 < 10", 1, "but the value is a text, 192.168.1.20"},
        {"expect 21 = bright", 1, "21 Brightness = bright, but the value is a number, 80"},
        {"expect 20 = \"HX", 1, "quote is not closed"},
        {"expect 99 = 1", 1, "stdin:1: wanted 99 = 1, but"},
        {"expect nothing", 1, "usage: expect CHANNEL = VALUE"},
        {"expect 20 = /(/", 1, "no regular expression"},
        {"expect status 0", 1, "got a line without a status"},
        {"write 4 7000\nset r 1", 1, "stdin:1: wanted status 0, got 4 ("},
        {"write 4 7000", 1, "stdin:1: wanted status 0, got 4 ("},
        {"set r 5\nFoo()\nexpect r = 6", 1, "stdin:2: wanted a command that the driver knows"},
        {"getcpuuse(10)", 1, "wanted a command that the driver knows"},
        {"REFLESH", 1, "stdin:1: wanted a line that means something"},
        {"frobnicate", 1, "stdin:1: wanted a line that means something"},
        {"write 99 1", 1, "stdin:1: wanted a line that can be run"},
        {"disk write many", 1, "stdin:1: wanted a line that can be run"},
        {"watch\t21", 1, "wanted a line with an end"},
        {"wait 21 = 80", 1, "usage: wait"},
        {"expect panel danced", 1, "beeped; reloaded"},
        {"write 7 50\nexpect panel beeped 900 Hz 51 ms", 1, "got 900 Hz for 50 ms"},
    };
    for (const auto& row : cases) {
        const Outcome run = Hxdpanel({"script", "-"}, row.script);
        EXPECT_EQ(run.exitCode, row.exitCode) << row.script << "\n" << run.errors;
        EXPECT_TRUE(Contains(run.errors, row.errors)) << row.script << "\n" << run.errors;
        EXPECT_EQ(run.exitCode == 0, Contains(run.out, " 0 failures")) << run.out;
    }
}

TEST(Scripts, ReportEveryFailureToABuildServer) {
    const std::string script = "expect 21 = 80\nexpect 21 = 1\nset t:text \"<&\"\nexpect t = #\n";
    const Outcome run =
        Hxdpanel({"script", "--keep-going", "--tap", "--junit", "/tmp/report.xml", "-"}, script);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out,
              "TAP version 13\nok 1 - stdin:1 expect 21 = 80\nnot ok 2 - stdin:2 expect 21 = 1\n"
              "# wanted 21 Brightness = 1, got 80\nnot ok 3 - stdin:4 expect t = \\#\n"
              "# wanted t = #, got \"<&\"\n1..3\n");
    const std::string report = readFile("/tmp/report.xml");
    EXPECT_TRUE(Contains(report, "name=\"stdin\" tests=\"3\" failures=\"2\"")) << report;
    EXPECT_TRUE(Contains(report, "got &quot;&lt;&amp;&quot;")) << report;
    EXPECT_EQ(Hxdpanel({"script", "/nowhere"}, "").exitCode, 2);
    writeFile("/tmp/twice", "set r 1\nexpect r = 2\n");
    const std::string twice =
        Hxdpanel({"script", "--keep-going", "--junit", "-", "twice", "twice"}).out;
    const std::string summary = "twice: 2 lines, 0 expectations met, 1 failure\n";
    EXPECT_EQ(twice.find(summary + summary), 0U) << twice;
    EXPECT_FALSE(Contains(twice, "tests=\"2\"")) << twice;
    EXPECT_EQ(Hxdpanel({"script", "--tap", "--echo", "-"}, "read 21\nset r 1\nexpect r = 1").out,
              "TAP version 13\n# stdin:1: read 21\n# 80\n# stdin:2: set r 1\n# r = 1 (int)\n"
              "# stdin:3: expect r = 1\nok 1 - stdin:3 expect r = 1\n1..1\n");
}

TEST(Scripts, GoOnAfterAReboot) {
    const Outcome run = Hxdpanel({"script", "-"},
                                 "write 21 40\nwrite 7 10\nunplug eth1\nset r 3\nREBOOT()\n"
                                 "expect panel not beeped\nexpect 21 = 40\nexpect 8 = \"\"\n"
                                 "expect r = 3\nwrite 7 10\nexpect panel beeped 1 times\n");
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_TRUE(Contains(Hxdpanel({"exec", "panel"}, "").out, "brightness 40 %"));
}

TEST(Scripts, AreRecordedSoThatTheyPass) {
    const Outcome recorded =
        Hxdpanel({},
                 "record a.script\nset r 9\nEnableNTP(1,r)\nwrite 7 40\nwrite 4 9999\n"
                 "channels 10 20\nfrob\nFoo()\nwrite 19 \"a\"\nrecord off\nset x 1\n");
    EXPECT_EQ(recorded.exitCode, 2);
    const std::string script = readFile("/tmp/a.script");
    for (const char* line : {"expect r = 0\n", "expect panel beeped 900 Hz", "expect status 4\n",
                             "# expect 10 = ", "expect 20 = \"HX", "allow unknown\nFoo()\n"})
        EXPECT_TRUE(Contains(script, line)) << line << "\n" << script;
    EXPECT_FALSE(Contains(script, "frob")) << script;
    const Outcome run = Hxdpanel({"script", "a.script"}, "");
    EXPECT_EQ(run.exitCode, 0) << run.errors << script;
    EXPECT_EQ(Hxdpanel({}, "record a.script\n").exitCode, 2);  // never over a file
    EXPECT_EQ(Hxdpanel({}, "record ../a\n").exitCode, 2);
}

TEST(Pipes, EndWithTheWorstOfTheirLines) {
    const struct {
        const char* lines;
        int exitCode;
    } cases[] = {
        {"# nothing\n\nvars\n", 0}, {"Foo()\nvars\n", 2}, {"write 4 9999\nvars\n", 1},
        {"fail nothing\n", 2},      {"light maybe\n", 2}, {"fail hal_uart_info\n", 0},
    };
    for (const auto& row : cases)
        EXPECT_EQ(Hxdpanel({}, row.lines).exitCode, row.exitCode) << row.lines;
}

TEST(HardwareCommands, SayWhatTheyDidAndWhatIsWrong) {
    const struct {
        const char* lines;
        const char* out;
        const char* errors;
    } cases[] = {
        {"fail hal_uart_info -5,3", "fails with -5, 3 calls\nconcerns 29 COM1 use, 30 ", ""},
        {"fail hal_uart_info -5,6\nchannels 29\npanel", "-5, 2 calls more; 4 hits", ""},
        {"fail hal_uart_info -5,1\nchannels 29\npanel", "no more; 1 hit\n", ""},
        {"fail hal_set_ip_addr 1", "seen in writes to 1, 2, 8, 9, SetNetworkMode\nconcerns 1 IP",
         ""},
        {"fail hal_uart_nfo", "", "did you mean hal_uart_info?"},
        {"fail hal_uart_info often", "", "usage: fail NAME"},
        {"slow Olma_Beep 600001", "", "usage: slow NAME"},
        {"mend all", "nothing is failing", ""},
        {"slow Olma_Beep 5,1\nmend Olma_Beep", "Olma_Beep works again\nconcerns 7", ""},
        {"unplug eth7", "", "no interface eth7; it has: eth0 eth1"},
        {"unplug eth0\npanel", "(unplugged)", ""},
        {"unplug eth0\nunplug eth1", "no time server can be reached", ""},
        {"unplug eth1", "eth1 is gone\nconcerns 8 IP address 2, 9 Netmask 2\n", ""},
        {"com COM3 50\nread 31", "COM3 is used to 50 %\nconcerns 31 COM3 use\n50\n", ""},
        {"com 5 1", "", "usage: com"},
        {"com 1 101", "", "usage: com"},
        {"brightness 101", "", "usage: brightness"},
        {"clock\nlight on", "the clock runs\nthe light", ""},  // and concerns nothing
        {"clock x60\npanel", "runs 60 times as fast", ""},
        {"clock hold\nclock +90s", "90s later; the clock is held", ""},
        {"clock -1h", "", "usage: clock"},
        {"clock +2y", "", "usage: clock"},
        {"cpu 1.5", "", "usage: cpu"},
        {"cpu 0.5", "", "is the machine's own"},  // no --live here
        {"disk", "this panel has no flash", ""},
        {"disk write 3M", "", "this panel has no flash"},
        {"disk wear life_time 0x100", "", "usage: disk wear life_time"},
        {"disk wear rust", "", "usage: disk wear"},
        {"write 7 9\nwrite 7 9\npanel", "900 Hz for 9 ms  x2\n", ""},
        {"reset now", "", "takes no now"},
    };
    for (const auto& row : cases) {
        const Outcome run = Hxdpanel({}, row.lines);
        EXPECT_TRUE(Contains(run.out, row.out)) << row.lines << "\n" << run.out;
        EXPECT_TRUE(Contains(run.errors, row.errors)) << row.lines << "\n" << run.errors;
        EXPECT_EQ(run.exitCode, *row.errors == '\0' ? 0 : 2) << row.lines;
    }
}

}  // namespace

// hxdpanel on a terminal: what must be seen there, and what must not be torn.
#include "PseudoTerminal.h"
#include "TestFiles.h"

#include "common/File.h"
#include "hxdpanel/base/Terminal.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using Words = std::vector<std::string>;
constexpr winsize USUAL = {24, 80, 0, 0};

Words Command(const Words& arguments) {
    Words words = {HXD_PANEL_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

// The rows of what was drawn, without colours and other sequences.
Words Rows(const std::string& drawn) {
    Words rows = {""};
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        if (drawn[i] == '\033')
            i = drawn.find_first_of("HJKm", i);
        else if (drawn[i] == '\n')
            rows.emplace_back();
        else if (drawn[i] != '\r' && (drawn[i] & 0xC0) != 0x80)  // one for each character
            rows.back() += drawn[i];
    }
    return rows;
}

TEST(Terminal, WatchFitsTheWindowAlsoWhenThatChanges) {
    PseudoTerminal terminal(Command({"watch", "--interval", "0.5"}), "xterm", USUAL);
    terminal.ReadUntil("\033[J");
    const winsize sizes[] = {USUAL, {24, 60, 0, 0}, {40, 130, 0, 0}};
    for (const winsize& size : sizes) {
        terminal.Resize(size);
        terminal.ReadUntil("\033[J");  // may have been under way
        const std::string drawn = terminal.ReadUntil("\033[J");
        const Words rows = Rows(drawn);
        EXPECT_LE(rows.size(), size.ws_row);
        std::string all;
        for (const std::string& row : rows) {
            EXPECT_LE(row.size(), size.ws_col) << row;
            all += row + "\n";
        }
        for (const char* text : {" 1 IP ad", "11 Memory", "02:1A:7D:00:3C:12", "32 COM4 use"})
            EXPECT_NE(all.find(text), std::string::npos) << text << " in " << size.ws_col;
    }
}

TEST(Terminal, WatchMarksChangesAndIsPlainOnADumbTerminal) {
    PseudoTerminal terminal(Command({}), "xterm", USUAL);
    terminal.ReadUntil("panel> ");
    terminal.Type("watch 3 11 every 0.1\n");
    EXPECT_NE(terminal.ReadUntil("MiB*").find("MiB*"), std::string::npos);
    terminal.Type("\x03");
    terminal.ReadUntil("panel> ");
    terminal.Type("read 3\n");
    EXPECT_NE(terminal.ReadUntil("0\r\n").find("0\r\n"), std::string::npos);
    PseudoTerminal dumb(Command({"watch", "3", "--count", "1"}), "dumb", USUAL);
    const std::string plain = dumb.ReadUntil("number  0\r\n");
    EXPECT_NE(plain.find("No  Name"), std::string::npos) << plain;
    EXPECT_EQ(plain.find('\033'), std::string::npos) << plain;
}

TEST(Terminal, ColoursAreLeftOutOnRequest) {
    for (const char* unwanted : {"", "1"}) {
        ::setenv("NO_COLOR", unwanted, 1);
        PseudoTerminal terminal(Command({"channels", "31"}), "xterm", USUAL);
        const std::string shown = terminal.ReadUntil("queried)");
        EXPECT_EQ(shown.find("\033[33m-2") == std::string::npos, *unwanted != '\0') << shown;
    }
    ::unsetenv("NO_COLOR");
}

TEST(Terminal, ALineFromOutsideStandsAboveTheOneThatIsEdited) {
    PseudoTerminal terminal(Command({}), "xterm", USUAL);
    terminal.ReadUntil("panel> ");
    const std::string typed = "set text " + std::string(100, 'x');  // in two rows
    terminal.Type(typed);
    terminal.ReadUntil("xxxxxxxx");
    ::usleep(200000);
    const std::string errors = "/proc/" + std::to_string(terminal.Process()) + "/fd/2";
    const HXDCTRL::File file(::open(errors.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::write(file.Descriptor(), "noise\n", 6), 6);
    const std::string redrawn = "noise\r\npanel> set text xxx";
    const std::string shown = terminal.ReadUntil(redrawn);
    EXPECT_NE(shown.find("\033[1A\r\033[J" + redrawn), std::string::npos) << shown;
    terminal.Type("\n");
    EXPECT_NE(terminal.ReadUntil(" (text)").find(" (text)"), std::string::npos);
}

TEST(Terminal, LongWorkIsSeen) {
    const std::string panel = "/tmp/slow";
    ASSERT_EQ(::mkdir(panel.c_str(), 0755), 0);
    writeFile(panel + "/panel.ini", "[failures]\nhal_set_ip_addr=slow,1500\n");
    PseudoTerminal terminal(Command({"--panel", panel}), "xterm", USUAL);
    terminal.ReadUntil("panel> ");
    terminal.Type("SetNetworkMode(0,1,r)\n");
    const std::string shown = terminal.ReadUntil("status ");
    EXPECT_NE(shown.find("SetNetworkMode is at work, 1 s"), std::string::npos) << shown;
}

TEST(Terminal, TwoConsolesKeepEachOthersHistory) {
    const Words console = Command({"--launched", "--history-folder", "/tmp"});
    PseudoTerminal first(console, "xterm", USUAL);
    PseudoTerminal second(console, "xterm", USUAL);
    first.ReadUntil("panel> ");
    second.ReadUntil("panel> ");
    const struct {
        PseudoTerminal& terminal;
        const char* line;
    } lines[] = {{first, "set a 1"}, {second, "set b 2"}, {first, "set c 3"}};
    for (const auto& row : lines) {
        row.terminal.Type(std::string(row.line) + "\n");
        row.terminal.ReadUntil("(int)");
        row.terminal.ReadUntil("panel> ");
    }
    const std::string kept = readFile("/tmp/history");
    EXPECT_EQ(kept,
              "_HiStOrY_V2_\nset\\040a\\0401\\012\nset\\040b\\0402\\012\nset\\040c\\0403\\012\n");
    PseudoTerminal third(console, "xterm", USUAL);
    third.ReadUntil("panel> ");
    third.Type("\x10");  // Ctrl-P
    EXPECT_NE(third.ReadUntil("set c 3").find("set c 3"), std::string::npos);
}

TEST(Terminal, WrapsBetweenWords) {
    const struct {
        std::size_t columns;
        std::size_t indent;
        const char* text;
        const char* wrapped;
    } cases[] = {
        {10, 0, "short", "short"},
        {10, 0, "exactly 10 and", "exactly 10\nand"},
        {20, 2, "aaaa bbbb cccc dddd eeee", "aaaa bbbb cccc dddd\n  eeee"},
        {24, 8, "        aaaaaaaaa bbbbbbbbb", "        aaaaaaaaa\n        bbbbbbbbb"},
        {10, 0, "averylongwordhere x", "averylongwordhere\nx"},
        {10, 4, "    aaaaa bbbbb", "    aaaaa\n    bbbbb"},  // too narrow for more
    };
    for (const auto& row : cases)
        EXPECT_EQ(terminal::WrappedTo(row.columns, row.text, row.indent), row.wrapped);
}

}  // namespace

// The references in docs/ say what the tables of the driver and of the console say, and the
// examples in them work.
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/report/CommandReference.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

namespace {

using Lines = std::vector<std::string>;

Lines Document(const char* name) {
    std::ifstream file(std::string(HXD_SOURCE_DIR "/docs/") + name);
    Lines lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

// The cells of the table rows that begin so, without the blanks around them.
std::vector<Lines> Rows(const char* document, const std::string& start) {
    std::vector<Lines> rows;
    for (const std::string& line : Document(document)) {
        if (line.compare(0, start.size(), start) != 0)
            continue;
        Lines cells;
        std::istringstream text(line.substr(1));
        for (std::string cell; std::getline(text, cell, '|');) {
            cell.erase(0, cell.find_first_not_of(' '));
            cell.erase(cell.find_last_not_of(' ') + 1);
            cells.push_back(cell);
        }
        rows.push_back(cells);
    }
    return rows;
}

std::string TableRow(const std::string& first, const std::string& second) {
    return "| " + first + " | " + second + " |";
}

// The statuses of writes, which docs/channels.md explains in its own words.
std::string WriteStatuses() {
    std::string numbers;
    bool isInTable = false;
    for (const std::string& line : Document("channels.md")) {
        isInTable = line == "| Status | Meaning | Channels |" || (isInTable && !line.empty());
        if (isInTable && std::isdigit(static_cast<unsigned char>(line[2])) != 0)
            numbers += (numbers.empty() ? "" : ", ") + line.substr(2, line.find(' ', 2) - 2);
    }
    return numbers;
}

std::string WritableText(const ChannelRow& channel) {
    switch (channel.input) {
        case ChannelRow::NOTHING:
            return "no";
        case ChannelRow::ADDRESS:
            return "address";
        case ChannelRow::NETMASK:
            return "mask";
        case ChannelRow::ANY_TEXT:
            return "text";
        default:
            return std::to_string(channel.minimum) + (channel.HasUpperLimit()
                                                          ? " to " + std::to_string(channel.maximum)
                                                          : " and above");
    }
}

}  // namespace

TEST(ChannelReference, FollowsTheTable) {
    for (int number = 1; number <= CHANNEL_COUNT; ++number) {
        const ChannelRow& channel = *FindChannel(number);
        const auto rows = Rows("channels.md", "| " + std::to_string(number) + " | ");
        // Tables further down may begin with a number as well; the channel's row comes first.
        ASSERT_GE(rows.size(), 1u) << "docs/channels.md lacks channel " << number;
        const Lines expected = {
            std::to_string(number), std::to_string(number - 1),
            channel.name,           channel.kind == ChannelRow::TEXT ? "text" : "number",
            channel.unit,           WritableText(channel)};
        ASSERT_GT(rows[0].size(), expected.size()) << number;
        EXPECT_EQ(Lines(rows[0].begin(), rows[0].begin() + 6), expected) << number;
        EXPECT_NE(rows[0][6], "") << number;
        const bool hasRange = channel.IsWritable() && channel.input != ChannelRow::ANY_TEXT;
        EXPECT_TRUE(hasRange || (channel.minimum == 0 && channel.maximum == 0)) << number;
        const bool isText = channel.kind == ChannelRow::TEXT;
        for (const ChannelRow::Sentinel& special : channel.sentinels) {
            const char* const said = isText && special.text != nullptr
                                         ? channel.SentinelMeaning(special.text)
                                         : channel.SentinelMeaning(special.number);
            EXPECT_TRUE(special.meaning == nullptr || said == special.meaning) << number;
        }
    }
    for (const int part : {CHANNEL_IP_ADDRESS_1, CHANNEL_NETMASK_1}) {  // its row is asked for both
        const int second = part + CHANNEL_IP_ADDRESS_2 - CHANNEL_IP_ADDRESS_1;
        EXPECT_EQ(FindChannel(second)->minimum, FindChannel(part)->minimum);
        EXPECT_EQ(FindChannel(second)->maximum, FindChannel(part)->maximum);
    }
}

TEST(ExitCodes, FollowTheTable) {
    for (const ExitMeaning& row : EXIT_MEANINGS) {
        const auto rows = Rows("json.md", "| " + std::to_string(row.code) + " | ");
        ASSERT_EQ(rows.size(), 1u) << "docs/json.md: exit code " << row.code;
        EXPECT_EQ(rows[0][1], row.meaning);
    }
}

TEST(CommandReference, FollowsTheTable) {
    for (int i = 0; i < COMMAND_COUNT; ++i) {
        const CommandRow& row = CommandOf(static_cast<Command>(i));
        const CommandInfo* const info = FindCommand(row.name);
        ASSERT_NE(info, nullptr) << "hxdpanel/report/CommandReference.cpp lacks " << row.name;
        EXPECT_EQ(info->arguments.size(), static_cast<std::size_t>(row.ArgumentCount()))
            << "hxdpanel/report/CommandReference.cpp: the arguments of " << row.name;
    }
    Lines expected;
    for (const CommandInfo& command : CommandReference())
        expected.push_back("`" + CommandSignature(command) + "`");
    Lines documented;
    for (const Lines& row : Rows("commands.md", "| `"))
        documented.push_back(row[0]);
    EXPECT_EQ(documented, expected) << "docs/commands.md";
}

TEST(CommandReference, HasTheStatusesOfTheCatalogue) {
    const auto rows = Rows("commands.md", "| `");
    ASSERT_EQ(rows.size(), CommandReference().size());
    std::set<std::string> expected;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const CommandInfo& command = CommandReference()[i];
        std::string numbers;
        for (const CommandStatus& status : command.statuses) {
            const std::string number = std::to_string(status.status);
            const std::string meaning = StatusMeaning(status.status);
            numbers += (numbers.empty() ? "" : ", ") + number;
            expected.insert(TableRow(number, meaning));
            EXPECT_EQ(status.meaning.compare(0, meaning.size(), meaning), 0) << command.name;
        }
        if (i == COMMAND_OLMA_WRITE) {
            EXPECT_EQ(WriteStatuses(), numbers) << "docs/channels.md";
        }
        EXPECT_EQ(rows[i][2].substr(0, rows[i][2].find(", or")), numbers)
            << "docs/commands.md: " << command.name;
    }
    std::set<std::string> documented;
    for (const std::string& line : Document("commands.md")) {
        if (line.compare(0, 2, "| ") == 0 && std::isdigit(static_cast<unsigned char>(line[2])) != 0)
            documented.insert(line);
    }
    EXPECT_EQ(documented, expected) << "docs/commands.md";
}

TEST(CommandReference, HasExamplesThatWork) {
    std::string input;
    for (const std::string& line : Document("commands.md")) {
        if (line.compare(0, 4, "    ") == 0)
            input += line.substr(4) + "\n";
    }
    for (const CommandInfo& command : CommandReference()) {
        for (const char* line : command.example) {
            if (std::string(line) != "REBOOT()")
                input += std::string(line) + "\n";
        }
    }
    std::ofstream("/tmp/examples") << input;
    const int status =
        std::system("'" HXD_PANEL_PROGRAM "' < /tmp/examples > /tmp/answers 2>/tmp/complaints");
    std::ifstream answers("/tmp/answers");
    const std::string text((std::istreambuf_iterator<char>(answers)),
                           std::istreambuf_iterator<char>());
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << text;
}

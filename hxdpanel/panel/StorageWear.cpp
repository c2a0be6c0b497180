#include "hxdpanel/panel/StorageWear.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/panel/PanelFile.h"

#include <unistd.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include <QString>

namespace {

using storagewear::Words;
using Lines = std::vector<std::string>;

const char* const DISKSTATS = "/proc/diskstats";
const char* const ERASE_TABLE = "/sys/kernel/debug/ubi/ubi0/detailed_erase_block_info";
const char* const BAD_BLOCKS = "/sys/class/ubi/ubi0/bad_peb_count";
const char* const RESERVED_BLOCKS = "/sys/class/ubi/ubi0/reserved_for_bad";
const char* const BLOCK_BYTES = "/sys/class/mtd/mtd0/erasesize";
const char* const EMMC_ATTRIBUTES = "/sys/devices/platform";

constexpr long long SECTOR_BYTES = 512;
constexpr long long USUAL_BLOCK_BYTES = 131072;
constexpr long long MOST = 1000000000000000;  // far from what 64 bits hold

const char* const LIFE_LATER =
    "; the driver measures life once an hour (clock +1h) and when it starts (restart)";

HardwareResult Refused(const std::string& message) {
    return HardwareResult::Refused(message);
}

HardwareResult CannotWrite(const std::string& path) {
    return Refused("this panel's " + path + " cannot be changed");
}

bool IsNand() {
    return ::access("/dev/mtd0", F_OK) == 0;
}

Lines SplitLines(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

long long CountOf(const std::string& text) {
    long long count = 0;
    return ParseWhole(Trimmed(text), 0, MOST, count) ? count : 0;
}

long long ReadCount(const std::string& path) {
    std::string text;
    return panelfile::Read(path, text) ? CountOf(text) : 0;
}

// ---- what was written ------------------------------------------------------------------------

constexpr std::size_t DEVICE_NAME = 2;
constexpr std::size_t SECTORS_WRITTEN = 9;
const char* const EMMC_LINE = " 179 0 mmcblk0 0 0 0 0 0 0 0 0 0 0 0";

bool IsEmmc(const Words& counters) {
    return counters.size() > SECTORS_WRITTEN && counters[DEVICE_NAME] == "mmcblk0";
}

HardwareResult WriteEmmc(long long bytes) {
    std::string text;
    if (panelfile::Find(EMMC_ATTRIBUTES, "erase_size").empty())
        return Refused("this panel has no flash");
    panelfile::Read(DISKSTATS, text);
    Lines lines = SplitLines(text);
    auto line = std::find_if(lines.begin(), lines.end(), [](const std::string& candidate) {
        return IsEmmc(SplitWords(candidate));
    });
    if (line == lines.end())
        line = lines.insert(line, EMMC_LINE);
    Words words = SplitWords(*line);
    const long long sectors = (bytes + SECTOR_BYTES - 1) / SECTOR_BYTES;
    const long long all = std::min(CountOf(words[SECTORS_WRITTEN]) + sectors, MOST);
    words[SECTORS_WRITTEN] = std::to_string(all);
    *line = " " + Joined(words, " ");
    if (!panelfile::Write(DISKSTATS, Joined(lines, "\n") + "\n"))
        return CannotWrite(DISKSTATS);
    return HardwareResult::Done(std::to_string(sectors) + " sectors written to the eMMC, " +
                                    std::to_string(all) + " in all",
                                {CHANNEL_STORAGE_GEAR});
}

// ---- erase counters --------------------------------------------------------------------------

// UBI's table: a line of titles, then a line for each block with its counter in the second column.
struct EraseTable {
    Lines lines;
    long long sum = 0;
    long long blocks = 0;

    // count: from the counter and the block's place, what the counter becomes.
    template <class COUNT>
    void Change(COUNT count) {
        sum = blocks = 0;
        for (std::size_t i = 1; i < lines.size(); ++i) {
            Words words = SplitWords(lines[i]);
            if (words.size() < 2)
                continue;
            const long long counter = std::min(count(CountOf(words[1]), blocks), MOST);
            words[1] = std::to_string(counter);
            lines[i] = Joined(words, "\t");
            sum += counter;
            ++blocks;
        }
    }
};

bool ReadTable(EraseTable& table) {
    std::string text;
    if (!panelfile::Read(ERASE_TABLE, text))
        return false;
    table.lines = SplitLines(text);
    table.Change([](long long counter, long long) { return counter; });
    return true;
}

HardwareResult StoreTable(const EraseTable& table, const std::string& message,
                          const std::vector<int>& channels) {
    if (!panelfile::Write(ERASE_TABLE, Joined(table.lines, "\n") + "\n"))
        return CannotWrite(ERASE_TABLE);
    return HardwareResult::Done(message + ", " + std::to_string(table.sum) + " erasures in all",
                                channels);
}

// As wear levelling does it: every block in turn.
HardwareResult WriteNand(long long bytes) {
    EraseTable table;
    if (!ReadTable(table) || table.blocks == 0)
        return Refused("this panel's flash has no erase counters");
    const long long told = ReadCount(BLOCK_BYTES);
    const long long blockBytes = told > 0 ? told : USUAL_BLOCK_BYTES;
    const long long erasures = (bytes + blockBytes - 1) / blockBytes;
    const long long each = erasures / table.blocks;
    const long long once = erasures % table.blocks;
    table.Change([&](long long counter, long long block) {
        return counter + each + (block < once ? 1 : 0);
    });
    return StoreTable(table, std::to_string(erasures) + " blocks of the NAND flash erased",
                      {CHANNEL_STORAGE_GEAR});
}

HardwareResult WearErasures(const Words& values) {
    const std::string usage = "usage: disk wear erase_count N, or +N, for every block";
    EraseTable table;
    long long number = 0;
    const bool isMore = values.size() == 1 && !values[0].empty() && values[0][0] == '+';
    if (values.size() != 1 || !ParseWhole(values[0].substr(isMore ? 1 : 0), 0, MOST / 2, number))
        return Refused(usage);
    if (!ReadTable(table) || table.blocks == 0)
        return Refused("this panel's flash has no erase counters");
    table.Change([&](long long counter, long long) { return number + (isMore ? counter : 0); });
    return StoreTable(table,
                      "each of " + std::to_string(table.blocks) + " blocks erased " +
                          std::to_string(number) + (isMore ? " times more" : " times"),
                      {CHANNEL_STORAGE_LIFE, CHANNEL_STORAGE_GEAR});
}

// A block that goes bad takes one of the reserve.
HardwareResult WearBadBlocks(const Words& values) {
    long long bad = 0;
    if (values.size() != 1 || !ParseWhole(values[0], 0, std::numeric_limits<int>::max() / 100, bad))
        return Refused("usage: disk wear bad_blocks N");
    std::string text;
    if (!panelfile::Read(BAD_BLOCKS, text))
        return Refused("this panel has no NAND flash that counts bad blocks");
    const long long spare = CountOf(text) + ReadCount(RESERVED_BLOCKS);
    const long long reserved = std::max(spare - bad, 0LL);
    if (!panelfile::Write(BAD_BLOCKS, std::to_string(bad) + "\n") ||
        !panelfile::Write(RESERVED_BLOCKS, std::to_string(reserved) + "\n"))
        return CannotWrite(BAD_BLOCKS);
    return HardwareResult::Done(std::to_string(bad) + " bad blocks, " + std::to_string(reserved) +
                                    " of the reserve are left" + LIFE_LATER,
                                {CHANNEL_STORAGE_LIFE});
}

// ---- what an eMMC tells ----------------------------------------------------------------------

bool IsByte(const std::string& text) {
    bool valid = false;
    const uint value = QString::fromUtf8(text.c_str()).toUInt(&valid, 16);
    return valid && value <= 0xFF && text.compare(0, 2, "0x") == 0;
}

HardwareResult WearAttribute(const std::string& name, const Words& values, std::size_t most) {
    const bool isGone = values.size() == 1 && values[0] == "none";
    if (values.empty() || values.size() > most ||
        (!isGone && !std::all_of(values.begin(), values.end(), IsByte)))
        return Refused("usage: disk wear " + name + " 0x05" + (most > 1 ? " [0x02]" : "") +
                       ", or none for an eMMC that does not tell it");
    const Lines paths = panelfile::Find(EMMC_ATTRIBUTES, name);
    const Lines devices = panelfile::Find(EMMC_ATTRIBUTES, "erase_size");
    if (devices.size() != 1 || paths.size() > 1)
        return Refused(devices.empty() ? "this panel has no eMMC"
                                       : "this panel has several; which is meant is not known");
    const std::string place = devices[0].substr(0, devices[0].rfind('/') + 1) + name;
    const std::string& path = paths.empty() ? place : paths[0];
    const bool done = isGone ? paths.empty() || panelfile::Remove(path)
                             : panelfile::Write(path, Joined(values, " ") + "\n");
    if (!done)
        return CannotWrite(path);
    const std::string later =
        paths.empty() && !isGone ? "; it was not there before: restart shows it" : LIFE_LATER;
    return HardwareResult::Done(
        "the eMMC " + (isGone ? "tells no " + name : "tells " + name + " " + Joined(values, " ")) +
            later,
        {CHANNEL_STORAGE_LIFE});
}

const struct {
    const char* what;
    HardwareResult (*run)(const Words& values);
} WEARS[] = {
    {"life_time", [](const Words& values) { return WearAttribute("life_time", values, 2); }},
    {"pre_eol_info", [](const Words& values) { return WearAttribute("pre_eol_info", values, 1); }},
    {"erase_count", WearErasures},
    {"bad_blocks", WearBadBlocks},
};

HardwareResult Wear(const Words& words) {
    for (const auto& wear : WEARS) {
        if (words.size() > 1 && words[1] == wear.what)
            return wear.run(Words(words.begin() + 2, words.end()));
    }
    return Refused(
        "usage: disk wear life_time 0x05 [0x02], pre_eol_info 0x02, erase_count N or +N, or "
        "bad_blocks N");
}

// ---- as it is --------------------------------------------------------------------------------

// Empty where it is not told, or told by several.
std::string Attribute(const char* name) {
    const Lines paths = panelfile::Find(EMMC_ATTRIBUTES, name);
    std::string text;
    if (paths.size() == 1)
        panelfile::Read(paths[0], text);
    return Visible(Trimmed(text));
}

std::string AttributeText(const char* name, const std::string& value) {
    return value.empty() ? std::string(", no ") + name : std::string(", ") + name + " " + value;
}

Words EmmcCounters() {
    std::string text;
    panelfile::Read(DISKSTATS, text);
    for (const std::string& line : SplitLines(text)) {
        Words words = SplitWords(line);
        if (IsEmmc(words))
            return words;
    }
    return SplitWords(EMMC_LINE);
}

}  // namespace

storagewear::Flash storagewear::State() {
    Flash flash;
    if (IsNand()) {
        EraseTable table;
        ReadTable(table);
        flash.kind = Flash::NAND;
        flash.blocks = table.blocks;
        flash.erasures = table.sum;
        flash.badBlocks = ReadCount(BAD_BLOCKS);
        flash.reservedBlocks = ReadCount(RESERVED_BLOCKS);
    } else if (!panelfile::Find(EMMC_ATTRIBUTES, "erase_size").empty()) {
        flash.kind = Flash::EMMC;
        flash.lifeTime = Attribute("life_time");
        flash.preEolInfo = Attribute("pre_eol_info");
        flash.eraseSize = Attribute("erase_size");
        flash.sectorsWritten = CountOf(EmmcCounters()[SECTORS_WRITTEN]);
    }
    return flash;
}

std::string storagewear::StateText() {
    const Flash flash = State();
    switch (flash.kind) {
        case Flash::EMMC:
            return "eMMC" + AttributeText("life_time", flash.lifeTime) +
                   AttributeText("pre_eol_info", flash.preEolInfo) +
                   AttributeText("erase_size", flash.eraseSize) + ", " +
                   std::to_string(flash.sectorsWritten) + " sectors written";
        case Flash::NAND:
            return "NAND flash, " + std::to_string(flash.blocks) + " blocks, " +
                   std::to_string(flash.erasures) + " erasures, " +
                   std::to_string(flash.badBlocks) + " bad blocks, " +
                   std::to_string(flash.reservedBlocks) + " in reserve";
        case Flash::NONE:
            break;
    }
    return "this panel has no flash";
}

HardwareResult storagewear::Disk(const Words& words) {
    long long bytes = 0;
    if (words.empty())
        return HardwareResult::Done(StateText(), {});
    if (words[0] == "wear")
        return Wear(words);
    if (words[0] != "write" || words.size() != 2 || !ParseSize(words[1], bytes))
        return Refused("usage: disk write SIZE, for example disk write 300M, or disk wear ...");
    return IsNand() ? WriteNand(bytes) : WriteEmmc(bytes);
}

Words storagewear::Candidates(const Words& words) {
    Words candidates;
    if (words.empty())
        candidates = {"write", "wear"};
    for (const auto& wear : WEARS) {
        if (words.size() == 1 && words[0] == "wear")
            candidates.emplace_back(wear.what);
    }
    return candidates;
}

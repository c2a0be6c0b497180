#include "hxdpanel/report/WatchScreen.h"

#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::size_t LONGEST_SPARK = 16;
constexpr std::size_t SHORTEST_SPARK = 3;
constexpr std::size_t NARROWEST_CELL = 24;
constexpr std::size_t SHORTEST_NAME = 7;
constexpr std::size_t WIDEST_CELL = 60;
constexpr std::size_t GAP = 2;
constexpr std::size_t NUMBER_WIDTH = 9;  // "23332 MiB": sparks end in one column

const char* const BLOCKS[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
const char* const LETTERS[] = {"_", ".", ":", "-", "=", "+", "*", "#"};  // without UTF-8

struct Grid {
    std::size_t rows;
    std::size_t columns;
    std::size_t cellWidth;
};

std::size_t CellWidth(std::size_t width, std::size_t columns) {
    return std::min((width - std::min(width, GAP * (columns - 1))) / columns, WIDEST_CELL);
}

Grid Fit(std::size_t count, std::size_t rows, std::size_t width) {
    rows = std::max<std::size_t>(rows, 1);
    std::size_t columns = std::max<std::size_t>((count + rows - 1) / rows, 1);
    while (columns > 1 && CellWidth(width, columns) < NARROWEST_CELL)
        --columns;
    return {std::min(rows, (count + columns - 1) / columns), columns, CellWidth(width, columns)};
}

// What tells it from its like stays: "Time s… 3".
std::string ShortenedName(const std::string& name, std::size_t columns) {
    const std::size_t tail = name.rfind(' ');
    if (Columns(name) <= columns || tail == std::string::npos || tail + 2 != name.size() ||
        columns <= 4)
        return Shortened(name, columns);
    return Shortened(name.substr(0, tail), columns - 2) + name.substr(tail);
}

// With what explains it where that takes no column from the name.
std::string ValueWithin(const ShownChannel& channel, std::size_t columns, std::size_t room) {
    const char* const meaning = channel.Meaning();
    const std::string value = channel.Value();
    const std::string longer =
        meaning != nullptr
            ? value + " (" + meaning + ")"
            : value + (channel.unit.find("..") == std::string::npos ? channel.UnitSuffix() : "");
    const bool fits = Columns(channel.name) + 1 + Columns(longer) <= room;
    return Shortened(fits ? longer : value, columns);
}

}  // namespace

void WatchScreen::Take(const std::string& title, const ShownChannels& channels,
                       const std::set<int>& changed) {
    m_strTitle = title;
    m_channels = channels;
    m_changed = changed;
    for (const ShownChannel& channel : channels) {
        if (channel.isText || !channel.received.delivered)
            continue;
        const HostValue& value = channel.received.value;
        std::deque<double>& past = m_past[channel.number];
        past.push_back(value.type == DATATYPE_INTEGER ? value.integer : value.number);
        if (past.size() > LONGEST_SPARK)
            past.pop_front();
    }
}

// The newest values between the smallest and the largest of them.
std::string WatchScreen::Spark(int number, std::size_t columns) const {
    const auto found = m_past.find(number);
    if (found == m_past.end())
        return std::string(columns, ' ');
    const std::deque<double>& past = found->second;
    const std::size_t first = past.size() - std::min(past.size(), columns);
    const double least = *std::min_element(past.begin(), past.end());
    const double span = *std::max_element(past.begin(), past.end()) - least;
    std::string spark(columns - (past.size() - first), ' ');
    for (std::size_t i = first; i < past.size(); ++i) {
        const double height = span > 0.0 ? (past[i] - least) / span : 0.0;
        spark += (MB_CUR_MAX > 1 ? BLOCKS : LETTERS)[std::lround(height * 7.0)];
    }
    return spark;
}

// "11 Memory available   ▁▂▃▄▅  23332 MiB*"
std::string WatchScreen::Cell(std::FILE* out, const ShownChannel& channel,
                              std::size_t width) const {
    const std::string number = (channel.number < 10 ? " " : "") + std::to_string(channel.number);
    const std::size_t room = width - std::min(width, number.size() + 2);  // a blank and the mark
    const std::size_t shortestName = std::min(Columns(channel.name), SHORTEST_NAME);
    const std::string value = ValueWithin(channel, room - std::min(room, shortestName + 1), room);
    const std::string name = ShortenedName(channel.name, room - std::min(room, Columns(value) + 1));
    const bool isChanged = m_changed.count(channel.number) != 0;
    std::string middle(room - Columns(name) - Columns(value), ' ');
    const std::size_t field = std::max(Columns(value), NUMBER_WIDTH);
    if (!channel.isText && Columns(name) + field + 2 + SHORTEST_SPARK <= room) {
        const std::size_t spark = std::min(room - Columns(name) - field - 2, LONGEST_SPARK);
        middle = std::string(room - Columns(name) - field - 1 - spark, ' ') +
                 Spark(channel.number, spark) + std::string(field + 1 - Columns(value), ' ');
    }
    std::string shown = value + (isChanged ? "*" : " ");
    if (isChanged)
        shown = terminal::Styled(out, terminal::TITLE, shown);
    else if (channel.Meaning() != nullptr)
        shown = terminal::Styled(out, terminal::SPECIAL, shown);
    return terminal::Styled(out, terminal::FAINT, number) + " " + name + middle + shown;
}

void WatchScreen::Draw(std::FILE* out) const {
    const terminal::Size size = terminal::SizeOf(out);
    const auto width = static_cast<std::size_t>(size.columns);
    const auto lines = static_cast<std::size_t>(std::max(size.rows - 1, 1));  // below the title
    Grid grid = Fit(m_channels.size(), lines, width);
    const bool fits = grid.rows * grid.columns >= m_channels.size();
    if (!fits && grid.rows > 1)
        --grid.rows;  // room to say so
    std::string text =
        "\033[H" + terminal::Styled(out, terminal::TITLE, Shortened(m_strTitle, width));
    for (std::size_t row = 0; row < grid.rows; ++row) {
        text += "\033[K\r\n";
        for (std::size_t column = 0; column < grid.columns; ++column) {
            const std::size_t index = column * grid.rows + row;
            if (index < m_channels.size())
                text += (column > 0 ? std::string(GAP, ' ') : "") +
                        Cell(out, m_channels[index], grid.cellWidth);
        }
    }
    if (!fits)
        text +=
            "\033[K\r\n" + Shortened(std::to_string(m_channels.size() - grid.rows * grid.columns) +
                                         " more; a larger window shows them, or watch CHANNEL...",
                                     width);
    std::fprintf(out, "%s\033[J", text.c_str());
    std::fflush(out);
}

#include "gui/ScreenPicture.h"

#include "gui/Canvas.h"
#include "gui/Font.h"

#include <algorithm>

namespace {

using sim::Canvas;
using sim::kGlyphHeight;
using sim::kScreenHeight;
using sim::kScreenWidth;
using Row = std::pair<std::string, std::string>;

const QRgb kBackground = qRgb(22, 31, 41);
const QRgb kBar = qRgb(28, 84, 120);
const QRgb kBarEdge = qRgb(73, 158, 209);
const QRgb kEvenRow = qRgb(31, 43, 56);
const QRgb kOddRow = qRgb(26, 37, 48);
const QRgb kNameColour = qRgb(166, 184, 199);
const QRgb kValueColour = qRgb(255, 255, 255);
const QRgb kFaint = qRgb(190, 212, 227);

const int kMargin = 8;
const int kTitleHeight = 42;
const int kFooterHeight = 22;
const int kTableTop = kTitleHeight + 6;
const int kTableHeight = kScreenHeight - kTableTop - kFooterHeight - 6;
const int kColumnWidth = (kScreenWidth - 3 * kMargin) / 2;
const int kPadding = 6;

// Large text as long as the rows fit, small text for long tables.
struct Grid {
    int rowHeight;
    int valueScale;
    std::size_t rowsPerColumn;
};

Grid GridFor(std::size_t rows) {
    const bool large = rows <= 32;
    const int rowHeight = large ? 25 : 12;
    return {rowHeight, large ? 2 : 1, static_cast<std::size_t>(kTableHeight / rowHeight)};
}

// Names are as large as the values if that leaves room for both in every row.
int NameScale(const std::vector<Row>& rows, int valueScale) {
    const bool fits = std::all_of(rows.begin(), rows.end(), [valueScale](const Row& row) {
        return Canvas::textWidth(row.first + "  " + row.second, valueScale) <=
               kColumnWidth - 2 * kPadding;
    });
    return fits ? valueScale : 1;
}

void DrawTitle(Canvas& canvas, const sim::ScreenContent& content) {
    canvas.fill(0, 0, kScreenWidth, kTitleHeight, kBar);
    canvas.fill(0, kTitleHeight - 2, kScreenWidth, 2, kBarEdge);
    const int top = (kTitleHeight - 2 * kGlyphHeight) / 2;
    const int clockLeft = kScreenWidth - 2 * kMargin - Canvas::textWidth(content.clock, 2);
    canvas.text(2 * kMargin, top, content.title, kValueColour, 2);
    canvas.text(clockLeft, top, content.clock, kValueColour, 2);

    const int serialLeft = 4 * kMargin + Canvas::textWidth(content.title, 2);
    canvas.text(serialLeft, top,
                Canvas::fitted("S/N " + content.serialNumber, clockLeft - serialLeft - kMargin, 2),
                kFaint, 2);
}

void DrawRow(Canvas& canvas, int x, int y, const Row& row, const Grid& grid, int nameScale) {
    const int room = kColumnWidth - 2 * kPadding;
    const int glyphTop = y + (grid.rowHeight - 1 - 7 * grid.valueScale) / 2;
    const int nameTop = glyphTop + 7 * (grid.valueScale - nameScale);  // one base line
    const int valueShare =  // a long name may take what the value leaves, at least two fifths
        std::min(Canvas::textWidth(" " + row.second, grid.valueScale), room * 3 / 5);
    const std::string name = Canvas::fitted(row.first, room - valueShare, nameScale);
    const int valueRoom = room - Canvas::textWidth(name + " ", nameScale);
    const std::string value = Canvas::fitted(row.second, valueRoom, grid.valueScale);
    canvas.text(x + kPadding, nameTop, name, kNameColour, nameScale);
    canvas.text(x + kPadding + room - Canvas::textWidth(value, grid.valueScale), glyphTop, value,
                kValueColour, grid.valueScale);
}

void DrawTable(Canvas& canvas, const std::vector<Row>& rows, const Grid& grid) {
    const int nameScale = NameScale(rows, grid.valueScale);
    const std::size_t shown = std::min(rows.size(), 2 * grid.rowsPerColumn);
    for (std::size_t i = 0; i < shown; ++i) {
        const int line = static_cast<int>(i % grid.rowsPerColumn);
        const int x = i < grid.rowsPerColumn ? kMargin : 2 * kMargin + kColumnWidth;
        const int y = kTableTop + line * grid.rowHeight;
        canvas.fill(x, y, kColumnWidth, grid.rowHeight - 1, line % 2 ? kOddRow : kEvenRow);
        DrawRow(canvas, x, y, rows[i], grid, nameScale);
    }
}

void DrawFooter(Canvas& canvas, const sim::ScreenContent& content, std::size_t notShown) {
    const int top = kScreenHeight - kFooterHeight;
    std::string text = content.footer;
    if (notShown > 0)
        text = std::to_string(notShown) + " more rows, " + text;
    canvas.fill(0, top, kScreenWidth, kFooterHeight, kOddRow);
    canvas.text(2 * kMargin, top + (kFooterHeight - kGlyphHeight) / 2,
                Canvas::fitted(text, kScreenWidth - 4 * kMargin, 1), kFaint, 1);
}

}  // namespace

QImage sim::DrawScreen(const ScreenContent& content) {
    Canvas canvas(kScreenWidth, kScreenHeight, kBackground);
    const Grid grid = GridFor(content.rows.size());
    const std::size_t places = 2 * grid.rowsPerColumn;
    DrawTitle(canvas, content);
    DrawTable(canvas, content.rows, grid);
    DrawFooter(canvas, content, content.rows.size() - std::min(content.rows.size(), places));
    return canvas.image();
}

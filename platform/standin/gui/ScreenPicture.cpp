#include "gui/ScreenPicture.h"

#include "gui/Canvas.h"
#include "gui/Font.h"

#include <algorithm>

namespace {

using sim::Canvas;
using sim::GLYPH_HEIGHT;
using sim::SCREEN_HEIGHT;
using sim::SCREEN_WIDTH;
using Row = std::pair<std::string, std::string>;

const QRgb BACKGROUND = qRgb(22, 31, 41);
const QRgb BAR = qRgb(28, 84, 120);
const QRgb BAR_EDGE = qRgb(73, 158, 209);
const QRgb EVEN_ROW = qRgb(31, 43, 56);
const QRgb ODD_ROW = qRgb(26, 37, 48);
const QRgb NAME_COLOUR = qRgb(166, 184, 199);
const QRgb VALUE_COLOUR = qRgb(255, 255, 255);
const QRgb FAINT = qRgb(190, 212, 227);

const int MARGIN = 8;
const int TITLE_HEIGHT = 42;
const int FOOTER_HEIGHT = 22;
const int TABLE_TOP = TITLE_HEIGHT + 6;
const int TABLE_HEIGHT = SCREEN_HEIGHT - TABLE_TOP - FOOTER_HEIGHT - 6;
const int COLUMN_WIDTH = (SCREEN_WIDTH - 3 * MARGIN) / 2;
const int PADDING = 6;

// Large text as long as the rows fit, small text for long tables.
struct Grid {
    int rowHeight;
    int valueScale;
    std::size_t rowsPerColumn;
};

Grid GridFor(std::size_t rows) {
    const bool large = rows <= 32;
    const int rowHeight = large ? 25 : 12;
    return {rowHeight, large ? 2 : 1, static_cast<std::size_t>(TABLE_HEIGHT / rowHeight)};
}

// Names are as large as the values if that leaves room for both in every row.
int NameScale(const std::vector<Row>& rows, int valueScale) {
    const bool fits = std::all_of(rows.begin(), rows.end(), [valueScale](const Row& row) {
        return Canvas::TextWidth(row.first + "  " + row.second, valueScale) <=
               COLUMN_WIDTH - 2 * PADDING;
    });
    return fits ? valueScale : 1;
}

void DrawTitle(Canvas& canvas, const sim::ScreenContent& content) {
    canvas.Fill(0, 0, SCREEN_WIDTH, TITLE_HEIGHT, BAR);
    canvas.Fill(0, TITLE_HEIGHT - 2, SCREEN_WIDTH, 2, BAR_EDGE);
    const int top = (TITLE_HEIGHT - 2 * GLYPH_HEIGHT) / 2;
    const int clockLeft = SCREEN_WIDTH - 2 * MARGIN - Canvas::TextWidth(content.clock, 2);
    canvas.Text(2 * MARGIN, top, content.title, VALUE_COLOUR, 2);
    canvas.Text(clockLeft, top, content.clock, VALUE_COLOUR, 2);

    const int serialLeft = 4 * MARGIN + Canvas::TextWidth(content.title, 2);
    canvas.Text(serialLeft, top,
                Canvas::Fitted("S/N " + content.serialNumber, clockLeft - serialLeft - MARGIN, 2),
                FAINT, 2);
}

void DrawRow(Canvas& canvas, int x, int y, const Row& row, const Grid& grid, int nameScale) {
    const int room = COLUMN_WIDTH - 2 * PADDING;
    const int glyphTop = y + (grid.rowHeight - 1 - 7 * grid.valueScale) / 2;
    const int nameTop = glyphTop + 7 * (grid.valueScale - nameScale);  // one base line
    const int valueShare =  // a long name may take what the value leaves, at least two fifths
        std::min(Canvas::TextWidth(" " + row.second, grid.valueScale), room * 3 / 5);
    const std::string name = Canvas::Fitted(row.first, room - valueShare, nameScale);
    const int valueRoom = room - Canvas::TextWidth(name + " ", nameScale);
    const std::string value = Canvas::Fitted(row.second, valueRoom, grid.valueScale);
    canvas.Text(x + PADDING, nameTop, name, NAME_COLOUR, nameScale);
    canvas.Text(x + PADDING + room - Canvas::TextWidth(value, grid.valueScale), glyphTop, value,
                VALUE_COLOUR, grid.valueScale);
}

void DrawTable(Canvas& canvas, const std::vector<Row>& rows, const Grid& grid) {
    const int nameScale = NameScale(rows, grid.valueScale);
    const std::size_t shown = std::min(rows.size(), 2 * grid.rowsPerColumn);
    for (std::size_t i = 0; i < shown; ++i) {
        const int line = static_cast<int>(i % grid.rowsPerColumn);
        const int x = i < grid.rowsPerColumn ? MARGIN : 2 * MARGIN + COLUMN_WIDTH;
        const int y = TABLE_TOP + line * grid.rowHeight;
        canvas.Fill(x, y, COLUMN_WIDTH, grid.rowHeight - 1, line % 2 ? ODD_ROW : EVEN_ROW);
        DrawRow(canvas, x, y, rows[i], grid, nameScale);
    }
}

void DrawFooter(Canvas& canvas, const sim::ScreenContent& content, std::size_t notShown) {
    const int top = SCREEN_HEIGHT - FOOTER_HEIGHT;
    std::string text = content.footer;
    if (notShown > 0)
        text = std::to_string(notShown) + " more rows, " + text;
    canvas.Fill(0, top, SCREEN_WIDTH, FOOTER_HEIGHT, ODD_ROW);
    canvas.Text(2 * MARGIN, top + (FOOTER_HEIGHT - GLYPH_HEIGHT) / 2,
                Canvas::Fitted(text, SCREEN_WIDTH - 4 * MARGIN, 1), FAINT, 1);
}

}  // namespace

QImage sim::DrawScreen(const ScreenContent& content) {
    Canvas canvas(SCREEN_WIDTH, SCREEN_HEIGHT, BACKGROUND);
    const Grid grid = GridFor(content.rows.size());
    const std::size_t places = 2 * grid.rowsPerColumn;
    DrawTitle(canvas, content);
    DrawTable(canvas, content.rows, grid);
    DrawFooter(canvas, content, content.rows.size() - std::min(content.rows.size(), places));
    return canvas.Image();
}

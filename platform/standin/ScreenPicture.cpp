#include "ScreenPicture.h"

#include "Letters.h"

#include <algorithm>
#include <ctime>

namespace sim {

namespace {

constexpr int WIDTH = 800;
constexpr int HEIGHT = 480;
constexpr int TITLE_HEIGHT = 44;
constexpr int ROW_HEIGHT = 26;
constexpr int ROWS_PER_COLUMN = 16;
constexpr int COLUMN_WIDTH = WIDTH / 2;
constexpr int MARGIN = 10;

constexpr QRgb BACKGROUND = 0xFFEEF1F4;
constexpr QRgb STRIPE = 0xFFFFFFFF;
constexpr QRgb TITLE = 0xFF1F3A56;
constexpr QRgb TITLE_TEXT = 0xFFFFFFFF;
constexpr QRgb NAME_TEXT = 0xFF44546A;
constexpr QRgb VALUE_TEXT = 0xFF0B5394;

void Fill(QImage& image, int left, int top, int width, int height, QRgb color) {
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x) {
            if (image.valid(x, y))
                image.setPixel(x, y, color);
        }
    }
}

int TextWidth(const std::string& text, int scale) {
    return static_cast<int>(text.size()) * LETTER_ADVANCE * scale;
}

void DrawText(QImage& image, int left, int top, const std::string& text, int scale, QRgb color) {
    for (const char character : text) {
        const unsigned char* const columns = LetterColumns(static_cast<unsigned char>(character));
        for (int x = 0; x < LETTER_WIDTH; ++x) {
            for (int y = 0; y < LETTER_HEIGHT; ++y) {
                if ((columns[x] >> y & 1) != 0)
                    Fill(image, left + x * scale, top + y * scale, scale, scale, color);
            }
        }
        left += LETTER_ADVANCE * scale;
    }
}

void DrawTitle(QImage& image, const std::string& serialNumber) {
    Fill(image, 0, 0, WIDTH, TITLE_HEIGHT, TITLE);
    DrawText(image, MARGIN, 15, "PANEL " + serialNumber, 2, TITLE_TEXT);
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    char clock[32];
    const std::size_t length = std::strftime(clock, sizeof clock, "%Y-%m-%d %H:%M:%S", &local);
    const std::string text(clock, length);
    DrawText(image, WIDTH - MARGIN - TextWidth(text, 2), 15, text, 2, TITLE_TEXT);
}

void DrawRow(QImage& image, int index, const std::pair<std::string, std::string>& row) {
    const int left = index / ROWS_PER_COLUMN * COLUMN_WIDTH;
    const int line = index % ROWS_PER_COLUMN;
    const int top = TITLE_HEIGHT + 8 + line * ROW_HEIGHT;
    if (line % 2 == 0)
        Fill(image, left, top, COLUMN_WIDTH - 2, ROW_HEIGHT, STRIPE);
    DrawText(image, left + MARGIN, top + 6, row.first, 2, NAME_TEXT);
    const int space = COLUMN_WIDTH - 3 * MARGIN - TextWidth(row.first, 2);
    const int scale = TextWidth(row.second, 2) <= space ? 2 : 1;
    const std::string value = row.second.substr(
        0, static_cast<std::size_t>(std::max(space, 0) / (LETTER_ADVANCE * scale)));
    DrawText(image, left + COLUMN_WIDTH - MARGIN - TextWidth(value, scale),
             top + (ROW_HEIGHT - LETTER_HEIGHT * scale) / 2, value, scale, VALUE_TEXT);
}

}  // namespace

QImage DrawScreen(const PanelState& state) {
    QImage image(WIDTH, HEIGHT, QImage::Format_RGB32);
    Fill(image, 0, 0, WIDTH, HEIGHT, BACKGROUND);
    DrawTitle(image, state.serialNumber);
    for (std::size_t i = 0; i < state.screenRows.size() && i < 2 * ROWS_PER_COLUMN; ++i)
        DrawRow(image, static_cast<int>(i), state.screenRows[i]);
    return image;
}

}  // namespace sim

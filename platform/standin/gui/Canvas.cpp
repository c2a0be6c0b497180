#include "gui/Canvas.h"

#include "gui/Font.h"

#include <algorithm>

namespace {

// One byte per character, those outside printable ASCII replaced.
std::string Characters(const std::string& utf8) {
    std::string characters;
    for (const char byte : utf8) {
        const bool printable = byte >= ' ' && byte <= '~';
        const bool continues = (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
        if (!continues)
            characters += printable ? byte : sim::BOX_CHARACTER;
    }
    return characters;
}

// A quarter of a glyph's pixel, right and down telling which: set if the pixel is, and rounded
// where two neighbours at that corner say that a slanted line passes. The box keeps its corners.
bool QuarterSet(char character, int column, int row, bool right, bool down) {
    if (character == sim::BOX_CHARACTER)
        return sim::GlyphPixel(character, column, row);
    const int aside = right ? 1 : -1;
    const int beyond = down ? 1 : -1;
    const bool centre = sim::GlyphPixel(character, column, row);
    const bool nearX = sim::GlyphPixel(character, column + aside, row);
    const bool nearY = sim::GlyphPixel(character, column, row + beyond);
    const bool farX = sim::GlyphPixel(character, column - aside, row);
    const bool farY = sim::GlyphPixel(character, column, row - beyond);
    return nearX == nearY && nearX != farX && nearY != farY ? nearX : centre;
}

}  // namespace

namespace sim {

Canvas::Canvas(int width, int height, QRgb background)
    : m_image(width, height, QImage::Format_RGB32) {
    m_image.fill(background);
}

void Canvas::Fill(int x, int y, int width, int height, QRgb colour) {
    const int left = std::max(x, 0), right = std::min(x + width, m_image.width());
    const int top = std::max(y, 0), bottom = std::min(y + height, m_image.height());
    for (int row = top; row < bottom; ++row) {
        QRgb* const line = reinterpret_cast<QRgb*>(m_image.scanLine(row));
        if (left < right)
            std::fill(line + left, line + right, colour);
    }
}

void Canvas::Text(int x, int y, const std::string& text, QRgb colour, int scale) {
    for (const char character : Characters(text)) {
        Glyph(x, y, character, colour, scale);
        x += GLYPH_ADVANCE * scale;
    }
}

int Canvas::TextWidth(const std::string& text, int scale) {
    return static_cast<int>(Characters(text).size()) * GLYPH_ADVANCE * scale;
}

std::string Canvas::Fitted(const std::string& text, int width, int scale) {
    const std::size_t room = static_cast<std::size_t>(std::max(width, 0) / (GLYPH_ADVANCE * scale));
    std::string characters = Characters(text);
    if (characters.size() <= room)
        return characters;
    return room <= 2 ? std::string(room, '.') : characters.substr(0, room - 2) + "..";
}

void Canvas::Plot(int x, int y, QRgb colour) {
    if (m_image.rect().contains(x, y))
        m_image.setPixel(x, y, colour);
}

void Canvas::Glyph(int x, int y, char character, QRgb colour, int scale) {
    for (int row = 0; row < GLYPH_HEIGHT * scale; ++row) {
        for (int column = 0; column < GLYPH_WIDTH * scale; ++column) {
            const bool set = scale == 2 ? QuarterSet(character, column / 2, row / 2,
                                                     column % 2 != 0, row % 2 != 0)
                                        : GlyphPixel(character, column / scale, row / scale);
            if (set)
                Plot(x + column, y + row, colour);
        }
    }
}

}  // namespace sim

// A small bitmap font, so that text can be drawn where no fonts are installed.
#ifndef FONT_H
#define FONT_H

namespace sim {

const int kGlyphWidth = 5;
const int kGlyphHeight = 8;  // 7 above the base line, 1 below
const int kGlyphAdvance = 6;

// Drawn for every character that is not printable ASCII.
const char kBoxCharacter = 0x7F;

// Whether the glyph covers a pixel; false outside the glyph.
bool GlyphPixel(char character, int column, int row);

}  // namespace sim

#endif

// A small bitmap font, so that text can be drawn where no fonts are installed.
#ifndef FONT_H
#define FONT_H

namespace sim {

const int GLYPH_WIDTH = 5;
const int GLYPH_HEIGHT = 8;  // 7 above the base line, 1 below
const int GLYPH_ADVANCE = 6;

// Drawn for every character that is not printable ASCII.
const char BOX_CHARACTER = 0x7F;

// Whether the glyph covers a pixel; false outside the glyph.
bool GlyphPixel(char character, int column, int row);

}  // namespace sim

#endif

// Letters of 5 x 7 dots for ASCII 32 to 126: five columns each, the lowest bit on top.
#ifndef STANDIN_LETTERS_H
#define STANDIN_LETTERS_H

namespace sim {

constexpr int LETTER_WIDTH = 5;
constexpr int LETTER_HEIGHT = 7;
constexpr int LETTER_ADVANCE = 6;

// The columns of a letter; a box for characters beyond the range.
const unsigned char* LetterColumns(unsigned char character);

}  // namespace sim

#endif

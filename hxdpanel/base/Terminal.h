// What a terminal can show: its size, colours, and texts wrapped to its width.
#ifndef HXDPANEL_TERMINAL_H
#define HXDPANEL_TERMINAL_H

#include <cstddef>
#include <cstdio>
#include <string>

namespace terminal {

struct Size {
    int rows;
    int columns;
};

// True for a terminal whose cursor can be moved; false for files, pipes and TERM=dumb.
bool CanRedraw(std::FILE* file);
// 24 x 80 where nobody tells.
Size SizeOf(std::FILE* file);
// From now on SizeEvent() is readable while a change of the window's size has not been answered.
void NoticeSize();
int SizeEvent();  // -1: not noticed
void ClearSizeEvent();

enum Style { TITLE, GOOD, BAD, SPECIAL, FAINT };
// In colour on terminals, unless NO_COLOR is set; elsewhere the text as it is.
std::string Styled(std::FILE* file, Style style, const std::string& text);

// Lines of at most the terminal's columns, those after the first indented; broken between words.
// On anything but a terminal the text as it is.
std::string Wrapped(std::FILE* file, const std::string& text, std::size_t indent);
std::string WrappedTo(std::size_t columns, const std::string& text, std::size_t indent);

}  // namespace terminal

#endif

// Drawing on an image without a GUI application: rectangles and bitmap text.
#ifndef CANVAS_H
#define CANVAS_H

#include <QImage>

#include <string>

namespace sim {

class Canvas {
public:
    Canvas(int width, int height, QRgb background);

    const QImage& Image() const { return m_image; }

    // Everything is clipped to the image.
    void Fill(int x, int y, int width, int height, QRgb colour);

    // Text is UTF-8, its top left corner at (x, y); a character outside ASCII is drawn as a box.
    // scale 2 smooths the corners.
    void Text(int x, int y, const std::string& text, QRgb colour, int scale);
    static int TextWidth(const std::string& text, int scale);
    // text, cut and marked with ".." if it is wider than width.
    static std::string Fitted(const std::string& text, int width, int scale);

private:
    void Plot(int x, int y, QRgb colour);
    void Glyph(int x, int y, char character, QRgb colour, int scale);

    QImage m_image;
};

}  // namespace sim

#endif

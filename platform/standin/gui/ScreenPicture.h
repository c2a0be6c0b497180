// The picture on the simulated panel's screen.
#ifndef SCREENPICTURE_H
#define SCREENPICTURE_H

#include <QImage>

#include <string>
#include <utility>
#include <vector>

namespace sim {

// What the picture shows. Names and values are UTF-8.
struct ScreenContent {
    std::string title;
    std::string serialNumber;
    std::string clock;
    std::string footer;
    std::vector<std::pair<std::string, std::string>> rows;
};

const int SCREEN_WIDTH = 800;
const int SCREEN_HEIGHT = 480;

// Title bar, table in two columns, footer. Rows that find no place are counted in the footer.
QImage DrawScreen(const ScreenContent& content);

}  // namespace sim

#endif

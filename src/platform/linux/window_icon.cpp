#include "platform/linux/window_icon.h"

#include <algorithm>
#include <cmath>

// The shapes of assets/varnelle.svg, on its grid of 64 by 64, each as the distance of a point from its edge: negative
// inside. Drawn here, so that the program needs no picture file.

namespace {

constexpr double kGrid = 64.0;

struct Point {
    double x;
    double y;
};

double RoundedSquare(Point at, double margin, double radius) {
    const double half = kGrid / 2 - margin - radius;
    const double x = std::max(std::abs(at.x - kGrid / 2) - half, 0.0);
    const double y = std::max(std::abs(at.y - kGrid / 2) - half, 0.0);
    return std::hypot(x, y) - radius;
}

double Stroke(Point at, Point from, Point to, double width) {
    const Point along{to.x - from.x, to.y - from.y};
    const double projected = (at.x - from.x) * along.x + (at.y - from.y) * along.y;
    const double part = std::clamp(projected / (along.x * along.x + along.y * along.y), 0.0, 1.0);
    return std::hypot(at.x - from.x - part * along.x, at.y - from.y - part * along.y) - width / 2;
}

double Disc(Point at, Point centre, double radius) {
    return std::hypot(at.x - centre.x, at.y - centre.y) - radius;
}

struct Colour {
    double red;
    double green;
    double blue;
    double alpha;
};

// Lays `paint` over `under` where the shape covers the pixel, softly at its edge. `pixel` is a pixel's size on the grid.
void Lay(Colour& under, const Colour& paint, double distance, double pixel) {
    const double cover = std::clamp(0.5 - distance / pixel, 0.0, 1.0);
    const double alpha = cover + under.alpha * (1 - cover);
    if (alpha <= 0) {
        return;
    }
    const auto blend = [&](double top, double bottom) {
        return (top * cover + bottom * under.alpha * (1 - cover)) / alpha;
    };
    under = Colour{blend(paint.red, under.red), blend(paint.green, under.green),
                   blend(paint.blue, under.blue), alpha};
}

unsigned long Packed(const Colour& colour) {
    const auto byte = [](double value) {
        return static_cast<unsigned long>(std::lround(std::clamp(value, 0.0, 255.0)));
    };
    return byte(colour.alpha * 255) << 24 | byte(colour.red) << 16 | byte(colour.green) << 8 |
           byte(colour.blue);
}

}  // namespace

void AppendWindowIcon(int size, std::vector<unsigned long>& icons) {
    constexpr Colour kGround{0x1b, 0x20, 0x29, 1};
    constexpr Colour kRim{0x39, 0x42, 0x52, 1};
    constexpr Colour kMark{0xf1, 0xf4, 0xf8, 1};
    constexpr Colour kDot{0xff, 0x85, 0x52, 1};
    constexpr Point kLeft{15, 18};
    constexpr Point kFoot{30.5, 48.5};
    constexpr Point kRight{40.8, 29.5};
    const double pixel = kGrid / size;
    icons.push_back(static_cast<unsigned long>(size));
    icons.push_back(static_cast<unsigned long>(size));
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            const Point at{(column + 0.5) * pixel, (row + 0.5) * pixel};
            Colour colour{0, 0, 0, 0};
            Lay(colour, kGround, RoundedSquare(at, 1, 15), pixel);
            Lay(colour, kRim, std::abs(RoundedSquare(at, 1.75, 14.25)) - 0.75, pixel);
            Lay(colour, kMark, std::min(Stroke(at, kLeft, kFoot, 8.5), Stroke(at, kFoot, kRight, 8.5)),
                pixel);
            Lay(colour, kDot, Disc(at, Point{47.6, 17.4}, 7.4), pixel);
            icons.push_back(Packed(colour));
        }
    }
}

#pragma once

#include <cstdint>
#include <ostream>

namespace vardel {

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    Point origin;
    Size size;
    bool operator==(const Rect&) const = default;

    bool contains(Point point) const
    {
        return point.x >= origin.x && point.x < origin.x + size.width && point.y >= origin.y
            && point.y < origin.y + size.height;
    }
};

struct Range {
    int64_t location = 0;
    int64_t length = 0;
    bool operator==(const Range&) const = default;
};

std::ostream& operator<<(std::ostream&, const Point&);
std::ostream& operator<<(std::ostream&, const Size&);
std::ostream& operator<<(std::ostream&, const Rect&);
std::ostream& operator<<(std::ostream&, const Range&);

} // namespace vardel

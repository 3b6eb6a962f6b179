// Points moved and turned: local coordinate systems of a deck and the placing of its parts.
#ifndef KIVOM_DECK_PLACEMENT_H
#define KIVOM_DECK_PLACEMENT_H

#include <array>

namespace deck {

using Point = std::array<double, 3>;

// A local coordinate system: its origin and the global directions of its axes.
struct Frame {
    Point origin{};
    std::array<Point, 3> axis{Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}};
    bool turned = false; // false: the axes are the global ones
};

// *SYSTEM: a is the origin, b on the local x axis, c in the local x-y plane on the side of +y. Without c z stays and x
// is projected onto the X-Y plane; without b the axes stay. False where the points give no axes.
bool MakeFrame(const Point &a, const Point *b, const Point *c, Frame *frame);

Point ToGlobal(const Frame &frame, const Point &local);

// Radius, angle in degrees, height.
Point FromCylindrical(const Point &p);

// Turned by the right hand about the line from a to b; false, and the point stays, where a is b.
struct Turn {
    Point a{};
    Point direction{}; // of length 1
    double sine = 0, cosine = 1;
};
bool MakeTurn(const Point &a, const Point &b, double degrees, Turn *turn);
Point Turned(const Turn &turn, const Point &p);

Point Minus(const Point &a, const Point &b);
Point Cross(const Point &a, const Point &b);
double Dot(const Point &a, const Point &b);
double Length(const Point &a);

} // namespace deck

#endif

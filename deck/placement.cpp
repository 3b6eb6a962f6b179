// Frames and turns.
#include "deck/placement.h"

#include <cmath>

namespace deck {

namespace {

constexpr double kDegree = 0.017453292519943295769; // pi / 180

// Exact at the quarter turns, which are the ordinary ones.
void SineAndCosine(double degrees, double *sine, double *cosine) {
    const double rest = std::remainder(degrees, 360.0);
    if (std::fmod(rest, 90.0) == 0) {
        const int quarter = static_cast<int>(rest / 90.0);
        *sine = quarter == 1 ? 1 : quarter == -1 ? -1 : 0;
        *cosine = quarter == 0 ? 1 : quarter == 2 || quarter == -2 ? -1 : 0;
        return;
    }
    *sine = std::sin(rest * kDegree);
    *cosine = std::cos(rest * kDegree);
}

bool Normalize(Point *p) {
    const double length = Length(*p);
    if (!(length > 0) || !std::isfinite(length)) {
        return false;
    }
    for (double &x : *p) {
        x /= length;
    }
    return true;
}

} // namespace

Point Minus(const Point &a, const Point &b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Point Cross(const Point &a, const Point &b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Dot(const Point &a, const Point &b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double Length(const Point &a) {
    return std::sqrt(Dot(a, a));
}

bool MakeFrame(const Point &a, const Point *b, const Point *c, Frame *frame) {
    *frame = Frame{};
    frame->origin = a;
    if (b == nullptr) {
        return true;
    }
    frame->turned = true;
    Point x = Minus(*b, a);
    Point z{0, 0, 1};
    if (c == nullptr) {
        x[2] = 0;
    } else {
        z = Cross(x, Minus(*c, a));
    }
    if (!Normalize(&x) || !Normalize(&z)) {
        return false;
    }
    frame->axis = {x, Cross(z, x), z};
    return true;
}

Point ToGlobal(const Frame &frame, const Point &local) {
    Point p = frame.origin;
    for (std::size_t i = 0; i < 3; ++i) {
        if (!frame.turned) {
            p[i] += local[i];
            continue;
        }
        p[i] += local[0] * frame.axis[0][i] + local[1] * frame.axis[1][i] + local[2] * frame.axis[2][i];
    }
    return p;
}

Point FromCylindrical(const Point &p) {
    double sine = 0;
    double cosine = 1;
    SineAndCosine(p[1], &sine, &cosine);
    return {p[0] * cosine, p[0] * sine, p[2]};
}

bool MakeTurn(const Point &a, const Point &b, double degrees, Turn *turn) {
    turn->a = a;
    turn->direction = Minus(b, a);
    SineAndCosine(degrees, &turn->sine, &turn->cosine);
    return Normalize(&turn->direction) && std::isfinite(degrees);
}

Point Turned(const Turn &turn, const Point &p) {
    const Point r = Minus(p, turn.a);
    const Point across = Cross(turn.direction, r);
    const double along = Dot(turn.direction, r) * (1 - turn.cosine);
    Point q = turn.a;
    for (std::size_t i = 0; i < 3; ++i) {
        q[i] += r[i] * turn.cosine + across[i] * turn.sine + turn.direction[i] * along;
    }
    return q;
}

} // namespace deck

#include <datumfit/foundation/circles/circle2_constructor.h>

#include <algorithm>
#include <cmath>
#include <limits>

// With s = 1 for circles inside the result and -1 for circles outside, |c - p_i| = R - s r_i. From the circle of number
// 0, in x = c - p_0 and T = R - s r_0, that is |x| = T and |x - a| = T - h for the other two, a = p_i - p_0 and
// h = s r_i - s r_0. Squared and with |x|^2 = T^2 taken off, a.x - h T = (|a|^2 - h^2) / 2: two planes in the space of
// (x, T), which cut a line out of it, and the line cuts the cone |x| = T in at most two points. No step divides by the
// area of the triangle of centres, so that these may lie in line.

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

// Of vectors of at most about 1: planes that meet at a lesser angle are parallel but for rounding.
constexpr double parallel = 4.0 * epsilon;

// How far a root may miss the circles, relative to the size of the figure. True ones miss them by rounding; those that
// only the squares have miss them by about a radius.
constexpr double greatest_miss = 0x1p-40;

// Where two results are about to merge, a step only halves what is left.
constexpr int most_corrections = 40;

// A circle as a point of space, its signed radius as the height; or a difference of two of them.
struct lifted {
    double x, y, h;
};

lifted operator-(lifted const & a, lifted const & b) {
    return {a.x - b.x, a.y - b.y, a.h - b.h};
}
lifted operator*(double s, lifted const & a) {
    return {s * a.x, s * a.y, s * a.h};
}
lifted operator+(lifted const & a, lifted const & b) {
    return {a.x + b.x, a.y + b.y, a.h + b.h};
}
lifted cross(lifted const & a, lifted const & b) {
    return {a.y * b.h - a.h * b.y, a.h * b.x - a.x * b.h, a.x * b.y - a.y * b.x};
}
double dot(lifted const & a, lifted const & b) {
    return a.x * b.x + a.y * b.y + a.h * b.h;
}
// 0 for a point of the cone. The difference of two squares keeps its digits where a circle nearly touches another one
// from within.
double cone_product(lifted const & a, lifted const & b) {
    return a.x * b.x + a.y * b.y - a.h * b.h;
}
double cone_square(lifted const & a) {
    bool const along_x = std::abs(a.x) > std::abs(a.y);
    double const major = along_x ? a.x : a.y, minor = along_x ? a.y : a.x;
    return (major - a.h) * (major + a.h) + minor * minor;
}
double greatest_of(lifted const & a) {
    return std::max({std::abs(a.x), std::abs(a.y), std::abs(a.h)});
}

// The power of two that brings the greatest coordinate to between 1 and 2; 0 where all are 0, or one is not finite.
double scale_for(lifted const & a, lifted const & b, lifted const & c) {
    double const sum = greatest_of(a) + greatest_of(b) + greatest_of(c);
    if (!(sum > 0.0) || !std::isfinite(sum)) return 0.0;
    double const greatest = std::max({greatest_of(a), greatest_of(b), greatest_of(c)});
    return std::ldexp(1.0, std::min(-std::ilogb(greatest), 1000));
}

// The circle's centre from that of circle 0, whose signed radius is counted as 0.
struct touching_circle {
    giVector2 x;
    double radius() const { return x.length(); }
};

// By how much the distance of circle a exceeds that of circle 0, formed without the difference of two long distances.
double miss(giVector2 const & x, lifted const & a) {
    giVector2 const b(a.x, a.y);
    double const distances = (x - b).length() + x.length();
    return distances > 0.0 ? b.dot(b - 2.0 * x) / distances + a.h : a.h;
}

double greatest_miss_of(giVector2 const & x, lifted const & a, lifted const & b) {
    return std::max(std::abs(miss(x, a)), std::abs(miss(x, b)));
}

// The change of miss() with x.
giVector2 gradient(giVector2 const & x, lifted const & a) {
    giVector2 const from_a = x - giVector2(a.x, a.y);
    double const la = from_a.length(), l0 = x.length();
    return giVector2(from_a.x() / la - x.x() / l0, from_a.y() / la - x.y() / l0);
}

// Newton's steps take off what the roots have gathered of rounding, as long as they help.
void correct(giVector2 & x, lifted const & a, lifted const & b) {
    double least = greatest_miss_of(x, a, b);
    for (int i = 0; i < most_corrections && least > 0.0; ++i) {
        giVector2 const ga = gradient(x, a), gb = gradient(x, b);
        double const det = ga.cross(gb), ma = miss(x, a), mb = miss(x, b);
        giVector2 const moved(x.x() - (ma * gb.y() - mb * ga.y()) / det, x.y() - (mb * ga.x() - ma * gb.x()) / det);
        double const now = greatest_miss_of(moved, a, b);
        if (!(now < least)) return;
        x = moved;
        least = now;
    }
}

// Takes the point p + t d of the line when it is a circle, and the least one so far.
void take(lifted const & p, lifted const & d, double t, lifted const & a, lifted const & b, bool & found,
          touching_circle & least) {
    lifted const root = p + t * d;
    giVector2 x(root.x, root.y);
    if (!std::isfinite(x.dot(x))) return;
    correct(x, a, b);
    touching_circle const circle{x};
    if (!(greatest_miss_of(x, a, b) <= greatest_miss)) return;
    if (found && !(circle.radius() < least.radius())) return;
    found = true;
    least = circle;
}

// The least circle that touches one of radius 0 at the origin, a and b.
bool find_touching(lifted const & a, lifted const & b, touching_circle & circle) {
    lifted const na{a.x, a.y, -a.h}, nb{b.x, b.y, -b.h};
    lifted const e = cross(na, nb);
    double const length = std::sqrt(dot(e, e));
    if (!(length > parallel * std::sqrt(dot(na, na) * dot(nb, nb)))) return false;
    lifted const d = (1.0 / length) * e;
    lifted const p = (1.0 / length) * (0.5 * cone_square(a) * cross(nb, d) + 0.5 * cone_square(b) * cross(d, na));

    // The roots of A t^2 + 2 B t + C, where rounding may have parted two that are one.
    double const A = cone_square(d), B = cone_product(p, d), C = cone_square(p);
    double const discriminant = B * B - A * C;
    if (discriminant < -64.0 * epsilon * (B * B + std::abs(A * C))) return false;
    double const q = B + std::copysign(std::sqrt(std::max(0.0, discriminant)), B);
    bool found = false;
    take(p, d, -q / A, a, b, found, circle);
    take(p, d, q != 0.0 ? -C / q : 0.0, a, b, found, circle);
    return found;
}

}  // namespace

void tncCircle2Constructor::construct(tncCircle2 & result, tncTangent, tncCircle2 const & c1, tncTangent,
                                      tncCircle2 const & c2, tncTangent, tncCircle2 const & c3, int mode) {
    tncCircle2 const circles[] = {c1, c2, c3};  // the result may be among the arguments
    result = tncCircle2();
    auto const is_set = [](tncCircle2 const & c) { return !c.centre().invalid(); };
    bool const usable = (mode == 0 || mode == 14) && std::all_of(std::begin(circles), std::end(circles), is_set);
    if (!usable) return;
    double const s = mode == 14 ? 1.0 : -1.0;
    auto const lift = [&](int i) {
        return lifted{circles[i].centre().x(), circles[i].centre().y(), s * circles[i].radius()};
    };

    // Counted from the circle opposite the longest side, whose two sides make the least of rounding.
    lifted sides[] = {lift(1) - lift(0), lift(2) - lift(1), lift(0) - lift(2)};
    double const scale = scale_for(sides[0], sides[1], sides[2]);
    if (scale == 0.0) return;
    int longest = 0;
    for (int i = 0; i < 3; ++i) {
        sides[i] = scale * sides[i];
        if (dot(sides[i], sides[i]) > dot(sides[longest], sides[longest])) longest = i;
    }
    int const first = (longest + 2) % 3;
    touching_circle found;
    if (!find_touching(sides[first], -1.0 * sides[(first + 2) % 3], found)) return;

    giPoint2 const centre = circles[first].centre() + (1.0 / scale) * found.x;
    double const radius = found.radius() / scale + s * circles[first].radius();
    if (std::isfinite(centre.x()) && std::isfinite(centre.y()) && std::isfinite(radius)) {
        result = tncCircle2(centre, radius);
    }
}

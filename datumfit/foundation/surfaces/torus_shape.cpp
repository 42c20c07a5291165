#include <datumfit/foundation/surfaces/quarter_turns.h>
#include <datumfit/foundation/surfaces/torus_shape.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double pi = 3.14159265358979323846;

// Axes that differ by this share are equal, and so are right angles: rounding leaves as much when a stretch is undone.
constexpr double round_limit = 64.0 * epsilon;

// The grids have 64 lines each way over these numbers.
constexpr int strides[] = {4, 1};

// Newton's method: steps are at most this long, in radians; behind one below the second number comes the last.
constexpr double longest_step = 0.4;
constexpr double nearly_there = 1e-6;
constexpr int step_limit = 32;

// Feet that are this near to each other, in radians, are one.
constexpr double same_angle = 1e-6;

// A second derivative this much smaller than the other is none: the feet fill a curve, at one distance to that share.
constexpr double flat = 1e-11;
constexpr double same_square = 1e-9;

double dot(double const (&a)[3], double const (&b)[3]) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Turns a unit vector by the angle 2 arctan(a / 2), without leaving the circle.
void turn(double & c, double & s, double a) {
    double const k = 0.25 * a * a, over = 1.0 / (1.0 + k);
    double const cosine = (1.0 - k) * over, sine = a * over, old = c;
    c = cosine * old - sine * s;
    s = cosine * s + sine * old;
}

void unitize(double & c, double & s) {
    double const over = 1.0 / std::sqrt(c * c + s * s);
    c *= over;
    s *= over;
}

// The unit vector along (x, y), or (1, 0).
void unit2(double & x, double & y) {
    if (x == 0.0 && y == 0.0) x = 1.0;
    unitize(x, y);
}

}  // namespace

// The stationary points found so far.
struct torus_shape::criticals {
    static constexpr int capacity = 16;
    int n = 0;
    critical items[capacity];

    // All but copies, and but others of a curve of feet.
    void add(critical const & c) {
        for (int i = 0; i < n; ++i) {
            critical const & other = items[i];
            place const &a = c.at, &b = other.at;
            bool const same_curve = c.index == 0 && other.index == 0 &&
                                    std::abs(c.square - other.square) <= same_square * (c.square + other.square);
            bool const same_foot = std::abs(a.cu - b.cu) + std::abs(a.su - b.su) <= same_angle &&
                                   std::abs(a.cv - b.cv) + std::abs(a.sv - b.sv) <= same_angle;
            if (same_curve || same_foot) return;
        }
        if (n < capacity) items[n++] = c;
    }

    bool complete() const {
        int sum = 0;
        bool runs_together = false;
        for (int i = 0; i < n; ++i) {
            sum += items[i].index;
            runs_together = runs_together || items[i].index == 0;
        }
        return n > 0 && (sum == 0 || runs_together);
    }
};

// S^T q, and its parts along and across the directions.
struct torus_shape::dual_point {
    double z;
    double along[finest], across[finest];
    double margin;  // how much the derivatives may differ within a cell from what its corners tell
};

// The signs of the derivatives on one line of the grid, a bit for each u; none of a derivative within the margin of 0.
struct torus_shape::signs {
    std::uint64_t u_above, u_below, v_above, v_below;
};

bool torus_shape::settle(affine_placement & placement) {
    matrix3 const & S = placement.stretch();
    double G[3][3], mean = 0.0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            G[r][c] = S.rows[0][r] * S.rows[0][c] + S.rows[1][r] * S.rows[1][c] + S.rows[2][r] * S.rows[2][c];
        }
        mean += G[r][r] / 3.0;
    }
    round_ = true;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            round_ = round_ && std::abs(G[r][c] - (r == c ? mean : 0.0)) <= round_limit * mean;
        }
    }
    z_G_z_ = G[2][2];
    bend_ = major_ * std::max({G[0][0], G[1][1], G[2][2]});
    for (int i = 0; i < finest; ++i) {
        double const angle = 2.0 * pi * i / finest;
        direction & d = directions_[i];
        d.c = std::cos(angle);
        d.s = std::sin(angle);
        double const Ge[] = {G[0][0] * d.c + G[0][1] * d.s, G[1][0] * d.c + G[1][1] * d.s,
                             G[2][0] * d.c + G[2][1] * d.s};
        d.e_G_e = d.c * Ge[0] + d.s * Ge[1];
        d.f_G_e = d.c * Ge[1] - d.s * Ge[0];
        d.z_G_e = Ge[2];
        d.z_G_f = d.c * G[2][1] - d.s * G[2][0];
    }
    return true;
}

void torus_shape::find_feet(affine_placement const & placement, double const (&q)[3], double, surf_feet & feet) const {
    if (round_) return find_round(placement, q, feet);
    criticals found;
    find_stretched(placement.stretch(), q, found);
    for (int i = 0; i < found.n; ++i) {
        place const & at = found.items[i].at;
        double y[3];
        local_place(placement.stretch(), at, y);
        feet.add(y, quarter_turns(at.cu, at.su), quarter_turns(at.cv, at.sv));
    }
}

// In the half planes of the point and of its opposite the torus is a circle each.
void torus_shape::find_round(affine_placement const & placement, double const (&q)[3], surf_feet & feet) const {
    double x[3];
    placement.unstretch().times(q, x);
    double const f = std::sqrt(x[0] * x[0] + x[1] * x[1]);
    place at{x[0], x[1], 0.0, 0.0};
    unit2(at.cu, at.su);
    for (double const side : {1.0, -1.0}) {
        double c = side * f - major_, s = x[2];
        unit2(c, s);
        for (double const end : {1.0, -1.0}) {
            place const foot{side * at.cu, side * at.su, end * c, end * s};
            double y[3];
            local_place(placement.stretch(), foot, y);
            feet.add(y, quarter_turns(foot.cu, foot.su), quarter_turns(foot.cv, foot.sv));
        }
    }
}

void torus_shape::find_stretched(matrix3 const & S, double const (&q)[3], criticals & found) const {
    for (int const stride : strides) {
        search(S, q, stride, found);
        if (found.complete()) return;
    }
}

void torus_shape::search(matrix3 const & S, double const (&q)[3], int stride, criticals & found) const {
    int const n = finest / stride;
    dual_point dual;
    double dual_q[3];
    S.transposed_times(q, dual_q);
    dual.z = dual_q[2];
    for (int i = 0; i < n; ++i) {
        direction const & d = directions_[stride * i];
        dual.along[i] = dual_q[0] * d.c + dual_q[1] * d.s;
        dual.across[i] = dual_q[1] * d.c - dual_q[0] * d.s;
    }

    // Between the corners of a cell of width h a function strays from the linear ones by up to h² / 8 times its bend.
    double const h = 2.0 * pi / n;
    dual.margin = h * h / 8.0 * (bend_ + std::sqrt(dot(dual_q, dual_q)));

    // A cell holds no foot when one derivative has the same sign at its four corners.
    std::uint64_t const all = n == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << n) - 1;
    auto const at_corners = [&](std::uint64_t a, std::uint64_t b) {
        std::uint64_t const both = a & b;
        return both & ((both >> 1) | (both << (n - 1)));
    };
    signs const first = signs_along(dual, 0, stride);
    signs lower = first;
    for (int row = 0; row < n; ++row) {
        signs const upper = row + 1 < n ? signs_along(dual, row + 1, stride) : first;
        std::uint64_t const empty = at_corners(lower.u_above, upper.u_above) |
                                    at_corners(lower.u_below, upper.u_below) |
                                    at_corners(lower.v_above, upper.v_above) | at_corners(lower.v_below, upper.v_below);
        std::uint64_t cells = all & ~empty;
        for (int i = 0; cells != 0; ++i, cells >>= 1) {
            if ((cells & 1) == 0) continue;
            direction const & around = directions_[stride * i];
            direction const & tube = directions_[stride * row];
            critical c{{around.c, around.s, tube.c, tube.s}, 0.0, 0};
            turn(c.at.cu, c.at.su, pi / n);
            turn(c.at.cv, c.at.sv, pi / n);
            if (polish(S, q, c)) found.add(c);
        }
        lower = upper;
    }
}

// The derivatives of half the square distance, over the radii of the circles: with t the canonical place and
// g = G t - S^T q, by u that is g . e', by v it is g . (-sin v e + cos v z).
torus_shape::signs torus_shape::signs_along(dual_point const & q, int row, int stride) const {
    direction const & tube = directions_[stride * row];
    double const rho = major_ + minor_ * tube.c, height = minor_ * tube.s;
    double const level = height * z_G_z_ - q.z;
    int const n = finest / stride;
    signs found{0, 0, 0, 0};
    for (int i = 0; i < n; ++i) {
        direction const & d = directions_[stride * i];
        double const du = rho * d.f_G_e + height * d.z_G_f - q.across[i];
        double const dv = tube.c * (rho * d.z_G_e + level) - tube.s * (rho * d.e_G_e + height * d.z_G_e - q.along[i]);
        found.u_above |= static_cast<std::uint64_t>(du > q.margin) << i;
        found.u_below |= static_cast<std::uint64_t>(du < -q.margin) << i;
        found.v_above |= static_cast<std::uint64_t>(dv > q.margin) << i;
        found.v_below |= static_cast<std::uint64_t>(dv < -q.margin) << i;
    }
    return found;
}

// Newton's method for both derivatives being 0, by lengths along the canonical circles.
bool torus_shape::polish(matrix3 const & S, double const (&q)[3], critical & c) const {
    place & at = c.at;
    bool last = false;
    for (int step = 0; step < step_limit; ++step) {
        double const rho = major_ + minor_ * at.cv;
        double const across[] = {-at.su, at.cu, 0.0};
        double const up[] = {-at.sv * at.cu, -at.sv * at.su, at.cv};
        double y[3], along_u[3], along_v[3], g[3];
        local_place(S, at, y);
        for (int k = 0; k < 3; ++k) y[k] -= q[k];
        S.times(across, along_u);
        S.times(up, along_v);
        S.transposed_times(y, g);
        double const out = g[0] * at.cu + g[1] * at.su;
        double const fu = dot(y, along_u), fv = dot(y, along_v);
        double const huu = dot(along_u, along_u) - out / rho;
        double const huv = dot(along_u, along_v) - at.sv * fu / rho;
        double const hvv = dot(along_v, along_v) - (at.cv * out + at.sv * g[2]) / minor_;
        double const det = huu * hvv - huv * huv, trace = huu + hvv;
        bool const runs_together = std::abs(det) <= flat * (huu * huu + 2.0 * huv * huv + hvv * hvv);
        // Where one of the two eigenvalues is 0, the step is along the eigenvector of the other.
        double const over = runs_together ? 1.0 / (trace * trace) : 1.0 / det;
        double const by_u = runs_together ? huu * fu + huv * fv : hvv * fu - huv * fv;
        double const by_v = runs_together ? huv * fu + hvv * fv : huu * fv - huv * fu;
        double du = -over * by_u / rho, dv = -over * by_v / minor_;
        double const longest = std::max(std::abs(du), std::abs(dv));
        if (!(longest < std::numeric_limits<double>::infinity())) return false;
        if (longest > longest_step) {
            du *= longest_step / longest;
            dv *= longest_step / longest;
        }
        turn(at.cu, at.su, du);
        turn(at.cv, at.sv, dv);
        c.index = runs_together ? 0 : det > 0.0 ? 1 : -1;
        c.square = dot(y, y);
        if (last) break;
        last = longest <= nearly_there;
    }
    unitize(at.cu, at.su);
    unitize(at.cv, at.sv);
    return last;
}

void torus_shape::local_place(matrix3 const & S, place const & at, double (&y)[3]) const {
    double const rho = major_ + minor_ * at.cv;
    double const t[] = {rho * at.cu, rho * at.su, minor_ * at.sv};
    S.times(t, y);
}

void torus_shape::gradient(double u, double v, double (&g)[3]) const {
    double c, s;
    from_quarter_turns(u, g[0], g[1]);
    from_quarter_turns(v, c, s);
    g[0] *= c;
    g[1] *= c;
    g[2] = s;
}

}  // namespace internal
}  // namespace datumfit

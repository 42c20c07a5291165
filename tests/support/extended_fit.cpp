#include "support/extended_fit.h"

#include <algorithm>
#include <limits>

namespace reference {
namespace {

// The coordinates of the points and of the frame are taken from the start's place. Parameters: small displacements
// along the axes u, v, w of a frame, the tilts of w towards u and v, the growth of the radius and of the half angle.
// Each primitive has some of these parameters free.
constexpr std::size_t n_parameters = 7;
using Parameters = std::array<long double, n_parameters>;
using Free = std::array<bool, n_parameters>;
using Normal = std::array<Parameters, n_parameters>;

struct Frame {
    Exact3 place{}, u{}, v{}, w{};
    long double size = 0, half_angle = 0;
};

/// One part of a point's distance: the squares of the parts add up to that of the distance.
struct Term {
    long double value;
    Parameters gradient;
};

Free free_parameters(Primitive primitive) {
    switch (primitive) {
        case Primitive::line2:
            return {false, false, true, true, false, false};
        case Primitive::plane:
            return {false, false, true, true, true, false};
        case Primitive::line3:
            return {true, true, false, true, true, false};
        case Primitive::circle:
            return {true, true, false, false, false, true};
        case Primitive::sphere:
            return {true, true, true, false, false, true};
        case Primitive::cylinder:
            return {true, true, false, true, true, true};
        case Primitive::cone:
            return {true, true, false, true, true, true, true};
        default:
            return {true, true, true, true, true, true};
    }
}

bool is_flat(Primitive primitive) {
    return primitive == Primitive::line2 || primitive == Primitive::plane;
}

std::vector<Term> terms(Primitive primitive, Frame const & at, Exact3 const & p, long double probe) {
    Exact3 const q = along(p, -1, at.place);
    long double const x = dot(q, at.u), y = dot(q, at.v), z = dot(q, at.w);
    Term const height = {z - probe, {0, 0, -1, x, y, 0}};
    if (is_flat(primitive)) return {height};
    if (primitive == Primitive::line3) return {{x, {-1, 0, 0, -z, 0, 0}}, {y, {0, -1, 0, 0, -z, 0}}};
    if (primitive == Primitive::sphere) {
        long double const rho = length(q);
        return {{rho + probe - at.size, {-x / rho, -y / rho, -z / rho, 0, 0, -1}}};
    }
    long double const f = std::hypot(x, y);
    if (primitive == Primitive::cone) {
        long double const c = std::cos(at.half_angle), s = std::sin(at.half_angle), slope = c * z / f + s;
        return {
            {c * f - s * z + probe - at.size, {-c * x / f, -c * y / f, s, -slope * x, -slope * y, -1, -s * f - c * z}}};
    }
    Term const ring = {f + probe - at.size, {-x / f, -y / f, 0, -z * x / f, -z * y / f, -1}};
    if (primitive == Primitive::circle || primitive == Primitive::cylinder) return {ring};
    return {ring, height};
}

Frame frame_of(Primitive primitive, Solution const & start) {
    Frame frame = {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, start.size, start.half_angle};
    if (primitive == Primitive::line2) {
        frame.u = unit(start.direction);
        frame.v = {0, 0, 1};
        frame.w = cross(frame.u, frame.v);
    } else if (primitive != Primitive::circle && primitive != Primitive::sphere) {
        frame.w = unit(start.direction);
        Exact3 const aside = std::abs(frame.w[0]) < 0.6L ? Exact3{1, 0, 0} : Exact3{0, 1, 0};
        frame.u = unit(cross(aside, frame.w));
        frame.v = cross(frame.w, frame.u);
    }
    return frame;
}

void move(Frame & frame, Parameters const & step) {
    frame.place = along(along(along(frame.place, step[0], frame.u), step[1], frame.v), step[2], frame.w);
    frame.w = unit(along(along(frame.w, step[3], frame.u), step[4], frame.v));
    frame.u = unit(along(frame.u, -dot(frame.u, frame.w), frame.w));
    frame.v = cross(frame.w, frame.u);
    frame.size += step[5];
    frame.half_angle += step[6];
}

// The normal equations of the free parameters; the others get the identity, and stay.
class Equations {
public:
    explicit Equations(Free const & free) : free_(free) {
        for (std::size_t i = 0; i < n_parameters; ++i) matrix_[i][i] = free[i] ? 0 : 1;
    }

    void add(Term const & term) {
        squares_ += term.value * term.value;
        for (std::size_t i = 0; i < n_parameters; ++i) {
            for (std::size_t j = 0; j < n_parameters && free_[i]; ++j) {
                if (free_[j]) matrix_[i][j] += term.gradient[i] * term.gradient[j];
            }
            if (free_[i]) right_[i] -= term.gradient[i] * term.value;
        }
    }

    long double squares() const { return squares_; }
    Parameters step() const { return solve(right_); }

    /// Entry k of the diagonal of the inverse; 0 for a parameter that is not free.
    long double variance(std::size_t k) const {
        Parameters e{};
        e[k] = free_[k] ? 1 : 0;
        return solve(e)[k];
    }

private:
    // Elimination without a change of rows, which a positive definite matrix does not need.
    Parameters solve(Parameters x) const {
        Normal m = matrix_;
        for (std::size_t k = 0; k < n_parameters; ++k) {
            for (std::size_t i = k + 1; i < n_parameters; ++i) {
                long double const factor = m[i][k] / m[k][k];
                for (std::size_t j = k; j < n_parameters; ++j) m[i][j] -= factor * m[k][j];
                x[i] -= factor * x[k];
            }
        }
        for (std::size_t k = n_parameters; k-- > 0;) {
            for (std::size_t j = k + 1; j < n_parameters; ++j) x[k] -= m[k][j] * x[j];
            x[k] /= m[k][k];
        }
        return x;
    }

    Free free_;
    Normal matrix_{};
    Parameters right_{};
    long double squares_ = 0;
};

struct LocalData {
    std::vector<Exact3> points;
    std::vector<long double> probe;  // what it adds to the distance from something round, or takes off a height
    Exact3 centroid{};
    long double extent = 0;
};

LocalData local_data(PointSet const & data, Exact3 const & origin) {
    LocalData local;
    long double const n = static_cast<long double>(data.points.size());
    for (auto const & p : data.points) {
        local.points.push_back(along({p[0], p[1], p[2]}, -1, origin));
        local.centroid = along(local.centroid, 1 / n, local.points.back());
        local.extent = std::max(local.extent, length(along(local.points.back(), -1, local.points.front())));
    }
    local.probe.assign(data.points.size(), 0);
    for (std::size_t i = 0; i < data.radii.size(); ++i) {
        local.probe[i] = is_flat(data.primitive) || data.inside ? data.radii[i] : -data.radii[i];
    }
    return local;
}

Equations equations(Primitive primitive, Frame const & frame, LocalData const & data) {
    Equations result(free_parameters(primitive));
    for (std::size_t i = 0; i < data.points.size(); ++i) {
        for (Term const & term : terms(primitive, frame, data.points[i], data.probe[i])) result.add(term);
    }
    return result;
}

// Keeps the place of an axis, line or plane at the foot of the centroid, where displacement and tilt are independent.
void put_at_foot(Primitive primitive, Exact3 const & centroid, Frame & frame) {
    Exact3 const q = along(centroid, -1, frame.place);
    if (primitive == Primitive::line3 || is_mantle(primitive)) {
        frame.place = along(frame.place, dot(q, frame.w), frame.w);
        frame.size += dot(q, frame.w) * std::sin(frame.half_angle);
    }
    if (is_flat(primitive)) frame.place = along(centroid, -dot(q, frame.w), frame.w);
}

// Gauss-Newton steps, until they have not shrunk for a while: then they are rounding, at whatever rate they converged.
bool iterate(Primitive primitive, LocalData const & data, Frame & frame) {
    constexpr long double small = 1e-14L;
    long double least = std::numeric_limits<long double>::max();
    for (int since_least = 0; since_least < 5; ++since_least) {
        put_at_foot(primitive, data.centroid, frame);
        Parameters step = equations(primitive, frame, data).step();
        move(frame, step);
        for (std::size_t const k : {0U, 1U, 2U, 5U}) step[k] /= data.extent + frame.size;
        long double size = 0;
        for (long double const s : step) size = std::max(size, std::abs(s));
        if (size < least) since_least = 0;
        least = std::min(least, size);
    }
    put_at_foot(primitive, data.centroid, frame);
    return least < small;
}

Gain gain_of(Primitive primitive, Equations const & at_minimum) {
    long double const directions = primitive == Primitive::line3 ? 2 : 1;  // a line's gain is that of one direction
    auto const deviation = [&](std::size_t from, std::size_t to) {
        long double sum = 0;
        for (std::size_t k = from; k < to; ++k) sum += at_minimum.variance(k);
        return std::sqrt(sum / directions);
    };
    return {deviation(0, 3), deviation(3, 5), deviation(5, 6), deviation(6, 7)};
}

struct Minimum {
    bool converged;
    Gain gain;
    long double squares;
};

Minimum fit(Primitive primitive, LocalData const & data, Frame & frame) {
    bool const converged = iterate(primitive, data, frame);
    Equations const at_minimum = equations(primitive, frame, data);
    return {converged, gain_of(primitive, at_minimum), at_minimum.squares()};
}

Minimum fit_circle_in_plane(LocalData const & data, Frame & frame) {
    Exact3 const start = frame.place;
    Minimum const plane = fit(Primitive::plane, data, frame);
    frame.place = along(start, -dot(along(start, -1, frame.place), frame.w), frame.w);
    Minimum const ring = fit(Primitive::circle, data, frame);
    // The plane's height at the centre, far beside the points of a short arc, adds to the centre's uncertainty.
    long double const height = equations(Primitive::plane, frame, data).variance(2);
    Gain const gain = {std::sqrt(ring.gain.place * ring.gain.place + height), plane.gain.angle, ring.gain.size};
    return {plane.converged && ring.converged, gain, plane.squares + ring.squares};
}

}  // namespace

ExtendedFit fit_extended(PointSet const & data, Solution const & start) {
    LocalData const local = local_data(data, start.place);
    Frame frame = frame_of(data.primitive, start);
    Minimum const minimum = data.primitive == Primitive::circle_in_plane ? fit_circle_in_plane(local, frame)
                                                                         : fit(data.primitive, local, frame);
    ExtendedFit result;
    result.converged = minimum.converged;
    result.gain = minimum.gain;
    result.solution.place = along(start.place, 1, frame.place);
    if (length(start.direction) > 0) result.solution.direction = data.primitive == Primitive::line2 ? frame.u : frame.w;
    result.solution.size = frame.size;
    result.solution.half_angle = frame.half_angle;
    result.solution.rms = std::sqrt(minimum.squares / static_cast<long double>(data.points.size()));
    return result;
}

}  // namespace reference

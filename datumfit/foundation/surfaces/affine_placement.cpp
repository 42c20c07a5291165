#include <datumfit/foundation/surfaces/affine_placement.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

// A linear part whose columns have equal lengths and right angles to this share is taken to have them: rounding leaves
// no more in transforms that are made as rigid ones, nor in products of dozens of them.
constexpr double rigid_rounding = 64.0 * epsilon;

giVector3 column_of(giXform3 const & x, int c) {
    giMatrix4 const & m = x.matrix();
    return giVector3(m(0, c), m(1, c), m(2, c));
}

// The factor of a similarity transform; 0 for other ones.
double similarity_factor(giXform3 const & x) {
    giVector3 const a = column_of(x, 0), b = column_of(x, 1), c = column_of(x, 2);
    double const aa = a.dot(a), bb = b.dot(b), cc = c.dot(c), mean = (aa + bb + cc) / 3.0;
    double const limit = rigid_rounding * mean;
    bool const alike = std::abs(aa - mean) <= limit && std::abs(bb - mean) <= limit && std::abs(cc - mean) <= limit &&
                       std::abs(a.dot(b)) <= limit && std::abs(b.dot(c)) <= limit && std::abs(c.dot(a)) <= limit;
    if (!alike) return 0.0;
    return std::abs(mean - 1.0) <= rigid_rounding ? 1.0 : std::sqrt(mean);
}

// The part of v across n unit vectors, which are at right angles, and its coordinates along them. What rounding leaves
// along them in the first pass, the second takes away.
giVector3 part_across(giVector3 const & v, giVector3 const * units, int n, double * along) {
    giVector3 rest = v;
    for (int i = 0; i < n; ++i) along[i] = 0.0;
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < n; ++i) {
            double const more = units[i].dot(rest);
            along[i] += more;
            rest -= more * units[i];
        }
    }
    return rest;
}

void set_row(matrix3 & m, int r, giVector3 const & v) {
    m.rows[r][0] = v.x();
    m.rows[r][1] = v.y();
    m.rows[r][2] = v.z();
}

giVector3 row_of(matrix3 const & m, int r) {
    return giVector3(m.rows[r][0], m.rows[r][1], m.rows[r][2]);
}

}  // namespace

affine_placement::affine_placement(giPoint3 const & origin, giVector3 const (&edges)[3], bool third_edge_leads)
    : origin_{origin.x(), origin.y(), origin.z()} {
    // The edges in the order in which they span a frame, as its axes times an upper triangle.
    int const order[] = {third_edge_leads ? 2 : 0, third_edge_leads ? 0 : 1, third_edge_leads ? 1 : 2};
    giVector3 units[3];
    double triangle[3][3] = {}, volume = 1.0;
    for (int j = 0; j < 3; ++j) {
        giVector3 const & edge = edges[order[j]];
        double const length = edge.length();
        if (!(length >= least && length <= greatest)) return;
        double along[3];
        giVector3 const rest = part_across(edge, units, j, along);
        for (int i = 0; i < j; ++i) triangle[i][j] = along[i];
        triangle[j][j] = rest.length();
        volume *= triangle[j][j] / length;
        if (!(volume > 4.0 * epsilon)) return;
        units[j] = (1.0 / triangle[j][j]) * rest;
        set_row(axes_, j, units[j]);
    }
    double inverse[3][3] = {};
    for (int j = 0; j < 3; ++j) {
        inverse[j][j] = 1.0 / triangle[j][j];
        for (int i = j - 1; i >= 0; --i) {
            double sum = 0.0;
            for (int k = i + 1; k <= j; ++k) sum += triangle[i][k] * inverse[k][j];
            inverse[i][j] = -sum / triangle[i][i];
        }
    }
    for (int i = 0; i < 3; ++i) {
        for (int j = i; j < 3; ++j) {
            stretch_.rows[i][order[j]] = triangle[i][j];
            unstretch_.rows[order[i]][j] = inverse[i][j];
        }
    }
    valid_ = finish(1.0);
}

bool affine_placement::finish(double scale) {
    scale_ = scale;
    over_scale_ = 1.0 / scale;
    double farthest = 0.0;
    reach_ = 0.0;
    for (double const x : origin_) {
        farthest = std::fmax(farthest, std::abs(x));
        reach_ += std::abs(x);
    }
    return reach_ <= 3.0 * greatest && farthest <= greatest && scale >= least && scale <= greatest;
}

bool affine_placement::move_alike(giXform3 const & x) {
    double const factor = similarity_factor(x);
    if (!(factor > 0.0)) return false;
    giVector3 axes[3];
    for (int r = 0; r < 3; ++r) {
        double along[3];
        axes[r] = giUnitVec3(part_across(x * row_of(axes_, r), axes, r, along));
    }
    for (int r = 0; r < 3; ++r) set_row(axes_, r, axes[r]);
    giPoint3 const at = x * origin();
    origin_[0] = at.x();
    origin_[1] = at.y();
    origin_[2] = at.z();
    valid_ = valid_ && finish(factor * scale_);
    return true;
}

void affine_placement::turn(matrix3 const & E) {
    matrix3 const axes = axes_, stretch = stretch_, unstretch = unstretch_;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double a = 0.0, s = 0.0, k = 0.0;
            for (int i = 0; i < 3; ++i) {
                a += E.rows[i][r] * axes.rows[i][c];
                s += E.rows[i][r] * stretch.rows[i][c];
                k += unstretch.rows[r][i] * E.rows[i][c];
            }
            axes_.rows[r][c] = a;
            stretch_.rows[r][c] = s;
            unstretch_.rows[r][c] = k;
        }
    }
}

giUnitVec3 affine_placement::normal(double const (&gradient)[3]) const {
    double local[3], world[3];
    unstretch_.transposed_times(gradient, local);
    axes_.transposed_times(local, world);
    return giUnitVec3(world[0], world[1], world[2]);
}

giVector3 affine_placement::edge(int k) const {
    double const local[] = {stretch_.rows[0][k], stretch_.rows[1][k], stretch_.rows[2][k]};
    double world[3];
    axes_.transposed_times(local, world);
    return scale_ * giVector3(world[0], world[1], world[2]);
}

}  // namespace internal
}  // namespace datumfit

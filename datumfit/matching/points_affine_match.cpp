#include <datumfit/foundation/geometry/xform3_acc.h>
#include <datumfit/foundation/maths/singular_value_decomposition.h>
#include <datumfit/matching/points_affine_match.h>

namespace {

// The entries of a row of the transform, by what they multiply.
enum : unsigned { X = 1, Y = 2, Z = 4, ONE = 8 };

// Which entries of the three rows are unknown; the others are those of the identity.
struct family {
    unsigned unknown[3];
};

constexpr family families[] = {
    {{X | Y | Z | ONE, X | Y | Z | ONE, X | Y | Z | ONE}},  // sqAffineMatchFull
    {{X | Y | ONE, X | Y | ONE, 0}},                        // sqAffineMatchXY
    {{X, Y, Z}},                                            // sqAffineMatchScale
    {{X | ONE, Y | ONE, Z | ONE}},                          // sqAffineMatchScaleTranslate
    {{X, Y, 0}},                                            // sqAffineMatchXYScale
    {{X | ONE, Y | ONE, ONE}},                              // sqAffineMatchXYScaleXYZTranslate
    {{X | ONE, 0, 0}},                                      // sqAffineMatchX
    {{0, Y | ONE, 0}},                                      // sqAffineMatchY
    {{0, 0, Z | ONE}},                                      // sqAffineMatchZ
};
constexpr int family_count = static_cast<int>(sizeof families / sizeof *families);
constexpr int most_unknowns = 12;

// The unknown entries of a family, row by row.
struct unknowns {
    int row[most_unknowns], column[most_unknowns];
    int count = 0;

    explicit unknowns(family const & f) {
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 4; ++c) {
                if (!(f.unknown[r] >> c & 1u)) continue;
                row[count] = r;
                column[count++] = c;
            }
        }
    }
};

using entries = double[3][4];  // of a transform

// What the normal equations of every family are made of: the moments of the second points (x, y, z, 1), and of these
// with what a transform leaves of the first ones.
struct moments {
    double second[4][4] = {};
    double mixed[3][4] = {};

    moments(entries const & m, giPoint3coPageArr const & first, giPoint3coPageArr const & second_points) {
        for (int i = 0; i < second_points.size(); ++i) add(m, first.read(i), second_points.read(i));
    }
    void add(entries const & m, giPoint3 const & first, giPoint3 const & of_second) {
        double const a[] = {first.x(), first.y(), first.z()};
        double const b[] = {of_second.x(), of_second.y(), of_second.z(), 1.0};
        for (int r = 0; r < 3; ++r) {
            double const left = a[r] - (m[r][0] * b[0] + m[r][1] * b[1] + m[r][2] * b[2] + m[r][3]);
            for (int c = 0; c < 4; ++c) mixed[r][c] += left * b[c];
        }
        for (int j = 0; j < 4; ++j) {
            for (int k = 0; k < 4; ++k) second[j][k] += b[j] * b[k];
        }
    }
};

mlMatrix normal_matrix(moments const & sums, unknowns const & u) {
    mlMatrix n(mlMatrixZero, u.count, u.count);
    for (int j = 0; j < u.count; ++j) {
        for (int k = 0; k < u.count; ++k) {
            if (u.row[k] == u.row[j]) n(j, k) = sums.second[u.column[j]][u.column[k]];
        }
    }
    return n;
}

// Solves for a change of the unknown entries, and makes it.
void improve(mlSingularValueDecomposition const & svd, moments const & sums, unknowns const & u, entries & m) {
    mlVector right_side(mlVectorDim, u.count), x;
    for (int k = 0; k < u.count; ++k) right_side[k] = sums.mixed[u.row[k]][u.column[k]];
    svd.solve(right_side, x);
    for (int k = 0; k < u.count; ++k) m[u.row[k]][u.column[k]] += x[k];
}

}  // namespace

void sqPointsAffineMatch::add_pair(giPoint3 const & first, giPoint3 const & second) {
    int const n = second_points_.size() + 1;
    if (!second_points_.reserve(n) || !first_points_.reserve(n)) return;
    second_points_.append(second);
    first_points_.append(first);
}

int sqPointsAffineMatch::xform(giXform3 & transform) const {
    int const type = transform_type_;
    if (type < 0 || type >= family_count) return 0;
    unknowns const u(families[type]);
    entries m = {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}};
    for (int k = 0; k < u.count; ++k) m[u.row[k]][u.column[k]] = 0.0;

    moments const sums(m, first_points_, second_points_);
    mlSingularValueDecomposition const svd(normal_matrix(sums, u));
    if (svd.is_singular(eps_)) return 0;
    improve(svd, sums, u, m);
    improve(svd, moments(m, first_points_, second_points_), u, m);

    transform.become(giXformIdentity);
    giXform3Acc const written = giXform3Acc::access(transform);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 4; ++c) written.set_matrix_value(r, c, m[r][c]);
    }
    return 1;
}

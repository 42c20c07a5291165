#include "support/extended_fit.h"
#include "support/reference_case.h"
#include "support/reference_fit.h"
#include "support/tally.h"

#include <gtest/gtest.h>

#include <cstdlib>

// Moves, turns and scales the points of known pairs. Rounding then makes new points of them, whose truth a fit in long
// double finds; it starts from the moved truth of the pair, not from what the library finds.

namespace {

using namespace reference;

struct Move {
    char const * name;
    double scale;
    bool turn;
    double offset;
};

void PrintTo(Move const & move, std::ostream * out) {
    *out << move.name;
}

class Mover {
public:
    Mover(Move const & move, Primitive primitive) : move_(move) {
        bool const in_plane = is_in_plane(primitive);
        offset_ = {move.offset, -0.83L * move.offset, in_plane ? 0 : 0.61L * move.offset};
        if (!move.turn) return;
        if (in_plane) {
            rows_ = {{{20.0L / 29, -21.0L / 29, 0}, {21.0L / 29, 20.0L / 29, 0}, {0, 0, 1}}};
            return;
        }
        // The rotation of a unit quaternion w, x, y, z.
        long double const w = 0.36L, x = 0.48L, y = -0.64L, z = 0.48L;
        rows_ = {{{1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)},
                  {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)},
                  {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)}}};
    }

    Exact3 turned(Exact3 const & v) const { return {dot(rows_[0], v), dot(rows_[1], v), dot(rows_[2], v)}; }
    Exact3 point(Exact3 const & p) const { return along(offset_, move_.scale, turned(p)); }

    PointSet operator()(PointSet data) const {
        for (auto & p : data.points) p = rounded(point({p[0], p[1], p[2]}));
        for (double & r : data.radii) r *= move_.scale;
        auto const & n = data.approximate_normal;
        data.approximate_normal = rounded(turned({n[0], n[1], n[2]}));
        return data;
    }
    Solution operator()(Solution const & s) const {
        return {point(s.place), turned(s.direction), move_.scale * s.size, move_.scale * s.rms, s.half_angle};
    }

private:
    static std::array<double, 3> rounded(Exact3 const & p) {
        return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
    }

    Move move_;
    Exact3 offset_{};
    std::array<Exact3, 3> rows_ = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
};

// Of the project's own pairs those of size 1 at the origin: the others are there moved already.
std::vector<Case> pairs_to_move() {
    std::vector<Case> result;
    for (Case const & known : read_cases(DATUMFIT_TEST_DATA_DIR).known) {
        std::string const & id = known.id;
        if (id.size() > 5 && id.substr(id.size() - 5) == "_unit") result.push_back(known);
    }
    if (char const * const folder = std::getenv("DATUMFIT_REFERENCE_DATA")) {
        std::vector<Case> const outer = read_cases(folder).known;
        result.insert(result.end(), outer.begin(), outer.end());
    }
    return result;
}

class MovedPairs : public testing::TestWithParam<Move> {};

}  // namespace

// What makes the long double fit fit to judge others: its errors are small change beside what doubles are allowed.
TEST(ExtendedFit, FindsTheKnownSolutionsAndGains) {
    constexpr long double share = 1.0L / 256;
    Tally tally;
    for (Case const & known : read_cases(DATUMFIT_TEST_DATA_DIR).known) {
        SCOPED_TRACE(known.id);
        Solution start = known.truth;
        long double const aside = 1e-6L * (start.size > 0 ? start.size : 1);
        start.place = along(start.place, aside, {1, -0.5L, 0});
        start.size *= 1 + 1e-6L;
        ExtendedFit const found = fit_extended(known.data, start);
        ASSERT_TRUE(found.converged);
        Differences allowed = bounds(known.data, known.truth, found.solution, known.noise_gain, false);
        allowed = {share * allowed.place, share * allowed.angle, share * allowed.size, share * allowed.rms,
                   share * allowed.half_angle};
        tally.compare(known, differences(known.data, known.truth, found.solution), allowed);
        Gain const & expected = known.noise_gain;
        EXPECT_LE(std::abs(found.gain.place - expected.place), 1e-3L * expected.place);
        EXPECT_LE(std::abs(found.gain.angle - expected.angle), 1e-3L * expected.angle);
        EXPECT_LE(std::abs(found.gain.size - expected.size), 1e-3L * expected.size);
        EXPECT_LE(std::abs(found.gain.half_angle - expected.half_angle), 1e-3L * expected.half_angle);
    }
}

TEST_P(MovedPairs, AgreeToRounding) {
    Tally tally;
    for (Case const & known : pairs_to_move()) {
        SCOPED_TRACE(testing::Message() << known.file << ", " << known.id << ", " << name(known.data.primitive));
        Mover const move(GetParam(), known.data.primitive);
        PointSet const moved = move(known.data);
        ExtendedFit const truth = fit_extended(moved, move(known.truth));
        EXPECT_TRUE(truth.converged);
        std::optional<Solution> const found = fit(moved);
        EXPECT_TRUE(found);
        if (!found) continue;
        tally.compare(known, differences(moved, truth.solution, *found),
                      bounds(moved, truth.solution, *found, truth.gain, false));
    }
}

INSTANTIATE_TEST_SUITE_P(Moves, MovedPairs,
                         testing::Values(Move{"kept", 1.0, false, 0.0}, Move{"moved_2p14", 1.0, false, 0x1p14},
                                         Move{"moved_2p20", 1.0, false, 0x1p20}, Move{"turned", 1.0, true, 0.0},
                                         Move{"scaled_small", 1e-3, false, 0.0}, Move{"scaled_large", 1e5, false, 0.0},
                                         Move{"turned_moved_2p20", 1.0, true, 0x1p20}),
                         [](auto const & move) { return testing::PrintToString(move.param); });

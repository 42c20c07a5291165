#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <datumfit/align3d/points_to_planes/rotation_about_origin.h>
#include <datumfit/foundation/maths/random.h>

#include <algorithm>
#include <utility>

namespace {

constexpr double same_point = 1e-7;  // points that are no farther apart, or from a line, count as one, or as on it
constexpr int enough_points = 3;
constexpr int trials = 5;
constexpr double turn_range = 3.0;      // radians
constexpr double same_place = 0.01;     // of a point under two solutions
constexpr double fit_tolerance = 0.01;  // of the search for records to drop

// Up to three points that differ.
giPoint3coDynArr distinct_points(sqPlaneAndPointcoDynArr const & records) {
    giPoint3coDynArr points{records[0].point};
    for (int i = 1; i < records.size() && points.size() < enough_points; ++i) {
        giPoint3 const & p = records[i].point;
        bool const is_new = std::all_of(points.data(), points.data() + points.size(),
                                        [&](giPoint3 const & other) { return distance(p, other) > same_point; });
        if (is_new) points.append(p);
    }
    return points;
}

giPoint3 farthest_from(giPoint3 const & p, giPoint3coDynArr const & points) {
    return *std::max_element(points.data(), points.data() + points.size(),
                             [&](giPoint3 const & a, giPoint3 const & b) { return distance(a, p) < distance(b, p); });
}

// Whether the points lie on a line along d, or on any line when d is null.
bool are_collinear(giPoint3coDynArr const & points, giVector3 const * d) {
    giPoint3 const b = farthest_from(points[0], points), a = farthest_from(b, points);
    giUnitVec3 const along = d ? d->unit() : (b - a).unit();
    return std::all_of(points.data(), points.data() + points.size(),
                       [&](giPoint3 const & p) { return along.cross(p - a).length() <= same_point; });
}

giVector3 random_vector(mlRandom & generator) {
    double const x = generator.minus_one_one();
    double const y = generator.minus_one_one();
    double const z = generator.minus_one_one();
    return giVector3(x, y, z);
}

// A random turn: about the locked direction if there is one.
giXform3 random_rotation(mlRandom & generator, giVector3 const * locked) {
    giVector3 const turn =
        locked ? (generator.minus_one_one() * turn_range) * *locked : turn_range * random_vector(generator);
    double const angle = turn.length();
    giUnitVec3 const axis = angle > sqPointsToPlanes::TINY_DOUBLE ? turn.unit() : giUnitVec3(giAxisX);
    return datumfit::internal::rotation_about_origin(axis, giAngle(giAngleRadians, angle));
}

}  // namespace

sqPointsToPlanes::POSITIONING_STATE sqPointsToPlanes::test_positioning(int keep_located, giXform3 & transform) const {
    if (positioning_.size() == 0) return POSITIONING_UNDETERMINED;
    using search_function = sqAmoebaPointsToPlanesDirectShift;
    sqPlaneAndPointcoDynArr pairs;
    std::vector<std::pair<int, double>> balance;
    data_for_downhill(pairs, balance, 1, keep_located == 0);
    giVector3coDynArr axis = locked_axis();
    giVector3 const * const locked = locked_to_.size() > 0 ? &locked_to_[0] : nullptr;

    giXform3 first;
    search_function function(pairs, balance, axis, shift_directions_, attraction_, 0);
    if (fit_pairs_downhill(function, first, POSITIONING_TOLERANCE, nullptr, nullptr) > POSITIONING_TOLERANCE) {
        return POSITIONING_OVERDETERMINED;
    }
    transform = first;

    giPoint3coDynArr const points = distinct_points(positioning_);
    if (points.size() < (locked ? 2 : enough_points) || are_collinear(points, locked)) return POSITIONING_UNDETERMINED;
    // A part that can still turn about a line of its points would go unnoticed below: no turn moves them.
    if (locked && are_collinear(points, &axis[0])) return POSITIONING_UNDETERMINED;

    // The points suffice, but the planes may still leave freedom: see whether the part falls back to its place.
    mlRandom generator(1);
    for (int trial = 0; trial < trials; ++trial) {
        giVector3 const shift = random_vector(generator);
        giXform3 const turn = random_rotation(generator, locked);
        sqPlaneAndPointcoDynArr moved = pairs;
        for (int i = 0; i < moved.size(); ++i) moved[i].point = turn * moved[i].point + shift;
        if (locked) axis[0] = turn * locked_from_[0];

        giXform3 second;
        search_function moved_function(moved, balance, axis, shift_directions_, attraction_, 0);
        double const deviation = fit_pairs_downhill(moved_function, second, POSITIONING_TOLERANCE, nullptr, nullptr);
        if (deviation > POSITIONING_TOLERANCE) continue;
        for (int i = 0; i < moved.size(); ++i) {
            if (distance(first * pairs[i].point, second * moved[i].point) > same_place) return POSITIONING_UNDETERMINED;
        }
    }
    return POSITIONING_DETERMINED;
}

void sqPointsToPlanes::fix_overdetermined_positioning(giXform3 & transform) {
    sqPlaneAndPointcoDynArr const set_aside = bestfit_;
    std::vector<std::pair<int, double>> const balance_set_aside = balance_;
    clear_bestfit_data();
    multiple_guesses(1);
    transform.become(giXformIdentity);

    giXform3 found;
    double deviation = 0.0;
    sqRPSDatacoDynArr removed;
    while (have_enough_data() && positioning_.size() > 0) {
        fit(found, fit_tolerance, &deviation);
        if (deviation < POSITIONING_TOLERANCE) {
            transform = found;
            break;
        }
        sqRPSData record;
        pop_back_rps(record);
        removed.append(record);
    }
    // Records that only stood behind the culprit come back.
    for (int i = removed.size() - 1; i >= 0 && removed.size() >= 2; --i) {
        undo_pop_back_rps(removed[i]);
        fit(found, fit_tolerance, &deviation);
        if (deviation >= POSITIONING_TOLERANCE) {
            pop_back_rps(removed[i]);
        } else {
            transform = found;
        }
    }
    bestfit_ = set_aside;
    balance_ = balance_set_aside;
}

int sqPointsToPlanes::fix_undetermined_positioning(giXform3 & transform) {
    for (int i = 0; i < reserve_.size();) {
        positioning_.append(reserve_[i]);
        POSITIONING_STATE const state = test_positioning(1, transform);
        if (state == POSITIONING_OVERDETERMINED) {
            positioning_.shrink(positioning_.size() - 1, 0);
            ++i;
            continue;
        }
        std::copy(reserve_.data() + i + 1, reserve_.data() + reserve_.size(), reserve_.data() + i);
        reserve_.shrink(reserve_.size() - 1, 0);
        if (state == POSITIONING_DETERMINED) return 1;
    }
    return 0;
}

void sqPointsToPlanes::pop_back_rps(sqRPSData & record) {
    if (positioning_.size() == 0) return;
    int const last = positioning_.size() - 1, last_source = source_points_.size() - 1;
    record = sqRPSData(positioning_[last], positioning_[last].point);
    positioning_.shrink(last, 0);
    if (last_source < 0) return;
    record.source_point = source_points_[last_source];
    source_points_.shrink(last_source, 0);
}

void sqPointsToPlanes::undo_pop_back_rps(sqRPSData const & record) {
    positioning_.append(record);
    if (source_points_.size() > 0) source_points_.append(record.source_point);
}

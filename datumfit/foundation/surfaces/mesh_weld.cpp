#include <datumfit/foundation/surfaces/mesh_weld.h>

#include <cstdint>
#include <cstring>

namespace datumfit {
namespace internal {

namespace {

std::uint64_t bits(double x) {
    double const unsigned_zero = x + 0.0;
    std::uint64_t result;
    std::memcpy(&result, &unsigned_zero, sizeof result);
    return result;
}

// The round numbers of drawings differ in their upper bits only: each product carries them down again.
std::uint64_t hash(giPoint3 const & p) {
    std::uint64_t h = 0;
    for (std::uint64_t const word : {bits(p.x()), bits(p.y()), bits(p.z())}) {
        h = (h ^ word) * 0x9E3779B97F4A7C15u;
        h ^= h >> 32;
    }
    return h;
}

bool equal(giPoint3 const & a, giPoint3 const & b) {
    return a.x() == b.x() && a.y() == b.y() && a.z() == b.z();
}

std::size_t power_of_two_above(std::size_t n) {
    std::size_t power = 1;
    while (power <= n) power *= 2;
    return power;
}

}  // namespace

std::vector<int> first_equal_points(std::vector<giPoint3> const & points) {
    constexpr int empty = -1;
    std::vector<int> table(power_of_two_above(2 * points.size()), empty), first(points.size());
    std::size_t const mask = table.size() - 1;
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::size_t place = hash(points[i]) & mask;
        while (table[place] != empty && !equal(points.data()[table[place]], points[i])) place = (place + 1) & mask;
        if (table[place] == empty) table[place] = static_cast<int>(i);
        first[i] = table[place];
    }
    return first;
}

}  // namespace internal
}  // namespace datumfit

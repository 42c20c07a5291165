#include <datumfit/foundation/surfaces/mesh_links.h>

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace datumfit {
namespace internal {

namespace {

// Sorts the sides 0 to n - 1 into one bucket for each vertex, in ascending order; bucket(side) is negative for a side
// that has none. put(place, side) stores a side, first[v] is where the bucket of v begins.
template <class Bucket, class Put>
void sort_into_buckets(int n, int vertices, std::vector<int> & first, Bucket const & bucket, Put const & put) {
    first.assign(static_cast<std::size_t>(vertices) + 2, 0);
    for (int side = 0; side < n; ++side) {
        if (bucket(side) >= 0) ++first.data()[bucket(side) + 2];
    }
    for (int v = 0; v < vertices; ++v) first.data()[v + 2] += first.data()[v + 1];
    for (int side = 0; side < n; ++side) {
        if (bucket(side) >= 0) put(first.data()[bucket(side) + 1]++, side);
    }
}

int start_of(std::vector<triangle_corners> const & triangles, int side) {
    return triangles.data()[side / 3].data()[side % 3];
}

}  // namespace

mesh_links::mesh_links(std::vector<triangle_corners> const & triangles, int vertices) {
    join_sides(triangles, vertices);
    list_sides(triangles, vertices);
}

void mesh_links::list_sides(std::vector<triangle_corners> const & triangles, int vertices) {
    int const n = 3 * static_cast<int>(triangles.size());
    starting_.resize(3 * triangles.size());
    sort_into_buckets(
        n, vertices, first_, [&](int side) { return start_of(triangles, side); },
        [&](int place, int side) { starting_.data()[place] = side; });
}

// The sides of each vertex that is the lower end of an edge, sorted by their other end, are those of one edge after
// the other.
void mesh_links::join_sides(std::vector<triangle_corners> const & triangles, int vertices) {
    int const n = 3 * static_cast<int>(triangles.size());
    auto const end_of = [&](int side) { return start_of(triangles, next_side(side)); };
    std::vector<side_of_edge> sides(3 * triangles.size());
    std::vector<int> first;
    sort_into_buckets(
        n, vertices, first, [&](int side) { return std::min(start_of(triangles, side), end_of(side)); },
        [&](int place, int side) {
            int const high = std::max(start_of(triangles, side), end_of(side));
            sides.data()[place] = {high, start_of(triangles, previous_side(side)), side};
        });

    around_.assign(sides.size(), -1);
    for (int v = 0; v < vertices; ++v) {
        side_of_edge *const begin = sides.data() + first.data()[v], *const end = sides.data() + first.data()[v + 1];
        std::sort(begin, end, [](side_of_edge const & a, side_of_edge const & b) {
            return std::tie(a.high, a.opposite, a.side) < std::tie(b.high, b.opposite, b.side);
        });
        for (side_of_edge const * edge = begin; edge != end;) {
            auto const * const next = std::find_if(edge, static_cast<side_of_edge const *>(end),
                                                   [&](side_of_edge const & s) { return s.high != edge->high; });
            join_edge(edge, next);
            edge = next;
        }
    }
}

void mesh_links::join_edge(side_of_edge const * begin, side_of_edge const * end) {
    for (auto const * s = begin; s != end; ++s) {
        around_.data()[s->side] = s + 1 == end ? begin->side : s[1].side;
        // Each of its three edges tells of a repeated triangle; the first one is enough.
        if (s != begin && s->opposite == s[-1].opposite && s->side % 3 == 0) repeated_.push_back(s->side / 3);
    }
}

}  // namespace internal
}  // namespace datumfit

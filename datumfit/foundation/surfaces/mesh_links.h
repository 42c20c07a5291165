#pragma once

#include <array>
#include <vector>

namespace datumfit {
namespace internal {

/// The vertices of a triangle; those of a triangle that is left out are negative.
using triangle_corners = std::array<int, 3>;

/// Triangle t has the sides 3 t, 3 t + 1 and 3 t + 2; side 3 t + k runs from its corner k to the next one.
inline int next_side(int side) {
    return side % 3 == 2 ? side - 2 : side + 1;
}
inline int previous_side(int side) {
    return side % 3 == 0 ? side + 2 : side - 1;
}

/// Which triangles meet at an edge and at a vertex, any number of them.
class mesh_links {
public:
    mesh_links() = default;
    mesh_links(std::vector<triangle_corners> const & triangles, int vertices);

    /// The next side that lies on the same edge. They form a ring: of one at a boundary, of two within a surface.
    int around(int side) const { return around_.data()[side]; }

    /// The sides that begin at a vertex, one for each of its triangles, ascending.
    int const * begin(int vertex) const { return starting_.data() + first_.data()[vertex]; }
    int const * end(int vertex) const { return starting_.data() + first_.data()[vertex + 1]; }

    /// The triangles that have the corners of an earlier one, in whatever order.
    std::vector<int> const & repeated() const { return repeated_; }

private:
    struct side_of_edge {
        int high, opposite, side;
    };

    void list_sides(std::vector<triangle_corners> const & triangles, int vertices);
    void join_sides(std::vector<triangle_corners> const & triangles, int vertices);
    void join_edge(side_of_edge const * begin, side_of_edge const * end);

    std::vector<int> around_, first_, starting_, repeated_;
};

}  // namespace internal
}  // namespace datumfit

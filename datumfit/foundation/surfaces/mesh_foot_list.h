#pragma once

#include <datumfit/foundation/surfaces/box_tree_search.h>
#include <datumfit/foundation/surfaces/mesh_feet.h>

#include <array>

namespace datumfit {
namespace internal {

/// Appends the feet of a point on the triangles that it visits to a list.
class mesh_foot_list : public hit_visitor {
public:
    mesh_foot_list(triangle_mesh const & mesh, double crease_cosine, giPoint3 const & point,
                   triangle_hit const & nearest, sknSurfPointList & feet)
        : mesh_(mesh), crease_cosine_(crease_cosine), point_(point), nearest_(nearest), feet_(feet),
          first_(feet.size()) {}

    void visit(triangle_hit const & hit) override;

    /// Brings the new feet into order, each once. That of the nearest triangle is one of them, whatever the rounding.
    void finish();

private:
    void append(mesh_feature const & feature);
    bool is_known_vertex(mesh_feature const & feature);
    bool is_least(triangle_hit const & hit) const;

    triangle_mesh const & mesh_;
    double crease_cosine_;
    giPoint3 const & point_;
    triangle_hit nearest_;
    sknSurfPointList & feet_;
    int first_;
    bool holds_nearest_ = false;
    std::array<int, 8> known_{{-1, -1, -1, -1, -1, -1, -1, -1}};
    std::size_t oldest_ = 0;
};

}  // namespace internal
}  // namespace datumfit

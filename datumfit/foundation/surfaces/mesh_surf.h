#pragma once

#include <datumfit/foundation/surfaces/surf.h>
#include <datumfit/foundation/surfaces/triangle.h>

#include <memory>

namespace datumfit {
namespace internal {
struct search_reach;
struct triangle_mesh;
}  // namespace internal
}  // namespace datumfit

enum sknMeshStatus {
    sknMeshValid = 0,
    sknMeshBadVertex = 1,    ///< a vertex is invalid, not finite, or has a coordinate beyond 2^100
    sknMeshBadTriangle = 2,  ///< a corner is no number of a vertex, or there are more than 700 million triangles
    sknMeshNoTriangle = 3,   ///< there is no triangle, or none with an area
    sknMeshBadXform = 4,     ///< the mesh was transformed by an invalid or a singular transform
    sknMeshNoMemory = 5
};

/// A surface of triangles.
///
/// Triangles meet where they share a vertex, be it by its number or by equal coordinates, as those of a soup do; any
/// number may meet at an edge. Triangles without area, and all but the first of those with the same corners, are left
/// out: they have no feet, and their sides join nothing. Without area are those that are less high than 2^-50 of their
/// longest side.
///
/// The feet of a point are all places of the mesh that are nearest to the point within their neighbourhood: on faces,
/// edges and vertices, those of the boundary included. They are listed from the nearest on, as far as the reach goes,
/// each once. Of those, feet on sharp edges and on the boundary tell of a neighbouring triangle's normal only, so that
/// one can see that the point is not over the surface.
///
/// All work is done when the mesh is made; projection keeps no scratch values, and needs memory for the list only.
class sknMeshSurf : public sknSurf {
public:
    /// Copies all that it is given. With any status but sknMeshValid the mesh has no feet and no normals.
    sknMeshSurf(giPoint3coDynArr const & vertices, sknTrianglecoDynArr const & triangles);

    ~sknMeshSurf() override;

    sknMeshStatus status() const { return status_; }

    /// Feet count that are farther from the point than the nearest one by no more than this length, in the unit of the
    /// coordinates, whatever the mesh is transformed by later. Until this is called, and for a length that is negative
    /// or NaN, they count when they are up to twice as far as the nearest, where the difference is held to the range
    /// from 1/64 to 1/8 of the diagonal of the mesh's box along the axes. So a probe centre finds both sides of a sheet
    /// that is no thicker than the centre stands off, also when the part is somewhat out of place, but not the far side
    /// of a solid.
    void set_reach(double length);

    /// Edges of two triangles whose normals differ by no more than this angle, at first 30 degrees, are smooth: they
    /// are there because facets stand for a curved surface. At a foot on such an edge, or on a vertex with such edges
    /// only, the normal is the direction from which the foot is seen. Takes the mean normals anew if they are in use:
    /// 1, or 0 without memory for them, and then all is as it was.
    int set_crease_angle(giAngle const & angle);

    /// Normals are those of the flat triangles from now on, as they are at first.
    void use_face_normals();

    /// Normals are interpolated from now on, between the means of the normals around the vertices, which end at edges
    /// that are not smooth. 1, or 0 for a mesh that is not valid, or without memory: normals stay what they are then.
    ///
    /// Where a facet is turned against the surface that it stands for, a foot's normal is then not the direction of the
    /// point, and a projector which compares the two may pass the foot over: for meshes whose facets are turned by less
    /// than the 0.01 radians that it grants.
    int use_vertex_normals();

    /// The same with given normals, one for each vertex, as numbered when the mesh was made. An invalid one leaves
    /// the corners there with the normals of their triangles. Also 0 when their number differs.
    int use_vertex_normals(giUnitVec3coDynArr const & normals);

    /// status is 1 also for a point that is invalid, not finite, or has a coordinate beyond 2^100. u of a foot is the
    /// number of a triangle that it lies on, up to 1 more, and v is between -1 and 1.
    void project_point(giPoint3 const & point, sknSurfPointList & feet, int & status) const override;

    /// The normal on the side from which corners go round counterclockwise; of a foot that project_point() gave since
    /// the last transform. An invalid one if u is no number of a triangle with an area.
    giUnitVec3 normal_at(sknSurfPoint const & at, double length_tolerance,
                         giAngle const & angle_tolerance) const override;

    /// The copy shares what was made of the triangles, until one of the two is transformed.
    void clone(sknSurfPtr & copy) const override;

protected:
    /// Makes the mesh anew from the moved vertices. Under a reflection the triangles go round the other way, so that
    /// normals stay on the side of the part that they are on. Given normals stay at right angles to what they were at
    /// right angles to.
    void apply(giXform3 const & x) override;

private:
    struct vertex_normals;

    void refuse(sknMeshStatus status);
    datumfit::internal::search_reach reach() const;

    std::shared_ptr<datumfit::internal::triangle_mesh const> mesh_;
    std::shared_ptr<vertex_normals const> vertex_normals_;
    sknMeshStatus status_ = sknMeshNoTriangle;
    double reach_ = -1.0;
    double crease_cosine_;
};

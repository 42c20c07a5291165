#include <datumfit/foundation/containers/memory.h>
#include <datumfit/foundation/surfaces/box_tree_search.h>
#include <datumfit/foundation/surfaces/mesh_feet.h>
#include <datumfit/foundation/surfaces/mesh_foot_list.h>
#include <datumfit/foundation/surfaces/mesh_normals.h>
#include <datumfit/foundation/surfaces/mesh_surf.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

using namespace datumfit::internal;

struct sknMeshSurf::vertex_normals {
    corner_normals at_corners;
    bool given;
};

namespace {

constexpr double default_crease_degrees = 30.0;

// Edges of facets that were to differ by just the crease angle are smooth, for all rounding.
constexpr double crease_rounding = 1e-12;

// The sides of all triangles are numbered by an int.
constexpr int most_triangles = 700000000;

double crease_cosine_of(giAngle const & angle) {
    return std::cos(std::abs(angle.angle(giAngleRadians))) - crease_rounding;
}

sknMeshStatus status_of_input(std::vector<giPoint3> const & vertices, std::vector<sknTriangle> const & triangles) {
    for (giPoint3 const & p : vertices) {
        if (!is_within_range(p)) return sknMeshBadVertex;
    }
    if (triangles.size() > most_triangles) return sknMeshBadTriangle;
    int const n = static_cast<int>(vertices.size());
    for (sknTriangle const & t : triangles) {
        for (int const v : {t.a, t.b, t.c}) {
            if (v < 0 || v >= n) return sknMeshBadTriangle;
        }
    }
    return sknMeshValid;
}

using shared_mesh = std::shared_ptr<triangle_mesh const>;

// The mesh, or none with the reason.
shared_mesh make_mesh(std::vector<giPoint3> vertices, std::vector<sknTriangle> triangles, sknMeshStatus & status) {
    status = status_of_input(vertices, triangles);
    if (status != sknMeshValid) return nullptr;
    auto mesh = std::make_shared<triangle_mesh>();
    if (make_triangle_mesh(std::move(vertices), std::move(triangles), *mesh)) return mesh;
    status = sknMeshNoTriangle;
    return nullptr;
}

template <class T>
std::vector<T> elements(coDynArr<T> const & array) {
    return std::vector<T>(array.data(), array.data() + array.size());
}

// A normal n of the surface becomes that of the moved one: n is at right angles to what it was before.
giUnitVec3 moved_normal(giUnitVec3 const & n, giMatrix4 const & inverse) {
    if (n.invalid()) return n;
    auto const column = [&](int c) { return giVector3(inverse(0, c), inverse(1, c), inverse(2, c)); };
    return giUnitVec3(n.dot(column(0)), n.dot(column(1)), n.dot(column(2)));
}

bool is_reflection(giXform3 const & x) {
    auto const row = [&](int r) { return giUnitVec3(x.matrix()(r, 0), x.matrix()(r, 1), x.matrix()(r, 2)); };
    return row(0).dot(row(1).cross(row(2))) < 0.0;
}

// The corners keep their places, but for a reflection, which exchanges the last two of each triangle.
corner_normals moved_normals(corner_normals const & normals, giXform3 const & inverse, bool reflected) {
    corner_normals moved(normals.size());
    for (std::size_t i = 0; i < normals.size(); ++i) {
        std::size_t const corner = i % 3, to = !reflected || corner == 0 ? i : i + 3 - 2 * corner;
        moved[to] = moved_normal(normals[i], inverse.matrix());
    }
    return moved;
}

}  // namespace

sknMeshSurf::sknMeshSurf(giPoint3coDynArr const & vertices, sknTrianglecoDynArr const & triangles)
    : crease_cosine_(crease_cosine_of(giAngle(giAngleDegrees, default_crease_degrees))) {
    bool const had_memory = survives([&] { mesh_ = make_mesh(elements(vertices), elements(triangles), status_); });
    if (!had_memory) refuse(sknMeshNoMemory);
}

sknMeshSurf::~sknMeshSurf() = default;

void sknMeshSurf::refuse(sknMeshStatus status) {
    mesh_.reset();
    vertex_normals_.reset();
    status_ = status;
}

void sknMeshSurf::set_reach(double length) {
    reach_ = length >= 0.0 ? length : -1.0;
}

search_reach sknMeshSurf::reach() const {
    double const diagonal = mesh_->tree.diagonal;
    return reach_ >= 0.0 ? search_reach{reach_, reach_} : search_reach{diagonal / 64.0, diagonal / 8.0};
}

int sknMeshSurf::set_crease_angle(giAngle const & angle) {
    double const before = crease_cosine_;
    crease_cosine_ = crease_cosine_of(angle);
    if (!vertex_normals_ || vertex_normals_->given || use_vertex_normals()) return 1;
    crease_cosine_ = before;
    return 0;
}

void sknMeshSurf::use_face_normals() {
    vertex_normals_.reset();
}

int sknMeshSurf::use_vertex_normals() {
    return mesh_ && survives([&] {
               vertex_normals_ =
                   std::make_shared<vertex_normals const>(vertex_normals{mean_normals(*mesh_, crease_cosine_), false});
           });
}

int sknMeshSurf::use_vertex_normals(giUnitVec3coDynArr const & normals) {
    if (!mesh_ || normals.size() != static_cast<int>(mesh_->vertices.size())) return 0;
    return survives([&] {
        corner_normals at_corners;
        at_corners.reserve(3 * mesh_->given.size());
        for (std::size_t t = 0; t < mesh_->given.size(); ++t) {
            sknTriangle const & corners = mesh_->given[t];
            for (int const v : {corners.a, corners.b, corners.c}) {
                giUnitVec3 const & n = normals.read(v);
                at_corners.push_back(n.invalid() ? mesh_->normals[t] : n);
            }
        }
        vertex_normals_ = std::make_shared<vertex_normals const>(vertex_normals{std::move(at_corners), true});
    });
}

void sknMeshSurf::project_point(giPoint3 const & point, sknSurfPointList & feet, int & status) const {
    status = 1;
    if (!mesh_ || !is_within_range(point)) return;
    search_result found;
    search(mesh_->tree, point, reach(), found);
    int const before = feet.size();
    mesh_foot_list list(*mesh_, crease_cosine_, point, found.nearest, feet);
    if (found.complete) {
        std::for_each_n(found.hits.begin(), found.count, [&](triangle_hit const & hit) { list.visit(hit); });
    } else {
        visit_within(mesh_->tree, point, found.limit, list);
    }
    list.finish();
    status = feet.size() > before ? 0 : 1;
}

giUnitVec3 sknMeshSurf::normal_at(sknSurfPoint const & at, double, giAngle const &) const {
    int const triangle = mesh_ ? triangle_of(*mesh_, at) : -1;
    if (triangle < 0) return giUnitVec3();
    return vertex_normals_ ? interpolated_normal(*mesh_, vertex_normals_->at_corners, triangle, at.point)
                           : normal_at_foot(*mesh_, at);
}

void sknMeshSurf::clone(sknSurfPtr & copy) const {
    copy = sknSurfPtr(new (std::nothrow) sknMeshSurf(*this));
}

void sknMeshSurf::apply(giXform3 const & x) {
    giXform3 const inverse(giXformInverse, x);
    if (!mesh_ || x.identity()) return;
    if (inverse.invalid()) return refuse(sknMeshBadXform);
    bool const had_memory = survives([&] {
        std::vector<giPoint3> vertices = mesh_->vertices;
        std::vector<sknTriangle> triangles = mesh_->given;
        bool const reflected = is_reflection(x);
        for (giPoint3 & p : vertices) p = x * p;
        for (sknTriangle & t : triangles) {
            if (reflected) std::swap(t.b, t.c);
        }
        mesh_ = make_mesh(std::move(vertices), std::move(triangles), status_);
        if (!mesh_) return refuse(status_);
        if (!vertex_normals_) return;
        vertex_normals_ = std::make_shared<vertex_normals const>(
            vertex_normals_->given
                ? vertex_normals{moved_normals(vertex_normals_->at_corners, inverse, reflected), true}
                : vertex_normals{mean_normals(*mesh_, crease_cosine_), false});
    });
    if (!had_memory) refuse(sknMeshNoMemory);
}

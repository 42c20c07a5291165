#include <datumfit/foundation/surfaces/box_division.h>
#include <datumfit/foundation/surfaces/box_tree.h>

#include <cmath>

namespace datumfit {
namespace internal {

namespace {

struct extent {
    range3 box, directions;

    void merge(extent const & other) {
        box.merge(other.box);
        directions.merge(other.directions);
    }
};

// Single precision that is less, or greater, by more than the rounding to it.
float rounded_down(double x) {
    return static_cast<float>(x - 0x1p-23 * std::abs(x) - 0x1p-126);
}
float rounded_up(double x) {
    return -rounded_down(-x);
}

void set_missing(box_node & node, int l) {
    for (int k = 0; k < 3; ++k) {
        node.low[k][l] = rough_box::infinity;
        node.high[k][l] = -rough_box::infinity;
        node.axis[k][l] = 0.0f;
    }
    node.sine[l] = node.radius[l] = 0.0f;
    node.child[l] = 0;
}

// Of the box as it is rounded, so that the ball holds all of it.
float radius_of(box_node const & node, int l) {
    range3 box;
    box.merge(node.low[0][l], node.low[1][l], node.low[2][l]);
    box.merge(node.high[0][l], node.high[1][l], node.high[2][l]);
    return rounded_up(box.half_diagonal());
}

// The directions lie in the ball about their box's middle. Where that ball leaves out the origin, the origin sees it
// within a cone.
void set_cone(box_node & node, int l, range3 const & directions) {
    // Covers the rounding of the cone and of its test, also from afar.
    constexpr double widening = 1e-6;
    giVector3 const middle(directions.middle(0), directions.middle(1), directions.middle(2));
    double const sine = directions.half_diagonal() / middle.length() + widening;
    bool const bounded = sine < 1.0;
    giVector3 const axis = bounded ? giUnitVec3(middle) : giUnitVec3(giAxisX);
    for (int k = 0; k < 3; ++k) node.axis[k][l] = static_cast<float>(axis.coordinate(static_cast<gi_Axis>(k)));
    node.sine[l] = bounded ? static_cast<float>(sine) : 1.0f;
}

// The least cosine of the normal with a direction that has one in the box.
double least_cosine(giVector3 const & n, range3 const & directions) {
    double const at[] = {n.x(), n.y(), n.z()};
    double least = 0.0;
    for (int k = 0; k < 3; ++k) least += std::min(at[k] * directions.low[k], at[k] * directions.high[k]);
    return least;
}

// The square of a cosine, less what covers the rounding of its test.
float square_to_test(double cosine) {
    constexpr double share = 1.0 - 1e-6;
    return cosine > 0.0 ? static_cast<float>(share * cosine * cosine) : 0.0f;
}

class tree_maker {
public:
    tree_maker(tree_triangles const & triangles, box_tree & tree) : triangles_(triangles), tree_(tree) {}

    extent add_node(triangle_span const & span, int depth) {
        triangle_span parts[4];
        int const n = divide_in_four(span, depth, parts), number = static_cast<int>(tree_.nodes.size());
        tree_.nodes.emplace_back();
        extent all;
        for (int l = 0; l < 4; ++l) {
            if (l < n) {
                all.merge(add_part(parts[l], depth, number, l));
            } else {
                set_missing(tree_.nodes.data()[number], l);
            }
        }
        return all;
    }

private:
    extent add_part(triangle_span const & span, int depth, int number, int l) {
        bool const is_group = span.size() <= group_size;
        int const child = is_group ? ~static_cast<int>(tree_.groups.size()) : static_cast<int>(tree_.nodes.size());
        extent const part = is_group ? add_group(span) : add_node(span, depth + 1);
        set_box(tree_.nodes.data()[number], l, part.box);
        set_cone(tree_.nodes.data()[number], l, part.directions);
        tree_.nodes.data()[number].child[l] = child;
        return part;
    }

    void set_box(box_node & node, int l, range3 const & box) const {
        for (int k = 0; k < 3; ++k) {
            double const origin = tree_.origin.coordinate(static_cast<gi_Axis>(k));
            node.low[k][l] = rounded_down(box.low[k] - origin);
            node.high[k][l] = rounded_up(box.high[k] - origin);
        }
        node.radius[l] = radius_of(node, l);
    }

    extent add_group(triangle_span const & span) {
        tree_.groups.emplace_back();
        triangle_group & group = tree_.groups.back();
        extent all;
        for (int l = 0; l < group_size; ++l) {
            bool const missing = l >= span.size();
            int const number = span.begin[missing ? 0 : l].number;
            all.merge(set_triangle(group, l, number));
            group.number[l] = missing ? -1 : number;
        }
        return all;
    }

    extent set_triangle(triangle_group & group, int l, int number) const {
        triangle_corners const & corners = triangles_.corners.data()[number];
        giPoint3 const & a = triangles_.vertices.data()[corners[0]];
        giVector3 const & n = triangles_.normals.data()[number];
        extent e;
        for (int const v : corners) {
            giPoint3 const & p = triangles_.vertices.data()[v];
            e.box.merge(p.x(), p.y(), p.z());
            e.directions.merge(triangles_.directions.data()[v]);
        }
        set(group.corner, l, a.release());
        set(group.first_side, l, triangles_.vertices.data()[corners[1]] - a);
        set(group.last_side, l, triangles_.vertices.data()[corners[2]] - a);
        set(group.normal, l, n);
        for (int k = 0; k < 3; ++k) {
            group.corner_cosine[k][l] =
                square_to_test(least_cosine(n, triangles_.directions.data()[corners.data()[k]]));
            group.side_cosine[k][l] = square_to_test(triangles_.edge_cosines.data()[3 * number + k]);
        }
        return e;
    }

    static void set(double (&of)[3][4], int l, giVector3 const & v) {
        of[0][l] = v.x();
        of[1][l] = v.y();
        of[2][l] = v.z();
    }

    tree_triangles const & triangles_;
    box_tree & tree_;
};

range3 range_of(tree_triangles const & triangles) {
    range3 range;
    for (triangle_corners const & corners : triangles.corners) {
        for (int const v : corners) {
            if (v < 0) continue;
            giPoint3 const & p = triangles.vertices.data()[v];
            range.merge(p.x(), p.y(), p.z());
        }
    }
    return range;
}

std::vector<boxed_triangle> boxed(tree_triangles const & triangles, giPoint3 const & origin) {
    std::vector<boxed_triangle> result;
    result.reserve(triangles.corners.size());
    for (std::size_t t = 0; t < triangles.corners.size(); ++t) {
        if (triangles.corners[t][0] < 0) continue;
        boxed_triangle b;
        for (int const v : triangles.corners[t]) {
            giVector3 const d = triangles.vertices.data()[v] - origin;
            b.box.merge(vector_of_4_floats{static_cast<float>(d.x()), static_cast<float>(d.y()),
                                           static_cast<float>(d.z()), 0.0f});
        }
        b.number = static_cast<int>(t);
        result.push_back(b);
    }
    return result;
}

}  // namespace

box_tree make_box_tree(tree_triangles const & triangles) {
    box_tree tree;
    range3 const range = range_of(triangles);
    tree.origin = giPoint3(range.middle(0), range.middle(1), range.middle(2));
    tree.diagonal = 2.0 * range.half_diagonal();
    std::vector<boxed_triangle> items = boxed(triangles, tree.origin);
    if (items.empty()) return box_tree();
    tree.nodes.reserve(items.size() / 7 + 1);
    tree.groups.reserve(items.size() / 3 + 1);
    tree_maker(triangles, tree).add_node({items.data(), items.data() + items.size()}, 0);
    return tree;
}

}  // namespace internal
}  // namespace datumfit

#include <datumfit/foundation/maths/lanes.h>
#include <datumfit/foundation/surfaces/box_tree_search.h>

#include <limits>

#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // no vector crosses a call: all that hold one are inlined into the search
#endif

namespace datumfit {
namespace internal {

namespace {

template <class V>
DATUMFIT_INLINE lanes<V> load(double const * x) {
    lanes<V> r;
    __builtin_memcpy(r.part, x, sizeof r.part);
    return r;
}

template <class V>
DATUMFIT_INLINE lanes<V> load(float const * x) {
    typedef float floats __attribute__((vector_size(sizeof(V) / 2)));
    lanes<V> r;
    for (int k = 0; k < lanes<V>::parts; ++k) {
        floats f;
        __builtin_memcpy(&f, x + k * lanes<V>::width, sizeof f);
        r.part[k] = __builtin_convertvector(f, V);
    }
    return r;
}

template <class V>
DATUMFIT_INLINE void store(lanes<V> const & x, double * to) {
    __builtin_memcpy(to, x.part, sizeof x.part);
}

template <class V>
DATUMFIT_INLINE lanes<V> greatest(lanes<V> const & a, lanes<V> const & b) {
    lanes<V> r;
    for (int k = 0; k < lanes<V>::parts; ++k) r.part[k] = a.part[k] > b.part[k] ? a.part[k] : b.part[k];
    return r;
}

template <class V>
DATUMFIT_INLINE lanes<V> least(lanes<V> const & a, lanes<V> const & b) {
    lanes<V> r;
    for (int k = 0; k < lanes<V>::parts; ++k) r.part[k] = a.part[k] < b.part[k] ? a.part[k] : b.part[k];
    return r;
}

// a where x is above 0, else b.
template <class V>
DATUMFIT_INLINE lanes<V> where_positive(lanes<V> const & x, lanes<V> const & a, lanes<V> const & b) {
    lanes<V> r;
    for (int k = 0; k < lanes<V>::parts; ++k) r.part[k] = x.part[k] > V{} ? a.part[k] : b.part[k];
    return r;
}

template <class V>
struct vector3_lanes {
    lanes<V> x, y, z;

    DATUMFIT_INLINE vector3_lanes(lanes<V> const & x_, lanes<V> const & y_, lanes<V> const & z_)
        : x(x_), y(y_), z(z_) {}
    template <class Real>
    DATUMFIT_INLINE explicit vector3_lanes(Real const (&v)[3][4])
        : x(load<V>(v[0])), y(load<V>(v[1])), z(load<V>(v[2])) {}
    DATUMFIT_INLINE explicit vector3_lanes(giVector3 const & v) : x(v.x()), y(v.y()), z(v.z()) {}

    DATUMFIT_INLINE lanes<V> dot(vector3_lanes const & b) const { return x * b.x + y * b.y + z * b.z; }
    DATUMFIT_INLINE vector3_lanes cross(vector3_lanes const & b) const {
        return {y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x};
    }
    DATUMFIT_INLINE vector3_lanes operator-(vector3_lanes const & b) const { return {x - b.x, y - b.y, z - b.z}; }
    DATUMFIT_INLINE vector3_lanes less(lanes<V> const & t, vector3_lanes const & b) const {
        return {x - t * b.x, y - t * b.y, z - t * b.z};
    }
};

// The square of the distance of a point from four boxes, infinite for those that are missing.
template <class V>
DATUMFIT_INLINE lanes<V> squares_from_boxes(vector3_lanes<V> const & low, vector3_lanes<V> const & high,
                                            vector3_lanes<V> const & p) {
    vector3_lanes<V> const below = low - p, above = p - high;
    lanes<V> const zero(0.0);
    vector3_lanes<V> const gap(greatest(greatest(below.x, above.x), zero), greatest(greatest(below.y, above.y), zero),
                               greatest(greatest(below.z, above.z), zero));
    return gap.dot(gap);
}

// Not negative where a line of a box's cones can join the point and the box: the point is no farther from the double
// cone at the box's middle than the ball's radius.
template <class V>
DATUMFIT_INLINE lanes<V> sight_of_boxes(box_node const & node, vector3_lanes<V> const & low,
                                        vector3_lanes<V> const & high, vector3_lanes<V> const & p) {
    lanes<V> const half(0.5), sine = load<V>(node.sine);
    vector3_lanes<V> const axis(node.axis),
        d(p.x - half * (low.x + high.x), p.y - half * (low.y + high.y), p.z - half * (low.z + high.z));
    vector3_lanes<V> const across = axis.cross(d);
    lanes<V> const along = axis.dot(d);
    lanes<V> const reach = load<V>(node.radius) + greatest(along, -along) * sine;
    return reach * reach - across.dot(across) * (lanes<V>(1.0) - sine * sine);
}

// Of the nearest place, the squared distance, and the squared cosine that its line of sight has to have.
template <class V>
struct nearest_place {
    lanes<V> square, cosine;

    DATUMFIT_INLINE nearest_place or_nearer(nearest_place const & b) const {
        lanes<V> const gain = square - b.square;
        return {where_positive(gain, b.square, square), where_positive(gain, b.cosine, cosine)};
    }
};

// The place of a side that is nearest to the point at d from the side's beginning; the cosines are those of the
// beginning, of the side and of its end.
template <class V>
DATUMFIT_INLINE nearest_place<V> nearest_on_side(vector3_lanes<V> const & d, vector3_lanes<V> const & side,
                                                 lanes<V> const & first, lanes<V> const & middle,
                                                 lanes<V> const & last) {
    lanes<V> const zero(0.0), one(1.0), t = d.dot(side) / side.dot(side);
    vector3_lanes<V> const across = d.less(greatest(least(t, one), zero), side);
    return {across.dot(across), where_positive(t, where_positive(one - t, middle, last), first)};
}

// What four triangles are to a point.
template <class V>
struct group_distances {
    lanes<V> square;  // of the distance
    lanes<V> sight;   // not negative where the triangle may hold a place that is nearest in its neighbourhood

    // The nearest place is on the plane where the point is inside of all sides, else on one of these. The height of a
    // point on the surface is all rounding, which a share of the distance from the corner covers.
    DATUMFIT_INLINE group_distances(triangle_group const & group, giPoint3 const & point) {
        vector3_lanes<V> const from_a = vector3_lanes<V>(point.release()) - vector3_lanes<V>(group.corner),
                               ab(group.first_side), ac(group.last_side), n(group.normal), bc = ac - ab,
                               from_b = from_a - ab;
        lanes<V> const a = load<V>(group.corner_cosine[0]), b = load<V>(group.corner_cosine[1]),
                       c = load<V>(group.corner_cosine[2]);
        nearest_place<V> const place = nearest_on_side(from_a, ab, a, load<V>(group.side_cosine[0]), b)
                                           .or_nearer(nearest_on_side(from_b, bc, b, load<V>(group.side_cosine[1]), c))
                                           .or_nearer(nearest_on_side(from_a, ac, a, load<V>(group.side_cosine[2]), c));
        lanes<V> const inside = least(least(n.dot(ab.cross(from_a)), n.dot(bc.cross(from_b))), n.dot(from_a.cross(ac)));
        lanes<V> const height = n.dot(from_a), height_square = height * height;
        square = where_positive(inside, height_square, place.square);
        sight = height_square + lanes<V>(0x1p-72) * from_a.dot(from_a) - square * place.cosine;
    }
};

struct open_box {
    double square;
    int child;
};

// The boxes still to be looked into, the nearest on top. A node leaves three more behind than it takes.
struct open_boxes {
    open_box stack[3 * greatest_depth + 4];
    int size = 1;

    DATUMFIT_INLINE open_boxes() { stack[0] = {0.0, 0}; }
    DATUMFIT_INLINE open_box pop() { return stack[--size]; }

    // Puts the boxes of a node on top that are near enough and in sight; p is relative to the tree's origin.
    template <class V>
    DATUMFIT_INLINE void push(box_node const & node, vector3_lanes<V> const & p, double limit) {
        vector3_lanes<V> const low(node.low), high(node.high);
        double squares[4], sight[4];
        store(squares_from_boxes(low, high, p), squares);
        store(sight_of_boxes(node, low, high, p), sight);
        int const base = size;
        for (int l = 0; l < 4; ++l) {
            if (!(squares[l] <= limit && sight[l] >= 0.0)) continue;
            int at = size++;
            for (; at > base && stack[at - 1].square < squares[l]; --at) stack[at] = stack[at - 1];
            stack[at] = {squares[l], node.child[l]};
        }
    }
};

// Gathers hits while the reach shrinks with the distance of the nearest.
class gatherer {
public:
    gatherer(search_reach const & reach, search_result & result) : reach_(reach), result_(result) {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        result.nearest = {infinity, -1};
        result.limit = infinity;
        result.count = 0;
        result.complete = true;
    }

    // Once hits got lost only the nearest is looked for.
    double limit() const { return result_.complete ? result_.limit : result_.nearest.square; }

    void add(triangle_hit const & hit) {
        if (hit.square < result_.nearest.square) {
            result_.nearest = hit;
            result_.limit = reach_.squared(hit.square);
        }
        if (hit.square > result_.limit || !result_.complete) return;
        if (result_.count == search_result::most_hits) drop_distant();
        result_.complete = result_.count < search_result::most_hits;
        if (result_.complete) result_.hits.data()[result_.count++] = hit;
    }

    void drop_distant() {
        auto const distant = [&](triangle_hit const & hit) { return hit.square > result_.limit; };
        auto const begin = result_.hits.begin();
        result_.count = static_cast<int>(std::remove_if(begin, begin + result_.count, distant) - begin);
    }

private:
    search_reach reach_;
    search_result & result_;
};

// Passes the triangles of all boxes within take.limit() and in sight to take.add().
template <class V, class Take>
DATUMFIT_INLINE void walk(box_tree const & tree, giPoint3 const & point, Take & take) {
    vector3_lanes<V> const p(point - tree.origin);
    open_boxes open;
    while (open.size > 0) {
        open_box const top = open.pop();
        if (top.square > take.limit()) continue;
        if (top.child >= 0) {
            open.push(tree.nodes.data()[top.child], p, take.limit());
            continue;
        }
        triangle_group const & group = tree.groups.data()[~top.child];
        group_distances<V> const distances(group, point);
        double squares[4], sight[4];
        store(distances.square, squares);
        store(distances.sight, sight);
        for (int l = 0; l < 4; ++l) {
            if (squares[l] <= take.limit() && sight[l] >= 0.0 && group.number[l] >= 0) {
                take.add({squares[l], group.number[l]});
            }
        }
    }
}

struct passing_on {
    double greatest;
    hit_visitor & visitor;

    double limit() const { return greatest; }
    void add(triangle_hit const & hit) { visitor.visit(hit); }
};

template <class Take>
DATUMFIT_WIDE void walk_wide(box_tree const & tree, giPoint3 const & point, Take & take) {
    walk<vector_of_4>(tree, point, take);
}

template <class Take>
void walk_all(box_tree const & tree, giPoint3 const & point, Take & take) {
    if (has_wide_lanes()) {
        walk_wide(tree, point, take);
    } else {
        walk<vector_of_2>(tree, point, take);
    }
}

}  // namespace

void search(box_tree const & tree, giPoint3 const & point, search_reach const & reach, search_result & result) {
    gatherer gather(reach, result);
    walk_all(tree, point, gather);
    gather.drop_distant();
}

void visit_within(box_tree const & tree, giPoint3 const & point, double limit, hit_visitor & visitor) {
    passing_on pass{limit, visitor};
    walk_all(tree, point, pass);
}

}  // namespace internal
}  // namespace datumfit

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

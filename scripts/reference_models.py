"""Distances of points from primitives with first and second derivatives, and their least-squares fit, with mpmath.

A model holds the primitive in its present place and describes it by small parameters about there: a displacement, a
tilt, a growth. terms(p, r) gives the parts of the distance of point p with probe radius r, whose squares add up to the
squared distance, each as (value, gradient, Hessian) by these parameters; move(step) carries the primitive along.
blocks names the parameters that make up its position, angle and size. A primitive to come needs these three.
"""

from mpmath import cos, lu_solve, matrix, mp, mpf, sin, sqrt

mp.dps = 70  # 50 digits stay after squares of coordinates 1e9 times the form errors


def dot(a, b):
    return sum((x * y for x, y in zip(a, b)), mpf(0))


def sub(a, b):
    return [x - y for x, y in zip(a, b)]


def along(p, *steps):
    """p moved by t * v for each (t, v)."""
    for t, v in steps:
        p = [x + t * y for x, y in zip(p, v)]
    return p


def unit(v):
    length = sqrt(dot(v, v))
    return [x / length for x in v]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def across(w):
    """Unit vectors that complete w to a right-handed frame (u, v, w); in the plane the one vector beside w."""
    if len(w) == 2:
        return [[-w[1], w[0]]]
    smallest = min(range(3), key=lambda k: abs(w[k]))
    u = unit(cross([mpf(k == smallest) for k in range(3)], w))
    return [u, cross(w, u)]


def centroid(points):
    return [sum(column, mpf(0)) / len(points) for column in zip(*points)]


def zeros(n):
    return [[mpf(0)] * n for _ in range(n)]


class Flat:
    """A plane in space or a line in the plane, by a point and its normal; the probe centres lie on the normal's side.

    Parameters: the offset along the normal, then the tilt towards each vector across it.
    """

    def __init__(self, point, normal, _=None):
        self.point, self.direction, self.size = point, unit(normal), None
        self.blocks = {"pos": [0], "angle": list(range(1, len(point)))}

    def terms(self, p, r):
        # The tilted normal is n + a u + b v - (a^2 + b^2) / 2 n to second order.
        q = sub(p, self.point)
        height = dot(q, self.direction)
        gradient = [mpf(-1)] + [dot(q, u) for u in across(self.direction)]
        hessian = zeros(len(gradient))
        for k in range(1, len(gradient)):
            hessian[k][k] = -height
        return [(height - r, gradient, hessian)]

    def move(self, step):
        self.direction = unit(along(self.direction, *zip(step[1:], across(self.direction))))
        self.point = along(self.point, (step[0], self.direction))

    def to_foot_of(self, p):
        self.point = along(p, (dot(sub(self.point, p), self.direction), self.direction))


class Line3:
    """A line in space, by a point and its direction. Parameters: two displacements across it, two tilts."""

    def __init__(self, point, direction, _=None):
        self.point, self.direction, self.size = point, unit(direction), None
        self.blocks = {"pos": [0, 1], "angle": [2, 3]}

    def terms(self, p, r):
        # A turn by k = a v - b u takes w to w + a u + b v and u to u - a w - (a^2 u + a b v) / 2, likewise v.
        q = sub(p, self.point)
        u, v = across(self.direction)
        x, y, z = dot(q, u), dot(q, v), dot(q, self.direction)
        hx, hy = zeros(4), zeros(4)
        hx[2][2], hy[3][3] = -x, -y
        hx[2][3] = hx[3][2] = -y / 2
        hy[2][3] = hy[3][2] = -x / 2
        return [(x, [mpf(-1), mpf(0), -z, mpf(0)], hx), (y, [mpf(0), mpf(-1), mpf(0), -z], hy)]

    def move(self, step):
        u, v = across(self.direction)
        self.point = along(self.point, (step[0], u), (step[1], v))
        self.direction = unit(along(self.direction, (step[2], u), (step[3], v)))

    def to_foot_of(self, p):
        self.point = along(self.point, (dot(sub(p, self.point), self.direction), self.direction))


class Ring:
    """A circle in the plane or a sphere. Parameters: the centre, the radius. The distance is |p - c| + r - R."""

    def __init__(self, point, _, size):
        self.point, self.direction, self.size = point, None, size
        self.blocks = {"pos": list(range(len(point))), "size": [len(point)]}

    def terms(self, p, r):
        q = sub(p, self.point)
        rho = sqrt(dot(q, q))
        e = unit(q)
        n = len(e)
        hessian = zeros(n + 1)
        for i in range(n):
            for j in range(n):
                hessian[i][j] = (mpf(i == j) - e[i] * e[j]) / rho
        return [(rho + r - self.size, [-x for x in e] + [mpf(-1)], hessian)]

    def move(self, step):
        self.point = [x + s for x, s in zip(self.point, step)]
        self.size += step[-1]

    def to_foot_of(self, _):
        pass


def about_axis(q, direction):
    """The distance f of a point from the axis and its coordinate g along it, each as (value, gradient, Hessian).

    q is the point less that of the axis. Parameters: the axis point's displacements in the frame of the axis, two
    tilts. Here g = q.w and f^2 = q.q - g^2.
    """
    x, y, g = (dot(q, e) for e in across(direction) + [direction])
    f = sqrt(x * x + y * y)
    dg = [mpf(0), mpf(0), mpf(-1), x, y]
    hg = zeros(5)
    hg[3][3] = hg[4][4] = -g
    hg[0][3] = hg[3][0] = hg[1][4] = hg[4][1] = mpf(-1)
    ds = [-2 * x, -2 * y, -2 * g, mpf(0), mpf(0)]  # of q.q, whose Hessian is 2 for the displacements
    df = [(s - 2 * g * d) / (2 * f) for s, d in zip(ds, dg)]
    hf = zeros(5)
    for i in range(5):
        for j in range(5):
            hf[i][j] = (mpf(i == j and i < 3) - dg[i] * dg[j] - g * hg[i][j] - df[i] * df[j]) / f
    return (f, df, hf), (g, dg, hg)


def bordered(hessian, *borders):
    """The Hessian with more rows and columns: a border has the second derivatives by its parameter and those before."""
    for border in borders:
        hessian = [row + [x] for row, x in zip(hessian, border)] + [border]
    return hessian


class Circle3:
    """A circle in space. Parameters: the centre in the frame of the normal, two tilts, the radius.

    The distance has two parts, f - R across the axis and g along it.
    """

    def __init__(self, point, direction, size):
        self.point, self.direction, self.size = point, unit(direction), size
        self.blocks = {"pos": [0, 1, 2], "angle": [3, 4], "size": [5]}

    def terms(self, p, r):
        (f, df, hf), (g, dg, hg) = about_axis(sub(p, self.point), self.direction)
        none = [mpf(0)] * 6
        return [(f - self.size, df + [mpf(-1)], bordered(hf, none)), (g, dg + [mpf(0)], bordered(hg, none))]

    def move(self, step):
        u, v = across(self.direction)
        self.point = along(self.point, *zip(step[:3], (u, v, self.direction)))
        self.direction = unit(along(self.direction, (step[3], u), (step[4], v)))
        self.size += step[5]

    def to_foot_of(self, _):
        pass


class Cone:
    """A cone of half angle h by a point of its axis, the direction towards the growing radius, and the orthogonal
    distance s of the point from the surface, positive inside. Parameters: two displacements across the axis, two tilts,
    s, h.

    The distance is f cos h - g sin h + r - s: no number grows large when the cone is nearly a cylinder or a plane.
    """

    def __init__(self, point, direction, size, half_angle):
        self.point, self.direction, self.size, self.half_angle = point, unit(direction), size, half_angle
        self.blocks = {"pos": [0, 1], "angle": [2, 3], "size": [4], "half_angle": [5]}

    def terms(self, p, r):
        (f, df, hf), (g, dg, hg) = about_axis(sub(p, self.point), self.direction)
        c, s = cos(self.half_angle), sin(self.half_angle)
        kept = [0, 1, 3, 4]  # a displacement along the axis is a change of the size
        gradient = [c * df[k] - s * dg[k] for k in kept] + [mpf(-1), -f * s - g * c]
        hessian = [[c * hf[k][m] - s * hg[k][m] for m in kept] for k in kept]
        by_angle = [-s * df[k] - c * dg[k] for k in kept] + [mpf(0), g * s - f * c]
        return [(c * f - s * g + r - self.size, gradient, bordered(hessian, [mpf(0)] * 5, by_angle))]

    def move(self, step):
        u, v = across(self.direction)
        self.point = along(self.point, (step[0], u), (step[1], v))
        self.direction = unit(along(self.direction, (step[2], u), (step[3], v)))
        self.size += step[4]
        self.half_angle += sum(step[5:])

    def to_foot_of(self, p):
        rise = dot(sub(p, self.point), self.direction)
        self.point = along(self.point, (rise, self.direction))
        self.size += rise * sin(self.half_angle)


class Cylinder(Cone):
    """A cylinder, by a point of its axis, the direction, the radius: a cone whose half angle of 0 is no parameter."""

    def __init__(self, point, direction, size):
        super().__init__(point, direction, size, mpf(0))
        del self.blocks["half_angle"]

    def terms(self, p, r):
        return [(value, g[:-1], [row[:-1] for row in h[:-1]]) for value, g, h in super().terms(p, r)]


def normal_equations(model, points, radii):
    """J'J, the full Hessian of half the sum of squares, its gradient, and the sum of squares."""
    gauss = rest = gradient = None
    total = mpf(0)
    for p, r in zip(points, radii):
        for value, g, h in model.terms(p, r):
            n = len(g)
            if gauss is None:
                gauss, rest, gradient = matrix(n, n), matrix(n, n), matrix(n, 1)
            total += value * value
            for i in range(n):
                gradient[i] += value * g[i]
                for j in range(n):
                    gauss[i, j] += g[i] * g[j]
                    rest[i, j] += value * h[i][j]
    return gauss, gauss + rest, gradient, total


def is_positive_definite(m):
    try:
        mp.cholesky(m)
        return True
    except ValueError:
        return False


def newton(model, points, radii):
    """Carries the model to the minimum; returns (J'J, sum of squares) there."""
    steps_at_rest = 0
    for _ in range(100):
        gauss, full, gradient, total = normal_equations(model, points, radii)
        convex = is_positive_definite(full)
        step = list(lu_solve(full if convex else gauss, -gradient))
        model.move(step)
        model.to_foot_of(centroid(points))
        # Lengths and angles together: neither can be at rest alone.
        extent = max(abs(x) for p in points for x in sub(p, points[0]))
        steps_at_rest += convex and max(abs(s) for s in step) < mpf(10) ** -58 * max(extent, 1)
        if steps_at_rest == 2:
            gauss, full, gradient, total = normal_equations(model, points, radii)
            assert is_positive_definite(full)
            return gauss, total
    raise ArithmeticError("no convergence")


def noise_gain(model, gauss):
    """Standard deviations for unit noise of each coordinate, from the inverse of J'J; of a line in one direction."""
    covariance = gauss ** -1
    directions = 2 if isinstance(model, Line3) else 1
    return {
        name: sqrt(sum(covariance[k, k] for k in block) / directions) for name, block in model.blocks.items()
    }


class CircleInPlane:
    """The circle fitted in the plane that is fitted first: its place, direction and size, residuals and noise gains.

    gain is that of the centre in space; gain_in_plane leaves out how far the plane's tilt raises the centre.
    """

    def __init__(self, points, start):
        none = [mpf(0)] * len(points)
        plane = Flat(start.point, start.direction)
        plane_gauss, self.height_squares = newton(plane, points, none)
        u, v = across(plane.direction)

        def flat(p):
            return [dot(sub(p, plane.point), u), dot(sub(p, plane.point), v)]

        ring = Ring(flat(start.point), None, start.size)
        ring_gauss, self.total = newton(ring, [flat(p) for p in points], none)
        self.point, self.direction, self.size = along(plane.point, *zip(ring.point, (u, v))), plane.direction, ring.size

        self.gain_in_plane = noise_gain(ring, ring_gauss)
        height = matrix([mpf(1)] + ring.point)  # of the plane at the centre, by offset and tilts
        variance = (height.T * plane_gauss ** -1 * height)[0]
        self.gain = {
            "pos": sqrt(self.gain_in_plane["pos"] ** 2 + variance),
            "angle": noise_gain(plane, plane_gauss)["angle"],
            "size": self.gain_in_plane["size"],
        }

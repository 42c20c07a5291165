#!/usr/bin/python3
"""Makes the reference pairs in tests/data: points, and the primitive of least squares through them with 50 digits.

    scripts/make_reference_data.py                  writes tests/data, the same bytes on every run
    scripts/make_reference_data.py --check FOLDER   compares its solutions with the pairs of another folder

The points are doubles, and the solution is that of exactly these doubles: they are printed so that they read back to
the same bits. Solutions are found by Newton's method on the sum of the squared orthogonal distances, with the full
second derivatives, so that a positive definite Hessian proves the end a minimum. Needs Debian's python3-mpmath.
"""

import argparse
import json
import random
import sys
from pathlib import Path

sys.dont_write_bytecode = True

from mpmath import cos, degrees, mp, mpf, pi, radians, sin, sqrt  # noqa: E402

from reference_models import Circle3, CircleInPlane, Cone, Cylinder, Flat, Line3, Ring  # noqa: E402
from reference_models import across, along, dot, newton, noise_gain, sub, unit  # noqa: E402

DATA = Path(__file__).resolve().parent.parent / "tests" / "data"

# name, distance from the origin, size
PLACEMENTS = [
    ("unit", 0, 1.0),
    ("tiny", 0, 1e-3),
    ("large", 0, 1e5),
    ("unit_2p14", 2**14, 1.0),
    ("unit_2p20", 2**20, 1.0),
    ("tiny_2p14", 2**14, 1e-3),
    ("large_2p20", 2**20, 1e5),
]
NEAR_AND_FAR = [PLACEMENTS[0], PLACEMENTS[4]]
OFF_ORIGIN = [PLACEMENTS[0], PLACEMENTS[3], PLACEMENTS[5]]


class Noise(random.Random):
    """Errors of form, of a fixed seed for each case."""

    def error(self, size):
        return mpf(size) * mpf(self.uniform(-1.0, 1.0))

    def spread(self, n):
        """n numbers from 0 to 1 in growing order, each within its own nth."""
        return [(k + mpf(self.random())) / n for k in range(n)]


# Shapes of size 1 about the origin, in their own frame: points with errors of form, as the sagitta allows. ---------


def arc(degrees, n, lobes=0.0):
    def shape(noise):
        opening = mpf(degrees) * pi / 180
        form = mpf("0.01") * min(mpf(1), 1 - cos(opening / 2))
        for t in noise.spread(n):
            angle = opening * (t - mpf(1) / 2)
            rho = 1 + lobes * cos(3 * angle) + noise.error(form)
            yield [rho * cos(angle), rho * sin(angle), noise.error(form)]

    return shape


def cap(degrees, n):
    def shape(noise):
        depth = 1 - cos(mpf(degrees) * pi / 360)
        for k, t in enumerate(noise.spread(n)):
            z, turn = 1 - depth * t, k * pi * (3 - sqrt(mpf(5)))
            rho, across_axis = 1 + noise.error(mpf("0.01") * min(mpf(1), depth)), sqrt(1 - z * z)
            yield [rho * across_axis * cos(turn), rho * across_axis * sin(turn), rho * z]

    return shape


def patch(width, n, form):
    def shape(noise):
        for t in noise.spread(n):
            yield [2 * t - 1, noise.error(width), noise.error(form)]

    return shape


def stretch(n, form):
    def shape(noise):
        for t in noise.spread(n):
            yield [2 * t - 1, noise.error(form), noise.error(form)]

    return shape


class Mantle:
    """Part of a cylinder or cone about z, with radius 1 halfway of its length along a generator."""

    def __init__(self, opening, length, n, form, half_angle=0):
        self.opening, self.half_angle = radians(mpf(opening)), radians(mpf(half_angle))
        self.length, self.n, self.form = length, n, form

    def __call__(self, noise):
        c, s = cos(self.half_angle), sin(self.half_angle)
        for k, t in enumerate(noise.spread(self.n)):
            angle = self.opening * (t - mpf(1) / 2)
            way = self.length * ((k * (sqrt(mpf(5)) - 1) / 2) % 1 - mpf(1) / 2)
            error = noise.error(self.form)
            rho = 1 + way * s + error * c
            yield [rho * cos(angle), rho * sin(angle), way * c - error * s]

    def outward(self, p):
        radial = unit(p[:2])
        return [cos(self.half_angle) * x for x in radial] + [-sin(self.half_angle)]


class Placed:
    """Local coordinates put at a general place, turned in general and scaled; only then rounded to doubles."""

    def __init__(self, noise, dimension, offset, size):
        self.dimension, self.size = dimension, mpf(size)
        self.origin = [mpf(offset) * mpf(x) for x in ("1", "-0.83", "0.61")][:dimension]
        w = unit([mpf(noise.uniform(0.2, 1.0)) for _ in range(dimension)])
        self.axes = across(w) + [w] if dimension == 3 else [[w[1], -w[0]], w]

    def direction(self, local):
        return along([mpf(0)] * self.dimension, *zip(local, self.axes))

    def point(self, local):
        return along(self.origin, *zip([self.size * x for x in local], self.axes))

    def rounded(self, local):
        return [float(x) for x in self.point(local)]


# A case: points, the start of Newton's method, and what goes into the file. -----------------------------------------


def number(x, unit_of_zero=mpf(1)):
    return "0" if abs(x) < mpf(10) ** -48 * unit_of_zero else mp.nstr(x, 30)


def described(model, total, n, names):
    """The entries of a solution, under the names that its primitive has for place and direction."""
    place, direction = names
    solution = {place: [number(x) for x in model.point]}
    if direction == "direction" and len(model.point) == 2:
        solution[direction] = [number(x) for x in across(model.direction)[0]]
    elif direction:
        solution[direction] = [number(x) for x in model.direction]
    if type(model) is Cone:
        solution["distance"] = number(model.size)
        solution["apex_angle_deg"] = number(degrees(2 * model.half_angle))
    elif model.size is not None:
        solution["diameter"] = number(2 * model.size)
    extent = max(abs(x) for x in model.point) + (model.size or 1)
    solution["rms"] = number(sqrt(total / n), extent)
    return solution


def gains(values):
    return {name: float(mp.nstr(value, 4)) for name, value in values.items()}


PRIMITIVES = {  # dimension, names of place and direction, model, its direction in the local frame
    "plane": (3, ("point", "normal"), Flat, [0, 0, 1]),
    "line2d": (2, ("point", "direction"), Flat, [0, 1]),
    "line3d": (3, ("point", "direction"), Line3, [1, 0, 0]),
    "circle2d": (2, ("centre", None), Ring, None),
    "circle3d": (3, ("centre", "normal"), Circle3, [0, 0, 1]),
    "sphere": (3, ("centre", None), Ring, None),
    "cylinder": (3, ("axis_point", "axis"), Cylinder, [0, 0, 1]),
    "cone": (3, ("axis_point", "axis"), Cone, [0, 0, 1]),
}


def nominal(primitive, at, shape):
    model, local = PRIMITIVES[primitive][2:]
    direction = local and at.direction(local)
    if model is Cone:
        return Cone(at.origin, direction, at.size * cos(shape.half_angle), shape.half_angle)
    return model(at.origin, direction, at.size)


def solved(primitive, at, shape, points, signed_radii):
    names = PRIMITIVES[primitive][1]
    exact = [[mpf(x) for x in p] for p in points]
    model = nominal(primitive, at, shape)
    gauss, total = newton(model, exact, [mpf(r) for r in signed_radii])
    solution, gain = described(model, total, len(points), names), gains(noise_gain(model, gauss))
    if primitive != "circle3d":
        return {"verified": solution, "noise_gain": gain}
    in_plane = CircleInPlane(exact, nominal(primitive, at, shape))
    return {
        "verified": described(in_plane, in_plane.total, len(points), names),
        "noise_gain": gains(in_plane.gain),
        "verified_full_space": solution,
        "noise_gain_full_space": gain,
    }


def case(primitive, name, shape, placement):
    label, offset, size = placement
    noise = Noise(f"{primitive} {name} {label}")
    dimension = PRIMITIVES[primitive][0]
    at = Placed(noise, dimension, offset, size)
    points = [at.rounded(p[:dimension]) for p in shape(noise)]
    head = {"id": f"{primitive}_{name}_{label}", "n": len(points), "points": points}
    return {**head, **solved(primitive, at, shape, points, [0.0] * len(points))}


def probed_case(primitive, name, shape, placement, side):
    """Probe centres that stand off the points of a shape by radii of their own, or all by one."""
    label, offset, size = placement
    noise = Noise(f"probed {primitive} {name} {label} {side}")
    dimension = PRIMITIVES[primitive][0]
    at = Placed(noise, dimension, offset, size)
    local = [p[:dimension] for p in shape(noise)]
    one_radius = label == "tiny_2p14"
    radii = [size * (0.25 if one_radius else noise.uniform(0.1, 0.4)) for _ in local]
    sign = {"inside": 1.0, "outside": -1.0, None: 1.0}[side]
    if side:
        outward = getattr(shape, "outward", unit)
        stand_off = [along(p, (-sign * mpf(r) / size, outward(p))) for p, r in zip(local, radii)]
    else:
        stand_off = [along(p, (mpf(r) / size, [mpf(0)] * (dimension - 1) + [mpf(1)])) for p, r in zip(local, radii)]
    points = [at.rounded(p) for p in stand_off]
    head = {"id": f"probed_{primitive}_{name}_{side or 'above'}_{label}", "primitive": primitive, "n": len(points)}
    head |= {"probe_radius": radii[0]} if one_radius else {"probe_radii": radii}
    if side:
        head["side"] = side
    else:
        head["approximate_normal"] = [float(mp.nstr(x, 2)) for x in at.direction([0] * (dimension - 1) + [1])]
    return {**head, "points": points, **solved(primitive, at, shape, points, [sign * r for r in radii])}


# name, Mantle, placements. All have one minimum that is the least by far, as found from many directions.
CYLINDERS = [
    ("360", (360, 2, 24, 1e-2), ["unit", "unit_2p20", "tiny"]),
    ("360_many", (360, 5, 60, 1e-3), ["large"]),
    ("360_long_exact", (360, 20, 12, 0), ["unit", "large_2p20"]),
    ("360_short", (360, 0.1, 16, 1e-3), ["unit", "tiny_2p14", "large"]),
    ("fewest", (360, 2, 8, 1e-2), ["unit", "unit_2p20"]),
    ("60", (60, 2, 20, 1e-3), ["unit", "unit_2p14", "large_2p20"]),
    ("60_long", (60, 20, 24, 1e-2), ["unit", "tiny"]),
    ("60_short", (60, 0.3, 16, 1e-4), ["unit", "unit_2p20"]),
    ("20", (20, 1, 24, 1e-4), ["unit", "tiny_2p14"]),
    ("20_long", (20, 20, 16, 1e-4), ["unit", "unit_2p20"]),
    ("10", (10, 2, 20, 1e-6), ["unit", "large_2p20"]),
]
CONES = [
    ("45", (360, 1, 24, 1e-2, 45), ["unit", "unit_2p20", "tiny"]),
    ("15_many", (360, 3, 60, 1e-3, 15), ["large"]),
    ("10_exact", (360, 5, 12, 0, 10), ["unit", "unit_2p20"]),
    ("1_long", (360, 20, 24, 1e-2, 1), ["unit", "large"]),
    ("1_short", (360, 2, 16, 1e-4, 1), ["unit", "unit_2p14"]),
    ("15_short", (360, 0.1, 16, 1e-4, 15), ["unit"]),
    ("85", (360, 1, 24, 1e-3, 85), ["unit", "tiny_2p14", "large_2p20"]),
    ("fewest", (360, 2, 8, 1e-2, 30), ["unit", "unit_2p20"]),
    ("20_arc_60", (60, 2, 20, 1e-4, 20), ["unit", "unit_2p14", "large_2p20"]),
    ("60_arc_60", (60, 1, 20, 1e-4, 60), ["unit", "tiny"]),
    ("5_arc_20", (20, 10, 20, 1e-5, 5), ["unit"]),
    ("30_arc_20", (20, 2, 20, 1e-5, 30), ["unit", "tiny_2p14"]),
]


def mantle_cases(primitive, shapes):
    at = {label: (label, offset, size) for label, offset, size in PLACEMENTS}
    return [case(primitive, name, Mantle(*mantle), at[label]) for name, mantle, labels in shapes for label in labels]


def round_cases(primitive, shapes, fewest):
    cases = [case(primitive, name, shape, at) for name, shape in shapes.items() for at in PLACEMENTS]
    return cases + [case(primitive, "fewest", fewest, at) for at in NEAR_AND_FAR]


def flat_cases(primitive, shapes, special):
    cases = [case(primitive, name, shape, at) for name, shape in shapes.items() for at in PLACEMENTS]
    return cases + [case(primitive, name, shape, at) for name, shape in special.items() for at in NEAR_AND_FAR]


def files():
    arcs = {"360": arc(360, 18), "60": arc(60, 14), "10": arc(10, 14)}
    caps = {"360": cap(360, 24), "60": cap(60, 18), "10": cap(10, 18)}
    yield "plane", flat_cases("plane", {"square": patch(1, 16, 0.01), "strip": patch(1e-3, 16, 1e-5)},
                              {"rough": patch(1, 12, 0.4), "fewest": patch(1, 3, 0.1)})
    for line in ("line2d", "line3d"):
        yield line, flat_cases(line, {"straight": stretch(12, 0.01)},
                               {"rough": stretch(8, 0.4), "fewest": stretch(2, 0.1)})
    for circle in ("circle2d", "circle3d"):
        cases = round_cases(circle, arcs, arc(360, 3))
        yield circle, cases + [case(circle, "lobes", arc(360, 13, mpf("0.05")), at) for at in NEAR_AND_FAR]
    yield "sphere", round_cases("sphere", caps, cap(120, 4))
    rounds = [("circle2d", "360", arcs["360"]), ("circle2d", "60", arcs["60"]),
              ("sphere", "360", caps["360"]), ("sphere", "60", caps["60"])]
    flats = [("plane", "square", patch(1, 12, 0.01)), ("line2d", "straight", stretch(8, 0.01))]
    yield "cylinder", mantle_cases("cylinder", CYLINDERS)
    yield "cone", mantle_cases("cone", CONES)
    probed_mantles = [("cylinder", "360", Mantle(360, 2, 18, 1e-2)), ("cylinder", "60", Mantle(60, 2, 16, 1e-4)),
                      ("cone", "30", Mantle(360, 1, 18, 1e-2, 30)), ("cone", "20_arc_60", Mantle(60, 2, 18, 1e-4, 20))]
    yield "probed", ([probed_case(*shape, at, side) for shape in rounds for at in OFF_ORIGIN
                      for side in ("inside", "outside")]
                     + [probed_case(*shape, at, None) for shape in flats for at in PLACEMENTS]
                     + [probed_case(*shape, at, side) for shape in probed_mantles
                        for at, side in zip(OFF_ORIGIN, ("inside", "outside", "outside"))])


# Writing and checking. ----------------------------------------------------------------------------------------------

HEAD = {
    "source": "scripts/make_reference_data.py",
    "units": "mm",
    "points": "doubles",
    "verified": "solution with 50 digits; a point of a line or plane is the one nearest to the centroid of the data",
    "noise_gain": "standard deviation of position, angle (rad) and radius for unit noise a coordinate",
}


HEAD_OF_AXIS = HEAD | {
    "verified": "solution with 50 digits; the axis point is the one nearest to the centroid of the data; the axis of a "
                "cone goes towards the growing radius, its distance is that of the axis point from the surface",
    "noise_gain": "standard deviation of position, angle (rad) and radius, or of a cone's distance and half angle "
                  "(rad), for unit noise a coordinate",
}


def write(name, cases):
    head = HEAD_OF_AXIS if name in ("cylinder", "cone") else HEAD
    if name != "probed":
        head = {"primitive": name, **head}
    lines = [f" {json.dumps(key)}: {json.dumps(value)}," for key, value in head.items()]
    text = ",\n".join("  {" + ",\n   ".join(f"{json.dumps(k)}: {json.dumps(v)}" for k, v in c.items()) + "}"
                      for c in cases)
    (DATA / f"{name}.json").write_text("{\n" + "\n".join(lines) + '\n "cases": [\n' + text + "\n ]\n}\n")


def check(folder):
    """Solves the certified pairs of a folder and prints the largest differences from what stands in each file."""
    for name, (dimension, names, model, _) in PRIMITIVES.items():
        cases = json.loads((Path(folder) / f"nist_l2_{name}.json").read_text(), parse_float=mpf, parse_int=mpf)["cases"]
        worst = {}
        for given in cases:
            for what, value in check_case(name, dimension, names, model, given).items():
                worst[what] = max(worst.get(what, (0, "")), (value, given["id"]))
        figures = ", ".join(f"{what} {mp.nstr(value, 2)} ({where})" for what, (value, where) in worst.items())
        print(f"{name}: {len(cases)} cases, largest differences: {figures}")


def check_case(name, dimension, names, model_type, given):
    columns = list(zip(*given["points"]))
    kept = [k for k in range(3) if dimension == 3 or len(set(columns[k])) > 1]
    if len(kept) < dimension:  # a line along an axis of its plane
        kept = sorted(kept + [k for k in range(3) if k not in kept][:1])
    points = [[p[k] for k in kept] for p in given["points"]]

    def start(truth):
        place, direction = ([mpf(truth[key][k]) for k in kept] if key else None for key in names)
        if name == "line2d":
            direction = across(direction)[0]
        if model_type is Cone:
            return Cone(place, direction, mpf(truth["distance"]), radians(mpf(truth["apex_angle_deg"])) / 2)
        return model_type(place, direction, mpf(truth.get("diameter", 0)) / 2)

    def differences(label, truth, found, total):
        expected = start(truth)
        result = {f"{label}pos": max(abs(x) for x in sub(expected.point, found.point))}
        if found.direction:
            turned = [dot(expected.direction, u) for u in across(found.direction)]
            result[f"{label}angle"] = sqrt(dot(turned, turned))
        if found.size is not None:
            result[f"{label}size"] = abs(expected.size - found.size)
        if type(found) is Cone:
            result[f"{label}half_angle"] = abs(expected.half_angle - found.half_angle)
        return {**result, f"{label}rms": abs(sqrt(total / len(points)) - mpf(truth["rms"]))}

    model = start(given["verified"])
    gauss, total = newton(model, points, [mpf(0)] * len(points))
    if name != "circle3d":
        gain, result = noise_gain(model, gauss), differences("", given["verified"], model, total)
    else:
        in_plane = CircleInPlane(points, start(given["verified"]))
        gain, result = in_plane.gain_in_plane, differences("", given["verified"], in_plane, in_plane.total)
        full_space = given.get("verified_full_space", given["verified"])
        result |= differences("full space ", full_space, model, total)
    for key, value in given["noise_gain"].items():
        result[f"relative gain of {key}"] = abs(gain[key] / value - 1)
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", metavar="FOLDER")
    arguments = parser.parse_args()
    if arguments.check:
        check(arguments.check)
        return
    DATA.mkdir(exist_ok=True)
    for name, cases in files():
        write(name, cases)
        print(f"{name}: {len(cases)} cases")


if __name__ == "__main__":
    main()

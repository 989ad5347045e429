#!/usr/bin/env python3
"""Rays that a spherical mirror reflects onto a dome, calculated a second way: MirrorRays.h is what this prints.

    python3 mirror_rays.py > MirrorRays.h

No matrices: turns are made one after the other by plane rotations, the sphere is met through the nearest point of the
ray to its centre, and a direction is reflected by mirroring its component across the surface. The mirror stands around
the origin for the meeting; its offset and its turn come afterwards, and the ray is turned before and after the
reflection.
"""
import math
import random


def turn_plane(a, b, angle):
    """(a, b) turned from the first axis towards the second."""
    return a * math.cos(angle) - b * math.sin(angle), a * math.sin(angle) + b * math.cos(angle)


def turn(angles, v):
    """About y by the third angle, about x by the second, about z by the first backwards."""
    x, y, z = v
    z, x = turn_plane(z, x, angles[2])
    y, z = turn_plane(y, z, angles[1])
    x, y = turn_plane(x, y, -angles[0])
    return (x, y, z)


def add(a, b):
    return tuple(p + q for p, q in zip(a, b))


def sub(a, b):
    return tuple(p - q for p, q in zip(a, b))


def scaled(f, a):
    return tuple(f * p for p in a)


def inner(a, b):
    return math.fsum(p * q for p, q in zip(a, b))


def unit(a):
    return scaled(1 / math.sqrt(inner(a, a)), a)


def meet(centre, radius, start, through):
    """The first point of the ray on the sphere; None when it misses."""
    along = unit(sub(through, start))
    nearest = inner(sub(centre, start), along)
    foot = add(start, scaled(nearest, along))
    gap = sub(foot, centre)
    half_squared = radius * radius - inner(gap, gap)
    if half_squared < 0:
        return None
    half = math.sqrt(half_squared)
    for t in (nearest - half, nearest + half):
        if t >= 0:
            return add(start, scaled(t, along))
    return None


def reflect(mirror, start, through):
    """Where the reflected ray starts, and its direction."""
    point = meet((0, 0, 0), mirror["radius"], start, through)
    if point is None:
        return None
    across = unit(point)
    incoming = turn(mirror["orientation"], sub(through, start))
    # Mirroring changes the sign of the component across the surface alone.
    outgoing = sub(incoming, scaled(2 * inner(incoming, across), across))
    return turn(mirror["orientation"], add(point, mirror["position"])), turn(mirror["orientation"], outgoing)


def braces(values):
    return "{" + ", ".join(repr(float(v)) for v in values) + "}"


HEADER = """#pragma once

#include "Common/Point.h"

/// What mirror_rays.py, which stands beside this file, has calculated; not to be changed by hand.
namespace mirrorRays {

/// The dome that the reflected rays meet, whole.
inline constexpr Point<double, 3> DOME_CENTRE%s;
inline constexpr double DOME_RADIUS = %r;

/// A mirror and a ray; what becomes of it.
struct Row {
    Point<double, 3> orientation;
    Point<double, 3> position;
    double radius;
    Point<double, 3> from;
    Point<double, 3> to;
    bool meetsMirror;
    Point<double, 3> mirrorPoint;
    Point<double, 3> reflected;
    bool meetsDome;
    Point<double, 3> hit;
    int side;
};

// clang-format off
inline constexpr Row ROWS[] = {"""

DOME_CENTRE = (0.25, -0.5, 1.0)
DOME_RADIUS = 6.0
ZERO = (0.0, 0.0, 0.0)


def see(mirror, start, through):
    """The reflected ray and where it meets the dome from which side; None for what is missed."""
    reflection = reflect(mirror, start, through)
    if reflection is None:
        return None, None, 1
    point, direction = reflection
    hit = meet(DOME_CENTRE, DOME_RADIUS, point, add(point, direction))
    if hit is None:
        return reflection, None, 1
    return reflection, hit, 1 if inner(direction, sub(hit, DOME_CENTRE)) > 0 else -1


def row(mirror, start, through):
    reflection, hit, side = see(mirror, start, through)
    point, direction = reflection if reflection else (ZERO, ZERO)
    fields = [braces(mirror["orientation"]), braces(mirror["position"]), repr(mirror["radius"]), braces(start),
              braces(through), str(reflection is not None).lower(), braces(point), braces(direction),
              str(hit is not None).lower(), braces(hit or ZERO), str(side)]
    return "    {" + ", ".join(fields) + "},"


def rows():
    source = random.Random(20)

    def pick(size):
        return tuple(round(source.uniform(-size, size), 3) for _ in range(3))
    for number in range(40):
        mirror = {"orientation": pick(1.5) if number % 4 != 0 else ZERO,
                  "position": pick(2.0) if number % 4 != 1 else ZERO,
                  "radius": round(source.uniform(1.0, 5.0), 3)}
        # Far eyes look at the mirror from outside or past it; far offsets let reflections miss the dome.
        start = pick(0.5 if number % 2 == 0 else 9.0)
        if number % 5 == 4:
            mirror["position"] = scaled(6, mirror["position"])
        yield row(mirror, start, add(start, pick(1.0)) if number % 2 == 0 else pick(mirror["radius"]))


GRID_EYE = (0.2, -0.3, 0.4)
GRID_ANGLES = (-0.6, 0.5, -0.4, 0.45)
GRID_ROTATION = (0.35, -0.25, 0.15)
GRID_MIRROR = {"orientation": (0.2, -0.3, 0.1), "position": (0.3, 0.2, -0.1), "radius": 2.5}
GRID_COLUMNS, GRID_ROWS = 4, 3


def grid():
    """The first row on top, the columns from the left, evenly spread between the tangents of the angles."""
    left, right, bottom, top = (math.tan(angle) for angle in GRID_ANGLES)
    for r in range(GRID_ROWS):
        for c in range(GRID_COLUMNS):
            ahead = (left + (right - left) * c / (GRID_COLUMNS - 1), 1.0, top - (top - bottom) * r / (GRID_ROWS - 1))
            _, hit, side = see(GRID_MIRROR, GRID_EYE, add(GRID_EYE, turn(GRID_ROTATION, ahead)))
            assert hit is not None and side == 1
            yield "    {{%d, %d}, %s}," % (c, r, braces(hit))


GRID_HEADER = """};
// clang-format on

/// A channel (its angles in the order left, right, bottom, top) that sees the dome in a mirror.
inline constexpr Point<double, 3> GRID_EYE%s;
inline constexpr double GRID_ANGLES[]%s;
inline constexpr Point<double, 3> GRID_ROTATION%s;
inline constexpr Point<double, 3> GRID_ORIENTATION%s;
inline constexpr Point<double, 3> GRID_POSITION%s;
inline constexpr double GRID_RADIUS = %r;
inline constexpr int GRID_COLUMNS = %d;
inline constexpr int GRID_ROWS = %d;

struct Cell {
    Point<int, 2> cell;  ///< column, row
    Point<double, 3> target;
};

// clang-format off
inline constexpr Cell GRID[] = {"""


def main():
    print(HEADER % (braces(DOME_CENTRE), DOME_RADIUS))
    print("\n".join(rows()))
    print(GRID_HEADER % (braces(GRID_EYE), braces(GRID_ANGLES), braces(GRID_ROTATION),
                         braces(GRID_MIRROR["orientation"]), braces(GRID_MIRROR["position"]), GRID_MIRROR["radius"],
                         GRID_COLUMNS, GRID_ROWS))
    print("\n".join(grid()))
    print("};\n// clang-format on\n\n}  // namespace mirrorRays")


if __name__ == "__main__":
    main()

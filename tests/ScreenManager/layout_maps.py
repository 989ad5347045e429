#!/usr/bin/env python3
"""Layout maps calculated a second way: LayoutMapRows.h is what this prints.

    python3 layout_maps.py > LayoutMapRows.h

Planar: the formulas in the arithmetic of doubles, step by step, as every language has it; each is checked here against
fractions, which do not round. Projector-centric: no matrices but plane rotations, and the dome is met as in
mirror_rays.py. Custom planar: one bilinear cell with 50 digits, the way back by Newton's method.
"""
import math
import random
from decimal import Decimal, getcontext
from fractions import Fraction

from mirror_rays import add, braces, meet, sub, turn, turn_plane

getcontext().prec = 50


# Planar

def lies_near(value, exact, scale):
    """Within a few roundings of numbers of this size."""
    return abs(Fraction(value) - exact) <= Fraction(scale) / 2**50


def planar_row(rect, channel, layout):
    x_min, y_min, x_max, y_max = rect
    (u, v), (x, y) = channel, layout
    to_layout = ((x_max - x_min) * u + x_min, (y_max - y_min) * v + y_min, 0.0)
    to_channel = ((x - x_min) / (x_max - x_min), (y - y_min) / (y_max - y_min))
    for i, (low, high, part, place) in enumerate([(x_min, x_max, u, x), (y_min, y_max, v, y)]):
        low, high = Fraction(low), Fraction(high)
        assert lies_near(to_layout[i], low + (high - low) * Fraction(part), abs(low) + abs(high))
        exact = (Fraction(place) - low) / (high - low)
        assert lies_near(to_channel[i], exact, 1 + (abs(low) + abs(Fraction(place))) / abs(high - low))
    fits = x_min <= x <= x_max and y_min <= y <= y_max
    look_alike = (x_min * (1 - u) + x_max * u, y_min * (1 - v) + y_max * v)
    return "    {%s, %s, %s, %s, %s, %s}," % (
        braces(rect), braces(channel), braces(to_layout), braces((x, y, 5.0)), str(fits).lower(),
        braces(to_channel if fits else (0, 0))), to_layout[:2] != look_alike


def planar_rows():
    source = random.Random(41)
    differing = 0
    for number in range(40):
        rect = [source.uniform(-9, 9) for _ in range(4)]
        if number % 4 != 0:  # every fourth may be mirrored
            rect[0], rect[2] = sorted((rect[0], rect[2]))
            rect[1], rect[3] = sorted((rect[1], rect[3]))
        channel = (source.random(), source.random())
        # Some beside the rectangle.
        layout = tuple(rect[i] + source.uniform(-0.1, 1.1) * (rect[i + 2] - rect[i]) for i in (0, 1))
        text, differs = planar_row(rect, channel, layout)
        differing += differs
        yield text
    assert differing > 10, "the order of the steps can be told"


# Projector-centric

DOME_CENTRE = (0.25, -0.5, 1.0)
DOME_RADIUS = 6.0


def turn_back(angles, v):
    """What `turn` does, undone in reverse order."""
    x, y, z = v
    x, y = turn_plane(x, y, angles[0])
    y, z = turn_plane(y, z, -angles[1])
    z, x = turn_plane(z, x, -angles[2])
    return (x, y, z)


def edges_of(projector):
    return [math.tan(angle) for angle in projector["frustum"]]  # left, right, bottom, top


def ray_point(projector, channel):
    left, right, bottom, top = edges_of(projector)
    (u, v) = channel
    ahead = turn(projector["orientation"], (left * (1 - u) + right * u, 1.0, bottom * (1 - v) + top * v))
    return meet(DOME_CENTRE, DOME_RADIUS, projector["position"], add(projector["position"], ahead))


def pixel_of(projector, point):
    """None behind the projector."""
    x, y, z = turn_back(projector["orientation"], sub(point, projector["position"]))
    assert abs(y) > 1e-3
    if y < 0:
        return None
    left, right, bottom, top = edges_of(projector)
    place = ((x / y - left) / (right - left) * projector["width"],
             (z / y - bottom) / (top - bottom) * projector["height"])
    assert all(abs(p - math.floor(p) - 0.5) > 1e-6 for p in place), "rounding cannot tip"
    return tuple(math.floor(p + 0.5) for p in place)


def centric_rows():
    source = random.Random(44)
    outside = behind = missed = 0

    def pick(size):
        return tuple(round(source.uniform(-size, size), 3) for _ in range(3))
    for number in range(40):
        projector = {"position": pick(9.0 if number % 4 == 3 else 2.5), "orientation": pick(0.8),
                     "frustum": [round(source.uniform(low, high), 3)
                                 for low, high in ((-0.7, -0.2), (0.2, 0.7), (-0.5, -0.1), (0.1, 0.5))],
                     "width": source.choice((1920, 1400, 1024)), "height": source.choice((1200, 1050, 1080))}
        channel = (round(source.uniform(-0.2, 1.2), 3), round(source.uniform(-0.2, 1.2), 3))
        hit = ray_point(projector, channel)
        layout = add(projector["position"], turn(projector["orientation"], (
            round(source.uniform(-2, 2), 3), round(source.uniform(-1, 4), 3), round(source.uniform(-2, 2), 3))))
        pixel = pixel_of(projector, layout)
        missed += hit is None
        behind += pixel is None
        outside += pixel is not None and not (0 <= pixel[0] <= projector["width"] and
                                              0 <= pixel[1] <= projector["height"])
        left, right, bottom, top = projector["frustum"]
        yield "    {%s, %s, %s, {%d, %d}, %s, %s, %s, %s, %s, {%d, %d}}," % (
            braces(projector["position"]), braces(projector["orientation"]), braces((left, right, bottom, top)),
            projector["width"], projector["height"], braces(channel), str(hit is not None).lower(),
            braces(hit or (0, 0, 0)), braces(layout), str(pixel is not None).lower(), *(pixel or (0, 0)))
    assert min(outside, behind, missed) >= 2, (outside, behind, missed)


# Custom planar

FILE_PIXELS = (1600, 900)
RESOLUTION = (1500, 1000)
# Screen coordinates of the corners of the picture: bottom left, bottom right, top left, top right.
CORNERS = ((-0.125, 0.0625), (1.125, -0.0625), (0.0, 0.9375), (0.9375, 1.1875))
NEAR = Decimal("1e-6")


def bilinear(a, b):
    return tuple((1 - a) * (1 - b) * Decimal(CORNERS[0][i]) + a * (1 - b) * Decimal(CORNERS[1][i]) +
                 (1 - a) * b * Decimal(CORNERS[2][i]) + a * b * Decimal(CORNERS[3][i]) for i in (0, 1))


def inverse(s, t):
    """Newton's method with the derivatives of the cell, from its middle."""
    a, b = Decimal("0.5"), Decimal("0.5")
    c = [[Decimal(value) for value in corner] for corner in CORNERS]
    for _ in range(60):
        now = bilinear(a, b)
        by_a = [(1 - b) * (c[1][i] - c[0][i]) + b * (c[3][i] - c[2][i]) for i in (0, 1)]
        by_b = [(1 - a) * (c[2][i] - c[0][i]) + a * (c[3][i] - c[1][i]) for i in (0, 1)]
        off = (Decimal(s) - now[0], Decimal(t) - now[1])
        area = by_a[0] * by_b[1] - by_a[1] * by_b[0]
        a += (off[0] * by_b[1] - off[1] * by_b[0]) / area
        b += (by_a[0] * off[1] - by_a[1] * off[0]) / area
    assert max(abs(p - q) for p, q in zip(bilinear(a, b), (Decimal(s), Decimal(t)))) < Decimal("1e-40")
    return a, b


def within(point, x_max, y_max):
    for value, limit in zip(point, (x_max, y_max)):
        assert abs(value) > NEAR and abs(value - limit) > NEAR, "rounding cannot tip"
    return all(0 <= value <= limit for value, limit in zip(point, (x_max, y_max)))


def planar_map_rows():
    source = random.Random(45)
    counts = [0, 0, 0, 0]
    for _ in range(40):
        channel = (source.random(), source.random())
        place = tuple(Decimal(RESOLUTION[i]) * Decimal(channel[i]) / FILE_PIXELS[i] for i in (0, 1))
        screen = bilinear(*place)
        is_seen = within(place, 1, 1) and within(screen, 1, 1)
        layout = (source.uniform(-0.1, 1.1), source.uniform(-3, 3), source.uniform(-0.1, 1.1))
        cell = inverse(layout[0], layout[2])
        pixel = tuple(cell[i] * FILE_PIXELS[i] for i in (0, 1))
        is_shown = within(cell, 1, 1) and within(pixel, *RESOLUTION)
        counts[is_seen] += 1
        counts[2 + is_shown] += 1
        yield "    {%s, %s, %s, %s, %s, %s}," % (
            braces(channel), str(is_seen).lower(), braces((screen[0], 0, screen[1]) if is_seen else (0, 0, 0)),
            braces(layout), str(is_shown).lower(),
            braces((pixel[0] / RESOLUTION[0], pixel[1] / RESOLUTION[1]) if is_shown else (0, 0)))
    assert min(counts) >= 5, counts


def map_text():
    aspect = FILE_PIXELS[0] / FILE_PIXELS[1]
    nodes = zip(((-aspect, -1), (aspect, -1), (-aspect, 1), (aspect, 1)), CORNERS)
    lines = ["2", "2 2"] + ["%r %d %r %r 1" % (x, y, u, v) for (x, y), (u, v) in nodes]
    return "".join(line + "\\n" for line in lines + ["pixels %d %d" % FILE_PIXELS])


HEADER = """#pragma once

#include "Common/Point.h"

/// What layout_maps.py, which stands beside this file, has calculated; not to be changed by hand.
namespace layoutMapRows {

/// A rectangle, and a point each way. Exact.
struct Planar {
    double rect[4];  ///< xMin, yMin, xMax, yMax
    Point<double, 2> channel;
    Point<double, 3> toLayout;
    Point<double, 3> layout;
    bool isInside;
    Point<double, 2> toChannel;
};

// clang-format off
inline constexpr Planar PLANAR[] = {"""

CENTRIC_HEADER = """};
// clang-format on

/// The dome that the projectors light, whole.
inline constexpr Point<double, 3> DOME_CENTRE%s;
inline constexpr double DOME_RADIUS = %r;

/// A projector, and a point each way.
struct Centric {
    Point<double, 3> position;
    Point<double, 3> orientation;  ///< angles Z, X, Y
    double frustum[4];             ///< angles left, right, bottom, top
    Point<int, 2> resolution;
    Point<double, 2> channel;
    bool meetsDome;
    Point<double, 3> hit;
    Point<double, 3> layout;
    bool isInFront;
    Point<int, 2> pixel;
};

// clang-format off
inline constexpr Centric CENTRIC[] = {"""

CUSTOM_HEADER = """};
// clang-format on

/// A map file of one cell, and the resolution of the channel, which is another one than the file's.
// clang-format off
inline constexpr const char* MAP_TEXT = "%s";
// clang-format on
inline constexpr Point<int, 2> RESOLUTION{%d, %d};

/// A point each way.
struct CustomPlanar {
    Point<double, 2> channel;
    bool isOnScreen;
    Point<double, 3> toLayout;
    Point<double, 3> layout;
    bool isInPicture;
    Point<double, 2> toChannel;
};

// clang-format off
inline constexpr CustomPlanar CUSTOM_PLANAR[] = {"""


def main():
    print(HEADER)
    print("\n".join(planar_rows()))
    print(CENTRIC_HEADER % (braces(DOME_CENTRE), DOME_RADIUS))
    print("\n".join(centric_rows()))
    print(CUSTOM_HEADER % ((map_text(),) + RESOLUTION))
    print("\n".join(planar_map_rows()))
    print("};\n// clang-format on\n\n}  // namespace layoutMapRows")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""The search of the collimated layout map, written a second time: CollimatedSearches.h is what this prints.

    python3 collimated_search.py > CollimatedSearches.h

Pictures are made up: each is a formula from a picture point to a layout point, simple enough to give the same bits in
any language, and the tests put the same formulas in the place of eye, mirror and screen. Written down is every pixel
whose layout point was asked for, in order, the windows between the passes, and the answer; and of small pictures which
pixels do not find themselves when their own layout points are searched.
"""
import math
import sys

LARGEST = sys.float_info.max
ACCEPTED = 2.5e-7
ORIGIN = (0.0, 0.0, 0.0)


def smooth(u, v):
    return (2 * u - 1, v, 0.25 * u * v)


def folded(u, v):
    """Shows every point twice, left and right of the middle."""
    return (abs(2 * u - 1), v, 0.0)


def holed(u, v):
    """Rays through the hole miss the surface."""
    return None if 0.3 < u < 0.6 and v > 0.4 else smooth(u, v)


def missed(u, v):
    return None


def stepped(u, v):
    """Plateaus of equal points."""
    return (math.floor(8 * u) / 8, math.floor(8 * v) / 8, 0.0)


def distant(u, v):
    """So far away that the square of the distance is infinite."""
    return (1e200 * (u + 1), 1e200, 0.0)


def small(u, v):
    """Neighbouring pixels are nearer to each other than what is told apart."""
    return (0.004 * u, 0.004 * v, 0.0)


class Picture:
    """A channel whose points are shown by a formula; remembers what it was asked for."""

    def __init__(self, width, height, formula, cached):
        self.width, self.height, self.formula = width, height, formula
        self.cache = {} if cached else None
        self.asked = []

    def forward(self, x, y):
        self.asked.append((x, y))
        return self.formula(x / self.width, y / self.height)

    def point(self, x, y):
        """None for a pixel that is out of the search."""
        if self.cache is None:
            return self.forward(x, y) or ORIGIN
        place = y * self.width + x
        if place not in self.cache:
            shown = self.forward(x, y)
            if shown is None:
                return None
            self.cache[place] = shown
        return self.cache[place]

    def score(self, x, y, wanted):
        shown = self.point(x, y)
        if shown is None:
            return LARGEST
        dx, dy, dz = (w - s for w, s in zip(wanted, shown))
        return dx * dx + dy * dy + dz * dz


def first_best(pixels, picture, wanted):
    """The score and the pixel of the first one with the least score."""
    least, found = LARGEST, None
    for x, y in pixels:
        score = picture.score(x, y, wanted)
        if score < least:
            least, found = score, (x, y)
    return least, found


def narrowed(best, low, high, samples):
    at = samples.index(best)
    if best == high:
        return float(samples[at - 1]), float(best)
    if best != low:
        return float(samples[at - 1]), float(samples[at + 1])
    return float(best), float(samples[at + 1])


def search(picture, wanted):
    """The pixel or None, and the windows."""
    x0, x1, y0, y1 = 0.0, float(picture.width), 0.0, float(picture.height)
    windows = [(x0, x1, y0, y1)]
    while x1 - x0 >= 10.0 and y1 - y0 >= 10.0:
        across, up = int((x1 - x0) * 0.25), int((y1 - y0) * 0.25)
        columns = [int(x0) + i * across for i in range(4)] + [int(x1)]
        rows = [int(y0) + i * up for i in range(4)] + [int(y1)]
        least, found = first_best([(c, r) for r in rows for c in columns], picture, wanted)
        if found is None:
            return None, windows
        if least <= ACCEPTED:
            return found, windows
        x0, x1 = narrowed(found[0], x0, x1, columns)
        y0, y1 = narrowed(found[1], y0, y1, rows)
        windows.append((x0, x1, y0, y1))
    rest = [(x, y) for x in range(int(x0), math.ceil(x1)) for y in range(int(y0), math.ceil(y1))]
    least, found = first_best(rest, picture, wanted)
    return (found if least <= ACCEPTED else None), windows


def quoted(words):
    """A text in several lines, as C++ writes it."""
    lines, line = [], ""
    for word in words:
        if len(line) + len(word) > 112:
            lines.append(line)
            line = ""
        line += word + " "
    lines.append(line.rstrip())
    return "\n     ".join('"%s"' % line for line in lines)


def pixel(p):
    return "none" if p is None else "%d,%d" % p


def braces(values):
    return "{" + ", ".join(repr(float(v)) for v in values) + "}"


def searches():
    """Title, width, height, formula, cached, and what is searched on one and the same map, one after the other."""
    yield "a tenth of the way", 64, 48, smooth, False, [smooth(7 / 64, 5 / 48)]
    yield "the last pixels", 64, 48, smooth, False, [smooth(63 / 64, 47 / 48)]
    yield "the far corner is a sample", 64, 48, smooth, False, [smooth(1.0, 1.0)]
    yield "a sample in the middle ends the search", 64, 48, smooth, False, [smooth(32 / 64, 24 / 48)]
    yield "sizes that four does not divide", 107, 61, smooth, False, [smooth(58 / 107, 33 / 61), smooth(90 / 107, 58 / 61)]
    yield "too far from the nearest pixel", 64, 48, smooth, False, [tuple(c + 0.002 for c in smooth(20 / 64, 20 / 48))]
    yield "outside of the picture", 64, 48, smooth, False, [(-1.5, 0.5, 0.0), (3.0, 2.0, 0.0)]
    yield "not a number", 64, 48, smooth, False, [(math.nan, 0.5, 0.0)]
    yield "the first of two that are equally near", 64, 48, folded, False, [folded(13 / 64, 17 / 48), folded(0.5, 0.5)]
    yield "plateaus", 64, 48, stepped, False, [(0.375, 0.625, 0.0), (0.5, 0.5, 0.0), (1.0, 1.0, 0.0)]
    yield "misses are at the origin", 64, 48, holed, False, [ORIGIN, (0.001, 0.0, 0.0), smooth(40 / 64, 30 / 48)]
    yield "nothing but misses", 64, 48, missed, False, [ORIGIN, (0.1, 0.0, 0.0)]
    yield "infinitely far", 64, 48, distant, False, [(0.5, 0.5, 0.0)]
    yield "pixels that are not told apart", 64, 48, small, False, [(0.0011, 0.0017, 0.0), (0.0005, 0.0, 0.0)]
    yield "narrow", 9, 30, smooth, False, [smooth(4 / 9, 21 / 30), smooth(1.0, 0.5)]
    yield "low", 30, 9, smooth, False, [smooth(21 / 30, 4 / 9), smooth(0.5, 1.0)]
    yield "ten by ten", 10, 10, smooth, False, [smooth(0.3, 0.7), smooth(0.9, 0.9)]
    yield "one pixel", 1, 1, smooth, False, [smooth(0.0, 0.0), smooth(1.0, 1.0)]
    yield "no pixels", 0, 7, smooth, False, [ORIGIN]
    yield "a cache asks once", 64, 48, smooth, True, [smooth(7 / 64, 5 / 48)] * 2 + [smooth(9 / 64, 5 / 48)]
    yield "a cache and the far column", 12, 10, smooth, True, [smooth(1.0, 0.2), smooth(0.0, 0.3), smooth(0.0, 0.2)]
    yield "a cache filled from the left", 12, 10, smooth, True, [smooth(0.0, 0.3), smooth(1.0, 0.2), smooth(0.25, 0.5)]
    yield "a cache asks again for what it missed", 24, 16, holed, True, [smooth(0.5, 0.5), ORIGIN, smooth(0.75, 0.75)]
    yield "a cache of nothing but misses", 64, 48, missed, True, [ORIGIN, ORIGIN]
    yield "a cache of the infinitely far", 64, 48, distant, True, [(0.5, 0.5, 0.0)]


HEADER = """#pragma once

#include "Common/Point.h"

#include <limits>
#include <vector>

/// What collimated_search.py, which stands beside this file, has calculated; not to be changed by hand.
namespace collimatedSearches {

/// From a picture point to a layout point; false where there is none.
using Formula = bool (*)(double u, double v, Point<double, 3>& layout);

bool smooth(double u, double v, Point<double, 3>& layout);
bool folded(double u, double v, Point<double, 3>& layout);
bool holed(double u, double v, Point<double, 3>& layout);
bool missed(double u, double v, Point<double, 3>& layout);
bool stepped(double u, double v, Point<double, 3>& layout);
bool distant(double u, double v, Point<double, 3>& layout);
bool small(double u, double v, Point<double, 3>& layout);

/// One search on a map.
struct Step {
    Point<double, 3> wanted;
    const char* asked;    ///< the pixels whose layout points are asked for, in order
    const char* windows;  ///< without a cache: before each pass
    const char* answer;   ///< a pixel or "none"
};

/// Searches one after the other on one map.
struct Search {
    const char* title;
    int width;
    int height;
    Formula formula;
    bool isCached;
    std::vector<Step> steps;
};

/// Every pixel of a small picture, the far edges included, is searched by its own layout point, row by row.
struct Closure {
    int width;
    int height;
    Formula formula;
    const char* cache;  ///< "none", "new" (for each search) or "one" (for all of them)
    const char* lost;   ///< "pixel>answer" of all that do not find themselves
};

// clang-format off
inline const std::vector<Search> SEARCHES = {"""


def number(value):
    return "std::numeric_limits<double>::quiet_NaN()" if math.isnan(value) else repr(float(value))


def print_searches():
    for title, width, height, formula, cached, wanted_points in searches():
        picture = Picture(width, height, formula, cached)
        print('    {"%s", %d, %d, %s, %s, {' % (title, width, height, formula.__name__, str(cached).lower()))
        for wanted in wanted_points:
            picture.asked = []
            found, windows = search(picture, wanted)
            shown = " ".join("%d-%dx%d-%d" % w for w in windows)
            print('    {{%s},\n     %s,\n     "%s", "%s"},' % (", ".join(number(c) for c in wanted),
                  quoted([pixel(p) for p in picture.asked]), shown, pixel(found)))
        print("    }},")


def closure(width, height, formula, cache):
    one = Picture(width, height, formula, True)
    for y in range(height + 1):
        for x in range(width + 1):
            wanted = formula(x / width, y / height)
            if wanted is None:
                continue
            picture = one if cache == "one" else Picture(width, height, formula, cache == "new")
            found, _ = search(picture, wanted)
            if found != (x, y):
                yield "%d,%d>%s" % (x, y, pixel(found))


def print_closures():
    for width, height, formula in [(9, 7, smooth), (12, 10, smooth), (23, 17, smooth), (10, 31, smooth),
                                   (33, 33, smooth), (11, 10, folded), (23, 17, holed)]:
        for cache in ("none", "new", "one"):
            lost = list(closure(width, height, formula, cache))
            print('    {%d, %d, %s, "%s",\n     %s},' % (width, height, formula.__name__, cache, quoted(lost)))


def main():
    print(HEADER)
    print_searches()
    print("};\n\ninline const std::vector<Closure> CLOSURES = {")
    print_closures()
    print("};\n// clang-format on\n\n}  // namespace collimatedSearches")


if __name__ == "__main__":
    main()

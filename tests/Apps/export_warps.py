#!/usr/bin/python3
"""Interpolates the nodes of an export as a player does, and compares with what its pixels show.

usage: export_warps.py FOLDER

Each view has warps in the formats obj, mesh and pfm. At random pixels, what lies between the corners of the triangle of the OBJ around
the middle of the pixel, and between the four nodes of the cell of the mesh, has to be what the float map states there, to within the
error that the manifest states, in pixels of the input. A pixel that is mapped may lie in no triangle only where the manifest counts
what is left out. Exits with 1 otherwise.
"""
import json
import math
import random
import struct
import sys

SAMPLES = 400
# The float map has 32-bit numbers.
ROUNDING = 1e-6


def read_pfm(name):
    with open(name, "rb") as file:
        assert file.readline() == b"PF\n"
        width, height = map(int, file.readline().split())
        assert float(file.readline()) < 0
        numbers = struct.unpack("<%df" % (3 * width * height), file.read())
    return width, height, numbers


def read_obj(name):
    places, inputs, faces = [], [], []
    with open(name, encoding="ascii") as file:
        for line in file:
            words = line.split()
            if words[0] == "v":
                places.append((float(words[1]), float(words[2])))
                assert words[3] == "0"
            elif words[0] == "vt":
                inputs.append((float(words[1]), float(words[2])))
            elif words[0] == "f":
                corners = [tuple(int(number) - 1 for number in word.split("/")) for word in words[1:]]
                assert len(corners) == 3
                faces.append([(places[v], inputs[t]) for v, t in corners])
    return faces


def in_face(face, x, y):
    """The place in the input; None outside of the triangle."""
    (a, ua), (b, ub), (c, uc) = face
    area = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])
    if area <= 0:
        assert area > -1e-12, "clockwise"
        return None
    p = ((b[0] - x) * (c[1] - y) - (b[1] - y) * (c[0] - x)) / area
    q = ((c[0] - x) * (a[1] - y) - (c[1] - y) * (a[0] - x)) / area
    r = 1 - p - q
    if min(p, q, r) < -1e-9:
        return None
    return tuple(p * ua[i] + q * ub[i] + r * uc[i] for i in range(2))


class Index:
    """Which triangles come into question at a place."""

    CELLS = 40

    def __init__(self, faces, aspect):
        self.aspect = aspect
        self.cells = {}
        for face in faces:
            xs = [self.cell(place[0], aspect) for place, _ in face]
            ys = [self.cell(place[1], 1) for place, _ in face]
            for x in range(min(xs), max(xs) + 1):
                for y in range(min(ys), max(ys) + 1):
                    self.cells.setdefault((x, y), []).append(face)

    def cell(self, place, reach):
        return int(min(max((place / reach + 1) / 2 * self.CELLS, 0), self.CELLS - 1))

    def at(self, x, y):
        for face in self.cells.get((self.cell(x, self.aspect), self.cell(y, 1)), []):
            found = in_face(face, x, y)
            if found:
                return found
        return None


def read_mesh(name):
    with open(name, encoding="ascii") as file:
        assert file.readline() == "2\n"
        columns, rows = map(int, file.readline().split())
        nodes = [tuple(map(float, file.readline().split())) for _ in range(columns * rows)]
        assert file.readline().startswith("pixels ")
    return columns, rows, nodes


def in_mesh(mesh, x, y):
    """Between the four nodes of a cell; x, y are 0 to 1. None where one of them is not used."""
    columns, rows, nodes = mesh
    column = min(int(x * (columns - 1)), columns - 2)
    row = min(int(y * (rows - 1)), rows - 2)
    across, up = x * (columns - 1) - column, y * (rows - 1) - row
    corners = [nodes[(row + j) * columns + column + i] for j in range(2) for i in range(2)]
    if any(corner[4] < 0 for corner in corners):
        return None
    shares = [(1 - across) * (1 - up), across * (1 - up), (1 - across) * up, across * up]
    return tuple(sum(share * corner[2 + k] for share, corner in zip(shares, corners)) for k in range(2))


def distance(view, a, b):
    """In pixels of the input."""
    width, height = view["input"]["pixels"]
    du, dv = a[0] - b[0], a[1] - b[1]
    if view["input"]["wrapsAround"]:
        du = (du - round(du)) * math.cos(math.pi * (b[1] - 0.5))
    return math.hypot(du * width, dv * height)


def check(view, folder, error):
    files = {file["kind"]: folder + "/" + file["name"] for file in view["files"]}
    width, height, numbers = read_pfm(files["pfm"])
    triangles = Index(read_obj(files["obj"]), width / height)
    mesh = read_mesh(files["mesh"])
    allowed = max(error, view["nodes"]["error"]["largest"]) + ROUNDING * max(view["input"]["pixels"])
    pole = view["nodes"]["leftOutAtPoles"] > 0
    worst = {"obj": 0.0, "mesh": 0.0}
    lost = {"obj": 0, "mesh": 0}
    mapped = 0
    for _ in range(SAMPLES):
        x, y = random.randrange(width), random.randrange(height)
        u, v, isMapped = numbers[3 * (y * width + x):3 * (y * width + x) + 3]
        if not isMapped:
            continue
        mapped += 1
        across, up = (x + 0.5) / width, (y + 0.5) / height
        shown = {"obj": triangles.at((2 * across - 1) * width / height, 2 * up - 1), "mesh": in_mesh(mesh, across, up)}
        for kind, place in shown.items():
            if place is None:
                lost[kind] += 1
            else:
                worst[kind] = max(worst[kind], distance(view, place, (u, v)))
    print("%s: %d pixels, off by %.3g (obj) and %.3g (mesh), lost %d and %d" %
          (view["channel"]["name"], mapped, worst["obj"], worst["mesh"], lost["obj"], lost["mesh"]))
    isCounted = view["nodes"]["error"]["leftOut"] > 0 or pole
    isMeshCounted = isCounted or view["nodes"]["leftOutOfGrids"] > 0
    return (mapped > SAMPLES // 4 and max(worst.values()) <= allowed and (lost["obj"] == 0 or isCounted) and
            (lost["mesh"] == 0 or isMeshCounted))


def main():
    random.seed(20261123)
    with open(sys.argv[1] + "/manifest.json", encoding="utf-8") as file:
        manifest = json.load(file)
    results = [check(view, sys.argv[1], manifest["error"]) for view in manifest["views"]]
    return 0 if results and all(results) else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/python3
"""Sees the points of an export through its matrices, and compares with its warps.

usage: export_frusta.py FOLDER

Each view has a frustum, or those of the six faces of a cube, and warps in the formats pfm, pfm3d and png16. A place on the screen, seen
through the view matrix and the projection matrix of the manifest, has to land where the warps of its pixel say, within a millionth
of the picture, or for png16 within its step. The axes of the engine are written down here once more. Exits with 1 and the worst
place otherwise.
"""
import json
import math
import struct
import sys
import zlib

STRIDE = 5

# What x right, y forward, z up of the display is in an engine.
ENGINE = {
    ("z-up", "right"): lambda x, y, z: (x, y, z),
    ("z-up", "left"): lambda x, y, z: (y, x, z),
    ("y-up", "right"): lambda x, y, z: (x, z, -y),
    ("y-up", "left"): lambda x, y, z: (x, z, y),
}
DEPTHS = {"opengl": (-1, 1), "direct3d": (0, 1), "reversed-z": (1, 0)}


def read_pfm(name):
    with open(name, "rb") as file:
        assert file.readline() == b"PF\n"
        width, height = map(int, file.readline().split())
        assert float(file.readline()) < 0
        numbers = struct.unpack("<%df" % (3 * width * height), file.read())
    return width, height, lambda x, y: numbers[3 * (y * width + x):3 * (y * width + x) + 3]


def read_png16(name):
    """Without a library: the rows of the file stand from the top, here they are counted from the bottom."""
    with open(name, "rb") as file:
        data = file.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    place, packed = 8, b""
    while place < len(data):
        size, kind = struct.unpack(">I4s", data[place:place + 8])
        body = data[place + 8:place + 8 + size]
        if kind == b"IHDR":
            width, height, bits, colours, _, _, interlace = struct.unpack(">IIBBBBB", body)
            assert (bits, colours, interlace) == (16, 2, 0)
        elif kind == b"IDAT":
            packed += body
        place += size + 12
    raw = zlib.decompress(packed)
    stride = 6 * width
    rows, before = [], bytes(stride)
    for y in range(height):
        kind = raw[y * (stride + 1)]
        row = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            left = row[i - 6] if i >= 6 else 0
            up = before[i]
            corner = before[i - 6] if i >= 6 else 0
            if kind == 1:
                row[i] = (row[i] + left) & 255
            elif kind == 2:
                row[i] = (row[i] + up) & 255
            elif kind == 3:
                row[i] = (row[i] + (left + up) // 2) & 255
            elif kind == 4:
                guess = left + up - corner
                near = min((abs(guess - left), 0, left), (abs(guess - up), 1, up), (abs(guess - corner), 2, corner))
                row[i] = (row[i] + near[2]) & 255
        rows.append(bytes(row))
        before = bytes(row)
    return lambda x, y: struct.unpack(">3H", rows[height - 1 - y][6 * x:6 * x + 6])


def through(matrix, point):
    return [sum(matrix[4 * row + column] * point[column] for column in range(4)) for row in range(4)]


def check_stand(frustum, eye, clip, convention):
    """The frustum is seen from the eye of its view, and has its planes where the convention has them."""
    assert all(abs(frustum["position"][i] - eye[i]) < 1e-12 for i in range(3)), "another eye"
    for distance, depth in zip((convention["near"], convention["far"]), DEPTHS[convention["depth"]]):
        seen = clip(frustum, *(frustum["position"][i] + distance * frustum["forward"][i] for i in range(3)))
        assert seen[3] > 0 and abs(seen[2] / seen[3] - depth) < 1e-6, ("depth", distance, seen)


def worst_of(view, convention, folder):
    faces = view["input"]["faces"]
    frusta = [face["frustum"] for face in faces] if faces else [view["input"]["frustum"]]
    files = {file["kind"]: folder + "/" + file["name"] for file in view["files"]}
    width, height, places = read_pfm(files["pfm"])
    assert [width, height] == view["channel"]["pixels"]
    points = read_pfm(files["pfm3d"])[2]
    steps = read_png16(files["png16"])
    engine = ENGINE[(convention["world"], convention["handed"])]

    def clip(frustum, x, y, z):
        return through(frustum["projectionMatrix"], through(frustum["viewMatrix"], list(engine(x, y, z)) + [1.0]))

    for frustum in frusta:
        check_stand(frustum, view["eye"], clip, convention)
    worst, count = 0.0, 0
    for y in range(0, height, STRIDE):
        for x in range(0, width, STRIDE):
            u, v, mapped = places(x, y)
            point = points(x, y)
            if mapped == 0:
                assert u == -1 and v == -1
                continue
            assert not any(math.isnan(part) for part in point)
            # The faces stand beside each other.
            face = min(int(u * len(frusta)), len(frusta) - 1) if len(frusta) > 1 else 0
            seen = clip(frusta[face], *point)
            assert seen[3] > 0, "a point is seen ahead"
            at = [(seen[i] / seen[3] + 1) / 2 for i in range(2)]
            at[0] = (face + at[0]) / len(frusta)
            worst = max(worst, abs(at[0] - u), abs(at[1] - v))
            count += 1
            red, green, blue = steps(x, y)
            assert blue == 65535
            assert abs(red / 65535 - at[0]) < 0.5 / 65535 + 1e-6 and abs(green / 65535 - at[1]) < 0.5 / 65535 + 1e-6
    return worst, count


def main():
    folder = sys.argv[1]
    with open(folder + "/manifest.json", encoding="utf-8") as file:
        manifest = json.load(file)
    assert manifest["views"]
    for view in manifest["views"]:
        worst, count = worst_of(view, manifest["convention"], folder)
        print("%s: %d places, the worst off by %.3g of the picture" % (view["channel"]["name"], count, worst))
        if count < 100 or not worst < 1e-6:
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

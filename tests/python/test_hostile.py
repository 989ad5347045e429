"""Every call with everything that is none of its arguments: the family of exceptions, or a result without nonsense."""

import collections.abc
import dataclasses
import datetime
import decimal
import fractions

import numpy as np
import pytest
import screenmanager
from screenmanager import Blend, Channel, ControlPoints, Convention, Display, Input, MeasuredPoints, Screen, Surface

from conftest import example

TEXT = example("spherical-dome").read_bytes()
ID = "020000000501"


class Raised(Exception):
    """What an object of a script raises in its own methods; may come out as it is."""


class Bomb:
    """Raises whatever is done with it."""

    def _explode(self, *_, **__):
        raise Raised

    __len__ = __iter__ = __getitem__ = __float__ = __int__ = __index__ = __bool__ = __str__ = __array__ = _explode
    __fspath__ = __eq__ = __lt__ = __contains__ = _explode
    __hash__ = object.__hash__


class Endless:
    """A sequence whose length is a lie."""

    def __len__(self):
        return 2**40

    def __getitem__(self, index):
        return 0.5


def nested():
    endless = []
    endless.append(endless)
    return endless


VALUES = [
    None, True, False, 0, 5, -1, 2**31, 2**70, -2**70, 1.5, float("nan"), float("inf"), 1e300, 5e-324, 1j, "", "x", "\ud800",
    "a\0b", b"", b"x", b"\xff", b"a\0b", bytearray(b"x"), memoryview(b"x"), [], (), {}, {"x": 1}, set(), [None], [[]], ["x"],
    [1], [1, 2], [1, 2, 3], [1, 2, 3, 4], ["x", "y"], [[1, 2], [3]], ("x", 2, 3), [float("nan")] * 3, [1e300] * 3,
    [float("inf")] * 2, range(3), iter([1, 2, 3]), nested(), object, object(), Bomb(), len, ..., NotImplemented,
    decimal.Decimal("1.5"), fractions.Fraction(1, 3), datetime.date(2026, 1, 1), ValueError("x"),
    np.float32(2), np.float64("nan"), np.int64(3), np.bool_(True), np.str_("x"), np.datetime64("2026-01-01"), np.longdouble("1e4000"),
    np.zeros(0), np.zeros(2), np.zeros(3), np.zeros(4), np.array(5.0), np.array("x"), np.array(["x", "y"]), np.array([]),
    np.array(None), np.array([b"x"]), np.zeros((2, 2)), np.zeros((0, 2)), np.zeros((0, 3)), np.zeros((2, 3)), np.zeros((2, 0, 3)),
    np.zeros((1,) * 31 + (3,)), np.full((4, 3), np.nan), np.full((2, 3), 1e300), np.full((2, 2), -1e300), np.full((2, 3), 1e-320),
    np.full((2, 3), 1e12), np.zeros((2, 3), dtype=bool), np.zeros((2, 3), dtype=np.float16), np.zeros((2, 3), dtype=">i2"),
    np.zeros((2, 3), dtype=[("a", "f8")]), np.ma.masked_all((2, 3)), np.ma.masked, np.zeros((1, 3)).view(np.recarray),
    np.broadcast_to(0.5, (2, 3)), np.broadcast_to(0.25, (2, 2)), Input(), Blend(), Convention(),
    MeasuredPoints(ID, [(0.5, 0.5)], [(0, 5, 1)]), MeasuredPoints(Bomb(), Bomb(), Bomb()), MeasuredPoints(5, None, "x"),
    MeasuredPoints(ID, np.zeros((0, 2)), np.zeros((0, 3))), ControlPoints(np.eye(3), np.eye(3)), ControlPoints(None, None),
]

MEASURED = MeasuredPoints(ID, [(0.2, 0.2), (0.8, 0.2), (0.8, 0.8), (0.2, 0.8)],
                          [(-3, 4, 1), (-2, 4.5, 1), (-2, 4, 2), (-3, 3.5, 2)])

COVERAGE = Display.load(example("planar-wall")).coverage()

# Calls that are right, by their arguments; a list is of the calls with another argument.
CALLS = {
    "load": (lambda d, path: Display.load(path), {"path": str(example("dome"))}),
    "parse": (lambda d, text, name: Display.parse(text, name), {"text": TEXT, "name": "display.xml"}),
    "save": (lambda d, path: d.save(path), {"path": "saved.xml"}),
    "moved_to": (lambda d, path: d.moved_to(path), {"path": "moved.xml"}),
    "channel": (lambda d, name: d.channel(name), {"name": "Left"}),
    "add_channel": (lambda d, id: d.add_channel(id), {"id": "new"}),
    "rename_channel": (lambda d, id, new: d.rename_channel(id, new), {"id": ID, "new": "new"}),
    "move_channel": (lambda d, id, by: d.move_channel(id, by), {"id": ID, "by": 1}),
    "remove_channel": (lambda d, id: d.remove_channel(id), {"id": ID}),
    "targets": (lambda d, **a: d.targets(**a), {"columns": 3, "rows": 2, "samples_per_edge": 2}),
    "coverage": (lambda d, pieces: d.coverage(pieces), {"pieces": False}),
    "part_lit_by_at_least": (lambda d, n: COVERAGE.part_lit_by_at_least(n), {"n": 1}),
    "check": (lambda d, **a: d.check(**a), {"quick": True, "allowed": ()}),
    "fit": (lambda d, measured, **a: d.fit(measured, **a),
            {"measured": MEASURED, "unit": None, "origin": None, "controls": (), "register": None, "channels": None,
             "solve": ["orientation"], "hold": (), "robust": True, "rejection": 4.0, "json": False}),
    "fit picture": (lambda d, **a: d.fit(dataclasses.replace(MEASURED, **a), solve=["orientation"]),
                    {"channel": ID, "picture": MEASURED.picture, "points": MEASURED.points, "set": ""}),
    "fit deviations": (lambda d, **a: d.fit(dataclasses.replace(MEASURED, **a), solve=["orientation"]),
                       {"deviations": (0.1, 0.1, 0.1), "picture_deviations": (0.1, 0.1)}),
    "fit covariances": (lambda d, **a: d.fit(dataclasses.replace(MEASURED, **a), solve=["orientation"]),
                        {"covariances": np.eye(3)}),
    "fit controls": (lambda d, **a: d.fit(MEASURED, controls=ControlPoints(**a), register="rigid", solve=["orientation"]),
                     {"measured": np.eye(3), "known": np.eye(3), "set": ""}),
    "apply": (lambda d, fit, force: d.apply(fit, force), {"fit": 5, "force": False}),
    "export": (lambda d, folder, **a: d.export(folder, **a),
               {"folder": "player", "input": "equirectangular", "convention": None, "formats": ("mesh",),
                "channels": ["Left"], "eyes": None, "nodes": (3, 3), "error": 2.0, "wrap": False, "test_pictures": False,
                "content": None, "blend": None, "force": True}),
    "to_layout": (lambda d, p: d.channels[0].to_layout(p), {"p": (0.5, 0.5)}),
    "from_layout": (lambda d, p, cache: d.channels[0].from_layout(p, cache), {"p": (0, 5, 1), "cache": False}),
    "to_screen": (lambda d, p: d.channels[0].to_screen(p), {"p": (0.5, 0.5)}),
    "from_screen": (lambda d, p: d.channels[0].from_screen(p), {"p": (0, 5, 1)}),
    "warp": (lambda d, **a: d.channels[0].warp(**a), {"panorama": "fisheye", "nodes": (3, 2)}),
    "outline": (lambda d, n: d.channels[0].outline(n), {"n": 2}),
    "player_input": (lambda d, input, **a: d.channels[0].player_input(input, **a),
                     {"input": "frustum", "eye": None, "convention": None}),
    "player_warp": (lambda d, input, **a: d.channels[0].player_warp(input, **a),
                    {"input": "equirectangular", "eye": None, "nodes": (3, 2), "error": 2.0, "wrap": False, "points": True,
                     "triangles": True, "convention": None}),
    "Input": (lambda d, kind, **a: d.channels[0].player_warp(Input(kind, **a), nodes=(3, 2)),
              {"kind": "fisheye", "direction": (0, 1, 0), "roll": 0.1, "aperture": 3.0, "size": (64, 64)}),
    "frustum": (lambda d, margin: d.channels[0].player_input(Input(margin=margin)), {"margin": 0.02}),
    "Convention": (lambda d, **a: d.channels[0].player_input(convention=Convention(**a)),
                   {"depth": "opengl", "world": "z-up", "handed": "right", "near": 0.1, "far": 100.0}),
    "Blend": (lambda d, **a: Blend(**a), {"gamma": 2.2, "bits": (16,), "alpha": False, "black_level": 1.0}),
    "intersect": (lambda d, o, v: d.screen.intersect(o, v), {"o": (0, 0, 1), "v": (0, 1, 0)}),
    "map_into_3d": (lambda d, st, further: d.screen.map_into_3d(st, further), {"st": (0.5, 0.5), "further": False}),
    "normals": (lambda d, p: d.screen.normals(p), {"p": (0, 5, 1)}),
    "Channel": (lambda d, display, id: Channel(display, id).position, {"display": Display.parse(TEXT), "id": ID}),
    "Surface": (lambda d, display, part: Surface(display, part).hash,
                {"display": Display.parse(TEXT), "part": "content"}),
    "Screen": (lambda d, display: Screen(display).hash, {"display": Display.parse(TEXT)}),
    "TargetData": (lambda d, display: screenmanager.TargetData(display).type, {"display": Display.parse(TEXT)}),
}
for owner, names in (("channel", "name device projection_model map_file orientation frustum screen_area layout position "
                                 "resolution"),
                     ("screen", "eye_point centre orientation radius width height azimuth elevation rails"),
                     ("target_data", "position mirror_orientation mirror_position mirror_radius yaw_table pitch_table")):
    for name in names.split():
        def put(d, value, owner=owner, name=name):
            thing = d.channels[0] if owner == "channel" else getattr(d, owner)
            setattr(thing, name, value)
            return getattr(thing, name)

        CALLS[f"{owner}.{name}"] = put, {"value": 5}


def numbers_in(result):
    """All arrays and floats of a result."""
    if isinstance(result, np.ndarray):
        yield result
    elif isinstance(result, float):
        yield np.array(result)
    elif dataclasses.is_dataclass(result):
        for field in dataclasses.fields(result):
            yield from numbers_in(getattr(result, field.name))
    elif isinstance(result, (tuple, list)):
        for part in result:
            yield from numbers_in(part)


def require_sense(result, label):
    for numbers in numbers_in(result):
        if numbers.dtype.kind == "f":
            assert not np.isinf(numbers).any(), label
    masks = [getattr(result, name) for name in ("mask", "hit") if isinstance(getattr(result, name, None), np.ndarray)]
    for mask in masks:
        for name in ("points", "places", "distances", "normals"):
            numbers = getattr(result, name, None)
            if isinstance(numbers, np.ndarray) and numbers.shape[:mask.ndim] == mask.shape and not hasattr(result, "lit"):
                assert np.isfinite(numbers[mask]).all(), label


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("name", CALLS)
def test_a_call_with_a_wrong_argument_raises_one_of_the_family(name, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    call, right = CALLS[name]
    refused = 0
    for argument in right:
        for number, value in enumerate(VALUES):
            if isinstance(value, collections.abc.Iterator):
                value = iter([1, 2, 3])
            display = Display.parse(TEXT, example("spherical-dome"))
            before = display.text
            label = f"{name}: {argument} = VALUES[{number}], {type(value).__name__}"
            try:
                result = call(display, **{**right, argument: value})
            except (screenmanager.Error, MemoryError) as fault:
                refused += 1
                assert str(fault), label
                assert display.text == before, label + ": something was changed all the same"
            except Raised:
                assert isinstance(value, (Bomb, MeasuredPoints)), label
                assert display.text == before, label
            except BaseException as fault:
                raise AssertionError(f"{label}: {fault!r}") from fault
            else:
                require_sense(result, label)
    assert refused > len(VALUES) / 3


def test_every_public_call_is_among_them():
    known = " ".join(CALLS)
    for kind in (Display, Channel, Screen, Surface, screenmanager.TargetData, screenmanager.Coverage):
        for name, value in vars(kind).items():
            is_settable = isinstance(value, property) and value.fset
            has_arguments = callable(value) and value.__code__.co_argcount > 1 if hasattr(value, "__code__") else False
            if not name.startswith("_") and (is_settable or has_arguments or isinstance(value, classmethod)):
                assert name in known, f"{kind.__name__}.{name}"

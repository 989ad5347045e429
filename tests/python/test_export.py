"""Exports are those of the program, byte by byte; warps and frusta as arrays are what stands in the files."""

import json
import os
import pathlib
import pickle

import numpy as np
import pytest
import screenmanager

from conftest import SOURCES, assert_same_bits, example, program

# Every type of display.
DISPLAYS = ["planar-wall", "warped-wall", "spherical-dome", "collimated", "mesh-rays", "lens-cylinder"]
FACES = ["right", "left", "front", "back", "top", "bottom"]


def small(name, folder):
    """An example with small pictures, in a folder of its own."""
    display = screenmanager.Display.load(example(name)).moved_to(folder / "display.xml")
    # A map file is made for pictures of one size.
    if name != "warped-wall":
        for number, channel in enumerate(display.channels):
            channel.resolution = (60 + number, 40)
    display.save()
    return display


def contents(folder):
    return {path.name: path.read_bytes() for path in pathlib.Path(folder).iterdir()}


def assert_same_folder(ours, theirs):
    ours, theirs = contents(ours), contents(theirs)
    manifests = [json.loads(files.pop("manifest.json")) for files in (ours, theirs)]
    assert sorted(ours) == sorted(theirs)
    for name, data in ours.items():
        assert data == theirs[name], name
    assert manifests[0] == manifests[1]
    return manifests[0]


@pytest.mark.parametrize("name", DISPLAYS)
def test_a_folder_is_the_one_that_the_program_writes(name, tmp_path):
    display = small(name, tmp_path)
    first = display.channels[0].name
    program("export", tmp_path / "display.xml", "-o", tmp_path / "theirs", "--channel", first, "--quiet", "--jobs", "1",
            "--format", "mesh", "--format", "pfm", "--test-pictures", "--nodes", "9x7")
    manifest = display.export(tmp_path / "ours", channels=[first], formats=["mesh", "pfm"], nodes=(9, 7),
                              test_pictures=True)
    assert assert_same_folder(tmp_path / "ours", tmp_path / "theirs") == manifest
    assert len(manifest["views"]) == 1 and len(manifest["views"][0]["files"]) == 5


OPTIONS = [
    ({"input": screenmanager.Input("fisheye", direction=(0, 0.1, 1), roll=0.5, aperture=3.5, size=(512, 512)),
      "formats": ["obj", "png16", "pfm3d"], "eyes": [(-0.03, 0, 1.2), (0.03, 0, 1.2)]},
     ["--input", "fisheye", "--axis", "0,0.1,1", "--roll", "28.64788975654116", "--aperture", "200.53522829578813",
      "--size", "512x512", "--format", "obj", "--format", "png16", "--format", "pfm3d", "--eye=-0.03,0,1.2", "--eye",
      "0.03,0,1.2"]),
    ({"input": "equirectangular", "formats": ["obj"], "wrap": True, "error": 0.5, "nodes": None},
     ["--input", "equirectangular", "--format", "obj", "--wrap", "--error", "0.5"]),
    ({"input": "cube", "formats": ["mesh"], "nodes": (12, 8), "convention":
      screenmanager.Convention("reversed-z", "y-up", "left", 0.25, 500)},
     ["--input", "cube", "--nodes", "12x8", "--convention", "reversed-z", "--world", "y-up", "--handed", "left", "--near",
      "0.25", "--far", "500"]),
    ({"nodes": (5, 4), "blend": None}, ["--nodes", "5x4", "--no-blend"]),
    ({"nodes": (5, 4), "blend": screenmanager.Blend("srgb", bits=(8,), alpha=True)},
     ["--nodes", "5x4", "--blend-gamma", "srgb", "--blend-bits", "8", "--alpha"]),
    ({"nodes": (5, 4), "blend": screenmanager.Blend(1.8, (8, 16), black_level={"Left": 0.1, "Centre": 0.2, "Right": 0.3,
                                                                              "Top": 0})},
     ["--nodes", "5x4", "--blend-gamma", "1.8", "--black-level", "Left=0.1", "--black-level", "Centre=0.2",
      "--black-level", "0", "--black-level", "Right=0.3"]),
    ({"nodes": (5, 4), "blend": screenmanager.Blend(black_level=0.25)}, ["--nodes", "5x4", "--black-level", "0.25"]),
    ({"input": screenmanager.Input(margin=0.1), "convention": screenmanager.Convention(depth="direct3d")},
     ["--margin", "10", "--convention", "direct3d"]),
]


@pytest.mark.parametrize(("ours", "theirs"), OPTIONS)
def test_options_mean_what_they_mean_to_the_program(ours, theirs, tmp_path):
    display = small("spherical-dome", tmp_path)
    program("export", tmp_path / "display.xml", "-o", tmp_path / "theirs", "--quiet", *theirs)
    manifest = display.export(tmp_path / "ours", **ours)
    assert assert_same_folder(tmp_path / "ours", tmp_path / "theirs") == manifest
    assert len(manifest["views"]) == len(display.channels) * len(ours.get("eyes", [0]))


def test_blends_are_refused_by_name(tmp_path):
    Blend = screenmanager.Blend
    for make, text in ((lambda: Blend(0.1), "gamma: expected a number from 0.2 to 5 or srgb, found 0.1"),
                       (lambda: Blend("sRGB"), "gamma: expected a number from 0.2 to 5 or srgb, found 'sRGB'"),
                       (lambda: Blend(float("nan")), "gamma: expected a finite number"),
                       (lambda: Blend(bits=(12,)), "bits: expected 16, 8 or both"),
                       (lambda: Blend(bits=(8, 8)), "bits: expected 16, 8 or both"),
                       (lambda: Blend(bits=()), "bits: expected 16, 8 or both"),
                       (lambda: Blend(bits=8), "bits: expected a tuple of 16 and 8, found int"),
                       (lambda: Blend(black_level=100), "black_level: expected per cent from 0 to less than 100"),
                       (lambda: Blend(black_level={"Left": -1}), "black_level: expected per cent of Left from 0"),
                       (lambda: Blend(black_level="1"), "black_level: expected a number, found str")):
        with pytest.raises(screenmanager.Error) as caught:
            make()
        assert text in str(caught.value)
    display = small("spherical-dome", tmp_path)
    for blend, text in ((2.2, "blend: expected a Blend or None, found float"),
                        (Blend(black_level={"Nobody": 1}), '"Nobody" is no channel'),
                        (Blend(black_level={"Left": 1, "020000000501": 2}), "two black levels are stated"),
                        (Blend(black_level={"Left": 1}), "has no black level")):
        with pytest.raises(screenmanager.Error) as caught:
            display.export(tmp_path / "refused", blend=blend)
        assert text in str(caught.value)
    assert not (tmp_path / "refused").exists()


def test_a_content_is_bent_as_the_program_bends_it(tmp_path):
    display = small("planar-wall", tmp_path)
    display.export(tmp_path / "pictures", test_pictures=True)
    picture = next((tmp_path / "pictures").glob("*.test.png"))
    program("export", tmp_path / "display.xml", "-o", tmp_path / "theirs", "--quiet", "--input", "screen", "--content",
            picture)
    manifest = display.export(tmp_path / "ours", input="screen", content=picture)
    assert assert_same_folder(tmp_path / "ours", tmp_path / "theirs") == manifest
    assert manifest["files"][-1]["name"] == str(picture)


def mesh_of(path):
    """Nodes (rows, columns, 5) of a mesh file: x, y, u, v, brightness."""
    lines = path.read_text(encoding="ascii").splitlines()
    columns, rows = map(int, lines[1].split())
    return np.array([line.split() for line in lines[2:2 + columns * rows]], dtype=float).reshape(rows, columns, 5)


@pytest.mark.parametrize("name", DISPLAYS)
@pytest.mark.parametrize("nodes", [(9, 7), None])
def test_nodes_are_those_of_the_mesh(name, nodes, tmp_path):
    display = small(name, tmp_path)
    channel = display.channels[0]
    kind = "screen" if name in ("planar-wall", "warped-wall") else "frustum"
    warp = channel.player_warp(kind, nodes=nodes, triangles=True)
    manifest = display.export(tmp_path / "out", input=kind, channels=[channel.id], nodes=nodes, formats=["mesh", "obj"])
    stated = manifest["views"][0]["nodes"]
    rows, columns = warp.mask.shape
    assert stated["size"] == [columns, rows] and (nodes is None or nodes == (columns, rows))
    assert stated["mapped"] == warp.lit.sum() > 0 and stated["continued"] == (warp.mask & ~warp.lit).sum()
    assert (stated["cellsAtSeams"], stated["leftOutAtPoles"]) == (warp.cells_at_seams, warp.left_out_at_poles)
    assert stated["error"] == {"largest": warp.error.largest, "largestOfGrid": warp.error.largest_of_grid,
                               "places": warp.error.places, "beyond": warp.error.beyond, "leftOut": warp.error.left_out}
    assert_same_bits(warp.picture[0, :, 0], np.arange(columns) / (columns - 1))
    assert_same_bits(warp.picture[:, 0, 1], np.arange(rows) / (rows - 1))
    mesh = mesh_of(next((tmp_path / "out").glob("*.mesh")))
    used = mesh[..., 4] == 1
    assert used.any() and warp.mask[used].all(), "a mesh may leave out more: cells that are broken"
    assert_same_bits(warp.places[used], mesh[..., 2:4][used])
    assert np.isnan(warp.places[~warp.mask]).all()
    # Triangles, as the OBJ has them.
    text = next((tmp_path / "out").glob("*.obj")).read_text(encoding="ascii").splitlines()
    vt = np.array([line.split()[1:3] for line in text if line.startswith("vt")], dtype=float)
    corners = np.array([[part.split("/")[1] for part in line.split()[1:]] for line in text if line.startswith("f")],
                       dtype=int) - 1
    assert_same_bits(warp.triangles.places, vt[corners])
    one, two, three = np.moveaxis(warp.triangles.picture, 1, 0)
    assert (np.cross(two - one, three - one) > 0).all(), "counter-clockwise"
    assert warp.triangles.faces.shape == (len(corners),) and warp.points is None


def pfm_of(path):
    header, size, scale, data = path.read_bytes().split(b"\n", 3)
    width, height = map(int, size.split())
    assert (header, scale) == (b"PF", b"-1.0")
    return np.frombuffer(data, "<f4").reshape(height, width, 3)


@pytest.mark.parametrize("name", DISPLAYS)
def test_pixels_are_those_of_the_float_maps(name, tmp_path):
    display = small(name, tmp_path)
    channel = display.channels[0]
    kind = "screen" if name in ("planar-wall", "warped-wall") else "equirectangular"
    warp = channel.player_warp(kind, nodes="pixels", points=True, triangles=True)
    display.export(tmp_path / "out", input=kind, channels=[channel.name], formats=["pfm", "pfm3d"])
    assert warp.mask.shape == (channel.resolution[1], channel.resolution[0]) and warp.error is None
    places = pfm_of(next((tmp_path / "out").glob("*[!s].pfm")))
    assert np.array_equal(places[..., 2] == 1, warp.lit)
    wrapped = warp.places[warp.lit]
    wrapped[:, 0] -= np.floor(wrapped[:, 0]) if kind == "equirectangular" else 0
    assert np.array_equal(places[warp.lit][:, :2], wrapped.astype(np.float32))
    points = pfm_of(next((tmp_path / "out").glob("*.points.pfm")))
    assert np.array_equal(points, warp.points.astype(np.float32), equal_nan=True)
    # The same places, through the maps of the channel.
    assert np.allclose(warp.points[warp.lit], channel.to_screen(warp.picture[warp.lit]).points, atol=1e-9)
    assert warp.triangles.picture.shape == (0, 3, 2)


def test_a_node_that_continues_what_is_lit_has_no_point():
    display = screenmanager.Display.load(example("lens-cylinder"))
    warps = [channel.player_warp("fisheye", nodes=(9, 7), points=True) for channel in display.channels]
    continuing = [warp for warp in warps if (warp.mask & ~warp.lit).any()]
    assert continuing, "the centre projector passes above the wall"
    for warp in continuing:
        assert np.isnan(warp.points[~warp.lit]).all() and np.isfinite(warp.points[warp.lit]).all()


AXES = {("z-up", "right"): [(1, 0, 0), (0, 1, 0), (0, 0, 1)], ("z-up", "left"): [(0, 1, 0), (1, 0, 0), (0, 0, 1)],
        ("y-up", "right"): [(1, 0, 0), (0, 0, 1), (0, -1, 0)], ("y-up", "left"): [(1, 0, 0), (0, 0, 1), (0, 1, 0)]}
DEPTHS = {"opengl": (-1, 1), "direct3d": (0, 1), "reversed-z": (1, 0)}


@pytest.mark.parametrize("world", AXES)
@pytest.mark.parametrize("depth", DEPTHS)
@pytest.mark.parametrize("name", ["planar-wall", "spherical-dome", "mesh-rays"])
def test_a_point_seen_through_the_matrices_lands_where_the_warp_says(name, depth, world, tmp_path):
    channel = small(name, tmp_path).channels[0]
    convention = screenmanager.Convention(depth, *world, near=0.5, far=50)
    warp = channel.player_warp(nodes=(8, 6), points=True, convention=convention)
    frustum = warp.input.frustum
    points = warp.points[warp.lit] @ np.array(AXES[world]).T
    clip = np.column_stack([points, np.ones(len(points))]) @ (frustum.projection_matrix @ frustum.view_matrix).T
    assert np.allclose((clip[:, :2] / clip[:, 3:] + 1) / 2, warp.places[warp.lit], atol=1e-9) and len(points) > 0
    view = frustum.view
    for distance, expected in zip((0.5, 50), DEPTHS[depth]):
        x, y, z, w = frustum.projection_matrix @ frustum.view_matrix @ np.append(
            np.array(AXES[world]) @ (view.position + distance * view.forward), 1)
        assert z / w == pytest.approx(expected, abs=1e-9)
    assert np.allclose(np.tan(frustum.angles), frustum.tangents) and np.allclose(np.cross(view.right, view.forward), view.up)


def test_inputs_are_those_of_the_manifest(tmp_path):
    display = small("spherical-dome", tmp_path)
    for number, kind in enumerate(("frustum", "fisheye", "equirectangular", "cube")):
        views = display.export(tmp_path / str(number), input=kind, formats=["mesh"], nodes=(3, 3))["views"]
        for channel, stated in zip(display.channels, views):
            ours, theirs = channel.player_input(kind), stated["input"]
            assert (ours.kind, list(ours.size)) == (theirs["kind"], theirs["pixels"])
            assert (ours.wraps_around, ours.aperture) == (theirs["wrapsAround"], theirs["aperture"])
            assert ours.seen_in_mirror == stated["seenInMirror"]
            assert_same_view(ours.view, theirs["view"])
            frusta = [(ours.frustum, theirs["frustum"])] if kind == "frustum" else []
            if kind == "cube":
                assert list(ours.faces) == FACES == [face["name"] for face in theirs["faces"]]
                frusta = [(ours.faces[face["name"]], face["frustum"]) for face in theirs["faces"]]
            for frustum, of in frusta:
                assert_same_view(frustum.view, of)
                assert frustum.angles._asdict() == of["angles"] and frustum.tangents._asdict() == of["tangents"]
                assert frustum.view_matrix.ravel().tolist() == of["viewMatrix"]
                assert frustum.projection_matrix.ravel().tolist() == of["projectionMatrix"]
            assert (ours.frustum is None) == (kind != "frustum") and bool(ours.faces) == (kind == "cube")


def assert_same_view(ours, theirs):
    assert ours.position.tolist() == theirs["position"] and ours.orientation._asdict() == theirs["orientation"]
    for axis in ("right", "forward", "up"):
        assert getattr(ours, axis).tolist() == theirs[axis]


def test_a_collimated_display_is_seen_in_its_mirror():
    channel = screenmanager.Display.load(example("collimated")).channels[0]
    assert channel.player_input("fisheye").seen_in_mirror
    with pytest.raises(screenmanager.Error, match="mirror"):
        channel.player_input("fisheye", eye=(0, 0, 3))


def test_a_layout_has_no_view():
    fed = screenmanager.Display.load(example("planar-wall")).channels[0].player_input("layout")
    assert fed.view is None and fed.frustum is None and fed.faces == {} and fed.aperture is None


def test_cells_at_a_seam_are_cut_where_that_is_wanted(tmp_path):
    channel = small("closed-cylinder", tmp_path).channels[0]
    whole, cut = (channel.player_warp("equirectangular", nodes=(9, 7), triangles=True, wrap=wrap)
                  for wrap in (False, True))
    assert whole.triangles.places[..., 0].min() < 0 and whole.cells_at_seams == 0
    assert cut.cells_at_seams > 0 and 0 <= cut.triangles.places[..., 0].min() and cut.triangles.places[..., 0].max() <= 1
    assert len(cut.triangles.places) > len(whole.triangles.places)


def test_a_folder_appears_whole_or_not_at_all(tmp_path):
    display = small("planar-wall", tmp_path)
    target = tmp_path / "out"
    display.export(target, formats=["mesh"], nodes=(3, 3))
    before = contents(target)
    with pytest.raises(screenmanager.Error, match="exists"):
        display.export(target, formats=["obj"], nodes=(3, 3))
    assert contents(target) == before
    display.export(target, formats=["obj"], nodes=(3, 3), force=True)
    assert not any(name.endswith(".mesh") for name in contents(target))
    before = contents(target)
    # The second channel cannot be exported: none of them is.
    display.channels[1].screen_area = (2, 3, 2, 3)
    with pytest.raises(screenmanager.Error, match=display.channels[1].name):
        display.export(target, force=True)
    assert contents(target) == before
    (target / "mine.txt").write_text("mine", encoding="utf-8")
    with pytest.raises(screenmanager.Error, match="mine.txt"):
        display.export(target, force=True)
    with pytest.raises(screenmanager.Error, match="nowhere"):
        display.export("/nowhere/at/all")
    assert sorted(path.name for path in tmp_path.iterdir()) == ["display.xml", "out"]


def test_a_folder_has_the_mode_of_other_folders(tmp_path):
    display = small("planar-wall", tmp_path)
    (tmp_path / "usual").mkdir()
    display.export(tmp_path / "out", nodes=(3, 3))
    assert (tmp_path / "out").stat().st_mode == (tmp_path / "usual").stat().st_mode


def test_what_was_changed_is_what_is_exported(tmp_path):
    display = small("mesh-rays", tmp_path)
    before = display.export(tmp_path / "before", nodes=(3, 3))
    display.channels[0].position = np.add(display.channels[0].position, (0.1, 0, 0))
    after = display.export(tmp_path / "after", nodes=(3, 3))
    assert before["files"][0]["sha256"] != after["files"][0]["sha256"]
    assert before["files"][1:] == after["files"][1:] and len(after["files"]) > 1
    display.save()
    assert display.export(tmp_path / "saved", nodes=(3, 3)) == after
    schema = json.loads((SOURCES / "docs/schemas/export.schema.json").read_text(encoding="utf-8"))
    pytest.importorskip("jsonschema").validate(after, schema)


Input, Convention = screenmanager.Input, screenmanager.Convention


@pytest.mark.parametrize(("call", "kind", "text"), [
    (lambda d, c, f: c.player_warp("sphere"), "ArgumentError", "^input: expected one of frustum, fisheye, .* found sphere$"),
    (lambda d, c, f: c.player_warp(5), "ArgumentTypeError", "^input: expected an Input or the name of one, found int$"),
    (lambda d, c, f: Input(5), "ArgumentTypeError", "^kind: expected a text, found int$"),
    (lambda d, c, f: Input("fisheye", margin=0.1), "ArgumentError", "^margin: the input fisheye has none, only frustum$"),
    (lambda d, c, f: Input("screen", direction=(0, 1, 0)), "ArgumentError", "^direction: the input screen has none"),
    (lambda d, c, f: Input(aperture=3), "ArgumentError", "^aperture: the input frustum has none, only fisheye$"),
    (lambda d, c, f: Input(roll=np.nan), "ArgumentError", "^roll: expected a finite number, found nan$"),
    (lambda d, c, f: Input(roll="much"), "ArgumentTypeError", "^roll: expected a number, found str$"),
    (lambda d, c, f: Input(size=(0, 5)), "ArgumentError", "^size: expected pixels above 0, found 0$"),
    (lambda d, c, f: Input(size=5), "ArgumentTypeError", "^size: expected width and height, found int$"),
    (lambda d, c, f: Input(size=(2.5, 5)), "ArgumentTypeError", "^size: expected a whole number, found float$"),
    (lambda d, c, f: c.player_input(Input(size=(5, 2_000_000))), "Error", "size"),
    (lambda d, c, f: c.player_input(Input(direction=(0, np.nan, 0))), "ArgumentError",
     r"^direction\[1\]: expected a finite number, found nan$"),
    (lambda d, c, f: c.player_input(Input(direction=(0, 1))), "ArgumentError", "^direction: expected 3 numbers"),
    (lambda d, c, f: c.player_input(Input(direction=(0, 0, 0))), "Error", "direction|length"),
    (lambda d, c, f: c.player_input(Input("fisheye", aperture=7)), "Error", "aperture"),
    (lambda d, c, f: c.player_input(Input(margin=2)), "Error", "margin"),
    (lambda d, c, f: c.player_input("layout"), "Error", "layout"),
    (lambda d, c, f: c.player_input(eye=(0, np.inf, 0)), "ArgumentError", r"^eye\[1\]: expected a finite number, found inf$"),
    (lambda d, c, f: c.player_input(eye="here"), "ArgumentTypeError", "^eye: expected numbers"),
    (lambda d, c, f: c.player_input(convention="opengl"), "ArgumentTypeError", "^convention: expected a Convention"),
    (lambda d, c, f: Convention(near=0), "ArgumentError", "^near, far: expected 0 < near < far, found 0 and 1000.0$"),
    (lambda d, c, f: Convention(near=5, far=4), "ArgumentError", "^near, far: expected 0 < near < far"),
    (lambda d, c, f: Convention(far=np.inf), "ArgumentError", "^far: expected a finite number"),
    (lambda d, c, f: c.player_input(convention=Convention("vulkan")), "ArgumentError",
     "^depth: expected one of opengl, direct3d, reversed-z, found vulkan$"),
    (lambda d, c, f: c.player_input(convention=Convention(world="x-up")), "ArgumentError", "^world: expected one of z-up"),
    (lambda d, c, f: c.player_input(convention=Convention(handed="both")), "ArgumentError", "^handed: expected one of"),
    (lambda d, c, f: c.player_warp(nodes=5), "ArgumentTypeError", '^nodes: expected columns and rows, or "pixels"'),
    (lambda d, c, f: c.player_warp(nodes="auto"), "ArgumentTypeError", "^nodes: expected columns and rows"),
    (lambda d, c, f: c.player_warp(nodes=(1, 5)), "ArgumentError", "^nodes: expected two columns and two rows at least"),
    (lambda d, c, f: c.player_warp(nodes=(-1, -1)), "ArgumentError", "^nodes: expected two columns"),
    (lambda d, c, f: c.player_warp(nodes=(2**31 - 1, 2**31 - 1)), "Error", "nodes"),
    (lambda d, c, f: c.player_warp(error=0), "ArgumentError", "^error: expected pixels of the input above 0, found 0"),
    (lambda d, c, f: c.player_warp(error=None), "ArgumentTypeError", "^error: expected a number, found NoneType$"),
    (lambda d, c, f: c.player_warp(wrap=True), "ArgumentError", "^wrap: the input frustum has no seam"),
    (lambda d, c, f: d.export(5), "ArgumentTypeError", "^folder: expected a text or a path, found int$"),
    (lambda d, c, f: d.export(f / "x\0y"), "ArgumentError", "^folder: it holds a null character$"),
    (lambda d, c, f: d.export(f, formats="mesh"), "ArgumentTypeError", "^formats: expected a list of names, found a text$"),
    (lambda d, c, f: d.export(f, formats=["jpg"]), "ArgumentError", "^formats: expected one of mesh, obj, .* found jpg$"),
    (lambda d, c, f: d.export(f, input="cube", wrap=True), "ArgumentError", "^wrap: a mesh has no cut cells"),
    (lambda d, c, f: d.export(f, input="cube", wrap=True, formats=["obj", "mesh"]), "ArgumentError", "^wrap: a mesh has no"),
    (lambda d, c, f: d.export(f, channels=["nobody"]), "Error", "nobody"),
    (lambda d, c, f: d.export(f, eyes=(0, 0, 1)), "ArgumentError", r"^eyes: expected an array of the shape \(n, 3\)"),
    (lambda d, c, f: d.export(f, eyes=np.zeros((1, 2, 3))), "ArgumentError", r"^eyes: expected .* found \(1, 2, 3\)$"),
    (lambda d, c, f: d.export(f, eyes=[(0, 0, np.nan)]), "ArgumentError", r"^eyes\[0\]: expected finite numbers"),
    (lambda d, c, f: d.export(f, nodes="pixels"), "ArgumentTypeError", "^nodes: expected columns and rows, found"),
    (lambda d, c, f: d.export(f, content=f / "no.png"), "MissingFileError", "no.png"),
    (lambda d, c, f: d.export(f, content=example("dome")), "ParseError", "display.xml"),
    (lambda d, c, f: d.export(f, content=5), "ArgumentTypeError", "^content: expected a text or a path"),
])
def test_what_cannot_be_exported_is_refused_by_name(call, kind, text, tmp_path):
    display = screenmanager.Display.load(example("spherical-dome"))
    with pytest.raises(getattr(screenmanager, kind), match=text):
        call(display, display.channels[0], tmp_path / "out")
    assert list(tmp_path.iterdir()) == []


def test_a_display_without_channels_is_not_exported(tmp_path):
    display = screenmanager.Display.load(example("planar-wall"))
    for channel in display.channels:
        display.remove_channel(channel.id)
    with pytest.raises(screenmanager.Error, match="^the display has no channels"):
        display.export(tmp_path / "out")
    assert list(tmp_path.iterdir()) == []


def test_a_fault_in_a_texts_folder_is_no_manifest_of_another(tmp_path):
    """A display from a text has no file: its digest is that of its text."""
    text = example("planar-wall").read_text(encoding="utf-8")
    display = screenmanager.Display.parse(text, "nowhere.xml")
    manifest = display.export(os.fsencode(tmp_path / "out"), nodes=(3, 3))
    import hashlib
    assert manifest["files"][0] == {"name": os.path.abspath("nowhere.xml"),
                                    "sha256": hashlib.sha256(display.text.encode()).hexdigest()}


def test_records_of_exports_outlive_the_display_and_are_pickled():
    warp = screenmanager.Display.load(example("mesh-rays")).channels[0].player_warp(nodes=(5, 4), points=True)
    again = pickle.loads(pickle.dumps(warp))
    assert_same_bits(again.places, warp.places)
    assert_same_bits(again.input.frustum.view_matrix, warp.input.frustum.view_matrix)
    assert warp.places.flags.owndata and warp.points.flags.owndata and warp.input.frustum.view_matrix.flags.owndata
    fed = pickle.loads(pickle.dumps(screenmanager.Input("fisheye", aperture=2)))
    assert (fed.kind, fed.aperture) == ("fisheye", 2)

"""What fits is not copied; what does not fit is refused by name."""

import tracemalloc

import numpy as np
import pytest
import screenmanager

from conftest import assert_same_bits, example


@pytest.fixture
def screen():
    return screenmanager.Display.load(example("dome")).screen


@pytest.mark.parametrize(("origins", "directions", "kind", "text"), [
    (np.zeros((4, 2)), np.ones((4, 3)), "ArgumentError",
     r"^origins: expected an array of the shape \(..., 3\), found \(4, 2\)$"),
    (np.zeros((4, 3)), np.ones((5, 3)), "ArgumentError",
     r"^directions: expected an array of the shape \(4, 3\), as origins, or \(3,\), found \(5, 3\)$"),
    (np.zeros((3, 4)), np.ones((4, 3)), "ArgumentError", r"^origins: .* found \(3, 4\)$"),
    (5.0, np.ones((4, 3)), "ArgumentError", r"^origins: .* found \(\)$"),
    ("abc", np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found an array of <U3$"),
    (None, np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found an array of object$"),
    ([(0, 0, 0), (1, 2)], np.ones((2, 3)), "ArgumentTypeError", "^origins: expected"),
    (np.zeros((2, 3), dtype=complex), np.ones((2, 3)), "ArgumentTypeError", "^origins: .*complex128"),
    (np.zeros((2, 3), dtype=bool), np.ones((2, 3)), "ArgumentTypeError", "^origins: .*bool"),
    (np.zeros((2, 3)), [(0, 1, 0), (0, np.nan, 1)], "ArgumentError",
     r"^directions\[1\]: expected finite numbers, found \(0, nan, 1\)$"),
    (np.full((2, 3), np.inf), np.ones((2, 3)), "ArgumentError", r"^origins\[0\]: .* found \(inf, inf, inf\)$"),
])
def test_what_is_no_array_of_rays_is_refused_by_name(screen, origins, directions, kind, text):
    with pytest.raises(getattr(screenmanager, kind), match=text):
        screen.intersect(origins, directions)


def test_the_place_of_what_is_not_finite_is_named_along_all_axes(screen):
    directions = np.ones((4, 5, 3))
    directions[2, 3, 1] = -np.inf
    with pytest.raises(screenmanager.ArgumentError, match=r"^directions\[2, 3\]: .* found \(1, -inf, 1\)$"):
        screen.intersect((0, 0, 0), directions)


def test_faults_are_of_the_kinds_that_python_has_for_them():
    assert issubclass(screenmanager.ArgumentError, (ValueError, screenmanager.Error))
    assert issubclass(screenmanager.ArgumentTypeError, TypeError)
    assert issubclass(screenmanager.BusyError, RuntimeError)
    for name in ("ArgumentError", "ArgumentTypeError", "BusyError", "ChangedFileError", "MeshError",
                 "MissingFileError", "ParseError"):
        assert issubclass(getattr(screenmanager, name), screenmanager.Error)


@pytest.mark.parametrize("convert", [
    lambda array: array.tolist(),
    lambda array: array.astype(np.float32).astype(np.float64),
    np.asfortranarray,
    lambda array: np.repeat(array, 2, axis=0)[::2],
    lambda array: array.astype(">f8"),
])
def test_every_form_of_the_same_numbers_gives_the_same_result(screen, random, convert):
    directions = random.integers(-8, 8, (100, 3)) / 8.0
    expected = screen.intersect((0, 0, 1), directions)
    result = screen.intersect((0, 0, 1), convert(directions))
    assert_same_bits(result.points, expected.points)


def test_whole_numbers_are_numbers(screen):
    assert_same_bits(screen.intersect((0, 0, 1), np.array([(0, 1, 0)], dtype=np.int32)).points,
                     screen.intersect((0, 0, 1), [(0.0, 1.0, 0.0)]).points)


def test_an_array_that_fits_is_not_copied_and_not_changed(screen, random):
    directions = random.normal(0, 1, (200_000, 3))
    before = directions.copy()
    directions.flags.writeable = False
    screen.intersect((0, 0, 1), directions[:10])
    tracemalloc.start()
    hits = screen.intersect((0, 0, 1), directions)
    peak = tracemalloc.get_traced_memory()[1]
    tracemalloc.stop()
    results = sum(array.nbytes for array in vars(hits).values())
    # A copy of the directions would add their size, 4.8 MB.
    assert results <= peak < results + directions.nbytes / 4
    assert_same_bits(directions, before)


def test_memory_that_there_is_none_of_is_reported_as_such():
    channel = screenmanager.Display.load(example("planar-wall")).channels[0]
    for size in ((2_000_000_000, 2_000_000_000), (2_000_000, 2_000_000)):
        channel.resolution = size
        with pytest.raises(MemoryError):
            channel.layout_picture()
    assert channel.to_layout((0.5, 0.5)).mask


def test_paths_are_texts_or_paths():
    with pytest.raises(screenmanager.ArgumentTypeError, match="^path: expected a text or a path, found int$"):
        screenmanager.Display.load(5)
    with pytest.raises(screenmanager.ArgumentError, match="^path: it holds a null character$"):
        screenmanager.Display.load("a\0b")
    with pytest.raises(screenmanager.ArgumentTypeError, match="^text: expected a text, found int$"):
        screenmanager.Display.parse(5)


@pytest.mark.parametrize("call", [
    lambda display: display.channels[0].to_layout([(0.5, np.nan)]),
    lambda display: display.channels[0].from_layout([(0.5, np.nan, 0)]),
    lambda display: display.channels[0].to_screen([(np.inf, 0)]),
    lambda display: display.channels[0].from_screen([(0, 0, np.nan)]),
    lambda display: display.screen.map_into_3d([(0, np.nan)]),
    lambda display: display.screen.normals([(0, np.nan, 0)]),
    lambda display: display.screen.normals(np.zeros((2, 2))),
    lambda display: display.channels[0].to_layout(np.zeros((2, 3))),
])
def test_every_call_refuses_what_is_no_point(call):
    with pytest.raises(screenmanager.ArgumentError):
        call(screenmanager.Display.load(example("spherical-dome")))


@pytest.mark.parametrize(("call", "kind", "text"), [
    (lambda display: display.channel(5), "ArgumentTypeError", "^name_or_id: expected a text, found int$"),
    (lambda display: display.channel("a\ud800"), "ArgumentError", "^name_or_id: expected a text of characters"),
    (lambda display: display.add_channel(None), "ArgumentTypeError", "^id: expected a text"),
    (lambda display: display.add_channel(""), "Error", "(?i)id"),
    (lambda display: display.rename_channel("a", 5), "ArgumentTypeError", "^new_id: expected a text"),
    (lambda display: display.move_channel("a", "up"), "ArgumentTypeError", "^direction: expected a whole number"),
    (lambda display: display.targets(2**40, 3), "ArgumentError", "^columns: expected a whole number up to"),
    (lambda display: display.check(allowed=[5]), "ArgumentTypeError", "^allowed: expected a text"),
    (lambda display: display.check(allowed="rule"), "ArgumentTypeError", "^allowed: expected a list of names"),
    (lambda display: display.channels[0].warp(5), "ArgumentTypeError", "^panorama: expected a text, found int$"),
    (lambda display: display.channels[0].warp(nodes=5), "ArgumentTypeError", "^nodes: expected columns and rows"),
    (lambda display: display.channels[0].warp(nodes=(2.5, 3)), "ArgumentTypeError", "^nodes: expected a whole number"),
    (lambda display: display.channels[0].outline(2.5), "ArgumentTypeError", "^samples_per_edge: expected a whole"),
    (lambda display: display.channels[0].outline(0), "ArgumentError", "^samples_per_edge: expected 1 at least"),
    (lambda display: setattr(display.channels[0], "name", "\udc00"), "ArgumentError", "^name: expected a text of"),
    (lambda display: setattr(display.screen, "radius", "large"), "ArgumentTypeError", "^radius: expected numbers"),
    (lambda display: setattr(display.screen, "rails", 5), "ArgumentTypeError", "^rails: expected the lower and"),
    (lambda display: screenmanager.Display.parse("\ud800"), "ArgumentError", "^text: expected a text of characters"),
    (lambda display: screenmanager.Display.load("\ud800"), "ArgumentError", "^path: expected a text of characters"),
])
def test_what_is_no_array_is_refused_by_name_too(call, kind, text):
    display = screenmanager.Display.load(example("spherical-dome"))
    before = display.text
    with pytest.raises(getattr(screenmanager, kind), match=text):
        call(display)
    assert display.text == before


def test_an_error_has_its_cause():
    display = screenmanager.Display.parse(
        "<Display version='1' lengthUnit='m'><Units native='m'/>"
        "<Screen shape='Sphere'><Radius value='5'/></Screen><TargetData type='ProjectorCentric'/>"
        "<Projectors><Projector id='a'><Resolution width='10' height='10'/>"
        "<ProjectionModel name='Fisheye' file='/nowhere/lens.yml'/></Projector></Projectors></Display>")
    with pytest.raises(screenmanager.Error, match="(?s)lens.yml"):
        display.channels[0].to_layout((0.5, 0.5))

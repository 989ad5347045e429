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
    ("abc", np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found str$"),
    (None, np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found NoneType$"),
    ((row for row in np.eye(3)), np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found generator$"),
    ([(0, 0, 0), (1, None, 2)], np.ones((2, 3)), "ArgumentTypeError", r"^origins: expected numbers, found NoneType at \[1, 1\]$"),
    (np.array([0, None, 1]), np.ones((2, 3)), "ArgumentTypeError", "^origins: expected numbers, found an array of object$"),
    (2**70, np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found a whole number beyond 64 bits$"),
    ([(0, 0.5, 2**70)], np.ones((1, 3)), "ArgumentTypeError", "^origins: .*, found whole numbers beyond 64 bits$"),
    (["a", "b", "c"], np.ones((4, 3)), "ArgumentTypeError", "^origins: expected numbers, found an array of <U1$"),
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
    (lambda display: display.channels[0].warp(nodes=(2**31, 2)), "ArgumentError",
     "^nodes: expected a whole number up to 2147483647, found 2147483648$"),
    (lambda display: screenmanager.Input(size=(64, 2**31)), "ArgumentError", "^size: expected a whole number up to"),
    (lambda display: display.move_channel("a", -2**31), "ArgumentError", "^direction: expected a whole number up to"),
    (lambda display: display.channels[0].outline(2.5), "ArgumentTypeError", "^samples_per_edge: expected a whole"),
    (lambda display: display.channels[0].outline(0), "ArgumentError", "^samples_per_edge: expected 1 to 1000000, found 0$"),
    (lambda display: display.channels[0].outline(10**9), "ArgumentError", "^samples_per_edge: expected 1 to 1000000, "),
    (lambda display: display.fit([], channels=[]), "ArgumentError", "^channels: expected one at least, found none"),
    (lambda display: display.fit([], channels=np.array([])), "ArgumentError", "^channels: expected one at least"),
    (lambda display: display.fit([], channels=np.zeros(3)), "ArgumentTypeError", "^channels: expected a text, found"),
    (lambda display: display.fit([], channels=np.array("Left")), "ArgumentTypeError", "^channels: expected a list"),
    (lambda display: display.export("nowhere", channels=()), "ArgumentError", "^channels: expected one at least"),
    (lambda display: display.export("nowhere", eyes=np.zeros((0, 3))), "ArgumentError", "^eyes: expected one at least"),
    (lambda display: display.export("nowhere", input="x"), "ArgumentError", "^input: expected one of .*, found x$"),
    (lambda display: display.channels[0].player_input("x"), "ArgumentError", "^input: expected one of frustum, .* x$"),
    (lambda display: screenmanager.Input("x"), "ArgumentError", "^kind: expected one of frustum, .*, found x$"),
    (lambda display: screenmanager.Input(direction="abc"), "ArgumentTypeError", "^direction: expected numbers"),
    (lambda display: screenmanager.Input(direction=(1, 2)), "ArgumentError", "^direction: expected 3 numbers"),
    (lambda display: screenmanager.Input(direction=(0, 0, 0)), "ArgumentError", "^direction: expected a length above 0"),
    (lambda display: display.channels[0].player_input(eye=(0, 0, 1e200)), "ArgumentError", r"^eye\[2\]: expected a number up to 1e\+60, found 1e\+200$"),
    (lambda display: display.fit("x.csv", origin=np.zeros(3)), "ArgumentTypeError", "^origin: expected a text, found"),
    (lambda display: display.screen.map_into_3d((0, 0), np.zeros(3)), "ArgumentTypeError", "^extrapolate: expected True"),
    (lambda display: screenmanager.Surface(display, "x"), "ArgumentError", "^part: expected one of preferred, .* x$"),
    (lambda display: screenmanager.Channel(5, "x"), "ArgumentTypeError", "^display: expected a Display, found int$"),
    (lambda display: display.check(quick="no"), "ArgumentTypeError", "^quick: expected True or False, found str$"),
    (lambda display: display.coverage(pieces=None), "ArgumentTypeError", "^pieces: expected True or False"),
    (lambda display: setattr(display.screen, "radius", (1, 2)), "ArgumentError",
     r"^radius: expected a number, found an array of the shape \(2,\)$"),
    (lambda display: setattr(display.channels[0], "name", "\udc00"), "ArgumentError", "^name: expected a text of"),
    (lambda display: setattr(display.screen, "radius", "large"), "ArgumentTypeError", "^radius: expected a number, found str$"),
    (lambda display: setattr(display.screen, "radius", True), "ArgumentTypeError", "^radius: expected a number, found bool$"),
    (lambda display: setattr(display.screen, "rails", 5), "ArgumentTypeError", "^rails: expected the lower and"),
    (lambda display: screenmanager.Display.parse("\ud800"), "ArgumentError", "^text: expected a text of characters"),
    (lambda display: display.moved_to(""), "ArgumentError", "^path: expected the name of a file, found an empty one$"),
    (lambda display: display.save(""), "ArgumentError", "^path: expected the name of a file, found an empty one$"),
    (lambda display: display.export("nowhere", content=""), "ArgumentError", "^content: expected the name of a file, found"),
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


@pytest.mark.parametrize(("stated", "text"), [
    ({"picture_deviations": (-1, 0.1)}, r"\.picture_deviations: expected numbers above 0, .*, found \(-1, 0.1\)$"),
    ({"picture_deviations": (0, 0.1)}, r"\.picture_deviations: expected numbers above 0, as no other deviations"),
    ({"picture_deviations": (-1, 0.1), "deviations": (1, 1, 1)}, r"\.picture_deviations: .* not below 0, found \(-1,"),
    ({"picture_deviations": (1e300, 1)}, r"\.picture_deviations: expected numbers up to 1e\+12, found"),
    ({"deviations": (0, 1, 1)}, r"\.deviations: expected numbers from 1e-100 to 1e6, found \(0, 1, 1\)$"),
    ({"deviations": (1e200, 1, 1)}, r"\.deviations: expected numbers from 1e-100 to 1e6, found \(1e\+200,"),
    ({"deviations": [(1, 1, 1), (1, 1e-200, 1)]}, r"\.deviations\[1\]: expected numbers from 1e-100 to 1e6"),
    ({"covariances": np.eye(3) * 1e200}, r"\.covariances\[0\]: expected numbers up to 1e\+12"),
    ({"covariances": np.diag([1e6, -1e6, 1e6])}, r"\.covariances: .* symmetric and positive definite$"),
    ({"points": [(0, 0, 1), (0, 1e200, 1)]}, r"\.points\[1\]: expected numbers up to 1e\+12, found \(0, 1e\+200, 1\)$"),
    ({"picture": [(0.5, 1e13), (0, 0)]}, r"\.picture\[0\]: expected numbers up to 1e\+12"),
])
def test_measurements_that_no_fit_takes_are_refused_by_their_own_names(stated, text):
    display = screenmanager.Display.load(example("dome"))
    parts = {"channel": display.channels[0].id, "picture": [(0.5, 0.5), (0, 0)], "points": [(0, 0, 1), (0, 1, 1)]}
    with pytest.raises(screenmanager.ArgumentError, match=r"^measured\[0\]" + text):
        display.fit(screenmanager.MeasuredPoints(**{**parts, **stated}))


def test_a_list_of_channels_may_be_an_array():
    display = screenmanager.Display.load(example("spherical-dome"))
    measured = [screenmanager.MeasuredPoints(light.id, light.picture[light.mask], light.points[light.mask])
                for light in display.targets(6, 5, 1)]
    for channels in (np.array(["Left", "Top"]), np.array(["Left", "Top"], dtype=object), ("Left", "Top")):
        assert [channel.name for channel in display.fit(measured, channels=channels).channels] == ["Left", "Top"]


MASKED = np.ma.masked_array([(0.25, 0.5), (0.5, 0.5), (0.75, 0.5)], mask=[(0, 0), (0, 1), (0, 0)])


@pytest.mark.parametrize("masked", [MASKED, [MASKED[0], MASKED[1], MASKED[2]], [list(MASKED), list(MASKED)]])
def test_numbers_that_are_masked_are_not_taken_for_numbers(masked):
    channel = screenmanager.Display.load(example("spherical-dome")).channels[0]
    with pytest.raises(screenmanager.Error, match="^picture: expected"):
        channel.to_screen(masked)
    with pytest.raises(screenmanager.Error, match=r"^measured\[0\]\.picture: expected"):
        channel._display.fit(screenmanager.MeasuredPoints(channel.id, masked, np.zeros((3, 3))))


def test_a_masked_array_is_refused_for_what_is_masked_alone():
    channel = screenmanager.Display.load(example("spherical-dome")).channels[0]
    with pytest.raises(screenmanager.ArgumentError, match="none is masked: leave out the rows that are$"):
        channel.to_screen(MASKED)
    with pytest.raises(screenmanager.ArgumentError, match="^position: .* none is masked"):
        channel.position = np.ma.masked_array([0.0, 1.0, 2.0], mask=[0, 0, 1])
    rest = MASKED[~MASKED.mask.any(axis=1)]
    assert isinstance(rest, np.ma.MaskedArray)
    assert_same_bits(channel.to_screen(rest).points, channel.to_screen([(0.25, 0.5), (0.75, 0.5)]).points)


@pytest.mark.parametrize("name", ["spherical-dome", "cylinder", "planar-wall", "curved-wall", "mesh-rays"])
@pytest.mark.parametrize("exponent", [-1074, -700, -40, -21, 70, 300, 532, 1000])
def test_a_direction_may_be_of_any_length(name, exponent):
    """Its length changes nothing but the distance that would be one."""
    screen = screenmanager.Display.load(example(name)).screen
    directions = np.array([(0, 1, 0), (0.3, 1, 0.1), (-0.55, 1, 0.123)])
    expected = screen.intersect((0, 0, 1.5), directions)
    assert expected.hit.any()
    if exponent == -1074:  # the smallest number of all has no parts
        directions = directions[:1]
    hits = screen.intersect((0, 0, 1.5), np.ldexp(directions, exponent))
    rows = len(directions)
    assert np.array_equal(hits.hit, expected.hit[:rows]) and np.array_equal(hits.sides, expected.sides[:rows])
    for ours, theirs in ((hits.points, expected.points), (hits.normals, expected.normals),
                         (hits.distances, expected.distances)):
        assert np.allclose(ours, theirs[:rows], rtol=0, atol=1e-12, equal_nan=True)


@pytest.mark.parametrize(("call", "name"), [
    (lambda display, far: display.screen.normals([(0, 0, 1), (far, 0, 1)]), r"points\[1\]"),
    (lambda display, far: display.screen.intersect((0, far, 1), (0, 1, 0)), "origins"),
    (lambda display, far: display.screen.map_into_3d((0, far), True), "st"),
    (lambda display, far: display.channels[0].to_layout([(far, 0)]), r"picture\[0\]"),
    (lambda display, far: display.channels[0].to_screen([(far, 0)]), r"picture\[0\]"),
    (lambda display, far: display.channels[0].from_layout((0, far, 0)), "points"),
    (lambda display, far: display.channels[0].from_screen((0, 0, far)), "points"),
])
@pytest.mark.parametrize("kind", ["cylinder", "spherical-dome", "mesh-rays"])
def test_places_beyond_what_can_be_computed_are_refused_by_name(call, name, kind):
    display = screenmanager.Display.load(example(kind))
    for far in (1e61, -1e160, 1e300):
        with pytest.raises(screenmanager.ArgumentError, match=f"^{name}: expected numbers up to 1e\\+60, found "):
            call(display, far)
    call(display, 1e59)


@pytest.mark.parametrize("kind", ["cylinder", "spherical-dome", "mesh-rays", "planar-wall"])
def test_normals_far_away_have_the_length_one(kind):
    screen = screenmanager.Display.load(example(kind)).screen
    normals = screen.normals([(1e59, 1, 1), (0, -1e59, 1), (3e40, 3e40, -1e40)])
    assert np.allclose(np.linalg.norm(normals, axis=1), 1, rtol=0, atol=1e-12)


@pytest.mark.parametrize(("owner", "name", "nearest"), [
    (lambda display: display, "pth", "path"),
    (lambda display: display.channels[0], "postion", "position"),
    (lambda display: display.screen, "radious", "radius"),
    (lambda display: display.screen.content, "hsh", "hash"),
    (lambda display: display.target_data, "positon", "position"),
])
def test_a_misspelt_attribute_is_refused_with_the_nearest_one(owner, name, nearest):
    thing = owner(screenmanager.Display.load(example("spherical-dome")))
    with pytest.raises(AttributeError, match=f"^{type(thing).__name__} has no attribute {name}: {nearest} is the "):
        setattr(thing, name, 5)
    with pytest.raises(AttributeError):
        getattr(thing, name)


def test_a_class_of_a_script_may_have_attributes_of_its_own():
    class Noted(screenmanager.Display):
        pass

    display = Noted.load(example("dome"))
    display.note = "mine"
    assert display.note == "mine" and display.channels


def test_a_record_is_not_changed():
    places = screenmanager.Display.load(example("dome")).channels[0].to_screen((0.5, 0.5))
    for name in ("points", "pionts"):
        with pytest.raises(AttributeError):
            setattr(places, name, 5)

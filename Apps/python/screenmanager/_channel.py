"""One channel of a display: its record, and the maps of its picture."""

from typing import NamedTuple

from ._arguments import count_of, display_of, flag_of, pair_of, text_of
from ._named import Named
from ._native import ArgumentError
from ._records import Outline, PicturePlaces, Places


# More than any picture has pixels along an edge.
_MOST_SAMPLES = 1_000_000


class Orientation(NamedTuple):
    """Angles in radians: about Z with the sign reversed, about X, about Y."""

    z: float
    x: float
    y: float


class Frustum(NamedTuple):
    """Angles of the edges of a picture against the forward direction, radians."""

    left: float
    right: float
    bottom: float
    top: float


class ScreenArea(NamedTuple):
    """The part of the screen that a channel covers, in the 2D parameters of the screen; -1000 where not configured."""

    left: float
    right: float
    bottom: float
    top: float


class Layout(NamedTuple):
    """The rectangle of a channel in the planar layout, native units."""

    x_min: float
    x_max: float
    y_min: float
    y_max: float


for _kind in (Orientation, Frustum, ScreenArea, Layout):
    _kind.__module__ = "screenmanager"


def _numbers(kind, name, what):
    def get(self):
        return kind(*self._native.channel_numbers(self._id, name))

    def put(self, value):
        self._native.set_channel_numbers(self._id, name, value)

    return property(get, put, doc=what)


def _text(name, what, can_be_set=True):
    def get(self):
        return self._native.channel_text(self._id, name)

    def put(self, value):
        self._native.set_channel_text(self._id, name, text_of(value, name))

    return property(get, put if can_be_set else None, doc=what)


class Channel(Named):
    """One channel of a display, that is one projector as the configuration describes it.

    It follows the display, and can no longer be used once its entry was removed or has another id. What is set takes
    effect with the next call; a value that a file could not hold is refused with Error, and nothing is changed then.
    Lengths are in native units, angles in radians. Places (u, v) in the picture reach from (0, 0) bottom left to (1, 1)
    top right.
    """

    __module__ = "screenmanager"
    __slots__ = ("_display", "_id")

    def __init__(self, display, id):
        self._display = display_of(display)
        self._id = text_of(id, "id")

    def __reduce__(self):
        return type(self), (self._display, self._id)

    @property
    def _native(self):
        return self._display._native

    def __repr__(self):
        return f"<screenmanager.Channel {self._id!r} of {self._display!r}>"

    def __eq__(self, other):
        if not isinstance(other, Channel):
            return NotImplemented
        return self._display is other._display and self._id == other._id

    def __hash__(self):
        return hash((id(self._display), self._id))

    @property
    def id(self):
        """The id of its entry; Display.rename_channel changes it."""
        return self._id

    name = _text("name", "The name by which people call it.")
    section_id = _text("section_id", "The label of its entry, as messages have it.", False)
    old_id = _text("old_id", "The id before the last renaming; empty without one.", False)
    device = _text("device", "The description of its device, an XML text.")
    projection_model = _text("projection_model", '"Name" or "Name:file"; empty for none.')
    map_file = _text("map_file", "The file of its custom planar map; empty for none.")
    orientation = _numbers(Orientation, "orientation", "An Orientation (z, x, y), radians.")
    frustum = _numbers(Frustum, "frustum", "A Frustum (left, right, bottom, top), radians.")
    screen_area = _numbers(
        ScreenArea, "screen_area", "A ScreenArea (left, right, bottom, top); -1000 removes a bound.")
    layout = _numbers(Layout, "layout", "A Layout (x_min, x_max, y_min, y_max), native units.")

    @property
    def position(self):
        """(x, y, z) of the projector or its eye; world frame, native units."""
        return tuple(self._native.channel_position(self._id))

    @position.setter
    def position(self, value):
        self._native.set_channel_position(self._id, value)

    @property
    def resolution(self):
        """(width, height) of the picture in pixels; 0 where not configured."""
        return tuple(self._native.channel_resolution(self._id))

    @resolution.setter
    def resolution(self, value):
        self._native.set_channel_resolution(self._id, value)

    def to_layout(self, picture):
        """Maps places (u, v) of the picture, (..., 2), to the layout of the display; returns Places.

        What a layout point is depends on the kind of the display: a point of the layout plane, (s, 0, t) of the screen,
        or a point in the world frame.
        """
        return Places(*self._native.to_space(self._id, "layout", picture))

    def from_layout(self, points, cache=False):
        """Maps layout points, (..., 3), to the picture; returns PicturePlaces.

        cache: remember the pixels of a collimated display, for 24 bytes each: faster for many points.
        """
        return PicturePlaces(*self._native.to_picture(self._id, "layout", flag_of(cache, "cache"), points))

    def to_screen(self, picture):
        """Where the light of places (u, v) of the picture, (..., 2), arrives on the screen; returns Places, in the world
        frame and native units."""
        return Places(*self._native.to_space(self._id, "screen", picture))

    def from_screen(self, points):
        """Which places of the picture light points on the screen, (..., 3), world frame and native units; returns
        PicturePlaces. A point beside the screen by less than a ten thousandth of its size counts as on it."""
        return PicturePlaces(*self._native.to_picture(self._id, "screen", False, points))

    def layout_picture(self):
        """The layout points of all pixels; returns Places with points (H, W, 3) and mask (H, W).

        Row 0 is the bottom row of the picture, column 0 the left one; each value is that of the middle of its pixel.
        """
        return Places(*self._native.whole_picture(self._id, "layout"))

    def screen_picture(self):
        """Where the light of all pixels arrives on the screen, as layout_picture; world frame, native units."""
        return Places(*self._native.whole_picture(self._id, "screen"))

    def warp(self, panorama="fisheye", nodes=None):
        """Which place of the picture that feeds the display each place of this picture shows; returns PicturePlaces.

        The input is the layout plane of a planar display, the screen of a custom planar one, else a panorama about the
        eye point: "fisheye", 180 degrees about +y, or "equirectangular". nodes: (columns, rows), from edge to edge of
        the picture; None for one place in the middle of each pixel. places has the shape (rows, columns, 2), row 0 at
        the bottom.
        """
        columns, rows = 0, 0
        if nodes is not None:
            columns, rows = (count_of(node, "nodes") for node in pair_of(nodes, "nodes", "columns and rows"))
            if columns < 2 or rows < 2:
                raise ArgumentError(f"nodes: expected two columns and two rows at least, found {columns} and {rows}")
        return PicturePlaces(*self._native.warp(self._id, text_of(panorama, "panorama"), columns, rows))

    def player_input(self, input="frustum", *, eye=None, convention=None):
        """The picture that a player is to feed this channel with; returns a PlayerInput, for "frustum" with what an
        engine renders. input: an Input or the name of its kind. eye: (x, y, z), native units; None for the usual one.
        convention: a Convention, of the matrices."""
        from ._export import convention_of, input_of, player_input_of

        return player_input_of(
            self._native.player_input(self._id, eye, input_of(input), convention_of(convention)))

    def player_warp(self, input="frustum", *, eye=None, nodes=None, error=0.25, wrap=False, points=False,
                    triangles=False, convention=None):
        """Which place of such an input each place of this picture shows; returns a PlayerWarp.

        input, eye, convention: as in player_input. nodes: (columns, rows) of a grid from corner to corner; "pixels" for
        the middle of each pixel; None for the fewest nodes that keep the error, pixels of the input. wrap: cut cells
        where a panorama begins again. points: with the places on the screen. triangles: with what a player draws.
        """
        from ._export import convention_of, cut_of, error_of, input_of, nodes_of, player_warp_of

        fed = input_of(input)
        request = nodes_of(nodes, True), error_of(error), cut_of(wrap, fed[0]), flag_of(points, "points"), \
            flag_of(triangles, "triangles")
        return player_warp_of(self._native.player_warp(self._id, eye, fed, convention_of(convention), request))

    def outline(self, samples_per_edge=16):
        """The outline of the picture on the screen; returns an Outline with as many samples on each of the four edges."""
        import numpy as np

        samples = count_of(samples_per_edge, "samples_per_edge")
        if not 1 <= samples <= _MOST_SAMPLES:
            raise ArgumentError(f"samples_per_edge: expected 1 to {_MOST_SAMPLES}, found {samples}")
        step = np.arange(samples) / samples
        zero, one = np.zeros_like(step), np.ones_like(step)
        edges = [(step, one), (one, 1 - step), (1 - step, zero), (zero, step)]
        picture = np.concatenate([np.column_stack(edge) for edge in edges])
        light = self.to_screen(picture)
        return Outline(picture, light.points, light.mask)

"""What players need of a display: inputs, frusta and warps."""

from collections.abc import Mapping
from typing import TYPE_CHECKING, Optional, Union

from . import _native
from ._arguments import count_of, flag_of, number_of, pair_of, text_of
from ._channel import Frustum, Orientation
from ._native import ArgumentError, ArgumentTypeError
from ._records import record

if TYPE_CHECKING:
    import numpy as np
    import numpy.typing as npt

# Which inputs have what can be stated.
_DIRECTED = ("frustum", "fisheye", "equirectangular", "cube")
_HAVE = {"direction": _DIRECTED, "roll": _DIRECTED, "aperture": ("fisheye",), "margin": ("frustum",)}

# As the native part knows them.
_FEWEST_NODES = (0, 0)
_PIXELS = (-1, -1)


@record
class Input:
    """The picture that feeds a channel or a display. None stands for what is usual.

    kind: "frustum", for each channel its own; "fisheye"; "equirectangular"; "cube"; "layout"; "screen".
    direction: (x, y, z), of its middle, any length; of a frustum the mean of what is lit, else +y.
    roll: radians, right side down. aperture: radians across the circle of a fisheye, up to 2 pi; usually pi.
    margin: of a frustum, part of its width and height on each side; usually 0.02.
    size: (width, height) in pixels, of one face of a cube.
    """

    kind: str = "frustum"
    direction: "Optional[npt.ArrayLike]" = None
    roll: "Optional[float]" = None
    aperture: "Optional[float]" = None
    margin: "Optional[float]" = None
    size: "Optional[tuple[int, int]]" = None

    def __post_init__(self):
        _require_kind(self.kind, "kind")
        for name, kinds in _HAVE.items():
            if getattr(self, name) is None:
                continue
            if self.kind not in kinds:
                raise ArgumentError(f"{name}: the input {self.kind} has none, only {', '.join(kinds)}")
            if name == "direction":
                _native.Display.check_direction(self.direction)
            else:
                number_of(getattr(self, name), name)
        if self.size is not None:
            for length in pair_of(self.size, "size", "width and height"):
                if count_of(length, "size") < 1:
                    raise ArgumentError(f"size: expected pixels above 0, found {length}")


@record
class Convention:
    """What a render engine expects of its matrices.

    depth: "opengl", -1 at the near plane, 1 at the far one; "direct3d", 0 and 1; "reversed-z", 1 and 0.
    world: "z-up" or "y-up". handed: "right" or "left". near, far: native units along the direction of view.
    """

    depth: str = "opengl"
    world: str = "z-up"
    handed: str = "right"
    near: float = 0.1
    far: float = 1000.0

    def __post_init__(self):
        for name in ("depth", "world", "handed"):
            text_of(getattr(self, name), name)
        if not 0 < number_of(self.near, "near") < number_of(self.far, "far"):
            raise ArgumentError(f"near, far: expected 0 < near < far, found {self.near} and {self.far}")


@record
class Blend:
    """How the blends of an export are made.

    gamma: of the projectors, 0.2 to 5, 1 for linear; or "srgb". bits: of the pictures, 16, 8 or both.
    alpha: the opacity of black instead of factors. black_level: light of black in per cent of that of white, 0 or more
    and less than 100: of all channels, or a dict by name or id with every one of them; writes lifts, too; None for none.
    """

    gamma: "Union[float, str]" = 2.2
    bits: "tuple[int, ...]" = (16, 8)
    alpha: bool = False
    black_level: "Union[float, Mapping[str, float], None]" = None

    def __post_init__(self):
        if not isinstance(self.gamma, str):
            if not 0.2 <= number_of(self.gamma, "gamma") <= 5:
                raise ArgumentError(f"gamma: expected a number from 0.2 to 5 or srgb, found {self.gamma}")
        elif self.gamma != "srgb":
            raise ArgumentError(f"gamma: expected a number from 0.2 to 5 or srgb, found {self.gamma!r}")
        bits = _bits_of(self.bits)
        if not bits or len(set(bits)) < len(bits) or not set(bits) <= {16, 8}:
            raise ArgumentError(f"bits: expected 16, 8 or both, found {self.bits}")
        flag_of(self.alpha, "alpha")
        for name, level in _levels_of(self.black_level):
            if not 0 <= level < 100:
                whose = f" of {name}" if name else ""
                raise ArgumentError(f"black_level: expected per cent{whose} from 0 to less than 100, found {level}")


@record
class View:
    """How a viewer stands: position (3,) in native units; axes of length one, right, forward and up, each (3,) in the
    world frame; all float64. orientation: the same axes as an Orientation (z, x, y), radians."""

    position: "np.ndarray"
    orientation: Orientation
    right: "np.ndarray"
    forward: "np.ndarray"
    up: "np.ndarray"


@record
class RenderFrustum:
    """What an engine renders: an off-axis frustum from an eye. Its rectangle is the input of the warp.

    angles: a Frustum (left, right, bottom, top) against the direction of view, radians; tangents: the same as tangents.
    view_matrix: (4, 4) float64, from (x, y, z, 1) in the world of the engine to its camera; projection_matrix: (4, 4)
    float64, from there to clip space. For columns: clip = projection_matrix @ view_matrix @ point; then
    u = (clip[0] / clip[3] + 1) / 2 and v = (clip[1] / clip[3] + 1) / 2.
    """

    view: View
    angles: Frustum
    tangents: Frustum
    view_matrix: "np.ndarray"
    projection_matrix: "np.ndarray"


@record
class PlayerInput:
    """The input of a channel, as one eye sees it.

    kind: as in Input. size: (width, height) in pixels, of one face of a cube. wraps_around: whether its left edge goes on
    at its right one. seen_in_mirror: whether directions are those in a mirror.
    view: the eye and its axes; None for a layout and a screen. aperture: radians; None unless it is a fisheye.
    frustum: what the engine renders; None unless it is one. faces: of a cube, by "right", "left", "front", "back", "top"
    and "bottom", whose numbers are 0 to 5; else empty.
    """

    kind: str
    size: "tuple[int, int]"
    wraps_around: bool
    seen_in_mirror: bool
    view: "Optional[View]"
    aperture: "Optional[float]"
    frustum: "Optional[RenderFrustum]"
    faces: "dict[str, RenderFrustum]"


@record
class WarpTriangles:
    """What a player draws: triangles in which content is interpolated linearly, counter-clockwise.

    picture: (m, 3, 2) float64, corners (u, v) in the picture. places: (m, 3, 2) float64, (u, v) in the input.
    faces: (m) uint8, of a cube.
    """

    picture: "np.ndarray"
    places: "np.ndarray"
    faces: "np.ndarray"


@record
class WarpError:
    """What remains of the error between nodes, in pixels of the input.

    largest: the largest one that was found.
    largest_of_grid: that of the cells that the format "mesh" has, which cannot hold a pole.
    places: at how many places of the picture it was looked for.
    beyond: how many of these are beyond what was requested.
    left_out: how many lit places lie in no usable cell."""

    largest: float
    largest_of_grid: float
    places: int
    beyond: int
    left_out: int


@record
class PlayerWarp:
    """Which place of its input each place of a channel's picture shows. Row 0 is the bottom row.

    picture: (rows, columns, 2) float64, the nodes (u, v) in the picture, from corner to corner; of pixels, their middles.
    places: (rows, columns, 2) float64, (u, v) in the input; NaN where there is none; beyond 0 and 1 where a cell goes on
        over an edge.
    mask: (rows, columns) bool, True where a player may use the place. lit: (rows, columns) bool, True where light
        arrives there; a node that is usable but not lit continues what is lit beside it.
    faces: (rows, columns) uint8, of a cube. points: (rows, columns, 3) float64, where the light arrives, native units;
        NaN where it does not; None unless requested.
    triangles: None unless requested; of pixels, none.
    cells_at_seams: over the seam of a panorama or the edge of a face. left_out_at_poles: cells that hold a pole.
    error: None where nothing was compared.
    """

    input: PlayerInput
    picture: "np.ndarray"
    places: "np.ndarray"
    mask: "np.ndarray"
    lit: "np.ndarray"
    faces: "np.ndarray"
    points: "Optional[np.ndarray]"
    triangles: "Optional[WarpTriangles]"
    cells_at_seams: int
    left_out_at_poles: int
    error: "Optional[WarpError]"


def _require_kind(kind, name):
    kinds = _native.Display.input_kinds()
    if text_of(kind, name) not in kinds:
        raise ArgumentError(f"{name}: expected one of {', '.join(kinds)}, found {kind}")


def input_of(value):
    """An Input or the name of its kind, for the native part."""
    if isinstance(value, str):
        _require_kind(value, "input")
        value = Input(value)
    if not isinstance(value, Input):
        raise ArgumentTypeError(f"input: expected an Input or the name of one, found {type(value).__name__}")

    def number(name):
        stated = getattr(value, name)
        return None if stated is None else number_of(stated, name)

    size = None if value.size is None else tuple(count_of(length, "size") for length in value.size)
    return value.kind, value.direction, number("roll"), number("aperture"), number("margin"), size


def convention_of(value):
    """A Convention, for the native part."""
    if value is None:
        value = Convention()
    if not isinstance(value, Convention):
        raise ArgumentTypeError(f"convention: expected a Convention, found {type(value).__name__}")
    return value.depth, value.world, value.handed, number_of(value.near, "near"), number_of(value.far, "far")


def _bits_of(value):
    """A tuple of whole numbers."""
    try:
        bits = None if isinstance(value, (str, bytes)) else tuple(value)
    except TypeError:
        bits = None
    if bits is None:
        raise ArgumentTypeError(f"bits: expected a tuple of 16 and 8, found {type(value).__name__}")
    return tuple(count_of(one, "bits") for one in bits)


def _levels_of(value):
    """Pairs of a name or id, "" for all that have none of their own, and per cent."""
    if value is None:
        return []
    if isinstance(value, Mapping):
        return [(text_of(name, "black_level"), number_of(level, "black_level")) for name, level in value.items()]
    return [("", number_of(value, "black_level"))]


def blend_of(value):
    """A Blend or None, for the native part."""
    if value is None:
        return None
    if not isinstance(value, Blend):
        raise ArgumentTypeError(f"blend: expected a Blend or None, found {type(value).__name__}")
    curve = value.gamma if isinstance(value.gamma, str) else repr(number_of(value.gamma, "gamma"))
    levels = [(name, level * 0.01) for name, level in _levels_of(value.black_level)]
    return curve, sorted(_bits_of(value.bits), reverse=True), flag_of(value.alpha, "alpha"), levels


def nodes_of(value, may_be_pixels):
    """Columns and rows, for the native part."""
    if value is None:
        return _FEWEST_NODES
    if may_be_pixels and isinstance(value, str) and value == "pixels":
        return _PIXELS
    what = "columns and rows" + (', or "pixels"' if may_be_pixels else "")
    if isinstance(value, (str, bytes)):
        raise ArgumentTypeError(f"nodes: expected {what}, found {value!r}")
    columns, rows = (count_of(count, "nodes") for count in pair_of(value, "nodes", what))
    if columns < 2 or rows < 2:
        raise ArgumentError(f"nodes: expected two columns and two rows at least, found {columns} and {rows}")
    return columns, rows


def error_of(value):
    """Pixels of the input."""
    error = number_of(value, "error")
    if not error > 0:
        raise ArgumentError(f"error: expected pixels of the input above 0, found {error}")
    return error


def cut_of(wrap, kind):
    """Whether cells are cut at a seam."""
    if flag_of(wrap, "wrap") and kind not in ("equirectangular", "cube"):
        raise ArgumentError(f"wrap: the input {kind} has no seam, only equirectangular, cube")
    return wrap


def _view(parts):
    position, orientation, *axes = parts
    return View(position, Orientation(*orientation), *axes)


def _frustum(parts):
    view, angles, tangents, *matrices = parts
    return RenderFrustum(_view(view), Frustum(*angles), Frustum(*tangents), *matrices)


def player_input_of(parts):
    """The record of what the native part returns."""
    *head, view, aperture, frustum, faces = parts
    return PlayerInput(*head, None if view is None else _view(view), aperture,
                       None if frustum is None else _frustum(frustum),
                       {name: _frustum(face) for name, face in faces.items()})


def player_warp_of(parts):
    """The record of what the native part returns."""
    fed, nodes, triangles, seams, poles, error = parts
    return PlayerWarp(player_input_of(fed), *nodes, None if triangles is None else WarpTriangles(*triangles), seams, poles,
                      None if error is None else WarpError(*error))

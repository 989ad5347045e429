"""Results of calls: plain records that own their arrays and outlive the display that they were made from."""

from dataclasses import dataclass
from typing import TYPE_CHECKING, Optional

from ._arguments import count_of

if TYPE_CHECKING:
    import numpy as np


def record(kind):
    """A frozen record; compared by identity, as arrays have no single truth."""
    kind.__module__ = "screenmanager"
    return dataclass(frozen=True, eq=False)(kind)


@record
class Hits:
    """Where rays meet a screen: the nearest hit of each.

    All arrays have the leading shape of the rays. World frame, native units.

    points: (..., 3) float64, on the screen; NaN where there is no hit.
    normals: (..., 3) float64, unit length, at the points; NaN where there is no hit.
    distances: (...) float64, from the origins, native units; NaN where there is no hit.
    sides: (...) int8, 1 where the ray travels along the normal, -1 against it, 0 across it and where there is no hit.
    hit: (...) bool.
    """

    points: "np.ndarray"
    normals: "np.ndarray"
    distances: "np.ndarray"
    sides: "np.ndarray"
    hit: "np.ndarray"


@record
class Places:
    """Points in space, and which of them there are.

    points: (..., 3) float64; NaN where there is none.
    mask: (...) bool, True where there is one.
    """

    points: "np.ndarray"
    mask: "np.ndarray"


@record
class PicturePlaces:
    """Places (u, v) in a picture, and which of them there are.

    places: (..., 2) float64, (0, 0) bottom left to (1, 1) top right; NaN where there is none.
    mask: (...) bool, True where there is one.
    """

    places: "np.ndarray"
    mask: "np.ndarray"


@record
class Outline:
    """The outline of a picture on the screen, once around.

    picture: (4 n, 2) float64, places (u, v) on the edges of the picture, clockwise from the top left corner.
    points: (4 n, 3) float64, where their light arrives; world frame, native units; NaN where it misses the screen.
    mask: (4 n) bool, True where it arrives.
    """

    picture: "np.ndarray"
    points: "np.ndarray"
    mask: "np.ndarray"


@record
class Mesh:
    """Triangles; copies that may be changed without any effect on the display.

    vertices: (n, 3) float64, world frame, native units.
    triangles: (m, 3) uint32, indices into vertices, counter-clockwise when seen against the normal.
    texture_coordinates: (k, 2) float64, (s, t).
    texture_triangles: (m, 3) uint32, indices into texture_coordinates, corner by corner; (0, 3) without any.
    """

    vertices: "np.ndarray"
    triangles: "np.ndarray"
    texture_coordinates: "np.ndarray"
    texture_triangles: "np.ndarray"


@record
class ChannelTargets:
    """The calibration targets of one channel.

    name, id: of the channel.
    points: (rows, columns, 3) float64, on the screen; world frame, native units; NaN where a target misses it. Rows are
        in the order of the channel's locator: by a map file from the bottom of the picture, else from its top.
    picture: (rows, columns, 2) float64, places (u, v) in the picture; NaN where a target misses the screen.
    mask: (rows, columns) bool, True where a target lies on the screen.
    outline: (n, 3) float64, the outline as the locator samples it, those samples that lie on the screen.
    outline_missed: how many samples of it do not.
    fault: why the channel has no targets; empty when it has some.
    remark: what is to be known about its targets; may be empty.
    """

    name: str
    id: str
    points: "np.ndarray"
    picture: "np.ndarray"
    mask: "np.ndarray"
    outline: "np.ndarray"
    outline_missed: int
    fault: str
    remark: str


@record
class ChannelCoverage:
    """What one channel does on the screen. Areas in square native units along the surface, pixel sizes in native units.

    name, id: of the channel; resolution: (width, height) in pixels, 0 where not known.
    area: of the screen that it lights.
    landed, missed: parts of its picture, 0 to 1, that land on the screen and miss it.
    pixel_least, pixel_mean, pixel_most: sides of the squares that cover as much of the surface as its pixels do.
    pixels_measured: how many pixels the least and the most are from.
    fault: what is wrong with it; empty when nothing is. is_lighting: False when nothing of its light is known to land.
    """

    name: str
    id: str
    resolution: "tuple[int, int]"
    area: float
    landed: float
    missed: float
    pixel_least: float
    pixel_mean: float
    pixel_most: float
    pixels_measured: int
    fault: str
    is_lighting: bool


@record
class Overlap:
    """Where two channels light the same part of the screen.

    first, second: their places in Coverage.channels. area: square native units.
    part_of_first, part_of_second: parts of their pictures, 0 to 1.
    """

    first: int
    second: int
    area: float
    part_of_first: float
    part_of_second: float


@record
class Coverage:
    """How the channels of a display cover its screen. Areas in square native units.

    unit: name of the native unit. fault: why nothing could be measured; empty when something was.
    screen_area: of the whole screen. area_by_count: of what is lit by 0, 1, 2, ... channels.
    channels: in configuration order. overlaps: the pairs that overlap.
    piece_corners: (n, 3, 3) float64, the corners of the pieces of the surface; world frame, native units.
    piece_counts: (n) int64, how many channels light each piece. Both None unless pieces were requested.
    """

    unit: str
    fault: str
    screen_area: float
    area_by_count: "tuple[float, ...]"
    channels: "tuple[ChannelCoverage, ...]"
    overlaps: "tuple[Overlap, ...]"
    piece_corners: "Optional[np.ndarray]"
    piece_counts: "Optional[np.ndarray]"

    def part_lit_by_at_least(self, channels: int) -> float:
        """The part of the screen, 0 to 1, that is lit by so many channels and more."""
        if self.screen_area <= 0:
            return 0.0
        return sum(self.area_by_count[max(count_of(channels, "channels"), 0):]) / self.screen_area


@record
class Fault:
    """Something that keeps a display from working: what it concerns, what is wrong, and why, outermost cause first."""

    where: str
    what: str
    causes: "tuple[str, ...]"


@record
class Finding:
    """What a rule found. severity: "fault", "warning" or "remark"; rule: the name by which it can be allowed."""

    severity: str
    rule: str
    where: str
    what: str
    causes: "tuple[str, ...]"


@record
class ChannelFacts:
    """What one channel will use, by labels such as "picture", "position" and "field of view"."""

    name: str
    id: str
    facts: "dict[str, str]"


@record
class Check:
    """What a check of a display found.

    facts: the display in words, by labels such as "screen" and "size". channels: in configuration order.
    faults: what could not be loaded or built. findings: what the rules found, of every severity.
    left_out: the rules that a quick check did not judge by.
    """

    facts: "dict[str, str]"
    channels: "tuple[ChannelFacts, ...]"
    faults: "tuple[Fault, ...]"
    findings: "tuple[Finding, ...]"
    left_out: "tuple[str, ...]"

    @property
    def is_sound(self) -> bool:
        """True without faults, among the findings as well."""
        return not self.faults and all(finding.severity != "fault" for finding in self.findings)

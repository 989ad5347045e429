"""Measured points, and what came of fitting channels to them."""

from typing import TYPE_CHECKING, Optional

from ._arguments import channels_of, flag_of, is_path, names_of, number_of, path_of, text_of
from ._channel import Frustum, Orientation, ScreenArea
from ._native import ArgumentError, ArgumentTypeError
from ._records import record

if TYPE_CHECKING:
    import numpy as np
    import numpy.typing as npt


# As the native part takes covariances.
_LARGEST = 1e12


@record
class MeasuredPoints:
    """Where the light of places in one channel's picture was measured.

    channel: id, or name where no other channel has it.
    picture: (n, 2), places (u, v), (0, 0) bottom left to (1, 1) top right.
    points: (n, 3), where their light arrives; native units, in the frame of the display or of the station.
    deviations: (n, 3), or (3,) for all: standard deviations of x, y, z, native units, above 0; None where not known.
    covariances: (n, 3, 3), or (3, 3) for all: instead of them; native units squared.
    picture_deviations: (n, 2), or (2,) for all: standard deviations of u and v; None for places that are exact.
    set: the station that measured them, where there are several.

    All points of a fit state deviations, or none.
    """

    channel: str
    picture: "npt.ArrayLike"
    points: "npt.ArrayLike"
    deviations: "Optional[npt.ArrayLike]" = None
    covariances: "Optional[npt.ArrayLike]" = None
    picture_deviations: "Optional[npt.ArrayLike]" = None
    set: str = ""


@record
class ControlPoints:
    """Marks whose places in the display are known, as one station measured them.

    measured: (n, 3), in the frame of the station; known: (n, 3), in that of the display. Native units.
    set: the station.
    """

    measured: "npt.ArrayLike"
    known: "npt.ArrayLike"
    set: str = ""


@record
class Lens:
    """A calibrated lens. kind: "BrownConrady" or "Fisheye".

    resolution: (width, height) of the calibration picture. fx, fy, cx, cy: focal lengths and the place of the axis in
    its pixels; the first one, top left, is centred at (0, 0). distortion: k1 k2 p1 p2 ..., or k1 to k4 of a fisheye lens.
    """

    kind: str
    resolution: "tuple[int, int]"
    fx: float
    fy: float
    cx: float
    cy: float
    distortion: "tuple[float, ...]"


@record
class ChannelValues:
    """The geometry of a channel: position (x, y, z) in native units, orientation and frustum in radians, screen_area,
    and the lens that was calibrated; None without one. With a lens, the frustum is not used."""

    position: "tuple[float, float, float]"
    orientation: Orientation
    frustum: Frustum
    screen_area: ScreenArea
    lens: "Optional[Lens]"


@record
class FittedValue:
    """One number of a channel, such as "position x", "frustum left" or "k1".

    quantity: "length", native units; "angle", radians; "pixels" of the calibration picture; "number".
    deviation: standard deviation; None for a value that was held.
    """

    name: str
    quantity: str
    before: float
    after: float
    deviation: "Optional[float]"


@record
class ResidualSummary:
    """Sizes of residuals. unmapped: points that have none, and that the others do not count."""

    rms: float
    median: float
    largest: float
    unmapped: int


@record
class Residuals:
    """The residuals of one channel, one row for each of its points.

    rows: from which rows each point was combined: lines of the table, or rows of arrays, counted from 0 through all of
        the MeasuredPoints. sets: the stations; empty where several measured a point.
    picture: (n, 2) float64, (u, v); points: (n, 3) float64, as measured; frame of the display, native units.
    pixels_before, pixels_after: (n, 2) float64, the place in the picture that leads to the measured point, minus the
        stated one; pixels, +u right, +v up; NaN where none leads there.
    screen_before, screen_after: (n, 3) float64, from the measured point to where the stated place meets the screen;
        native units; NaN where it does not.
    deviations: (n) float64, the sizes after the fit in standard deviations. outlier: (n) bool.
    """

    rows: "tuple[tuple[int, ...], ...]"
    sets: "tuple[str, ...]"
    picture: "np.ndarray"
    points: "np.ndarray"
    pixels_before: "np.ndarray"
    pixels_after: "np.ndarray"
    screen_before: "np.ndarray"
    screen_after: "np.ndarray"
    deviations: "np.ndarray"
    outlier: "np.ndarray"


@record
class WorstCombination:
    """The combination of values that the points determine worst, and what to measure for it.

    value: the value that has most of it; deviation: its standard deviation along it, of that quantity.
    scaled_condition: largest over smallest singular value of the scaled derivatives. names, weights: of what was solved;
    the squares of the weights have the sum 1.
    """

    text: str
    remedy: str
    value: str
    quantity: str
    deviation: float
    scaled_condition: float
    names: "tuple[str, ...]"
    weights: "tuple[float, ...]"


@record
class FitFinding:
    """What must be known of a fit. kind: such as "OUTLIERS" or "TOO_FEW_POINTS"; outcome: what it makes of the fit."""

    kind: str
    outcome: str
    text: str
    remedy: str


@record
class Registration:
    """How the frame of a station lies in that of the display: display = scale * rotation @ station + translation.

    rotation: (3, 3) float64. translation: (x, y, z), native units. rms, deviations: (n) float64, how far the control
    points are off, native units. rows: the lines of these in the table, or the rows of arrays, counted from 0.
    """

    set: str
    scale: float
    rotation: "np.ndarray"
    translation: "tuple[float, float, float]"
    rms: float
    deviations: "np.ndarray"
    rows: "tuple[int, ...]"
    remarks: "tuple[str, ...]"


@record
class Measurement:
    """What was measured: rows, the points that they were combined to, rows that repeat another one, control points, rows
    passed over as not mapped or for want of a place in a picture, and columns that mean nothing."""

    rows: int
    points: int
    repeated: int
    controls: int
    unmapped: int
    without_picture: int
    ignored_columns: "tuple[str, ...]"


@record
class ChannelFit:
    """The fit of one channel.

    outcome: "good", "doubtful" or "unusable". is_solved: False where after is only before again. solved: the groups.
    residual_factor: 1 is expected where deviations are stated; else the deviation of one coordinate, pixels, or native
        units on planar and collimated displays.
    pixels_before, pixels_after: pixels; screen_before, screen_after: native units. Before: of all points; after: of
        those that are no outliers.
    covariance: (k, k) float64, of worst.names: orientation about the axes of the projector (right, forward, up),
        position along them, then width, height and shifts of the picture. worst: None where nothing was solved.
    """

    name: str
    id: str
    outcome: str
    is_solved: bool
    solved: "tuple[str, ...]"
    holds_square_pixels: bool
    holds_horizontal_shift: bool
    outliers: int
    degrees_of_freedom: int
    residual_factor: float
    has_stated_deviations: bool
    iterations: int
    pixels_before: ResidualSummary
    pixels_after: ResidualSummary
    screen_before: ResidualSummary
    screen_after: ResidualSummary
    values: "tuple[FittedValue, ...]"
    covariance: "np.ndarray"
    worst: "Optional[WorstCombination]"
    findings: "tuple[FitFinding, ...]"
    residuals: Residuals
    before: ChannelValues
    after: ChannelValues

    def __repr__(self):
        return f"<screenmanager.ChannelFit {self.name!r}: {self.outcome}>"


@record
class Fit:
    """What came of fitting channels to measured points. Display.apply puts it into a display.

    outcome: the worst of its parts: "good"; "doubtful", with outliers, or values that the points hardly determine;
        "unusable", where they do not determine them or do not fit at all.
    unit: name of the native unit. frames: of the stations; empty without registration. channels: those with points, in
        configuration order. findings: on the display as a whole.
    text: the report for people. json: the one for programs, docs/schemas/fit.schema.json; None unless requested.
    """

    outcome: str
    unit: str
    measurement: Measurement
    frames: "tuple[Registration, ...]"
    channels: "tuple[ChannelFit, ...]"
    findings: "tuple[FitFinding, ...]"
    text: str
    json: "Optional[str]"

    def __repr__(self):
        channels = ", ".join(f"{channel.name!r} {channel.outcome}" for channel in self.channels)
        return f"<screenmanager.Fit {self.outcome}: {channels or 'no channels'}>"


def plan_of(channels, solve, hold, robust, rejection, register, json, controls, is_table):
    """How a fit is wanted, for the native part."""
    if register is not None:
        text_of(register, "register")
    elif controls:
        raise ArgumentError('controls: state register="rigid" or "similarity", or leave them out')
    if controls and is_table:
        raise ArgumentError("controls: a table has its control points in columns X, Y, Z")
    rejection = number_of(rejection, "rejection")
    if not rejection > 0:
        raise ArgumentError(f"rejection: expected a number of standard deviations above 0, found {rejection}")
    return (channels_of(channels), None if solve is None else names_of(solve, "solve"), names_of(hold, "hold"),
            flag_of(robust, "robust"), rejection, register or "", flag_of(json, "json"))


def table_options_of(unit, origin, is_table):
    """Unit and origin of a table, for the native part."""
    if not is_table and (unit is not None or origin is not None):
        raise ArgumentError("unit, origin: arrays are in native units, and count from the bottom left corner")
    if origin is not None and text_of(origin, "origin") not in ("bottom-left", "top-left"):
        raise ArgumentError(f"origin: expected bottom-left or top-left, found {origin!r}")
    return "" if unit is None else text_of(unit, "unit"), origin == "top-left"


def _listed(value, kind, name, others=" or a list of them"):
    if isinstance(value, kind):
        return [value]
    what = f"{name}: expected {kind.__name__}{others}"
    try:
        parts = list(value)
    except TypeError:
        raise ArgumentTypeError(f"{what}, found {type(value).__name__}") from None
    for part in parts:
        if not isinstance(part, kind):
            raise ArgumentTypeError(f"{what}, found one of {type(part).__name__}")
    return parts


def _require_alike(parts):
    """Points that were measured twice are combined by their deviations."""
    for name, what in (("deviations", lambda part: part.deviations is not None or part.covariances is not None),
                       ("picture_deviations", lambda part: part.picture_deviations is not None)):
        for number, part in enumerate(parts):
            if what(part) != what(parts[0]):
                raise ArgumentError(f"measured[{number}]: {name} are stated by some of them only: state them for all, or "
                                    "for none")


def _require_covariances(part, name):
    """Those that are matrices of finite numbers; what else there is, the native part refuses."""
    import numpy as np

    try:
        matrices = np.asarray(part.covariances, dtype=float)
    except Exception:  # noqa: BLE001: an object may raise anything, and a warning may count as an error
        return
    if matrices.shape[-2:] != (3, 3) or not (np.abs(matrices) <= _LARGEST).all():
        return
    if not (np.linalg.eigvalsh(matrices) > 0).all() or not np.allclose(matrices, np.swapaxes(matrices, -1, -2), atol=0):
        raise ArgumentError(f"{name}.covariances: expected covariances, which are symmetric and positive definite")


def measured_of(measured):
    """The path of a table, or lists of arrays, for the native part."""
    if is_path(measured):
        return path_of(measured, "measured")
    parts = _listed(measured, MeasuredPoints, "measured", ", a list of them or the path of a table")
    for number, part in enumerate(parts):
        if part.deviations is not None and part.covariances is not None:
            raise ArgumentError(f"measured[{number}]: it states deviations and covariances: leave one of them out")
        if part.covariances is not None:
            _require_covariances(part, f"measured[{number}]")
    _require_alike(parts)
    return [(text_of(part.channel, f"measured[{number}].channel"), part.picture, part.points, part.deviations,
             part.covariances, part.picture_deviations, text_of(part.set, f"measured[{number}].set"))
            for number, part in enumerate(parts)]


def controls_of(controls):
    """Lists of arrays, for the native part."""
    return [(part.measured, part.known, text_of(part.set, f"controls[{number}].set"))
            for number, part in enumerate(_listed(controls, ControlPoints, "controls"))]


def _values(parts):
    position, orientation, frustum, area, lens = parts
    return ChannelValues(position, Orientation(*orientation), Frustum(*frustum), ScreenArea(*area),
                         None if lens is None else Lens(*lens))


def _findings(parts):
    return tuple(FitFinding(*finding) for finding in parts)


def _channel(parts):
    *numbers, values, covariance, worst, findings, residuals, before, after = parts
    head, summaries = numbers[:-4], numbers[-4:]
    return ChannelFit(*head, *(ResidualSummary(*summary) for summary in summaries),
                      tuple(FittedValue(*value) for value in values), covariance,
                      None if worst is None else WorstCombination(*worst), _findings(findings), Residuals(*residuals),
                      _values(before), _values(after))


def fit_of(result):
    """The records of what the native part returns."""
    (outcome, unit, measurement, frames, channels, findings), text, json = result
    # No file is written yet, which it would say at its end.
    text = text.decode("utf-8", "replace").removesuffix("\nNothing was written.\n")
    return Fit(outcome, unit, Measurement(*measurement), tuple(Registration(*frame) for frame in frames),
               tuple(_channel(channel) for channel in channels), _findings(findings), text,
               None if json is None else json.decode("utf-8", "replace"))


def found_of(fit, force):
    """What a fit has found, for the native part."""
    if not isinstance(fit, Fit):
        raise ArgumentTypeError(f"fit: expected a Fit, found {type(fit).__name__}")
    if not flag_of(force, "force") and fit.outcome == "unusable":
        raise ArgumentError("fit: it is unusable, see its text: measure what it names, or state force=True")

    def lens_of(lens):
        return lens and (lens.kind, lens.resolution, lens.fx, lens.fy, lens.cx, lens.cy, lens.distortion)

    return [(channel.id, channel.solved,
             (after.position, after.orientation, after.frustum, after.screen_area, lens_of(after.lens)))
            for channel in fit.channels if channel.is_solved for after in (channel.after,)]

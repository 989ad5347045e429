# Types of the module, written by hand; a test compares them with the module. Texts stand with the code.
import os
from collections.abc import Iterable, Mapping
from typing import Any, Final, NamedTuple, Protocol, SupportsIndex, TypeVar, Union, overload

import numpy as np
import numpy.typing as npt

__all__ = [
    "ArgumentError", "ArgumentTypeError", "Blend", "BusyError", "ChangedFileError", "Channel", "ChannelCoverage",
    "ChannelFacts", "ChannelFit", "ChannelTargets", "ChannelValues", "Check", "ControlPoints", "Convention",
    "Coverage", "Display", "Error", "Fault", "Finding", "Fit", "FitFinding", "FittedValue", "Frustum", "Hits",
    "Input", "Layout", "Lens", "MeasuredPoints", "Measurement", "Mesh", "MeshError", "MissingFileError",
    "Orientation", "Outline", "Overlap", "ParseError", "PicturePlaces", "Places", "PlayerInput", "PlayerWarp",
    "Registration", "RenderFrustum", "ResidualSummary", "Residuals", "Screen", "ScreenArea", "Surface",
    "TargetData", "View", "WarpError", "WarpTriangles", "WorstCombination",
]

_Path = Union[str, bytes, os.PathLike[str], os.PathLike[bytes]]
_Doubles = npt.NDArray[np.float64]
_Mask = npt.NDArray[np.bool_]
_Numbers = npt.ArrayLike
_Input = Union["Input", str]

_Get_co = TypeVar("_Get_co", covariant=True)
_Set_contra = TypeVar("_Set_contra", contravariant=True)

# What is set may be of more types than what is read, which the setter of a property cannot state.
class _Settable(Protocol[_Get_co, _Set_contra]):
    @overload
    def __get__(self, instance: None, owner: Any, /) -> property: ...
    @overload
    def __get__(self, instance: object, owner: Any = ..., /) -> _Get_co: ...
    def __set__(self, instance: Any, value: _Set_contra, /) -> None: ...

class Error(Exception): ...
class ArgumentError(Error, ValueError): ...
class ArgumentTypeError(Error, TypeError): ...
class BusyError(Error, RuntimeError): ...
class ChangedFileError(Error): ...
class MissingFileError(Error, FileNotFoundError): ...
class ParseError(Error, ValueError): ...
class MeshError(ParseError): ...

class Orientation(NamedTuple):
    z: float
    x: float
    y: float

class Frustum(NamedTuple):
    left: float
    right: float
    bottom: float
    top: float

class ScreenArea(NamedTuple):
    left: float
    right: float
    bottom: float
    top: float

class Layout(NamedTuple):
    x_min: float
    x_max: float
    y_min: float
    y_max: float

class Hits:
    __match_args__ = ("points", "normals", "distances", "sides", "hit")
    points: Final[_Doubles]
    normals: Final[_Doubles]
    distances: Final[_Doubles]
    sides: Final[npt.NDArray[np.int8]]
    hit: Final[_Mask]
    def __init__(self, points: _Doubles, normals: _Doubles, distances: _Doubles, sides: npt.NDArray[np.int8],
                 hit: _Mask) -> None: ...

class Places:
    __match_args__ = ("points", "mask")
    points: Final[_Doubles]
    mask: Final[_Mask]
    def __init__(self, points: _Doubles, mask: _Mask) -> None: ...

class PicturePlaces:
    __match_args__ = ("places", "mask")
    places: Final[_Doubles]
    mask: Final[_Mask]
    def __init__(self, places: _Doubles, mask: _Mask) -> None: ...

class Outline:
    __match_args__ = ("picture", "points", "mask")
    picture: Final[_Doubles]
    points: Final[_Doubles]
    mask: Final[_Mask]
    def __init__(self, picture: _Doubles, points: _Doubles, mask: _Mask) -> None: ...

class Mesh:
    __match_args__ = ("vertices", "triangles", "texture_coordinates", "texture_triangles")
    vertices: Final[_Doubles]
    triangles: Final[npt.NDArray[np.uint32]]
    texture_coordinates: Final[_Doubles]
    texture_triangles: Final[npt.NDArray[np.uint32]]
    def __init__(self, vertices: _Doubles, triangles: npt.NDArray[np.uint32], texture_coordinates: _Doubles,
                 texture_triangles: npt.NDArray[np.uint32]) -> None: ...

class ChannelTargets:
    __match_args__ = ("name", "id", "points", "picture", "mask", "outline", "outline_missed", "fault", "remark")
    name: Final[str]
    id: Final[str]
    points: Final[_Doubles]
    picture: Final[_Doubles]
    mask: Final[_Mask]
    outline: Final[_Doubles]
    outline_missed: Final[int]
    fault: Final[str]
    remark: Final[str]
    def __init__(self, name: str, id: str, points: _Doubles, picture: _Doubles, mask: _Mask, outline: _Doubles,
                 outline_missed: int, fault: str, remark: str) -> None: ...

class ChannelCoverage:
    __match_args__ = ("name", "id", "resolution", "area", "landed", "missed", "pixel_least", "pixel_mean", "pixel_most", "pixels_measured", "fault", "is_lighting")
    name: Final[str]
    id: Final[str]
    resolution: Final[tuple[int, int]]
    area: Final[float]
    landed: Final[float]
    missed: Final[float]
    pixel_least: Final[float]
    pixel_mean: Final[float]
    pixel_most: Final[float]
    pixels_measured: Final[int]
    fault: Final[str]
    is_lighting: Final[bool]
    def __init__(self, name: str, id: str, resolution: tuple[int, int], area: float, landed: float, missed: float,
                 pixel_least: float, pixel_mean: float, pixel_most: float, pixels_measured: int, fault: str,
                 is_lighting: bool) -> None: ...

class Overlap:
    __match_args__ = ("first", "second", "area", "part_of_first", "part_of_second")
    first: Final[int]
    second: Final[int]
    area: Final[float]
    part_of_first: Final[float]
    part_of_second: Final[float]
    def __init__(self, first: int, second: int, area: float, part_of_first: float, part_of_second: float) -> None: ...

class Coverage:
    __match_args__ = ("unit", "fault", "screen_area", "area_by_count", "channels", "overlaps", "piece_corners", "piece_counts")
    unit: Final[str]
    fault: Final[str]
    screen_area: Final[float]
    area_by_count: Final[tuple[float, ...]]
    channels: Final[tuple[ChannelCoverage, ...]]
    overlaps: Final[tuple[Overlap, ...]]
    piece_corners: Final[_Doubles | None]
    piece_counts: Final[npt.NDArray[np.int64] | None]
    def __init__(self, unit: str, fault: str, screen_area: float, area_by_count: tuple[float, ...],
                 channels: tuple[ChannelCoverage, ...], overlaps: tuple[Overlap, ...], piece_corners: _Doubles | None,
                 piece_counts: npt.NDArray[np.int64] | None) -> None: ...
    def part_lit_by_at_least(self, channels: int) -> float: ...

class Fault:
    __match_args__ = ("where", "what", "causes")
    where: Final[str]
    what: Final[str]
    causes: Final[tuple[str, ...]]
    def __init__(self, where: str, what: str, causes: tuple[str, ...]) -> None: ...

class Finding:
    __match_args__ = ("severity", "rule", "where", "what", "causes")
    severity: Final[str]
    rule: Final[str]
    where: Final[str]
    what: Final[str]
    causes: Final[tuple[str, ...]]
    def __init__(self, severity: str, rule: str, where: str, what: str, causes: tuple[str, ...]) -> None: ...

class ChannelFacts:
    __match_args__ = ("name", "id", "facts")
    name: Final[str]
    id: Final[str]
    facts: Final[dict[str, str]]
    def __init__(self, name: str, id: str, facts: dict[str, str]) -> None: ...

class Check:
    __match_args__ = ("facts", "channels", "faults", "findings", "left_out")
    facts: Final[dict[str, str]]
    channels: Final[tuple[ChannelFacts, ...]]
    faults: Final[tuple[Fault, ...]]
    findings: Final[tuple[Finding, ...]]
    left_out: Final[tuple[str, ...]]
    def __init__(self, facts: dict[str, str], channels: tuple[ChannelFacts, ...], faults: tuple[Fault, ...],
                 findings: tuple[Finding, ...], left_out: tuple[str, ...]) -> None: ...
    @property
    def is_sound(self) -> bool: ...

class MeasuredPoints:
    __match_args__ = ("channel", "picture", "points", "deviations", "covariances", "picture_deviations", "set")
    channel: Final[str]
    picture: Final[_Numbers]
    points: Final[_Numbers]
    deviations: Final[_Numbers | None]
    covariances: Final[_Numbers | None]
    picture_deviations: Final[_Numbers | None]
    set: Final[str]
    def __init__(self, channel: str, picture: _Numbers, points: _Numbers, deviations: _Numbers | None = ...,
                 covariances: _Numbers | None = ..., picture_deviations: _Numbers | None = ...,
                 set: str = ...) -> None: ...

class ControlPoints:
    __match_args__ = ("measured", "known", "set")
    measured: Final[_Numbers]
    known: Final[_Numbers]
    set: Final[str]
    def __init__(self, measured: _Numbers, known: _Numbers, set: str = ...) -> None: ...

class Lens:
    __match_args__ = ("kind", "resolution", "fx", "fy", "cx", "cy", "distortion")
    kind: Final[str]
    resolution: Final[tuple[int, int]]
    fx: Final[float]
    fy: Final[float]
    cx: Final[float]
    cy: Final[float]
    distortion: Final[tuple[float, ...]]
    def __init__(self, kind: str, resolution: tuple[int, int], fx: float, fy: float, cx: float, cy: float,
                 distortion: tuple[float, ...]) -> None: ...

class ChannelValues:
    __match_args__ = ("position", "orientation", "frustum", "screen_area", "lens")
    position: Final[tuple[float, float, float]]
    orientation: Final[Orientation]
    frustum: Final[Frustum]
    screen_area: Final[ScreenArea]
    lens: Final[Lens | None]
    def __init__(self, position: tuple[float, float, float], orientation: Orientation, frustum: Frustum,
                 screen_area: ScreenArea, lens: Lens | None) -> None: ...

class FittedValue:
    __match_args__ = ("name", "quantity", "before", "after", "deviation")
    name: Final[str]
    quantity: Final[str]
    before: Final[float]
    after: Final[float]
    deviation: Final[float | None]
    def __init__(self, name: str, quantity: str, before: float, after: float, deviation: float | None) -> None:
                 ...

class ResidualSummary:
    __match_args__ = ("rms", "median", "largest", "unmapped")
    rms: Final[float]
    median: Final[float]
    largest: Final[float]
    unmapped: Final[int]
    def __init__(self, rms: float, median: float, largest: float, unmapped: int) -> None: ...

class Residuals:
    __match_args__ = ("rows", "sets", "picture", "points", "pixels_before", "pixels_after", "screen_before", "screen_after", "deviations", "outlier")
    rows: Final[tuple[tuple[int, ...], ...]]
    sets: Final[tuple[str, ...]]
    picture: Final[_Doubles]
    points: Final[_Doubles]
    pixels_before: Final[_Doubles]
    pixels_after: Final[_Doubles]
    screen_before: Final[_Doubles]
    screen_after: Final[_Doubles]
    deviations: Final[_Doubles]
    outlier: Final[_Mask]
    def __init__(self, rows: tuple[tuple[int, ...], ...], sets: tuple[str, ...], picture: _Doubles, points:
                 _Doubles, pixels_before: _Doubles, pixels_after: _Doubles, screen_before: _Doubles, screen_after:
                 _Doubles, deviations: _Doubles, outlier: _Mask) -> None: ...

class WorstCombination:
    __match_args__ = ("text", "remedy", "value", "quantity", "deviation", "scaled_condition", "names", "weights")
    text: Final[str]
    remedy: Final[str]
    value: Final[str]
    quantity: Final[str]
    deviation: Final[float]
    scaled_condition: Final[float]
    names: Final[tuple[str, ...]]
    weights: Final[tuple[float, ...]]
    def __init__(self, text: str, remedy: str, value: str, quantity: str, deviation: float, scaled_condition:
                 float, names: tuple[str, ...], weights: tuple[float, ...]) -> None: ...

class FitFinding:
    __match_args__ = ("kind", "outcome", "text", "remedy")
    kind: Final[str]
    outcome: Final[str]
    text: Final[str]
    remedy: Final[str]
    def __init__(self, kind: str, outcome: str, text: str, remedy: str) -> None: ...

class Registration:
    __match_args__ = ("set", "scale", "rotation", "translation", "rms", "deviations", "rows", "remarks")
    set: Final[str]
    scale: Final[float]
    rotation: Final[_Doubles]
    translation: Final[tuple[float, float, float]]
    rms: Final[float]
    deviations: Final[_Doubles]
    rows: Final[tuple[int, ...]]
    remarks: Final[tuple[str, ...]]
    def __init__(self, set: str, scale: float, rotation: _Doubles, translation: tuple[float, float, float], rms:
                 float, deviations: _Doubles, rows: tuple[int, ...], remarks: tuple[str, ...]) -> None: ...

class Measurement:
    __match_args__ = ("rows", "points", "repeated", "controls", "unmapped", "without_picture", "ignored_columns")
    rows: Final[int]
    points: Final[int]
    repeated: Final[int]
    controls: Final[int]
    unmapped: Final[int]
    without_picture: Final[int]
    ignored_columns: Final[tuple[str, ...]]
    def __init__(self, rows: int, points: int, repeated: int, controls: int, unmapped: int, without_picture: int,
                 ignored_columns: tuple[str, ...]) -> None: ...

class ChannelFit:
    __match_args__ = ("name", "id", "outcome", "is_solved", "solved", "holds_square_pixels", "holds_horizontal_shift", "outliers", "degrees_of_freedom", "residual_factor", "has_stated_deviations", "iterations", "pixels_before", "pixels_after", "screen_before", "screen_after", "values", "covariance", "worst", "findings", "residuals", "before", "after")
    name: Final[str]
    id: Final[str]
    outcome: Final[str]
    is_solved: Final[bool]
    solved: Final[tuple[str, ...]]
    holds_square_pixels: Final[bool]
    holds_horizontal_shift: Final[bool]
    outliers: Final[int]
    degrees_of_freedom: Final[int]
    residual_factor: Final[float]
    has_stated_deviations: Final[bool]
    iterations: Final[int]
    pixels_before: Final[ResidualSummary]
    pixels_after: Final[ResidualSummary]
    screen_before: Final[ResidualSummary]
    screen_after: Final[ResidualSummary]
    values: Final[tuple[FittedValue, ...]]
    covariance: Final[_Doubles]
    worst: Final[WorstCombination | None]
    findings: Final[tuple[FitFinding, ...]]
    residuals: Final[Residuals]
    before: Final[ChannelValues]
    after: Final[ChannelValues]
    def __init__(self, name: str, id: str, outcome: str, is_solved: bool, solved: tuple[str, ...],
                 holds_square_pixels: bool, holds_horizontal_shift: bool, outliers: int, degrees_of_freedom: int,
                 residual_factor: float, has_stated_deviations: bool, iterations: int, pixels_before: ResidualSummary,
                 pixels_after: ResidualSummary, screen_before: ResidualSummary, screen_after: ResidualSummary, values:
                 tuple[FittedValue, ...], covariance: _Doubles, worst: WorstCombination | None, findings:
                 tuple[FitFinding, ...], residuals: Residuals, before: ChannelValues, after: ChannelValues) -> None:
                 ...

class Fit:
    __match_args__ = ("outcome", "unit", "measurement", "frames", "channels", "findings", "text", "json")
    outcome: Final[str]
    unit: Final[str]
    measurement: Final[Measurement]
    frames: Final[tuple[Registration, ...]]
    channels: Final[tuple[ChannelFit, ...]]
    findings: Final[tuple[FitFinding, ...]]
    text: Final[str]
    json: Final[str | None]
    def __init__(self, outcome: str, unit: str, measurement: Measurement, frames: tuple[Registration, ...],
                 channels: tuple[ChannelFit, ...], findings: tuple[FitFinding, ...], text: str,
                 json: str | None) -> None: ...

class Input:
    __match_args__ = ("kind", "direction", "roll", "aperture", "margin", "size")
    kind: Final[str]
    direction: Final[_Numbers | None]
    roll: Final[float | None]
    aperture: Final[float | None]
    margin: Final[float | None]
    size: Final[tuple[int, int] | None]
    def __init__(self, kind: str = ..., direction: _Numbers | None = ..., roll: float | None = ..., aperture:
                 float | None = ..., margin: float | None = ..., size: tuple[int, int] | None = ...) -> None: ...
    def __post_init__(self) -> None: ...

class Convention:
    __match_args__ = ("depth", "world", "handed", "near", "far")
    depth: Final[str]
    world: Final[str]
    handed: Final[str]
    near: Final[float]
    far: Final[float]
    def __init__(self, depth: str = ..., world: str = ..., handed: str = ..., near: float = ...,
                 far: float = ...) -> None: ...
    def __post_init__(self) -> None: ...

class Blend:
    __match_args__ = ("gamma", "bits", "alpha", "black_level")
    gamma: Final[float | str]
    bits: Final[tuple[int, ...]]
    alpha: Final[bool]
    black_level: Final[float | Mapping[str, float] | None]
    def __init__(self, gamma: float | str = ..., bits: tuple[int, ...] = ..., alpha: bool = ...,
                 black_level: float | Mapping[str, float] | None = ...) -> None: ...
    def __post_init__(self) -> None: ...

class View:
    __match_args__ = ("position", "orientation", "right", "forward", "up")
    position: Final[_Doubles]
    orientation: Final[Orientation]
    right: Final[_Doubles]
    forward: Final[_Doubles]
    up: Final[_Doubles]
    def __init__(self, position: _Doubles, orientation: Orientation, right: _Doubles, forward: _Doubles, up:
                 _Doubles) -> None: ...

class RenderFrustum:
    __match_args__ = ("view", "angles", "tangents", "view_matrix", "projection_matrix")
    view: Final[View]
    angles: Final[Frustum]
    tangents: Final[Frustum]
    view_matrix: Final[_Doubles]
    projection_matrix: Final[_Doubles]
    def __init__(self, view: View, angles: Frustum, tangents: Frustum, view_matrix: _Doubles, projection_matrix:
                 _Doubles) -> None: ...

class PlayerInput:
    __match_args__ = ("kind", "size", "wraps_around", "seen_in_mirror", "view", "aperture", "frustum", "faces")
    kind: Final[str]
    size: Final[tuple[int, int]]
    wraps_around: Final[bool]
    seen_in_mirror: Final[bool]
    view: Final[View | None]
    aperture: Final[float | None]
    frustum: Final[RenderFrustum | None]
    faces: Final[dict[str, RenderFrustum]]
    def __init__(self, kind: str, size: tuple[int, int], wraps_around: bool, seen_in_mirror: bool, view: View |
                 None, aperture: float | None, frustum: RenderFrustum | None, faces: dict[str,
                 RenderFrustum]) -> None: ...

class WarpTriangles:
    __match_args__ = ("picture", "places", "faces")
    picture: Final[_Doubles]
    places: Final[_Doubles]
    faces: Final[npt.NDArray[np.uint8]]
    def __init__(self, picture: _Doubles, places: _Doubles, faces: npt.NDArray[np.uint8]) -> None: ...

class WarpError:
    __match_args__ = ("largest", "largest_of_grid", "places", "beyond", "left_out")
    largest: Final[float]
    largest_of_grid: Final[float]
    places: Final[int]
    beyond: Final[int]
    left_out: Final[int]
    def __init__(self, largest: float, largest_of_grid: float, places: int, beyond: int, left_out: int) -> None: ...

class PlayerWarp:
    __match_args__ = ("input", "picture", "places", "mask", "lit", "faces", "points", "triangles", "cells_at_seams", "left_out_at_poles", "error")
    input: Final[PlayerInput]
    picture: Final[_Doubles]
    places: Final[_Doubles]
    mask: Final[_Mask]
    lit: Final[_Mask]
    faces: Final[npt.NDArray[np.uint8]]
    points: Final[_Doubles | None]
    triangles: Final[WarpTriangles | None]
    cells_at_seams: Final[int]
    left_out_at_poles: Final[int]
    error: Final[WarpError | None]
    def __init__(self, input: PlayerInput, picture: _Doubles, places: _Doubles, mask: _Mask, lit: _Mask, faces:
                 npt.NDArray[np.uint8], points: _Doubles | None, triangles: WarpTriangles | None, cells_at_seams: int,
                 left_out_at_poles: int, error: WarpError | None) -> None: ...

class Surface:
    def __init__(self, display: Display, part: str) -> None: ...
    def __reduce__(self) -> tuple[Any, ...]: ...
    def intersect(self, origins: _Numbers, directions: _Numbers) -> Hits: ...
    def map_into_3d(self, st: _Numbers, extrapolate: bool = ...) -> Places: ...
    def normals(self, points: _Numbers) -> _Doubles: ...
    @property
    def hash(self) -> str: ...
    @property
    def is_parameterised(self) -> bool: ...
    @property
    def fault(self) -> str: ...
    @property
    def is_valid(self) -> bool: ...
    def mesh(self) -> Mesh | None: ...

class Screen(Surface):
    def __init__(self, display: Display) -> None: ...
    def __reduce__(self) -> tuple[Any, ...]: ...
    @property
    def content(self) -> Surface: ...
    @property
    def measured(self) -> Surface | None: ...
    def cloud(self) -> npt.NDArray[np.float32] | None: ...
    @property
    def shape(self) -> str: ...
    eye_point: _Settable[tuple[float, float, float], _Numbers]
    centre: _Settable[tuple[float, float, float], _Numbers]
    orientation: _Settable[tuple[float, float, float], _Numbers]
    @property
    def radius(self) -> float: ...
    @radius.setter
    def radius(self, value: float) -> None: ...
    @property
    def width(self) -> float: ...
    @width.setter
    def width(self, value: float) -> None: ...
    @property
    def height(self) -> float: ...
    @height.setter
    def height(self, value: float) -> None: ...
    azimuth: _Settable[tuple[float, float], _Numbers]
    elevation: _Settable[tuple[float, float], _Numbers]
    rails: _Settable[tuple[_Doubles, _Doubles], tuple[_Numbers, _Numbers]]

class Channel:
    def __init__(self, display: Display, id: str) -> None: ...
    def __reduce__(self) -> tuple[Any, ...]: ...
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...
    @property
    def id(self) -> str: ...
    @property
    def name(self) -> str: ...
    @name.setter
    def name(self, value: str) -> None: ...
    @property
    def device(self) -> str: ...
    @device.setter
    def device(self, value: str) -> None: ...
    @property
    def projection_model(self) -> str: ...
    @projection_model.setter
    def projection_model(self, value: str) -> None: ...
    @property
    def map_file(self) -> str: ...
    @map_file.setter
    def map_file(self, value: str) -> None: ...
    @property
    def section_id(self) -> str: ...
    @property
    def old_id(self) -> str: ...
    orientation: _Settable[Orientation, _Numbers]
    frustum: _Settable[Frustum, _Numbers]
    screen_area: _Settable[ScreenArea, _Numbers]
    layout: _Settable[Layout, _Numbers]
    position: _Settable[tuple[float, float, float], _Numbers]
    resolution: _Settable[tuple[int, int], _Numbers]
    def to_layout(self, picture: _Numbers) -> Places: ...
    def from_layout(self, points: _Numbers, cache: bool = ...) -> PicturePlaces: ...
    def to_screen(self, picture: _Numbers) -> Places: ...
    def from_screen(self, points: _Numbers) -> PicturePlaces: ...
    def layout_picture(self) -> Places: ...
    def screen_picture(self) -> Places: ...
    def warp(self, panorama: str = ..., nodes: tuple[int, int] | None = ...) -> PicturePlaces: ...
    def player_input(self, input: _Input = ..., *, eye: _Numbers | None = ...,
                     convention: Convention | None = ...) -> PlayerInput: ...
    def player_warp(self, input: _Input = ..., *, eye: _Numbers | None = ...,
                    nodes: tuple[SupportsIndex, SupportsIndex] | str | None = ..., error: float = ..., wrap: bool = ...,
                    points: bool = ..., triangles: bool = ..., convention: Convention | None = ...) -> PlayerWarp: ...
    def outline(self, samples_per_edge: int = ...) -> Outline: ...

class TargetData:
    def __init__(self, display: Display) -> None: ...
    def __reduce__(self) -> tuple[Any, ...]: ...
    @property
    def type(self) -> str: ...
    position: _Settable[tuple[float, float, float], _Numbers]
    mirror_orientation: _Settable[tuple[float, float, float], _Numbers]
    mirror_position: _Settable[tuple[float, float, float], _Numbers]
    @property
    def mirror_radius(self) -> float: ...
    @mirror_radius.setter
    def mirror_radius(self, value: float) -> None: ...
    yaw_table: _Settable[_Doubles, _Numbers]
    pitch_table: _Settable[_Doubles, _Numbers]

class Display:
    def __init__(self) -> None: ...
    @classmethod
    def load(cls, path: _Path) -> Display: ...
    @classmethod
    def parse(cls, text: str | bytes, name: _Path = ...) -> Display: ...
    def save(self, path: _Path | None = ...) -> None: ...
    def __copy__(self) -> Display: ...
    def __deepcopy__(self, memo: dict[int, Any]) -> Display: ...
    def __reduce__(self) -> tuple[Any, ...]: ...
    @property
    def text(self) -> str: ...
    @property
    def path(self) -> str | bytes: ...
    @property
    def unit(self) -> str: ...
    @property
    def channels(self) -> tuple[Channel, ...]: ...
    def channel(self, name_or_id: str) -> Channel: ...
    def add_channel(self, id: str) -> Channel: ...
    def rename_channel(self, id: str, new_id: str) -> Channel: ...
    def move_channel(self, id: str, direction: SupportsIndex) -> bool: ...
    def remove_channel(self, id: str) -> None: ...
    @property
    def screen(self) -> Screen: ...
    @property
    def target_data(self) -> TargetData: ...
    def targets(self, columns: SupportsIndex = ..., rows: SupportsIndex = ...,
                samples_per_edge: SupportsIndex = ...) -> tuple[ChannelTargets, ...]: ...
    def coverage(self, pieces: bool = ...) -> Coverage: ...
    def check(self, quick: bool = ..., allowed: Iterable[str] = ...) -> Check: ...
    def moved_to(self, path: _Path) -> Display: ...
    def fit(self, measured: _Path | MeasuredPoints | Iterable[MeasuredPoints], *, unit: str | None = ...,
            origin: str | None = ..., controls: ControlPoints | Iterable[ControlPoints] = ...,
            register: str | None = ..., channels: Iterable[str] | None = ..., solve: Iterable[str] | None = ...,
            hold: Iterable[str] = ..., robust: bool = ..., rejection: float = ..., json: bool = ...) -> Fit: ...
    def apply(self, fit: Fit, force: bool = ...) -> tuple[str, ...]: ...
    def export(self, folder: _Path, *, input: _Input = ..., convention: Convention | None = ...,
               formats: Iterable[str] = ..., channels: Iterable[str] | None = ..., eyes: _Numbers | None = ...,
               nodes: tuple[SupportsIndex, SupportsIndex] | None = ..., error: float = ..., wrap: bool = ...,
               test_pictures: bool = ..., content: _Path | None = ..., blend: Blend | None = ...,
               force: bool = ...) -> dict[str, Any]: ...

"""Displays that are lit by many projectors: channels, screens, calibration targets, maps, coverage,
fits to measured points, and exports for players.

    import screenmanager

    display = screenmanager.Display.load("display.xml")
    for channel in display.targets():
        print(channel.name, channel.points.shape, channel.mask.sum())

World frame: +x right, +y forward, +z up, right-handed. Lengths are in the native unit of a configuration, angles in
radians. Places (u, v) in a picture reach from (0, 0) bottom left to (1, 1) top right; row 0 of an array over a picture is
its bottom row. Arrays that hold float64 in rows are used where they lie; results are arrays of their own.
"""

from . import _native

# Before anything is made: what the first interpreter of a process has imported, another one is handed as it is.
_native.require_main_interpreter()

from ._channel import Channel, Frustum, Layout, Orientation, ScreenArea
from ._display import Display, TargetData
from ._export import (Blend, Convention, Input, PlayerInput, PlayerWarp, RenderFrustum, View, WarpError,
                      WarpTriangles)
from ._fit import (ChannelFit, ChannelValues, ControlPoints, Fit, FitFinding, FittedValue, Lens, MeasuredPoints,
                   Measurement, Registration, Residuals, ResidualSummary, WorstCombination)
from ._native import (ArgumentError, ArgumentTypeError, BusyError, ChangedFileError, Error, MeshError,
                      MissingFileError, ParseError)
from ._records import (ChannelCoverage, ChannelFacts, ChannelTargets, Check, Coverage, Fault, Finding, Hits, Mesh,
                       Outline, Overlap, PicturePlaces, Places)
from ._screen import Screen, Surface

__all__ = [
    "ArgumentError", "ArgumentTypeError", "Blend", "BusyError", "ChangedFileError", "Channel", "ChannelCoverage",
    "ChannelFacts", "ChannelFit", "ChannelTargets", "ChannelValues", "Check", "ControlPoints", "Convention",
    "Coverage", "Display", "Error", "Fault", "Finding", "Fit", "FitFinding", "FittedValue", "Frustum", "Hits",
    "Input", "Layout", "Lens", "MeasuredPoints", "Measurement", "Mesh", "MeshError", "MissingFileError",
    "Orientation", "Outline", "Overlap", "ParseError", "PicturePlaces", "Places", "PlayerInput", "PlayerWarp",
    "Registration", "RenderFrustum", "ResidualSummary", "Residuals", "Screen", "ScreenArea", "Surface",
    "TargetData", "View", "WarpError", "WarpTriangles", "WorstCombination",
]

"""A display: its configuration, and what is computed for the whole of it."""

import os
import warnings

from . import _native
from ._arguments import (channels_of, count_of, display_of, flag_of, names_of, path_of, required_path_of, text_of,
                         whole_path_of, with_file, working_folder)
from ._channel import Channel
from ._export import Blend, blend_of, convention_of, cut_of, error_of, input_of, nodes_of
from ._fit import controls_of, fit_of, found_of, measured_of, plan_of, table_options_of
from ._named import Named
from ._records import (ChannelCoverage, ChannelFacts, ChannelTargets, Check, Coverage, Fault, Finding, Overlap)
from ._screen import Screen

# As many as the program places: those of one channel are placed in one go, which Ctrl-C does not end.
_MOST_TARGETS = 4_000_000


class TargetData(Named):
    """What the targets of all channels have in common. Lengths in native units, angles in radians.

    What is set takes effect with the next call; a value that a file could not hold is refused with Error.
    """

    __module__ = "screenmanager"
    __slots__ = ("_display",)

    def __init__(self, display):
        self._display = display_of(display)

    def __reduce__(self):
        return type(self), (self._display,)

    @property
    def _native(self):
        return self._display._native

    def __repr__(self):
        return f"<screenmanager.TargetData of {self._display!r}>"

    @property
    def type(self):
        """The kind of the display: "PlanarBasic", "PlanarAdvanced", "Spherical", "SphericalCollimated", "CustomPlanar",
        "ProjectorCentric" or "3D"."""
        return self._native.target_type()

    @property
    def position(self):
        """(x, y, z), the eye point that the targets are placed for."""
        return tuple(self._native.target_numbers("position"))

    @position.setter
    def position(self, value):
        self._native.set_target_numbers("position", value)

    @property
    def mirror_orientation(self):
        """Angles (z, x, y) of the mirror of a collimated display, about Z with the sign reversed, about X, about Y."""
        return tuple(self._native.target_numbers("mirror_orientation"))

    @mirror_orientation.setter
    def mirror_orientation(self, value):
        self._native.set_target_numbers("mirror_orientation", value)

    @property
    def mirror_position(self):
        """(x, y, z) of the mirror."""
        return tuple(self._native.target_numbers("mirror_position"))

    @mirror_position.setter
    def mirror_position(self, value):
        self._native.set_target_numbers("mirror_position", value)

    @property
    def mirror_radius(self):
        """Radius of the mirror."""
        return self._native.target_numbers("mirror_radius")[0]

    @mirror_radius.setter
    def mirror_radius(self, value):
        self._native.set_target_numbers("mirror_radius", value)

    @property
    def yaw_table(self):
        """(n, 2) float64: rows (measured angle, corrected angle), both increasing; (0, 2) without a table."""
        return self._native.heading_table(True)

    @yaw_table.setter
    def yaw_table(self, value):
        self._native.set_heading_table(True, value)

    @property
    def pitch_table(self):
        """As yaw_table."""
        return self._native.heading_table(False)

    @pitch_table.setter
    def pitch_table(self, value):
        self._native.set_heading_table(False, value)


class Display(Named):
    """A display that is lit by many projectors: its channels, its screen, and what follows from them.

        display = Display.load("display.xml")
        targets = display.targets(columns=8, rows=5)

    World frame: +x right, +y forward, +z up, right-handed. Lengths are in the native unit of the configuration, angles in
    radians. Any number of displays can be used side by side and from any thread; calls wait for each other, as the
    libraries work on one display at a time. The screen and its files are read at the first call that needs them.
    """

    __module__ = "screenmanager"

    __slots__ = ("_native", "_path", "_is_file")

    def __init__(self):
        raise _native.ArgumentTypeError("a Display is made by Display.load(path) or Display.parse(text)")

    @classmethod
    def _of(cls, native, path, is_file):
        display = object.__new__(cls)
        display._native = native
        display._path = path
        display._is_file = is_file
        return display

    @classmethod
    def load(cls, path):
        """Reads a configuration file. Raises MissingFileError where there is none, and ParseError with one fault per line
        when its content is faulty. A path that is relative counts from the working folder as it is now."""
        whole = whole_path_of(path)
        try:
            native = _native.Display.load(whole)
        except _native.MissingFileError as fault:
            raise with_file(_as_stated(_native.Display.load, path, fault), os.fspath(path)) from None
        except _native.Error as fault:
            raise _as_stated(_native.Display.load, path, fault) from None
        return cls._of(native, _like(path, whole), True)

    @classmethod
    def parse(cls, text, name="display.xml"):
        """Reads the text of a configuration. name stands for the path in messages; the files that the text names are
        looked for in the folder of it, which counts from the working folder as it is now."""
        content = text if isinstance(text, bytes) else text_of(text, "text")
        whole = whole_path_of(name, "name") or os.path.join(working_folder("name"), b"")
        try:
            native = _native.Display.parse(content, whole)
        except _native.Error as fault:
            raise _as_stated(lambda path: _native.Display.parse(content, path), name, fault) from None
        return cls._of(native, _like(name, whole), False)

    def save(self, path=None):
        """Writes the configuration in one step; when no path is given, to the file that it was read from or saved to last.
        Comments and everything else that was not changed stay as they were. Raises ChangedFileError, and writes nothing,
        when that file was changed elsewhere since."""
        if path is None and not self._is_file:
            raise _native.ArgumentError("path: expected one for a display that was neither read from a file nor saved")
        target = self._path if path is None else path
        whole = whole_path_of(required_path_of(target))
        self._native.save(whole)
        self._path, self._is_file = _like(target, whole), True

    def moved_to(self, path):
        """This display as it is to be saved at a path in another folder: relative names of files lead to the same files
        from there. Returns a Display of its own, whose save without a path goes to that path; nothing is written yet."""
        whole = whole_path_of(required_path_of(path))
        return self._of(self._native.moved_to(whole), _like(path, whole), True)

    @property
    def text(self):
        """What save writes."""
        return self._native.text()

    @property
    def path(self):
        """The absolute path that it was read from or saved to last; of a text, that of its name."""
        return self._path

    @property
    def unit(self):
        """The name of the native unit, such as "m"."""
        return self._native.unit()

    def __repr__(self):
        return f"<screenmanager.Display {os.fsdecode(self._path)!r}>"

    def __copy__(self):
        return self.__deepcopy__({})

    def __deepcopy__(self, memo):
        display = type(self).parse(self.text, self._place())
        memo[id(self)] = display
        return display

    def __reduce__(self):
        return _restored, (type(self), self.text, self._place())

    @property
    def channels(self):
        """The channels, in configuration order: a tuple of Channel."""
        return tuple(Channel(self, id) for id in self._native.channel_ids())

    def channel(self, name_or_id):
        """The channel with this id, else the one with this name. Raises Error, with the list of channels, when there is
        none and when several have the name."""
        return Channel(self, self._native.find_channel(text_of(name_or_id, "name_or_id")))

    def add_channel(self, id):
        """Adds an entry behind the others, with nothing configured but its id; returns its Channel."""
        self._native.add_channel(text_of(id, "id"))
        return Channel(self, id)

    def rename_channel(self, id, new_id):
        """Gives an entry another id; returns its Channel. Raises Error when another entry has that id."""
        if not self._native.rename_channel(text_of(id, "id"), text_of(new_id, "new_id")):
            raise _native.Error(f'another channel has the id "{new_id}"')
        return Channel(self, new_id)

    def move_channel(self, id, direction):
        """Moves an entry by one place: 1 later, -1 earlier; returns False past either end."""
        return self._native.move_channel(text_of(id, "id"), count_of(direction, "direction"))

    def remove_channel(self, id):
        """Removes an entry; its Channel can no longer be used."""
        self._native.remove_channel(text_of(id, "id"))

    @property
    def screen(self):
        """The Screen."""
        return Screen(self)

    @property
    def target_data(self):
        """The TargetData."""
        return TargetData(self)

    def targets(self, columns=16, rows=10, samples_per_edge=16):
        """Places a grid of calibration targets over every picture, and its outline; returns a tuple of ChannelTargets in
        configuration order. A channel that cannot be placed has its fault, and does not keep the others from it."""
        columns, rows = count_of(columns, "columns"), count_of(rows, "rows")
        if columns * rows > _MOST_TARGETS:
            raise _native.ArgumentError(
                f"columns, rows: expected {_MOST_TARGETS} targets of a channel at most, found {columns} x {rows}")
        placed = self._native.place_targets(columns, rows, count_of(samples_per_edge, "samples_per_edge"))
        return tuple(ChannelTargets(name, id, *grid, *rest) for name, id, grid, *rest in placed)

    def coverage(self, pieces=False):
        """Measures how the channels cover the screen; returns a Coverage. pieces: with the pieces of the surface, too."""
        unit, fault, area, by_count, channels, overlaps, parts = self._native.coverage(flag_of(pieces, "pieces"))
        corners, counts = parts or (None, None)
        return Coverage(unit, fault, area, tuple(by_count), tuple(ChannelCoverage(*channel) for channel in channels),
                        tuple(Overlap(*overlap) for overlap in overlaps), corners, counts)

    def check(self, quick=False, allowed=()):
        """Loads everything that the configuration names and judges the display by rules; returns a Check. quick: without
        the rules that need light. allowed: names of rules to leave out."""
        facts, channels, faults, findings, left_out = self._native.check(flag_of(quick, "quick"), names_of(allowed, "allowed"))
        return Check(facts, tuple(ChannelFacts(*channel) for channel in channels),
                     tuple(Fault(*fault) for fault in faults), tuple(Finding(*finding) for finding in findings),
                     left_out)

    def _source(self):
        """Where the files lie that it names and is written with, and what its text is recognised by."""
        import hashlib

        return path_of(self._path), hashlib.sha256(self.text.encode("utf-8", "surrogateescape")).hexdigest()

    def fit(self, measured, *, unit=None, origin=None, controls=(), register=None, channels=None, solve=None, hold=(),
            robust=True, rejection=4.0, json=False):
        """Finds the values of channels that agree with measured points; returns a Fit. The display stays as it is: apply
        puts the values in.

        measured: a MeasuredPoints or a list of them; or the path of a table (CSV), see docs/fitting.md.
        unit, origin: of a table: "mm", "cm", "m", "in" or "ft" unless it states its unit, and the corner from which u, v
            and px, py count: "bottom-left" or "top-left".
        register: "rigid" or "similarity", to move each station into the frame of the display by its control points.
        controls: a ControlPoints or a list of them, for points from arrays; a table has its own.
        channels: names or ids; None for all that have points.
        solve: some of "position", "orientation", "frustum", "distortion", "area"; None for what is usual, an
            empty list for nothing, which measures the residuals alone.
        hold: some of "square-pixels", "horizontal-shift".
        robust: False for plain least squares of all points. rejection: points further off are outliers, deviations.
        json: with the report for programs.
        """
        source = measured_of(measured)
        is_table = isinstance(source, bytes)
        marks = controls_of(controls)
        options = table_options_of(unit, origin, is_table)
        plan = (*plan_of(channels, solve, hold, robust, rejection, register, json, marks, is_table),
                *(self._source() if flag_of(json, "json") else (path_of(self._path), "")))
        if is_table:
            try:
                fit = fit_of(self._native.fit_table(source, *options, plan))
            except _native.MissingFileError as fault:
                raise _of_argument(fault, measured) from None
        else:
            fit = fit_of(self._native.fit_arrays(source, marks, plan))
        if fit.measurement.controls and not fit.frames:
            warnings.warn('the control points of the table are not used: state register="rigid" if x, y, z are not in '
                          "the frame of the display", stacklevel=2)
        return fit

    def apply(self, fit, force=False):
        """Puts the values that a fit has solved into the channels, all of them or none; save writes them. A lens that was
        solved goes to a new file beside that of the display, at once; no other file is changed. Returns the paths of
        these files. force: also for a fit that is unusable."""
        files = self._native.apply_fit(os.fsencode(self._place()), found_of(fit, force))
        return tuple(os.fsdecode(file) for file in files)

    def export(self, folder, *, input="frustum", convention=None, formats=("mesh",), channels=None, eyes=None, nodes=None,
               error=0.25, wrap=False, test_pictures=False, content=None, blend=Blend(), force=False):
        """Writes what players need of every channel into a new folder, which appears whole or not at all; returns its
        manifest as a dict, see docs/export-formats.md. One channel after the other, in this process.

        input: an Input or the name of its kind. convention: a Convention, of the matrices; None for the usual one.
        formats: some of "mesh", "obj", "pfm", "pfm3d", "png16". channels: names or ids; None for all.
        eyes: (n, 3), native units, where it is seen from; None for the eye of each channel.
        nodes: (columns, rows) of "mesh" and "obj"; None for the fewest that keep the error, pixels of the input.
        wrap: cut cells where a panorama begins again. test_pictures: one for each projector.
        content: a PNG file, to bend for every channel. blend: a Blend; None for no blends.
        force: replace an earlier export, or fill an empty folder.
        """
        fed = input_of(input)
        cut = cut_of(wrap, fed[0])
        formats = names_of(formats, "formats")
        if cut and "mesh" in formats:
            raise _native.ArgumentError("wrap: a mesh has no cut cells: choose the format obj")
        path, digest = self._source()
        said = {
            "folder": path_of(folder, "folder"), "force": flag_of(force, "force"), "input": fed,
            "convention": convention_of(convention), "formats": formats, "cut": cut,
            "channels": channels_of(channels), "eyes": eyes, "nodes": nodes_of(nodes, False),
            "error": error_of(error), "test_pictures": flag_of(test_pictures, "test_pictures"), "blend": blend_of(blend),
            "content": b"" if content is None else required_path_of(content, "content"), "path": path, "digest": digest}
        try:
            manifest = self._native.export(said)
        except _native.MissingFileError as fault:
            raise _of_argument(fault, content) from None
        import json

        return json.loads(manifest.decode("utf-8", "replace"))

    def _place(self):
        """Its path in the folder in which the files are looked for that it names: that of a save may be another one."""
        folder, name = os.fsencode(self._native.folder()), os.path.basename(path_of(self._path))
        return os.fsdecode(os.path.join(folder, name))


def _like(path, whole):
    """A whole path as the one that was stated: a text or bytes."""
    return whole if isinstance(os.fspath(path), bytes) else os.fsdecode(whole)


def _of_argument(fault, path):
    """A MissingFileError that names its file where that is the one of an argument."""
    if path is not None and str(fault).startswith(os.fsdecode(path)):
        return with_file(fault, os.fspath(path))
    return fault


def _as_stated(read, path, fault):
    """The fault of reading it again by the path as it was stated, by which its text names it."""
    try:
        read(path_of(path))
    except _native.Error as again:
        return again
    return fault


def _restored(kind, text, path):
    """A display from a pickle."""
    return kind.parse(text, path)

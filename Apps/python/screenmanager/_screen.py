"""The screen of a display: its description, and questions about its surface."""

from ._arguments import display_of, flag_of, pair_of, text_of
from ._named import Named
from ._native import ArgumentError
from ._records import Hits, Mesh, Places


# As the native part knows them.
_PARTS = ("preferred", "content", "measured")


class Surface(Named):
    """One surface of a display: what rays hit. World frame: +x right, +y forward, +z up; lengths in native units.

    It follows the display: after a change of the screen, the next call looks at the new surface.
    """

    __module__ = "screenmanager"
    __slots__ = ("_display", "_part")

    def __init__(self, display, part):
        self._display = display_of(display)
        self._part = text_of(part, "part")
        if part not in _PARTS:
            raise ArgumentError(f"part: expected one of {', '.join(_PARTS)}, found {part}")

    def __reduce__(self):
        return type(self), (self._display, self._part)

    @property
    def _native(self):
        return self._display._native

    def __repr__(self):
        return f"<screenmanager.{type(self).__name__} ({self._part}) of {self._display!r}>"

    def intersect(self, origins, directions):
        """Casts rays; returns Hits, the nearest hit of each.

        origins: (..., 3), or (3,) for one origin of all rays. directions: the same shape, or (3,) for one direction of
        all; of any length above zero. A ray of length zero hits nothing. World frame, native units; coordinates up to 1e60.
        """
        return Hits(*self._native.intersect(self._part, origins, directions))

    def map_into_3d(self, st, extrapolate=False):
        """The points of the surface at its 2D parameters; returns Places.

        st: (..., 2), (0, 0) to (1, 1), s to the right and t upwards. Up to 1e-9 outside counts as the edge; further
        outside there is none, unless extrapolate is set and the surface has a continuation there. Raises Error when the
        surface has no parameters.
        """
        return Places(*self._native.map_into_3d(self._part, st, flag_of(extrapolate, "extrapolate")))

    def normals(self, points):
        """The unit normals of the surface at the places nearest to points; both (..., 3), world frame, native units.

        Spheres and cylinders: outward; meshes: by the winding of the triangle.
        """
        return self._native.normals(self._part, points)

    @property
    def hash(self):
        """SHA-1 of the description of the surface, 40 hexadecimal digits: equal for equal descriptions."""
        return self._native.screen_facts(self._part)[0].hex()

    @property
    def is_parameterised(self):
        """Whether map_into_3d has parameters to map."""
        return self._native.screen_facts(self._part)[1]

    @property
    def fault(self):
        """What keeps the shape from being valid, and the remedy; empty for a valid one."""
        return self._native.screen_facts(self._part)[2]

    @property
    def is_valid(self):
        """Whether the surface is finite and has an extent."""
        return not self.fault

    def mesh(self):
        """The triangles of the surface as a Mesh of copies; None for a surface that is given by numbers."""
        parts = self._native.mesh(self._part)
        return None if parts is None else Mesh(*parts)


def _point(name, what):
    def get(self):
        return tuple(self._native.screen_numbers(name))

    def put(self, value):
        self._native.set_screen_numbers(name, value)

    return property(get, put, doc=what)


def _number(name, what):
    def get(self):
        return self._native.screen_numbers(name)[0]

    def put(self, value):
        self._native.set_screen_numbers(name, value)

    return property(get, put, doc=what)


class Screen(Surface):
    """The screen of a display: the measured surface where there is one, else the content surface, which is the shape as
    designed; both by themselves under content and measured.

    The numbers of the description can be set; the surface is built anew at its next use. A number that the shape does not
    have, or could not hold, is refused with Error, and nothing is changed then.
    """

    __module__ = "screenmanager"
    __slots__ = ()

    def __init__(self, display):
        super().__init__(display, "preferred")

    def __reduce__(self):
        return type(self), (self._display,)

    @property
    def content(self):
        """The surface as designed."""
        return Surface(self._display, "content")

    @property
    def measured(self):
        """The surface as measured; None without one."""
        return Surface(self._display, "measured") if self._native.has_measured() else None

    def cloud(self):
        """The point cloud of the model: (n, 3) float32, world frame, native units; NaN for points that the scan has
        none of. None for a display that names no cloud."""
        return self._native.cloud()

    @property
    def shape(self):
        """"Sphere", "Cylinder", "Ruled", "Flat" or "Mesh"."""
        return self._native.screen_shape()

    eye_point = _point("eye_point", "(x, y, z), where the audience looks from; native units.")
    centre = _point("centre", "(x, y, z) of a sphere, of the axis of a cylinder, of a flat rectangle; native units.")
    orientation = _point("orientation", "Angles (z, x, y) in radians, about Z with the sign reversed, about X, about Y.")
    radius = _number("radius", "Radius of a sphere or a cylinder, native units.")
    width = _number("width", "Width of a flat rectangle, native units.")
    height = _number("height", "Height of a flat rectangle or a cylinder, native units.")
    azimuth = _point("azimuth", "(least, most) of a sphere or a cylinder, radians: atan2(x, y) in its own frame.")
    elevation = _point("elevation", "(least, most) of a sphere, radians: asin(z / r) in its own frame.")

    @property
    def rails(self):
        """The rails (lower, upper) of a ruled surface, each (n, 3), from left to right; native units. Set together."""
        return self._native.rails()

    @rails.setter
    def rails(self, value):
        lower, upper = pair_of(value, "rails", "the lower and the upper rail")
        self._native.set_rails(lower, upper)

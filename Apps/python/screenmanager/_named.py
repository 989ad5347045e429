"""Objects that have the attributes of their class and no others."""


class Named:
    """Refuses a misspelt attribute, which Python would keep without any effect. A class that scripts derive from one of
    these may have more."""

    __slots__ = ("__weakref__",)

    def __setattr__(self, name, value):
        if not hasattr(type(self), name) and not hasattr(self, "__dict__"):
            raise AttributeError(_text_of(type(self), name))
        object.__setattr__(self, name, value)


def _text_of(kind, name):
    import difflib

    known = [own for own in dir(kind) if not own.startswith("_")]
    nearest = difflib.get_close_matches(name, known, 1)
    return f"{kind.__name__} has no attribute {name}" + (f": {nearest[0]} is the nearest one" if nearest else "")

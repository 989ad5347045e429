"""Arguments that are no arrays: what does not fit is refused by name."""

import math
import os

from ._native import ArgumentError, ArgumentTypeError

# As many as the libraries count.
_MOST = 2**31 - 1


def text_of(value, name):
    """A text that can be written as UTF-8."""
    if not isinstance(value, str):
        raise ArgumentTypeError(f"{name}: expected a text, found {type(value).__name__}")
    try:
        value.encode("utf-8")
    except UnicodeEncodeError:
        raise ArgumentError(f"{name}: expected a text of characters, found a half of one in {value!r}") from None
    return value


def count_of(value, name):
    """A whole number."""
    try:
        number = value.__index__()
    except AttributeError:
        raise ArgumentTypeError(f"{name}: expected a whole number, found {type(value).__name__}") from None
    if abs(number) > _MOST:
        raise ArgumentError(f"{name}: expected a whole number up to {_MOST}, found {number}")
    return number


def number_of(value, name):
    """A finite number."""
    if isinstance(value, (str, bytes)):
        raise ArgumentTypeError(f"{name}: expected a number, found {type(value).__name__}")
    try:
        number = float(value)
    except (TypeError, ValueError, OverflowError):
        raise ArgumentTypeError(f"{name}: expected a number, found {type(value).__name__}") from None
    if not math.isfinite(number):
        raise ArgumentError(f"{name}: expected a finite number, found {number}")
    return number


def names_of(value, name):
    """A list of texts."""
    if isinstance(value, (str, bytes)):
        raise ArgumentTypeError(f"{name}: expected a list of names, found a text")
    try:
        return [text_of(one, name) for one in value]
    except TypeError as fault:
        if isinstance(fault, ArgumentTypeError):
            raise
        raise ArgumentTypeError(f"{name}: expected a list of names, found {type(value).__name__}") from None


def pair_of(value, name, what):
    """Two values."""
    try:
        first, second = value
    except (TypeError, ValueError):
        raise ArgumentTypeError(f"{name}: expected {what}, found {type(value).__name__}") from None
    return first, second


def is_path(value):
    """Whether it names a file."""
    return isinstance(value, (str, bytes, os.PathLike))


def path_of(path, name="path"):
    """The bytes of a path."""
    try:
        path = os.fsencode(path)
    except TypeError:
        raise ArgumentTypeError(f"{name}: expected a text or a path, found {type(path).__name__}") from None
    except UnicodeEncodeError:
        raise ArgumentError(f"{name}: expected a text of characters, found a half of one in {path!r}") from None
    if b"\0" in path:
        raise ArgumentError(f"{name}: it holds a null character")
    return path

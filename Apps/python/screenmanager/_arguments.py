"""Arguments that are no arrays: what does not fit is refused by name."""

import errno
import math
import operator
import os
import stat

from ._native import ArgumentError, ArgumentTypeError, MissingFileError

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
        number = operator.index(value)
    except TypeError:
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
    except Exception:  # noqa: BLE001: an object may raise anything, and a warning may count as an error
        raise ArgumentTypeError(f"{name}: expected a number, found {type(value).__name__}") from None
    if not math.isfinite(number):
        raise ArgumentError(f"{name}: expected a finite number, found {number}")
    return number


def flag_of(value, name):
    """True or False, of Python or numpy."""
    if isinstance(value, bool):
        return value
    # What numpy compares has a type of its own; numpy may not be there.
    if type(value).__name__ in ("bool_", "bool") and getattr(value, "shape", None) == ():
        return bool(value)
    raise ArgumentTypeError(f"{name}: expected True or False, found {type(value).__name__}")


def display_of(value):
    """A Display."""
    from ._display import Display

    if not isinstance(value, Display):
        raise ArgumentTypeError(f"display: expected a Display, found {type(value).__name__}")
    return value


def channels_of(value):
    """Names or ids; an empty list stands for all of them."""
    if value is None:
        return []
    names = names_of(value, "channels")
    if not names:
        raise ArgumentError("channels: expected one at least, found none; None stands for all")
    return names


def names_of(value, name):
    """A list of texts."""
    if isinstance(value, (str, bytes)):
        raise ArgumentTypeError(f"{name}: expected a list of names, found a text")
    try:
        names = list(value)
    except TypeError:
        raise ArgumentTypeError(f"{name}: expected a list of names, found {type(value).__name__}") from None
    return [text_of(one, name) for one in names]


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


def required_path_of(path, name="path"):
    """The bytes of a path that names something."""
    path = path_of(path, name)
    if not path:
        raise ArgumentError(f"{name}: expected the name of a file, found an empty one")
    return path


def whole_path_of(path, name="path"):
    """The bytes of a path that leads to the same file from whatever folder the process works in later."""
    path = path_of(path, name)
    if not path or os.path.isabs(path):
        return path
    return os.path.join(working_folder(name), path)


def working_folder(name):
    """The bytes of the path of the working folder."""
    try:
        return os.getcwdb()
    except OSError as fault:
        raise MissingFileError(fault.errno, f"{name}: the working folder is gone: state an absolute path") from None


def with_file(fault, path):
    """A MissingFileError with what Python's own have: the number of the fault, and the path as it was stated."""
    if fault.filename is None:
        fault.filename = path
        try:
            os.fsencode(path).decode("utf-8")
            mode = os.stat(path).st_mode
        except UnicodeDecodeError:
            fault.errno = errno.EILSEQ
        except (OSError, ValueError) as cause:
            fault.errno = getattr(cause, "errno", None) or errno.ENOENT
        else:
            fault.errno = errno.EISDIR if stat.S_ISDIR(mode) else errno.EACCES if stat.S_ISREG(mode) else errno.EINVAL
    return fault

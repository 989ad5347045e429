"""Nothing ends the interpreter: neither what a script does with the native part, nor a fork or another interpreter."""

import subprocess
import sys

import pytest

from conftest import example

# What each of these does must raise; a process of its own, as it may end instead.
MADE_BY_HAND = """
import copy, gc, screenmanager, sys
from screenmanager import _native

def refused(call):
    try:
        call()
    except Exception as fault:
        return type(fault).__name__
    return ""

kinds = {kind for kind in vars(_native).values() if isinstance(kind, type)}
for kind in list(kinds):
    kinds |= {base for base in kind.__mro__ if base.__module__.startswith(("screenmanager", "pybind"))} | {type(kind)}
kinds = [kind for kind in kinds if kind not in (type, object) and not issubclass(kind, BaseException)]
assert _native.Display in kinds and len(kinds) >= 3, kinds
for kind in kinds:
    made = []
    arguments = [(), ("Name", (), {}), ("Name", (_native.Display,), {})]
    for new in (kind.__new__, object.__new__, type.__new__, kind.__mro__[-2].__new__):
        for words in arguments:
            assert refused(lambda: made.append(new(kind, *words))), (kind, new, words)
    for words in arguments:
        assert refused(lambda: made.append(kind(*words))), (kind, words)
    assert refused(lambda: made.append(type("Derived", (kind,), {})())), kind
    assert refused(lambda: made.append(kind.__new__(kind))), kind
    for one in made:
        for name in dir(one):
            refused(getattr(one, name))
display = screenmanager.Display.load(sys.argv[1])
for use in (copy.copy, copy.deepcopy, lambda one: one.__reduce_ex__(4), lambda one: one.__reduce_ex__(1),
            lambda one: one.__init__(), lambda one: one.__class__.__init__(one)):
    refused(lambda: use(display._native))
# The methods with something else in the place of the object.
for name in dir(_native.Display):
    method = getattr(_native.Display, name)
    for wrong in (None, 5, display, object(), _native.Display):
        for more in ((), (1,), ("a", "b"), (None,) * 3):
            if callable(method) and not name.startswith("__"):
                assert refused(lambda: method(wrong, *more)) or name in ("parse", "input_kinds", "check_direction"), name
gc.collect()
print(display.channels[0].position)
"""


def test_no_native_object_is_made_by_hand():
    run = subprocess.run([sys.executable, "-c", MADE_BY_HAND, str(example("spherical-dome"))], capture_output=True,
                         text=True, check=False, timeout=60)
    assert run.returncode == 0 and run.stdout == "(0.3, -0.5, 1.2)\n", (run.returncode, run.stderr)


AGAIN = """
import importlib.util, screenmanager, sys
place = importlib.util.spec_from_file_location("other._native", screenmanager._native.__file__)
try:
    place.loader.exec_module(importlib.util.module_from_spec(place))
except ImportError as fault:
    print(fault)
for name in [name for name in sys.modules if name.startswith("screenmanager")]:
    del sys.modules[name]
import screenmanager as again
assert again is not screenmanager and again.Error is screenmanager.Error
print(again.Display.load(sys.argv[1]).channels[0].position)
"""


def test_the_native_part_is_made_once():
    run = subprocess.run([sys.executable, "-c", AGAIN, str(example("spherical-dome"))], capture_output=True, text=True,
                         check=False, timeout=100)
    assert run.returncode == 0, (run.returncode, run.stderr)
    assert run.stdout == "screenmanager is loaded already: import it by this name\n(0.3, -0.5, 1.2)\n"


INTERPRETERS = """
import _xxsubinterpreters as interpreters, sys
FIRST
other = interpreters.create()
try:
    interpreters.run_string(other, "import sys; sys.path[:] = " + repr(sys.path) + "; import screenmanager")
except interpreters.RunFailedError as fault:
    print(fault)
interpreters.destroy(other)
import screenmanager
print(screenmanager.Display.load(sys.argv[1]).channels[0].position)
"""


@pytest.mark.parametrize("first", ["", "import screenmanager"])
def test_an_interpreter_inside_of_the_process_is_refused(first):
    run = subprocess.run([sys.executable, "-c", INTERPRETERS.replace("FIRST", first), str(example("spherical-dome"))],
                         capture_output=True, text=True, check=False, timeout=60)
    assert run.returncode == 0, (run.returncode, run.stderr)
    assert "main interpreter of a process alone" in run.stdout and run.stdout.endswith("(0.3, -0.5, 1.2)\n")


SPLITS = """
import os, screenmanager, signal, sys, threading
display = screenmanager.Display.load(sys.argv[1])
text = open(sys.argv[1], "rb").read()
channel = display.channels[0]
expected = channel.position
stop = threading.Event()

def ask():
    while not stop.is_set():
        channel.position

def give_back():
    while not stop.is_set():
        screenmanager.Display.parse(text)

threads = [threading.Thread(target=work) for work in (ask, ask, give_back)]
for thread in threads:
    thread.start()
ends = []
for _ in range(300):
    child = os.fork()
    if child == 0:
        signal.alarm(10)
        try:
            other = screenmanager.Display.parse(text)
            right = channel.position == expected and other.channels[0].id == channel.id
            del other
            os._exit(0 if right else 1)
        except screenmanager.BusyError:
            os._exit(7)
    ends.append(os.waitpid(child, 0)[1])
stop.set()
for thread in threads:
    thread.join()
print(sorted(set(ends) - {0, 7 << 8}), ends.count(0) > 250)
"""


def test_a_process_may_split_in_the_middle_of_short_calls():
    """A child that waits for a call of its parent would be ended by its alarm."""
    run = subprocess.run([sys.executable, "-c", SPLITS, str(example("dome"))], capture_output=True, text=True,
                         check=False, timeout=400)
    assert run.returncode == 0 and run.stdout == "[] True\n", (run.stdout, run.stderr)


HANDLED = """
import os, screenmanager, signal, sys
display = screenmanager.Display.load(sys.argv[1])
channel = display.channels[0]
channel.resolution = (2000, 1500)
ends = []

def handle(*_):
    child = os.fork()
    if child == 0:
        ends.clear()
        ends.append("child")
        return
    ends.append(os.waitpid(child, 0)[1])

signal.signal(signal.SIGALRM, handle)
signal.setitimer(signal.ITIMER_REAL, 0.05)
places = channel.layout_picture()
while not ends:
    places = channel.layout_picture()
if ends == ["child"]:
    signal.alarm(0)
    os._exit(0 if bool(channel.layout_picture().mask.any()) and bool(places.mask.any()) else 1)
print(ends)
"""


def test_the_handler_of_a_signal_may_split_the_process_inside_of_a_call():
    """The call goes on in both of them."""
    run = subprocess.run([sys.executable, "-c", HANDLED, str(example("spherical-dome"))], capture_output=True, text=True,
                         check=False, timeout=100)
    assert run.returncode == 0 and run.stdout == "[0]\n", (run.stdout, run.stderr)


POOL = """
import multiprocessing, screenmanager, sys

def centre(channel):
    return channel.to_screen((0.5, 0.5)).points.tolist()

if __name__ == "__main__":
    display = screenmanager.Display.load(sys.argv[1])
    expected = [centre(channel) for channel in display.channels]
    with multiprocessing.get_context(sys.argv[2]).Pool(3) as pool:
        assert pool.map(centre, display.channels) == expected
        hits = pool.apply(display.screen.intersect, ((0, 0, 1), [(0, 1, 0), (1, 1, 0)]))
    assert hits.points.tolist() == display.screen.intersect((0, 0, 1), [(0, 1, 0), (1, 1, 0)]).points.tolist()
    print("done")
"""


@pytest.mark.parametrize("method", ["fork", "spawn", "forkserver"])
def test_several_processes_share_the_work(method, tmp_path):
    script = tmp_path / "pool.py"
    script.write_text(POOL, encoding="utf-8")
    run = subprocess.run([sys.executable, script, example("spherical-dome"), method], capture_output=True, text=True,
                         check=False, timeout=120)
    assert run.returncode == 0 and run.stdout == "done\n", run.stderr

"""Several displays, several threads: right results or an error, and never the end of the interpreter."""

import gc
import os
import pathlib
import signal
import subprocess
import sys
import threading
import time

import numpy as np
import pytest
import screenmanager

from conftest import EXAMPLES, assert_same_bits, example

PAIRS = [("spherical-dome", "dome"), ("planar-wall", "warped-wall"), ("mesh-rays", "lens-cylinder"),
         ("collimated", "cylinder")]


def results_of(display):
    """What follows from the screen that is current."""
    channel = display.channels[0]
    picture = np.linspace(0.1, 0.9, 24).reshape(-1, 2)
    return [display.screen.intersect((0, 0, 1.2), [(0, 1, 0), (1, 1, 0.2), (-1, 1, 0.1)]).points,
            display.targets(4, 3, 4)[0].points, display.targets(4, 3, 4)[0].outline,
            channel.to_screen(picture).points, channel.to_layout(picture).points,
            channel.player_warp("screen" if display.target_data.type.startswith("Planar") else "fisheye",
                                nodes=(7, 5)).places, fitted(display)]


def fitted(display):
    """Residuals of its first channel against light that was measured on the same screen."""
    light = display.targets(6, 5, 1)[0]
    measured = screenmanager.MeasuredPoints(light.id, light.picture[light.mask],
                                            light.points[light.mask] + np.array([0.001, -0.002, 0.001]))
    return display.fit(measured).channels[0].residuals.pixels_before


@pytest.mark.parametrize("names", PAIRS)
def test_two_displays_take_turns(names):
    alone = [results_of(screenmanager.Display.load(example(name))) for name in names]
    displays = [screenmanager.Display.load(example(name)) for name in names]
    for _ in range(5):
        for display, expected in zip(displays, alone):
            for ours, theirs in zip(results_of(display), expected):
                assert_same_bits(ours, theirs)


def test_two_displays_with_the_same_ids_do_not_share_their_targets():
    first, second = (screenmanager.Display.load(example("spherical-dome")) for _ in range(2))
    second.screen.radius = 9
    for _ in range(3):
        for display, radius in ((first, first.screen.radius), (second, 9)):
            centre = display.screen.centre
            for channel in display.targets(4, 3, 4):
                for points in (channel.points[channel.mask], channel.outline):
                    assert np.allclose(np.linalg.norm(points - centre, axis=1), radius, atol=1e-9)


def test_eight_threads_on_four_displays_return_what_one_does():
    names = ["spherical-dome", "planar-wall", "mesh-rays", "dome"]
    displays = [screenmanager.Display.load(example(name)) for name in names]
    expected = [results_of(display) for display in displays]
    faults = []

    def work(number):
        try:
            for turn in range(12):
                which = (number + turn) % len(displays)
                for ours, theirs in zip(results_of(displays[which]), expected[which]):
                    assert_same_bits(ours, theirs)
        except BaseException as fault:  # noqa: BLE001
            faults.append(fault)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(120)
        assert not thread.is_alive()
    assert not faults


FIRST_ARRAYS = """
import screenmanager, sys, threading
display = screenmanager.Display.load(sys.argv[1])
assert "numpy" not in sys.modules
begin = threading.Barrier(8)
found = []
def work(number):
    begin.wait()
    # Some begin with an argument, some with a result.
    place = display.channels[0].to_screen((0.5, 0.5)) if number % 2 else display.screen.intersect((0, 0, 1), (0, 1, 0))
    found.append(place.points.shape)
threads = [threading.Thread(target=work, args=(number,), daemon=True) for number in range(8)]
for thread in threads:
    thread.start()
for thread in threads:
    thread.join()
print(found == [(3,)] * 8)
"""


def test_threads_may_make_the_first_arrays_at_once():
    """Whichever is first imports numpy, while the others wait for it with the interpreter in nobody's hands."""
    run = subprocess.run([sys.executable, "-c", FIRST_ARRAYS, str(example("spherical-dome"))], capture_output=True,
                         text=True, check=False, timeout=400)
    assert run.returncode == 0 and run.stdout == "True\n", run.stderr


def test_other_threads_go_on_during_a_long_call():
    display = screenmanager.Display.load(example("spherical-dome"))
    channel = display.channels[0]
    channel.resolution = (4000, 3000)
    ticks, done = [], threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.002)

    thread = threading.Thread(target=tick)
    thread.start()
    begin = time.monotonic()
    channel.layout_picture()
    end = time.monotonic()
    done.set()
    thread.join()
    inside = [moment for moment in ticks if begin < moment < end]
    assert len(inside) >= 10


def test_a_display_that_goes_while_another_is_at_work_waits_with_its_end():
    busy = screenmanager.Display.load(example("spherical-dome"))
    busy.channels[0].resolution = (3000, 2000)
    expected = busy.channels[0].layout_picture().points
    result = []
    thread = threading.Thread(target=lambda: result.append(busy.channels[0].layout_picture().points))
    thread.start()
    while thread.is_alive():
        other = screenmanager.Display.parse(example("dome").read_bytes(), example("dome"))
        del other
        gc.collect()
    thread.join()
    assert_same_bits(result[0], expected)


def test_displays_are_given_back():
    def resident():
        return int(pathlib.Path("/proc/self/statm").read_text(encoding="ascii").split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def use():
        screenmanager.Display.load(example("mesh-rays")).targets(4, 3)

    for _ in range(20):
        use()
    before = resident()
    for _ in range(100):
        use()
    assert resident() - before < 30e6


LONG = """
import resource, screenmanager, signal, sys, time
display = screenmanager.Display.load(sys.argv[1])
channel = display.channels[0]
channel.resolution = (4000, 4000)
# A shell has signals of the keyboard ignored by what it starts in the background.
signal.signal(signal.SIGINT, signal.default_int_handler)

# The loop in a function of its own: what a signal raises between two calls at the top of a module, the interpreter may
# hand to no except clause.
def work():
    {call}

# A call that does not end is killed, after so many seconds of the processor.
resource.setrlimit(resource.RLIMIT_CPU, (120, 120))
print("ready", flush=True)
try:
    work()
except KeyboardInterrupt:
    print(time.process_time(), flush=True)
# Everything works on.
print(bool(channel.to_layout((0.5, 0.5)).mask), flush=True)
"""
A_MOMENT = 2
# The placing of one channel's targets goes on to its end.
PLACING = 8


def processor_time(process):
    """What it has used so far, in seconds: other than of the clock, these do not run while others are served."""
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


@pytest.mark.parametrize(("name", "call", "longest"), [
    ("spherical-dome", "while True: channel.layout_picture()", A_MOMENT),
    ("spherical-dome", "while True: channel.screen_picture()", A_MOMENT),
    ("spherical-dome", "while True: channel.warp('equirectangular')", A_MOMENT),
    ("spherical-dome", "while True: display.targets(2000, 2000)", PLACING),
    ("spherical-dome", "while True: display.coverage()", A_MOMENT),
    ("spherical-dome", "while True: display.check()", A_MOMENT),
    ("spherical-dome", "while True: channel.player_warp('equirectangular', nodes='pixels')", A_MOMENT),
    # The fewest nodes that keep an error: some hundred grids.
    ("lens-cylinder", "while True: channel.player_warp('fisheye', error=5e-4)", A_MOMENT),
    ("lens-cylinder", "while True: display.export(sys.argv[2] + '/out', input='fisheye', error=5e-4, blend=None)", A_MOMENT),
    ("spherical-dome", "while True: display.export(sys.argv[2] + '/out', input='equirectangular', formats=['png16'])",
     A_MOMENT),
    ("spherical-dome",
     "measured = [screenmanager.MeasuredPoints(t.id, t.picture.reshape(-1, 2), t.points.reshape(-1, 3))\n"
     "                for t in display.targets(20, 15)]\n    while True: display.fit(measured)", A_MOMENT),
    # The report for programs is most of the work of this one.
    ("spherical-dome",
     "measured = [screenmanager.MeasuredPoints(t.id, t.picture.reshape(-1, 2), t.points.reshape(-1, 3))\n"
     "                for t in display.targets(600, 500)]\n    while True: display.fit(measured[:1], json=True)", A_MOMENT),
    ("spherical-dome",
     "import numpy; rays = numpy.ones((3000000, 3))\n    while True: display.screen.intersect((0, 0, 1), rays)", A_MOMENT),
])
def test_ctrl_c_ends_a_long_call(name, call, longest, tmp_path):
    run = subprocess.Popen([sys.executable, "-c", LONG.format(call=call), str(example(name)), str(tmp_path)],
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    assert run.stdout.readline() == "ready\n"
    # Far into it, however busy the machine is.
    while processor_time(run) < 1.5 and run.poll() is None:
        time.sleep(0.01)
    before = processor_time(run)
    run.send_signal(signal.SIGINT)
    out, err = run.communicate()
    assert run.returncode == 0, err
    ended, works_on = out.splitlines()
    assert works_on == "True"
    assert float(ended) - before < longest
    assert list(tmp_path.iterdir()) == [], "an export that was interrupted leaves nothing"


def test_what_a_handler_raises_ends_the_reading_of_measurements():
    """Before anything is fitted: the last row, which is refused, is not reached."""
    code = """
import numpy as np, screenmanager, signal, sys
display = screenmanager.Display.load(sys.argv[1])
points = np.ones((1_000_000, 3))
points[-1] = np.nan
measured = screenmanager.MeasuredPoints(display.channels[0].id, np.full((1_000_000, 2), 0.5), points,
                                        covariances=np.eye(3), picture_deviations=(0.1, 0.1))
class Late(Exception): pass
def handle(*_):
    raise Late("ended")
signal.signal(signal.SIGALRM, handle)
signal.setitimer(signal.ITIMER_REAL, 0.1)
try:
    display.fit(measured)
except Late as fault:
    print(fault)
except screenmanager.ArgumentError as fault:
    signal.setitimer(signal.ITIMER_REAL, 0)
    print("the last row was reached")
"""
    run = subprocess.run([sys.executable, "-c", code, str(EXAMPLES / "spherical-dome/display.xml")], timeout=120,
                         capture_output=True, text=True, check=False)
    assert run.returncode == 0 and run.stdout == "ended\n", (run.stdout, run.stderr)


def test_a_handler_that_calls_back_gets_an_error_and_no_wrong_answer():
    code = """
import screenmanager, signal, sys
display = screenmanager.Display.load(sys.argv[1])
display.channels[0].resolution = (4000, 3000)
seen = []
def handle(*_):
    try:
        display.channels[0].position
        seen.append("outside")
    except screenmanager.BusyError as fault:
        seen.append("busy")
signal.signal(signal.SIGALRM, handle)
signal.setitimer(signal.ITIMER_REAL, 0.05, 0.05)
while "busy" not in seen:
    display.channels[0].layout_picture()
signal.setitimer(signal.ITIMER_REAL, 0)
print(display.channels[0].position)
"""
    run = subprocess.run([sys.executable, "-c", code, str(EXAMPLES / "spherical-dome/display.xml")], timeout=120,
                         capture_output=True, text=True, check=False)
    assert run.returncode == 0 and run.stdout == "(0.3, -0.5, 1.2)\n", run.stderr


def test_what_a_handler_raises_comes_out_of_the_call():
    code = """
import screenmanager, signal, sys
display = screenmanager.Display.load(sys.argv[1])
display.channels[0].resolution = (4000, 3000)
class Late(Exception): pass
def handle(*_):
    raise Late("too late")
signal.signal(signal.SIGALRM, handle)
signal.setitimer(signal.ITIMER_REAL, 0.2)
try:
    while True: display.channels[0].layout_picture()
except Late as fault:
    print(fault)
"""
    run = subprocess.run([sys.executable, "-c", code, str(EXAMPLES / "spherical-dome/display.xml")], timeout=120,
                         capture_output=True, text=True, check=False)
    assert run.returncode == 0 and run.stdout == "too late\n", run.stderr


def test_a_process_that_splits_off_goes_on_or_gets_an_error():
    code = """
import os, screenmanager, sys, threading, time
display = screenmanager.Display.load(sys.argv[1])
display.channels[0].resolution = (4000, 3000)
before = display.screen.intersect((0, 0, 1), (0, 1, 0)).points
child = os.fork()
if child == 0:
    same = (display.screen.intersect((0, 0, 1), (0, 1, 0)).points == before).all()
    os._exit(0 if same else 1)
assert os.waitpid(child, 0)[1] == 0
stop = threading.Event()
def work():
    while not stop.is_set():
        display.channels[0].layout_picture()
thread = threading.Thread(target=work)
thread.start()
time.sleep(0.2)
for _ in range(20):
    child = os.fork()
    if child == 0:
        try:
            same = (display.screen.intersect((0, 0, 1), (0, 1, 0)).points == before).all()
            os._exit(0 if same else 1)
        except screenmanager.BusyError:
            os._exit(7)
    assert os.waitpid(child, 0)[1] in (0, 7 << 8)
stop.set()
thread.join()
print("done")
"""
    run = subprocess.run([sys.executable, "-c", code, str(EXAMPLES / "spherical-dome/display.xml")], timeout=200,
                         capture_output=True, text=True, check=False)
    assert run.returncode == 0 and run.stdout == "done\n", run.stderr


@pytest.mark.parametrize("call", ["layout_picture()", "position", "outline()", "screen_picture()"])
def test_the_interpreter_ends_while_threads_are_at_work(call):
    code = """
import screenmanager, sys, threading, time
display = screenmanager.Display.load(sys.argv[1])
display.channels[0].resolution = (4000, 3000)
def work():
    while True:
        display.channels[0].CALL
for _ in range(4):
    threading.Thread(target=work, daemon=True).start()
time.sleep(0.3)
print("end")
""".replace("CALL", call)
    run = subprocess.run([sys.executable, "-c", code, str(EXAMPLES / "spherical-dome/display.xml")], timeout=60,
                         capture_output=True, text=True, check=False)
    assert run.stdout == "end\n" and run.returncode == 0, (run.returncode, run.stderr)

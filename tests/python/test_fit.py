"""Fits are those of the program, number by number; what they find goes into the display and onto the disk."""

import copy
import json
import math
import os
import pathlib
import pickle
import warnings

import numpy as np
import pytest
import screenmanager

from conftest import SOURCES, assert_same_bits, example, program

# Of every type of display that can be solved, with and without a lens.
SOLVED = ["planar-wall", "curved-wall", "spherical-dome", "collimated", "mesh-rays", "lens-cylinder"]


def disturbed(name, path):
    """A copy of an example at a path whose channels are not where their light is measured."""
    display = screenmanager.Display.load(example(name)).moved_to(path)
    for channel in display.channels:
        if display.target_data.type.startswith("Planar"):
            left, right, bottom, top = channel.screen_area
            channel.screen_area = (left + 0.01, right + 0.005, bottom, top - 0.01)
        else:
            channel.orientation = np.add(channel.orientation, (0.02, -0.01, 0.005))
    display.save()
    return screenmanager.Display.load(path)


def measure(name, path):
    """The light of an example as a table, with a deviation for some places."""
    path.write_text(program("targets", example(name), "--quiet", "--grid", "7x5", "--boundary", "0"), encoding="utf-8")
    return path


def reported(display, table, folder, *options):
    """What the program reports and writes."""
    report = folder / "report.json"
    program("fit", display, "--points", table, "-o", folder / "fitted.xml", "--report", report, "--quiet", *options)
    return json.loads(report.read_text(encoding="utf-8"))


def number(value):
    """As JSON has it."""
    return None if isinstance(value, float) and not math.isfinite(value) else value


def numbers(array):
    return [number(value) for value in np.asarray(array).ravel().tolist()]


def assert_same_channel(ours, theirs):
    names = {"name": "name", "id": "projector", "outcome": "outcome", "is_solved": "isSolved", "outliers": "outliers",
             "holds_square_pixels": "holdsSquarePixels", "holds_horizontal_shift": "holdsHorizontalShift",
             "degrees_of_freedom": "degreesOfFreedom", "residual_factor": "residualFactor",
             "has_stated_deviations": "hasStatedDeviations", "iterations": "iterations"}
    for name, member in names.items():
        assert number(getattr(ours, name)) == theirs[member], name
    assert list(ours.solved) == theirs["solved"]
    for kind in ("pixels", "screen"):
        for when in ("before", "after"):
            summary = getattr(ours, f"{kind}_{when}")
            assert {name: number(value) for name, value in vars(summary).items()} == theirs[kind][when]
    assert [{name: number(of) for name, of in vars(value).items()} for value in ours.values] == theirs["values"]
    assert numbers(ours.covariance) == theirs["covariance"]
    assert ours.covariance.shape == (len(ours.worst.names),) * 2
    worst = theirs["worst"]
    assert [ours.worst.text, ours.worst.remedy, ours.worst.value, ours.worst.quantity] == [
        worst["text"], worst["remedy"], worst["value"], worst["quantity"]]
    assert [number(ours.worst.deviation), number(ours.worst.scaled_condition)] == [worst["deviation"],
                                                                                  worst["scaledCondition"]]
    assert list(ours.worst.names) == worst["names"] and list(ours.worst.weights) == worst["weights"]
    assert [vars(finding) for finding in ours.findings] == theirs["findings"]
    assert_same_residuals(ours.residuals, theirs["residuals"])


def assert_same_residuals(ours, theirs):
    members = {"picture": "picture", "points": "point", "pixels_before": "pixelsBefore", "pixels_after": "pixelsAfter",
               "screen_before": "screenBefore", "screen_after": "screenAfter", "deviations": "deviations",
               "outlier": "outlier"}
    assert len(theirs) == len(ours.rows) > 0
    for name, member in members.items():
        assert numbers(getattr(ours, name)) == numbers_of_json([residual[member] for residual in theirs]), name
    assert [list(rows) for rows in ours.rows] == [residual["lines"] for residual in theirs]
    assert list(ours.sets) == [residual["set"] for residual in theirs]


def numbers_of_json(values):
    return [part for value in values for part in (value if isinstance(value, list) else [value])]


@pytest.mark.parametrize("name", SOLVED)
def test_a_fit_is_the_one_that_the_program_reports(name, tmp_path):
    table = measure(name, tmp_path / "measured.csv")
    display = disturbed(name, tmp_path / "display.xml")
    before = display.text
    theirs = reported(tmp_path / "display.xml", table, tmp_path)
    fit = display.fit(table, json=True)
    assert display.text == before, "the display is not changed"
    assert (fit.outcome, fit.unit) == (theirs["outcome"], theirs["units"]["length"])
    assert len(fit.channels) == len(theirs["channels"]) > 0
    for ours, channel in zip(fit.channels, theirs["channels"]):
        assert ours.is_solved
        assert_same_channel(ours, channel)
    written = theirs.pop("written")
    printed = json.loads(fit.json)
    assert printed.pop("written") is None and printed == theirs
    assert fit.text.startswith(f"display      {tmp_path / 'display.xml'}\n") and f"result       {fit.outcome}" in fit.text
    assert "Nothing was written" not in fit.text and fit.text.endswith("\n")
    # The file that it is saved to is the one that the program writes, but for the names of lenses.
    lenses = display.apply(fit)
    display.save(tmp_path / "ours.xml")
    ours = (tmp_path / "ours.xml").read_text(encoding="utf-8").replace("display-", "fitted-")
    assert ours == (tmp_path / "fitted.xml").read_text(encoding="utf-8") and ours != before
    assert [pathlib.Path(lens).read_bytes() for lens in lenses] == [
        pathlib.Path(lens).read_bytes() for lens in written["lensFiles"]]
    assert bool(lenses) == (name == "lens-cylinder")


@pytest.mark.parametrize("name", SOLVED)
def test_arrays_are_fitted_as_the_same_table_is(name, tmp_path):
    table = measure(name, tmp_path / "measured.csv")
    display = disturbed(name, tmp_path / "display.xml")
    light = screenmanager.Display.load(example(name)).targets(7, 5, 1)
    # The program writes targets by column, then row.
    measured = [screenmanager.MeasuredPoints(
        targets.id, *(np.swapaxes(array, 0, 1)[targets.mask.T] for array in (targets.picture, targets.points)))
        for targets in light]
    ours, theirs = display.fit(measured), display.fit(table)
    assert ours.json is None and theirs.json is None
    assert ours.measurement.points == theirs.measurement.points == sum(targets.mask.sum() for targets in light)
    for one, other in zip(ours.channels, theirs.channels):
        assert [vars(value) for value in one.values] == [vars(value) for value in other.values]
        for array in ("picture", "points", "pixels_before", "pixels_after", "screen_after", "deviations"):
            assert_same_bits(getattr(one.residuals, array), getattr(other.residuals, array))
    rows = [row for channel in ours.channels for row in channel.residuals.rows]
    assert rows == [(row,) for row in range(ours.measurement.points)]


def test_a_fit_finds_what_the_light_does():
    """Truth: the display that was measured."""
    true = screenmanager.Display.load(example("mesh-rays"))
    display = copy.copy(true)
    measured = [screenmanager.MeasuredPoints(targets.name, targets.picture[targets.mask], targets.points[targets.mask])
                for targets in true.targets(9, 7)]
    for channel in display.channels:
        channel.orientation = np.add(channel.orientation, (0.05, 0.03, -0.02))
        channel.position = np.add(channel.position, (0.1, -0.2, 0.1))
    places = np.linspace(0.2, 0.8, 14).reshape(-1, 2)
    assert not np.allclose(display.channels[0].to_screen(places).points, true.channels[0].to_screen(places).points,
                           atol=1e-2)
    assert display.apply(display.fit(measured)) == ()
    for channel, truth in zip(display.channels, true.channels):
        assert np.allclose(channel.position, truth.position, atol=1e-7)
        assert np.allclose(channel.orientation, truth.orientation, atol=1e-8)
        assert np.allclose(channel.frustum, truth.frustum, atol=1e-8)
    # What is computed from now on follows.
    assert np.allclose(display.channels[0].to_screen(places).points, true.channels[0].to_screen(places).points, atol=1e-7)


def noisy(random, deviation=0.002):
    light = screenmanager.Display.load(example("mesh-rays")).targets(12, 9)
    return [(targets.id, targets.picture[targets.mask],
             targets.points[targets.mask] + random.normal(0, deviation, (targets.mask.sum(), 3))) for targets in light]


@pytest.fixture
def display():
    return screenmanager.Display.load(example("mesh-rays"))


def test_deviations_and_covariances_say_the_same(display, random):
    measured = noisy(random)
    forms = [{"deviations": (0.002, 0.002, 0.002)}, {"covariances": np.eye(3) * 0.002**2},
             {"deviations": lambda n: np.full((n, 3), 0.002)},
             {"covariances": lambda n: np.broadcast_to(np.eye(3) * 0.002**2, (n, 3, 3))}]
    fits = [display.fit([screenmanager.MeasuredPoints(
        *part, **{name: form(len(part[1])) if callable(form) else form for name, form in said.items()})
        for part in measured]) for said in forms]
    for fit in fits:
        for channel, first in zip(fit.channels, fits[0].channels):
            assert channel.has_stated_deviations and 0.8 < channel.residual_factor < 1.2
            assert_same_bits(channel.covariance, first.covariance)
    plain = display.fit([screenmanager.MeasuredPoints(*part) for part in measured])
    assert not plain.channels[0].has_stated_deviations
    # Those of the picture come on top.
    both = display.fit([screenmanager.MeasuredPoints(*part, deviations=(0.002,) * 3, picture_deviations=(0.01, 0.01))
                        for part in measured])
    assert both.channels[0].residual_factor < 0.5


def test_each_point_has_deviations_of_its_own(display, random):
    name, picture, points = noisy(random)[0]

    def fit(**said):
        return display.fit(screenmanager.MeasuredPoints(name, picture, points, **said)).channels[0]

    own = random.uniform(0.001, 0.01, points.shape)
    by_deviation, by_covariance = fit(deviations=own), fit(covariances=np.eye(3) * own[:, None, :]**2)
    assert_same_bits(by_deviation.residuals.deviations, by_covariance.residuals.deviations)
    assert not np.allclose(by_deviation.residuals.deviations, fit(deviations=own[0]).residuals.deviations)
    tilted = np.einsum("ij,nj,kj->nik", *(lambda q: (q, own**2, q))(np.linalg.qr(random.normal(0, 1, (3, 3)))[0]))
    tilted = (tilted + np.swapaxes(tilted, 1, 2)) / 2
    assert not np.allclose(fit(covariances=tilted).residuals.deviations, by_covariance.residuals.deviations)
    of_picture = random.uniform(0.001, 0.01, picture.shape)
    alike = fit(deviations=own, picture_deviations=np.full(picture.shape, 0.002))
    assert_same_bits(alike.covariance, fit(deviations=own, picture_deviations=(0.002, 0.002)).covariance)
    several = fit(deviations=own, picture_deviations=of_picture)
    assert not np.allclose(several.residuals.deviations,
                           fit(deviations=own, picture_deviations=of_picture[0]).residuals.deviations)


def test_outliers_are_the_rows_that_were_spoilt(display, random):
    measured = noisy(random)
    spoilt = {3, 40, 77}
    for row in spoilt:
        measured[0][2][row] += 0.3
    fit = display.fit([screenmanager.MeasuredPoints(*part) for part in measured])
    first = fit.channels[0]
    assert fit.outcome == first.outcome == "doubtful" and first.outliers == 3
    assert {rows[0] for rows, out in zip(first.residuals.rows, first.residuals.outlier) if out} == spoilt
    assert "OUTLIERS" in [finding.kind for finding in first.findings]
    all_of_them = display.fit([screenmanager.MeasuredPoints(*part) for part in measured], robust=False)
    assert all_of_them.channels[0].outliers == 0 and all_of_them.channels[0].pixels_after.rms > first.pixels_after.rms
    none = display.fit([screenmanager.MeasuredPoints(*part) for part in measured], rejection=1e6)
    assert none.channels[0].outliers == 0


def test_what_is_measured_again_is_one_point(display, random):
    name, picture, points = noisy(random)[0]
    twice = display.fit(screenmanager.MeasuredPoints(name, np.repeat(picture, 2, axis=0),
                                                     np.repeat(points, 2, axis=0)))
    assert twice.measurement.repeated == len(points) and twice.measurement.points == len(points)
    assert twice.channels[0].residuals.rows[5] == (10, 11)


def test_groups_and_channels_are_those_that_are_stated(display, random):
    measured = [screenmanager.MeasuredPoints(*part) for part in noisy(random)]
    fit = display.fit(measured, solve=["orientation"], channels=[display.channels[1].name])
    assert [channel.id for channel in fit.channels] == [display.channels[1].id]
    assert fit.channels[0].solved == ("orientation",)
    assert fit.channels[0].after.position == fit.channels[0].before.position == display.channels[1].position
    for hold in ([], ["square-pixels"], ["horizontal-shift"], ["square-pixels", "horizontal-shift"]):
        held = display.fit(measured, hold=hold).channels[0]
        assert held.holds_square_pixels == ("square-pixels" in hold)
        assert held.holds_horizontal_shift == ("horizontal-shift" in hold)


def turned(points, angle=0.7, shift=(3.0, -2.0, 0.5), scale=1.0):
    """As a station sees them that stands elsewhere."""
    c, s = math.cos(angle), math.sin(angle)
    return scale * np.asarray(points) @ np.array([(c, s, 0), (-s, c, 0), (0, 0, 1)]) + shift


@pytest.mark.parametrize(("kind", "scale"), [("rigid", 1.0), ("similarity", 2.5)])
def test_stations_are_moved_into_the_frame_of_the_display(display, kind, scale, random):
    marks = np.array([(-3, 2, 0), (3, 2, 0.1), (0, 4, 2.5), (1, 1, 1.0)])
    measured = noisy(random, 0.0)
    stations = [screenmanager.MeasuredPoints(name, picture, turned(points, 0.3 + number, scale=scale), set=f"s{number}")
                for number, (name, picture, points) in enumerate(measured)]
    controls = [screenmanager.ControlPoints(turned(marks, 0.3 + number, scale=scale), marks, f"s{number}")
                for number in range(len(measured))]
    fit = display.fit(stations, controls=controls, register=kind)
    assert [frame.set for frame in fit.frames] == [f"s{number}" for number in range(len(measured))]
    for number, frame in enumerate(fit.frames):
        assert frame.rms < 1e-12 and len(frame.deviations) == 4 and frame.rows == tuple(range(4 * number, 4 * number + 4))
        moved = frame.scale * turned(marks, 0.3 + number, scale=scale) @ frame.rotation.T + frame.translation
        assert np.allclose(moved, marks, atol=1e-12)
    direct = display.fit([screenmanager.MeasuredPoints(*part) for part in measured])
    for ours, theirs in zip(fit.channels, direct.channels):
        assert np.allclose(ours.residuals.points, theirs.residuals.points, atol=1e-12)
        assert np.allclose(ours.after.position, theirs.after.position, atol=1e-9)


def test_a_table_states_its_unit_and_its_corner(display, tmp_path, random):
    name, picture, points = noisy(random)[0]
    table = tmp_path / "measured.csv"
    lines = [f"{name},{u!r},{1 - v!r},{x * 1000!r},{y * 1000!r},{z * 1000!r}"
             for (u, v), (x, y, z) in zip(picture.tolist(), points.tolist())]
    table.write_text("channel,u,v,x,y,z\n" + "\n".join(lines) + "\n", encoding="utf-8")
    fit = display.fit(str(table), unit="mm", origin="top-left")
    direct = display.fit(screenmanager.MeasuredPoints(name, picture, points))
    assert np.allclose(fit.channels[0].after.position, direct.channels[0].after.position, atol=1e-9)
    kinds = [finding.kind for finding in fit.channels[0].findings]
    assert kinds == [finding.kind for finding in direct.channels[0].findings] and fit.outcome == direct.outcome
    assert set(kinds) <= {"ILL_DETERMINED"}, "noise on one wall may leave the depth open"
    assert np.allclose(fit.channels[0].residuals.picture, picture, atol=1e-12)
    assert fit.channels[0].residuals.rows[0] == (2,), "lines of the table"
    reversed_ = display.fit(table, unit="mm", origin="bottom-left").channels[0]
    assert [finding.kind for finding in reversed_.findings] == ["V_REVERSED"]
    with pytest.raises(screenmanager.ParseError, match="measured.csv:1: unit of lengths"):
        display.fit(table)


def test_control_points_of_a_table_that_are_not_used_are_pointed_out(display, tmp_path, random):
    name, picture, points = noisy(random)[0]
    table = tmp_path / "measured.csv"
    rows = [f"{name},{u!r},{v!r},{x!r},{y!r},{z!r},,," for (u, v), (x, y, z) in zip(picture.tolist(), points.tolist())]
    rows += [f",,,{x},{y},{z},{x},{y},{z}" for x, y, z in [(0, 0, 0), (3, 0, 0), (0, 3, 0), (0, 0, 3)]]
    table.write_text("# unit m\nchannel,u,v,x,y,z,X,Y,Z\n" + "\n".join(rows) + "\n", encoding="utf-8")
    with pytest.warns(UserWarning, match="control points of the table are not used: state register"):
        assert display.fit(table).frames == ()
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert display.fit(table, register="rigid").frames[0].rms < 1e-12


def test_what_the_points_do_not_determine_is_a_finding_and_is_not_applied(display, random):
    name, picture, points = noisy(random)[0]
    fit = display.fit(screenmanager.MeasuredPoints(name, picture[:2], points[:2]))
    assert fit.outcome == "unusable" and not fit.channels[0].is_solved and fit.channels[0].worst is None
    assert fit.channels[0].covariance.shape == (0, 0)
    assert [finding.kind for finding in fit.channels[0].findings] == ["TOO_FEW_POINTS"]
    before = display.text
    with pytest.raises(screenmanager.ArgumentError, match="^fit: it is unusable"):
        display.apply(fit)
    assert display.apply(fit, force=True) == () and display.text == before
    # What was not solved is not a value: it does not undo what was set since.
    display.channels[0].position = (9, 9, 9)
    display.apply(fit, force=True)
    assert display.channels[0].position == (9, 9, 9)


def test_groups_that_a_channel_does_not_have_are_a_finding(display, random):
    measured = [screenmanager.MeasuredPoints(*part) for part in noisy(random)]
    assert not display.fit(measured, solve=[]).channels[0].is_solved, "none are not the usual ones"
    fit = display.fit(measured, solve=["area"])
    assert {channel.findings[0].kind for channel in fit.channels} == {"KIND_NOT_SOLVED"} and fit.outcome == "unusable"


def test_a_kind_that_cannot_be_solved_says_so():
    display = screenmanager.Display.load(example("warped-wall"))
    targets = display.targets(6, 5)[0]
    fit = display.fit(screenmanager.MeasuredPoints(targets.id, targets.picture[targets.mask],
                                                   targets.points[targets.mask]))
    assert fit.outcome == "unusable" and fit.channels[0].findings[0].kind == "KIND_NOT_SOLVED"


def test_a_lens_goes_to_a_new_file_beside_the_display(tmp_path):
    (tmp_path / "a").mkdir()
    (tmp_path / "b").mkdir()
    display = disturbed("lens-cylinder", tmp_path / "a" / "display.xml")
    table = measure("lens-cylinder", tmp_path / "measured.csv")
    fit = display.fit(table)
    # Where the files are looked for, although it was saved elsewhere since.
    display.save(tmp_path / "b" / "elsewhere.xml")
    first = display.apply(fit)
    again = display.apply(fit)
    assert {pathlib.Path(file).parent for file in first + again} == {tmp_path / "a"}
    assert len({*first, *again}) == 2 * len(first) > 0, "no file is replaced"
    moved = display.moved_to(tmp_path / "b" / "moved.xml")
    moved.save()
    for each in (display, moved, copy.copy(display), pickle.loads(pickle.dumps(display)),
                 screenmanager.Display.load(tmp_path / "b" / "moved.xml")):
        lens = each.channels[2].projection_model
        kind, file = lens.split(":")
        assert kind == "BrownConrady" and os.path.realpath(file) == again[0]
        assert each.channels[2].to_screen((0.5, 0.5)).mask
    after = fit.channels[2].after.lens
    assert after.kind == "BrownConrady" and vars(after) != vars(fit.channels[2].before.lens)
    assert all(isinstance(number, float) for number in (after.fx, after.fy, after.cx, after.cy, *after.distortion))


def test_an_apply_changes_all_channels_or_none(tmp_path):
    display = disturbed("lens-cylinder", tmp_path / "display.xml")
    fit = display.fit(measure("lens-cylinder", tmp_path / "measured.csv"))
    display.channels[-1].projection_model = ""
    before, files = display.text, sorted(tmp_path.iterdir())
    with pytest.raises(screenmanager.Error, match="has no lens any more"):
        display.apply(fit)
    assert display.text == before and sorted(tmp_path.iterdir()) == files
    other = screenmanager.Display.load(example("dome"))
    with pytest.raises(screenmanager.Error, match="no longer in the display"):
        other.apply(fit)
    tmp_path.joinpath("folder").mkdir()
    gone = disturbed("lens-cylinder", tmp_path / "folder" / "display.xml")
    for file in (tmp_path / "folder").iterdir():
        file.unlink()
    (tmp_path / "folder").rmdir()
    before = gone.text
    with pytest.raises(screenmanager.Error, match="folder"):
        gone.apply(fit)
    assert gone.text == before


def points(**said):
    named = {"channel": "Left", "picture": np.full((4, 2), 0.5), "points": np.ones((4, 3)), **said}
    return screenmanager.MeasuredPoints(**named)


@pytest.mark.parametrize(("call", "kind", "text"), [
    (lambda d: d.fit(5), "ArgumentTypeError", 
     "^measured: expected MeasuredPoints, a list of them or the path of a table, found int$"),
    (lambda d: d.fit([points(), 5]), "ArgumentTypeError", "^measured: .* found one of int$"),
    (lambda d: d.fit("/nowhere/measured.csv"), "MissingFileError", "measured.csv"),
    (lambda d: d.fit([]), "Error", "^there are no measurements"),
    (lambda d: d.fit(points(channel=5)), "ArgumentTypeError", r"^measured\[0\]\.channel: expected a text, found int$"),
    (lambda d: d.fit(points(channel="nobody")), "Error", "nobody"),
    (lambda d: d.fit([points(), points(picture=np.ones((4, 3)))]), "ArgumentError",
     r"^measured\[1\]\.picture: expected an array of the shape \(..., 2\), found \(4, 3\)$"),
    (lambda d: d.fit(points(picture=(0.5, 0.5))), "ArgumentError",
     r"^measured\[0\]\.picture: expected an array of the shape \(n, 2\), found \(2,\)$"),
    (lambda d: d.fit(points(points=np.ones((5, 3)))), "ArgumentError",
     r"^measured\[0\]\.points: expected an array of the shape \(4, 3\), found \(5, 3\)$"),
    (lambda d: d.fit(points(points=[(0, 1, 2), (0, 1, 2), (0, np.nan, 2), (0, 1, 2)])), "ArgumentError",
     r"^measured\[0\]\.points\[2\]: expected finite numbers, found \(0, nan, 2\)$"),
    (lambda d: d.fit(points(picture="abc")), "ArgumentTypeError", r"^measured\[0\]\.picture: expected numbers"),
    (lambda d: d.fit(points(deviations=(1, 0, 1))), "ArgumentError",
     r"^measured\[0\]\.deviations: expected numbers from 1e-100 to 1e6, found"),
    (lambda d: d.fit(points(deviations=[(1, 1, 1)] * 3 + [(1, -1, 1)])), "ArgumentError",
     r"^measured\[0\]\.deviations\[3\]: expected numbers from 1e-100 to 1e6, found"),
    (lambda d: d.fit(points(deviations=np.ones((3, 3)))), "ArgumentError",
     r"^measured\[0\]\.deviations: expected an array of the shape \(3,\) or \(4, 3\), found \(3, 3\)$"),
    (lambda d: d.fit(points(covariances=np.ones((4, 3)))), "ArgumentError",
     r"^measured\[0\]\.covariances: expected an array of the shape \(3, 3\) or \(4, 3, 3\), found \(4, 3\)$"),
    (lambda d: d.fit(points(covariances=-np.eye(3))), "ArgumentError",
     r"^measured\[0\]\.covariances: expected covariances, which are symmetric and positive definite$"),
    (lambda d: d.fit(points(covariances=np.zeros((3, 3)))), "ArgumentError",
     r"^measured\[0\]\.covariances: expected covariances, which are symmetric and positive definite$"),
    (lambda d: d.fit(points(covariances=[(1, 0.5, 0), (0, 1, 0), (0, 0, 1)])), "ArgumentError",
     r"^measured\[0\]\.covariances: expected covariances"),
    (lambda d: d.fit(points(covariances=np.diag((1, 1, np.nan)))), "ArgumentError",
     r"^measured\[0\]\.covariances\[2\]: expected finite numbers, found \(0, 0, nan\)$"),
    (lambda d: d.fit(points(covariances="abc")), "ArgumentTypeError", r"^measured\[0\]\.covariances: expected numbers"),
    (lambda d: d.fit(points(deviations=(1, 1, 1), covariances=np.eye(3))), "ArgumentError",
     r"^measured\[0\]: it states deviations and covariances"),
    (lambda d: d.fit(points(picture_deviations=np.ones((4, 3)))), "ArgumentError",
     r"^measured\[0\]\.picture_deviations: expected"),
    (lambda d: d.fit([points(), points(deviations=(1, 1, 1))]), "ArgumentError",
     r"^measured\[1\]: deviations are stated by some of them only"),
    (lambda d: d.fit([points(), points(picture_deviations=(1, 1))]), "ArgumentError",
     r"^measured\[1\]: picture_deviations are stated by some of them only"),
    (lambda d: d.fit(points(), unit="mm"), "ArgumentError", "^unit, origin: arrays are in native units"),
    (lambda d: d.fit(points(), origin="top-left"), "ArgumentError", "^unit, origin: arrays"),
    (lambda d: d.fit("measured.csv", origin="middle"), "ArgumentError", "^origin: expected bottom-left or top-left"),
    (lambda d: d.fit("measured.csv", unit=5), "ArgumentTypeError", "^unit: expected a text, found int$"),
    (lambda d: d.fit(points(), solve="position"), "ArgumentTypeError", "^solve: expected a list of names, found a text$"),
    (lambda d: d.fit(points(), solve=["colour"]), "ArgumentError",
     "^solve: expected some of position, orientation, frustum, distortion, area, found colour$"),
    (lambda d: d.fit(points(), hold=["breath"]), "ArgumentError", "^hold: expected some of square-pixels"),
    (lambda d: d.fit(points(), hold=5), "ArgumentTypeError", "^hold: expected a list of names, found int$"),
    (lambda d: d.fit(points(), channels=["nobody"]), "Error", "nobody"),
    (lambda d: d.fit(points(), rejection=0), "ArgumentError", "^rejection: expected a number of standard deviations"),
    (lambda d: d.fit(points(), rejection=math.nan), "ArgumentError", "^rejection: expected a finite number, found nan$"),
    (lambda d: d.fit(points(), rejection="4"), "ArgumentTypeError", "^rejection: expected a number, found str$"),
    (lambda d: d.fit(points(), register="loose"), "ArgumentError", "^register: expected rigid or similarity"),
    (lambda d: d.fit(points(), register="rigid"), "Error", "control points"),
    (lambda d: d.fit(points(), controls=screenmanager.ControlPoints(np.eye(3), np.eye(3))), "ArgumentError",
     "^controls: state register"),
    (lambda d: d.fit("measured.csv", register="rigid", controls=screenmanager.ControlPoints(np.eye(3), np.eye(3))),
     "ArgumentError", "^controls: a table has its control points in columns"),
    (lambda d: d.fit(points(), register="rigid", controls=[5]), "ArgumentTypeError", "^controls: .* found one of int$"),
    (lambda d: d.fit(points(), register="rigid", controls=screenmanager.ControlPoints(np.eye(3), np.ones((4, 3)))),
     "ArgumentError", r"^controls\[0\]: expected two arrays of the same shape \(n, 3\), found \(3, 3\) and \(4, 3\)$"),
    (lambda d: d.fit(points(picture=np.full((1_000_001, 2), 0.5), points=np.ones((1_000_001, 3)))), "ArgumentError",
     "^measured: expected 1000000 points at most, found 1000001$"),
    (lambda d: d.apply(5), "ArgumentTypeError", "^fit: expected a Fit, found int$"),
    (lambda d: d.moved_to(5), "ArgumentTypeError", "^path: expected a text or a path"),
    (lambda d: d.moved_to("/nowhere/display.xml"), "Error", "nowhere"),
])
def test_what_cannot_be_fitted_is_refused_by_name(call, kind, text):
    display = screenmanager.Display.load(example("spherical-dome"))
    before = display.text
    with pytest.raises(getattr(screenmanager, kind), match=text):
        call(display)
    assert display.text == before


def test_records_of_fits_outlive_the_display_and_are_pickled(random):
    measured = [screenmanager.MeasuredPoints(*part, deviations=(0.002,) * 3) for part in noisy(random)]
    display = screenmanager.Display.load(example("mesh-rays"))
    fit = display.fit(measured)
    kept = fit.channels[0].residuals.pixels_after.copy()
    each = [f"{channel.name!r} {channel.outcome}" for channel in fit.channels]
    assert repr(fit) == f"<screenmanager.Fit {fit.outcome}: {', '.join(each)}>", "not pages of numbers"
    assert repr(fit.channels[0]) == f"<screenmanager.ChannelFit {fit.channels[0].name!r}: {fit.channels[0].outcome}>"
    del display
    again = pickle.loads(pickle.dumps(fit))
    assert_same_bits(again.channels[0].residuals.pixels_after, kept)
    assert again.channels[0].after.frustum == fit.channels[0].after.frustum
    other = screenmanager.Display.load(example("mesh-rays"))
    other.apply(again)
    assert np.allclose(other.channels[0].position, fit.channels[0].after.position, atol=1e-12)
    assert np.allclose(pickle.loads(pickle.dumps(measured))[0].points, measured[0].points)
    assert fit.channels[0].residuals.points.flags.owndata


def test_the_report_for_programs_follows_its_schema(tmp_path, random):
    jsonschema = pytest.importorskip("jsonschema")
    display = screenmanager.Display.load(example("mesh-rays"))
    display.channels[0].name = "changed"
    fit = display.fit([screenmanager.MeasuredPoints(*part) for part in noisy(random)], json=True)
    report = json.loads(fit.json)
    jsonschema.validate(report, json.loads((SOURCES / "docs/schemas/fit.schema.json").read_text(encoding="utf-8")))
    # The text that was changed is not that of the file: its digest is what sha256sum has for a save.
    display.save(tmp_path / "saved.xml")
    saved = screenmanager.Display.load(tmp_path / "saved.xml")
    assert report["files"][0]["name"] == str(example("mesh-rays"))
    import hashlib
    assert report["files"][0]["sha256"] == hashlib.sha256((tmp_path / "saved.xml").read_bytes()).hexdigest()
    assert saved.channels[0].name == "changed"

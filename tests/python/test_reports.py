"""Coverage and check are those that the program prints."""

import json

import numpy as np
import pytest
import screenmanager

from conftest import KINDS, example, program


@pytest.mark.parametrize("name", KINDS)
def test_coverage_is_the_one_that_the_program_prints(name):
    printed = json.loads(program("coverage", example(name), "--quiet", "--format", "json"))
    coverage = screenmanager.Display.load(example(name)).coverage()
    text = json.dumps(printed)
    assert coverage.fault == "" and coverage.unit == "m"
    # Every number stands in the report, with all its digits.
    for number in (coverage.screen_area, *(channel.area for channel in coverage.channels),
                   *(overlap.area for overlap in coverage.overlaps)):
        assert repr(number) in text or json.dumps(number) in text
    assert [channel.name for channel in coverage.channels] == [channel["name"] for channel in printed["channels"]]
    assert sum(coverage.area_by_count) == pytest.approx(coverage.screen_area, rel=1e-9)
    assert coverage.part_lit_by_at_least(0) == pytest.approx(1, rel=1e-9)
    assert coverage.part_lit_by_at_least(-1) == coverage.part_lit_by_at_least(0) and coverage.part_lit_by_at_least(99) == 0
    assert 0 < coverage.part_lit_by_at_least(1) <= 1 + 1e-9
    assert coverage.piece_corners is None and coverage.piece_counts is None


def test_pieces_make_up_the_areas():
    coverage = screenmanager.Display.load(example("planar-wall")).coverage(pieces=True)
    corners = coverage.piece_corners
    assert corners.shape == (len(coverage.piece_counts), 3, 3)
    areas = np.linalg.norm(np.cross(corners[:, 1] - corners[:, 0], corners[:, 2] - corners[:, 0]), axis=1) / 2
    for count, area in enumerate(coverage.area_by_count):
        assert areas[coverage.piece_counts == count].sum() == pytest.approx(area, rel=1e-9, abs=1e-9)


def test_a_channel_that_misses_reports_it():
    display = screenmanager.Display.load(example("mesh-rays"))
    display.channels[0].orientation = (3.14, 0, 0)
    channels = display.coverage().channels
    assert "nothing of its picture lies on the screen" in channels[0].fault and not channels[0].is_lighting
    assert channels[1].fault == "" and channels[1].is_lighting


@pytest.mark.parametrize("name", KINDS)
def test_a_check_is_the_one_that_the_program_prints(name):
    printed = json.loads(program("check", example(name), "--format", "json"))
    check = screenmanager.Display.load(example(name)).check()
    text = json.dumps(printed, ensure_ascii=False)
    assert check.is_sound and check.faults == () and check.left_out == ()
    for finding in check.findings:
        assert json.dumps(finding.what, ensure_ascii=False) in text and finding.rule in text
    for value in check.facts.values():
        assert json.dumps(value, ensure_ascii=False) in text
    assert [channel.name for channel in check.channels] == [channel["name"] for channel in printed["channels"]]


def test_a_check_judges_what_was_set():
    display = screenmanager.Display.load(example("spherical-dome"))
    display.channels[0].frustum = (0.3, -0.3, -0.2, 0.2)
    findings = display.check().findings
    turned = [finding for finding in findings if finding.where.startswith("channel Left")]
    assert turned, findings
    names = tuple(finding.rule for finding in turned if finding.severity != "fault")
    left = display.check(allowed=names).findings
    assert not [finding for finding in left if finding.rule in names]
    # What a check has loaded does not stand in the way of the next call.
    assert display.screen.intersect((0, 0, 1.7), (0, 1, 0)).hit


def test_a_quick_check_names_what_it_leaves_out():
    check = screenmanager.Display.load(example("curved-wall")).check(quick=True)
    assert len(check.left_out) > 0


def test_a_rule_that_is_none_is_refused():
    with pytest.raises(screenmanager.ArgumentError, match="allowed: no rule that can be allowed is called x"):
        screenmanager.Display.load(example("dome")).check(allowed=["x"])


def test_faults_of_files_are_findings_of_the_check(tmp_path):
    (tmp_path / "display.xml").write_bytes(example("curved-wall").read_bytes())
    check = screenmanager.Display.load(tmp_path / "display.xml").check()
    assert not check.is_sound
    assert any("wall-measured.obj" in fault.what or any("wall-measured.obj" in cause for cause in fault.causes)
               for fault in check.faults)

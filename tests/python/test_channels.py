"""Channels and their records: what is set is what is read, and what a file could not hold is refused."""

import math

import numpy as np
import pytest
import screenmanager

from conftest import example


@pytest.fixture
def display():
    return screenmanager.Display.load(example("spherical-dome"))


def test_channels_come_in_the_order_of_the_configuration(display):
    assert [channel.name for channel in display.channels] == ["Left", "Centre", "Right", "Top"]
    assert [channel.id for channel in display.channels][0] == "020000000501"
    assert display.channel("Left") == display.channel("020000000501") == display.channels[0]
    assert display.channel("Left") != display.channel("Right")
    assert display.channel("Left") != screenmanager.Display.load(example("spherical-dome")).channel("Left")
    assert len({display.channel("Left"), display.channels[0], display.channel("Right")}) == 2


def test_a_channel_that_is_none_is_refused_with_the_list_of_channels(display):
    with pytest.raises(screenmanager.Error, match='"Middle" is no channel; the channels are: Left .020000000501.'):
        display.channel("Middle")


def test_the_record_is_that_of_the_file(display):
    channel = display.channel("Left")
    assert channel.position == (0.3, -0.5, 1.2)
    assert channel.orientation == (math.radians(-55), 0, 0)
    assert channel.orientation.z == math.radians(-55)
    assert channel.frustum.left == math.radians(-35) and channel.frustum.right == math.radians(35)
    assert channel.frustum.bottom == math.radians(-22) and channel.frustum.top == math.radians(30)
    assert channel.resolution == (1920, 1200)
    assert "PJLink" in channel.device and channel.projection_model == "" and channel.map_file == ""
    planar = screenmanager.Display.load(example("planar-wall")).channels[0]
    assert planar.screen_area.left == 0 and 0 < planar.screen_area.right < 1
    assert planar.layout.x_min == 0 and planar.layout.x_max > 0


@pytest.mark.parametrize(("name", "value"), [
    ("position", (0.125, -0.25, 1.5)),
    ("orientation", (0.1, -0.2, 0.3)),
    ("frustum", (-0.5, 0.25, -0.125, 0.375)),
    ("screen_area", (0.25, 0.5, 0.125, 0.75)),
    ("layout", (1.0, 2.5, -0.5, 0.5)),
    ("resolution", (1280, 720)),
])
@pytest.mark.parametrize("form", [tuple, list, np.array])
def test_numbers_that_are_set_are_read(display, name, value, form):
    channel = display.channel("Centre")
    setattr(channel, name, form(value))
    assert getattr(channel, name) == pytest.approx(value, abs=1e-15)
    again = screenmanager.Display.parse(display.text).channel("Centre")
    assert getattr(again, name) == getattr(channel, name)


@pytest.mark.parametrize(("name", "value"), [
    ("name", "Mitte"), ("projection_model", "Equidistant"), ("map_file", "centre.map"), ("device", "")])
def test_texts_that_are_set_are_read(display, name, value):
    channel = display.channel("Centre")
    setattr(channel, name, value)
    assert getattr(channel, name) == value
    assert getattr(screenmanager.Display.parse(display.text).channel(channel.id), name) == value


@pytest.mark.parametrize(("name", "value", "text"), [
    ("position", (0, 1), r"position: expected 3 numbers, found an array of the shape \(2,\)"),
    ("position", (0, math.nan, 1), r"^position\[1\]: expected a finite number, found nan$"),
    ("frustum", (0, 1, math.inf, 1), r"^frustum\[2\]: expected a finite number, found inf$"),
    ("orientation", "abc", "orientation: expected numbers"),
    ("orientation", (0, None, 1), r"^orientation: expected numbers, found NoneType at \[1\]$"),
    ("resolution", (1920.5, 1200), r"^resolution: expected two whole numbers from 1 to 2147483647, found \(1920.5, 1200\)$"),
    ("resolution", (0, 1200), r"^resolution: expected two whole numbers .*, found \(0, 1200\)$"),
    ("resolution", (1920, 2**31), r"^resolution: expected two whole numbers .*, found \(1920, 2147483648\)$"),
    ("name", 5, "name: expected a text, found int"),
    ("name", "a\0b", "(?i)character"),
])
def test_what_is_none_of_them_is_refused_and_changes_nothing(display, name, value, text):
    channel = display.channel("Centre")
    before = display.text
    with pytest.raises(screenmanager.Error, match=text):
        setattr(channel, name, value)
    assert display.text == before


def test_a_group_of_numbers_is_set_whole_or_not_at_all():
    text = example("planar-wall").read_text(encoding="utf-8").replace('lengthUnit="m"', 'lengthUnit="mm"')
    channel = screenmanager.Display.parse(text).channels[0]
    before = channel.layout
    with pytest.raises(screenmanager.Error, match="(?i)layout"):
        # The last number is beyond what millimetres can hold.
        channel.layout = (0.5, 1.5, 0.25, 1e308)
    assert channel.layout == before


def test_what_cannot_be_set_is_not_set(display):
    for name in ("id", "section_id", "old_id"):
        with pytest.raises(AttributeError):
            setattr(display.channels[0], name, "x")


def test_channels_are_added_renamed_moved_and_removed(display):
    added = display.add_channel("new")
    added.name = "New"
    assert display.channels[-1] == added and display.channel("New") == added
    with pytest.raises(screenmanager.Error, match="new"):
        display.add_channel("new")
    assert display.move_channel("new", -1) is True
    assert [channel.id for channel in display.channels].index("new") == 3
    renamed = display.rename_channel("new", "newer")
    assert renamed.id == "newer" and renamed.old_id == "new" and renamed.name == "New"
    with pytest.raises(screenmanager.Error, match="020000000501"):
        display.rename_channel("newer", "020000000501")
    display.remove_channel("newer")
    assert len(display.channels) == 4
    for use in (lambda: renamed.name, lambda: renamed.to_screen((0.5, 0.5)), lambda: setattr(renamed, "name", "x"),
                lambda: display.remove_channel("newer")):
        with pytest.raises(screenmanager.Error, match='"newer" is no longer in the display'):
            use()


def test_target_data_is_read_and_set():
    data = screenmanager.Display.load(example("collimated")).target_data
    assert data.type == "SphericalCollimated" and data.mirror_radius > 0
    data.mirror_radius = 2.5
    data.mirror_position = (0, 1, 2)
    data.position = (0.5, 0, 1)
    data.yaw_table = [(-0.5, -0.4), (0.5, 0.6)]
    data.pitch_table = np.array([(-1.0, -1.0), (1.0, 0.5)])
    data.mirror_orientation = (0.1, 0, 0)
    assert data.mirror_radius == pytest.approx(2.5, abs=1e-12)
    assert data.position == pytest.approx((0.5, 0, 1), abs=1e-12)
    assert np.allclose(data.yaw_table, [(-0.5, -0.4), (0.5, 0.6)], rtol=0, atol=1e-15)
    assert data.pitch_table.shape == (2, 2)
    with pytest.raises(screenmanager.Error, match="Target data: <Pair> measured: .* put the pairs into increasing order"):
        data.yaw_table = [(0.5, 0), (0.4, 1)]
    data.yaw_table = np.empty((0, 2))
    assert data.yaw_table.shape == (0, 2)


def test_a_display_without_screen_and_target_data_names_what_is_missing():
    display = screenmanager.Display.parse("<Display version='1' lengthUnit='m'><Units native='m'/></Display>")
    assert display.channels == ()
    with pytest.raises(screenmanager.Error, match="no screen: add a Screen element"):
        display.screen.radius
    with pytest.raises(screenmanager.Error, match="add a TargetData element"):
        display.target_data.type
    with pytest.raises(screenmanager.Error, match="no screen"):
        display.coverage()

"""Displays: read, written, copied, pickled; what is faulty is refused with the texts of the library."""

import copy
import errno
import gc
import os
import pathlib
import pickle
import pydoc
import re
import shutil
import subprocess
import sys

import pytest
import screenmanager

from conftest import KINDS, assert_same_bits, example


@pytest.mark.parametrize("name", KINDS)
def test_the_text_of_an_unchanged_display_is_that_of_its_file(name):
    text = screenmanager.Display.load(example(name)).text
    # Either quote may stand around a value.
    assert text.replace("'", '"') == example(name).read_text(encoding="utf-8").replace("'", '"')
    assert screenmanager.Display.parse(text).text == text


def test_a_save_and_a_load_keep_what_was_set(tmp_path):
    display = screenmanager.Display.load(example("spherical-dome"))
    display.channel("Left").position = (0.1, 0.2, 0.3)
    display.save(tmp_path / "display.xml")
    again = screenmanager.Display.load(str(tmp_path / "display.xml"))
    assert again.channel("Left").position == (0.1, 0.2, 0.3)
    assert again.text == display.text


def test_a_save_without_a_path_goes_to_the_file_that_was_read(tmp_path):
    path = tmp_path / "display.xml"
    path.write_bytes(example("dome").read_bytes())
    display = screenmanager.Display.load(path)
    display.channels[0].name = "Änderung"
    display.save()
    assert screenmanager.Display.load(path).channels[0].name == "Änderung"


def test_a_file_that_was_changed_elsewhere_is_not_replaced(tmp_path):
    path = tmp_path / "display.xml"
    path.write_bytes(example("dome").read_bytes())
    display = screenmanager.Display.load(path)
    path.write_bytes(path.read_bytes() + b"<!-- by another -->\n")
    display.channels[0].name = "mine"
    with pytest.raises(screenmanager.ChangedFileError, match="display.xml"):
        display.save()
    assert b"by another" in path.read_bytes()


def test_a_display_without_a_file_is_saved_to_a_path_alone(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    path = tmp_path / "display.xml"
    path.write_bytes(example("dome").read_bytes())
    display = screenmanager.Display.load("display.xml")
    for other in (copy.copy(display), pickle.loads(pickle.dumps(display)), screenmanager.Display.parse(display.text)):
        other.channels[0].name = "other"
        with pytest.raises(screenmanager.ArgumentError, match="^path: expected one for a display that was neither"):
            other.save()
        other.save("other.xml")
        other.channels[0].name = "another"
        other.save()
        assert screenmanager.Display.load("other.xml").channels[0].name == "another"
    assert path.read_bytes() == example("dome").read_bytes()


def test_a_missing_file_is_reported_as_python_reports_one():
    with pytest.raises(FileNotFoundError, match="nowhere.xml") as raised:
        screenmanager.Display.load("nowhere.xml")
    assert isinstance(raised.value, screenmanager.MissingFileError)
    assert isinstance(raised.value, screenmanager.Error)
    assert raised.value.errno == errno.ENOENT and raised.value.filename == "nowhere.xml"
    assert str(raised.value) == "nowhere.xml: No such file or directory"
    again = pickle.loads(pickle.dumps(raised.value))
    assert (again.errno, again.filename, str(again)) == (errno.ENOENT, "nowhere.xml", str(raised.value))


def test_a_path_that_is_no_file_has_the_number_of_its_fault(tmp_path):
    with pytest.raises(screenmanager.MissingFileError, match="is a directory") as raised:
        screenmanager.Display.load(tmp_path)
    assert raised.value.errno == errno.EISDIR and raised.value.filename == str(tmp_path)
    os.mkfifo(tmp_path / "pipe")
    with pytest.raises(screenmanager.MissingFileError, match="is a pipe, not a file$") as raised:
        screenmanager.Display.load(tmp_path / "pipe")
    assert raised.value.errno == errno.EINVAL
    name = os.fsencode(tmp_path) + b"/b\xfchne.xml"
    pathlib.Path(os.fsdecode(name)).write_bytes(example("dome").read_bytes())
    with pytest.raises(screenmanager.MissingFileError, match="is not UTF-8: rename it$") as raised:
        screenmanager.Display.load(name)
    assert raised.value.errno == errno.EILSEQ and raised.value.filename == name


@pytest.mark.parametrize(("call", "name"), [
    (lambda display: display.fit("none.csv"), "none.csv"),
    (lambda display: display.export("player", content="none.png"), "none.png"),
])
def test_another_file_that_is_missing_is_reported_so_too(call, name, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(FileNotFoundError, match=name) as raised:
        call(screenmanager.Display.load(example("dome")))
    assert raised.value.errno == errno.ENOENT and raised.value.filename == name
    assert list(tmp_path.iterdir()) == []


def test_faults_have_the_texts_that_the_program_prints(tmp_path):
    path = tmp_path / "faulty.xml"
    path.write_text("<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Cube'/></Display>")
    with pytest.raises(screenmanager.ParseError) as raised:
        screenmanager.Display.load(path)
    printed = subprocess.run([os.environ["SM_PROGRAM"], "targets", str(path)], capture_output=True, text=True,
                             check=False).stderr
    assert "Cube" in str(raised.value)
    for line in str(raised.value).splitlines():
        assert line in printed


def test_a_screen_that_cannot_be_built_is_reported_with_all_its_faults(tmp_path):
    path = tmp_path / "display.xml"
    path.write_bytes(example("curved-wall").read_bytes())
    display = screenmanager.Display.load(path)
    with pytest.raises(screenmanager.Error) as raised:
        display.screen.intersect((0, 0, 0), (0, 1, 0))
    assert "measured mesh" in str(raised.value) and "wall-measured.obj" in str(raised.value)
    # The display goes on: it is the files that are missing.
    for name in ("wall-measured.obj", "wall-scan.pcd", "wall.obj"):
        (tmp_path / name).write_bytes((example("curved-wall").parent / name).read_bytes())
    assert display.screen.intersect((0, 0, 1.5), (0, 1, 0)).hit


def test_a_text_stands_for_a_file():
    text = example("dome").read_text(encoding="utf-8")
    display = screenmanager.Display.parse(text, example("dome"))
    assert display.screen.hash == screenmanager.Display.load(example("dome")).screen.hash
    with pytest.raises(screenmanager.ParseError, match="^mine.xml:1"):
        screenmanager.Display.parse("<Display", "mine.xml")


def test_a_display_is_made_by_its_factories_alone():
    with pytest.raises(TypeError, match="Display.load"):
        screenmanager.Display()


@pytest.mark.parametrize("twin", [copy.copy, copy.deepcopy, lambda display: pickle.loads(pickle.dumps(display))])
def test_a_copy_is_a_display_of_its_own(twin):
    display = screenmanager.Display.load(example("curved-wall"))
    display.channels[0].name = "renamed"
    other = twin(display)
    assert other.channels[0].name == "renamed"
    # The files that it names are found.
    assert other.screen.hash == display.screen.hash
    other.channels[0].name = "again"
    assert display.channels[0].name == "renamed"


def test_channels_and_records_are_pickled():
    display = screenmanager.Display.load(example("dome"))
    channel = pickle.loads(pickle.dumps(display.channels[1]))
    assert channel.id == display.channels[1].id and channel.position == display.channels[1].position
    targets = pickle.loads(pickle.dumps(display.targets(4, 3)))
    assert_same_bits(targets[0].points, display.targets(4, 3)[0].points)
    for kind in ("Error", "ArgumentError", "MissingFileError", "ParseError"):
        fault = pickle.loads(pickle.dumps(getattr(screenmanager, kind)("what is wrong")))
        assert type(fault) is getattr(screenmanager, kind) and str(fault) == "what is wrong"


def test_results_outlive_their_display():
    display = screenmanager.Display.load(example("mesh-rays"))
    hits = display.screen.intersect((0, 0, 1.5), [(0, 1, 0)])
    mesh = display.screen.mesh()
    targets = display.targets(4, 3)
    kept = hits.points.copy(), mesh.vertices.copy(), targets[0].points.copy()
    assert hits.points.flags.owndata and mesh.vertices.flags.owndata and targets[0].points.flags.owndata
    del display
    gc.collect()
    screenmanager.Display.load(example("dome")).targets(4, 3)
    for ours, before in zip((hits.points, mesh.vertices, targets[0].points), kept):
        assert_same_bits(ours, before)


def test_results_may_be_changed_without_any_effect():
    display = screenmanager.Display.load(example("mesh-rays"))
    before = display.screen.intersect((0, 0, 1.5), [(0, 1, 0)]).points.copy()
    display.screen.mesh().vertices[:] = 0
    display.screen.intersect((0, 0, 1.5), [(0, 1, 0)]).points[:] = 0
    assert_same_bits(display.screen.intersect((0, 0, 1.5), [(0, 1, 0)]).points, before)


def test_it_opens_neither_numpy_nor_clouds_nor_the_solver_when_imported():
    code = ("import sys, screenmanager\n"
            "assert 'numpy' not in sys.modules\n"
            "maps = open('/proc/self/maps').read()\n"
            "assert 'libScreenManager' in maps\n"
            "assert 'pcl' not in maps, 'the point cloud library is open'\n"
            "assert 'libScreenManagerFit' not in maps and 'glog' not in maps, 'the solver is open'\n")
    subprocess.run([sys.executable, "-c", code], check=True)


def test_it_writes_nothing_of_its_own(tmp_path):
    code = ("import screenmanager\n"
            f"display = screenmanager.Display.load({str(example('curved-wall'))!r})\n"
            "display.targets(); display.coverage(); display.check()\n"
            "measured = [screenmanager.MeasuredPoints(t.id, t.picture[t.mask], t.points[t.mask])\n"
            "            for t in display.targets(6, 5)]\n"
            "display.apply(display.fit(measured)); display.channels[0].player_warp('screen')\n")
    run = subprocess.run([sys.executable, "-c", code], check=True, capture_output=True, text=True, cwd=tmp_path)
    assert run.stdout == "" and run.stderr == ""
    assert list(tmp_path.iterdir()) == []


def test_every_name_has_a_text_of_its_own():
    for name in screenmanager.__all__:
        thing = getattr(screenmanager, name)
        assert thing.__doc__, name
        if not isinstance(thing, type) or issubclass(thing, (tuple, Exception)):
            continue
        for member, value in vars(thing).items():
            if not member.startswith("_") and (callable(value) or isinstance(value, (property, classmethod))):
                assert getattr(thing, member).__doc__, f"{name}.{member}"


def test_a_save_in_another_folder_leaves_copies_where_their_files_are(tmp_path):
    display = screenmanager.Display.load(example("curved-wall"))
    before = display.screen.hash
    display.save(tmp_path / "elsewhere.xml")
    for other in (copy.copy(display), pickle.loads(pickle.dumps(display))):
        assert other.screen.hash == before


def test_a_display_is_moved_with_the_names_of_its_files(tmp_path, monkeypatch):
    display = screenmanager.Display.load(example("curved-wall"))
    before = display.text
    monkeypatch.chdir(tmp_path)
    moved = display.moved_to("moved.xml")
    assert display.text == before and list(tmp_path.iterdir()) == []
    moved.save()
    assert screenmanager.Display.load(tmp_path / "moved.xml").screen.hash == display.screen.hash


def test_the_unit_is_that_of_the_file():
    assert screenmanager.Display.load(example("planar-wall")).unit == "m"
    text = example("planar-wall").read_text(encoding="utf-8").replace('native="m"', 'native="mm"')
    display = screenmanager.Display.parse(text)
    assert display.unit == "mm"
    assert display.screen.width == 1000 * screenmanager.Display.load(example("planar-wall")).screen.width


def lit(display):
    """What follows from its files."""
    return display.screen.hash, display.screen.content.hash, display.channels[0].to_screen((0.5, 0.5)).mask.all()


def test_a_relative_path_counts_from_the_folder_at_the_load(tmp_path, monkeypatch):
    shutil.copytree(example("curved-wall").parent, tmp_path / "wall")
    (tmp_path / "elsewhere").mkdir()
    expected = lit(screenmanager.Display.load(tmp_path / "wall" / "display.xml"))
    monkeypatch.chdir(tmp_path / "wall")
    text = pathlib.Path("display.xml").read_bytes()
    displays = [screenmanager.Display.load("display.xml"), screenmanager.Display.load(b"./display.xml"),
                screenmanager.Display.load(pathlib.Path("display.xml")), screenmanager.Display.parse(text),
                screenmanager.Display.parse(text, ""), screenmanager.Display.load("display.xml").moved_to("moved.xml")]
    displays += [copy.copy(displays[0]), pickle.loads(pickle.dumps(displays[0]))]
    monkeypatch.chdir(tmp_path / "elsewhere")
    for display in displays:
        assert lit(display) == expected
        assert lit(copy.copy(display)) == expected and lit(pickle.loads(pickle.dumps(display))) == expected
        assert os.path.isabs(display.path)
    assert displays[1].path == os.fsencode(tmp_path / "wall") + b"/./display.xml"


def test_a_save_goes_to_the_file_that_was_read_from_whatever_folder(tmp_path, monkeypatch):
    for name in ("here", "there"):
        (tmp_path / name).mkdir()
        (tmp_path / name / "display.xml").write_bytes(example("dome").read_bytes())
    monkeypatch.chdir(tmp_path / "here")
    display = screenmanager.Display.load("display.xml")
    moved = display.moved_to("moved.xml")
    monkeypatch.chdir(tmp_path / "there")
    display.channels[0].name = "mine"
    display.save()
    moved.save()
    assert screenmanager.Display.load(tmp_path / "here" / "display.xml").channels[0].name == "mine"
    assert (tmp_path / "here" / "moved.xml").is_file()
    assert (tmp_path / "there" / "display.xml").read_bytes() == example("dome").read_bytes()
    display.save("other.xml")
    monkeypatch.chdir(tmp_path)
    display.channels[0].name = "again"
    display.save()
    assert screenmanager.Display.load(tmp_path / "there" / "other.xml").channels[0].name == "again"
    # A change elsewhere is noticed by whatever path.
    (tmp_path / "there" / "other.xml").write_bytes(b"<!-- another -->")
    with pytest.raises(screenmanager.ChangedFileError):
        display.save("there/other.xml")


def test_a_report_names_the_file_that_was_read(tmp_path, monkeypatch):
    (tmp_path / "display.xml").write_bytes(example("dome").read_bytes())
    (tmp_path / "elsewhere").mkdir()
    monkeypatch.chdir(tmp_path)
    display = screenmanager.Display.load("display.xml")
    monkeypatch.chdir(tmp_path / "elsewhere")
    manifest = display.export("player", formats=["mesh"], nodes=(3, 3), blend=None)
    assert manifest["files"][0]["name"] == str(tmp_path / "display.xml")


def test_a_working_folder_that_is_gone_is_a_fault_of_the_family(tmp_path, monkeypatch):
    folder = tmp_path / "gone"
    folder.mkdir()
    monkeypatch.chdir(folder)
    folder.rmdir()
    for call in (lambda: screenmanager.Display.load("display.xml"), lambda: screenmanager.Display.parse("<Display/>")):
        with pytest.raises(screenmanager.MissingFileError, match="the working folder is gone: state an absolute path$"):
            call()
    assert screenmanager.Display.load(example("dome")).channels


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_everything_of_a_display_is_pickled_by_every_protocol(protocol):
    display = screenmanager.Display.load(example("curved-wall"))
    parts = display, display.channels[0], display.screen, display.screen.content, display.target_data
    again = pickle.loads(pickle.dumps(parts, protocol))
    assert [type(part) for part in again] == [type(part) for part in parts]
    assert again[1].position == parts[1].position and again[3].hash == parts[3].hash
    assert again[4].position == parts[4].position
    # As one: they follow the same display.
    again[1].name = "changed"
    assert again[0].channels[0].name == "changed"
    copies = copy.deepcopy(parts)
    assert copies[2].hash == parts[2].hash


SHAPE = re.compile(r"\((\.\.\.|[^()]*\d[^()]*|[nmk](, [nmk])*|rows, columns)\)")


def arrays_of(kind):
    return [name for name, what in kind.__dict__.get("__annotations__", {}).items() if "ndarray" in str(what)]


def test_the_help_of_the_module_has_the_shape_of_every_array():
    page = pydoc.plain(pydoc.render_doc(screenmanager))
    words = " ".join(page.replace("|", " ").split())
    kinds = [kind for kind in map(vars(screenmanager).get, screenmanager.__all__) if arrays_of(kind)]
    assert len(kinds) >= 12
    for kind in kinds:
        text = " ".join(kind.__doc__.split())
        assert text in words
        for name in arrays_of(kind):
            begin = re.search(rf"\b{name}\b", text)
            assert begin and SHAPE.search(text[begin.end():]), (kind, name)

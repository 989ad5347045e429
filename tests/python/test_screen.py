"""The screen: rays, parameters, normals, hashes and meshes are those of the library."""

import numpy as np
import pytest
import screenmanager

from conftest import KINDS, assert_same_bits, example, reference


def rays(random, count=4000):
    origins = random.normal(0, 0.3, (count, 3)) + (0, 0, 1.5)
    return origins, random.normal(0, 1, (count, 3))


@pytest.mark.parametrize("name", KINDS)
def test_rays_are_those_of_the_library_to_the_last_bit(name, random):
    origins, directions = rays(random)
    hits = screenmanager.Display.load(example(name)).screen.intersect(origins, directions)
    theirs = reference(name, 9, "rays", rows=np.hstack([origins, directions]))
    assert np.array_equal(hits.hit, theirs[:, 8] == 1)
    # Some hit and, but for what stands all around, some miss.
    assert hits.hit.any()
    on = hits.hit
    assert_same_bits(hits.points[on], theirs[on, 0:3])
    assert_same_bits(hits.normals[on], theirs[on, 3:6])
    assert_same_bits(hits.distances[on], theirs[on, 6])
    assert np.array_equal(hits.sides, theirs[:, 7])
    for missed in (hits.points[~on], hits.normals[~on], hits.distances[~on]):
        assert np.isnan(missed).all()


def test_a_ray_meets_a_sphere_where_geometry_has_it():
    screen = screenmanager.Display.load(example("spherical-dome")).screen
    direction = np.array([3.0, 4.0, 0.0])
    hits = screen.intersect(screen.centre, [direction])
    assert hits.distances[0] == pytest.approx(screen.radius, abs=1e-12)
    assert hits.points[0] == pytest.approx(np.array(screen.centre) + direction / 5 * screen.radius, abs=1e-12)
    assert hits.normals[0] == pytest.approx(direction / 5, abs=1e-12)
    assert hits.sides[0] == 1


@pytest.mark.parametrize("axis", range(3))
@pytest.mark.parametrize("length", [1e-300, 1e-12, 1e12, 1e300])
def test_the_length_of_a_direction_does_not_matter(axis, length):
    screen = screenmanager.Display.parse(
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><Radius "
        "value='3'/><Azimuth min='-180' max='180'/><Elevation min='-90' max='90'/></Screen><TargetData type='3D'/>"
        "<Projectors><Projector id='A'/></Projectors></Display>",
        "sphere.xml",
    ).screen
    origin = (0.3, -0.2, 0.1)
    ray = np.zeros(3)
    ray[axis] = 1
    plain = screen.intersect(origin, [ray, -ray])
    scaled = screen.intersect(origin, [length * ray, -length * ray])
    assert plain.hit.all()
    assert np.array_equal(scaled.hit, plain.hit)
    assert np.allclose(scaled.points, plain.points, rtol=0, atol=1e-12)


def test_one_origin_serves_all_directions_and_one_direction_all_origins(random):
    screen = screenmanager.Display.load(example("dome")).screen
    origins, directions = rays(random, 50)
    one = screen.intersect(origins[7], directions)
    assert_same_bits(one.points, screen.intersect(np.tile(origins[7], (50, 1)), directions).points)
    other = screen.intersect(origins, directions[3])
    assert_same_bits(other.points, screen.intersect(origins, np.tile(directions[3], (50, 1))).points)
    single = screen.intersect(origins[0], directions[0])
    assert single.points.shape == (3,) and single.hit.shape == () and single.sides.dtype == np.int8


def test_the_shape_of_the_rays_is_that_of_the_results(random):
    screen = screenmanager.Display.load(example("dome")).screen
    origins, directions = rays(random, 24)
    flat = screen.intersect(origins, directions)
    square = screen.intersect(origins.reshape(4, 6, 3), directions.reshape(4, 6, 3))
    assert square.points.shape == (4, 6, 3) and square.hit.shape == (4, 6)
    assert_same_bits(square.points.reshape(-1, 3), flat.points)
    empty = screen.intersect(np.empty((0, 3)), np.empty((0, 3)))
    assert empty.points.shape == (0, 3) and empty.hit.shape == (0,)


def test_a_ray_of_length_zero_hits_nothing():
    hits = screenmanager.Display.load(example("dome")).screen.intersect([(0, 0, 1)], [(0, 0, 0)])
    assert not hits.hit[0] and np.isnan(hits.distances[0]) and hits.sides[0] == 0


@pytest.mark.parametrize("name", ["cockpit", "curved-wall", "cylinder", "dome", "planar-wall"])
def test_parameters_are_mapped_as_by_the_library(name, random):
    st = random.uniform(-0.2, 1.2, (2000, 2))
    mapped = screenmanager.Display.load(example(name)).screen.map_into_3d(st)
    theirs = reference(name, 4, "parameters", rows=st)
    assert np.array_equal(mapped.mask, theirs[:, 3] == 1)
    assert mapped.mask.any() and not mapped.mask.all()
    assert_same_bits(mapped.points[mapped.mask], theirs[mapped.mask, 0:3])
    assert np.isnan(mapped.points[~mapped.mask]).all()


def test_a_surface_without_parameters_refuses_them(tmp_path):
    (tmp_path / "wall.obj").write_text("v -1 3 0\nv 1 3 0\nv 0 3 2\nf 1 2 3\n")
    screen = screenmanager.Display.parse(
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' fileUnit='m'>"
        "<ContentMesh file='wall.obj'/><ImportOrientation up='Z' forward='Y'/></Screen></Display>",
        tmp_path / "display.xml").screen
    assert screen.intersect((0, 0, 1), (0, 1, 0)).hit and not screen.is_parameterised
    with pytest.raises(screenmanager.Error, match="(?i)param|texture"):
        screen.map_into_3d([(0.5, 0.5)])


@pytest.mark.parametrize("name", ["cockpit", "curved-wall", "cylinder", "dome", "planar-wall"])
def test_normals_are_those_of_the_library(name, random):
    places = random.normal(0, 3, (200, 3))
    ours = screenmanager.Display.load(example(name)).screen.normals(places)
    assert_same_bits(ours, reference(name, 3, "normals", rows=places))


@pytest.mark.parametrize("name", KINDS)
def test_hashes_are_those_of_the_library(name):
    theirs = reference(name, 20, "hash")[0]
    assert screenmanager.Display.load(example(name)).screen.hash == bytes(theirs.astype(np.uint8)).hex()


def test_a_measured_mesh_takes_the_place_of_the_content():
    screen = screenmanager.Display.load(example("curved-wall")).screen
    assert screen.measured is not None
    assert screen.hash == screen.measured.hash != screen.content.hash
    assert screenmanager.Display.load(example("dome")).screen.measured is None


def test_each_surface_is_hit_by_itself(random):
    display = screenmanager.Display.load(example("curved-wall"))
    text = "\n".join(line for line in display.text.splitlines() if "MeasuredMesh" not in line)
    alone = screenmanager.Display.parse(text, example("curved-wall"))
    origins, directions = rays(random, 500)
    designed = display.screen.content.intersect(origins, directions)
    assert designed.hit.any()
    assert_same_bits(designed.points, alone.screen.intersect(origins, directions).points)
    measured = display.screen.measured.intersect(origins, directions)
    assert_same_bits(measured.points, display.screen.intersect(origins, directions).points)
    both = designed.hit & measured.hit
    apart = np.linalg.norm(designed.points[both] - measured.points[both], axis=1)
    assert 0 < apart.max() < 0.2


def test_a_mesh_comes_as_arrays():
    display = screenmanager.Display.load(example("mesh-rays"))
    mesh = display.screen.mesh()
    assert mesh.vertices.ndim == 2 and mesh.vertices.shape[1] == 3 and mesh.vertices.dtype == np.float64
    assert mesh.triangles.shape[1] == 3 and mesh.triangles.dtype == np.uint32
    assert mesh.triangles.max() == len(mesh.vertices) - 1
    # Every hit lies in the plane of a triangle, at the corner that a ray is sent to.
    corners = mesh.vertices[mesh.triangles].mean(axis=1)[:50]
    eye = np.array([0.0, -20.0, 1.5])
    hits = display.screen.intersect(eye, corners - eye)
    assert hits.hit.all() and np.allclose(hits.points, corners, atol=1e-9)
    assert screenmanager.Display.load(example("dome")).screen.mesh() is None


def test_what_is_set_moves_the_surface():
    display = screenmanager.Display.load(example("spherical-dome"))
    screen = display.screen
    before = screen.hash
    screen.radius = 7.5
    assert screen.radius == 7.5 and screen.hash != before
    hits = screen.intersect(screen.centre, [(0, 1, 0.1)])
    assert hits.distances[0] == pytest.approx(7.5, abs=1e-12)
    assert '<Radius value="7.5"/>' in display.text
    screen.centre = (1, 2, 3)
    assert screen.centre == (1, 2, 3)
    assert screen.intersect((1, 2, 3), [(0, 1, 0)]).points[0] == pytest.approx((1, 9.5, 3), abs=1e-12)


def test_what_the_shape_does_not_have_is_refused():
    screen = screenmanager.Display.load(example("planar-wall")).screen
    before = screen.hash
    with pytest.raises(screenmanager.Error, match="(?i)radius"):
        screen.radius = 3
    assert screen.hash == before
    assert screen.shape == "Flat"


def test_rails_are_set_together():
    screen = screenmanager.Display.load(example("cockpit")).screen
    lower, upper = screen.rails
    assert lower.shape == upper.shape and lower.shape[1] == 3
    screen.rails = (lower + (0, 1, 0), upper + (0, 1, 0))
    moved = screen.rails[0]
    # The file states other units, which do not hold every number.
    assert np.allclose(moved, lower + (0, 1, 0), rtol=0, atol=1e-12)
    with pytest.raises(screenmanager.Error, match="(?i)rail"):
        screen.rails = (lower, upper[:-1])
    assert_same_bits(screen.rails[0], moved)


def test_the_cloud_of_the_model_is_that_of_its_file():
    display = screenmanager.Display.load(example("curved-wall"))
    cloud = display.screen.cloud()
    lines = (example("curved-wall").parent / "wall-scan.pcd").read_bytes().split(b"\n")
    header = {line.split()[0]: line.split()[1:] for line in lines[:11] if line and not line.startswith(b"#")}
    assert cloud.shape == (int(header[b"POINTS"][0]), 3) and cloud.dtype == np.float32
    # What was scanned lies on the wall that was measured, to a millimetre or two.
    nearest = display.screen.measured.intersect(display.screen.eye_point, cloud - np.array(display.screen.eye_point))
    distances = np.linalg.norm(nearest.points[nearest.hit] - cloud[nearest.hit], axis=1)
    assert nearest.hit.mean() > 0.9 and np.median(distances) < 0.01
    cloud[:] = 0
    assert np.any(display.screen.cloud() != 0), "a copy"
    del display
    assert cloud.flags.owndata


def test_a_display_without_a_cloud_has_none():
    assert screenmanager.Display.load(example("dome")).screen.cloud() is None


@pytest.mark.parametrize(("origins", "directions", "shape"), [
    ((0, 0, 1), np.full((4, 3), np.nan)[:0], (0,)), (np.zeros((0, 3)), (0, 1, 0), (0,)), (np.zeros((0, 3)), np.zeros((0, 3)), (0,)),
    ((0, 0, 1), np.full((4, 1, 3), np.nan)[:, :0], (4, 0)), (np.zeros((0, 4, 3)), (0, 1, 0), (0, 4))])
@pytest.mark.parametrize("name", ["dome", "mesh-rays", "planar-wall"])
def test_no_rays_hit_nothing(name, origins, directions, shape):
    hits = screenmanager.Display.load(example(name)).screen.intersect(origins, directions)
    assert hits.points.shape == (*shape, 3) and hits.hit.shape == hits.distances.shape == shape

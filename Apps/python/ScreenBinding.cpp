#include "Arrays.h"
#include "Bindings.h"
#include "Common/VeltraniException.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "Refusals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace py = pybind11;

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Where a kind of screen states no better number: few enough to stay in the cache of the processor.
constexpr std::size_t RAYS_AT_ONCE = 1024;
/// Points between two looks at the clock.
constexpr std::size_t POINTS_AT_ONCE = 256;

DisplayState::Part partOf(const std::string& name) {
    return name == "content"    ? DisplayState::Part::CONTENT
           : name == "measured" ? DisplayState::Part::MEASURED
                                : DisplayState::Part::PREFERRED;
}

std::shared_ptr<ScreenGeometry> surfaceOf(DisplayState& display, const std::string& part) {
    auto surface = display.surface(partOf(part));
    if (!surface) {
        throw VeltraniException(L"the display has no measured screen");
    }
    return surface;
}

/// One row for all of the others, too.
bool isOneForAll(const Rows& rows) {
    return rows.shape().empty();
}

Shape shapeOfBoth(const Rows& origins, const Rows& directions) {
    if (isOneForAll(origins)) {
        return directions.shape();
    }
    if (!isOneForAll(directions) && directions.shape() != origins.shape()) {
        throw ArgumentFault{"directions: expected an array of the shape " + textOf(extended(origins.shape(), 3)) +
                            ", as origins, or (3,), found " + textOf(extended(directions.shape(), 3))};
    }
    return origins.shape();
}

/// The results of many rays, as arrays.
struct Hits {
    explicit Hits(const Shape& shape)
        : points(extended(shape, 3)), normals(extended(shape, 3)), distances(shape), sides(shape), hit(shape) {}

    void set(std::size_t i, const SurfaceHit& found, double length) {
        points.set(i, found.hit ? found.point : missing<3>());
        normals.set(i, found.hit ? found.normal : missing<3>());
        *distances.at(i) = found.hit ? found.t * length : std::numeric_limits<double>::quiet_NaN();
        *sides.at(i) = static_cast<std::int8_t>(found.hit ? found.side : 0);
        *hit.at(i) = found.hit;
    }

    ResultRows<double> points;
    ResultRows<double> normals;
    ResultRows<double> distances;
    ResultRows<std::int8_t> sides;
    ResultRows<bool> hit;
};

double largestOf(const P3& vector) {
    return std::max({std::abs(vector[0]), std::abs(vector[1]), std::abs(vector[2])});
}

/// A ray is two points: a direction that is short beside the coordinates of its origin would lose its digits in the
/// second one, and powers of a long one leave the range of numbers. Multiplied by a power of two, it keeps its digits.
P3 workable(const P3& direction, const P3& origin) {
    constexpr double SHORTEST = 0x1p-20;
    constexpr double LONGEST = 0x1p64;
    const double size = largestOf(direction);
    const double beside = std::max(1.0, largestOf(origin));
    if (size == 0 || (size >= SHORTEST * beside && size <= LONGEST)) {
        return direction;
    }
    const int exponent = std::ilogb(beside) - std::ilogb(size);
    return {std::ldexp(direction[0], exponent), std::ldexp(direction[1], exponent), std::ldexp(direction[2], exponent)};
}

void cast(const ScreenGeometry& surface, const Rows& origins, const Rows& directions, std::size_t count, Hits& hits) {
    const std::size_t atOnce = std::max(surface.raysAtOnce(), RAYS_AT_ONCE);
    std::vector<Ray> rays;
    std::vector<double> lengths;
    std::vector<SurfaceHit> found(std::min(atOnce, count));
    rays.reserve(found.size());
    lengths.reserve(found.size());
    for (std::size_t first = 0; first < count; first += atOnce) {
        Entry::pulse();
        const std::size_t end = std::min(first + atOnce, count);
        rays.clear();
        lengths.clear();
        for (std::size_t i = first; i < end; ++i) {
            const P3 from = origins.at<3>(isOneForAll(origins) ? 0 : i, Rows::FARTHEST);
            const P3 along = workable(directions.at<3>(isOneForAll(directions) ? 0 : i), from);
            rays.emplace_back(from, from + along);
            lengths.push_back(norm(along));
        }
        surface.intersectRays(rays, std::span(found).first(rays.size()));
        for (std::size_t i = first; i < end; ++i) {
            hits.set(i, found[i - first], lengths[i - first]);
        }
    }
}

py::tuple intersect(DisplayState& display, const std::string& part, py::handle origins, py::handle directions) {
    const Rows from(origins, "origins", 3);
    const Rows along(directions, "directions", 3);
    const Shape shape = shapeOfBoth(from, along);
    Hits hits(shape);
    inEntry(&display, [&] {
        // None at all, too, where one of them serves all.
        const std::size_t count = isOneForAll(from) ? along.count() : from.count();
        cast(*surfaceOf(display, part), from, along, count, hits);
    });
    return py::make_tuple(hits.points.array(), hits.normals.array(), hits.distances.array(), hits.sides.array(),
                          hits.hit.array());
}

py::tuple mapInto3D(DisplayState& display, const std::string& part, py::handle parameters, bool extrapolate) {
    const Rows st(parameters, "st", 2);
    ResultRows<double> points(extended(st.shape(), 3));
    ResultRows<bool> mapped(st.shape());
    inEntry(&display, [&] {
        const auto surface = surfaceOf(display, part);
        for (std::size_t i = 0; i < st.count(); ++i) {
            if (i % POINTS_AT_ONCE == 0) {
                Entry::pulse();
            }
            P3 point;
            *mapped.at(i) = surface->mapInto3D(st.at<2>(i, Rows::FARTHEST), point, extrapolate);
            points.set(i, *mapped.at(i) ? point : missing<3>());
        }
    });
    return py::make_tuple(points.array(), mapped.array());
}

py::array normals(DisplayState& display, const std::string& part, py::handle places) {
    const Rows points(places, "points", 3);
    ResultRows<double> result(extended(points.shape(), 3));
    inEntry(&display, [&] {
        const auto surface = surfaceOf(display, part);
        for (std::size_t i = 0; i < points.count(); ++i) {
            if (i % POINTS_AT_ONCE == 0) {
                Entry::pulse();
            }
            result.set(i, surface->getScreenNormal(points.at<3>(i, Rows::FARTHEST)));
        }
    });
    return result.array();
}

bool hasMeasured(DisplayState& display) {
    return inEntry(&display, [&] { return display.surface(DisplayState::Part::MEASURED) != nullptr; });
}

py::tuple facts(DisplayState& display, const std::string& part) {
    std::array<unsigned char, 20> hash{};
    bool isParameterised = false;
    std::wstring fault;
    inEntry(&display, [&] {
        const auto surface = surfaceOf(display, part);
        hash = surface->getUniqueDataHash();
        isParameterised = surface->isParameterised();
        fault = surface->isValid() ? std::wstring() : surface->faultOfShape();
    });
    return py::make_tuple(py::bytes(std::string(hash.begin(), hash.end())), isParameterised, fault);
}

/// Without Python: a copy, as another thread may build another surface at once.
std::optional<TriangleMesh> trianglesOf(DisplayState& display, const std::string& part) {
    return inEntry(&display, [&] {
        const TriangleMesh* const triangles = surfaceOf(display, part)->triangleMesh();
        return triangles == nullptr ? std::nullopt : std::optional(*triangles);
    });
}

py::array arrayOfIndices(const std::vector<TriangleMesh::Triangle>& list) {
    ResultRows<std::uint32_t> rows({static_cast<py::ssize_t>(list.size()), 3});
    for (std::size_t i = 0; i < list.size(); ++i) {
        rows.set(i, Point<std::uint32_t, 3>{list[i][0], list[i][1], list[i][2]});
    }
    return rows.array();
}

py::object mesh(DisplayState& display, const std::string& part) {
    const std::optional<TriangleMesh> triangles = trianglesOf(display, part);
    if (!triangles) {
        return py::none();
    }
    return py::make_tuple(arrayOf<double, 3>(triangles->vertices), arrayOfIndices(triangles->triangles),
                          arrayOf<double, 2>(triangles->textureCoordinates),
                          arrayOfIndices(triangles->textureTriangles));
}

void build(DisplayState& display) {
    inEntry(&display, [&] { display.requireScreen(); });
}

}  // namespace

void bindScreen(DisplayClass& display) {
    display.def("intersect", &intersect)
        .def("map_into_3d", &mapInto3D)
        .def("normals", &normals)
        .def("has_measured", &hasMeasured)
        .def("screen_facts", &facts)
        .def("mesh", &mesh)
        .def("build_screen", &build);
}

#include "Arrays.h"
#include "Bindings.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "Refusals.h"

#include <algorithm>
#include <string>

namespace py = pybind11;

namespace {

using namespace Veltrani::DisplayReport;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Few enough for points and results to stay in the cache of the processor, enough for rays to be cast together.
constexpr std::size_t POINTS_AT_ONCE = 8192;
/// Rays of neighbouring rows have more of a surface in common than as many of one row.
constexpr std::size_t ROWS_AT_ONCE = 8;
/// Of points that are searched for one by one.
constexpr std::size_t SEARCHES_AT_ONCE = 16;

DisplayState::Space spaceOf(const std::string& name) {
    return name == "screen" ? DisplayState::Space::SCREEN : DisplayState::Space::LAYOUT;
}

/// The results of picture points, as arrays.
struct Places {
    explicit Places(const Shape& shape) : points(extended(shape, 3)), mapped(shape) {}

    void set(std::size_t i, const LayoutPoint& place) {
        points.set(i, place.isMapped ? place.point : missing<3>());
        *mapped.at(i) = place.isMapped;
    }

    [[nodiscard]] py::tuple arrays() const { return py::make_tuple(points.array(), mapped.array()); }

    ResultRows<double> points;
    ResultRows<bool> mapped;
};

py::tuple toSpace(DisplayState& display, const std::wstring& id, const std::string& space, py::handle picture) {
    const Rows places(picture, "picture", 2);
    Places result(places.shape());
    inEntry(&display, [&] {
        PointMap& map = display.mapOf(id, spaceOf(space), false);
        std::vector<P2> points;
        std::vector<LayoutPoint> mapped;
        for (std::size_t first = 0; first < places.count(); first += POINTS_AT_ONCE) {
            Entry::pulse();
            const std::size_t end = std::min(first + POINTS_AT_ONCE, places.count());
            points.clear();
            for (std::size_t i = first; i < end; ++i) {
                points.push_back(places.at<2>(i, Rows::FARTHEST));
            }
            mapped.resize(points.size());
            map.toLayout(points, mapped);
            for (std::size_t i = first; i < end; ++i) {
                result.set(i, mapped[i - first]);
            }
        }
    });
    return result.arrays();
}

py::tuple toPicture(DisplayState& display, const std::wstring& id, const std::string& space, bool useCache,
                    py::handle points) {
    const Rows places(points, "points", 3);
    ResultRows<double> picture(extended(places.shape(), 2));
    ResultRows<bool> mapped(places.shape());
    inEntry(&display, [&] {
        PointMap& map = display.mapOf(id, spaceOf(space), useCache);
        for (std::size_t i = 0; i < places.count(); ++i) {
            if (i % SEARCHES_AT_ONCE == 0) {
                Entry::pulse();
            }
            P2 place;
            *mapped.at(i) = map.toPicture(places.at<3>(i, Rows::FARTHEST), place);
            picture.set(i, *mapped.at(i) ? place : missing<2>());
        }
    });
    return py::make_tuple(picture.array(), mapped.array());
}

Point<int, 2> pictureSize(DisplayState& display, const std::wstring& id) {
    return inEntry(&display, [&] { return display.choice(id).pictureSize(); });
}

/// Maps the middles of the pixels of some rows.
void mapRows(PointMap& map, const Point<int, 2>& size, std::size_t first, std::size_t end, Places& result) {
    const auto columns = static_cast<std::size_t>(size[0]);
    std::vector<P2> points;
    points.reserve((end - first) * columns);
    for (std::size_t row = first; row < end; ++row) {
        const double v = (static_cast<double>(row) + 0.5) / size[1];
        for (int column = 0; column < size[0]; ++column) {
            points.emplace_back((column + 0.5) / size[0], v);
        }
    }
    std::vector<LayoutPoint> mapped(points.size());
    map.toLayout(points, mapped);
    for (std::size_t i = 0; i < mapped.size(); ++i) {
        result.set(first * columns + i, mapped[i]);
    }
}

py::tuple wholePicture(DisplayState& display, const std::wstring& id, const std::string& space) {
    const Point<int, 2> size = pictureSize(display, id);
    const auto rows = static_cast<std::size_t>(size[1]);
    Places result({size[1], size[0]});
    inEntry(&display, [&] {
        PointMap& map = display.mapOf(id, spaceOf(space), false);
        for (std::size_t row = 0; row < rows; row += ROWS_AT_ONCE) {
            Entry::pulse();
            mapRows(map, size, row, std::min(row + ROWS_AT_ONCE, rows), result);
        }
    });
    return result.arrays();
}

Panorama panoramaFrom(const std::string& name) {
    const auto panorama = panoramaOf(name);
    if (!panorama) {
        std::string names;
        for (const std::string& known : panoramaNames()) {
            names += (names.empty() ? "" : " or ") + known;
        }
        throw ArgumentFault{"panorama: expected " + names + ", found " + name};
    }
    return *panorama;
}

/// @param nodes columns and rows of a grid of nodes; {0, 0} for one place in the middle of each pixel
PictureWarp warpOf(DisplayState& display, const std::wstring& id, Panorama panorama, const Point<int, 2>& nodes) {
    // The map first: it names what the channel lacks.
    auto& map = dynamic_cast<LayoutMapper&>(display.mapOf(id, DisplayState::Space::LAYOUT, false));
    const Point<int, 2> size = display.choice(id).pictureSize();
    const InputProjection input(display.config(), panorama);
    const Progress progress = [](std::size_t, std::size_t) { Entry::pulse(); };
    return nodes == Point<int, 2>() ? PictureWarp::atPixels(map, input, size, progress)
                                    : PictureWarp::atNodes(map, input, size, nodes, progress);
}

py::tuple warp(DisplayState& display, const std::wstring& id, const std::string& panorama, int columns, int rows) {
    const Panorama kind = panoramaFrom(panorama);
    const PictureWarp made = inEntry(&display, [&] { return warpOf(display, id, kind, {columns, rows}); });
    const Shape shape{static_cast<py::ssize_t>(made.rows()), static_cast<py::ssize_t>(made.columns())};
    ResultRows<double> places(extended(shape, 2));
    ResultRows<bool> mapped(shape);
    for (std::size_t row = 0; row < made.rows(); ++row) {
        for (std::size_t column = 0; column < made.columns(); ++column) {
            const WarpSample& sample = made.at(column, row);
            const std::size_t i = row * made.columns() + column;
            places.set(i, sample.isMapped ? sample.input : missing<2>());
            *mapped.at(i) = sample.isMapped;
        }
    }
    return py::make_tuple(places.array(), mapped.array());
}

}  // namespace

void bindMaps(DisplayClass& display) {
    display.def("to_space", &toSpace)
        .def("to_picture", &toPicture)
        .def("whole_picture", &wholePicture)
        .def("warp", &warp);
}

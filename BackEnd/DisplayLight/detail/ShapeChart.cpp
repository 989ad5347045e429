#include "DisplayLight/detail/ShapeChart.h"

#include "KelvoScreen/ScreenGeometry.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Veltrani::DisplayLightDetail {

namespace {

using DisplayLight::SurfaceChart;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Cells that the surface is drawn with: chords of a whole turn stand off by less than a thousandth of the radius.
constexpr std::size_t COLUMNS = 192;
constexpr std::size_t ROWS = 96;
constexpr double MIDDLE = 0.5;

/// A node of what is drawn.
struct Node {
    P3 point;
    bool isThere = false;
};

std::vector<Node> nodesOf(const ScreenGeometry& surface) {
    std::vector<Node> nodes;
    for (std::size_t row = 0; row <= ROWS; ++row) {
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            Node& node = nodes.emplace_back();
            node.isThere = surface.mapInto3D({static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS},
                                             node.point, false);
        }
    }
    return nodes;
}

/// The longest row or column of nodes, native units.
double lengthOf(const std::vector<Node>& nodes, std::size_t lines, std::size_t stepOfLine, std::size_t steps,
                std::size_t step) {
    double longest = 0;
    for (std::size_t line = 0; line <= lines; ++line) {
        double length = 0;
        for (std::size_t i = 0; i < steps; ++i) {
            const Node& from = nodes[line * stepOfLine + i * step];
            const Node& to = nodes[line * stepOfLine + (i + 1) * step];
            length += from.isThere && to.isThere ? norm(to.point - from.point) : 0;
        }
        longest = std::max(longest, length);
    }
    return longest;
}

void addTriangle(const ScreenGeometry& surface, SurfaceChart::Triangle corners, SurfaceChart& chart) {
    const P3& a = chart.vertices[corners[0]];
    const P3& b = chart.vertices[corners[1]];
    const P3& c = chart.vertices[corners[2]];
    const P3 normal = cross(b - a, c - a);
    // At a pole a side is a point.
    if (!(norm(normal) > 0)) {
        return;
    }
    if (dot(normal, surface.getScreenNormal((a + b + c) * (1.0 / 3))) < 0) {
        std::swap(corners[1], corners[2]);
    }
    chart.triangles.push_back(corners);
}

void addDrawn(const ScreenGeometry& surface, const std::vector<Node>& nodes, SurfaceChart& chart) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const std::size_t row = i / (COLUMNS + 1);
        const std::size_t column = i % (COLUMNS + 1);
        chart.vertices.push_back(nodes[i].point);
        chart.coordinates.emplace_back(static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS);
    }
    for (std::size_t row = 0; row < ROWS; ++row) {
        for (std::size_t column = 0; column < COLUMNS; ++column) {
            const auto a = static_cast<std::uint32_t>(row * (COLUMNS + 1) + column);
            const auto c = static_cast<std::uint32_t>(a + COLUMNS + 2);
            if (nodes[a].isThere && nodes[a + 1].isThere && nodes[c].isThere && nodes[c - 1].isThere) {
                addTriangle(surface, {a, a + 1, c}, chart);
                addTriangle(surface, {a, c, c - 1}, chart);
            }
        }
    }
}

}  // namespace

SurfaceChart shapeChart(const ScreenGeometry& surface, std::size_t mostPlaces) {
    SurfaceChart chart;
    const std::vector<Node> nodes = nodesOf(surface);
    addDrawn(surface, nodes, chart);
    const double across = lengthOf(nodes, ROWS, COLUMNS + 1, COLUMNS, 1);
    const double along = lengthOf(nodes, COLUMNS, 1, ROWS, COLUMNS + 1);
    const double most = static_cast<double>(mostPlaces);
    chart.step = std::max(
        {std::sqrt(across * along / most), across / SurfaceChart::LONGEST_SIDE, along / SurfaceChart::LONGEST_SIDE});
    const auto places = [&chart](double length) {
        return static_cast<std::size_t>(
            std::clamp(std::floor(length / chart.step), 1.0, static_cast<double>(SurfaceChart::LONGEST_SIDE)));
    };
    const std::size_t width = chart.step > 0 ? places(across) : 1;
    const std::size_t height = chart.step > 0 ? places(along) : 1;
    chart.grid.width = width;
    chart.grid.places.resize(width * height);
    chart.grid.parameters.resize(width * height);
    for (std::size_t i = 0; i < chart.grid.places.size(); ++i) {
        P2& at = chart.grid.parameters[i];
        const std::size_t row = i / width;
        const std::size_t column = i % width;
        at = {(static_cast<double>(column) + MIDDLE) / static_cast<double>(width),
              (static_cast<double>(row) + MIDDLE) / static_cast<double>(height)};
        DisplayLight::EyePlace& place = chart.grid.places[i];
        place.isSeen = surface.mapInto3D(at, place.point, false);
    }
    return chart;
}

}  // namespace Veltrani::DisplayLightDetail

#include "DisplayLight/detail/MeshChart.h"

#include "DisplayReport/coverage/ScreenSampling.h"
#include "DisplayReport/scene/MeshThinner.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>
#include <utility>

namespace Veltrani::DisplayLightDetail {

namespace {

using DisplayLight::EyePlace;
using DisplayLight::SurfaceChart;
using DisplayReport::ScreenSampling;
using DisplayReport::SurfacePoint;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// The longest edge over the height above it: of more, a triangle is a sliver and halved.
constexpr double SLIVER = 4;
constexpr int MOST_HALVINGS = 8;
/// Pixels around a triangle, so that what is drawn beyond its edge by half a pixel is still its own.
constexpr std::size_t RIM = 1;
/// Of the height of a cell beyond the steps: a rim along the short edges, and one along the long edge.
constexpr std::size_t AROUND = 2 + 2 * RIM;
/// Places stand that much of a triangle within its edges: on an edge, a neighbour round a corner would be met as well.
constexpr double INSIDE = 1e-3;
/// So much larger each time are the steps until the picture holds all triangles.
constexpr double COARSER = 1.03;
/// Of a triangle of least size: its corners alone.
constexpr std::size_t LEAST = 1;
/// Of the size of a triangle: a ray that looks for the mesh begins that far beside it.
constexpr double BESIDE = 1e-9;

struct Piece {
    /// Counter-clockwise seen against the normal; the longest edge is between the second and the third.
    ScreenSampling::Triangle corners;
    double side = 0;        ///< length of its longer short edge, native units
    std::size_t steps = 0;  ///< from the first corner to the others
};

double lengthOf(const SurfacePoint& a, const SurfacePoint& b) {
    return norm(b.place - a.place);
}

SurfacePoint middleOf(const SurfacePoint& a, const SurfacePoint& b) {
    return {(a.place + b.place) * 0.5, (a.parameters + b.parameters) * 0.5, a.hasParameters && b.hasParameters};
}

class PieceList {
public:
    /// @param triangles how many will be added: where they are many already, slivers stay
    explicit PieceList(std::size_t triangles) {
        while (m_mostHalvings < MOST_HALVINGS &&
               (triangles << static_cast<unsigned int>(m_mostHalvings + 1)) <= SurfaceChart::MOST_TRIANGLES) {
            ++m_mostHalvings;
        }
    }

    void add(ScreenSampling::Triangle corners, int halvings = 0) {
        auto& [a, b, c] = corners;
        while (lengthOf(b, c) < std::max(lengthOf(a, b), lengthOf(c, a))) {
            std::rotate(corners.begin(), corners.begin() + 1, corners.end());
        }
        const double area = norm(cross(b.place - a.place, c.place - a.place));
        const double longest = lengthOf(b, c);
        if (!(area > 0)) {
            return;
        }
        if (longest * longest > SLIVER * area && halvings < m_mostHalvings) {
            const SurfacePoint middle = middleOf(b, c);
            const ScreenSampling::Triangle one{a, b, middle};
            const ScreenSampling::Triangle other{a, middle, c};
            add(one, halvings + 1);
            add(other, halvings + 1);
            return;
        }
        m_area += area / 2;
        m_pieces.push_back({corners, std::max(lengthOf(a, b), lengthOf(c, a)), 0});
    }

    [[nodiscard]] std::vector<Piece>& pieces() { return m_pieces; }
    [[nodiscard]] double area() const { return m_area; }

private:
    std::vector<Piece> m_pieces;
    double m_area = 0;
    int m_mostHalvings = 0;
};

/// Where the pieces lie: two of them in a cell, cells in rows of falling height.
class Packing {
public:
    /// @param pieces the largest first
    Packing(const std::vector<Piece>& pieces, std::size_t mostPlaces) {
        const std::size_t largest = pieces.empty() ? 1 : heightOf(pieces.front()) + 1;
        m_width = std::max(largest, static_cast<std::size_t>(std::sqrt(static_cast<double>(mostPlaces))));
        std::size_t right = 0;
        std::size_t height = 0;
        for (std::size_t i = 0; i < pieces.size(); i += 2) {
            const std::size_t side = heightOf(pieces[i]);
            if (right + side + 1 > m_width || i == 0) {
                m_height += height;
                height = side;
                right = 0;
            }
            m_cells.push_back({right, m_height});
            right += side + 1;
        }
        m_height += height;
    }

    [[nodiscard]] std::size_t width() const { return m_width; }
    [[nodiscard]] std::size_t height() const { return m_height; }
    /// The pixel of piece i that lies so many to the right and downwards in its half of a cell, its rim included.
    [[nodiscard]] std::size_t pixelOf(std::size_t i, std::size_t steps, std::size_t right, std::size_t down) const {
        const auto& [left, top] = m_cells[i / 2];
        const std::size_t side = steps + AROUND;
        // The second piece of a cell is turned by half a turn.
        const std::size_t x = i % 2 == 0 ? right : side - right;
        const std::size_t y = i % 2 == 0 ? down : side - 1 - down;
        return (top + y) * m_width + left + x;
    }

private:
    static std::size_t heightOf(const Piece& piece) { return piece.steps + AROUND; }

    std::size_t m_width = 0;
    std::size_t m_height = 0;
    std::vector<std::pair<std::size_t, std::size_t>> m_cells;
};

/// Sets the steps of the pieces, and returns how long each is.
double chooseSteps(std::vector<Piece>& pieces, double area, std::size_t mostPlaces) {
    double step = std::sqrt(area / static_cast<double>(mostPlaces));
    std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.side > b.side; });
    while (true) {
        bool isLeast = true;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            // Both pieces of a cell have as many as its larger one.
            const double side = pieces[i - i % 2].side;
            const double most = static_cast<double>(SurfaceChart::LONGEST_SIDE) - AROUND - 1;
            pieces[i].steps = std::max(LEAST, static_cast<std::size_t>(std::min(std::ceil(side / step), most)));
            isLeast = isLeast && pieces[i].steps == LEAST;
        }
        const Packing packing(pieces, mostPlaces);
        if (isLeast ||
            (packing.width() * packing.height() <= mostPlaces && packing.height() <= SurfaceChart::LONGEST_SIDE)) {
            return step;
        }
        step *= COARSER;
    }
}

SurfacePoint placeOf(const Piece& piece, std::size_t right, std::size_t down) {
    const double steps = static_cast<double>(piece.steps);
    const auto within = [](double part) { return part * (1 - INSIDE) + INSIDE / 3; };
    const double ofB = within(static_cast<double>(right) / steps);
    const double ofC = within(static_cast<double>(down) / steps);
    const auto& [a, b, c] = piece.corners;
    return {a.place + (b.place - a.place) * ofB + (c.place - a.place) * ofC,
            a.parameters + (b.parameters - a.parameters) * ofB + (c.parameters - a.parameters) * ofC,
            a.hasParameters && b.hasParameters && c.hasParameters};
}

/// The pixels around a piece show what those beside them within it show.
void addRim(const Piece& piece, const std::function<std::size_t(std::size_t, std::size_t)>& pixelOf,
            SurfaceChart& chart) {
    const std::size_t last = piece.steps + RIM;
    chart.seams.push_back({pixelOf(0, 0), pixelOf(RIM, RIM), pixelOf(RIM, RIM)});
    for (std::size_t i = RIM; i <= last + RIM; ++i) {
        const std::size_t inside = std::min(i, last);
        chart.seams.push_back({pixelOf(i, 0), pixelOf(inside, RIM), pixelOf(inside, RIM)});
        chart.seams.push_back({pixelOf(0, i), pixelOf(RIM, inside), pixelOf(RIM, inside)});
        // Along the long edge, beside two pixels within; at its ends beside a corner.
        const std::size_t down = last + 2 * RIM - i;
        const std::size_t one = pixelOf(std::max(i - 1, RIM), std::min(down, last));
        const std::size_t other = pixelOf(std::min(i, last), std::max(down - 1, RIM));
        chart.seams.push_back({pixelOf(i, down), one, other});
    }
}

/// Lays a piece into the picture.
void layOut(const std::vector<Piece>& pieces, std::size_t number, const Packing& packing, SurfaceChart& chart) {
    const Piece& piece = pieces[number];
    const auto pixelOf = [&](std::size_t right, std::size_t down) {
        return packing.pixelOf(number, piece.steps, right, down);
    };
    for (std::size_t down = 0; down <= piece.steps; ++down) {
        for (std::size_t right = 0; right + down <= piece.steps; ++right) {
            const SurfacePoint place = placeOf(piece, right, down);
            const std::size_t pixel = pixelOf(RIM + right, RIM + down);
            chart.grid.places[pixel] = {place.place, 0, true};
            chart.grid.parts[pixel] = static_cast<std::uint32_t>(number + 1);
            if (!chart.grid.parameters.empty()) {
                chart.grid.parameters[pixel] = place.parameters;
            }
        }
    }
    addRim(piece, pixelOf, chart);
    const auto first = static_cast<std::uint32_t>(chart.vertices.size());
    const std::array<std::size_t, 3> pixels{pixelOf(RIM, RIM), pixelOf(RIM + piece.steps, RIM),
                                            pixelOf(RIM, RIM + piece.steps)};
    for (std::size_t corner = 0; corner < pixels.size(); ++corner) {
        chart.vertices.push_back(piece.corners[corner].place);
        const std::size_t row = pixels[corner] / packing.width();
        const std::size_t column = pixels[corner] % packing.width();
        chart.coordinates.emplace_back((static_cast<double>(column) + 0.5) / static_cast<double>(packing.width()),
                                       (static_cast<double>(row) + 0.5) / static_cast<double>(packing.height()));
    }
    chart.triangles.push_back({first, first + 1, first + 2});
}

/// Looks for the mesh on both sides of a triangle that stands in for it, no further than the triangle is large.
void lookUp(const ScreenGeometry& surface, const Piece& piece, std::span<const std::size_t> pixels,
            SurfaceChart& chart) {
    const auto& [a, b, c] = piece.corners;
    const P3 normal = cross(b.place - a.place, c.place - a.place);
    const P3 ahead = normal * (1 / norm(normal));
    std::vector<Ray> rays;
    for (const std::size_t pixel : pixels) {
        const P3& place = chart.grid.places[pixel].point;
        for (const double way : {1.0, -1.0}) {
            const P3 from = place - ahead * (way * BESIDE * piece.side);
            rays.emplace_back(from, from + ahead * way);
        }
    }
    std::vector<SurfaceHit> hits(rays.size());
    surface.intersectRays(rays, hits);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const SurfaceHit& one = hits[2 * i];
        const SurfaceHit& other = hits[2 * i + 1];
        const SurfaceHit& nearer = one.hit && (!other.hit || one.t <= other.t) ? one : other;
        EyePlace& place = chart.grid.places[pixels[i]];
        place.isSeen = nearer.hit && nearer.t <= piece.side;
        place.point = place.isSeen ? nearer.point : place.point;
    }
}

void lookUpAll(const ScreenGeometry& surface, const std::vector<Piece>& pieces, const Packing& packing,
               SurfaceChart& chart) {
    std::vector<std::size_t> pixels;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        pixels.clear();
        for (std::size_t down = 0; down <= pieces[i].steps; ++down) {
            for (std::size_t right = 0; right + down <= pieces[i].steps; ++right) {
                pixels.push_back(packing.pixelOf(i, pieces[i].steps, RIM + right, RIM + down));
            }
        }
        lookUp(surface, pieces[i], pixels, chart);
    }
}

}  // namespace

SurfaceChart meshChart(const std::shared_ptr<const ScreenGeometry>& surface, std::size_t mostPlaces) {
    const ScreenSampling sampling(surface);
    const bool isWhole = sampling.size() <= SurfaceChart::MOST_TRIANGLES;
    PieceList list(sampling.size());
    if (isWhole) {
        for (std::size_t i = 0; i < sampling.size(); ++i) {
            list.add(sampling.triangle(i));
        }
    } else {
        const auto thinned = DisplayReport::MeshThinner(SurfaceChart::MOST_TRIANGLES).thin(*surface->triangleMesh());
        for (const auto& [a, b, c] : thinned.triangles) {
            list.add({SurfacePoint{thinned.vertices[a], {}, false},
                      {thinned.vertices[b], {}, false},
                      {thinned.vertices[c], {}, false}});
        }
    }
    SurfaceChart chart;
    std::vector<Piece>& pieces = list.pieces();
    chart.step = chooseSteps(pieces, list.area(), mostPlaces);
    const Packing packing(pieces, mostPlaces);
    chart.grid.width = packing.width();
    chart.grid.places.resize(packing.width() * packing.height());
    chart.grid.parts.resize(chart.grid.places.size());
    if (isWhole && surface->isParameterised()) {
        chart.grid.parameters.resize(chart.grid.places.size());
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        layOut(pieces, i, packing, chart);
    }
    if (!isWhole) {
        lookUpAll(*surface, pieces, packing, chart);
    }
    return chart;
}

}  // namespace Veltrani::DisplayLightDetail

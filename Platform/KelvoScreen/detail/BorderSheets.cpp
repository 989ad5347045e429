#include "KelvoScreen/detail/BorderSheets.h"

#include "KelvoScreen/detail/Box.h"
#include "KelvoScreen/detail/MeshSurface.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/SmoothFaces.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <tuple>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// How far around the border a sheet is fitted, as a part of the diagonal of the mesh. Projectors overshoot by about as
/// much, and a curvature can be determined over a distance as long as that to which it is continued.
constexpr double FIT_PART = 0.1;
/// The length of a stretch, as a part of the radius to which its sheet was fitted: neighbours share half their points.
constexpr double REACH_PART = 0.5;
/// A region may be as large as its error grows to so many times that of the smallest one: more is not noise.
constexpr double ERROR_GROWTH = 1.5;
/// ... or to this part of the distance between vertices, which is invisible beside the triangles themselves.
constexpr double HARMLESS_ERROR = 0.01;
/// The smallest region determines the noise, so it holds several times as many points as a sheet has degrees of
/// freedom.
constexpr std::size_t FEWEST_NOISE_POINTS = 40;
/// More points make a fit slower and no better.
constexpr std::size_t MOST_FIT_POINTS = 600;
/// Cells along the diagonal of the grid in which stretches are found; each is as long as the longest reach.
constexpr int CELLS = 20;
/// Normals of a surface that is the same one turn by less than 60 degrees within a stretch.
constexpr double SAME_SURFACE_COSINE = 0.5;

using Points = std::span<const Point<double, 3>>;

/// A sheet under construction.
struct Seed {
    BorderStretch stretch;
    Point<double, 3> place;
    std::vector<std::uint32_t> triangles;
};

/// Some of the points, evenly chosen, in a buffer that is used again.
Points thinOut(Points points, std::vector<Point<double, 3>>& buffer) {
    const std::size_t step = (points.size() + MOST_FIT_POINTS - 1) / MOST_FIT_POINTS;
    if (step <= 1) {
        return points;
    }
    buffer.clear();
    for (std::size_t i = 0; i < points.size(); i += step) {
        buffer.push_back(points[i]);
    }
    return buffer;
}

BoundingSphere sphereAround(const Box& box) {
    return {box.centre(), norm(box.upper - box.lower) / 2};
}

class Builder {
public:
    explicit Builder(const TriangleMesh& mesh)
        : m_mesh(mesh), m_topology(mesh), m_faces(mesh, m_topology), m_region(mesh, m_topology, m_faces) {
        for (const TriangleMesh::Triangle& triangle : mesh.triangles) {
            for (const std::uint32_t corner : triangle) {
                m_box.add(mesh.vertices[corner]);
            }
        }
        m_diagonal = m_box.isEmpty() ? 0 : norm(m_box.upper - m_box.lower);
        m_cells.resize(std::size_t{CELLS + 1} * (CELLS + 1) * (CELLS + 1));
    }

    [[nodiscard]] BorderStretches build() {
        std::optional<std::uint32_t> previous;
        for (const auto& [triangle, side] : m_topology.border()) {
            if (triangle != previous && hasArea(cornersOf(m_mesh, triangle))) {
                place(triangle, side);
            }
            previous = triangle;
        }
        return collect();
    }

private:
    /// Adds a triangle to the stretch that covers it, or starts one.
    void place(std::uint32_t triangle, std::uint32_t side) {
        const Corners corners = cornersOf(m_mesh, triangle);
        const Point<double, 3> middle = 0.5 * (corners[side] + corners[(side + 1) % 3]);
        const std::optional<std::size_t> covering = findCovering(triangle, middle);
        if (covering) {
            m_seeds[*covering].triangles.push_back(triangle);
            return;
        }
        m_seeds.push_back({startStretch(triangle, corners, middle), middle, {triangle}});
        if (m_seeds.back().stretch.reach > 0) {
            m_cells[cellOf(middle, {})].push_back(m_seeds.size() - 1);
        }
    }

    [[nodiscard]] std::optional<std::size_t> findCovering(std::uint32_t triangle,
                                                          const Point<double, 3>& middle) const {
        for (int i = 0; i < 27; ++i) {
            for (const std::size_t seed : m_cells[cellOf(middle, {i % 3 - 1, i / 3 % 3 - 1, i / 9 - 1})]) {
                if (covers(m_seeds[seed], triangle, middle)) {
                    return seed;
                }
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] bool covers(const Seed& seed, std::uint32_t triangle, const Point<double, 3>& middle) const {
        const Point<double, 3>& normal = m_faces.normals()[triangle];
        const bool isSameSurface =
            normal == Point<double, 3>{} || dot(normal, seed.stretch.sheet.slope) > SAME_SURFACE_COSINE;
        return seed.stretch.face == m_faces.faces()[triangle] && isSameSurface &&
               norm(seed.place - middle) < seed.stretch.reach;
    }

    /// Returns the cell of a place, moved by some cells; places and moves past the grid are in its outermost cells.
    [[nodiscard]] std::size_t cellOf(const Point<double, 3>& place, const std::array<int, 3>& move) const {
        std::size_t cell = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            // Extents beyond the range of a double end in the first cell.
            const double position = CELLS * ((place[i] - m_box.lower[i]) / m_diagonal);
            const int whole = position >= 0 && position <= CELLS ? static_cast<int>(position) : 0;
            cell = cell * (CELLS + 1) + static_cast<std::size_t>(std::clamp(whole + move[i], 0, CELLS));
        }
        return cell;
    }

    [[nodiscard]] BorderStretch startStretch(std::uint32_t triangle, const Corners& corners,
                                             const Point<double, 3>& middle) {
        m_region.grow(triangle, middle, FIT_PART * m_diagonal);
        BorderStretch stretch;
        stretch.face = m_faces.faces()[triangle];
        stretch.spacing = m_region.spacing();
        double radius = 0;
        if (const std::optional<FittedSheet> fitted = bestFit(middle, radius)) {
            stretch.sheet = fitted->sheet;
            stretch.reach = std::min(REACH_PART * radius, m_diagonal / CELLS);
        } else {
            const bool isSteady =
                m_faces.normals()[triangle] != Point<double, 3>{} || m_region.normal() == Point<double, 3>{};
            stretch.sheet.origin = corners[0];
            stretch.sheet.slope = isSteady ? unitNormal(corners) : m_region.normal();
        }
        return stretch;
    }

    /// Returns the fit to the largest part of the region that one sheet describes. Each part is half as far as the one
    /// before.
    [[nodiscard]] std::optional<FittedSheet> bestFit(const Point<double, 3>& middle, double& radius) {
        const Points all = m_region.points();
        const Points smallest = all.first(std::min(all.size(), FEWEST_NOISE_POINTS));
        radius = norm(smallest.back() - middle);
        const std::optional<FittedSheet> least = fit(smallest, middle, radius);
        const double allowed = std::max(ERROR_GROWTH * (least ? least->error : 0), HARMLESS_ERROR * m_region.spacing());
        const double smallestRadius = radius;
        radius = norm(all.back() - middle);
        while (radius > smallestRadius) {
            const auto end = std::partition_point(all.begin(), all.end(),
                                                  [&](const auto& point) { return norm(point - middle) <= radius; });
            const std::optional<FittedSheet> fitted = fit({all.begin(), end}, middle, radius);
            if (fitted && fitted->error <= allowed) {
                return fitted;
            }
            radius /= 2;
        }
        radius = smallestRadius;
        return least;
    }

    [[nodiscard]] std::optional<FittedSheet> fit(Points points, const Point<double, 3>& middle, double radius) {
        const double noise = ROUNDING * m_box.largestCoordinate();
        return fitSheet(thinOut(points, m_buffer), middle, m_region.normal(), radius, noise);
    }

    [[nodiscard]] BorderStretches collect() {
        std::sort(m_seeds.begin(), m_seeds.end(), [](const Seed& a, const Seed& b) {
            return std::tie(a.stretch.face, a.triangles.front()) < std::tie(b.stretch.face, b.triangles.front());
        });
        BorderStretches result;
        for (Seed& seed : m_seeds) {
            Box box;
            seed.stretch.first = static_cast<std::uint32_t>(result.triangles.size());
            for (const std::uint32_t triangle : seed.triangles) {
                result.triangles.push_back(borderTriangle(triangle, box));
            }
            seed.stretch.last = static_cast<std::uint32_t>(result.triangles.size());
            seed.stretch.bounds = sphereAround(box);
            result.stretches.push_back(seed.stretch);
        }
        return result;
    }

    /// Returns the triangle along the border, and adds its corners to a box around all.
    [[nodiscard]] BorderTriangle borderTriangle(std::uint32_t triangle, Box& all) const {
        const Corners corners = cornersOf(m_mesh, triangle);
        Box box;
        for (const Point<double, 3>& corner : corners) {
            box.add(corner);
            all.add(corner);
        }
        return {triangle, corners, sphereAround(box)};
    }

    const TriangleMesh& m_mesh;
    MeshTopology m_topology;
    SmoothFaces m_faces;
    FaceRegion m_region;
    Box m_box;
    double m_diagonal = 0;
    std::vector<Seed> m_seeds;
    std::vector<std::vector<std::size_t>> m_cells;  ///< stretches by where they were started
    std::vector<Point<double, 3>> m_buffer;
};

/// Rounds of solving, each with the weights at the point of the one before. The weights change so little between two
/// rounds that each gains two digits or more.
constexpr int MOST_ROUNDS = 12;
/// The move, as a part of the distance between vertices, below which no further round is needed.
constexpr double SETTLED = 1e-9;

/// Stretches count up to so many times the distance of the nearest, squared.
constexpr double REACH2 = 4;
/// The distance, in those between vertices, over which a step at the border fades.
constexpr double FADING = 1;

/// Returns the squared distance of a stretch; never less than its own reach, so that the nearest one does not decide
/// alone.
double distance2(const BorderStretch& stretch, const Point<double, 3>& point) {
    const Point<double, 3> away = point - stretch.sheet.origin;
    return dot(away, away) + stretch.reach * stretch.reach + stretch.bounds.radius * stretch.bounds.radius;
}

}  // namespace

BorderStretches borderStretches(const TriangleMesh& mesh) {
    return Builder(mesh).build();
}

/// Sums over the stretches, each with its weight.
struct BorderBlend::Sum {
    double weight = 0;
    AlongRay heights;
    double borderHeight = 0;
    Point<double, 3> gradient;
};

std::uint32_t BorderBlend::nearestStretch(const Point<double, 3>& point) const {
    std::uint32_t nearest = m_first;
    double smallest = Box::INFINITE;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        const double distance = norm(point - m_border.stretches[i].bounds.centre);
        if (distance < smallest) {
            smallest = distance;
            nearest = i;
        }
    }
    return nearest;
}

/// The point of the triangles of a stretch that is nearest to `point`, when nearer than the one before.
bool BorderBlend::approach(const BorderStretch& stretch, const Point<double, 3>& point, Point<double, 3>& nearest,
                           double& smallest) const {
    bool isNearer = false;
    for (std::uint32_t i = stretch.first; i < stretch.last; ++i) {
        const BorderTriangle& border = m_border.triangles[i];
        if (!(border.bounds.leastDistance(point) < smallest)) {
            continue;
        }
        const Point<double, 3> candidate = closestPoint(border.corners, point);
        const double distance = norm(candidate - point);
        if (distance < smallest) {
            smallest = distance;
            nearest = candidate;
            isNearer = true;
        }
    }
    return isNearer;
}

Point<double, 3> BorderBlend::nearestOnBorder(const Point<double, 3>& point, double& spacing) const {
    Point<double, 3> nearest = point;
    double smallest = Box::INFINITE;
    // With a good stretch first, the triangles of few others need to be examined.
    const std::uint32_t first = nearestStretch(point);
    (void)approach(m_border.stretches[first], point, nearest, smallest);
    spacing = m_border.stretches[first].spacing;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        const BorderStretch& stretch = m_border.stretches[i];
        if (stretch.bounds.leastDistance(point) < smallest && approach(stretch, point, nearest, smallest)) {
            spacing = stretch.spacing;
        }
    }
    return nearest;
}

double BorderBlend::smallestDistance2(const Point<double, 3>& point) const {
    double smallest = Box::INFINITE;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        if (dot(m_border.stretches[i].sheet.slope, m_normal) > 0) {
            smallest = std::min(smallest, distance2(m_border.stretches[i], point));
        }
    }
    return smallest;
}

BorderBlend::Sum BorderBlend::blendAt(const Point<double, 3>& point, const Point<double, 3>& direction) const {
    double spacing = 0;
    const Point<double, 3> onBorder = nearestOnBorder(point, spacing);
    const double away = norm(point - onBorder) / (FADING * spacing);
    const double limit = 1 / (REACH2 * smallestDistance2(point));
    Sum sum;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        const BorderStretch& stretch = m_border.stretches[i];
        const double nearness = 1 / distance2(stretch, point) - limit;
        const double likeness = dot(stretch.sheet.slope, m_normal);
        if (!(nearness > 0 && likeness > 0)) {
            continue;
        }
        const double weight = nearness * nearness * likeness * likeness;
        const AlongRay heights = stretch.sheet.alongRay(point, direction);
        sum.weight += weight;
        sum.heights.value += weight * heights.value;
        sum.heights.slope += weight * heights.slope;
        sum.heights.bend += weight * heights.bend;
        sum.borderHeight += weight * stretch.sheet.height(onBorder);
        sum.gradient += weight * stretch.sheet.gradient(point);
    }
    sum.heights.value -= sum.borderHeight / (1 + away * away);
    return sum;
}

std::optional<BlendedHit> BorderBlend::meet(const Point<double, 3>& start, const Point<double, 3>& direction) const {
    BlendedHit hit;
    const double length = norm(direction);
    for (int round = 0; round < MOST_ROUNDS; ++round) {
        const Sum sum = blendAt(start + hit.tau * direction, direction);
        const Zeros zeros(sum.heights);
        if (zeros.count == 0) {
            return std::nullopt;
        }
        hit.tau += zeros.tau[0];
        hit.normal = sum.gradient;
        if (std::abs(zeros.tau[0]) * length <= SETTLED * m_border.stretches[m_first].spacing) {
            break;
        }
    }
    return hit;
}

}  // namespace Veltrani::KelvoScreenDetail

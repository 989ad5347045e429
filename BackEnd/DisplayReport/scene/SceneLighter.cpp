#include "DisplayReport/scene/SceneLighter.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/coverage/DisplayLights.h"
#include "DisplayReport/coverage/ScreenCoverage.h"
#include "DisplayReport/coverage/ScreenSampling.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/MeshThinner.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;
using Corners = std::array<P3, 3>;

/// Nodes of the lattice of a picture where the channels are few, and of all lattices together.
constexpr std::size_t COLUMNS = 65;
constexpr std::size_t ROWS = 41;
constexpr std::size_t MOST_NODES = 80000;
constexpr std::size_t FEWEST_NODES = 9;
/// The part of the screen below which a region cannot be seen: a pixel or two.
constexpr double TOO_SMALL = 1e-6;
/// Triangles that even a small region keeps.
constexpr std::size_t FEWEST_TRIANGLES = 64;

/// The pieces of one region as they arrive. Corners stand in single places however many pieces share them.
class RegionMesh {
public:
    RegionMesh(const LitBy& by, const std::vector<std::size_t>& places) {
        for (std::size_t light = 0; light < places.size(); ++light) {
            if (by[light]) {
                m_region.channels.push_back(places[light]);
            }
        }
    }

    /// Along the surface: the triangles between three places of it may be smaller.
    void addArea(double area) { m_region.area += area; }
    void add(const Corners& piece) { m_corners.insert(m_corners.end(), piece.begin(), piece.end()); }

    [[nodiscard]] const ShadedRegion& region() const { return m_region; }
    [[nodiscard]] std::size_t triangles() const { return m_corners.size() / 3; }

    /// Moves the triangles into a shading, no more than so many, about.
    void moveTo(SceneShading& shading, std::size_t mostTriangles) {
        const SceneSurface thinned = MeshThinner(mostTriangles).thin(welded());
        const auto first = static_cast<std::uint32_t>(shading.vertices.size());
        shading.vertices.insert(shading.vertices.end(), thinned.vertices.begin(), thinned.vertices.end());
        for (const auto& [a, b, c] : thinned.triangles) {
            m_region.triangles.push_back({first + a, first + b, first + c});
        }
        shading.regions.push_back(std::move(m_region));
    }

    /// Without triangles: there is nothing to see.
    void moveUnseenTo(SceneShading& shading) { shading.regions.push_back(std::move(m_region)); }

private:
    [[nodiscard]] TriangleMesh welded() {
        TriangleMesh mesh;
        const std::vector<std::uint32_t> firsts = weldedVertices(m_corners);
        std::vector<std::uint32_t> numbers(m_corners.size());
        for (std::uint32_t i = 0; i < m_corners.size(); ++i) {
            if (firsts[i] == i) {
                numbers[i] = static_cast<std::uint32_t>(mesh.vertices.size());
                mesh.vertices.push_back(m_corners[i]);
            }
        }
        for (std::size_t i = 0; i < m_corners.size(); i += 3) {
            const std::uint32_t a = numbers[firsts[i]];
            const std::uint32_t b = numbers[firsts[i + 1]];
            const std::uint32_t c = numbers[firsts[i + 2]];
            if (a != b && b != c && c != a) {
                mesh.triangles.push_back({a, b, c});
            }
        }
        std::vector<P3>().swap(m_corners);
        return mesh;
    }

    ShadedRegion m_region;
    std::vector<P3> m_corners;
};

/// Two halves of a triangle made one again; none where they are not that, or where the surface stands out between them
/// by more than `most`.
std::optional<Corners> united(const Corners& one, const Corners& other, double most) {
    const auto isIn = [](const P3& corner, const Corners& corners) {
        return std::find(corners.begin(), corners.end(), corner) != corners.end();
    };
    const auto isOwn = [&](const P3& corner) { return !isIn(corner, other); };
    if (std::count_if(one.begin(), one.end(), isOwn) != 1) {
        return std::nullopt;
    }
    const P3& tip = *std::find_if(one.begin(), one.end(), isOwn);
    const P3& otherTip =
        *std::find_if(other.begin(), other.end(), [&](const P3& corner) { return !isIn(corner, one); });
    for (std::size_t i = 0; i < one.size(); ++i) {
        // The halves of a triangle meet at the middle of its cut edge, which is the first corner or another one.
        constexpr double BESIDE = 0.05;
        const double beside = norm(one[i] - (tip + otherTip) * 0.5);
        if (!(one[i] == tip) && beside <= std::min(most, BESIDE * norm(otherTip - tip))) {
            Corners whole = one;
            whole[i] = otherTip;
            return whole;
        }
    }
    return std::nullopt;
}

/// The pieces of a surface, gathered by the channels that light them. The light is looked for in far smaller pieces
/// than it is drawn with: halves that are lit alike become one again.
class Regions {
public:
    /// @param deviation how far what is drawn may be from the surface; native units
    Regions(const std::vector<std::size_t>& places, double deviation) : m_places(places), m_deviation(deviation) {}

    /// Counts a piece without drawing it.
    void addArea(double area, const LitBy& by) { meshOf(by).addArea(area); }

    void add(const LitTriangle& piece, const LitBy& by) {
        Corners corners{piece[0].on.place, piece[1].on.place, piece[2].on.place};
        while (!m_open.empty() && m_open.back().second == by) {
            const auto whole = united(m_open.back().first, corners, m_deviation);
            if (!whole) {
                break;
            }
            corners = *whole;
            m_open.pop_back();
        }
        m_open.emplace_back(corners, by);
        if (m_open.size() > MOST_OPEN) {
            const auto half = m_open.begin() + MOST_OPEN / 2;
            close(m_open.begin(), half);
            m_open.erase(m_open.begin(), half);
        }
    }

    /// Leaves nothing here.
    [[nodiscard]] SceneShading shading(std::size_t mostTriangles) {
        close(m_open.begin(), m_open.end());
        m_open.clear();
        std::sort(m_meshes.begin(), m_meshes.end(), [](const RegionMesh& a, const RegionMesh& b) {
            const auto& [one, other] = std::pair(a.region().channels, b.region().channels);
            return std::pair(one.size(), one) < std::pair(other.size(), other);
        });
        SceneShading shading;
        std::size_t all = 0;
        for (const RegionMesh& mesh : m_meshes) {
            shading.area += mesh.region().area;
            all += mesh.triangles();
        }
        const double share = std::min(1.0, static_cast<double>(mostTriangles) / static_cast<double>(all));
        for (RegionMesh& mesh : m_meshes) {
            if (mesh.triangles() == 0 || mesh.region().area < TOO_SMALL * shading.area) {
                mesh.moveUnseenTo(shading);
                continue;
            }
            const auto most = static_cast<std::size_t>(share * static_cast<double>(mesh.triangles()));
            mesh.moveTo(shading, share < 1 ? std::max(FEWEST_TRIANGLES, most) : mesh.triangles());
        }
        return shading;
    }

private:
    using Open = std::vector<std::pair<Corners, LitBy>>;
    /// More than the halves of halves of one triangle that wait for their other half.
    static constexpr std::ptrdiff_t MOST_OPEN = 256;

    void close(Open::const_iterator from, Open::const_iterator to) {
        for (; from != to; ++from) {
            meshOf(from->second).add(from->first);
        }
    }

    RegionMesh& meshOf(const LitBy& by) {
        const auto [entry, isNew] = m_numbers.try_emplace(by, m_meshes.size());
        if (isNew) {
            m_meshes.emplace_back(by, m_places);
        }
        return m_meshes[entry->second];
    }

    const std::vector<std::size_t>& m_places;
    double m_deviation;
    Open m_open;  ///< pieces that may become one with those that follow
    std::unordered_map<LitBy, std::size_t> m_numbers;
    std::vector<RegionMesh> m_meshes;
};

/// False for pieces of what reaches so far off that the surface is drawn without it.
bool isShown(const LitTriangle& piece, const Extent& core, double margin) {
    return std::all_of(piece.begin(), piece.end(), [&](const LitPoint& corner) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double value = corner.on.place[axis];
            if (!(value >= core.minimum()[axis] - margin && value <= core.maximum()[axis] + margin)) {
                return false;
            }
        }
        return true;
    });
}

void shade(SceneSurface& surface, const DisplayLights& display, const ScreenSampling& screen, std::size_t mostTriangles,
           const Progress& progress) {
    std::vector<LandingExtent> extents;
    for (const auto& light : display.lights) {
        extents.push_back(LandingExtent::of(*light));
    }
    Extent core;
    for (const P3& vertex : surface.vertices) {
        core.add(vertex);
    }
    // Between its vertices a curved surface stands out a little.
    constexpr double OUTSIDE = 0.05;
    const double margin = OUTSIDE * norm(core.size());
    // Less than a pixel of a large picture.
    constexpr double DEVIATION = 2e-4;
    Regions regions(display.places, DEVIATION * norm(core.size()));
    static_cast<void>(ScreenCoverage::of(
        screen, display.lights, extents,
        [&](const LitTriangle& piece, double area, const LitBy& by) {
            regions.addArea(area, by);
            if (isShown(piece, core, margin)) {
                regions.add(piece, by);
            }
        },
        progress));
    SceneShading shading = regions.shading(mostTriangles);
    if (!shading.vertices.empty()) {
        surface.shading = std::move(shading);
    }
}

void addPictures(DisplayScene& scene, const DisplayLights& display) {
    // Fewer nodes each where the channels are many.
    const double room =
        static_cast<double>(MOST_NODES) / static_cast<double>(std::max<std::size_t>(1, display.lights.size()));
    const double share = std::min(1.0, std::sqrt(room / (COLUMNS * ROWS)));
    const auto nodes = [share](std::size_t most) {
        return std::max(FEWEST_NODES, static_cast<std::size_t>(share * static_cast<double>(most)));
    };
    for (std::size_t light = 0; light < display.lights.size(); ++light) {
        SceneChannel& channel = scene.channels[display.places[light]];
        const bool hasSize = channel.width > 0 && channel.height > 0;
        const double aspect = hasSize ? static_cast<double>(channel.width) / channel.height : 1.0;
        channel.lattice = PictureLattice::of(*display.lights[light], nodes(COLUMNS), nodes(ROWS));
        channel.upMark = upMarkOf(*display.lights[light], aspect);
    }
}

}  // namespace

SceneLighter::SceneLighter(std::size_t mostTriangles, Progress progress)
    : m_mostTriangles(mostTriangles), m_progress(std::move(progress)) {}

void SceneLighter::addTo(DisplayScene& scene, const XMLConfigManager& config) const {
    ScreenManager& manager = *ScreenManager::getInstance();
    const std::shared_ptr<const ScreenGeometry> screen = manager.getScreenGeometry();
    // Where the measured screen cannot be drawn, the content one is not the one that is lit.
    const char* const name = manager.getMeasuredScreenGeometry() ? "measured" : "content";
    if (!screen || scene.surfaces.empty() || scene.surfaces.back().name != name) {
        return;
    }
    const DisplayLights display = DisplayLights::of(config, screen);
    try {
        const ScreenSampling sampling(screen);
        shade(scene.surfaces.back(), display, sampling, m_mostTriangles, m_progress);
        addPictures(scene, display);
    } catch (const VeltraniExceptionBase&) {
        scene.notes.push_back("the light on the screen cannot be shown: " +
                              sentenceOf(faultOf({}, std::current_exception())));
        scene.complete = false;
    }
}

}  // namespace Veltrani::DisplayReport

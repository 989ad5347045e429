#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "DisplayReport/check/SurfaceSamples.h"
#include "DisplayReport/coverage/PointIndex.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string_view>

namespace Veltrani::DisplayReport {

namespace {

/// Enough for a net of half a percent of the screen's size.
constexpr std::size_t FINE = 20000;
/// Those of them that are compared.
constexpr std::size_t STEP = 13;

/// How far apart, in sizes of the screen, two surfaces are beside each other.
constexpr double BESIDE = 0.02;
/// The part of both that may be so: frames and gaps of a scan lie on one of them alone.
constexpr double PART_BESIDE = 0.03;
/// How far (s, t) may differ at one place.
constexpr double PARAMETERS_APART = 0.04;

/// What was measured, or designed, as points.
class PointSet {
public:
    explicit PointSet(std::vector<SurfacePoint> points) : m_points(std::move(points)), m_index(placesOf(m_points)) {}

    [[nodiscard]] const std::vector<SurfacePoint>& points() const { return m_points; }

    /// The nearest point of this set; none where it is empty.
    [[nodiscard]] const SurfacePoint* nearest(const Point<double, 3>& place) const {
        const auto found = m_index.nearest(place);
        return found ? &m_points[*found] : nullptr;
    }

    /// The part of another set that is further away from this one.
    [[nodiscard]] double partBeside(const PointSet& other, double distance) const {
        std::size_t all = 0;
        std::size_t beside = 0;
        for (std::size_t i = 0; i < other.m_points.size(); i += STEP) {
            const SurfacePoint* const found = nearest(other.m_points[i].place);
            ++all;
            beside += found == nullptr || norm(found->place - other.m_points[i].place) > distance ? 1U : 0U;
        }
        return all == 0 ? 0.0 : static_cast<double>(beside) / static_cast<double>(all);
    }

private:
    static std::vector<Point<double, 3>> placesOf(const std::vector<SurfacePoint>& points) {
        std::vector<Point<double, 3>> places;
        places.reserve(points.size());
        for (const SurfacePoint& point : points) {
            places.push_back(point.place);
        }
        return places;
    }

    std::vector<SurfacePoint> m_points;
    PointIndex m_index;
};

/// @return whether the boxes are so different that nothing finer needs to be looked at
bool judgeBoxes(const ScreenCase& c, const std::string& where, const Extent& measured, const Extent& content,
                const std::string& axes) {
    const Rule& rule = Rule::named("measured-apart");
    const double size = norm(content.size());
    const double ratio = norm(measured.size()) / size;
    const double shift = norm((measured.minimum() + measured.maximum() - content.minimum() - content.maximum()) * 0.5);
    const std::string sizes = sizeText(measured, c.display.unit) + " beside " + sizeText(content, c.display.unit);
    if (ratio > rule.most || ratio < 1.0 / rule.most) {
        c.report(rule.name, where,
                 "it is " + significantText(ratio) + " times as large as the content screen, " + sizes +
                     ": check fileUnit and scale, which hold for all files of the screen");
    } else if (shift > rule.least * size) {
        c.report(rule.name, where,
                 "its middle lies " + lengthText(shift, c.display.unit) + " away from that of the content screen, " +
                     sizes + ": check " + axes);
    } else {
        return false;
    }
    return true;
}

/// A part that was not measured, or a frame that was not designed, lies on one of the two alone.
/// @return whether they lie beside each other
bool judgeBeside(const ScreenCase& c, const std::string& where, const PointSet& measured, const PointSet& content,
                 double size, const std::string& axes) {
    const double distance = BESIDE * size;
    const double one = content.partBeside(measured, distance);
    const double other = measured.partBeside(content, distance);
    if (std::min(one, other) <= PART_BESIDE) {
        return false;
    }
    c.report("measured-apart", where,
             "about " + percentText(one) + " of it and " + percentText(other) +
                 " of the content screen lie more than " + lengthText(distance, c.display.unit) +
                 " away from each other (at most " + percentText(PART_BESIDE) +
                 " of one of them is usual): check its scale, " + axes);
    return true;
}

/// How the 2D coordinates of two surfaces run against each other, at places that they share.
struct Correlation {
    double s = 0;  ///< -1 where s runs against s, 1 where along it
    double t = 0;
    double apart = 0;  ///< the mean distance of (s, t)
};

Correlation correlationOf(const PointSet& measured, const PointSet& content) {
    std::array<Point<double, 2>, 2> sums{};
    std::array<Point<double, 2>, 2> squares{};
    Point<double, 2> products{};
    double apart = 0;
    double count = 0;
    for (std::size_t i = 0; i < measured.points().size(); i += STEP) {
        const SurfacePoint& one = measured.points()[i];
        const SurfacePoint* const other = content.nearest(one.place);
        if (other == nullptr || !one.hasParameters || !other->hasParameters) {
            return {};
        }
        const std::array pair{one.parameters, other->parameters};
        for (std::size_t k = 0; k < 2; ++k) {
            sums[0][k] += pair[0][k];
            sums[1][k] += pair[1][k];
            squares[0][k] += pair[0][k] * pair[0][k];
            squares[1][k] += pair[1][k] * pair[1][k];
            products[k] += pair[0][k] * pair[1][k];
        }
        apart += norm(pair[0] - pair[1]);
        count += 1.0;
    }
    const auto along = [&](std::size_t k) {
        const double spread =
            (squares[0][k] * count - sums[0][k] * sums[0][k]) * (squares[1][k] * count - sums[1][k] * sums[1][k]);
        return spread > 0 ? (products[k] * count - sums[0][k] * sums[1][k]) / std::sqrt(spread) : 0.0;
    };
    return count > 0 ? Correlation{along(0), along(1), apart / count} : Correlation{};
}

/// A surface that is the same the other way round shows by its 2D coordinates alone.
void judgeRun(const ScreenCase& c, const std::string& where, const PointSet& measured, const PointSet& content,
              const std::string& axes) {
    constexpr double CLEAR = 0.9;
    const Correlation run = correlationOf(measured, content);
    const bool isUsed =
        c.display.kind != nullptr && c.display.kind->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS;
    if (run.s < -CLEAR || run.t < -CLEAR) {
        c.report(
            "measured-apart", where,
            std::string("its ") + (run.t < -CLEAR ? "t" : "s") +
                " runs against that of the content screen at the same places, as if it stood " +
                (run.t < -CLEAR ? (run.s < -CLEAR ? "on its head" : "upside down") : "with its left to the right") +
                ": check " + axes);
    } else if (isUsed && run.s > CLEAR && run.t > CLEAR && run.apart > PARAMETERS_APART) {
        c.report("measured-apart", where,
                 "its (s, t) differ by " + significantText(run.apart) +
                     " from those of the content screen at the same places (at most " +
                     significantText(PARAMETERS_APART) +
                     " is usual), so that pictures are shifted by it: check its "
                     "texture coordinates, " +
                     axes);
    }
}

void judgeApart(const ScreenCase& c, const std::string& where, const Extent& box, std::vector<SurfacePoint> points,
                const std::string& axes) {
    // Fewer stand for nothing between them.
    constexpr std::size_t A_SURFACE = 1000;
    const Extent content = c.display.content ? extentOf(*c.display.content) : Extent();
    const double size = norm(content.size());
    if (box.empty() || content.empty() || size <= 0 || judgeBoxes(c, where, box, content, axes) ||
        points.size() < A_SURFACE) {
        return;
    }
    const PointSet measured(std::move(points));
    const PointSet designed(samplesOf(*c.display.content, FINE));
    if (!designed.points().empty() && !judgeBeside(c, where, measured, designed, size, axes)) {
        judgeRun(c, where, measured, designed, axes);
    }
}

/// The words of a file's name without its folder, in small letters.
bool isCalledMeasured(const std::wstring& file) {
    std::string name = std::filesystem::path(toUtf8(file)).filename().string();
    std::transform(name.begin(), name.end(), name.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    constexpr std::array<std::string_view, 5> WORDS{"measured", "scan", "survey", "as-built", "asbuilt"};
    return std::any_of(WORDS.begin(), WORDS.end(),
                       [&name](std::string_view word) { return name.find(word) != std::string::npos; });
}

void judgeMeshes(const ScreenCase& c) {
    const std::wstring file = c.screen.getMeasuredMeshFile(0);
    if (file.empty() || !c.display.measured) {
        return;
    }
    const std::string axes = "up and forward of ImportOrientation, and that both files have one origin";
    const std::wstring content = c.screen.getContentMeshFile(0);
    if (c.display.content && c.display.content->getUniqueDataHash() == c.display.measured->getUniqueDataHash()) {
        const auto pathOf = [](const std::wstring& name) {
            return std::filesystem::path(toUtf8(name)).lexically_normal();
        };
        c.report("same-file", "measured mesh",
                 (pathOf(file) == pathOf(content) ? std::string("it is the file of the content mesh")
                                                  : "it has the bytes of the content mesh, " + toUtf8(content)) +
                     ": name the mesh that was measured, or leave MeasuredMesh out");
        return;
    }
    if (isCalledMeasured(content) && !isCalledMeasured(file)) {
        c.report("measured-apart", "measured mesh",
                 "it is called " + toUtf8(file) + ", and the content mesh " + toUtf8(content) +
                     ": exchange the two, or rename them");
    }
    judgeApart(c, "measured mesh", extentOf(*c.display.measured), samplesOf(*c.display.measured, FINE), axes);
}

bool isFinite(const pcl::PointXYZ& point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

/// Not more of them than of a mesh, over the whole of the cloud.
std::vector<SurfacePoint> samplesOf(const Screen::PointCloud& cloud) {
    std::vector<SurfacePoint> samples;
    const std::size_t step = cloud.size() / FINE + 1;
    for (std::size_t i = 0; i < cloud.size(); i += step) {
        if (isFinite(cloud[i])) {
            samples.push_back({{cloud[i].x, cloud[i].y, cloud[i].z}, {}, false});
        }
    }
    return samples;
}

void judgeCloud(const ScreenCase& c) {
    const auto cloud = ScreenManager::getInstance()->getScreen().getModelPCD();
    if (c.screen.getModelPcdFile(0).empty() || !cloud) {
        return;
    }
    Extent extent;
    for (const pcl::PointXYZ& point : *cloud) {
        extent.add({point.x, point.y, point.z});
    }
    if (extent.empty()) {
        c.report("empty-cloud", "model cloud",
                 "none of its " + std::to_string(cloud->size()) + " points is finite: check the export of the scan");
        return;
    }
    judgeApart(c, "model cloud", extent, samplesOf(*cloud),
               "up and forward of ImportOrientation, and the origin of the scan");
    const Rule& rule = Rule::named("single-precision");
    for (std::size_t i = 0; i < 3; ++i) {
        const double farthest = std::max(std::abs(extent.minimum()[i]), std::abs(extent.maximum()[i]));
        if (farthest * c.display.metres > rule.most) {
            c.report(rule.name, "model cloud",
                     "coordinates up to " + lengthText(farthest, c.display.unit) +
                         " lose more than 1 mm in single precision: move its origin to the room");
            return;
        }
    }
}

}  // namespace

void judgeMeasured(const DisplayFacts& display, FindingList& found) {
    if (display.screen == nullptr) {
        return;
    }
    const ScreenCase c{display, *display.screen, found};
    judgeCloud(c);
    judgeMeshes(c);
}

}  // namespace Veltrani::DisplayReport

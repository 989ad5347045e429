#include "DisplayReport/scene/SceneCollector.h"

#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/scene/SceneSurface.h"
#include "DisplayReport/scene/ScreenEdge.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/MirrorFrame.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;

/// Sizes of the screen beyond which nothing is drawn: the numbers of graphics processors have seven digits, and what
/// is farther off than this leaves none for the screen.
constexpr double FARTHEST = 1e4;
/// Sizes of the screen that a ray is drawn which meets none.
constexpr double RAY_REACH = 0.75;
/// Coordinates beyond this cannot be squared any more.
constexpr double LARGEST = 1e100;

std::string located(const Fault& fault) {
    return fault.where + ": " + sentenceOf(fault);
}

std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    constexpr std::size_t GROUP = 3;
    for (std::size_t place = text.size(); place > GROUP;) {
        place -= GROUP;
        text.insert(place, ",");
    }
    return text;
}

/// "2nd", "3rd", "12th".
std::string ordinal(std::size_t number) {
    const std::size_t last = number % 100 / 10 == 1 ? 0 : number % 10;
    const char* const ending = last == 1 ? "st" : last == 2 ? "nd" : last == 3 ? "rd" : "th";
    return std::to_string(number) + ending;
}

bool isDrawable(const P3& point) {
    return std::abs(point[0]) <= LARGEST && std::abs(point[1]) <= LARGEST && std::abs(point[2]) <= LARGEST;
}

double millimetresPer(const std::string& unit) {
    constexpr double PER_METRE = 1000;
    return PER_METRE * UnitConversionTable::metresPer(UnitConversionTable::getUnitSubTypeFromName(fromUtf8(unit)));
}

void fault(DisplayScene& scene, const std::string& note) {
    scene.notes.push_back(note);
    scene.complete = false;
}

/// Leaves out the items that are unwanted; returns how many.
template <class Items, class PointOf>
std::size_t dropIf(Items& items, PointOf&& isUnwanted) {
    const std::size_t before = items.size();
    items.erase(std::remove_if(items.begin(), items.end(), isUnwanted), items.end());
    return before - items.size();
}

/// Leaves out whatever of a channel is refused by `isWanted`.
template <class IsWanted>
void keepOnly(SceneChannel& channel, IsWanted&& isWanted, const std::string& why, DisplayScene& scene) {
    std::size_t dropped = dropIf(channel.targets.grid, [&](const GridTarget& t) { return !isWanted(t.point); });
    dropped += dropIf(channel.targets.boundary, [&](const P3& point) { return !isWanted(point); });
    if (dropped > 0) {
        fault(scene, "channel " + channel.targets.name + ": " + grouped(dropped) + " targets " + why);
    }
    if (channel.frustum) {
        ChannelFrustum& frustum = *channel.frustum;
        const auto isWantedWay = [&](const std::vector<P3>& way) {
            return std::all_of(way.begin(), way.end(), isWanted);
        };
        const bool whole = isWanted(frustum.apex) && isWantedWay(frustum.rim) &&
                           std::all_of(frustum.edges.begin(), frustum.edges.end(), isWantedWay) &&
                           isWantedWay(frustum.mirrorVertices);
        if (!whole) {
            channel.frustum.reset();
            fault(scene, "channel " + channel.targets.name + ": its frustum " + why);
        }
    }
}

/// Whatever stands too far from the screen is left out with a note.
void dropFarThings(DisplayScene& scene) {
    const Extent core = scene.core();
    const P3 middle = core.minimum() + core.size() * 0.5;
    const double size = norm(core.size());
    if (!(size > 0)) {
        return;
    }
    const auto isNear = [&](const P3& point) { return norm(point - middle) <= FARTHEST * size; };
    for (SceneChannel& channel : scene.channels) {
        keepOnly(channel, isNear, "lies too far from the screen to be drawn", scene);
    }
    for (const ScenePlace& eye : scene.eyes) {
        if (!isNear(eye.point)) {
            fault(scene, "the " + eye.name + " lies too far from the screen to be drawn");
        }
    }
    dropIf(scene.eyes, [&](const ScenePlace& eye) { return !isNear(eye.point); });
    if (scene.mirror && !(isNear(scene.mirror->centre) && scene.mirror->radius <= FARTHEST * size)) {
        scene.mirror.reset();
        fault(scene, "the mirror lies too far from the screen to be drawn");
    }
    if (scene.cloud) {
        const std::size_t dropped = dropIf(scene.cloud->points, [&](const P3& point) { return !isNear(point); });
        if (dropped > 0) {
            fault(scene, "model cloud: " + grouped(dropped) + " points lie too far from the screen to be drawn");
        }
    }
}

/// Where the targets are placed from, and the eye point of the screen where it is another one.
void addEyes(const XMLConfigManager& config, DisplayScene& scene) {
    const TargetLocatorConfig* targets = config.getTargetLocatorConfig();
    const DisplayKind* const kind = DisplayKind::of(config);
    if (targets != nullptr && kind != nullptr && kind->addressedBy == DisplayKind::Addressing::EYE) {
        P3 eye = targets->getTargetPosition();
        if (kind->hasMirror()) {
            const MirrorFrame frame(*targets);
            // The eye is given relative to the middle of the mirror.
            eye = frame.toWorld(eye);
            const P3 centre = frame.centre();
            if (targets->getMirrorRadius() > 0 && targets->getMirrorRadius() <= LARGEST && isDrawable(centre)) {
                scene.mirror = SceneMirror{centre, targets->getMirrorRadius()};
            }
        }
        scene.eyes.push_back({"eye point", eye});
    } else if (const IScreenConfig* screen = config.getScreenConfig()) {
        scene.eyes.push_back({"eye point", screen->getEyePoint()});
    }
    if (dropIf(scene.eyes, [](const ScenePlace& eye) { return !isDrawable(eye.point); }) > 0) {
        fault(scene, "the eye point is not a place in space");
    }
}

/// Null, without a message, where there is none: the survey reports why.
std::shared_ptr<const TargetLocator> locatorOf(const XMLConfigManager& config, const ProjectorConfig& projector) {
    try {
        return TargetLocatorManager::getInstance()->getTargetLocator(&config, &projector);
    } catch (...) {
        if (isOutOfMemory(std::current_exception())) {
            throw;
        }
        return nullptr;
    }
}

void addFrustum(const XMLConfigManager& config, const ProjectorConfig& projector, double reach, SceneChannel& channel,
                DisplayScene& scene) {
    try {
        const auto locator = locatorOf(config, projector);
        channel.frustum = FrustumTracer(locator.get(), projector, reach).trace();
    } catch (...) {
        fault(scene, "channel " + channel.targets.name +
                         ": its frustum cannot be drawn: " + sentenceOf(faultOf({}, std::current_exception())));
    }
}

void addChannels(const XMLConfigManager& config, const TargetSurvey& survey, DisplayScene& scene) {
    const Extent core = scene.core();
    const double reach = core.empty() ? 1.0 : RAY_REACH * norm(core.size());
    for (const ChannelTargets& targets : survey.channels) {
        SceneChannel channel;
        channel.targets = targets;
        channel.placed = targets.grid.size();
        channel.samples = targets.boundary.size();
        channel.colour = channelColour(scene.channels.size());
        if (const ProjectorConfig* projector = config.getProjectorConfig(fromUtf8(targets.projectorId))) {
            channel.width = projector->getWidth();
            channel.height = projector->getHeight();
            addFrustum(config, *projector, reach > 0 ? reach : 1.0, channel, scene);
        }
        const std::string name = "channel " + targets.name + ": ";
        if (!targets.fault.empty()) {
            fault(scene, name + targets.fault);
        }
        if (channel.width <= 0 || channel.height <= 0) {
            fault(scene, name + "its picture has no size: " + std::to_string(channel.width) + " x " +
                             std::to_string(channel.height) + " pixels");
        }
        keepOnly(channel, isDrawable, "are not places in space", scene);
        scene.channels.push_back(std::move(channel));
    }
    if (survey.channels.empty()) {
        fault(scene, "the configuration has no projectors, so there is no channel to show");
    }
}

void addRimPieces(const ScreenEdge& edge, SceneChannel& channel) {
    if (!channel.frustum) {
        return;
    }
    std::vector<bool> beyond;
    for (const P3& end : channel.frustum->rim) {
        beyond.push_back(!edge.isWithin(end));
    }
    const bool isOutlineDashed = std::find(channel.beyond.begin(), channel.beyond.end(), true) != channel.beyond.end();
    for (std::size_t i = 0; i < beyond.size(); ++i) {
        const bool isPast = beyond[i] || beyond[(i + 1) % beyond.size()];
        channel.rimPieces.push_back(!isPast ? PieceLook::WHOLE : isOutlineDashed ? PieceLook::NONE : PieceLook::DASHED);
    }
}

}  // namespace

DisplayScene SceneCollector::collect(const std::string& title, const XMLConfigManager& config,
                                     const TargetSurvey& survey, const std::vector<Fault>& screenFaults) const {
    DisplayScene scene;
    scene.title = title;
    scene.unit = survey.unit;
    scene.unitInMillimetres = millimetresPer(survey.unit);
    scene.plan = survey.plan;
    for (const Fault& screenFault : screenFaults) {
        fault(scene, located(screenFault));
    }
    addScreens(scene);
    addCloud(scene);
    addEyes(config, scene);
    addChannels(config, survey, scene);
    dropFarThings(scene);
    thinTargets(scene);
    thinOutlines(scene);
    markContinuations(scene);
    return scene;
}

void SceneCollector::addScreens(DisplayScene& scene) const {
    ScreenManager& manager = *ScreenManager::getInstance();
    const std::pair<const char*, std::shared_ptr<ScreenGeometry>> screens[] = {
        {"content", manager.getContentModelScreenGeometry()}, {"measured", manager.getMeasuredScreenGeometry()}};
    for (const auto& [name, geometry] : screens) {
        if (!geometry) {
            continue;
        }
        SceneSurface surface = SurfaceTessellator(m_limits.triangles).tessellate(*geometry);
        surface.name = name;
        if (dropIf(surface.vertices, [](const P3& vertex) { return !isDrawable(vertex); }) > 0) {
            surface = {};
        }
        if (surface.triangles.empty()) {
            fault(scene, std::string("the ") + name + " screen has no surface that can be drawn");
            continue;
        }
        if (surface.trianglesFarOff > 0) {
            fault(scene, grouped(surface.trianglesFarOff) + " triangles of the " + name +
                             " screen reach too far from the others to be drawn");
        }
        if (surface.isThinned()) {
            scene.notes.push_back(std::string("the ") + name + " screen is shown with " +
                                  grouped(surface.triangles.size()) + " of its " + grouped(surface.trianglesOfMesh) +
                                  " triangles");
        }
        scene.surfaces.push_back(std::move(surface));
    }
    if (scene.surfaces.empty() && scene.notes.empty()) {
        fault(scene, "there is no screen");
    }
}

void SceneCollector::addCloud(DisplayScene& scene) const {
    const auto cloud = ScreenManager::getInstance()->getScreen().getModelPCD();
    if (!cloud || cloud->empty()) {
        return;
    }
    SceneCloud shown;
    const std::size_t wanted = std::min(m_limits.points, cloud->size());
    for (std::size_t i = 0; i < wanted; ++i) {
        const pcl::PointXYZ& point = (*cloud)[i * cloud->size() / wanted];
        const P3 place{point.x, point.y, point.z};
        if (isDrawable(place)) {
            shown.points.push_back(place);
        }
    }
    if (shown.points.size() < cloud->size()) {
        scene.notes.push_back("the model cloud is shown with " + grouped(shown.points.size()) + " of its " +
                              grouped(cloud->size()) + " points");
    }
    if (shown.points.size() < wanted) {
        fault(scene, "model cloud: " + grouped(wanted - shown.points.size()) + " points are not places in space");
    }
    scene.cloud = std::move(shown);
}

void SceneCollector::thinTargets(DisplayScene& scene) const {
    const auto count = [&scene] {
        std::size_t targets = 0;
        for (const SceneChannel& channel : scene.channels) {
            targets += channel.targets.grid.size();
        }
        return targets;
    };
    const std::size_t all = count();
    if (all <= m_limits.targets) {
        return;
    }
    auto every = static_cast<int>(std::sqrt(static_cast<double>(all) / static_cast<double>(m_limits.targets)));
    // Columns and rows that do not divide evenly leave a few more than the square of `every` accounts for.
    while (count() > m_limits.targets) {
        ++every;
        for (SceneChannel& channel : scene.channels) {
            dropIf(channel.targets.grid,
                   [every](const GridTarget& target) { return target.column % every != 0 || target.row % every != 0; });
        }
    }
    scene.targetStep = every;
    scene.notes.push_back(grouped(count()) + " of " + grouped(all) + " targets are shown, every " +
                          ordinal(static_cast<std::size_t>(every)) + " column and row");
}

void SceneCollector::thinOutlines(DisplayScene& scene) const {
    std::size_t all = 0;
    for (const SceneChannel& channel : scene.channels) {
        all += channel.targets.boundary.size();
    }
    const std::size_t every = (all + m_limits.samples - 1) / m_limits.samples;
    if (every <= 1) {
        return;
    }
    for (SceneChannel& channel : scene.channels) {
        std::vector<P3> shown;
        for (std::size_t i = 0; i < channel.targets.boundary.size(); i += every) {
            shown.push_back(channel.targets.boundary[i]);
        }
        channel.targets.boundary = std::move(shown);
    }
    scene.outlineStep = static_cast<int>(every);
    scene.notes.push_back("outlines are shown with every " + ordinal(every) + " of their samples");
}

void SceneCollector::markContinuations(DisplayScene& scene) {
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    if (!surface || !surface->isValid()) {
        return;
    }
    const ScreenEdge edge(*surface);
    std::size_t beyond = 0;
    for (SceneChannel& channel : scene.channels) {
        for (const P3& sample : channel.targets.boundary) {
            channel.beyond.push_back(!edge.isWithin(sample));
            beyond += channel.beyond.back() ? 1 : 0;
        }
        addRimPieces(edge, channel);
    }
    if (beyond > 0) {
        scene.notes.push_back(
            "dashed outlines lie past the edge of the screen, on its continuation: no light arrives there");
    }
}

}  // namespace Veltrani::DisplayReport

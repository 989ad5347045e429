#include "ScreenManager/DisplayKinds.h"

#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "ScreenManager/CollimatedLayoutToChannelMap.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarLayoutToChannelMap.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/PlanarLayoutToChannelMap.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/ProjectorCentricLayoutToChannelMap.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "ScreenManager/SphericalLayoutToChannelMap.h"
#include "ScreenManager/detail/LocatorBuilders.h"
#include "ScreenManager/detail/OutlinePlaces.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <typeinfo>

using Veltrani::ScreenManagerDetail::LocatorBuilders;

namespace {

using Addressing = DisplayKind::Addressing;
using Layout = DisplayKind::Layout;
using Source = DisplayKind::Source;
using Path = LocatorKind::Path;
using Rays = LocatorKind::Rays;

constexpr bool COUNTS_PIXELS = true;
constexpr bool COUNTS_NO_PIXELS = false;

/// No projector has more on a side; a search over more would not end.
constexpr int MOST_PIXELS = 100'000;

/// Checks the pictures of the maps that count pixels and have no lens, which would throw first: without any pixels
/// these maps would return results, but never useful ones.
void requirePictures(const XMLConfigManager& config) {
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;  // the map reports it
        }
        const int width = projector->getWidth();
        const int height = projector->getHeight();
        if (std::min(width, height) < 1 || std::max(width, height) > MOST_PIXELS) {
            throw VeltraniException(__FILE__, __LINE__,
                                    L"No layout map: channel \"" + projector->getName() + L"\" has a picture of " +
                                        std::to_wstring(width) + L" x " + std::to_wstring(height) +
                                        L" pixels, expected 1 to " + std::to_wstring(MOST_PIXELS) +
                                        L" on each side: state its resolution");
        }
    }
}

/// Made without a table: a fault of a lens that this display does not use must not stop it.
LayoutMap makePlanar(XMLConfigManager* config, bool /*useCache*/) {
    return {nullptr, std::make_unique<PlanarLayoutToChannelMap>(config, nullptr)};
}

LayoutMap makeCustomPlanar(XMLConfigManager* config, bool /*useCache*/) {
    requirePictures(*config);
    return {nullptr, std::make_unique<CustomPlanarLayoutToChannelMap>(config)};
}

/// Makes the map of a kind that refers to the table; `options` are the arguments that the kind takes besides it.
template <class Map, class... Options>
LayoutMap makeWithTable(XMLConfigManager* config, Options... options) {
    const auto table = std::make_shared<KelvoControl::Configuration>(config);
    return {table, std::make_unique<Map>(config, table, options...)};
}

LayoutMap makeSpherical(XMLConfigManager* config, bool /*useCache*/) {
    return makeWithTable<SphericalLayoutToChannelMap>(config);
}

LayoutMap makeCollimated(XMLConfigManager* config, bool useCache) {
    requirePictures(*config);
    return makeWithTable<CollimatedLayoutToChannelMap>(config, useCache);
}

LayoutMap makeProjectorCentric(XMLConfigManager* config, bool /*useCache*/) {
    return makeWithTable<ProjectorCentricLayoutToChannelMap>(config);
}

std::size_t onFourEdges(const TargetLocator& /*locator*/, int samplesPerEdge) {
    constexpr std::size_t EDGES = 4;
    return EDGES * static_cast<std::size_t>(std::max(samplesPerEdge, 0));
}

std::size_t onBorderOfPixels(const TargetLocator& locator, int samplesPerEdge) {
    // The row is found by the exact class, which is this one.
    const Point<int, 2> resolution = static_cast<const CustomPlanarTargetLocator&>(locator).getResolution();
    return Veltrani::ScreenManagerDetail::borderOfPixels(resolution, samplesPerEdge).size();
}

std::size_t onBorderOfPicture(const TargetLocator& /*locator*/, int samplesPerEdge) {
    return Veltrani::ScreenManagerDetail::borderOfPicture(samplesPerEdge).size();
}

constexpr bool HAS_GRID = true;
constexpr bool NO_GRID = false;
constexpr bool FROM_THE_TOP = true;
constexpr bool FROM_THE_BOTTOM = false;

/// A class of locators and its kind.
struct LocatorClass {
    const std::type_info& type;
    LocatorKind kind;
};

}  // namespace

std::span<const DisplayKind> DisplayKind::all() {
    static const std::array KINDS{
        DisplayKind{BaseConfig::TARGET_DATA_PLANAR_BASIC, Addressing::SCREEN_PARAMETERS, Layout::PLANE,
                    Source::SCREEN_AREA, COUNTS_NO_PIXELS, LocatorBuilders::planar, makePlanar},
        DisplayKind{BaseConfig::TARGET_DATA_PLANAR_ADVANCED, Addressing::SCREEN_PARAMETERS, Layout::PLANE,
                    Source::SCREEN_AREA, COUNTS_NO_PIXELS, LocatorBuilders::planar, makePlanar},
        DisplayKind{BaseConfig::TARGET_DATA_SPHERICAL, Addressing::EYE, Layout::WORLD, Source::FRUSTUM,
                    COUNTS_NO_PIXELS, LocatorBuilders::sphere, makeSpherical},
        DisplayKind{BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, Addressing::EYE, Layout::WORLD,
                    Source::FRUSTUM_AND_MIRROR, COUNTS_PIXELS, LocatorBuilders::collimated, makeCollimated},
        DisplayKind{BaseConfig::TARGET_DATA_CUSTOM_PLANAR, Addressing::SCREEN_PARAMETERS, Layout::SCREEN,
                    Source::MAP_FILE, COUNTS_PIXELS, LocatorBuilders::customPlanar, makeCustomPlanar},
        DisplayKind{BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, Addressing::PROJECTOR, Layout::WORLD,
                    Source::MODEL_OR_FRUSTUM, COUNTS_PIXELS, LocatorBuilders::customProjection, makeProjectorCentric},
        DisplayKind{BaseConfig::TARGET_DATA_3D, Addressing::PROJECTOR, Layout::WORLD, Source::MODEL_OR_FRUSTUM,
                    COUNTS_PIXELS, LocatorBuilders::customProjection, makeProjectorCentric},
    };
    return KINDS;
}

const DisplayKind* DisplayKind::named(std::wstring_view type) {
    const std::span<const DisplayKind> kinds = all();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const DisplayKind& kind) { return kind.type == type; });
    return found == kinds.end() ? nullptr : &*found;
}

const DisplayKind* DisplayKind::of(const XMLConfigManager& config) {
    const TargetLocatorConfig* const targetData = config.getTargetLocatorConfig();
    return targetData != nullptr ? named(targetData->getTargetDataType()) : nullptr;
}

const LocatorKind& LocatorKind::of(const TargetLocator& locator) {
    static const std::array CLASSES{
        LocatorClass{typeid(PlanarTargetLocator),
                     {Path::SCREEN_AREA, Rays::STRAIGHT, HAS_GRID, FROM_THE_TOP, onFourEdges}},
        LocatorClass{typeid(SphereTargetLocator), {Path::FRUSTUM, Rays::STRAIGHT, HAS_GRID, FROM_THE_TOP, onFourEdges}},
        LocatorClass{typeid(CollimatedTargetLocator),
                     {Path::MIRROR, Rays::REFLECTED, HAS_GRID, FROM_THE_TOP, onFourEdges}},
        LocatorClass{typeid(CustomPlanarTargetLocator),
                     {Path::MAP_FILE, Rays::STRAIGHT, HAS_GRID, FROM_THE_BOTTOM, onBorderOfPixels}},
        LocatorClass{typeid(CustomProjectionTargetLocator),
                     {Path::LENS, Rays::STRAIGHT, NO_GRID, FROM_THE_BOTTOM, onBorderOfPicture}},
    };
    static const LocatorKind FOLLOWED{Path::FOLLOWED, Rays::OWN, HAS_GRID, FROM_THE_TOP, onFourEdges};
    static const LocatorKind UNKNOWN;
    const std::type_info& type = typeid(locator);
    for (const LocatorClass& known : CLASSES) {
        if (known.type == type) {
            return known.kind;
        }
    }
    // The one family that is open to classes from elsewhere: they replace the way of a ray, whose start is known.
    return dynamic_cast<const SphereTargetLocator*>(&locator) != nullptr ? FOLLOWED : UNKNOWN;
}

#include "ScreenManager/LayoutMapFactory.h"

#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "ScreenManager/CollimatedLayoutToChannelMap.h"
#include "ScreenManager/CustomPlanarLayoutToChannelMap.h"
#include "ScreenManager/PlanarLayoutToChannelMap.h"
#include "ScreenManager/ProjectorCentricLayoutToChannelMap.h"
#include "ScreenManager/SphericalLayoutToChannelMap.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace {

struct Kind {
    const std::wstring& type;
    LayoutMap (*make)(XMLConfigManager* config, bool useCache);
};

/// No projector has more on a side; a search over more would not end.
constexpr int MOST_PIXELS = 100'000;

/// For the maps that count pixels: without any they would answer, but never anything of use.
void requirePictures(const XMLConfigManager& config) {
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;  // the map tells
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

/// Without a table: a lens that this display does not use must not stop it.
LayoutMap makePlanar(XMLConfigManager* config, bool /*useCache*/) {
    return {nullptr, std::make_unique<PlanarLayoutToChannelMap>(config, nullptr)};
}

LayoutMap makeCustomPlanar(XMLConfigManager* config, bool /*useCache*/) {
    requirePictures(*config);
    return {nullptr, std::make_unique<CustomPlanarLayoutToChannelMap>(config)};
}

/// Kinds that refer to the table; what a kind takes besides it.
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

const std::array KINDS{
    Kind{BaseConfig::TARGET_DATA_PLANAR_BASIC, makePlanar},
    Kind{BaseConfig::TARGET_DATA_PLANAR_ADVANCED, makePlanar},
    Kind{BaseConfig::TARGET_DATA_SPHERICAL, makeSpherical},
    Kind{BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, makeCollimated},
    Kind{BaseConfig::TARGET_DATA_CUSTOM_PLANAR, makeCustomPlanar},
    Kind{BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, makeProjectorCentric},
    Kind{BaseConfig::TARGET_DATA_3D, makeProjectorCentric},
};

[[noreturn]] void refuse(const std::wstring& what) {
    std::wstring types;
    for (const Kind& kind : KINDS) {
        types += (types.empty() ? L"" : L", ") + kind.type;
    }
    throw VeltraniException(__FILE__, __LINE__,
                            L"No layout map: " + what + L", expected target data of one of the types: " + types);
}

}  // namespace

LayoutMap::LayoutMap(std::shared_ptr<KelvoControl::Configuration> theChannelMapConfig,
                     std::unique_ptr<LayoutToChannelMap> theMap)
    : channelMapConfig(std::move(theChannelMapConfig)), map(std::move(theMap)) {}

LayoutMap& LayoutMap::operator=(LayoutMap&& other) noexcept {
    // The old map first: it refers to the old table.
    map = std::move(other.map);
    channelMapConfig = std::move(other.channelMapConfig);
    return *this;
}

LayoutMap LayoutMapFactory::create(XMLConfigManager* config, bool useCache) {
    if (config == nullptr) {
        refuse(L"there is no configuration");
    }
    const TargetLocatorConfig* const targetData = config->getTargetLocatorConfig();
    if (targetData == nullptr) {
        refuse(L"the configuration has no target data");
    }
    const std::wstring type = targetData->getTargetDataType();
    const auto* const kind =
        std::find_if(KINDS.begin(), KINDS.end(), [&](const Kind& candidate) { return candidate.type == type; });
    if (kind == KINDS.end()) {
        refuse(L"the target-data type is \"" + type + L"\"");
    }
    return kind->make(config, useCache);
}

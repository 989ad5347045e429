#include "ScreenManager/LayoutMapFactory.h"

#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
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

namespace {

struct Kind {
    const std::wstring& type;
    LayoutMap (*make)(XMLConfigManager* config, bool useCache);
};

/// Without a table: a lens that this display does not use must not stop it.
LayoutMap makePlanar(XMLConfigManager* config, bool /*useCache*/) {
    return {nullptr, std::make_unique<PlanarLayoutToChannelMap>(config, nullptr)};
}

LayoutMap makeCustomPlanar(XMLConfigManager* config, bool /*useCache*/) {
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

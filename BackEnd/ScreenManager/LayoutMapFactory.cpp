#include "ScreenManager/LayoutMapFactory.h"

#include "Common/VeltraniException.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "ScreenManager/DisplayKinds.h"

#include <string>
#include <utility>

namespace {

[[noreturn]] void refuse(const std::wstring& what) {
    std::wstring types;
    for (const DisplayKind& kind : DisplayKind::all()) {
        types += types.empty() ? L"" : L", ";
        types += kind.type;
    }
    throw VeltraniException(__FILE__, __LINE__,
                            L"No layout map: " + what + L", expected target data of one of the types: " + types);
}

}  // namespace

LayoutMap::LayoutMap(std::shared_ptr<KelvoControl::Configuration> theChannelMapConfig,
                     std::unique_ptr<LayoutToChannelMap> theMap)
    : channelMapConfig(std::move(theChannelMapConfig)), map(std::move(theMap)) {}

LayoutMap& LayoutMap::operator=(LayoutMap&& other) noexcept {
    // The old map is destroyed first: it refers to the old table.
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
    const DisplayKind* const kind = DisplayKind::named(type);
    if (kind == nullptr) {
        refuse(L"the target-data type is \"" + type + L"\"");
    }
    return kind->makeMap(config, useCache);
}

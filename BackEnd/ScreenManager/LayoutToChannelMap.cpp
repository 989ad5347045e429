#include "ScreenManager/LayoutToChannelMap.h"

#include "Configuration/XMLConfigManager.h"

LayoutToChannelMap::LayoutToChannelMap(XMLConfigManager* config) : m_config(config) {
    if (config == nullptr) {
        return;
    }
    for (const std::wstring& id : config->getProjectorConfigIds()) {
        m_projectors.push_back(config->getProjectorConfig(id));
    }
}

LayoutToChannelMap::~LayoutToChannelMap() = default;

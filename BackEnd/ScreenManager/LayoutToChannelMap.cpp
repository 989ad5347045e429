#include "ScreenManager/LayoutToChannelMap.h"

#include "Configuration/XMLConfigManager.h"

LayoutToChannelMap::LayoutToChannelMap(XMLConfigManager* config) : m_config(config) {
    for (const std::wstring& id : projectorIds()) {
        m_projectors.push_back(config->getProjectorConfig(id));
    }
}

LayoutToChannelMap::~LayoutToChannelMap() = default;

std::vector<std::wstring> LayoutToChannelMap::projectorIds() const {
    return m_config != nullptr ? m_config->getProjectorConfigIds() : std::vector<std::wstring>();
}

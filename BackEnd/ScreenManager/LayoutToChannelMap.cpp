#include "ScreenManager/LayoutToChannelMap.h"

#include "Common/VeltraniException.h"
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

void LayoutToChannelMap::mapChannelPointsToLayout(std::span<const Point<double, 2>> channel,
                                                  std::span<LayoutPoint> layout, std::size_t channelIndex) {
    if (channel.size() != layout.size()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"mapChannelPointsToLayout: " + std::to_wstring(channel.size()) +
                                    L" picture points but room for " + std::to_wstring(layout.size()) +
                                    L" layout points");
    }
    for (std::size_t i = 0; i < channel.size(); ++i) {
        layout[i].isMapped = mapChannelToLayout(channel[i], layout[i].point, channelIndex);
    }
}

#include "ScreenManager/detail/ChannelEntries.h"

#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigManager.h"
#include "KelvoControl/Configuration.h"

namespace Veltrani::ScreenManagerDetail {

const ProjectorConfig& requireRecord(const ProjectorConfig* record, std::size_t channelIndex) {
    if (record == nullptr) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The configuration lists a projector for channel " + std::to_wstring(channelIndex) +
                                    L" (counted from 0), but has no record of it");
    }
    return *record;
}

std::vector<const KelvoProjector*> blendOwners(const XMLConfigManager* config,
                                               const KelvoControl::Configuration* channelMapConfig) {
    std::vector<const KelvoProjector*> owners;
    if (config == nullptr) {
        return owners;
    }
    static const std::map<KelvoProjectorUID, KelvoProjector*> NO_PROJECTORS;
    const auto& table = channelMapConfig != nullptr ? channelMapConfig->getProjectors() : NO_PROJECTORS;
    for (const std::wstring& id : config->getProjectorConfigIds()) {
        const auto entry = table.find(KelvoProjectorUID(id));
        if (entry == table.end()) {
            throw VeltraniException(
                __FILE__, __LINE__,
                L"Projector \"" + id + L"\" is configured, but the table of the channel maps has no entry for it");
        }
        owners.push_back(entry->second);
    }
    return owners;
}

}  // namespace Veltrani::ScreenManagerDetail

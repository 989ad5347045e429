#include "ScreenManager/detail/ChannelRecord.h"

#include "Common/VeltraniException.h"

namespace Veltrani {

const ProjectorConfig& requireRecord(const ProjectorConfig* record, std::size_t channelIndex) {
    if (record == nullptr) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The configuration lists a projector for channel " + std::to_wstring(channelIndex) +
                                    L" (counted from 0), but has no record of it");
    }
    return *record;
}

}  // namespace Veltrani

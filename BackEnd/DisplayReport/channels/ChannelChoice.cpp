#include "DisplayReport/channels/ChannelChoice.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"

#include <vector>

namespace Veltrani::DisplayReport {

namespace {

/// The channels whose projectors have a record.
std::vector<ChannelChoice> channelsOf(const XMLConfigManager& config) {
    std::vector<ChannelChoice> channels;
    std::size_t index = 0;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        if (const ProjectorConfig* projector = config.getProjectorConfig(id)) {
            channels.push_back({index, projector});
        }
        ++index;
    }
    return channels;
}

[[noreturn]] void refuseChoice(const std::wstring& what, const std::vector<ChannelChoice>& channels) {
    std::wstring list;
    for (const ChannelChoice& channel : channels) {
        list += (list.empty() ? L"" : L", ") + channel.projector->getName() + L" (" + channel.projector->getIdentity() +
                L")";
    }
    throw VeltraniException(what +
                            (list.empty() ? L": the configuration has no projectors" : L"; the channels are: " + list));
}

}  // namespace

ChannelChoice ChannelChoice::of(const XMLConfigManager& config, const std::string& nameOrId) {
    const std::vector<ChannelChoice> channels = channelsOf(config);
    const std::wstring wanted = fromUtf8OrBytes(nameOrId);
    std::vector<ChannelChoice> named;
    for (const ChannelChoice& channel : channels) {
        if (channel.projector->getIdentity() == wanted) {
            return channel;
        }
        if (channel.projector->getName() == wanted) {
            named.push_back(channel);
        }
    }
    if (named.empty()) {
        refuseChoice(fromUtf8OrBytes(inQuotes(nameOrId)) + L" is no channel", channels);
    }
    if (named.size() > 1) {
        refuseChoice(fromUtf8OrBytes(inQuotes(nameOrId)) + L" is the name of " + std::to_wstring(named.size()) +
                         L" channels, state the id",
                     named);
    }
    return named.front();
}

std::string ChannelChoice::describe() const {
    return "channel " + toUtf8(projector->getName()) + " (" + toUtf8(projector->getIdentity()) + ")";
}

Point<int, 2> ChannelChoice::pictureSize() const {
    const int width = projector->getWidth();
    const int height = projector->getHeight();
    if (width <= 0 || height <= 0) {
        refuse("its picture has no size, " + std::to_string(width) + " x " + std::to_string(height) +
               " pixels: give the channel a Resolution");
    }
    return {width, height};
}

void ChannelChoice::refuse(const std::string& what) const {
    throw VeltraniException(fromUtf8OrBytes(describe() + ": " + what));
}

}  // namespace Veltrani::DisplayReport

#include "DisplayReport/channels/ChannelLocator.h"

#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/channels/LocatorSource.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

namespace Veltrani::DisplayReport {

namespace {

/// What the configuration lacks for a locator; empty when nothing is known to be wrong.
std::string whyThereIsNoLocator(const XMLConfigManager& config, const ProjectorConfig& projector) {
    if (targetDataTypeOf(config).empty()) {
        return "the configuration names no kind of target data: add a TargetData element";
    }
    const LocatorSource source = locatorSourceOf(config, projector);
    return source.faults.empty() ? std::string() : sentenceOf(source.faults.front());
}

}  // namespace

ChannelLocator ChannelLocator::of(const XMLConfigManager& config, const ProjectorConfig& projector) {
    ChannelLocator channel;
    try {
        channel.locator = TargetLocatorManager::getInstance()->getTargetLocator(&config, &projector);
    } catch (...) {
        channel.fault = sentenceOf(faultOf({}, std::current_exception()));
        return channel;
    }
    if (!channel.locator) {
        const std::string reason = whyThereIsNoLocator(config, projector);
        channel.fault = reason.empty() ? "no target locator can be built for it" : reason;
    }
    return channel;
}

}  // namespace Veltrani::DisplayReport

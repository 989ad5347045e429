#include "DeviceOptions.h"

#include <algorithm>

namespace {

using namespace Veltrani::DeviceFramework2;

void limit(DeviceManager::Settings& settings, std::chrono::milliseconds timeout) {
    settings.pjlink.connectLimit = timeout;
    settings.pjlink.greetingLimit = timeout;
    settings.pjlink.replyLimit = timeout;
    settings.search.duration = timeout;
    // All requests of a short search are still sent within it.
    settings.search.interval = std::min(settings.search.interval, timeout / (settings.search.requests + 1));
}

}  // namespace

DeviceManager::Settings DeviceOptions::settings() const {
    DeviceManager::Settings settings;
    if (timeout) {
        limit(settings, *timeout);
    }
    if (broadcast) {
        settings.search.targets = {broadcast->host};
        settings.search.targetPort = broadcast->port;
        settings.search.ownPort = PjlinkSearchSettings::ownPortFor(broadcast->port);
    }
    return settings;
}

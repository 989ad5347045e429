#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DravixDiagnostics/DravixDiagnostics.h"
#include "Ratio.h"
#include "ScreenManager/ChannelManager.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

/// Lookups among a thousand channels, against a plain scan over a vector of the same records. The last channel is
/// looked for, so that both sides compare all of them.

namespace {

constexpr int CHANNELS = 1000;
/// No worse than the plain scan.
constexpr double LIMIT = 1.0;

std::string configuration() {
    std::string text = "<Display version='1' lengthUnit='m'><Units native='m'/><Projectors>";
    for (int i = 0; i < CHANNELS; ++i) {
        const std::string number = std::to_string(i);
        text += "<Projector id='projector number " + number + "'><Name>channel number " + number +
                "</Name><Resolution width='1920' height='1200'/></Projector>";
    }
    return text + "</Projectors></Display>";
}

/// The place of the first record that matches; -1 when there is none.
template <class Matches>
int scan(const std::vector<Channel>& records, const Matches& matches) {
    const auto found = std::find_if(records.begin(), records.end(), matches);
    return found == records.end() ? -1 : static_cast<int>(found - records.begin());
}

template <class Lookup>
ratio::Body repeated(Lookup lookup) {
    return [lookup](benchmark::State& state) {
        for (auto _ : state) {
            benchmark::DoNotOptimize(lookup());
        }
    };
}

}  // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    DravixDiagnostics::setVirtualLoad(true);
    const auto config = XMLConfigFile::parse(configuration(), "thousand.xml");
    ChannelManager manager(config.get());
    manager.initialize(false);
    const std::vector<Channel> records = manager.getChannels();
    if (records.size() != CHANNELS) {
        std::printf("%zu channels instead of %d\n", records.size(), CHANNELS);
        return 1;
    }
    const std::wstring name = records.back().getName();
    const std::wstring uid = records.back().getProjectorConfigId();
    const Channel::Id id = records.back().getChannelId();
    const Channel::ProjectorId projectorId = records.back().getProjectorId();

    ratio::pair("channel_by_name", repeated([&] { return manager.getChannelIndexByName(name); }),
                repeated([&] { return scan(records, [&](const Channel& c) { return c.getName() == name; }); }), LIMIT);
    ratio::pair(
        "channel_by_configuration_id", repeated([&] { return manager.getChannelIndexByID(uid); }),
        repeated([&] { return scan(records, [&](const Channel& c) { return c.getProjectorConfigId() == uid; }); }),
        LIMIT);
    ratio::pair("channel_by_id", repeated([&] { return manager.getChannelInfo(id); }), repeated([&] {
                    const auto matches = [&](const Channel& c) { return c.getChannelId() == id; };
                    return records[static_cast<std::size_t>(scan(records, matches))];
                }),
                LIMIT);
    ratio::pair("channel_by_projector_id", repeated([&] { return manager.getChannelInfoRefactor(projectorId); }),
                repeated([&] {
                    const auto matches = [&](const Channel& c) {
                        return c.getProjectorConfigId() == uid ||
                               config->getProjectorConfig(c.getProjectorConfigId())->getOldUID() == uid;
                    };
                    return records[static_cast<std::size_t>(scan(records, matches))];
                }),
                LIMIT);
    return ratio::run(argc, argv, ratio::MANY_AND_SHORT);
}

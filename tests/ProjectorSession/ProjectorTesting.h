#pragma once

#include "Configuration/XMLConfigFile.h"
#include "DeviceFramework2/DeviceManager.h"
#include "support/Displays.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

/// What the tests of reports on projectors share.
namespace projector_testing {

using Veltrani::DeviceFramework2::DeviceManager;

/// Long enough for an answer on loopback of a loaded machine; a search lasts its whole time when it finds too little.
inline DeviceManager::Settings settings() {
    constexpr std::chrono::milliseconds PATIENT{5000};
    constexpr std::chrono::milliseconds SEARCH{200};
    DeviceManager::Settings settings;
    settings.pjlink = {PATIENT, PATIENT, PATIENT, {"SM_TEST_PJLINK_PASSWORD", "SM_TEST_PJLINK_PASSWORD_FILE"}};
    settings.search.ownPort = 0;
    settings.search.duration = SEARCH;
    settings.search.interval = SEARCH / 4;
    return settings;
}

/// A projector on loopback; number 1 has the MAC address 02:00:00:00:00:01. Numbers up to 99.
inline std::string device(int port, int number) {
    return "<Device type='PJLink' mac='02:00:00:00:00:" + std::to_string(number / 10) + std::to_string(number % 10) +
           "' host='127.0.0.1' port='" + std::to_string(port) + "'/>";
}

inline std::string entry(const std::string& id, const std::string& snippet) {
    return displays::projector(id, "<Device>" + snippet + "</Device>");
}

inline std::unique_ptr<XMLConfigFile> configOf(const std::string& entries) {
    return displays::parsed("", entries);
}

/// A port at which nobody is: that of a simulator that has ended.
inline int deadPort() {
    return PjlinkSimulator().port();
}

/// The lines that change something.
inline std::vector<std::string> orders(const PjlinkSimulator& projector) {
    std::vector<std::string> lines = projector.lines();
    lines.erase(std::remove_if(lines.begin(), lines.end(), [](const std::string& line) { return line.ends_with('?'); }),
                lines.end());
    return lines;
}

}  // namespace projector_testing

#include "DisplayReport/check/DisplayCheck.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/check/ChannelCheck.h"
#include "DisplayReport/check/ScreenCheck.h"

#include <sstream>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// One fault per line of the message, as the reader of configurations words them.
void addParseFaults(const VeltraniParseException& fault, std::vector<Fault>& faults) {
    std::istringstream lines(toUtf8(fault.message));
    for (std::string line; std::getline(lines, line);) {
        faults.push_back({"configuration", line, {}});
    }
}

std::string unitsOf(const XMLConfigManager& config) {
    const IUnitsConfig* units = config.getNativeUnitsConfig();
    return units == nullptr ? "not configured" : toUtf8(units->getUnitName());
}

}  // namespace

DisplayDescription DisplayCheck::ofFile(const std::string& utf8Path) {
    DisplayDescription description;
    try {
        const auto config = XMLConfigFile::load(utf8Path);
        description = ofConfiguration(*config);
    } catch (const VeltraniParseException& fault) {
        description.readable = false;
        addParseFaults(fault, description.faults);
    } catch (const VeltraniMissingFileException&) {
        description.readable = false;
        description.faults.push_back(faultOf("configuration", std::current_exception()));
    }
    description.file = utf8Path;
    description.facts.insert(description.facts.begin(), {"display", utf8Path});
    return description;
}

DisplayDescription DisplayCheck::ofConfiguration(XMLConfigManager& config) {
    DisplayDescription description;
    ScreenCheck::run(config, description);
    description.facts.push_back({"units", unitsOf(config)});
    ChannelCheck::run(config, description);
    return description;
}

}  // namespace Veltrani::DisplayReport

#include "DisplayReport/check/DisplayCheck.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/check/ChannelCheck.h"
#include "DisplayReport/check/DisplayFacts.h"
#include "DisplayReport/check/FindingList.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/ScreenCheck.h"
#include "ScreenManager/DisplayKinds.h"

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

/// A misspelt name would silence nothing, and nobody would see it.
void judgeNames(const std::string& where, const std::string& allowed, FindingList& found) {
    for (const std::string& name : wordsOf(allowed)) {
        if (!Rule::canBeAllowed(name)) {
            found.add(
                Rule::named("unknown-rule"), where, {},
                "it allows " + inQuotes(name) + ", which no rule is called: expected some of " + Rule::namesToAllow());
        }
    }
}

/// What is not judged where no light is measured.
std::vector<std::string> rulesThatNeedLight(const DisplayFacts& facts) {
    const bool isFromEye = facts.kind != nullptr && facts.kind->addressedBy == DisplayKind::Addressing::EYE;
    std::vector<std::string> names;
    for (const Rule& rule : Rule::all()) {
        if (rule.light == Rule::Light::NEEDED || (rule.light == Rule::Light::NEEDED_UNLESS_FROM_EYE && !isFromEye)) {
            names.emplace_back(rule.name);
        }
    }
    return names;
}

void judge(const DisplayFacts& facts, const CheckOptions& options, DisplayDescription& description) {
    FindingList found(description.findings, options.allowed);
    judgeNames("screen", facts.allowed, found);
    for (const ChannelFacts& channel : facts.channels) {
        judgeNames(channel.where(), channel.allowed(), found);
    }
    judgeScreen(facts, found);
    judgeSurface(facts, found);
    judgePictures(facts, found);
    judgePlace(facts, found);
    judgeMeasured(facts, found);
    judgeChannels(facts, found);
    judgeLight(facts, found);
    judgeDevices(facts, found);
    judgeSets(facts, found);
    judgeGroups(facts, found);
    judgeNamedSides(facts, found);
}

}  // namespace

DisplayDescription DisplayCheck::ofFile(const std::string& utf8Path, const CheckOptions& options) {
    DisplayDescription description;
    try {
        const auto config = XMLConfigFile::load(utf8Path);
        description = ofConfiguration(*config, options);
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

DisplayDescription DisplayCheck::ofConfiguration(XMLConfigManager& config, const CheckOptions& options) {
    DisplayDescription description;
    ScreenCheck::run(config, description);
    description.facts.push_back({"units", unitsOf(config)});
    const DisplayFacts facts = DisplayFacts::of(config, options.quick);
    ChannelCheck::run(config, facts, description);
    judge(facts, options, description);
    if (options.quick) {
        description.leftOut = rulesThatNeedLight(facts);
    }
    return description;
}

}  // namespace Veltrani::DisplayReport

#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigFile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

/// Any bytes are either refused with messages of the one form, or give a configuration that can be changed, written
/// and read again as the same.
namespace {

const std::string NAME = "f";

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void checkMessage(const std::wstring& message) {
    std::size_t begin = 0;
    while (begin <= message.size()) {
        const std::size_t end = std::min(message.find(L'\n', begin), message.size());
        const std::wstring line = message.substr(begin, end - begin);
        require(line.rfind(L"f:", 0) == 0 || line.rfind(L"(and ", 0) == 0);
        begin = end + 1;
    }
}

void checkScreen(const IScreenConfig& screen) {
    require(!screen.getShape().empty());
    require(screen.getScale() > 0.0);
    require(std::isfinite(screen.getRadius()) && screen.getRadius() >= 0.0);
    require(screen.getAzimuthMin() <= screen.getAzimuthMax());
    require(screen.getElevationMin() <= screen.getElevationMax());
    require(screen.getLowerRail().size() == screen.getUpperRail().size());
}

void checkTarget(const TargetLocatorConfig& target) {
    require(std::isfinite(target.getMirrorRadius()));
    const auto table = target.getYawTable();
    for (std::size_t i = 1; i < table.size(); ++i) {
        require(table[i - 1].first < table[i].first && table[i - 1].second < table[i].second);
    }
}

void checkSame(const XMLConfigFile& config) {
    const std::string text = config.text();
    const auto again = XMLConfigFile::parse(text, NAME);
    require(again->text() == text);
    require(again->getProjectorConfigIds() == config.getProjectorConfigIds());
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const a = config.getProjectorConfig(id);
        const ProjectorConfig* const b = again->getProjectorConfig(id);
        require(a->getName() == b->getName() && a->getSectionID() == b->getSectionID());
        require(a->getDeviceSnippet() == b->getDeviceSnippet() && a->getOldUID() == b->getOldUID());
        require(a->getPosition() == b->getPosition() && a->getScreenLeft() == b->getScreenLeft());
    }
}

void change(XMLConfigFile& config) {
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        ProjectorConfig* const entry = config.getProjectorConfig(id);
        const std::wstring snippet = entry->getDeviceSnippet();
        entry->setName(L" <" + id + L">\n");
        entry->setWidth(1920);
        entry->setHeight(1200);
        entry->setPondOfMirror(3, 14);
        entry->setDeviceSnippet(L"");
        entry->setDeviceSnippet(snippet);
        require(entry->getDeviceSnippet() == snippet);
        require(config.renameProjectorConfig(id, id + L"'") || config.getProjectorConfig(id + L"'") != nullptr);
        config.moveProjectorConfig(entry->getIdentity(), 1);
    }
    if (config.getProjectorConfig(L"added") == nullptr) {
        config.addProjectorConfig(L"added")->setDeviceSnippet(L"<Device/>");
    }
    checkSame(config);
    require(config.removeProjectorConfig(config.getProjectorConfigIds().front()));
    checkSame(config);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::unique_ptr<XMLConfigFile> config;
    try {
        config = XMLConfigFile::parse({reinterpret_cast<const char*>(data), size}, NAME);
    } catch (const VeltraniParseException& fault) {
        checkMessage(fault.message);
        return 0;
    }
    if (config->getScreenConfig() != nullptr) {
        checkScreen(*config->getScreenConfig());
    }
    if (config->getTargetLocatorConfig() != nullptr) {
        checkTarget(*config->getTargetLocatorConfig());
    }
    checkSame(*config);
    change(*config);
    return 0;
}

#include "DisplayState.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/NamedFiles.h"
#include "DisplayReport/basics/ReportHead.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/ScreenMapper.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <sstream>
#include <utility>
#include <vector>

using namespace Veltrani::DisplayReport;

namespace {

/// Whether a file holds the configuration as it is.
bool holds(const std::string& path, const XMLConfigFile& config) {
    try {
        return XMLConfigFile::load(path)->text() == config.text();
    } catch (const VeltraniException&) {
        return false;
    }
}

}  // namespace

DisplayState::DisplayState(std::unique_ptr<XMLConfigFile> config) : m_config(std::move(config)) {}

DisplayState::~DisplayState() = default;

void DisplayState::makeCurrent() {
    ScreenManager::getInstance()->getScreen() = m_screen;
    // Locators are kept by the ids of projectors, which two displays may share, and remember outlines.
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
}

void DisplayState::clearCurrent() {
    ScreenManager::getInstance()->resetScreen();
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
}

ProjectorConfig& DisplayState::channel(const std::wstring& id) {
    static_cast<void>(choice(id));
    return *m_config->getProjectorConfig(id);
}

ChannelChoice DisplayState::choice(const std::wstring& id) {
    if (m_config->getProjectorConfig(id) == nullptr) {
        throw VeltraniException(L"the channel \"" + id +
                                L"\" is no longer in the display: it was removed or has another id");
    }
    return ChannelChoice::of(*m_config, Veltrani::toUtf8(id));
}

std::vector<SourceFile> DisplayState::sources(const std::string& path, const std::string& digest) const {
    if (holds(path, *m_config)) {
        return ReportHead::sourcesOf(path);
    }
    std::vector<SourceFile> files{{path, digest}};
    for (const std::wstring& file : filesOf(*m_config)) {
        files.push_back(ReportHead::source(Veltrani::toUtf8(file)));
    }
    return files;
}

void DisplayState::channelsChanged() {
    m_maps.clear();
}

void DisplayState::screenChanged() {
    m_isScreenBuilt = false;
    channelsChanged();
}

void DisplayState::requireScreen() {
    if (m_isScreenBuilt) {
        return;
    }
    m_maps.clear();
    const std::vector<Fault> faults = ScreenLoader::load(*m_config);
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    if (!faults.empty()) {
        std::ostringstream lines;
        for (const Fault& fault : faults) {
            lines << (lines.tellp() > 0 ? "\n" : "") << fault;
        }
        throw VeltraniException(Veltrani::fromUtf8OrBytes(lines.str()));
    }
    adoptScreen();
}

void DisplayState::adoptScreen() {
    m_screen = ScreenManager::getInstance()->getScreen();
    m_isScreenBuilt = true;
}

std::shared_ptr<ScreenGeometry> DisplayState::surface(Part part) {
    requireScreen();
    if (part == Part::MEASURED) {
        return m_screen.getMeasured();
    }
    auto surface = part == Part::CONTENT ? m_screen.getContent() : m_screen.getPreferredScreen();
    if (!surface) {
        throw VeltraniException(L"the display has no screen");
    }
    return surface;
}

std::shared_ptr<const Screen::PointCloud> DisplayState::cloud() {
    requireScreen();
    return m_screen.getModelPCD();
}

PointMap& DisplayState::mapOf(const std::wstring& id, Space space, bool useCache) {
    const ChannelChoice channel = choice(id);
    if (space == Space::SCREEN || LayoutMapper::needsScreen(*m_config)) {
        requireScreen();
    }
    const bool isCached = useCache && space == Space::LAYOUT;
    std::unique_ptr<PointMap>& map = m_maps[{id, space, isCached}];
    if (!map) {
        if (space == Space::SCREEN) {
            map = std::make_unique<ScreenMapper>(*m_config, channel);
        } else {
            map = std::make_unique<LayoutMapper>(*m_config, channel, isCached);
        }
    }
    return *map;
}

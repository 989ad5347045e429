#include "DisplayReport/basics/NamedFiles.h"

#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"

namespace Veltrani::DisplayReport {

namespace {

void addIfNamed(const std::wstring& file, std::vector<std::wstring>& files) {
    if (!file.empty()) {
        files.push_back(file);
    }
}

void addScreenFiles(const IScreenConfig& screen, std::vector<std::wstring>& files) {
    files = contentMeshesOf(screen);
    addIfNamed(screen.getMeasuredMeshFile(0), files);
    addIfNamed(screen.getModelPcdFile(0), files);
}

}  // namespace

std::vector<std::wstring> contentMeshesOf(const IScreenConfig& screen) {
    std::vector<std::wstring> files;
    std::wstring file = screen.getContentMeshFile(0);
    // A service that knows one mesh alone returns it whatever the number is.
    while (!file.empty() && (files.empty() || file != files.back())) {
        files.push_back(file);
        file = screen.getContentMeshFile(static_cast<int>(files.size()));
    }
    return files;
}

std::vector<std::wstring> filesOf(const XMLConfigManager& config) {
    std::vector<std::wstring> files;
    if (const IScreenConfig* screen = config.getScreenConfig()) {
        addScreenFiles(*screen, files);
    }
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;
        }
        if (const std::wstring map = projector->getCustomPlanarFile(); !map.empty()) {
            files.push_back(config.processPath(map));
        }
        const std::wstring model = projector->getProjectionModelName();
        if (const auto colon = model.find(L':'); colon != std::wstring::npos) {
            addIfNamed(model.substr(colon + 1), files);
        }
    }
    return files;
}

}  // namespace Veltrani::DisplayReport

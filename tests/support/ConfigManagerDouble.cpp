#include "support/ConfigManagerDouble.h"

#include <algorithm>

std::vector<std::wstring> ConfigManagerDouble::getProjectorConfigIds() const {
    record("getProjectorConfigIds");
    std::vector<std::wstring> ids;
    for (const ProjectorConfigDouble* projector : projectors) {
        ids.push_back(projector->identity);
    }
    return ids;
}

ProjectorConfig* ConfigManagerDouble::getProjectorConfig(const std::wstring& id) const {
    record("getProjectorConfig", id);
    const std::size_t place = placeOf(id);
    return place < projectors.size() ? projectors[place] : nullptr;
}

bool ConfigManagerDouble::renameProjectorConfig(const std::wstring& oldId, const std::wstring& newId) {
    record("renameProjectorConfig", oldId, newId);
    const std::size_t place = placeOf(oldId);
    if (oldId != newId && placeOf(newId) < projectors.size()) {
        return false;
    }
    if (oldId != newId && place < projectors.size()) {
        projectors[place]->oldUid = oldId;
        projectors[place]->identity = newId;
    }
    return true;
}

bool ConfigManagerDouble::moveProjectorConfig(const std::wstring& id, int direction) {
    record("moveProjectorConfig", id, direction);
    const std::size_t place = placeOf(id);
    if (direction == 1 && place + 1 < projectors.size()) {
        std::swap(projectors[place], projectors[place + 1]);
        return true;
    }
    if (direction == -1 && place > 0 && place < projectors.size()) {
        std::swap(projectors[place], projectors[place - 1]);
        return true;
    }
    return false;
}

bool ConfigManagerDouble::removeProjectorConfig(const std::wstring& id) {
    record("removeProjectorConfig", id);
    const std::size_t place = placeOf(id);
    if (place == projectors.size()) {
        return false;
    }
    projectors.erase(projectors.begin() + static_cast<std::ptrdiff_t>(place));
    return true;
}

const IScreenConfig* ConfigManagerDouble::getScreenConfig() const {
    record("getScreenConfig");
    return screen;
}

const IUnitsConfig* ConfigManagerDouble::getNativeUnitsConfig() const {
    record("getNativeUnitsConfig");
    return units;
}

const TargetLocatorConfig* ConfigManagerDouble::getTargetLocatorConfig() const {
    record("getTargetLocatorConfig");
    return targetLocators;
}

std::wstring ConfigManagerDouble::processPath(const std::wstring& name) const {
    record("processPath", name);
    if (name.empty()) {
        return folder;
    }
    return name.front() == L'/' || folder.empty() ? name : folder + L"/" + name;
}

std::size_t ConfigManagerDouble::placeOf(const std::wstring& id) const {
    const auto found = std::find_if(projectors.begin(), projectors.end(),
                                    [&](const ProjectorConfigDouble* projector) { return projector->identity == id; });
    return static_cast<std::size_t>(found - projectors.begin());
}

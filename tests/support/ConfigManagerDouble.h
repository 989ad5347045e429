#pragma once

#include "Configuration/XMLConfigManager.h"
#include "support/ProjectorConfigDouble.h"
#include "support/Recorder.h"

/// A configuration made of doubles, none of which it owns. Projector entries are found, renamed, moved and removed as
/// in a real one.
class ConfigManagerDouble : public XMLConfigManager, public Recorder {
public:
    explicit ConfigManagerDouble(Trace* trace = nullptr) : Recorder("config", trace) {}

    std::vector<ProjectorConfigDouble*> projectors;
    const IScreenConfig* screen = nullptr;
    const IUnitsConfig* units = nullptr;
    const TargetLocatorConfig* targetLocators = nullptr;
    /// Folder of the configuration; empty when it has none.
    std::wstring folder;
    /// What `mayHaveOldUIDs` returns; not recorded.
    bool oldUIDs = true;

    std::vector<std::wstring> getProjectorConfigIds() const override;
    ProjectorConfig* getProjectorConfig(const std::wstring& id) const override;
    bool renameProjectorConfig(const std::wstring& oldId, const std::wstring& newId) override;
    bool moveProjectorConfig(const std::wstring& id, int direction) override;
    bool removeProjectorConfig(const std::wstring& id) override;
    const IScreenConfig* getScreenConfig() const override;
    const IUnitsConfig* getNativeUnitsConfig() const override;
    const TargetLocatorConfig* getTargetLocatorConfig() const override;
    std::wstring processPath(const std::wstring& name) const override;
    bool mayHaveOldUIDs() const override { return oldUIDs; }

private:
    [[nodiscard]] std::size_t placeOf(const std::wstring& id) const;
};

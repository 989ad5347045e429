#pragma once

#include <string>
#include <vector>

class IScreenConfig;
class IUnitsConfig;
class ProjectorConfig;
class TargetLocatorConfig;

/// The configuration of a display: its screen, its units, its target data and one entry per projector.
///
/// Everything that a pointer leads to belongs to the configuration. Every call may throw an exception of the suite.
class XMLConfigManager {
public:
    virtual ~XMLConfigManager() = default;

    /// Returns the ids of all projector entries, in configuration order.
    [[nodiscard]] virtual std::vector<std::wstring> getProjectorConfigIds() const = 0;
    /// Returns the entry with this id; null when there is none.
    [[nodiscard]] virtual ProjectorConfig* getProjectorConfig(const std::wstring& id) const = 0;
    /// Gives an entry a new id and keeps the old one as its old UID. Renaming to the same id returns true and changes
    /// nothing; false is returned exactly when another entry has the new id.
    virtual bool renameProjectorConfig(const std::wstring& oldId, const std::wstring& newId) = 0;
    /// Moves an entry by one place: 1 later, -1 earlier. Any other direction, or a move past either end, does nothing.
    virtual bool moveProjectorConfig(const std::wstring& id, int direction) = 0;
    /// Removes and destroys an entry; returns false when there is none with this id.
    virtual bool removeProjectorConfig(const std::wstring& id) = 0;
    /// Returns the description of the screen; null when there is none.
    [[nodiscard]] virtual const IScreenConfig* getScreenConfig() const = 0;
    /// Returns the native units; null when there are none.
    [[nodiscard]] virtual const IUnitsConfig* getNativeUnitsConfig() const = 0;
    /// What the target locators have in common; null when there is nothing.
    [[nodiscard]] virtual const TargetLocatorConfig* getTargetLocatorConfig() const = 0;
    /// Returns a file name resolved against the folder of the configuration. Absolute names stay; for an empty name the
    /// folder itself is returned, or an empty text when the configuration has no folder.
    [[nodiscard]] virtual std::wstring processPath(const std::wstring& name) const = 0;
    /// Returns false only when no entry has an old UID: a search for one need not query every entry then.
    [[nodiscard]] virtual bool mayHaveOldUIDs() const { return true; }
};

#pragma once

#include "Configuration/XMLConfigManager.h"

#include <memory>
#include <string>
#include <string_view>

/// A display configuration in an XML file; `docs/configuration.md` describes the format.
///
/// The document is kept as it was read: comments, order, and elements and attributes in a foreign namespace survive
/// changes and saves, and so does the text of every value that was not changed. All paths and names are UTF-8. Reading
/// and writing do not depend on the locale. Nothing is fetched and no entity is expanded. What the setters of the
/// records do is described in `docs/writing-back.md`.
///
/// ```
/// const std::unique_ptr<XMLConfigFile> config = XMLConfigFile::load("dome/display.xml");
/// config->addProjectorConfig(L"left")->setName(L"Left");
/// config->save("dome/display.xml");
/// ```
class XMLConfigFile : public XMLConfigManager {
public:
    /// Reads a file of at most 32 MiB. File names in it are resolved against its folder.
    ///
    /// Throws `VeltraniMissingFileException` when there is no readable regular file at the path, and
    /// `VeltraniParseException` when its content is faulty; the message then reports every fault on a line of its own:
    /// `path:line: <element>: found ..., expected ...; remedy`.
    [[nodiscard]] static std::unique_ptr<XMLConfigFile> load(const std::string& utf8Path);

    /// Reads a text, as `load` does the content of a file.
    ///
    /// @param name stands for the path in messages; file names are resolved against its folder part, and stay as they
    ///        are when it has none
    [[nodiscard]] static std::unique_ptr<XMLConfigFile> parse(std::string_view text, const std::string& name);

    ~XMLConfigFile() override;
    XMLConfigFile(const XMLConfigFile&) = delete;
    XMLConfigFile& operator=(const XMLConfigFile&) = delete;

    /// Writes the document to a file in one step: after a crash the file is the old one or the new one. An existing
    /// file keeps its mode, a symbolic link stays one. Does not change the folder that file names are resolved against.
    ///
    /// No change made elsewhere is lost: the file that the document was loaded from, and the last other one that it was
    /// saved to, are replaced only while they hold, byte for byte, what this object last read from or saved to them;
    /// otherwise `ConfigurationChangedException` is thrown. Between the comparison and the replacement the file is
    /// locked (`FileLock`), so that this holds between any number of processes and objects. Any other file is replaced
    /// whatever it holds, and so is every file by a document that was parsed from a text.
    ///
    /// Throws `VeltraniException` naming the path and the cause; the file is then untouched. What `load` would refuse
    /// (a document beyond its limits) is not written, and neither is a file with several names (hard links).
    void save(const std::string& utf8Path) const;

    /// Throws what `save` throws for a file with several names (hard links): before work that would be lost then.
    static void requireOneName(const std::string& utf8Path);

    /// Returns the text that `save` writes.
    [[nodiscard]] std::string text() const;

    /// Returns the document as it is to be saved at another path: every relative file name in it is rewritten so that
    /// it leads to the same file from the folder of that path, without examining the file. Where both folders are one,
    /// nothing is changed. The names stay as they are behind what leads to the old folder, since links may be on their
    /// way. What the new object saves, there or elsewhere, counts as a file that it has not read.
    ///
    /// Throws `VeltraniException` naming the folder where one of the two does not exist.
    [[nodiscard]] std::unique_ptr<XMLConfigFile> movedTo(const std::string& utf8Path) const;

    /// Adds an entry behind the others, with nothing configured but its id. Throws `VeltraniException`, and changes
    /// nothing, when the id is empty, taken, or holds characters that XML cannot store.
    ProjectorConfig* addProjectorConfig(const std::wstring& id);

    [[nodiscard]] std::vector<std::wstring> getProjectorConfigIds() const override;
    [[nodiscard]] ProjectorConfig* getProjectorConfig(const std::wstring& id) const override;

    /// Checks in this order: returns true when both ids are the same, whether there is such an entry or not, and false
    /// when another entry has the new id. Throws `VeltraniException`, and changes nothing, when there is no entry with
    /// the old id or the new one is empty or cannot be stored. The entry's name and section stay what they were.
    bool renameProjectorConfig(const std::wstring& oldId, const std::wstring& newId) override;

    /// Returns true when the entry was moved. Comments on the lines above an entry and behind it on its line move with
    /// it.
    bool moveProjectorConfig(const std::wstring& id, int direction) override;

    /// Comments stay.
    bool removeProjectorConfig(const std::wstring& id) override;

    [[nodiscard]] const IScreenConfig* getScreenConfig() const override;
    /// Never null: every configuration states its native unit.
    [[nodiscard]] const IUnitsConfig* getNativeUnitsConfig() const override;
    [[nodiscard]] const TargetLocatorConfig* getTargetLocatorConfig() const override;
    [[nodiscard]] std::wstring processPath(const std::wstring& name) const override;
    [[nodiscard]] bool mayHaveOldUIDs() const override;

    /// Returns the record of `getScreenConfig` to be changed; null when there is none. A changed eye point is that of
    /// the channels and the target data that state no position of their own, too.
    [[nodiscard]] IScreenConfig* getMutableScreenConfig();
    /// Returns the record of `getTargetLocatorConfig` to be changed; null when there is none.
    [[nodiscard]] TargetLocatorConfig* getMutableTargetLocatorConfig();

private:
    struct Impl;
    explicit XMLConfigFile(std::unique_ptr<Impl> impl);

    std::unique_ptr<Impl> m_impl;
};

#include "Configuration/XMLConfigFile.h"

#include "Common/AtomicFile.h"
#include "Common/FileLock.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/FaultList.h"
#include "Configuration/detail/FileNames.h"
#include "Configuration/detail/FolderPath.h"
#include "Configuration/detail/FormatChecker.h"
#include "Configuration/detail/KnownFiles.h"
#include "Configuration/detail/MeaningChecker.h"
#include "Configuration/detail/NodePlacement.h"
#include "Configuration/detail/ValueText.h"
#include "Configuration/detail/XmlDisplayConfigs.h"
#include "Configuration/detail/XmlDocument.h"
#include "Configuration/detail/XmlNode.h"
#include "Configuration/detail/XmlProjectorConfig.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

using Veltrani::ConfigurationDetail::DisplayContext;
using Veltrani::ConfigurationDetail::ElementReader;
using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::FolderPath;
using Veltrani::ConfigurationDetail::KnownFiles;
using Veltrani::ConfigurationDetail::XmlDocument;
using Veltrani::ConfigurationDetail::XmlProjectorConfig;
using Veltrani::ConfigurationDetail::XmlScreenConfig;
using Veltrani::ConfigurationDetail::XmlTargetLocatorConfig;
using Veltrani::ConfigurationDetail::XmlUnitsConfig;
namespace Xml = Veltrani::ConfigurationDetail::Xml;

namespace {

constexpr int LATER = 1;
constexpr int EARLIER = -1;

/// A document without a fault, or every fault in `faults`.
XmlDocument checkedDocument(std::string_view text, FaultList& faults) {
    XmlDocument document = XmlDocument::parse(text, faults);
    if (document.root() != nullptr) {
        Veltrani::ConfigurationDetail::FormatChecker::check(document.root(), faults);
        Veltrani::ConfigurationDetail::MeaningChecker::check(document.root(), faults);
    }
    return document;
}

}  // namespace

struct XMLConfigFile::Impl {
    using Entries = std::vector<std::unique_ptr<XmlProjectorConfig>>;

    Impl(XmlDocument checked, FolderPath folderOfFile);
    void addEntry(xmlNode* element);
    [[nodiscard]] XmlProjectorConfig* find(const std::wstring& id) const;
    [[nodiscard]] Entries::iterator position(const XmlProjectorConfig* entry);
    [[nodiscard]] xmlNode* projectorsToWrite();

    XmlDocument document;
    DisplayContext display;  // the records refer to it
    std::unique_ptr<XmlUnitsConfig> units;
    std::unique_ptr<XmlScreenConfig> screen;
    std::unique_ptr<XmlTargetLocatorConfig> targetData;
    Entries entries;  // configuration order
    std::unordered_map<std::wstring, XmlProjectorConfig*> byId;
    KnownFiles files;
};

XMLConfigFile::Impl::Impl(XmlDocument checked, FolderPath folderOfFile)
    : document(std::move(checked)),
      display(ElementReader::ofDisplay(document.root()), std::move(folderOfFile)),
      units(std::make_unique<XmlUnitsConfig>(Xml::child(document.root(), "Units"))) {
    if (xmlNode* element = Xml::child(document.root(), "Screen")) {
        screen = std::make_unique<XmlScreenConfig>(element, display, units->getUnitName());
    }
    if (xmlNode* element = Xml::child(document.root(), "TargetData")) {
        targetData = std::make_unique<XmlTargetLocatorConfig>(element, display);
    }
    for (xmlNode* element : Xml::children(Xml::child(document.root(), "Projectors"), "Projector")) {
        addEntry(element);
    }
}

void XMLConfigFile::Impl::addEntry(xmlNode* element) {
    entries.push_back(std::make_unique<XmlProjectorConfig>(element, display));
    byId.emplace(entries.back()->getIdentity(), entries.back().get());
}

XmlProjectorConfig* XMLConfigFile::Impl::find(const std::wstring& id) const {
    const auto found = byId.find(id);
    return found == byId.end() ? nullptr : found->second;
}

XMLConfigFile::Impl::Entries::iterator XMLConfigFile::Impl::position(const XmlProjectorConfig* entry) {
    return std::find_if(entries.begin(), entries.end(), [&](const auto& owned) { return owned.get() == entry; });
}

xmlNode* XMLConfigFile::Impl::projectorsToWrite() {
    if (xmlNode* existing = Xml::child(document.root(), "Projectors")) {
        return existing;
    }
    xmlNode* const added = Xml::newElement(document.root()->doc, "Projectors");
    Xml::appendIndented(document.root(), added);
    return added;
}

std::unique_ptr<XMLConfigFile> XMLConfigFile::load(const std::string& utf8Path) {
    // The files that it names are looked for beside it, by wide names that could not lead there.
    if (!utf8Path.empty() && Veltrani::fromUtf8(utf8Path).empty()) {
        throw VeltraniMissingFileException(Veltrani::fromUtf8OrBytes(utf8Path) +
                                           L": the name of the file or of a folder on the way is not UTF-8: rename it");
    }
    std::string content = Veltrani::RegularFile(utf8Path).readAll(XmlDocument::LARGEST_BYTES);
    std::unique_ptr<XMLConfigFile> config = parse(content, utf8Path);
    config->m_impl->files.addRead(utf8Path, std::move(content));
    return config;
}

std::unique_ptr<XMLConfigFile> XMLConfigFile::parse(std::string_view text, const std::string& name) {
    FaultList faults(name);
    XmlDocument document = checkedDocument(text, faults);
    faults.throwIfAny();
    auto impl = std::make_unique<Impl>(std::move(document), FolderPath::ofFile(Veltrani::fromUtf8OrBytes(name)));
    return std::unique_ptr<XMLConfigFile>(new XMLConfigFile(std::move(impl)));
}

XMLConfigFile::XMLConfigFile(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

XMLConfigFile::~XMLConfigFile() = default;

/// A new file takes the place of one name; the others would still lead to the old one.
void XMLConfigFile::requireOneName(const std::string& utf8Path) {
    std::error_code unknown;
    const auto names = std::filesystem::hard_link_count(utf8Path, unknown);
    if (!unknown && names > 1) {
        throw VeltraniException(
            __FILE__, __LINE__,
            Veltrani::fromUtf8OrBytes(utf8Path) + L": the file has " + std::to_wstring(names) +
                L" names (hard links), which a save would part, and was not replaced; save to another path, or "
                L"rename a copy over it, which parts them, then repeat the change");
    }
}

void XMLConfigFile::save(const std::string& utf8Path) const {
    std::string content = text();
    FaultList faults(utf8Path);
    static_cast<void>(checkedDocument(content, faults));
    if (!faults.empty()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The configuration cannot be saved, it could not be read again: " + faults.message());
    }
    Veltrani::AtomicFile file(utf8Path);
    file.write(content);
    // Held until the end: who waits for the old file then finds the new one.
    std::optional<Veltrani::FileLock> lock;
    file.commit([&] {
        lock.emplace(file.target());
        requireOneName(utf8Path);
        m_impl->files.requireUnchanged(utf8Path, file.target());
    });
    m_impl->files.addSaved(utf8Path, std::move(content));
}

std::string XMLConfigFile::text() const {
    return m_impl->document.text();
}

std::unique_ptr<XMLConfigFile> XMLConfigFile::movedTo(const std::string& utf8Path) const {
    FaultList faults(utf8Path);
    XmlDocument document = checkedDocument(text(), faults);
    faults.throwIfAny();
    FolderPath folder = FolderPath::ofFile(Veltrani::fromUtf8OrBytes(utf8Path));
    const std::string way = Veltrani::ConfigurationDetail::FileNames::wayBetween(folder, m_impl->display.folder);
    if (!way.empty()) {
        Veltrani::ConfigurationDetail::FileNames::prefix(document.root(), way);
    }
    auto impl = std::make_unique<Impl>(std::move(document), std::move(folder));
    return std::unique_ptr<XMLConfigFile>(new XMLConfigFile(std::move(impl)));
}

ProjectorConfig* XMLConfigFile::addProjectorConfig(const std::wstring& id) {
    if (id.empty()) {
        throw VeltraniException(__FILE__, __LINE__, L"A projector cannot be added with an empty id");
    }
    if (m_impl->find(id) != nullptr) {
        throw VeltraniException(__FILE__, __LINE__, L"A projector \"" + id + L"\" is in the configuration already");
    }
    const std::string text = Veltrani::ConfigurationDetail::xmlText(id, L"The id of a new projector");
    xmlNode* const parent = m_impl->projectorsToWrite();
    xmlNode* const element = Xml::newElement(parent->doc, "Projector");
    Xml::setAttribute(element, "id", text);
    Xml::appendIndented(parent, element);
    m_impl->addEntry(element);
    return m_impl->entries.back().get();
}

std::vector<std::wstring> XMLConfigFile::getProjectorConfigIds() const {
    std::vector<std::wstring> ids;
    for (const auto& entry : m_impl->entries) {
        ids.push_back(entry->getIdentity());
    }
    return ids;
}

ProjectorConfig* XMLConfigFile::getProjectorConfig(const std::wstring& id) const {
    return m_impl->find(id);
}

bool XMLConfigFile::mayHaveOldUIDs() const {
    return std::any_of(m_impl->entries.begin(), m_impl->entries.end(),
                       [](const auto& entry) { return !entry->getOldUID().empty(); });
}

bool XMLConfigFile::renameProjectorConfig(const std::wstring& oldId, const std::wstring& newId) {
    if (oldId == newId) {
        return true;
    }
    if (m_impl->find(newId) != nullptr) {
        return false;
    }
    XmlProjectorConfig* const entry = m_impl->find(oldId);
    if (entry == nullptr || newId.empty()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The projector \"" + oldId + L"\" cannot be renamed to \"" + newId + L"\": " +
                                    (newId.empty() ? L"an id is never empty" : L"there is no such projector"));
    }
    entry->rename(newId);
    m_impl->byId.erase(oldId);
    m_impl->byId.emplace(newId, entry);
    return true;
}

bool XMLConfigFile::moveProjectorConfig(const std::wstring& id, int direction) {
    const auto from = m_impl->position(m_impl->find(id));
    auto& entries = m_impl->entries;
    const bool canMove = (direction == LATER && from != entries.end() && from + 1 != entries.end()) ||
                         (direction == EARLIER && from != entries.end() && from != entries.begin());
    if (!canMove) {
        return false;
    }
    const auto to = from + direction;
    const auto first = std::min(from, to);
    const auto second = std::max(from, to);
    Xml::exchange((*first)->element(), (*second)->element());
    std::iter_swap(first, second);
    return true;
}

bool XMLConfigFile::removeProjectorConfig(const std::wstring& id) {
    const auto entry = m_impl->position(m_impl->find(id));
    if (entry == m_impl->entries.end()) {
        return false;
    }
    Xml::removeIndented((*entry)->element());
    m_impl->byId.erase(id);
    m_impl->entries.erase(entry);
    return true;
}

const IScreenConfig* XMLConfigFile::getScreenConfig() const {
    return m_impl->screen.get();
}

const IUnitsConfig* XMLConfigFile::getNativeUnitsConfig() const {
    return m_impl->units.get();
}

const TargetLocatorConfig* XMLConfigFile::getTargetLocatorConfig() const {
    return m_impl->targetData.get();
}

std::wstring XMLConfigFile::processPath(const std::wstring& name) const {
    return m_impl->display.folder.resolve(name);
}

IScreenConfig* XMLConfigFile::getMutableScreenConfig() {
    return m_impl->screen.get();
}

TargetLocatorConfig* XMLConfigFile::getMutableTargetLocatorConfig() {
    return m_impl->targetData.get();
}

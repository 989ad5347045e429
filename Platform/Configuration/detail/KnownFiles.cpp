#include "Configuration/detail/KnownFiles.h"

#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Configuration/ConfigurationChangedException.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace Veltrani::ConfigurationDetail {

namespace {

namespace fs = std::filesystem;

/// Returns the place where the file is, or was: the folder stays when the file has gone.
fs::path placeOf(const fs::path& named) {
    std::error_code unknown;
    fs::path place = fs::canonical(named, unknown);
    if (!unknown) {
        return place;
    }
    const fs::path folder = fs::canonical(named.parent_path(), unknown);
    return unknown ? named : folder / named.filename();
}

[[noreturn]] void refuseChanged(const std::string& path) {
    throw ConfigurationChangedException(
        fromUtf8OrBytes(path) +
            L": the file was changed by somebody else after it had been read, and was not replaced; read it again, "
            L"then repeat the change",
        false);
}

[[noreturn]] void refuseGone(const std::string& path) {
    throw ConfigurationChangedException(
        fromUtf8OrBytes(path) +
            L": the file was removed by somebody else after it had been read, and was not made anew; bring it back, "
            L"read it again, then repeat the change",
        true);
}

bool holds(const std::string& path, const std::string& content) {
    return RegularFile(path).readAll(content.size()) == content;
}

}  // namespace

KnownFiles::File KnownFiles::fileAt(const std::string& utf8Path, const std::string& target) {
    std::error_code unknown;
    return {fs::absolute(utf8Path, unknown).string(), placeOf(fs::absolute(target, unknown)).string(), {}};
}

bool KnownFiles::isSame(const std::optional<File>& known, const File& file) {
    return known && (known->named == file.named || known->place == file.place);
}

void KnownFiles::addRead(const std::string& utf8Path, std::string content) {
    m_read = fileAt(utf8Path, utf8Path);
    m_read->content = std::move(content);
}

void KnownFiles::addSaved(const std::string& utf8Path, std::string content) {
    File file = fileAt(utf8Path, utf8Path);
    file.content = std::move(content);
    if (isSame(m_saved, file)) {
        m_saved.reset();
    }
    if (isSame(m_read, file)) {
        // It stays known by the name under which it was read: links on that way may lead elsewhere one day.
        file.named = m_read->named;
        m_read = std::move(file);
    } else {
        m_saved = std::move(file);
    }
}

void KnownFiles::requireUnchanged(const std::string& utf8Path, const std::string& target) const {
    const File file = fileAt(utf8Path, target);
    const bool isRead = isSame(m_read, file);
    const bool isSaved = isSame(m_saved, file);
    if (!isRead && !isSaved) {
        return;
    }
    std::error_code unknown;
    if (fs::status(target, unknown).type() == fs::file_type::not_found) {
        refuseGone(utf8Path);
    }
    if (!(isRead && holds(target, m_read->content)) && !(isSaved && holds(target, m_saved->content))) {
        refuseChanged(utf8Path);
    }
}

}  // namespace Veltrani::ConfigurationDetail

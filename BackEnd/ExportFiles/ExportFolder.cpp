#include "ExportFiles/ExportFolder.h"

#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view MARK = ".export-";
constexpr std::string_view RANDOM_PART = "XXXXXX";  // of mkdtemp
/// So that the mark fits behind the name of a folder of any length.
constexpr std::size_t LONGEST_NAME = 200;

[[noreturn]] void refuseFolder(const std::string& path, const std::string& reason) {
    throw VeltraniException(fromUtf8OrBytes(path + ": " + reason));
}

std::string systemMessage() {
    return std::generic_category().message(errno);
}

/// What the names of all temporary folders for a folder begin with.
std::string prefixOf(const std::string& target) {
    const fs::path path(target);
    return (path.parent_path() / ("." + path.filename().string().substr(0, LONGEST_NAME) + std::string(MARK))).string();
}

/// The files of an earlier export, its manifest included; none for what is no manifest of one.
std::set<std::string> filesOfExport(const std::string& manifest) {
    constexpr std::size_t LARGEST = std::size_t{64} << 20U;
    const auto document =
        nlohmann::json::parse(RegularFile(manifest).readAll(LARGEST), nullptr, /*allow_exceptions=*/false);
    if (!document.is_object() || document.value("schema", nlohmann::json()) != "screenmanager/export" ||
        !document.contains("views") || !document["views"].is_array()) {
        return {};
    }
    std::set<std::string> names{ExportFolder::MANIFEST};
    for (const auto& view : document["views"]) {
        const auto files = view.is_object() ? view.value("files", nlohmann::json::array()) : nlohmann::json::array();
        for (const auto& file : files) {
            if (file.is_object() && file.contains("name") && file["name"].is_string()) {
                names.insert(file["name"].get<std::string>());
            }
        }
    }
    return names;
}

/// Refuses a folder that holds anything but an earlier export.
void requireReplaceable(const std::string& path) {
    std::set<std::string> known;
    const std::string manifest = path + '/' + ExportFolder::MANIFEST;
    const bool isEmpty = fs::is_empty(path);
    if (!isEmpty && fs::is_regular_file(manifest)) {
        known = filesOfExport(manifest);
    }
    if (!isEmpty && known.empty()) {
        refuseFolder(path, "exists and is no earlier export: name a new folder with --output");
    }
    for (const auto& entry : fs::directory_iterator(path)) {
        const std::string name = entry.path().filename().string();
        if (!known.contains(name) || !entry.is_regular_file()) {
            refuseFolder(path, "holds " + name +
                                   ", which the export in it does not name: move it elsewhere, or name a "
                                   "new folder with --output");
        }
    }
}

/// Removes a temporary folder unless a process is filling it, which then holds its lock.
void removeLeftover(const std::string& path) {
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        return;
    }
    if (::flock(folder, LOCK_EX | LOCK_NB) == 0) {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    ::close(folder);
}

bool isNamed(int folder, const std::string& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(folder, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

/// False when that failed.
bool syncToDisk(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool isDone = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return isDone;
}

/// The mode that the process gives its other folders, shown by one: asking for the mask would change it for a moment,
/// for every thread.
mode_t usualMode(const std::string& folder) {
    constexpr mode_t NEW_FOLDER_MODE = 0777;
    const std::string probe = folder + "/.mode";
    struct stat made {};
    if (::mkdir(probe.c_str(), NEW_FOLDER_MODE) != 0 || ::lstat(probe.c_str(), &made) != 0 ||
        ::rmdir(probe.c_str()) != 0) {
        refuseFolder(folder, "cannot be written: " + systemMessage());
    }
    return made.st_mode & NEW_FOLDER_MODE;
}

}  // namespace

ExportFolder::ExportFolder(const std::string& utf8Path, bool replaces) : m_replaces(replaces) {
    if (utf8Path.empty() || utf8Path.find('\0') != std::string::npos) {
        refuseFolder('"' + utf8Path + '"', "is no name of a folder");
    }
    try {
        fs::path path = fs::weakly_canonical(fs::absolute(utf8Path));
        m_target = (path.has_filename() ? path : path.parent_path()).string();
        m_exists = fs::exists(m_target);
        if (m_exists && !fs::is_directory(m_target)) {
            refuseFolder(utf8Path, "exists and is no folder: name a new one with --output");
        }
        if (m_exists && !replaces && !fs::is_empty(m_target)) {
            refuseFolder(utf8Path,
                         "exists: name a new folder with --output, or replace an earlier export with --force");
        }
        if (m_exists && !replaces) {
            refuseFolder(utf8Path, "exists: name a new folder with --output, or fill an empty one with --force");
        }
        if (m_exists) {
            requireReplaceable(m_target);
        }
        removeLeftovers();
        create();
    } catch (const fs::filesystem_error& error) {
        refuseFolder(utf8Path, error.code().message());
    }
}

ExportFolder::~ExportFolder() {
    if (!m_temporary.empty()) {
        // Removed before its lock ends, so that no other process takes it for a leftover.
        std::error_code ignored;
        fs::remove_all(m_temporary, ignored);
    }
    if (m_lock >= 0) {
        ::close(m_lock);
    }
}

void ExportFolder::removeLeftovers() const {
    const fs::path prefix(prefixOf(m_target));
    const std::string start = prefix.filename().string();
    std::error_code unknown;
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(prefix.parent_path(), unknown)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(start) && name.size() == start.size() + RANDOM_PART.size()) {
            found.push_back(entry.path().string());
        }
    }
    std::for_each(found.begin(), found.end(), removeLeftover);
}

void ExportFolder::create() {
    // Each try but the last has met a process that was removing leftovers at this very moment.
    constexpr int MOST_TRIES = 100;
    for (int i = 0; i < MOST_TRIES; ++i) {
        std::string name = prefixOf(m_target) + std::string(RANDOM_PART);
        if (::mkdtemp(name.data()) == nullptr) {
            const bool isAlone = errno == ENOENT;
            refuseFolder(m_target, "no folder can be made there: " + systemMessage() +
                                       (isAlone ? "; make the folder that is to hold it first" : ""));
        }
        m_temporary = name;
        m_lock = ::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (m_lock >= 0 && ::flock(m_lock, LOCK_EX) == 0 && isNamed(m_lock, name)) {
            return;
        }
        if (m_lock >= 0) {
            ::close(std::exchange(m_lock, -1));
        }
    }
    refuseFolder(m_target, "other programs keep removing its temporary folder");
}

void ExportFolder::writeManifest(const std::string& text) const {
    std::ofstream out(file(MANIFEST), std::ios::binary);
    out << text;
    out.close();
    if (!out) {
        throw VeltraniException(L"The manifest cannot be written: is there room on the disk?");
    }
}

void ExportFolder::commit() {
    bool isWritten = ::fchmod(m_lock, usualMode(m_temporary)) == 0;
    for (const auto& entry : fs::directory_iterator(m_temporary)) {
        isWritten = isWritten && syncToDisk(entry.path().string());
    }
    if (!isWritten || ::fsync(m_lock) != 0) {
        refuseFolder(m_target, "cannot be written: " + systemMessage());
    }
    if (m_exists) {
        // Once more: minutes may have passed.
        requireReplaceable(m_target);
    }
    const unsigned int how = m_exists ? RENAME_EXCHANGE : RENAME_NOREPLACE;
    if (::renameat2(AT_FDCWD, m_temporary.c_str(), AT_FDCWD, m_target.c_str(), how) != 0) {
        refuseFolder(m_target, m_exists ? "cannot be replaced in one step, " + systemMessage() + ": remove it first"
                                        : "cannot be made: " + systemMessage());
    }
    if (!m_exists) {
        m_temporary.clear();
        return;
    }
    std::error_code ignored;
    fs::remove_all(std::exchange(m_temporary, {}), ignored);
}

}  // namespace Veltrani::ExportFiles

#include "support/TemporaryFolder.h"

#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

[[noreturn]] void fail(const std::string& action, const std::string& path) {
    throw std::runtime_error("cannot " + action + " " + path + ": " + std::strerror(errno));
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "screenmanager-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        fail("make the temporary folder", name);
    }
    m_path = name;
}

TemporaryFolder::~TemporaryFolder() {
    // A leftover that cannot be removed is no reason to end a test run.
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TemporaryFolder::write(const std::string& name, std::string_view content) const {
    std::string target = file(name);
    std::filesystem::create_directories(std::filesystem::path(target).parent_path());
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    if (!out) {
        fail("write", target);
    }
    return target;
}

std::string TemporaryFolder::makeFolder(const std::string& name) const {
    std::string target = file(name);
    std::filesystem::create_directories(target);
    return target;
}

std::string TemporaryFolder::read(const std::string& name) const {
    const std::string source = file(name);
    std::ifstream in(source, std::ios::binary);
    if (!in) {
        fail("read", source);
    }
    // As a whole: exports have files of many megabytes.
    std::ostringstream content;
    content << in.rdbuf();
    return std::move(content).str();
}

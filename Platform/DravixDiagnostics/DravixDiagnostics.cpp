#include "DravixDiagnostics/DravixDiagnostics.h"

#include "Common/AtomicFile.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

constexpr std::wstring_view SCREEN_FOLDER = L"/screens";

/// Bytes copied at a time: a scan of any size is archived with this much memory.
constexpr std::size_t COPY_BLOCK = std::size_t{1} << 20;

struct State {
    bool virtualLoad = false;
    std::wstring dataDirectory;
};

State& state() {
    static State instance;
    return instance;
}

void makeFolders(const std::wstring& folder) {
    std::error_code fault;
    std::filesystem::create_directories(Veltrani::toUtf8(folder), fault);
    if (fault) {
        throw VeltraniException(folder + L": " + Veltrani::fromUtf8OrBytes(fault.message()));
    }
}

void copy(const std::wstring& from, const std::wstring& to) {
    const Veltrani::RegularFile source(Veltrani::toUtf8(from));
    Veltrani::AtomicFile target(Veltrani::toUtf8(to));
    std::vector<char> block(COPY_BLOCK);
    std::size_t copied = 0;
    while (const std::size_t count = source.readAt(copied, block.data(), block.size())) {
        target.write({block.data(), count});
        copied += count;
    }
    target.commit();
}

}  // namespace

bool DravixDiagnostics::doVirtualLoad() {
    return state().virtualLoad;
}

void DravixDiagnostics::setVirtualLoad(bool enabled) {
    state().virtualLoad = enabled;
}

void DravixDiagnostics::setDataDirectory(const std::wstring& directory) {
    state().dataDirectory = directory;
}

void DravixDiagnostics::archiveFileToDataSubDirectory(const std::wstring& file) {
    if (state().dataDirectory.empty()) {
        return;
    }
    const std::wstring folder = state().dataDirectory + std::wstring(SCREEN_FOLDER);
    const std::wstring target = folder + L"/" + file.substr(file.rfind(L'/') + 1);
    try {
        makeFolders(folder);
        copy(file, target);
    } catch (const VeltraniException& fault) {
        throw VeltraniException(L"Unable to archive file " + file + L" to " + target + L": " + fault.message);
    }
}

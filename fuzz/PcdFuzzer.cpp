#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"
#include "ScreenManager/Screen.h"
#include "ScreenManager/detail/PcdFormat.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// Any bytes are either loaded as the cloud that their header announces or refused with a reason.

namespace {

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

/// A file in memory, under a name that can be opened.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : m_descriptor(::memfd_create("fuzz", 0)) {
        require(m_descriptor >= 0, "a file in memory can be made");
        const auto written = ::write(m_descriptor, content.data(), content.size());
        require(written == static_cast<ssize_t>(content.size()), "a file in memory can be written");
    }
    ~MemoryFile() { ::close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] std::wstring name() const { return L"/proc/self/fd/" + std::to_wstring(m_descriptor); }

private:
    int m_descriptor;
};

void requireAsAnnounced(const Screen::PointCloud& cloud, const Veltrani::ScreenManagerDetail::PcdHeader& header) {
    require(cloud.size() == header.points(), "a cloud has as many points as announced");
    for (const pcl::PointXYZ& point : cloud) {
        const bool finite = std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
        require(finite || !cloud.is_dense, "a dense cloud has finite points only");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view content(reinterpret_cast<const char*>(data), size);
    const MemoryFile file(content);
    Screen screen;
    try {
        require(screen.loadModelPCD(file.name(), false), "a load answers true or throws");
        requireAsAnnounced(*screen.getModelPCD(), Veltrani::ScreenManagerDetail::PcdHeader(content));
    } catch (const VeltraniMissingFileException& fault) {
        const std::wstring cause = Veltrani::causeOf(fault);
        require(!cause.empty() && cause.size() < 300, "a refusal has a short reason");
        require(cause.find(L'\n') == std::wstring::npos, "a reason is one line");
        require(cause.find(L"found ") != std::wstring::npos && cause.find(L", expected ") != std::wstring::npos &&
                    cause.find(L"; ") != std::wstring::npos,
                "a reason says what was found, what was expected and what helps");
        require(screen.getModelPCD() == nullptr, "a refusal changes nothing");
    }
    return 0;
}

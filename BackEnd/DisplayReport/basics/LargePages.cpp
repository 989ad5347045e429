#include "DisplayReport/basics/LargePages.h"

#include <sys/mman.h>

#include <bit>
#include <cstdint>

namespace Veltrani::DisplayReport {

void requestLargePages(void* begin, std::size_t bytes) {
    constexpr std::uintptr_t LARGE_PAGE = std::uintptr_t{1} << 21U;
    const auto start = std::bit_cast<std::uintptr_t>(begin);
    const std::uintptr_t first = (start + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    const std::uintptr_t end = (start + bytes) / LARGE_PAGE * LARGE_PAGE;
    if (first < end) {
        static_cast<void>(::madvise(std::bit_cast<void*>(first), end - first, MADV_HUGEPAGE));
    }
}

}  // namespace Veltrani::DisplayReport

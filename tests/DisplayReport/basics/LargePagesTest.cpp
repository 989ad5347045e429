#include "DisplayReport/basics/LargePages.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

using Veltrani::DisplayReport::requestLargePages;
using Veltrani::DisplayReport::reserveInLargePages;

constexpr std::uintptr_t LARGE_PAGE = std::uintptr_t{1} << 21U;

/// Whether the system keeps large pages in mind for the memory at an address, by its own list.
bool isRequestedAt(std::uintptr_t address) {
    std::ifstream maps("/proc/self/smaps");
    bool isThere = false;
    for (std::string line; std::getline(maps, line);) {
        unsigned long long begin = 0;
        unsigned long long end = 0;
        if (std::sscanf(line.c_str(), "%llx-%llx ", &begin, &end) == 2) {
            isThere = address >= begin && address < end;
        }
        if (isThere && line.starts_with("VmFlags:")) {
            return (line + ' ').find(" hg ") != std::string::npos;
        }
    }
    ADD_FAILURE() << "no memory at the address";
    return false;
}

/// Memory that nobody else uses.
class Arena {
public:
    static constexpr std::size_t BYTES = 8 * LARGE_PAGE;

    Arena() : m_begin(::mmap(nullptr, BYTES, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
    ~Arena() { ::munmap(m_begin, BYTES); }
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// The first large page that lies in it as a whole.
    [[nodiscard]] std::uintptr_t firstPage() const {
        return (std::bit_cast<std::uintptr_t>(m_begin) + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    }

private:
    void* m_begin;
};

bool systemHasLargePages() {
    const Arena arena;
    return ::madvise(std::bit_cast<void*>(arena.firstPage()), LARGE_PAGE, MADV_HUGEPAGE) == 0;
}

TEST(LargePages, AreRequestedForThoseThatLieInsideAsAWhole) {
    if (!systemHasLargePages()) {
        GTEST_SKIP() << "this system has none";
    }
    const Arena arena;
    const std::uintptr_t first = arena.firstPage();
    // From the middle of the first page to the middle of the fifth.
    requestLargePages(std::bit_cast<void*>(first + LARGE_PAGE / 2), 4 * LARGE_PAGE);
    EXPECT_FALSE(isRequestedAt(first + LARGE_PAGE / 2));
    EXPECT_FALSE(isRequestedAt(first + LARGE_PAGE - 1));
    EXPECT_TRUE(isRequestedAt(first + LARGE_PAGE));
    EXPECT_TRUE(isRequestedAt(first + 4 * LARGE_PAGE - 1));
    EXPECT_FALSE(isRequestedAt(first + 4 * LARGE_PAGE));
}

TEST(LargePages, AreNotRequestedForLessThanOne) {
    const Arena arena;
    const std::uintptr_t first = arena.firstPage();
    requestLargePages(std::bit_cast<void*>(first + 1), LARGE_PAGE);
    requestLargePages(std::bit_cast<void*>(first), 0);
    EXPECT_FALSE(isRequestedAt(first));
    EXPECT_FALSE(isRequestedAt(first + LARGE_PAGE - 1));
    EXPECT_FALSE(isRequestedAt(first + LARGE_PAGE));
}

TEST(LargePages, AReservationKeepsWhatAVectorHolds) {
    std::vector<double> numbers{1, 2, 3};
    reserveInLargePages(numbers, 3'000'000);
    EXPECT_GE(numbers.capacity(), 3'000'000U);
    EXPECT_EQ(numbers, (std::vector<double>{1, 2, 3}));
    const double* const before = numbers.data();
    numbers.resize(3'000'000, 4.0);
    EXPECT_EQ(numbers.data(), before);
    EXPECT_EQ(numbers.back(), 4.0);
    std::vector<double> none;
    reserveInLargePages(none, 0);
    EXPECT_TRUE(none.empty());
}

}  // namespace

#include "support/AllocationFault.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations left until the one that fails; below zero when none does.
thread_local long long remaining = -1;
thread_local std::size_t smallest = 0;
thread_local bool failed = false;
thread_local std::size_t count = 0;

void* allocate(std::size_t size) {
    ++count;
    if (remaining >= 0 && size >= smallest && remaining-- == 0) {
        failed = true;
        throw std::bad_alloc();
    }
    if (void* const block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
// Not left to the library: that of a sanitizer does not come by here.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

AllocationFault::AllocationFault(std::size_t allocation, std::size_t leastSize) {
    remaining = static_cast<long long>(allocation);
    smallest = leastSize;
    failed = false;
}

AllocationFault::~AllocationFault() {
    remaining = -1;
}

bool AllocationFault::happened() const {
    return failed;
}

std::size_t AllocationFault::allocations() {
    return count;
}

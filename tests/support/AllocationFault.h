#pragma once

#include <cstddef>

/// Makes one allocation of this thread fail with `std::bad_alloc`: number `allocation` of those of at least `leastSize`
/// bytes, counted from here (0 is the next). A program that uses this class has its own `operator new`.
class AllocationFault {
public:
    explicit AllocationFault(std::size_t allocation, std::size_t leastSize = 0);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    /// Whether the allocation has been requested, and has failed.
    [[nodiscard]] bool happened() const;

    /// Number of allocations of this thread by now.
    [[nodiscard]] static std::size_t allocations();
};

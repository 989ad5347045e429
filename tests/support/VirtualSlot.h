#pragma once

#include <cstddef>
#include <cstring>

/// The place of a virtual operation among those of its class, which programs built with an older version of a library
/// call it by. A pointer to a virtual member function holds its offset in the table of functions, plus one on some
/// processors. A destructor takes two places.
template <class Operation>
std::size_t slotOf(Operation operation) {
    std::size_t offset = 0;
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

#pragma once

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayReport {

/// Requests large pages of the system for memory that is about to be written as a whole: thousands of page faults less
/// for what is as large as a picture. A system that refuses costs time alone.
void requestLargePages(void* begin, std::size_t bytes);

/// Reserves memory for so many elements, in large pages where the system has them.
template <class T>
void reserveInLargePages(std::vector<T>& elements, std::size_t count) {
    elements.reserve(count);
    requestLargePages(elements.data(), count * sizeof(T));
}

}  // namespace Veltrani::DisplayReport

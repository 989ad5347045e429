#include "DeviceFramework2/detail/Deadline.h"

#include <algorithm>

namespace Veltrani::DeviceFramework2 {

namespace {

/// Keeps the sums below within the range of the clock and of poll.
constexpr std::chrono::milliseconds LONGEST_LIMIT = std::chrono::hours(24);

}  // namespace

Deadline::Deadline(std::chrono::milliseconds limit)
    : m_limit(std::clamp(limit, std::chrono::milliseconds(0), LONGEST_LIMIT)),
      m_end(std::chrono::steady_clock::now() + m_limit) {}

std::chrono::milliseconds Deadline::remaining() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

}  // namespace Veltrani::DeviceFramework2

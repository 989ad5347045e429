#pragma once

#include <chrono>

namespace Veltrani::DeviceFramework2 {

/// The end of a wait, on the monotonic clock: setting the time of the machine does not move it.
class Deadline {
public:
    /// From now on; a negative limit has already passed, one above a day counts as a day.
    explicit Deadline(std::chrono::milliseconds limit);

    [[nodiscard]] bool expired() const { return remaining().count() == 0; }
    /// Rounded up to whole milliseconds, so that a wait of that length is not cut into a busy loop; never negative.
    [[nodiscard]] std::chrono::milliseconds remaining() const;
    /// The length of the whole wait, for messages.
    [[nodiscard]] std::chrono::milliseconds limit() const { return m_limit; }

private:
    std::chrono::milliseconds m_limit;
    std::chrono::steady_clock::time_point m_end;
};

}  // namespace Veltrani::DeviceFramework2

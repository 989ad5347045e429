#pragma once

#include <cstddef>
#include <cstdint>

namespace Veltrani::DisplayFitDetail {

/// The numbers 0 to count - 1 in an order that looks like none, always the same.
class Picker {
public:
    explicit Picker(std::size_t count) : m_count(count) {}
    std::size_t operator()() {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>((m_state >> 33U) % m_count);
    }

private:
    std::size_t m_count;
    std::uint64_t m_state = 1;
};

}  // namespace Veltrani::DisplayFitDetail

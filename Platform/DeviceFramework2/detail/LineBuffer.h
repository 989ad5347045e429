#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// Cuts received bytes into lines. CR, LF and CRLF all end a line, wherever the bytes were split; empty lines are
/// skipped.
class LineBuffer {
public:
    /// Longest line in bytes, and the most that may arrive before one is complete. The standard stays below 200.
    static constexpr std::size_t LONGEST_LINE = 1024;

    void append(std::string_view bytes);

    /// The next complete line without its end; nothing when more bytes are needed. Throws `DeviceException` when so
    /// many bytes bring no line that none is to be expected.
    [[nodiscard]] std::optional<std::string> takeLine();

    /// True when nothing but line ends is left.
    [[nodiscard]] bool isIdle() const;

private:
    std::string m_bytes;
    std::size_t m_skipped = 0;  ///< line ends passed over since the last line
};

}  // namespace Veltrani::DeviceFramework2

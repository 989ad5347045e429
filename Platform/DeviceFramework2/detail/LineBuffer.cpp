#include "DeviceFramework2/detail/LineBuffer.h"

#include "DeviceFramework2/DeviceException.h"

#include <algorithm>

namespace Veltrani::DeviceFramework2 {

namespace {

constexpr std::string_view LINE_ENDS = "\r\n";

}  // namespace

void LineBuffer::append(std::string_view bytes) {
    m_bytes += bytes;
}

std::optional<std::string> LineBuffer::takeLine() {
    const std::size_t begin = std::min(m_bytes.find_first_not_of(LINE_ENDS), m_bytes.size());
    m_bytes.erase(0, begin);
    m_skipped += begin;
    const std::size_t end = m_bytes.find_first_of(LINE_ENDS);
    if (m_skipped + std::min(end, m_bytes.size()) > LONGEST_LINE) {
        throw DeviceException(__FILE__, __LINE__,
                              L"it sent more than " + std::to_wstring(LONGEST_LINE) + L" bytes without a line");
    }
    if (end == std::string::npos) {
        return std::nullopt;
    }
    std::string line = m_bytes.substr(0, end);
    m_bytes.erase(0, end + 1);
    m_skipped = 0;
    return line;
}

bool LineBuffer::isIdle() const {
    return m_bytes.find_first_not_of(LINE_ENDS) == std::string::npos;
}

}  // namespace Veltrani::DeviceFramework2

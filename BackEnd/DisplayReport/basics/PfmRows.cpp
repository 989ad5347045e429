#include "DisplayReport/basics/PfmRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::size_t PARTS = 3;

}  // namespace

PfmRows::PfmRows(std::ostream& out, std::size_t width, std::size_t height) : m_out(out) {
    m_row.reserve(PARTS * width);
    // The minus sign means little-endian.
    m_out << "PF\n" + std::to_string(width) + ' ' + std::to_string(height) + "\n-1.0\n";
}

void PfmRows::writeRow() {
    if constexpr (std::endian::native == std::endian::big) {
        for (float& number : m_row) {
            auto bytes = std::bit_cast<std::array<char, sizeof(float)>>(number);
            std::reverse(bytes.begin(), bytes.end());
            number = std::bit_cast<float>(bytes);
        }
    }
    m_out.write(reinterpret_cast<const char*>(m_row.data()),
                static_cast<std::streamsize>(m_row.size() * sizeof(float)));
    m_row.clear();
}

}  // namespace Veltrani::DisplayReport

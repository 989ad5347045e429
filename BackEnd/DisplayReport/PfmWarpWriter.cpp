#include "DisplayReport/PfmWarpWriter.h"

#include "DisplayReport/PictureWarp.h"

#include <bit>
#include <cstdint>
#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// Little-endian on every machine.
void append(std::string& bytes, float value) {
    constexpr unsigned BITS_PER_BYTE = 8;
    const auto bits = std::bit_cast<std::uint32_t>(value);
    for (unsigned shift = 0; shift < sizeof(bits) * BITS_PER_BYTE; shift += BITS_PER_BYTE) {
        bytes += static_cast<char>((bits >> shift) & 0xFFU);
    }
}

}  // namespace

void PfmWarpWriter::write(const PictureWarp& warp, std::ostream& out) const {
    // The minus sign says little-endian.
    out << "PF\n" + std::to_string(warp.columns()) + ' ' + std::to_string(warp.rows()) + "\n-1.0\n";
    std::string bytes;
    for (std::size_t row = 0; row < warp.rows(); ++row) {
        bytes.clear();
        for (std::size_t column = 0; column < warp.columns(); ++column) {
            const WarpSample& sample = warp.at(column, row);
            append(bytes, sample.isMapped ? static_cast<float>(sample.input[0]) : -1.0F);
            append(bytes, sample.isMapped ? static_cast<float>(sample.input[1]) : -1.0F);
            append(bytes, sample.isMapped ? 1.0F : 0.0F);
        }
        out << bytes;
    }
}

}  // namespace Veltrani::DisplayReport

#pragma once

#include <cstddef>
#include <iosfwd>
#include <vector>

namespace Veltrani::DisplayReport {

/// Writes a portable float map in colour ("PF", little-endian on every machine, 32-bit numbers), pixel by pixel from
/// the bottom left one, row by row upwards.
///
///     PfmRows rows(out, width, height);
///     rows.add(red, green, blue);  // width x height times
class PfmRows {
public:
    PfmRows(std::ostream& out, std::size_t width, std::size_t height);

    void add(float red, float green, float blue) {
        m_row.push_back(red);
        m_row.push_back(green);
        m_row.push_back(blue);
        if (m_row.size() == m_row.capacity()) {
            writeRow();
        }
    }

private:
    void writeRow();

    std::ostream& m_out;
    std::vector<float> m_row;  ///< has room for one row
};

}  // namespace Veltrani::DisplayReport

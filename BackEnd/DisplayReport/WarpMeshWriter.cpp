#include "DisplayReport/WarpMeshWriter.h"

#include "DisplayReport/NumberText.h"
#include "DisplayReport/PictureWarp.h"

#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// -1 to 1, exactly so at both ends.
double fromMiddle(std::size_t node, std::size_t count) {
    return 2.0 * static_cast<double>(node) / static_cast<double>(count - 1) - 1.0;
}

std::string lineOf(double x, double y, const WarpSample& sample) {
    return exactText(x) + ' ' + exactText(y) + ' ' + exactText(sample.input[0]) + ' ' + exactText(sample.input[1]) +
           (sample.isMapped ? " 1\n" : " -1\n");
}

}  // namespace

void WarpMeshWriter::write(const PictureWarp& warp, std::ostream& out) const {
    const std::string width = std::to_string(warp.pixels()[0]);
    const std::string height = std::to_string(warp.pixels()[1]);
    const double aspect = static_cast<double>(warp.pixels()[0]) / warp.pixels()[1];
    out << "2\n" + std::to_string(warp.columns()) + ' ' + std::to_string(warp.rows()) + '\n';
    for (std::size_t row = 0; row < warp.rows(); ++row) {
        const double y = fromMiddle(row, warp.rows());
        for (std::size_t column = 0; column < warp.columns(); ++column) {
            out << lineOf(aspect * fromMiddle(column, warp.columns()), y, warp.at(column, row));
        }
    }
    out << "pixels " + width + ' ' + height + '\n';
}

}  // namespace Veltrani::DisplayReport

#pragma once

#include "DisplayExport/WarpCell.h"
#include "DisplayExport/WarpErrorMeter.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayExport {

/// Cuts cells that are not whole into triangles, and subdivides those around a pole.
class CellCutter {
public:
    /// What is left of a cell.
    struct Cut {
        std::vector<WarpPiece> pieces;
        std::size_t leftOut = 0;  ///< parts that hold a pole
        double error = 0;         ///< the largest of the parts around a pole, pixels of the input
    };

    /// Refers to all.
    /// @param error parts around a pole are divided as long as theirs is larger
    CellCutter(const WarpSampler& sampler, const ContentInput& input, const WarpErrorMeter& meter, Seam seam,
               double error);

    /// Whether a cell of a kind is anything but two triangles between its corners as they are.
    [[nodiscard]] bool mustCut(const WarpCell& cell, WarpCell::Kind kind) const;
    [[nodiscard]] Cut cut(const WarpCell& cell, WarpCell::Kind kind) const;

    [[nodiscard]] WarpCell::Kind kindOf(const WarpCell& cell) const { return cell.kind(m_poles, m_wrapsAround); }

private:
    void cutAsItIs(const WarpCell& cell, WarpCell::Kind kind, Cut& cut) const;
    void cutAtSeam(const WarpCell& cell, std::vector<WarpPiece>& pieces) const;
    /// In four, and those of them again whose error is too large or that hold the pole, `times` times.
    void subdivide(const WarpCell& cell, int times, Cut& cut) const;

    const WarpSampler& m_sampler;
    const ContentInput& m_input;
    const WarpErrorMeter& m_meter;
    Seam m_seam;
    double m_error;
    std::vector<Point<double, 3>> m_poles;
    bool m_wrapsAround;
};

}  // namespace Veltrani::DisplayExport

#pragma once

#include "DisplayExport/WarpCell.h"
#include "DisplayExport/WarpErrorMeter.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Veltrani::DisplayExport {

/// Cuts cells that are not whole into triangles, and divides those around a pole.
class CellCutter {
public:
    /// What is left of a cell.
    struct Cut {
        std::vector<WarpPiece> pieces;
        bool isDivided = false;
        std::size_t leftOut = 0;  ///< parts that hold a pole, or lie next to one
        double areaLeftOut = 0;   ///< of these, as a part of the picture
        WarpError error;          ///< of the parts around a pole; `largestOfGrid` is that of a cell that is not divided
    };
    /// The work on one warp is bounded: of more parts those with the largest error are divided.
    static constexpr std::size_t MOST_PARTS = 100'000;

    /// Refers to all.
    /// @param error pixels of the input: parts around a pole are divided as long as theirs is larger
    /// @param allowed pixels of the input: what counts as beyond
    CellCutter(const WarpSampler& sampler, const ContentInput& input, const WarpErrorMeter& meter, Seam seam,
               double error, double allowed);

    /// Whether a cell of a kind may be anything but two triangles between its corners as they are.
    [[nodiscard]] bool mustCut(const WarpCell& cell, WarpCell::Kind kind) const;
    /// All cells of a warp that must be cut.
    [[nodiscard]] std::vector<Cut> cut(std::span<const WarpCell> cells) const;

    [[nodiscard]] WarpCell::Kind kindOf(const WarpCell& cell) const {
        return cell.kind(m_meter.zone().poles(), m_wrapsAround);
    }

    /// The two halves of a cell of any shape, cut at the seam where need be.
    void cutAtSeam(const WarpCell& cell, std::vector<WarpPiece>& pieces) const;

    /// Pixels of the input: that is to be kept around poles, and what counts as beyond.
    [[nodiscard]] double error() const { return m_error; }
    [[nodiscard]] double allowed() const { return m_allowed; }
    /// Width and height of what is divided no further.
    [[nodiscard]] const Point<double, 2>& least() const { return m_meter.zone().least(); }

private:
    /// A cell around a pole, or a part of one.
    struct Part {
        std::size_t number = 0;  ///< of the cell
        WarpCell cell;
        double errorBefore = 0;  ///< of what it is a part of; without limit for a whole cell
    };

    void cutAsItIs(const WarpCell& cell, WarpCell::Kind kind, Cut& cut) const;
    /// Which parts are divided, given the error of each; those with the largest error where there is no room for all.
    [[nodiscard]] std::vector<bool> areDivided(std::span<const Part> parts, std::span<const WarpError> errors,
                                               std::size_t room) const;
    [[nodiscard]] bool needsDivision(const Part& part, const WarpError& error) const;
    /// The quarters of the parts that are divided.
    [[nodiscard]] std::vector<Part> quartersOf(std::span<const Part> parts, std::span<const WarpError> errors,
                                               const std::vector<bool>& areDivided) const;
    /// What becomes of a part that is divided no further.
    void settle(const Part& part, const WarpError& error, Cut& cut) const;

    const WarpSampler& m_sampler;
    const ContentInput& m_input;
    const WarpErrorMeter& m_meter;
    Seam m_seam;
    double m_error;
    double m_allowed;
    bool m_wrapsAround;
};

}  // namespace Veltrani::DisplayExport

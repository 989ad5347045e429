#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/ChannelSolver.h"
#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/LensCheck.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Looks for the solution of one channel from several starts.
class ChannelSearch {
public:
    /// All must outlive this object.
    ChannelSearch(const ChannelSetup& setup, const FitPoints& points, const DisplayFit::FitOptions& options);

    /// Solves from the configured values, from a linear start where these do not lead to the points, and, for a lens
    /// whose points may have several minima, from other lenses. Of these the least one is taken whose lens can be used;
    /// where there is none, one that cannot. The model's base is the solution afterwards.
    [[nodiscard]] Solution solve(ChannelModel& model) const;
    /// The model of a lens that is a quotient, without its denominator.
    [[nodiscard]] std::unique_ptr<ChannelModel> plainModel(const PictureModel::Held& held) const;
    /// What the display makes of the lens of a solution; without a fault where the channel has none.
    [[nodiscard]] LensCheck check(const ChannelModel& model, const Solution& solution) const;
    /// Whether the points fit a picture with u or v reversed that stands up as the configured one does: upside down, it
    /// fits with the other one reversed.
    [[nodiscard]] bool fitsReversed(std::size_t coordinate, const PictureModel::Held& held) const;

private:
    [[nodiscard]] Solution solveFromHere(ChannelModel& model) const;
    /// Replaces a solution by a better one from another start of its lens, where there is one.
    void solveElsewhere(PictureModel& model, Solution& best) const;
    void solveFrom(const std::vector<PictureView>& starts, PictureModel& model, Solution& best) const;
    /// The view with as few coefficients of the lens as fit next to the points.
    [[nodiscard]] PictureView plainView(const PictureModel& model) const;
    [[nodiscard]] bool isUsable(const PictureModel& model, const Solution& solution) const;
    [[nodiscard]] bool fitsPicture(const ChannelModel& model) const;

    const ChannelSetup& m_setup;
    const FitPoints& m_points;
    const DisplayFit::FitOptions& m_options;
};

}  // namespace Veltrani::DisplayFitDetail

#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/ChannelSolver.h"
#include "DisplayFit/detail/FitPoints.h"

#include <memory>
#include <string>

namespace Veltrani::DisplayFitDetail {

class Determination;

/// Fits one channel to its points: checks them, solves, and states what the points determine and what they do not.
class ChannelFitter {
public:
    /// All must outlive this object.
    /// @param unit name of the native unit, UTF-8
    ChannelFitter(const ChannelSetup& setup, const FitPoints& points, const DisplayFit::FitOptions& options,
                  const std::string& unit);

    /// Adds what was found to a fit whose channel and names are set.
    void fit(DisplayFit::ChannelFit& fit) const;

private:
    using Kind = DisplayFit::FitFinding::Kind;

    [[nodiscard]] bool choose(DisplayFit::ChannelFit& fit, PictureModel::Held& held) const;
    [[nodiscard]] bool holdForPlane(DisplayFit::ChannelFit& fit, PictureModel::Held& held) const;
    [[nodiscard]] Solution solve(ChannelModel& model) const;
    /// Solves from the configured values, and from a linear start where these do not lead to the points.
    [[nodiscard]] Solution solveFromHere(ChannelModel& model) const;
    /// Replaces a solution by a better one from another start of its lens, where there is one.
    void solveElsewhere(PictureModel& model, Solution& best) const;
    [[nodiscard]] bool fitsPicture(const ChannelModel& model, double share) const;
    /// @param deviation what one deviation of a coordinate is, in the unit of the sizes
    void noteSolution(DisplayFit::ChannelFit& fit, ChannelModel& model, const Solution& solution,
                      double deviation) const;
    /// True where the values found show the points where the configured ones do.
    [[nodiscard]] bool isWhereItWas(const DisplayFit::ChannelFit& fit) const;
    void judge(DisplayFit::ChannelFit& fit, const ChannelModel& model, const Solution& solution,
               const Determination& determination) const;
    void judgePoints(DisplayFit::ChannelFit& fit, const ChannelModel& model, const Solution& solution) const;
    void judgeDirections(DisplayFit::ChannelFit& fit, const ChannelModel& model) const;
    /// Whether the points fit a picture with u or v reversed.
    [[nodiscard]] bool fitsReversed(std::size_t coordinate, const PictureModel::Held& held) const;
    void listValues(DisplayFit::ChannelFit& fit, const ChannelModel& model, const PictureModel::Held& held) const;

    const ChannelSetup& m_setup;
    const FitPoints& m_points;
    const DisplayFit::FitOptions& m_options;
    const std::string& m_unit;
};

}  // namespace Veltrani::DisplayFitDetail

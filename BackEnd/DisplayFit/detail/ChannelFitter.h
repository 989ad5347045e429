#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelSearch.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/Determination.h"
#include "DisplayFit/detail/FitAttempt.h"
#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/PointShape.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayFitDetail {

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

    /// Decides what is solved, and examines the points; true where a finding states why nothing can be solved.
    [[nodiscard]] bool isRefused(DisplayFit::ChannelFit& fit, PictureModel::Held& held) const;
    [[nodiscard]] bool choose(DisplayFit::ChannelFit& fit, PictureModel::Held& held) const;
    /// True where points on one plane would not be enough.
    [[nodiscard]] static bool needsDepth(const PictureModel::Held& held);
    /// Solves, and holds two numbers that the points do not determine, unless they contradict what these are held at.
    /// Nothing where that was refused.
    [[nodiscard]] std::optional<FitAttempt> solve(DisplayFit::ChannelFit& fit, const PictureModel::Held& held) const;
    [[nodiscard]] FitAttempt attempt(const PictureModel::Held& held) const;
    /// Solves a model.
    [[nodiscard]] FitAttempt attempt(const PictureModel::Held& held, std::unique_ptr<ChannelModel> model) const;
    /// @param stray points beside the plane that most lie near to: where only a few of them took part, they do not
    /// count
    [[nodiscard]] Determination determinationOf(const FitAttempt& made, const std::vector<bool>& stray) const;
    /// True where the points determine the picture at their distance and a little nearer and farther.
    [[nodiscard]] bool showsDepth(const FitAttempt& made, const std::vector<bool>& stray) const;
    /// True where one attempt leaves residuals that are no larger than those of another, but for chance.
    [[nodiscard]] bool explainsAsWell(const FitAttempt& one, const FitAttempt& other) const;
    void noteSolution(DisplayFit::ChannelFit& fit, const FitAttempt& made) const;
    /// True where the values found show the points where the configured ones do.
    [[nodiscard]] bool isWhereItWas(const DisplayFit::ChannelFit& fit) const;
    void listValues(DisplayFit::ChannelFit& fit, const ChannelModel& model, const PictureModel::Held& held) const;

    const ChannelSetup& m_setup;
    const FitPoints& m_points;
    const DisplayFit::FitOptions& m_options;
    const std::string& m_unit;
    ChannelSearch m_search;
    PointShape m_shape;  ///< of the measured points
};

}  // namespace Veltrani::DisplayFitDetail

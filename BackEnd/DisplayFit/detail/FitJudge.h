#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelSearch.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/Determination.h"
#include "DisplayFit/detail/FitAttempt.h"
#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/PointShape.h"

#include <string>

namespace Veltrani::DisplayFitDetail {

/// States in findings what is wrong with the fit of a channel, or doubtful, and what to do.
class FitJudge {
public:
    /// All must outlive this object.
    /// @param shape of the points in space
    FitJudge(const ChannelSetup& setup, const FitPoints& points, const PointShape& shape,
             const DisplayFit::FitOptions& options, const ChannelSearch& search);

    /// @param fit with its values and residuals noted
    /// @param determination by the points that may count
    void judge(DisplayFit::ChannelFit& fit, const FitAttempt& attempt, const Determination& determination) const;

    static void refuse(DisplayFit::ChannelFit& fit, DisplayFit::FitFinding::Kind kind, std::string text,
                       std::string remedy);
    [[nodiscard]] static DisplayFit::FitOutcome worstOf(const DisplayFit::ChannelFit& fit);

private:
    using Kind = DisplayFit::FitFinding::Kind;

    void judgeDirections(DisplayFit::ChannelFit& fit, const FitAttempt& attempt) const;
    void judgePoints(DisplayFit::ChannelFit& fit, const FitAttempt& attempt) const;
    void judgeLens(DisplayFit::ChannelFit& fit, const FitAttempt& attempt) const;
    void judgeValues(DisplayFit::ChannelFit& fit, const FitAttempt& attempt, const Determination& determination) const;
    /// "lines 4, 17 and 90"; empty where the points come from no file.
    [[nodiscard]] std::string linesOf(const std::vector<bool>& isChosen) const;

    const ChannelSetup& m_setup;
    const FitPoints& m_points;
    const PointShape& m_shape;
    const DisplayFit::FitOptions& m_options;
    const ChannelSearch& m_search;
};

}  // namespace Veltrani::DisplayFitDetail

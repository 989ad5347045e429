#pragma once

#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/ChannelSolver.h"
#include "DisplayFit/detail/LensCheck.h"
#include "DisplayFit/detail/PictureModel.h"

#include <memory>

namespace Veltrani::DisplayFitDetail {

/// One way to solve a channel, and what came of it.
struct FitAttempt {
    PictureModel::Held held;
    bool isPlainLens = false;  ///< the lens is no quotient, although it has the coefficients of one: these are zero
    std::unique_ptr<ChannelModel> model;  ///< its base is the solution, where there is one
    Solution solution;
    LensCheck lens;
    double deviation = 0;  ///< of one weighted residual: 1 where deviations are stated
};

}  // namespace Veltrani::DisplayFitDetail

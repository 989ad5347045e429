#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/FitPoints.h"

#include <cstddef>
#include <map>

namespace Veltrani::DisplayFitDetail {

/// Adds a finding to every pair of channels whose points lie where the other one's picture is configured, and far from
/// their own.
void findSwapped(const std::map<std::size_t, ChannelSetup>& setups, const std::map<std::size_t, FitPoints>& points,
                 DisplayFit::DisplayFitResult& result);

}  // namespace Veltrani::DisplayFitDetail

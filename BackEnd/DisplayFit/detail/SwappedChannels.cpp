#include "DisplayFit/detail/SwappedChannels.h"

#include "DisplayFit/detail/ResidualLists.h"

#include <algorithm>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;

/// Medians of the residuals by configured values, as parts of the picture: further than the first from the own
/// picture, nearer than the second to the other one.
constexpr double ELSEWHERE = 0.3;
constexpr double NEAR = 0.2;

double missOf(const ChannelSetup& setup, const FitPoints& points) {
    const auto model = setup.make(points, {setup.groups(), false, false});
    return medianMiss(*model, setup.pixels());
}

void addFinding(ChannelFit& fit, const ChannelFit& other) {
    fit.findings.push_back({FitFinding::Kind::CHANNELS_EXCHANGED, FitOutcome::UNUSABLE,
                            "the points lie where the picture of the channel " + other.name +
                                " is, and those of that channel where this one's is",
                            "exchange the two channels in the file of the points"});
    fit.outcome = FitOutcome::UNUSABLE;
}

}  // namespace

void findSwapped(const std::map<std::size_t, ChannelSetup>& setups, const std::map<std::size_t, FitPoints>& points,
                 DisplayFit::DisplayFitResult& result) {
    std::vector<ChannelFit*> elsewhere;
    for (ChannelFit& fit : result.channels) {
        const ChannelSetup& setup = setups.at(fit.channel);
        if (!setup.refusal() && missOf(setup, points.at(fit.channel)) > ELSEWHERE) {
            elsewhere.push_back(&fit);
        }
    }
    for (std::size_t i = 0; i < elsewhere.size(); ++i) {
        for (std::size_t k = i + 1; k < elsewhere.size(); ++k) {
            ChannelFit& one = *elsewhere[i];
            ChannelFit& other = *elsewhere[k];
            if (missOf(setups.at(other.channel), points.at(one.channel)) < NEAR &&
                missOf(setups.at(one.channel), points.at(other.channel)) < NEAR) {
                addFinding(one, other);
                addFinding(other, one);
            }
        }
    }
}

}  // namespace Veltrani::DisplayFitDetail

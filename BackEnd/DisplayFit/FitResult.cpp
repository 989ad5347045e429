#include "DisplayFit/FitResult.h"

#include <algorithm>

namespace Veltrani::DisplayFit {

std::string FitFinding::nameOf(Kind kind) {
    switch (kind) {
        case Kind::CHANGED_FOR_PLANE:
            return "CHANGED_FOR_PLANE";
        case Kind::OUTLIERS:
            return "OUTLIERS";
        case Kind::ILL_DETERMINED:
            return "ILL_DETERMINED";
        case Kind::DEVIATIONS_TOO_SMALL:
            return "DEVIATIONS_TOO_SMALL";
        case Kind::BEYOND_FOLD:
            return "BEYOND_FOLD";
        case Kind::TOO_FEW_POINTS:
            return "TOO_FEW_POINTS";
        case Kind::POINTS_ON_LINE:
            return "POINTS_ON_LINE";
        case Kind::POINTS_ON_PLANE:
            return "POINTS_ON_PLANE";
        case Kind::NOT_DETERMINED:
            return "NOT_DETERMINED";
        case Kind::U_REVERSED:
            return "U_REVERSED";
        case Kind::V_REVERSED:
            return "V_REVERSED";
        case Kind::UV_EXCHANGED:
            return "UV_EXCHANGED";
        case Kind::AXIS_MIRRORED:
            return "AXIS_MIRRORED";
        case Kind::AXES_EXCHANGED:
            return "AXES_EXCHANGED";
        case Kind::CHANNELS_EXCHANGED:
            return "CHANNELS_EXCHANGED";
        case Kind::WRONG_UNIT:
            return "WRONG_UNIT";
        case Kind::DEVIATIONS_TOO_LARGE:
            return "DEVIATIONS_TOO_LARGE";
        case Kind::FRAME_MOVED:
            return "FRAME_MOVED";
        case Kind::FRAMES_MIXED:
            return "FRAMES_MIXED";
        case Kind::FRAME_NOT_REGISTERED:
            return "FRAME_NOT_REGISTERED";
        case Kind::CONTROL_POINT_OFF:
            return "CONTROL_POINT_OFF";
        case Kind::IMPLAUSIBLE_VALUES:
            return "IMPLAUSIBLE_VALUES";
        case Kind::NOT_FITTING:
            return "NOT_FITTING";
        case Kind::KIND_NOT_SOLVED:
            return "KIND_NOT_SOLVED";
    }
    return {};
}

std::string FittedValue::nameOf(Quantity quantity) {
    switch (quantity) {
        case Quantity::LENGTH:
            return "length";
        case Quantity::ANGLE:
            return "angle";
        case Quantity::PIXELS:
            return "pixels";
        case Quantity::NUMBER:
            return "number";
    }
    return "";
}

FitOutcome DisplayFitResult::outcome() const {
    const auto worse = [](FitOutcome a, FitOutcome b) { return std::max(a, b); };
    FitOutcome worst = channels.empty() ? FitOutcome::UNUSABLE : FitOutcome::GOOD;
    for (const ChannelFit& channel : channels) {
        worst = worse(worst, channel.outcome);
    }
    for (const FitFinding& finding : findings) {
        worst = worse(worst, finding.outcome);
    }
    return worst;
}

}  // namespace Veltrani::DisplayFit

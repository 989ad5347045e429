#include "DisplayFit/FitResult.h"

#include <algorithm>
#include <array>

namespace Veltrani::DisplayFit {

namespace {

struct NamedKind {
    FitFinding::Kind kind;
    const char* name;
};

constexpr std::array KINDS{NamedKind{FitFinding::Kind::CHANGED_FOR_PLANE, "CHANGED_FOR_PLANE"},
                           NamedKind{FitFinding::Kind::OUTLIERS, "OUTLIERS"},
                           NamedKind{FitFinding::Kind::ILL_DETERMINED, "ILL_DETERMINED"},
                           NamedKind{FitFinding::Kind::DEVIATIONS_TOO_SMALL, "DEVIATIONS_TOO_SMALL"},
                           NamedKind{FitFinding::Kind::BEYOND_FOLD, "BEYOND_FOLD"},
                           NamedKind{FitFinding::Kind::TOO_FEW_POINTS, "TOO_FEW_POINTS"},
                           NamedKind{FitFinding::Kind::POINTS_ON_LINE, "POINTS_ON_LINE"},
                           NamedKind{FitFinding::Kind::POINTS_ON_PLANE, "POINTS_ON_PLANE"},
                           NamedKind{FitFinding::Kind::NOT_DETERMINED, "NOT_DETERMINED"},
                           NamedKind{FitFinding::Kind::U_REVERSED, "U_REVERSED"},
                           NamedKind{FitFinding::Kind::V_REVERSED, "V_REVERSED"},
                           NamedKind{FitFinding::Kind::UV_EXCHANGED, "UV_EXCHANGED"},
                           NamedKind{FitFinding::Kind::AXIS_MIRRORED, "AXIS_MIRRORED"},
                           NamedKind{FitFinding::Kind::AXES_EXCHANGED, "AXES_EXCHANGED"},
                           NamedKind{FitFinding::Kind::CHANNELS_EXCHANGED, "CHANNELS_EXCHANGED"},
                           NamedKind{FitFinding::Kind::WRONG_UNIT, "WRONG_UNIT"},
                           NamedKind{FitFinding::Kind::DEVIATIONS_TOO_LARGE, "DEVIATIONS_TOO_LARGE"},
                           NamedKind{FitFinding::Kind::FRAME_MOVED, "FRAME_MOVED"},
                           NamedKind{FitFinding::Kind::FRAMES_MIXED, "FRAMES_MIXED"},
                           NamedKind{FitFinding::Kind::FRAME_NOT_REGISTERED, "FRAME_NOT_REGISTERED"},
                           NamedKind{FitFinding::Kind::CONTROL_POINT_OFF, "CONTROL_POINT_OFF"},
                           NamedKind{FitFinding::Kind::IMPLAUSIBLE_VALUES, "IMPLAUSIBLE_VALUES"},
                           NamedKind{FitFinding::Kind::NOT_FITTING, "NOT_FITTING"},
                           NamedKind{FitFinding::Kind::KIND_NOT_SOLVED, "KIND_NOT_SOLVED"}};

}  // namespace

std::string FitFinding::nameOf(Kind kind) {
    const auto* const found =
        std::find_if(KINDS.begin(), KINDS.end(), [kind](const NamedKind& named) { return named.kind == kind; });
    return found == KINDS.end() ? "" : found->name;
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

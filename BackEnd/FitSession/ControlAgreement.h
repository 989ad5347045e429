#pragma once

#include "FitSession/FrameRegistration.h"
#include "FitSession/MeasuredPoints.h"

#include <optional>
#include <string>
#include <vector>

namespace Veltrani::FitSession {

/// Which control points of a station contradict the others.
class ControlAgreement {
public:
    ControlAgreement() = delete;

    /// The control point without which the others agree so much better that it is wrong: by an F test of what its three
    /// coordinates explain, at one part in a thousand. A deviation that is less than a thousandth of what the control
    /// points span is of no importance. None for fewer than 4, and where the others determine no rotation.
    [[nodiscard]] static std::optional<Registration::Contradiction> oneAgainstAll(
        const std::vector<ControlPoint>& controls, RegistrationKind kind);

    /// Of control points that contradict each other by far: which of them, and how to put it right, as
    /// ", without lines 4 and 7 they agree to 0.002: ...". Empty where less than half of them agree.
    [[nodiscard]] static std::string whatIsWrong(const std::vector<ControlPoint>& controls, RegistrationKind kind);
};

}  // namespace Veltrani::FitSession

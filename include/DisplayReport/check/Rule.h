#pragma once

#include "DisplayReport/check/Finding.h"

#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace Veltrani::DisplayReport {

/// One rule by which the check judges a display: what it is called, how much its findings matter, and between which
/// numbers a display is sound.
struct Rule {
    /// Whether a rule has to know where light lands, which a quick check leaves unmeasured.
    enum class Light {
        NOT_NEEDED,
        NEEDED,
        NEEDED_UNLESS_FROM_EYE,  ///< not for displays whose pictures are described as the eye sees them
    };

    std::string_view name;
    Severity severity = Severity::WARNING;
    /// The numbers that are still sound, in the unit that `reason` names. Not a limit where infinite.
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    std::string_view reason;  ///< what the limits mean, and why they are these
    Light light = Light::NOT_NEEDED;

    /// Faults cannot be allowed: what they name fails, also where it is meant.
    [[nodiscard]] bool canBeAllowed() const { return severity != Severity::FAULT; }

    /// Every rule there is, faults first. This is the only list of them.
    [[nodiscard]] static std::span<const Rule> all();

    /// The rule of this name, which must exist; used by the rules themselves.
    [[nodiscard]] static const Rule& named(std::string_view name);

    /// Whether a rule has this name and may be allowed.
    [[nodiscard]] static bool canBeAllowed(std::string_view name);

    /// The names that can be allowed, in the order of the list, with commas between them.
    [[nodiscard]] static std::string namesToAllow();
};

}  // namespace Veltrani::DisplayReport

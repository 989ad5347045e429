#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

/// How much a finding of the check matters.
enum class Severity {
    FAULT,    ///< a call of the library or a command of the program would fail
    WARNING,  ///< the display works, and is surely not the one that was meant
    REMARK,   ///< worth knowing
};

/// What a rule found in a display, as a technician reads it. All texts UTF-8.
struct Finding {
    Severity severity = Severity::WARNING;
    std::string rule;                 ///< its name, by which it can be allowed
    std::string where;                ///< what it concerns: "channel Left", "screen", ...
    std::string what;                 ///< the number that was found, what would be plausible, and the remedy
    std::vector<std::string> causes;  ///< why, outermost first; may be empty
};

/// "fault", "warning" or "remark".
[[nodiscard]] std::string_view nameOf(Severity severity);

}  // namespace Veltrani::DisplayReport

#pragma once

#include <exception>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Something that keeps a display from working, as a technician reads it. All texts UTF-8.
struct Fault {
    std::string where;                ///< what it concerns: "content mesh", "channel Left", ...
    std::string what;                 ///< what is wrong
    std::vector<std::string> causes;  ///< why, outermost first; may be empty
};

/// The fault that an exception reports: its message, and as causes those of the exceptions nested in it. Too little
/// memory is no fault of a display, and nothing that its author could mend: such an exception is thrown on.
[[nodiscard]] Fault faultOf(const std::string& where, const std::exception_ptr& exception);

/// What is wrong and why, in one line.
[[nodiscard]] std::string sentenceOf(const Fault& fault);

/// "where: what (causes)" in one line.
std::ostream& operator<<(std::ostream& out, const Fault& fault);

}  // namespace Veltrani::DisplayReport

#pragma once

#include "DisplayReport/check/DisplayDescription.h"

#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// What a check leaves out.
struct CheckOptions {
    bool quick = false;                ///< everything that needs light: the parts of the pictures on the screen, and
                                       ///< the rules about them
    std::vector<std::string> allowed;  ///< rules by their names, beside those that the configuration allows; see `Rule`
};

/// Loads everything that a configuration names, describes what a calibration would work with, and judges by rules
/// whether it is what was meant.
///
/// Every fault is collected, with its cause; none stops the check. The screens take the place of those in the
/// `ScreenManager` and stay loaded there; with a data directory set, their files are archived as on any load. No
/// projector is contacted.
class DisplayCheck {
public:
    /// A configuration file. One that is missing or faulty gives its faults and nothing else.
    [[nodiscard]] static DisplayDescription ofFile(const std::string& utf8Path, const CheckOptions& options = {});

    /// A configuration in memory.
    [[nodiscard]] static DisplayDescription ofConfiguration(XMLConfigManager& config, const CheckOptions& options = {});
};

}  // namespace Veltrani::DisplayReport

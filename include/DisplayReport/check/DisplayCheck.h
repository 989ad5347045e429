#pragma once

#include "DisplayReport/check/DisplayDescription.h"

#include <string>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// Loads everything that a configuration names and describes what a calibration would work with.
///
/// Every fault is collected, with its cause; none stops the check. The screens take the place of those in the
/// `ScreenManager` and stay loaded there; with a data directory set, their files are archived as on any load. No
/// projector is contacted.
class DisplayCheck {
public:
    /// A configuration file. One that is missing or faulty gives its faults and nothing else.
    [[nodiscard]] static DisplayDescription ofFile(const std::string& utf8Path);

    /// A configuration in memory.
    [[nodiscard]] static DisplayDescription ofConfiguration(XMLConfigManager& config);
};

}  // namespace Veltrani::DisplayReport

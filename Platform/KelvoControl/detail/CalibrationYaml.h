#pragma once

#include "KelvoControl/detail/CalibrationContent.h"

#include <string>
#include <string_view>

namespace KelvoControlDetail {

/// The entries of a calibration file in YAML: a mapping whose matrices carry the tag `!!opencv-matrix`. The first line
/// may be `%YAML:1.0`, which is no YAML but what such files begin with.
///
/// Throws `VeltraniParseException` for everything else, an entry that stands twice included.
[[nodiscard]] CalibrationContent calibrationFromYaml(std::string_view text, const std::string& document);

}  // namespace KelvoControlDetail

#pragma once

#include "KelvoControl/detail/CalibrationContent.h"

#include <string>
#include <string_view>

namespace KelvoControlDetail {

/// The entries of a calibration file in XML: a root `opencv_storage` whose matrices are elements with
/// `type_id="opencv-matrix"`. No document type, no entities but the five of XML itself, nothing fetched.
///
/// Throws `VeltraniParseException` for everything else, an entry that stands twice included.
[[nodiscard]] CalibrationContent calibrationFromXml(std::string_view text, const std::string& document);

}  // namespace KelvoControlDetail

#pragma once

#include "Common/RegularFile.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <memory>

namespace Veltrani {

/// The points of PCD files, read by the Point Cloud Library once `PcdCheck` has passed a file.
///
/// That library fills single-precision points from single-precision fields alone. Coordinates of double precision are
/// taken from the fields as it has read them, each rounded once. A cloud with a coordinate that is not finite is never
/// `is_dense`: the library itself knows "nan" in a text, but not "-nan" or "inf".
class PcdCloud {
public:
    using Cloud = pcl::PointCloud<pcl::PointXYZ>;

    PcdCloud() = delete;

    /// Throws what `PcdCheck::check` and `CloudLibrary::get` throw, `VeltraniParseException` for data that the library
    /// refuses and for a coordinate beyond single precision, and `std::bad_alloc` when memory runs out.
    [[nodiscard]] static std::shared_ptr<Cloud> read(const RegularFile& file);
};

}  // namespace Veltrani

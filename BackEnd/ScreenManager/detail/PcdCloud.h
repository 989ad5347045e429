#pragma once

#include "Common/RegularFile.h"
#include "ScreenManager/detail/PcdFormat.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <memory>

namespace Veltrani::ScreenManagerDetail {

/// Examines a PCD file before the reader of the Point Cloud Library sees it.
///
/// That reader crashes on a file without a FIELDS line, returns a cloud of zeros for coordinates that are no
/// floating-point numbers, reads `1,5` as 1, skips lines of the wrong length, and reserves whatever memory a header
/// announces. A file that passes here holds what it announces, and the reader takes it as it is meant:
/// - the header is complete (see `PcdHeader`), with x, y and z once each as floating-point numbers of either precision;
/// - ascii: as many lines as points, each with as many values as the fields have elements; every coordinate is a number
///   within single precision or one that is not finite, every other value a number;
/// - binary: the file is as long as the points need;
/// - compressed: the two sizes of the data agree with the points and with the file, and no field is padding;
/// - no data begin with something that a reader takes for one more header line.
///
/// What follows after the last point is ignored. Every refusal of what the reader accepts is listed in
/// docs/point-clouds.md.
class PcdCheck {
public:
    PcdCheck() = delete;

    /// Returns the header of a file that may be read. Throws `VeltraniParseException` with the reason and a remedy, and
    /// the line where there is one, for one that must not; `VeltraniMissingFileException` when reading fails and
    /// `std::bad_alloc` when an ascii file does not fit into memory.
    [[nodiscard]] static PcdHeader check(const RegularFile& file);
};

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

}  // namespace Veltrani::ScreenManagerDetail

#pragma once

#include "Common/RegularFile.h"

#include <string>

namespace Veltrani {

/// Examines a PCD file before the reader of the Point Cloud Library sees it.
///
/// That reader crashes on a file without a FIELDS line, answers a cloud of zeros for coordinates that are not
/// single-precision numbers, reads `1,5` as 1, skips lines of the wrong length, and reserves whatever memory a header
/// announces. A file that passes here holds what it announces, and the reader takes it as it is meant:
/// - the header is complete (see `PcdHeader`), with x, y and z once each as single-precision numbers;
/// - ascii: as many lines as points, each with as many values as the fields have elements; every coordinate is a finite
///   number or "nan", every other value a number;
/// - binary: the file is as long as the points need;
/// - compressed: the two sizes of the data agree with the points and with the file, and no field is padding;
/// - no data begin with something that a reader takes for one more header line.
///
/// What follows after the last point is ignored.
class PcdCheck {
public:
    PcdCheck() = delete;

    /// Why the file must not be read, with the line where there is one; empty when nothing speaks against it. May throw
    /// `VeltraniMissingFileException` when reading fails and `std::bad_alloc` when an ascii file does not fit into
    /// memory.
    [[nodiscard]] static std::wstring findFault(const RegularFile& file);
};

}  // namespace Veltrani

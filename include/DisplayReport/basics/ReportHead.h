#pragma once

#include <string>

namespace Veltrani::DisplayReport {

/// What a result for programs says of itself before its first number.
struct ReportHead {
    static constexpr const char* WORLD = "world, right-handed, +x right, +y forward, +z up";

    std::string report;         ///< what it is: "targets"; empty: no head is written
    std::string unit;           ///< name of the unit of lengths; empty where it is not known
    std::string frame = WORLD;  ///< of x, y, z
    int version = 1;            ///< counts changes after which older readers misread it

    /// The lines before the header of a table, each behind "# ". None without a report.
    [[nodiscard]] std::string comment() const;
};

}  // namespace Veltrani::DisplayReport

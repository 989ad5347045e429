#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

/// A file that a result was made from.
struct SourceFile {
    std::string name;    ///< UTF-8, as it was named
    std::string sha256;  ///< of its content, 64 lower-case hexadecimal digits; empty where it cannot be read
};

/// What a result for programs says of itself before its first number.
struct ReportHead {
    static constexpr const char* WORLD = "world, right-handed, +x right, +y forward, +z up";
    /// The same, of places where light arrives as it does at targets.
    static constexpr const char* ON_SCREEN = "world, right-handed, +x right, +y forward, +z up, on the screen";

    std::string report = {};    ///< what it is: "targets"; empty: no head is written
    std::string unit = {};      ///< name of the unit of lengths; empty where it is not known
    std::string frame = WORLD;  ///< of x, y, z; empty for a result without places
    int version = 1;            ///< counts changes after which older readers misread it
    std::vector<SourceFile> files = {};

    /// The lines before the header of a table, each behind "# ". None without a report.
    [[nodiscard]] std::string comment() const;
    /// Takes over what a line of `comment` states, without its end; any other line changes nothing.
    void read(std::string_view line);
    /// The first members of a JSON object, without its braces. None without a report.
    [[nodiscard]] std::string members() const;

    /// A configuration and the files that it names, each as it is now. One that cannot be read stands alone.
    [[nodiscard]] static std::vector<SourceFile> sourcesOf(const std::string& configurationFile);
    /// One file.
    [[nodiscard]] static SourceFile source(const std::string& utf8Path);
};

}  // namespace Veltrani::DisplayReport

#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// The file formats of a family of writers, each with its name, in the order in which they are offered:
///
///     const FormatList<TargetWriter, 2> FORMATS{{{"csv", makeWriter<TargetWriter, CsvTargetWriter>}, ...}};
template <class Writer, std::size_t N>
struct FormatList {
    struct Format {
        const char* name;
        std::unique_ptr<Writer> (*make)();
    };

    std::array<Format, N> formats;

    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const Format& format : formats) {
            names.emplace_back(format.name);
        }
        return names;
    }

    /// The writer of a format; null for an unknown one.
    [[nodiscard]] std::unique_ptr<Writer> writerOf(const std::string& name) const {
        for (const Format& format : formats) {
            if (name == format.name) {
                return format.make();
            }
        }
        return nullptr;
    }
};

template <class Writer, class Made>
[[nodiscard]] std::unique_ptr<Writer> makeWriter() {
    return std::make_unique<Made>();
}

}  // namespace Veltrani::DisplayReport

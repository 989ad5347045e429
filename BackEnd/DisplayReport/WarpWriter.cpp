#include "DisplayReport/WarpWriter.h"

#include "DisplayReport/PfmWarpWriter.h"
#include "DisplayReport/PngWarpWriter.h"
#include "DisplayReport/WarpMeshWriter.h"

#include <array>

namespace Veltrani::DisplayReport {

namespace {

struct Format {
    const char* name;
    std::unique_ptr<WarpWriter> (*make)();
};

template <class Writer>
std::unique_ptr<WarpWriter> make() {
    return std::make_unique<Writer>();
}

constexpr std::array<Format, 3> FORMATS{
    {{"mesh", make<WarpMeshWriter>}, {"pfm", make<PfmWarpWriter>}, {"png", make<PngWarpWriter>}}};

}  // namespace

std::vector<std::string> WarpWriter::formats() {
    std::vector<std::string> names;
    for (const Format& format : FORMATS) {
        names.emplace_back(format.name);
    }
    return names;
}

std::unique_ptr<WarpWriter> WarpWriter::ofFormat(const std::string& format) {
    for (const Format& known : FORMATS) {
        if (format == known.name) {
            return known.make();
        }
    }
    return nullptr;
}

}  // namespace Veltrani::DisplayReport

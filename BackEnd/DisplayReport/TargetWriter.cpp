#include "DisplayReport/TargetWriter.h"

#include "DisplayReport/CsvTargetWriter.h"
#include "DisplayReport/JsonTargetWriter.h"
#include "DisplayReport/PlyTargetWriter.h"

#include <array>

namespace Veltrani::DisplayReport {

namespace {

struct Format {
    const char* name;
    std::unique_ptr<TargetWriter> (*make)();
};

template <class Writer>
std::unique_ptr<TargetWriter> make() {
    return std::make_unique<Writer>();
}

constexpr std::array<Format, 3> FORMATS{
    {{"csv", make<CsvTargetWriter>}, {"json", make<JsonTargetWriter>}, {"ply", make<PlyTargetWriter>}}};

}  // namespace

std::vector<std::string> TargetWriter::formats() {
    std::vector<std::string> names;
    for (const Format& format : FORMATS) {
        names.emplace_back(format.name);
    }
    return names;
}

std::unique_ptr<TargetWriter> TargetWriter::ofFormat(const std::string& format) {
    for (const Format& known : FORMATS) {
        if (format == known.name) {
            return known.make();
        }
    }
    return nullptr;
}

}  // namespace Veltrani::DisplayReport

#include "Common/VeltraniException.h"
#include "DisplayReport/maps/PointReader.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

/// Any bytes are either read as finite points to their end or refused in one line that names the place.

namespace {

using Veltrani::DisplayReport::PointKind;
using Veltrani::DisplayReport::PointReader;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

void readAll(const std::string& text, PointKind kind) {
    std::istringstream in(text);
    PointReader reader(in, "points", kind);
    std::size_t points = 0;
    try {
        Point<double, 3> point;
        while (reader.next(point)) {
            ++points;
            require(std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]),
                    "every number is finite");
            require(kind == PointKind::LAYOUT || point[2] == 0, "a picture point has two numbers");
        }
        require(reader.bytesRead() == text.size(), "the whole text is read");
        require(!reader.next(point), "the end stays the end");
    } catch (const VeltraniParseException& fault) {
        require(fault.message.compare(0, 7, L"points:") == 0, "a refusal names its file");
        require(fault.message.find(L": found ") != std::wstring::npos, "a refusal says what was found");
        require(fault.message.find(L'\n') == std::wstring::npos && fault.message.size() < 600, "a refusal is one line");
    }
    require(points <= text.size(), "a point has at least one byte");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    readAll(text, PointKind::PICTURE);
    readAll(text, PointKind::LAYOUT);
    return 0;
}

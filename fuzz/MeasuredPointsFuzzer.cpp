#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "FitSession/MeasuredPointReader.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

/// Any bytes are either read as measurements that a fit can use or refused in one line that names the place.

namespace {

using Veltrani::FitSession::MeasuredPoint;
using Veltrani::FitSession::MeasuredPointReader;
using Veltrani::FitSession::MeasuredPoints;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

bool isFinite(const Point<double, 3>& point) {
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

void requireUsable(const MeasuredPoint& point) {
    require(point.channel < 2, "every point has a channel of the display");
    require(isFinite(point.world), "every place is finite");
    for (const double coordinate : {point.picture[0], point.picture[1]}) {
        require(coordinate >= 0 && coordinate <= 1, "every place in a picture lies in it");
    }
    if (point.covariance) {
        const auto& c = *point.covariance;
        require(c(0, 0) > 0 && c(1, 1) > 0 && c(2, 2) > 0, "variances are above zero");
        require(c(0, 1) == c(1, 0) && c(0, 2) == c(2, 0) && c(1, 2) == c(2, 1), "a covariance is symmetric");
    }
    require(!point.pictureDeviation || ((*point.pictureDeviation)[0] > 0 && (*point.pictureDeviation)[1] > 0),
            "deviations are above zero");
}

void readAll(const XMLConfigFile& config, const std::string& text, const char* unit, bool isFromTop) {
    std::istringstream in(text);
    try {
        const MeasuredPoints points = MeasuredPointReader(config, {unit, isFromTop}).read(in, "points");
        for (const MeasuredPoint& point : points.points) {
            requireUsable(point);
        }
        for (const auto& control : points.controls) {
            require(isFinite(control.measured) && isFinite(control.known), "every control point is finite");
        }
        require(points.points.size() + points.unmapped + points.withoutPicture <= points.rows,
                "every row is one point at most");
        require(Veltrani::FitSession::combineRepeated(points.points).points.size() <= points.points.size(),
                "combining makes no points");
    } catch (const VeltraniParseException& fault) {
        require(fault.message.compare(0, 7, L"points:") == 0, "a refusal names its file");
        require(fault.message.find(L": found ") != std::wstring::npos, "a refusal says what was found");
        require(fault.message.find(L"; ") != std::wstring::npos, "a refusal says what to do");
        require(fault.message.find(L'\n') == std::wstring::npos && fault.message.size() < 900, "a refusal is one line");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto config = XMLConfigFile::parse(
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><TargetData type='PlanarBasic'/>"
        "<Projectors><Projector id='A'><Resolution width='1920' height='1200'/></Projector>"
        "<Projector id='B'><Name>Right</Name></Projector></Projectors></Display>",
        "display.xml");
    const std::string text(reinterpret_cast<const char*>(data), size);
    readAll(*config, text, "", false);
    readAll(*config, text, "mm", true);
    return 0;
}

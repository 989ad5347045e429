#include "DisplayReport/OutlineSamples.h"

#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"

namespace Veltrani::DisplayReport {

namespace {

/// Whole steps of pixels along an edge of so many, from its first pixel on.
std::size_t stepsAlong(int pixels, int samplesPerEdge) {
    const int step = pixels / (samplesPerEdge - 1);
    return step == 0 ? 0 : static_cast<std::size_t>((pixels + step - 1) / step);
}

std::size_t pixelOutline(const Point<int, 2>& resolution, int samplesPerEdge) {
    if (samplesPerEdge < 2) {
        return 0;
    }
    const std::size_t across = stepsAlong(resolution[0], samplesPerEdge);
    const std::size_t upwards = stepsAlong(resolution[1], samplesPerEdge);
    return across == 0 || upwards == 0 ? 0 : 2 * (across + upwards);
}

/// Steps that are added up reach the end of an edge a little early or late: counted in the same way.
std::size_t addedUpOutline(int samplesPerEdge) {
    if (samplesPerEdge < 1) {
        return 0;
    }
    const double step = 1.0 / samplesPerEdge;
    std::size_t count = 0;
    double place = 0;
    do {
        ++count;
        place += step;
    } while (place < 1);
    place = 1;
    do {
        ++count;
        place -= step;
    } while (place > 0);
    return 2 * count;
}

}  // namespace

std::size_t outlineSamples(const TargetLocator& locator, int samplesPerEdge) {
    if (const auto* planar = dynamic_cast<const CustomPlanarTargetLocator*>(&locator)) {
        return pixelOutline(planar->getResolution(), samplesPerEdge);
    }
    if (dynamic_cast<const CustomProjectionTargetLocator*>(&locator) != nullptr) {
        return addedUpOutline(samplesPerEdge);
    }
    constexpr std::size_t EDGES = 4;
    return EDGES * static_cast<std::size_t>(samplesPerEdge);
}

}  // namespace Veltrani::DisplayReport

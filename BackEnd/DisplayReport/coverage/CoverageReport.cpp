#include "DisplayReport/coverage/CoverageReport.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Veltrani::DisplayReport {

double ChannelCoverage::pixels() const {
    return static_cast<double>(width) * height;
}

double ChannelCoverage::missed() const {
    // Less cannot be distinguished from the error of the borders of the light.
    constexpr double LEAST = 2e-5;
    const double part = std::clamp(1.0 - landed, 0.0, 1.0);
    return part < LEAST ? 0.0 : part;
}

double ChannelCoverage::meanPitch() const {
    const double onScreen = landed * pixels();
    return onScreen > 0.0 ? std::sqrt(area / onScreen) : 0.0;
}

double CoverageReport::areaLitBy(std::size_t count) const {
    return count < areaByCount.size() ? areaByCount[count] : 0.0;
}

double CoverageReport::areaLitByAtLeast(std::size_t count) const {
    const auto from = areaByCount.begin() + static_cast<std::ptrdiff_t>(std::min(count, areaByCount.size()));
    return std::accumulate(from, areaByCount.end(), 0.0);
}

double CoverageReport::partOfScreen(double area) const {
    return screenArea > 0.0 ? area / screenArea : 0.0;
}

bool CoverageReport::complete() const {
    return fault.empty() &&
           std::all_of(channels.begin(), channels.end(), [](const auto& channel) { return channel.fault.empty(); });
}

}  // namespace Veltrani::DisplayReport

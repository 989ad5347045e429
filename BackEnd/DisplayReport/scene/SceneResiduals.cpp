#include "DisplayReport/scene/SceneResiduals.h"

#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/scene/DisplayScene.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;

/// Sizes of the screen from its middle beyond which a point is left out: it would leave no room for the others.
constexpr double FAR_OFF = 2;

/// The largest length among the points that are no outliers, of all points where all are; 0 where there is none.
template <std::size_t N>
double largestOf(const DisplayScene& scene, Point<double, N> SceneResidual::*vector) {
    double largest = 0;
    double largestOfAll = 0;
    for (const SceneChannel& channel : scene.channels) {
        for (const SceneResidual& residual : channel.residuals) {
            const double length = norm(residual.*vector);
            if (std::isfinite(length)) {
                largestOfAll = std::max(largestOfAll, length);
                largest = residual.isOutlier ? largest : std::max(largest, length);
            }
        }
    }
    return largest > 0 ? largest : largestOfAll;
}

template <std::size_t N>
std::optional<double> rmsOf(const std::vector<SceneResidual>& residuals, Point<double, N> SceneResidual::*vector) {
    double squares = 0;
    std::size_t count = 0;
    for (const SceneResidual& residual : residuals) {
        const double length = norm(residual.*vector);
        if (!residual.isOutlier && std::isfinite(length)) {
            squares += length * length;
            ++count;
        }
    }
    return count > 0 ? std::optional(std::sqrt(squares / static_cast<double>(count))) : std::nullopt;
}

double diagonalOfPictures(const DisplayScene& scene) {
    double diagonal = 0;
    for (const SceneChannel& channel : scene.channels) {
        diagonal = std::max(diagonal, std::hypot(channel.width, channel.height));
    }
    return diagonal;
}

}  // namespace

double ResidualCollector::roundFactor(double largest, double most) {
    if (!(largest > 0) || !(most > 0)) {
        return 1;
    }
    const double factor = std::min(most / largest, LARGEST_FACTOR);
    if (factor <= 1) {
        return 1;
    }
    const double power = std::pow(10, std::floor(std::log10(factor)));
    for (const double digit : {5.0, 2.0}) {
        if (digit * power <= factor) {
            return digit * power;
        }
    }
    return power;
}

ResidualScale ResidualCollector::scaleOf(const DisplayScene& scene) const {
    const double size = norm(scene.core().size());
    const double diagonal = diagonalOfPictures(scene);
    ResidualScale scale;
    scale.longestOnScreen = LONGEST_SHARE * size;
    scale.longestInPicture = LONGEST_SHARE * diagonal;
    scale.onScreen = m_factor.value_or(roundFactor(largestOf(scene, &SceneResidual::offset), USUAL_SHARE * size));
    scale.inPicture = m_factor.value_or(roundFactor(largestOf(scene, &SceneResidual::pixels), USUAL_SHARE * diagonal));
    return scale;
}

void ResidualCollector::addTo(DisplayScene& scene, const DisplayResiduals& residuals) const {
    const Extent core = scene.core();
    const P3 middle = core.empty() ? P3() : core.minimum() + core.size() * 0.5;
    const double reach = FAR_OFF * norm(core.size());
    std::size_t farOff = 0;
    for (const DisplayResiduals::Channel& given : residuals.channels) {
        const auto channel = std::find_if(scene.channels.begin(), scene.channels.end(), [&](const SceneChannel& one) {
            return one.targets.projectorId == given.projectorId;
        });
        if (channel == scene.channels.end()) {
            continue;
        }
        for (const SceneResidual& residual : given.residuals) {
            if (core.empty() || norm(residual.point - middle) <= reach) {
                channel->residuals.push_back(residual);
            } else {
                ++farOff;
            }
        }
        for (std::string& fact : residualFacts(given.residuals, scene.unit)) {
            channel->facts.push_back(std::move(fact));
        }
    }
    if (farOff > 0) {
        scene.notes.push_back(std::to_string(farOff) + " measured points lie too far from the screen to be drawn");
    }
    scene.residuals = scaleOf(scene);
}

std::vector<std::string> residualFacts(const std::vector<SceneResidual>& residuals, const std::string& unit) {
    const auto outliers = std::count_if(residuals.begin(), residuals.end(),
                                        [](const SceneResidual& residual) { return residual.isOutlier; });
    std::vector<std::string> facts{std::to_string(residuals.size()) +
                                   (residuals.size() == 1 ? " measured point, " : " measured points, ") +
                                   std::to_string(outliers) + (outliers == 1 ? " outlier" : " outliers")};
    std::string rms;
    if (const auto pixels = rmsOf(residuals, &SceneResidual::pixels)) {
        rms = "RMS " + significantText(*pixels) + " pixels";
    }
    if (const auto length = rmsOf(residuals, &SceneResidual::offset)) {
        rms += (rms.empty() ? "RMS " : ", ") + significantText(*length) + (unit.empty() ? "" : " " + unit);
    }
    if (!rms.empty()) {
        facts.push_back(rms);
    }
    return facts;
}

}  // namespace Veltrani::DisplayReport

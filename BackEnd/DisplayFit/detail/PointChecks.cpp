#include "DisplayFit/detail/PointChecks.h"

#include "DisplayFit/detail/Median.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <numbers>
#include <sstream>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using Vector = Point<double, 3>;

/// A display is never configured so wrongly that what it covers differs by more than this factor.
constexpr double AS_CONFIGURED = 2;

/// How near a ratio of sizes must come to that of two units, as a factor.
constexpr double NEAR_RATIO = 1.35;

/// Two units that are taken for one another.
struct UnitPair {
    const char* smaller = nullptr;
    const char* larger = nullptr;
};

struct NamedRatio {
    double ratio = 1;
    UnitPair units;
    UnitPair others;  ///< whose ratio is hardly different; may be empty
};

/// Ratios of the units that lengths are measured in: more than twice, so that no other cause is as likely.
constexpr std::array RATIOS{NamedRatio{1000, {"millimetres", "metres"}, {}},
                            NamedRatio{304.8, {"millimetres", "feet"}, {}},
                            NamedRatio{100, {"centimetres", "metres"}, {}},
                            NamedRatio{39.37, {"inches", "metres"}, {}},
                            NamedRatio{25.4, {"millimetres", "inches"}, {}},
                            NamedRatio{12, {"inches", "feet"}, {"millimetres", "centimetres"}},
                            NamedRatio{3.281, {"feet", "metres"}, {"centimetres", "inches"}}};

/// A place in the picture is read to a pixel or so. Places that are no further from a line than three times this part
/// of the picture were meant to lie on it.
constexpr double READING = 1e-3;

/// Measurements with deviations above this part of what they cover say nothing about a picture.
constexpr double LARGEST_DEVIATION = 0.1;

/// Pictures are wider, and higher, than this: radians.
constexpr double NARROWEST = std::numbers::pi / 180;
/// Where a narrow one is configured: it may become narrower by this factor.
constexpr double NARROWER = 3;

/// A projector stands no further from its points than this many times what they cover.
constexpr double FURTHEST = 100;

/// Width and height of a picture as angles, radians.
Point<double, 2> anglesOf(const DisplayFit::ChannelValues& values) {
    if (values.lens) {
        const LensNumbers& lens = *values.lens;
        return {2 * std::atan(std::abs(0.5 * lens.imageWidth / lens.fx)),
                2 * std::atan(std::abs(0.5 * lens.imageHeight / lens.fy))};
    }
    const DisplayFit::FrustumAngles& frustum = values.frustum;
    return {std::abs(frustum.right - frustum.left), std::abs(frustum.top - frustum.bottom)};
}

/// "millimetres for metres": which unit the lengths may have, and which one they were taken for.
std::string takenText(const UnitPair& units, bool isSmaller) {
    return std::string(isSmaller ? units.smaller : units.larger) + " for " + (isSmaller ? units.larger : units.smaller);
}

FitFinding wrongUnit(const NamedRatio& named, double times, bool isWide, const std::string& unit) {
    return {FitFinding::Kind::WRONG_UNIT, FitOutcome::UNUSABLE,
            "the measured points cover an area about " + std::to_string(std::lround(times)) + " times as " +
                (isWide ? "wide" : "narrow") + " as the channel does on the screen, in " + unit + ": they are in a " +
                (isWide ? "smaller" : "larger") + " unit than the one that was stated, such as " +
                takenText(named.units, isWide) +
                (named.others.larger != nullptr ? " or " + takenText(named.others, isWide) : ""),
            "state the unit of the points: --unit, or the line \"# unit\" of their table"};
}

std::string roundedText(double number) {
    std::ostringstream text;
    text << std::setprecision(3) << number;
    return text.str();
}

}  // namespace

double sizeOf(const std::vector<Vector>& places) {
    Vector middle;
    for (std::size_t k = 0; k < 3; ++k) {
        std::vector<double> coordinates;
        std::transform(places.begin(), places.end(), std::back_inserter(coordinates),
                       [k](const Vector& place) { return place[k]; });
        middle[k] = medianOf(coordinates);
    }
    std::vector<double> distances;
    std::transform(places.begin(), places.end(), std::back_inserter(distances),
                   [&](const Vector& place) { return norm(place - middle); });
    return medianOf(distances);
}

double typicalPointDeviation(const FitPoints& points) {
    std::vector<double> squares;
    for (const Matrix<double, 3>& covariance : points.covariance) {
        squares.push_back((covariance(0, 0) + covariance(1, 1) + covariance(2, 2)) / 3);
    }
    return squares.empty() ? 0.0 : std::sqrt(medianOf(squares));
}

std::optional<FitFinding> faultOfPlaces(const FitPoints& points, const PointShape& shape, std::size_t unknowns) {
    // One equation more than values, so that there is a residual; and no line.
    const std::size_t needed = std::max<std::size_t>(unknowns / 2 + 1, 3);
    if (points.size() < needed) {
        return FitFinding{FitFinding::Kind::TOO_FEW_POINTS, FitOutcome::UNUSABLE,
                          std::to_string(points.size()) + (points.size() == 1 ? " point is" : " points are") +
                              " too few" + (unknowns > 0 ? " for " + std::to_string(unknowns) + " values" : "") +
                              ": at least " + std::to_string(needed) + " are needed",
                          "measure more points, or hold some of the values"};
    }
    const double deviation = typicalPointDeviation(points);
    if (!shape.isStraight(0) && (shape.isStraight(deviation) || deviation > LARGEST_DEVIATION * shape.extents[0])) {
        return FitFinding{FitFinding::Kind::DEVIATIONS_TOO_LARGE, FitOutcome::UNUSABLE,
                          "the stated deviations, about " + roundedText(deviation) +
                              ", are too large beside what the points cover, about " +
                              roundedText(2 * shape.extents[0]) + ", both in the native unit",
                          "state deviations in the unit of x, y, z, and covariances in its square"};
    }
    if (shape.isStraight(deviation)) {
        return FitFinding{FitFinding::Kind::POINTS_ON_LINE, FitOutcome::UNUSABLE,
                          "the measured points lie on one line, or in one place",
                          "measure points all over the picture"};
    }
    std::vector<Vector> places;
    for (const Point<double, 2>& picture : points.picture) {
        places.push_back({picture[0], picture[1], 0});
    }
    if (PointShape::of(places).isStraight(READING)) {
        return FitFinding{FitFinding::Kind::POINTS_ON_LINE, FitOutcome::UNUSABLE,
                          "the points lie on one line of the picture, or in one place of it, to a few pixels",
                          "measure points all over the picture"};
    }
    return std::nullopt;
}

std::optional<FitFinding> faultOfValues(const DisplayFit::ChannelFit& fit, const PointShape& shape) {
    const auto refuse = [](const std::string& text) {
        return FitFinding{FitFinding::Kind::IMPLAUSIBLE_VALUES, FitOutcome::UNUSABLE, text,
                          "check that x, y, z are in the order, the unit and the frame of the display"};
    };
    if (fit.solved.frustum) {
        const Point<double, 2> before = anglesOf(fit.before);
        const Point<double, 2> after = anglesOf(fit.after);
        for (std::size_t k = 0; k < 2; ++k) {
            if (!(after[k] >= std::min(NARROWEST, before[k] / NARROWER))) {
                return refuse(std::string("no projector: the picture came out ") +
                              roundedText(after[k] * 180 / std::numbers::pi) + " degrees " +
                              (k == 0 ? "wide" : "high"));
            }
        }
    }
    if (fit.solved.position) {
        const double distance = norm(fit.after.position - shape.centre);
        if (!(distance <= FURTHEST * shape.extents[0])) {
            return refuse("no projector: it came out " + roundedText(distance) +
                          " from its points in the native unit, which cover about " +
                          roundedText(2 * shape.extents[0]));
        }
    }
    return std::nullopt;
}

std::optional<FitFinding> faultOfUnit(const ChannelModel& model, const std::string& unit) {
    std::vector<Vector> measured;
    std::vector<Vector> placed;
    for (std::size_t i = 0; i < model.points().size(); ++i) {
        Vector place;
        if (model.landing(i, place)) {
            measured.push_back(model.points().world[i]);
            placed.push_back(place);
        }
    }
    constexpr std::size_t LEAST = 3;
    if (placed.size() < LEAST || !(sizeOf(placed) > 0)) {
        return std::nullopt;
    }
    const double ratio = sizeOf(measured) / sizeOf(placed);
    const double larger = std::max(ratio, 1 / ratio);
    if (!(larger > AS_CONFIGURED) || !std::isfinite(larger)) {
        return std::nullopt;
    }
    for (const NamedRatio& named : RATIOS) {
        if (std::max(larger / named.ratio, named.ratio / larger) < NEAR_RATIO) {
            return wrongUnit(named, larger, ratio > 1, unit);
        }
    }
    return std::nullopt;
}

}  // namespace Veltrani::DisplayFitDetail

#include "DisplayFit/detail/MovedFrame.h"

#include "DisplayFit/detail/Median.h"
#include "DisplayFit/detail/PointChecks.h"

#include <Eigen/Core>
#include <Eigen/Geometry>
#include <Eigen/SVD>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <numbers>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using Places = Eigen::Matrix3Xd;  // a column each

/// Points of several channels that are further off than this, in widths of a picture, were not displaced one by one.
constexpr double DISPLACED = 0.08;
/// The same of one channel alone, which may have been hung elsewhere.
constexpr double DISPLACED_ALONE = 1;

/// What the movement leaves, as a part of what it moves.
constexpr double LEFT = 0.25;

/// The part of the points that is moved worst, and decides nothing.
constexpr double OUTLIERS = 0.2;

constexpr std::size_t FEWEST = 6;

/// The points of one station, and where their light should land.
struct Station {
    std::vector<Eigen::Vector3d> measured;
    std::vector<Eigen::Vector3d> landing;
    std::vector<double> widths;  ///< of their pictures
    std::set<std::size_t> channels;

    [[nodiscard]] std::size_t size() const { return measured.size(); }
};

Eigen::Vector3d vectorOf(const Point<double, 3>& point) {
    return {point[0], point[1], point[2]};
}

std::map<std::string, Station> stationsOf(const std::map<std::size_t, ConfiguredLight>& lights,
                                          std::span<const DisplayFit::MeasuredPoint> given) {
    std::map<std::string, Station> stations;
    for (const auto& [channel, light] : lights) {
        for (std::size_t i = 0; light.isKnown() && i < light.points().size(); ++i) {
            if (light.landings()[i]) {
                Station& station = stations[given[light.points().given[i]].set];
                station.measured.push_back(vectorOf(light.points().world[i]));
                station.landing.push_back(vectorOf(*light.landings()[i]));
                station.widths.push_back(light.width());
                station.channels.insert(channel);
            }
        }
    }
    return stations;
}

/// The movement of some of the points that leaves the smallest squares.
Eigen::Isometry3d movementOf(const Station& station, const std::vector<std::size_t>& which) {
    Places from(3, static_cast<Eigen::Index>(which.size()));
    Places to = from;
    for (std::size_t i = 0; i < which.size(); ++i) {
        from.col(static_cast<Eigen::Index>(i)) = station.measured[which[i]];
        to.col(static_cast<Eigen::Index>(i)) = station.landing[which[i]];
    }
    return Eigen::Isometry3d(Eigen::umeyama(from, to, false));
}

/// The same, again without the points that it moves worst.
Eigen::Isometry3d robustMovementOf(const Station& station) {
    std::vector<std::size_t> which(station.size());
    for (std::size_t i = 0; i < which.size(); ++i) {
        which[i] = i;
    }
    const Eigen::Isometry3d first = movementOf(station, which);
    const auto left = [&](std::size_t i) { return (first * station.measured[i] - station.landing[i]).norm(); };
    std::sort(which.begin(), which.end(), [&](std::size_t a, std::size_t b) { return left(a) < left(b); });
    which.resize(which.size() - static_cast<std::size_t>(OUTLIERS * static_cast<double>(which.size())));
    return movementOf(station, which);
}

/// The median distance between the points, moved, and where their light lands, in widths of the pictures.
double missOf(const Station& station, const Eigen::Isometry3d& movement) {
    std::vector<double> distances;
    for (std::size_t i = 0; i < station.size(); ++i) {
        distances.push_back((movement * station.measured[i] - station.landing[i]).norm() / station.widths[i]);
    }
    return medianOf(std::move(distances));
}

std::string describe(const Station& station, const Eigen::Isometry3d& movement, const std::string& unit) {
    std::vector<double> ways;
    for (const Eigen::Vector3d& point : station.measured) {
        ways.push_back((movement * point - point).norm());
    }
    const double angle = Eigen::AngleAxisd(movement.rotation()).angle() * 180 / std::numbers::pi;
    std::ostringstream text;
    text << std::setprecision(3) << "moved by " << medianOf(std::move(ways)) << (unit.empty() ? "" : " ") << unit;
    if (angle >= 1) {
        text << ", turned by " << std::lround(angle) << " degrees";
    }
    return text.str();
}

}  // namespace

MovedFrames MovedFrames::of(const std::map<std::size_t, ConfiguredLight>& lights,
                            std::span<const DisplayFit::MeasuredPoint> given, const std::string& unit) {
    MovedFrames moved;
    for (const auto& [name, station] : stationsOf(lights, given)) {
        if (station.size() < FEWEST) {
            continue;
        }
        const double before = missOf(station, Eigen::Isometry3d::Identity());
        const double plausible = station.channels.size() > 1 ? DISPLACED : DISPLACED_ALONE;
        const Eigen::Isometry3d movement = robustMovementOf(station);
        const double after = missOf(station, movement);
        if (!(before > plausible) || !(after < LEFT * before)) {
            continue;
        }
        moved.miss = std::max(moved.miss, after);
        moved.sets.insert(name);
        moved.findings.push_back({FitFinding::Kind::FRAME_MOVED, FitOutcome::DOUBTFUL,
                                  (name.empty() ? "all points" : "all points of the set \"" + name + "\"") +
                                      std::string(" lie where the configured light lands once they are ") +
                                      describe(station, movement, unit) +
                                      ": the measurement is in a frame of its own, or the configuration is",
                                  "measure control points and register the frame (--register rigid); where all "
                                  "projectors were moved together indeed, nothing is to be done"});
    }
    return moved;
}

}  // namespace Veltrani::DisplayFitDetail

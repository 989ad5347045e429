#include "DisplayFit/detail/MixedFrames.h"

#include "DisplayFit/detail/Median.h"
#include "DisplayFit/detail/Picker.h"

#include <Eigen/Core>
#include <Eigen/Geometry>
#include <Eigen/SVD>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <iterator>
#include <map>
#include <sstream>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using Group = std::vector<std::size_t>;

/// A movement explains a point that it brings so near to where its light lands, in widths of the picture: what a
/// projector deviates from its configuration is a movement, too, but for so much.
constexpr double NEAR = 0.03;
/// Two movements are different where they bring their points further apart than this.
constexpr double APART = 4 * NEAR;
/// A projector that zooms scales its picture on the screen by no more than this.
constexpr double LARGEST_SCALE = 1.3;

/// The smaller group has so many of the points at least, and both have nearly all.
constexpr std::size_t FEWEST = 6;
constexpr double SMALLER = 0.15;
constexpr double BOTH = 0.85;

/// Movements of three points that are tried: where half of the points are of one frame, one of eight is of it.
constexpr int TRIALS = 200;
constexpr int REFINEMENTS = 3;

constexpr std::size_t MOST_LINES = 3;

/// The points of one station in one channel, and where their light should land.
struct Pairs {
    std::vector<Eigen::Vector3d> measured;
    std::vector<Eigen::Vector3d> landing;
    std::vector<std::size_t> rows;
};

using Movement = Eigen::Affine3d;

Eigen::Vector3d vectorOf(const Point<double, 3>& point) {
    return {point[0], point[1], point[2]};
}

Movement movementOf(const Pairs& pairs, const Group& group) {
    Eigen::Matrix3Xd from(3, static_cast<Eigen::Index>(group.size()));
    Eigen::Matrix3Xd to = from;
    for (std::size_t i = 0; i < group.size(); ++i) {
        from.col(static_cast<Eigen::Index>(i)) = pairs.measured[group[i]];
        to.col(static_cast<Eigen::Index>(i)) = pairs.landing[group[i]];
    }
    return Movement(Eigen::umeyama(from, to, true));
}

/// Those of some points that a movement explains.
Group explainedBy(const Movement& movement, const Pairs& pairs, const Group& among, double width) {
    Group group;
    const double scale = std::cbrt(movement.linear().determinant());
    if (!(scale < LARGEST_SCALE && scale > 1 / LARGEST_SCALE)) {
        return group;
    }
    std::copy_if(among.begin(), among.end(), std::back_inserter(group), [&](std::size_t i) {
        return (movement * pairs.measured[i] - pairs.landing[i]).norm() <= NEAR * width;
    });
    return group;
}

/// The most of some points that one movement explains.
Group largestOf(const Pairs& pairs, const Group& among, double width) {
    Group largest;
    Picker pick(among.size());
    for (int trial = 0; trial < TRIALS; ++trial) {
        const Group three{among[pick()], among[pick()], among[pick()]};
        Group group = explainedBy(movementOf(pairs, three), pairs, among, width);
        for (int refinement = 0; refinement < REFINEMENTS && group.size() >= FEWEST; ++refinement) {
            group = explainedBy(movementOf(pairs, group), pairs, among, width);
        }
        if (group.size() > largest.size()) {
            largest = std::move(group);
        }
    }
    return largest;
}

std::string linesOf(const Pairs& pairs, const Group& group) {
    std::string text;
    std::size_t named = 0;
    for (const std::size_t i : group) {
        if (pairs.rows[i] > 0 && named < MOST_LINES) {
            text += (named == 0 ? ", such as lines " : ", ") + std::to_string(pairs.rows[i]);
            ++named;
        }
    }
    return text;
}

std::optional<FitFinding> mixtureOf(const Pairs& pairs, double width, const std::string& unit) {
    Group all(pairs.measured.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = i;
    }
    const auto count = static_cast<double>(all.size());
    if (all.size() < 2 * FEWEST) {
        return std::nullopt;
    }
    const Group first = largestOf(pairs, all, width);
    Group others;
    std::set_difference(all.begin(), all.end(), first.begin(), first.end(), std::back_inserter(others));
    if (first.size() < FEWEST || others.size() < FEWEST) {
        return std::nullopt;
    }
    const Group second = largestOf(pairs, others, width);
    const auto ofSecond = static_cast<double>(second.size());
    if (second.size() < FEWEST || ofSecond < SMALLER * count ||
        static_cast<double>(first.size()) + ofSecond < BOTH * count) {
        return std::nullopt;
    }
    const Movement one = movementOf(pairs, first);
    const Movement other = movementOf(pairs, second);
    std::vector<double> ways;
    for (const std::size_t i : second) {
        ways.push_back((one * pairs.measured[i] - other * pairs.measured[i]).norm());
    }
    const double way = medianOf(std::move(ways));
    if (!(way > APART * width)) {
        return std::nullopt;
    }
    std::ostringstream text;
    text << std::setprecision(2) << "the points are of two frames: about " << std::lround(100 * ofSecond / count)
         << " % of them" << linesOf(pairs, second) << ", lie among the others once they are moved by " << way
         << (unit.empty() ? "" : " ") << unit << ", as where an instrument was set up anew";
    return FitFinding{FitFinding::Kind::FRAMES_MIXED, FitOutcome::DOUBTFUL, text.str(),
                      "name the station of each row in a column set, measure control points of each station, and "
                      "register the frames (--register rigid); or check whether these lines are of another channel"};
}

}  // namespace

std::optional<FitFinding> mixedFrames(const ConfiguredLight& light, std::span<const DisplayFit::MeasuredPoint> given,
                                      const std::string& unit) {
    std::map<std::string, Pairs> stations;
    for (std::size_t i = 0; light.isKnown() && i < light.points().size(); ++i) {
        if (light.landings()[i]) {
            const DisplayFit::MeasuredPoint& point = given[light.points().given[i]];
            Pairs& pairs = stations[point.set];
            pairs.measured.push_back(vectorOf(light.points().world[i]));
            pairs.landing.push_back(vectorOf(*light.landings()[i]));
            pairs.rows.push_back(point.row);
        }
    }
    for (const auto& [set, pairs] : stations) {
        if (auto finding = mixtureOf(pairs, light.width(), unit)) {
            return finding;
        }
    }
    return std::nullopt;
}

}  // namespace Veltrani::DisplayFitDetail

#include "FitSession/MeasuredPoints.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <Eigen/Geometry>
#include <Eigen/LU>

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace Veltrani::FitSession {

namespace {

/// A difference larger than so many standard deviations is none of measuring.
constexpr double CONTRADICTION_SIGMAS = 4.0;

/// The same of measurements without deviations, as a part of what the points of the channel cover.
constexpr double CONTRADICTION_PART = 0.1;
constexpr std::size_t FEWEST_PLACES = 8;

using Group = std::vector<const MeasuredPoint*>;

Eigen::Vector3d vectorOf(const Point<double, 3>& point) {
    return {point[0], point[1], point[2]};
}

Eigen::Matrix3d matrixOf(const Matrix<double, 3>& matrix) {
    return Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(matrix.data());
}

/// The mean by the inverse covariances C: (sum C^-1)^-1 sum C^-1 p, whose covariance is (sum C^-1)^-1.
void takeWeightedMean(const Group& group, MeasuredPoint& mean) {
    Eigen::Matrix3d information = Eigen::Matrix3d::Zero();
    // Relative to the first: coordinates are large beside what is measured differently.
    const Eigen::Vector3d first = vectorOf(group.front()->world);
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (const MeasuredPoint* const point : group) {
        const Eigen::Matrix3d weight = matrixOf(*point->covariance).inverse();
        information += weight;
        sum += weight * (vectorOf(point->world) - first);
    }
    const Eigen::Matrix3d covariance = information.inverse();
    const Eigen::Vector3d place = first + covariance * sum;
    mean.world = {place[0], place[1], place[2]};
    Matrix<double, 3> stored;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const auto r = static_cast<Eigen::Index>(row);
            const auto c = static_cast<Eigen::Index>(column);
            // An inverse is symmetric to rounding only.
            stored(row, column) = (covariance(r, c) + covariance(c, r)) / 2;
        }
    }
    mean.covariance = stored;
}

void takePlainMean(const Group& group, MeasuredPoint& mean) {
    const Point<double, 3> first = group.front()->world;
    Point<double, 3> sum;
    for (const MeasuredPoint* const point : group) {
        sum += point->world - first;
    }
    mean.world = first + sum * (1.0 / static_cast<double>(group.size()));
}

/// True when one of them is farther from the mean than its covariance explains. The covariance of the difference is
/// C - M, that of the measurement less that of the mean, since the mean holds the measurement.
bool contradict(const Group& group, const MeasuredPoint& mean) {
    return std::any_of(group.begin(), group.end(), [&mean](const MeasuredPoint* point) {
        const Eigen::Matrix3d difference = matrixOf(*point->covariance) - matrixOf(*mean.covariance);
        const Eigen::LDLT<Eigen::Matrix3d> factors(difference);
        const Eigen::Vector3d offset = vectorOf(point->world) - vectorOf(mean.world);
        // The larger of the two where one is so much better than the others that the difference is rounding.
        const Eigen::Matrix3d covariance =
            factors.isPositive() && (factors.vectorD().array() > 0).all() ? difference : matrixOf(*point->covariance);
        const double squared = offset.dot(covariance.ldlt().solve(offset));
        return !(squared <= CONTRADICTION_SIGMAS * CONTRADICTION_SIGMAS);
    });
}

using Groups = std::map<std::pair<std::size_t, Point<double, 2>>, Group>;

/// The diagonal of the box around the points of each channel; none for a channel with so few places that these say
/// nothing about each other.
std::map<std::size_t, double> extentsOf(const Groups& groups) {
    std::map<std::size_t, Eigen::AlignedBox3d> boxes;
    std::map<std::size_t, std::size_t> places;
    for (const auto& [key, group] : groups) {
        ++places[key.first];
        for (const MeasuredPoint* const point : group) {
            boxes[key.first].extend(vectorOf(point->world));
        }
    }
    std::map<std::size_t, double> extents;
    for (const auto& [channel, box] : boxes) {
        extents[channel] =
            places[channel] < FEWEST_PLACES ? std::numeric_limits<double>::infinity() : box.diagonal().norm();
    }
    return extents;
}

/// None when the measurements contradict each other.
/// @param extent of the points of their channel
std::optional<MeasuredPoint> meanOf(const Group& group, double extent) {
    MeasuredPoint mean = *group.front();
    for (const MeasuredPoint* const point : group) {
        mean.set = mean.set == point->set ? mean.set : "";
        mean.pictureDeviation = std::max(mean.pictureDeviation, point->pictureDeviation);
    }
    if (!mean.covariance) {
        takePlainMean(group, mean);
        const bool isApart = std::any_of(group.begin(), group.end(), [&](const MeasuredPoint* point) {
            return norm(point->world - mean.world) > CONTRADICTION_PART * extent;
        });
        return isApart ? std::nullopt : std::optional(mean);
    }
    takeWeightedMean(group, mean);
    return contradict(group, mean) ? std::nullopt : std::optional(mean);
}

/// Calls back once for so many steps.
class Pulse {
public:
    explicit Pulse(const std::function<void()>& pulse) : m_pulse(pulse) {}

    void count() {
        constexpr std::size_t STEPS = 1024;
        if (m_pulse && ++m_steps % STEPS == 0) {
            m_pulse();
        }
    }

private:
    const std::function<void()>& m_pulse;
    std::size_t m_steps = 0;
};

}  // namespace

CombinedPoints combineRepeated(const std::vector<MeasuredPoint>& points, const std::function<void()>& pulse) {
    Pulse now(pulse);
    Groups groups;
    for (const MeasuredPoint& point : points) {
        now.count();
        groups[{point.channel, point.picture}].push_back(&point);
    }
    const std::map<std::size_t, double> extents = extentsOf(groups);
    // By their first rows, of which no two are the same.
    std::map<std::size_t, std::pair<MeasuredPoint, std::vector<std::size_t>>> combined;
    for (const auto& [key, group] : groups) {
        now.count();
        if (const auto mean = group.size() > 1 ? meanOf(group, extents.at(key.first)) : std::nullopt) {
            auto& [point, lines] = combined[mean->row];
            point = *mean;
            for (const MeasuredPoint* const of : group) {
                lines.push_back(of->row);
            }
            continue;
        }
        for (const MeasuredPoint* const point : group) {
            combined[point->row] = {*point, {point->row}};
        }
    }
    CombinedPoints result;
    for (auto& [row, point] : combined) {
        now.count();
        result.points.push_back(std::move(point.first));
        result.lines.push_back(std::move(point.second));
    }
    return result;
}

}  // namespace Veltrani::FitSession

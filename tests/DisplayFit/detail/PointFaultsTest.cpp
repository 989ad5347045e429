#include "DisplayFit/detail/PointFaults.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using Veltrani::DisplayFit::MeasuredPoint;
using Veltrani::DisplayFitDetail::requireSound;

std::string faultOfPoints(const std::vector<MeasuredPoint>& points, std::size_t channels = 2) {
    try {
        requireSound(points, channels, {});
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "";
}

MeasuredPoint soundPoint(std::size_t channel = 0) {
    MeasuredPoint point;
    point.channel = channel;
    point.picture = {0.5, 0.5};
    point.world = {1, 2, 3};
    return point;
}

TEST(PointFaults, TheFirstPointThatIsUnsoundIsNamedByItsLineOrItsNumber) {
    std::vector<MeasuredPoint> points(4, soundPoint(1));
    EXPECT_EQ(faultOfPoints(points), "");
    EXPECT_EQ(faultOfPoints(points, 1), "Fit: point 0: channel 1 of 1, counted from 0");
    points[0].channel = points[1].channel = 0;
    EXPECT_EQ(faultOfPoints(points, 1), "Fit: point 2: channel 1 of 1, counted from 0");
    points[2].row = 9;
    EXPECT_EQ(faultOfPoints(points, 1), "Fit: line 9: channel 1 of 1, counted from 0");
}

TEST(PointFaults, EachCoordinateIsANumberOfAtMostAMillionMillions) {
    for (std::size_t k = 0; k < 5; ++k) {
        for (const double number : {1e12, -1e12, 1.001e12, -1.001e12, std::numeric_limits<double>::quiet_NaN(),
                                    std::numeric_limits<double>::infinity()}) {
            std::vector<MeasuredPoint> points(3, soundPoint());
            (k < 2 ? points[1].picture[k] : points[1].world[k - 2]) = number;
            EXPECT_EQ(faultOfPoints(points).empty(), std::abs(number) <= 1e12) << k << ", " << number;
        }
    }
}

std::string faultOfCovariance(const std::vector<double>& numbers) {
    std::vector<MeasuredPoint> points(2, soundPoint());
    for (MeasuredPoint& point : points) {
        point.covariance = Matrix<double, 3>();
    }
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            (*points[1].covariance)(r, c) = numbers[3 * r + c];
        }
    }
    return faultOfPoints(points);
}

TEST(PointFaults, ACovarianceIsSymmetricAndHasNoVarianceBelowZero) {
    EXPECT_EQ(faultOfCovariance({4, 1, 0.5, 1, 9, -2, 0.5, -2, 16}), "");
    EXPECT_THAT(faultOfCovariance({4, 1, 0.5, 1.001, 9, -2, 0.5, -2, 16}), HasSubstr("not symmetric"));
    EXPECT_THAT(faultOfCovariance({4, 1, 0.5, 1, 9, -2, 0.5, 2, 16}), HasSubstr("not symmetric"));
    EXPECT_EQ(faultOfCovariance({4, 1, 0.5, 1 + 1e-9, 9, -2, 0.5, -2, 16}), "") << "rounding";
    // The eigenvalues of (1, 2; 2, 1) are 3 and -1.
    EXPECT_THAT(faultOfCovariance({1, 2, 0, 2, 1, 0, 0, 0, 1}),
                HasSubstr("point 1: a covariance with a variance below"));
    EXPECT_THAT(faultOfCovariance({2e12, 0, 0, 0, 1, 0, 0, 0, 1}), HasSubstr("not finite"));
    EXPECT_EQ(faultOfCovariance({1e12, 0, 0, 0, 1, 0, 0, 0, 1}), "");
}

TEST(PointFaults, APointThatIsExactWouldOutweighAllOthers) {
    constexpr const char* EXACT = "deviations of zero";
    // A direction without a deviation is exact, unless its place in the picture has one.
    EXPECT_THAT(faultOfCovariance({1, 0, 0, 0, 0, 0, 0, 0, 1}), HasSubstr(EXACT));
    std::vector<MeasuredPoint> points(2, soundPoint());
    const auto withDeviations = [&points](double u, double v) {
        for (MeasuredPoint& point : points) {
            point.pictureDeviation = Point<double, 2>{u, v};
        }
        return faultOfPoints(points);
    };
    EXPECT_EQ(withDeviations(0.001, 0.002), "");
    EXPECT_THAT(withDeviations(0, 0), HasSubstr(EXACT));
    EXPECT_THAT(withDeviations(0.001, 0), HasSubstr(EXACT));
    EXPECT_THAT(withDeviations(0, 0.001), HasSubstr(EXACT));
    EXPECT_THAT(withDeviations(-0.001, 0.001), HasSubstr("zero or above"));
    EXPECT_THAT(withDeviations(0.001, -0.001), HasSubstr("zero or above"));
    EXPECT_THAT(withDeviations(0.001, 1e13), HasSubstr("not finite"));
    for (MeasuredPoint& point : points) {
        point.covariance = Matrix<double, 3>();
    }
    EXPECT_EQ(withDeviations(0, 0), "") << "its place in space has some";
    for (MeasuredPoint& point : points) {
        (*point.covariance)(1, 1) = 0;
    }
    EXPECT_EQ(withDeviations(0.001, 0.002), "");
    EXPECT_THAT(withDeviations(0, 0.002), HasSubstr(EXACT));
    // Below zero by no more than rounding, beside what the covariance has elsewhere.
    for (const double size : {1e6, 1e-6}) {
        for (const double part : {1e-10, 1e-6}) {
            for (MeasuredPoint& point : points) {
                (*point.covariance)(0, 0) = size;
                (*point.covariance)(1, 1) = 0.5 * size;
                (*point.covariance)(2, 2) = -part * size;
            }
            EXPECT_EQ(withDeviations(0.001, 0.002).empty(), part < 1e-9) << size << ", " << part;
        }
    }
}

TEST(PointFaults, DeviationsAreStatedByAllOrByNone) {
    std::vector<MeasuredPoint> points(3, soundPoint());
    points[2].pictureDeviation = Point<double, 2>{0.1, 0.1};
    EXPECT_THAT(faultOfPoints(points), HasSubstr("point 2: deviations are stated by some points only"));
    points[2].pictureDeviation.reset();
    points[2].covariance = Matrix<double, 3>();
    EXPECT_THAT(faultOfPoints(points), HasSubstr("point 2: deviations are stated by some points only"));
    points[0].covariance = points[1].covariance = Matrix<double, 3>();
    EXPECT_EQ(faultOfPoints(points), "");
}

TEST(PointFaults, OfManyPointsThereIsAPulseNowAndThen) {
    std::size_t pulses = 0;
    requireSound(std::vector<MeasuredPoint>(2049, soundPoint()), 1, [&pulses] { ++pulses; });
    EXPECT_EQ(pulses, 3U);
}

}  // namespace

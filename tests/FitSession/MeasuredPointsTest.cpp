#include "FitSession/MeasuredPoints.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::FitSession::combineRepeated;
using Veltrani::FitSession::MeasuredPoint;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

MeasuredPoint at(const P3& place, std::size_t line, const P2& picture = {0.5, 0.5}) {
    MeasuredPoint point;
    point.picture = picture;
    point.world = place;
    point.row = line;
    return point;
}

MeasuredPoint at(const P3& place, std::size_t line, const P3& deviations) {
    MeasuredPoint point = at(place, line);
    Matrix<double, 3> covariance;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        covariance(axis, axis) = deviations[axis] * deviations[axis];
    }
    point.covariance = covariance;
    return point;
}

TEST(MeasuredPoints, NothingIsCombinedOfNothing) {
    EXPECT_THAT(combineRepeated({}).points, IsEmpty());
}

TEST(MeasuredPoints, ManyAreCombinedWithAPulseThatCanEndIt) {
    struct Ended {};
    std::vector<MeasuredPoint> points;
    for (std::size_t i = 0; i < 10'000; ++i) {
        points.push_back(at({1, 2, 3}, i, P2{static_cast<double>(i % 5000), 0}));
    }
    std::size_t pulses = 0;
    EXPECT_EQ(combineRepeated(points, [&pulses] { ++pulses; }).points.size(), 5000U);
    // Of the points, of the places that they share, and of what comes of them.
    EXPECT_GE(pulses, 18U);
    EXPECT_LE(pulses, 30U) << "each may call an interpreter";
    for (const std::size_t last : {1U, 12U, 18U}) {
        std::size_t left = last;
        EXPECT_THROW(static_cast<void>(combineRepeated(points,
                                                       [&left] {
                                                           if (--left == 0) {
                                                               throw Ended();
                                                           }
                                                       })),
                     Ended);
    }
}

TEST(MeasuredPoints, RepeatedOnesBecomeTheirMean) {
    const auto combined = combineRepeated({at({1, 2, 3}, 2), at({5, 6, 7}, 3, P2{0, 0}), at({3, 2, 1}, 4)});
    ASSERT_EQ(combined.points.size(), 2U);
    EXPECT_EQ(combined.points[0].world, (P3{2, 2, 2}));
    EXPECT_EQ(combined.points[0].row, 2U);
    EXPECT_EQ(combined.points[1].world, (P3{5, 6, 7}));
    EXPECT_THAT(combined.lines, ElementsAre(ElementsAre(2, 4), ElementsAre(3)));
}

// As where the points of several channels have one name: their mean would lie where no light is.
TEST(MeasuredPoints, PlacesFarApartAreNoRepetition) {
    std::vector<MeasuredPoint> points;
    for (std::size_t i = 0; i < 10; ++i) {
        const double part = 0.1 * static_cast<double>(i);
        points.push_back(at({part, 4, 0}, 2 * i + 2, P2{part, 0.5}));
        points.push_back(at({part + (i == 3 ? 2.0 : 0.01), 4, 0}, 2 * i + 3, P2{part, 0.5}));
    }
    const auto combined = combineRepeated(points);
    EXPECT_EQ(combined.points.size(), 11U);
    EXPECT_THAT(combined.lines, testing::Contains(ElementsAre(8)));
    EXPECT_THAT(combined.lines, testing::Contains(ElementsAre(9)));
    EXPECT_THAT(combined.lines, testing::Contains(ElementsAre(10, 11)));
    points.resize(8);
    EXPECT_EQ(combineRepeated(points).points.size(), 4U) << "too few places to say so";
}

TEST(MeasuredPoints, OfEightPlacesOnAWrongOneIsTold) {
    for (const std::size_t places : {std::size_t{7}, std::size_t{8}}) {
        std::vector<MeasuredPoint> points;
        for (std::size_t i = 0; i < places; ++i) {
            const double part = 0.1 * static_cast<double>(i);
            points.push_back(at({part, 4, 0}, i + 2, P2{part, 0.5}));
        }
        points.push_back(at({2, 4, 0}, 20, P2{0, 0.5}));
        EXPECT_EQ(combineRepeated(points).points.size(), places == 8 ? 9U : 7U) << places;
    }
}

TEST(MeasuredPoints, AMeanHasTheLargestDeviationInThePictureAndTheSetOfAll) {
    std::vector<MeasuredPoint> points{at({1, 2, 3}, 2), at({1, 2, 3}, 3), at({1, 2, 3}, 4)};
    for (MeasuredPoint& point : points) {
        point.set = "east";
    }
    points[0].pictureDeviation = P2{0.1, 0.2};
    points[1].pictureDeviation = P2{0.3, 0.1};
    points[2].pictureDeviation = P2{0.2, 0.9};
    const auto same = combineRepeated(points).points;
    ASSERT_EQ(same.size(), 1U);
    EXPECT_EQ(same[0].set, "east");
    EXPECT_EQ(same[0].pictureDeviation, (P2{0.3, 0.1}));
    points[1].set = "west";
    EXPECT_EQ(combineRepeated(points).points.at(0).set, "");
}

TEST(MeasuredPoints, ThoseOfOtherChannelsStayApart) {
    MeasuredPoint other = at({3, 2, 1}, 4);
    other.channel = 1;
    EXPECT_EQ(combineRepeated({at({1, 2, 3}, 2), other}).points.size(), 2U);
}

// Along each axis by itself the mean of independent measurements has the weights 1 / s^2: a closed form that needs no
// matrix.
TEST(MeasuredPoints, BetterMeasurementsWeighMore) {
    const P3 a{0.001, 0.002, 0.003};
    const P3 b{0.002, 0.002, 0.001};
    const auto combined = combineRepeated({at({10, 20, 30}, 2, a), at({10.001, 20.002, 30.003}, 3, b)}).points;
    ASSERT_EQ(combined.size(), 1U);
    const P3 first{10, 20, 30};
    const P3 second{10.001, 20.002, 30.003};
    ASSERT_TRUE(combined[0].covariance);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double wa = 1 / (a[axis] * a[axis]);
        const double wb = 1 / (b[axis] * b[axis]);
        EXPECT_NEAR(combined[0].world[axis], (wa * first[axis] + wb * second[axis]) / (wa + wb), 1e-13) << axis;
        EXPECT_NEAR((*combined[0].covariance)(axis, axis), 1 / (wa + wb), 1e-19) << axis;
    }
}

// Of equal covariances the mean is the plain one, however they lie, and its covariance is theirs by their number.
TEST(MeasuredPoints, EqualCovariancesThatLieAslantGiveThePlainMean) {
    Matrix<double, 3> aslant;
    const double entries[3][3] = {{4, 1, 0.5}, {1, 9, -2}, {0.5, -2, 16}};
    std::vector<MeasuredPoint> points;
    const std::vector<P3> places{{1, 2, 3}, {1.5, 1, 4}, {0, 3, 2}, {2, 2, 1}};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            aslant(row, column) = entries[row][column];
        }
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        points.push_back(at(places[i], i));
        points.back().covariance = aslant;
    }
    const auto combined = combineRepeated(points).points;
    ASSERT_EQ(combined.size(), 1U);
    const P3 mean = (places[0] + places[1] + places[2] + places[3]) * 0.25;
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_NEAR(combined[0].world[row], mean[row], 1e-13);
        for (std::size_t column = 0; column < 3; ++column) {
            EXPECT_NEAR((*combined[0].covariance)(row, column), entries[row][column] / 4, 1e-13);
        }
    }
}

TEST(MeasuredPoints, OnesThatContradictEachOtherStayApart) {
    const P3 millimetre{0.001, 0.001, 0.001};
    EXPECT_EQ(combineRepeated({at({0, 0, 0}, 2, millimetre), at({0.005, 0, 0}, 3, millimetre)}).points.size(), 1U);
    EXPECT_EQ(combineRepeated({at({0, 0, 0}, 2, millimetre), at({0.006, 0, 0}, 3, millimetre)}).points.size(), 2U)
        << "the difference of two has the deviation sqrt(2) mm";
    EXPECT_EQ(combineRepeated({at({0, 0, 0}, 2), at({9, 9, 9}, 3)}).points.size(), 1U)
        << "nothing states how good they are";
    const P3 fine{1e-9, 1e-9, 1e-9};
    EXPECT_EQ(combineRepeated({at({0, 0, 0}, 2, fine), at({0.002, 0, 0}, 3, millimetre)}).points.size(), 1U)
        << "one is so good that the mean is it";
}

}  // namespace

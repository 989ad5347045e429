#include "DisplayFit/detail/PointChecks.h"

#include "StatedModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace {

using namespace Veltrani::DisplayFitDetail;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Veltrani::DisplayFit::ChannelFit;
using Veltrani::DisplayFit::FitFinding;
using Place = Point<double, 3>;

/// On a wall of 4 by 3, six by four of them.
FitPoints onAWall() {
    FitPoints points;
    for (int i = 0; i < 24; ++i) {
        const Point<double, 2> picture{0.2 * (i % 6), (i / 6) / 3.0};
        points.picture.push_back(picture);
        points.world.push_back({4 * picture[0], 5, 3 * picture[1]});
    }
    return points;
}

Matrix<double, 3> covarianceOf(double xx, double yy, double zz) {
    Matrix<double, 3> covariance;
    covariance(0, 0) = xx;
    covariance(1, 1) = yy;
    covariance(2, 2) = zz;
    return covariance;
}

std::string kindOfPlaces(const FitPoints& points, std::size_t unknowns = 4) {
    const auto fault = faultOfPlaces(points, PointShape::of(points.world), unknowns);
    return fault ? FitFinding::nameOf(fault->kind) : "";
}

TEST(PointChecks, TheSizeIsTheMedianDistanceFromTheMedianPlace) {
    // Around (2, 20, 200), which is the median along each axis: distances 0, 1, 2, 3 and far away.
    const std::vector<Place> places{{2, 20, 200}, {1, 20, 200}, {2, 22, 200}, {2, 20, 197}, {900, -900, 900}};
    EXPECT_EQ(sizeOf(places), 2);
    EXPECT_EQ(sizeOf({{7, 8, 9}}), 0);
}

TEST(PointChecks, TheTypicalDeviationIsTheMedianOfTheMeanVariances) {
    FitPoints points;
    EXPECT_EQ(typicalPointDeviation(points), 0);
    points.covariance = {covarianceOf(1, 4, 7), covarianceOf(30, 30, 30), covarianceOf(0, 0, 3)};
    EXPECT_EQ(typicalPointDeviation(points), 2);
}

TEST(PointChecks, SoManyPointsAreNeededThatAResidualIsLeft) {
    const auto textOf = [](std::size_t points, std::size_t unknowns) {
        const FitPoints some = onAWall().someOf(points);
        const auto fault = faultOfPlaces(some, PointShape::of(some.world), unknowns);
        return fault && fault->kind == FitFinding::Kind::TOO_FEW_POINTS ? fault->text : "";
    };
    EXPECT_EQ(textOf(2, 4), "2 points are too few for 4 values: at least 3 are needed");
    EXPECT_EQ(textOf(3, 4), "");
    EXPECT_EQ(textOf(3, 6), "3 points are too few for 6 values: at least 4 are needed");
    EXPECT_EQ(textOf(3, 7), "3 points are too few for 7 values: at least 4 are needed");
    EXPECT_EQ(textOf(4, 7), "");
    EXPECT_EQ(textOf(1, 0), "1 point is too few: at least 3 are needed");
    EXPECT_EQ(textOf(2, 1), "2 points are too few for 1 values: at least 3 are needed");
}

TEST(PointChecks, DeviationsAreSmallBesideWhatThePointsCover) {
    FitPoints points = onAWall();
    EXPECT_EQ(kindOfPlaces(points), "");
    // Six columns of 0.8 apart: the extent along is 0.8 sqrt(35 / 12) = 1.37.
    for (const double deviation : {0.13, 0.15}) {
        const double variance = deviation * deviation;
        points.covariance.assign(24, covarianceOf(variance, variance, variance));
        EXPECT_EQ(kindOfPlaces(points), deviation < 0.14 ? "" : "DEVIATIONS_TOO_LARGE") << deviation;
    }
    const auto fault = faultOfPlaces(points, PointShape::of(points.world), 4);
    EXPECT_EQ(fault->text,
              "the stated deviations, about 0.15, are too large beside what the points cover, about 2.73, both in the "
              "native unit");
}

TEST(PointChecks, PointsOnALineAreNoPicture) {
    FitPoints points = onAWall();
    for (Place& place : points.world) {
        place[2] = 0.5 * place[0];
    }
    EXPECT_EQ(kindOfPlaces(points), "POINTS_ON_LINE");
    points = onAWall();
    points.covariance.assign(24, covarianceOf(1e-6, 1e-6, 1e-6));
    for (std::size_t i = 0; i < points.world.size(); ++i) {
        points.world[i][2] = 0.05 * static_cast<double>(i / 6);
    }
    EXPECT_EQ(kindOfPlaces(points), "") << "a band is no line";
    // Of a row that bends by less than what the deviations are, these are to be named: the line may be theirs.
    points.covariance.assign(24, covarianceOf(0.01, 0.01, 0.01));
    EXPECT_EQ(kindOfPlaces(points), "DEVIATIONS_TOO_LARGE");
    // On a line of the picture, to a few pixels.
    for (const double beside : {0.001, 0.02}) {
        points = onAWall();
        for (std::size_t i = 0; i < points.size(); ++i) {
            points.picture[i][1] = 0.5 + (i % 2 == 0 ? beside : -beside);
        }
        const auto fault = faultOfPlaces(points, PointShape::of(points.world), 4);
        EXPECT_EQ(fault.has_value(), beside < 0.01) << beside;
        if (fault) {
            EXPECT_EQ(fault->kind, FitFinding::Kind::POINTS_ON_LINE);
            EXPECT_THAT(fault->text, HasSubstr("of the picture"));
        }
    }
}

/// A projector of 40 by 30 degrees, four from its points.
ChannelFit soundFit() {
    ChannelFit fit;
    fit.solved.frustum = fit.solved.position = true;
    const double degree = std::numbers::pi / 180;
    fit.before.frustum = {-20 * degree, 20 * degree, -10 * degree, 20 * degree};
    fit.after = fit.before;
    fit.after.position = {2, 1, 1.5};
    return fit;
}

std::string faultOf(const ChannelFit& fit) {
    const auto fault = faultOfValues(fit, PointShape::of(onAWall().world));
    return fault ? fault->text : "";
}

TEST(PointChecks, APictureIsWiderThanADegreeOrAThirdOfItself) {
    const double degree = std::numbers::pi / 180;
    ChannelFit fit = soundFit();
    EXPECT_EQ(faultOf(fit), "");
    fit.after.frustum.left = fit.after.frustum.right - 0.9 * degree;
    EXPECT_EQ(faultOf(fit), "no projector: the picture came out 0.9 degrees wide");
    fit.after.frustum.left = fit.after.frustum.right - 1.1 * degree;
    EXPECT_EQ(faultOf(fit), "");
    fit.after.frustum.bottom = fit.after.frustum.top + 0.5 * degree;
    EXPECT_EQ(faultOf(fit), "no projector: the picture came out 0.5 degrees high");
    fit.solved.frustum = false;
    EXPECT_EQ(faultOf(fit), "");
    // One that is configured so narrow may come out a third as wide.
    fit = soundFit();
    fit.before.frustum.left = fit.before.frustum.right - 1.5 * degree;
    fit.after.frustum.left = fit.after.frustum.right - 0.6 * degree;
    EXPECT_EQ(faultOf(fit), "");
    fit.after.frustum.left = fit.after.frustum.right - 0.4 * degree;
    EXPECT_EQ(faultOf(fit), "no projector: the picture came out 0.4 degrees wide");
    fit.after.frustum.left = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(faultOf(fit), StartsWith("no projector"));
}

TEST(PointChecks, APictureOfALensHasAnAngleToo) {
    ChannelFit fit = soundFit();
    fit.before.lens = fit.after.lens =
        Veltrani::LensNumbers{Veltrani::LensNumbers::Kind::BROWN_CONRADY, 2000, 1000, 1500, 1500, 999.5, 499.5, {}};
    EXPECT_EQ(faultOf(fit), "");
    // 2 atan(1000 / fx).
    fit.after.lens->fx = 1000 / std::tan(0.45 * std::numbers::pi / 180);
    EXPECT_EQ(faultOf(fit), "no projector: the picture came out 0.9 degrees wide");
    fit.after.lens->fx = -1500;
    fit.after.lens->fy = -500 / std::tan(0.3 * std::numbers::pi / 180);
    EXPECT_EQ(faultOf(fit), "no projector: the picture came out 0.6 degrees high");
}

TEST(PointChecks, AProjectorStandsNoFurtherThanAHundredTimesWhatItsPointsCover) {
    ChannelFit fit = soundFit();
    // The extent is 1.37, the middle is at (2, 5, 1.5).
    fit.after.position = {2, 5 - 130, 1.5};
    EXPECT_EQ(faultOf(fit), "");
    fit.after.position = {2, 5 - 140, 1.5};
    EXPECT_EQ(faultOf(fit), "no projector: it came out 140 from its points in the native unit, which cover about 2.73");
    fit.solved.position = false;
    EXPECT_EQ(faultOf(fit), "");
}

/// Points that are measured so many times as far apart as their light lands.
std::optional<FitFinding> unitOf(double times, std::size_t count = 24) {
    const FitPoints points = onAWall().someOf(count);
    StatedModel model(1, count);
    for (std::size_t i = 0; i < count; ++i) {
        model.given.world[i] = points.world[i] * times;
        model.stated[i].landing = points.world[i];
    }
    return faultOfUnit(model, "m");
}

TEST(PointChecks, UnitsAreNamedByTheirRatio) {
    struct Ratio {
        double times;
        std::string units;
    };
    for (const Ratio& ratio :
         {Ratio{1000, "such as millimetres for metres"}, Ratio{0.001, "such as metres for millimetres"},
          Ratio{304.8, "such as millimetres for feet"}, Ratio{100, "such as centimetres for metres"},
          Ratio{39.37, "such as inches for metres"}, Ratio{1 / 25.4, "such as inches for millimetres"},
          Ratio{12, "such as inches for feet or millimetres for centimetres"},
          Ratio{1 / 3.281, "such as metres for feet or inches for centimetres"},
          Ratio{1000 * 1.3, "such as millimetres for metres"}, Ratio{1000 / 1.3, "such as millimetres for metres"}}) {
        const auto fault = unitOf(ratio.times);
        ASSERT_TRUE(fault) << ratio.times;
        EXPECT_EQ(fault->kind, FitFinding::Kind::WRONG_UNIT);
        EXPECT_TRUE(fault->text.ends_with(ratio.units)) << fault->text;
        EXPECT_THAT(fault->text, HasSubstr(ratio.times > 1 ? " times as wide as" : " times as narrow as"));
        EXPECT_THAT(fault->text, HasSubstr(ratio.times > 1 ? "in a smaller unit" : "in a larger unit"));
        EXPECT_THAT(
            fault->text,
            HasSubstr("about " + std::to_string(std::lround(std::max(ratio.times, 1 / ratio.times))) + " times"));
    }
    for (const double times : {1.0, 1.9, 0.55, 6.0, 2.1, 1 / 160.0, 2000.0, 1e6}) {
        EXPECT_FALSE(unitOf(times)) << times;
    }
}

TEST(PointChecks, OfTwoPlacesOrOfOneNothingIsSaidAboutTheUnit) {
    EXPECT_TRUE(unitOf(1000, 3));
    EXPECT_FALSE(unitOf(1000, 2));
    StatedModel model(1, 24);
    for (StatedModel::Stated& stated : model.stated) {
        stated.landing = Place{1, 2, 3};
    }
    EXPECT_FALSE(faultOfUnit(model, "m")) << "all light lands at one place";
    for (std::size_t i = 0; i < 24; ++i) {
        model.stated[i].landing = onAWall().world[i];
    }
    EXPECT_FALSE(faultOfUnit(model, "m")) << "all points were measured at one place";
}

TEST(PointChecks, WhatMissesTheScreenSaysNothingAboutTheUnit) {
    StatedModel model(1, 24);
    const FitPoints points = onAWall();
    for (std::size_t i = 0; i < 24; ++i) {
        model.given.world[i] = points.world[i] * 100;
        if (i % 2 == 0) {
            model.stated[i].landing = points.world[i];
        } else {
            model.given.world[i] = {1e7 * static_cast<double>(i), 0, 0};
        }
    }
    const auto fault = faultOfUnit(model, "m");
    ASSERT_TRUE(fault);
    EXPECT_THAT(fault->text, HasSubstr("such as centimetres for metres"));
}

}  // namespace

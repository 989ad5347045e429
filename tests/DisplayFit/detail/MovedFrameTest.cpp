#include "DisplayFit/detail/MovedFrame.h"

#include "Common/Matrix.h"
#include "WallChannels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Veltrani::DisplayFit::FitFinding;
using Veltrani::DisplayFit::FitOutcome;
using Veltrani::DisplayFit::MeasuredPoint;
using Veltrani::DisplayFitDetail::ConfiguredLight;
using Veltrani::DisplayFitDetail::MovedFrames;
using Measured = std::vector<MeasuredPoint>;
using Places = Point<double, 3>;

const std::vector<std::string> HALVES{"left='0' right='0.5' bottom='0' top='1'",
                                      "left='0.5' right='1' bottom='0' top='1'"};

/// Of all points, moved, of one channel or of two.
class MovedWall {
public:
    explicit MovedWall(std::size_t channels, int columns = 4, int rows = 4)
        : m_wall(channels == 1 ? std::vector<std::string>{HALVES[0]} : HALVES) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const Measured own = m_wall.measured(columns, rows, channel);
            m_points.insert(m_points.end(), own.begin(), own.end());
        }
    }

    [[nodiscard]] Measured& points() { return m_points; }
    [[nodiscard]] double width() const { return m_wall.lightOf(m_wall.measured(4, 4)).width(); }
    [[nodiscard]] MovedFrames found(const std::string& unit = "m") const {
        std::map<std::size_t, ConfiguredLight> lights;
        for (const MeasuredPoint& point : m_points) {
            lights.try_emplace(point.channel, m_wall.setup(point.channel), WallChannels::of(m_points, point.channel));
        }
        return MovedFrames::of(lights, m_points, unit);
    }

private:
    WallChannels m_wall;
    Measured m_points;
};

TEST(MovedFrames, AMovementOfAllPointsIsNamedWithItsWay) {
    MovedWall wall(2);
    EXPECT_TRUE(wall.found().findings.empty());
    for (MeasuredPoint& point : wall.points()) {
        point.world += Places{0, 3, -4};
    }
    const MovedFrames moved = wall.found();
    ASSERT_EQ(moved.findings.size(), 1U);
    EXPECT_EQ(moved.findings[0].kind, FitFinding::Kind::FRAME_MOVED);
    EXPECT_EQ(moved.findings[0].outcome, FitOutcome::DOUBTFUL);
    EXPECT_EQ(
        moved.findings[0].text,
        "all points lie where the configured light lands once they are moved by 5 m: the measurement is in a frame "
        "of its own, or the configuration is");
    EXPECT_THAT(moved.sets, ElementsAre(""));
    EXPECT_LT(moved.miss, 1e-12);
    EXPECT_THAT(wall.found("").findings[0].text, HasSubstr("moved by 5: the measurement"));
}

TEST(MovedFrames, ATurnIsNamedFromADegreeOn) {
    MovedWall wall(2);
    for (const double degrees : {0.8, 1.2, 30.0}) {
        const Matrix<double, 3> turned = Veltrani::rotationZXY(degrees * std::numbers::pi / 180, 0, 0);
        Measured points = wall.points();
        for (MeasuredPoint& point : wall.points()) {
            point.world = turned * point.world + Places{0, 0, 3};
        }
        const MovedFrames moved = wall.found();
        wall.points() = points;
        ASSERT_EQ(moved.findings.size(), 1U);
        if (degrees < 1) {
            EXPECT_THAT(moved.findings[0].text, Not(HasSubstr("turned")));
        } else {
            EXPECT_THAT(moved.findings[0].text,
                        HasSubstr(degrees > 2 ? ", turned by 30 degrees: the" : ", turned by 1 degrees: the"));
        }
    }
}

TEST(MovedFrames, OneChannelMayHangElsewhereAndSeveralHardly) {
    for (const std::size_t channels : {std::size_t{1}, std::size_t{2}}) {
        for (const double way : {0.07, 0.09, 0.9, 1.1}) {
            MovedWall wall(channels);
            const double width = wall.width();
            for (MeasuredPoint& point : wall.points()) {
                point.world[1] += way * width;
            }
            EXPECT_EQ(wall.found().findings.empty(), way < (channels == 1 ? 1 : 0.08)) << channels << ", " << way;
        }
    }
}

TEST(MovedFrames, OfFewPointsNothingIsSaid) {
    for (const int columns : {2, 3}) {
        MovedWall wall(1, columns, 2);
        wall.points().resize(columns == 2 ? 4 : 6);
        for (MeasuredPoint& point : wall.points()) {
            point.world[2] += 9;
        }
        EXPECT_EQ(wall.found().findings.empty(), columns == 2);
        if (columns == 3) {
            wall.points().pop_back();
            EXPECT_TRUE(wall.found().findings.empty()) << "five";
        }
    }
}

TEST(MovedFrames, WhatAMovementDoesNotBringBackIsNone) {
    // Three times as large: two distances from the middle are left, whose median is 1.37.
    for (const double way : {9.0, 13.0}) {
        MovedWall wall(2);
        const Places middle{0, 5, 1};
        for (MeasuredPoint& point : wall.points()) {
            point.world = middle + (point.world - middle) * 3 + Places{0, way, 0};
        }
        EXPECT_EQ(wall.found().findings.empty(), way < 11) << way;
    }
}

TEST(MovedFrames, AFifthOfThePointsMayBeWrong) {
    MovedWall wall(2);
    for (std::size_t i = 0; i < wall.points().size(); ++i) {
        wall.points()[i].world += i % 6 == 2 ? Places{static_cast<double>(i), -30, 17} : Places{0, 3, -4};
    }
    const MovedFrames moved = wall.found();
    ASSERT_EQ(moved.findings.size(), 1U);
    EXPECT_THAT(moved.findings[0].text, HasSubstr("moved by 5 m: the measurement"));
    EXPECT_LT(moved.miss, 1e-9);
}

TEST(MovedFrames, EachStationIsNamedAndTheLargestRestIsNoted) {
    MovedWall wall(2, 4, 6);
    for (std::size_t i = 0; i < wall.points().size(); ++i) {
        MeasuredPoint& point = wall.points()[i];
        point.set = i % 3 == 0 ? "gallery" : i % 3 == 1 ? "pit" : "stalls";
        if (i % 3 == 0) {
            point.world += Places{0, 0, 7};
        } else if (i % 3 == 1) {
            // Bent by a tenth: a movement leaves a part of that.
            point.world += Places{0, 9, 0.1 * (i % 2 == 0 ? 1.0 : -1.0)};
        }
    }
    const MovedFrames moved = wall.found();
    EXPECT_THAT(moved.sets, ElementsAre("gallery", "pit"));
    ASSERT_EQ(moved.findings.size(), 2U);
    EXPECT_THAT(moved.findings[0].text, HasSubstr("all points of the set \"gallery\" lie where"));
    EXPECT_THAT(moved.findings[0].text, HasSubstr("moved by 7 m"));
    EXPECT_THAT(moved.findings[1].text, HasSubstr("all points of the set \"pit\" lie where"));
    EXPECT_NEAR(moved.miss, 0.1 / wall.width(), 0.03 / wall.width());
}

}  // namespace

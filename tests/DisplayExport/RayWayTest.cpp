#include "DisplayExport/RayWay.h"

#include "BelongingContent.h"
#include "ExportDisplays.h"
#include "KelvoControl/ProjectionModel.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;

constexpr double DEGREE = std::numbers::pi / 180;

class RayWayTest : public ExportDisplayTest {
protected:
    static std::shared_ptr<const ScreenGeometry> screen() { return ScreenManager::getInstance()->getScreenGeometry(); }
    [[nodiscard]] std::unique_ptr<const PictureWay> way() const { return PictureWay::of(locator(0), screen()); }

    /// Places all over the picture, its corners included.
    static std::vector<P2> places() {
        std::vector<P2> all;
        for (int i = 0; i < 81; ++i) {
            all.emplace_back((i % 9) / 8.0, (i / 9) / 8.0);  // NOLINT(bugprone-integer-division)
        }
        return all;
    }

    static std::vector<Arrival> followed(const PictureWay& way, const std::vector<P2>& picture) {
        // What is left of another picture does not stay.
        std::vector<Arrival> arrivals(picture.size(), {{7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, {}, true});
        way.follow(picture, arrivals);
        return arrivals;
    }

    static constexpr const char* RAYS = "<TargetData type='ProjectorCentric'/>";
};

/// A projector beside the middle of a wall of 4 by 2 metres around (0, 5, 1), whose picture reaches beyond it.
TEST_F(RayWayTest, AFrustumLeavesByItsTangents) {
    load(displays::FLAT, exportDisplays::standing("P1", "x='0.5' y='1' z='0.75'", "z='0' x='0'", 30, 20), RAYS);
    const auto way = this->way();
    EXPECT_FALSE(way->goesThroughScreenCoordinates());
    EXPECT_FALSE(way->eyeOfMirror());
    const std::vector<P2> picture = places();
    const std::vector<Arrival> arrivals = followed(*way, picture);
    int lit = 0;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const P3 leaving{(2 * picture[i][0] - 1) * std::tan(30 * DEGREE), 1.0,
                         (2 * picture[i][1] - 1) * std::tan(20 * DEGREE)};
        EXPECT_LT(norm(cross(arrivals[i].leaving, leaving)), 1e-12);
        EXPECT_GT(dot(arrivals[i].leaving, leaving), 0);
        EXPECT_EQ(way->directionInMirror(arrivals[i]), arrivals[i].leaving);
        const P3 point = P3{0.5, 1.0, 0.75} + 4.0 * leaving;
        const bool isLit = std::abs(point[0]) <= 2 && point[2] >= 0 && point[2] <= 2;
        lit += isLit ? 1 : 0;
        EXPECT_EQ(arrivals[i].arrives, isLit) << picture[i];
        if (isLit) {
            EXPECT_LT(norm(arrivals[i].point - point), 1e-12) << picture[i];
        }
        const Arrival beyond = way->continued(picture[i]);
        EXPECT_TRUE(beyond.arrives);
        EXPECT_LT(norm(beyond.point - point), 1e-12) << picture[i];
        EXPECT_EQ(beyond.leaving, arrivals[i].leaving);
    }
    EXPECT_GT(lit, 30);
    EXPECT_LT(lit, 60);
}

/// A part of a cylinder of four metres, lit from the outside and from the inside: past its edge the ray goes on to that
/// side of the whole cylinder.
TEST_F(RayWayTest, GoesOnOnTheSideThatIsLit) {
    const std::string screen =
        "<Screen shape='Cylinder'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='0' z='0'/><Radius value='4'/>"
        "<Size height='2'/><Azimuth min='-10' max='10'/></Screen>";
    struct Case {
        double y;
        std::string heading;
        double ahead;  ///< along y
    };
    for (const Case& one : {Case{10, "z='180' x='0'", -1}, Case{-7, "z='0' x='0'", 1}}) {
        load(screen,
             exportDisplays::standing("P1", "x='0' y='" + std::to_string(one.y) + "' z='0'", one.heading, 10, 3), RAYS);
        const auto way = this->way();
        const std::vector<P2> picture = places();
        const std::vector<Arrival> arrivals = followed(*way, picture);
        EXPECT_TRUE(std::any_of(arrivals.begin(), arrivals.end(), [](const Arrival& each) { return each.arrives; }));
        EXPECT_FALSE(std::all_of(arrivals.begin(), arrivals.end(), [](const Arrival& each) { return each.arrives; }));
        for (const P2& place : picture) {
            const P3 leaving{one.ahead * (2 * place[0] - 1) * std::tan(10 * DEGREE), one.ahead,
                             (2 * place[1] - 1) * std::tan(3 * DEGREE)};
            // From the outside the first of two, from the inside the second: both at y above zero.
            const double square = leaving[0] * leaving[0] + leaving[1] * leaving[1];
            const double half = one.y * leaving[1] / square;
            const double root = std::sqrt(half * half - (one.y * one.y - 16) / square);
            const double way3D = one.ahead < 0 ? -half - root : -half + root;
            const Arrival beyond = way->continued(place);
            ASSERT_TRUE(beyond.arrives) << one.y << ' ' << place;
            EXPECT_LT(norm(beyond.point - (P3{0.0, one.y, 0.0} + way3D * leaving)), 1e-9) << one.y << ' ' << place;
        }
    }
}

/// Where headings are corrected, by one table or the other.
TEST_F(RayWayTest, AFrustumIsBentByEitherTable) {
    load(displays::SPHERE, exportDisplays::standing("P1", "x='0' y='0' z='0'", "z='10' x='5'", 20, 15), RAYS);
    const SphereTargetLocatorParams::HeadingTable halves{{-1, -0.5}, {1, 0.5}};
    for (const auto& [ofYaw, ofPitch] : {std::pair(0.5, 1.0), {1.0, 0.5}}) {
        auto camera = static_cast<const SphereTargetLocatorParams&>(locator(0)->getTargetLocatorParams());
        (ofYaw < 1 ? camera.yawTable : camera.pitchTable) = halves;
        const FrustumWay way(std::make_shared<SphereTargetLocator>(camera), screen());
        const std::vector<P2> picture = places();
        const std::vector<Arrival> arrivals = followed(way, picture);
        const Matrix<double, 3> orientation = Veltrani::rotationZXY(10 * DEGREE, 5 * DEGREE, 0);
        for (std::size_t i = 0; i < picture.size(); ++i) {
            const P3 straight = orientation * P3{(2 * picture[i][0] - 1) * std::tan(20 * DEGREE), 1.0,
                                                 (2 * picture[i][1] - 1) * std::tan(15 * DEGREE)};
            const double yaw = ofYaw * std::atan2(straight[0], straight[1]);
            const double pitch = ofPitch * std::atan2(straight[2], std::hypot(straight[0], straight[1]));
            const P3 bent{std::sin(yaw) * std::cos(pitch), std::cos(yaw) * std::cos(pitch), std::sin(pitch)};
            ASSERT_TRUE(arrivals[i].arrives);
            EXPECT_LT(norm(arrivals[i].point - 5.0 * bent), 1e-9) << ofYaw << ' ' << picture[i];
            EXPECT_LT(norm(arrivals[i].leaving * (1 / norm(arrivals[i].leaving)) - bent), 1e-9);
        }
    }
}

/// By way of a mirror; past the edge of the screen the reflected ray goes on to the whole sphere.
TEST_F(RayWayTest, AMirrorReflectsWhatLeavesBesideIt) {
    load(
        "<Screen shape='Sphere'><EyePoint x='0' y='-0.3' z='-0.5'/><Centre x='0' y='0' z='1.9'/><Radius "
        "value='1.6'/><Azimuth min='-120' max='120'/><Elevation min='0' max='60'/></Screen>",
        exportDisplays::standing("P1", "x='0' y='-0.3' z='-0.5'", "z='20' x='5'", 20, 12),
        "<TargetData type='SphericalCollimated'><Mirror radius='3'><Position x='0' y='0' "
        "z='1.9'/></Mirror></TargetData>");
    const auto way = this->way();
    ASSERT_TRUE(way->eyeOfMirror());
    EXPECT_LT(norm(*way->eyeOfMirror() - P3{0.0, -0.3, 1.4}), 1e-12);
    const belonging::TracedMirror mirror;
    const Matrix<double, 3> orientation = Veltrani::rotationZXY(20 * DEGREE, 5 * DEGREE, 0);
    const std::vector<P2> picture = places();
    const std::vector<Arrival> arrivals = followed(*way, picture);
    int lit = 0;
    int beside = 0;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const P3 seen = orientation * P3{(2 * picture[i][0] - 1) * std::tan(20 * DEGREE), 1.0,
                                         (2 * picture[i][1] - 1) * std::tan(12 * DEGREE)};
        EXPECT_LT(norm(cross(way->directionInMirror(arrivals[i]), seen)), 1e-9);
        const Arrival beyond = way->continued(picture[i]);
        if (arrivals[i].arrives) {
            ++lit;
            EXPECT_LT(norm(arrivals[i].point - mirror.seenIn(seen, arrivals[i].point)), 1e-9) << picture[i];
            EXPECT_TRUE(beyond.arrives);
            EXPECT_LT(norm(beyond.point - arrivals[i].point), 1e-9) << picture[i];
        } else if (beyond.arrives) {
            ++beside;
            EXPECT_LT(norm(beyond.point - mirror.seenIn(seen, beyond.point)), 1e-9) << picture[i];
            EXPECT_LT(beyond.point[2], 1.9 + 1e-9) << "below the screen";
        }
    }
    EXPECT_GT(lit, 10);
    EXPECT_GT(beside, 10);
}

TEST_F(RayWayTest, ALensLeavesByItsModel) {
    loadAny("lens-cylinder");
    const auto way = PictureWay::of(locator(1), screen());
    const std::vector<P2> picture = places();
    const std::vector<Arrival> arrivals = followed(*way, picture);
    int lit = 0;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (!arrivals[i].arrives) {
            continue;
        }
        ++lit;
        const P3& point = arrivals[i].point;
        EXPECT_NEAR(std::hypot(point[0], point[1]), 3.5, 1e-9) << "on the cylinder";
        EXPECT_LT(norm(cross(arrivals[i].leaving, point - P3{0.0, 0.2, 1.9})), 1e-9) << "from the projector";
    }
    EXPECT_GT(lit, 40);
    // Of equal angles: along the row of its axis, 28 degrees at either end.
    for (const double u : {0.0, 0.25, 0.75, 1.0}) {
        const P3 leaving = followed(*way, {{u, 0.5}}).front().leaving;
        EXPECT_NEAR(std::atan2(leaving[0], leaving[1]), (2 * u - 1) * 28 * DEGREE, 1e-9) << u;
    }
}

TEST_F(RayWayTest, NothingArrivesWithoutAModel) {
    load(displays::FLAT, exportDisplays::standing("P1", "x='0' y='0' z='1'", "z='0' x='0'", 10, 5), RAYS);
    const LensWay way(nullptr, screen());
    for (const Arrival& arrival : followed(way, places())) {
        EXPECT_FALSE(arrival.arrives);
        EXPECT_EQ(arrival.leaving, P3());
    }
    EXPECT_FALSE(way.continued({0.5, 0.5}).arrives);
}

/// A locator of which nothing else is known is followed ray by ray.
TEST_F(RayWayTest, AFollowedRayArrivesWhereItsLocatorStates) {
    load(displays::FLAT, exportDisplays::standing("P1", "x='0.5' y='1' z='0.75'", "z='0' x='0'", 30, 20), RAYS);
    const auto camera = std::dynamic_pointer_cast<const SphereTargetLocator>(locator(0));
    ASSERT_TRUE(camera);
    const std::vector<P2> picture = places();
    const std::vector<Arrival> expected = followed(*way(), picture);
    const FollowedWay way(camera);
    const std::vector<Arrival> arrivals = followed(way, picture);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        EXPECT_EQ(arrivals[i].arrives, expected[i].arrives) << picture[i];
        EXPECT_LT(norm(arrivals[i].leaving - expected[i].leaving), 1e-12) << picture[i];
        if (expected[i].arrives) {
            EXPECT_LT(norm(arrivals[i].point - expected[i].point), 1e-12) << picture[i];
        }
    }
    EXPECT_FALSE(way.continued({0.5, 0.5}).arrives);
}

}  // namespace

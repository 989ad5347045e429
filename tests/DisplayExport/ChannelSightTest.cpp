#include "DisplayExport/ChannelSight.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;

class ChannelSightTest : public ExportDisplayTest {
protected:
    /// A wall of 4 by 2 metres around (0, 5, 1), seen from one metre up.
    void loadWall(const std::string& area) {
        load(
            "<Screen shape='Flat'><EyePoint x='0.5' y='0' z='1'/><Centre x='0' y='5' z='1'/><Size width='4' "
            "height='2'/></Screen>",
            displays::projector("P1", "<ScreenArea " + area + "/><Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
            "<TargetData type='PlanarBasic'/>");
    }

    [[nodiscard]] std::string refusal(const std::optional<P3>& eye) const {
        try {
            const ChannelSight sight(config(), channels()[0], eye);
        } catch (const VeltraniException& fault) {
            return Veltrani::toUtf8(fault.message);
        }
        return "accepted";
    }
};

/// More places than are cast together, lit and not, each as the plane of the wall has it.
TEST_F(ChannelSightTest, SeesEachOfManyPlaces) {
    loadWall("left='0.25' right='1.25' bottom='0' top='1'");
    int pulses = 0;
    const ChannelSight sight(config(), channels()[0], std::nullopt, [&pulses] { ++pulses; });
    EXPECT_EQ(sight.eye(), (P3{0.5, 0.0, 1.0}));
    EXPECT_FALSE(sight.isInMirror());
    EXPECT_TRUE(sight.hasScreenCoordinates());
    std::mt19937 random(3);
    std::uniform_real_distribution<double> part(0, 1);
    std::vector<P2> picture;
    for (int i = 0; i < 20'000; ++i) {
        picture.emplace_back(part(random), part(random));
    }
    std::vector<SeenPlace> seen(picture.size(), {{7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, {7.0, 7.0}, true, true});
    sight.see(picture, seen);
    EXPECT_EQ(pulses, 3) << "once for 8192 places";
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const P2 screen{0.25 + picture[i][0], picture[i][1]};
        const bool isLit = screen[0] <= 1;
        const P3 point = isLit ? P3{-2 + 4 * screen[0], 5.0, 2 * screen[1]} : P3();
        ASSERT_EQ(seen[i].isSeen, isLit) << picture[i];
        ASSERT_EQ(seen[i].hasScreen, isLit);
        ASSERT_LT(norm(seen[i].point - point), 1e-12);
        ASSERT_LT(norm(seen[i].direction - (isLit ? point - sight.eye() : P3())), 1e-12);
        ASSERT_LT(norm(seen[i].screen - (isLit ? screen : P2())), 1e-12);
    }
    const SeenPlace beyond = sight.continued({0.875, 0.5});
    EXPECT_EQ(pulses, 4);
    EXPECT_TRUE(beyond.isSeen);
    EXPECT_LT(norm(beyond.point - P3{2.5, 5.0, 1.0}), 1e-12);
    EXPECT_LT(norm(beyond.direction - P3{2.0, 5.0, 0.0}), 1e-12);
}

TEST_F(ChannelSightTest, HasNoScreenCoordinatesWithRays) {
    loadAny("stereo-wall");
    const ChannelSight sight(config(), channels()[0]);
    EXPECT_FALSE(sight.hasScreenCoordinates());
    const P2 middle{0.5, 0.5};
    SeenPlace seen;
    sight.see({&middle, 1}, {&seen, 1});
    EXPECT_TRUE(seen.isSeen);
    EXPECT_FALSE(seen.hasScreen);
}

/// The mean of unit vectors, written out, over the lit part of the picture.
TEST_F(ChannelSightTest, LooksAtTheMeanOfWhatIsLit) {
    for (const auto& [left, right] : {std::pair(0.0, 1.0), {0.25, 1.25}}) {
        loadWall("left='" + std::to_string(left) + "' right='" + std::to_string(right) + "' bottom='0.5' top='1'");
        P3 sum;
        for (int row = 0; row <= 80; ++row) {
            for (int column = 0; column <= 128; ++column) {
                const double s = left + (right - left) * column / 128;
                if (s <= 1) {
                    const P3 direction{-2.5 + 4 * s, 5.0, 0.0125 * row};
                    sum += direction * (1 / norm(direction));
                }
            }
        }
        const auto mean = ChannelSight(config(), channels()[0]).meanDirection();
        ASSERT_TRUE(mean);
        EXPECT_LT(norm(*mean - sum * (1 / norm(sum))), 1e-12) << left;
    }
    loadWall("left='1.25' right='1.5' bottom='0' top='1'");
    EXPECT_FALSE(ChannelSight(config(), channels()[0]).meanDirection()) << "nothing is lit";
    // From the middle of the wall one half of it is opposite to the other one.
    loadWall("left='0' right='1' bottom='0' top='1'");
    EXPECT_FALSE(ChannelSight(config(), channels()[0], P3{0.0, 5.0, 1.0}).meanDirection());
    EXPECT_TRUE(ChannelSight(config(), channels()[0], P3{0.0, 4.9, 1.0}).meanDirection());
}

TEST_F(ChannelSightTest, RefusesAnEyeThatIsNotFinite) {
    loadWall("left='0' right='1' bottom='0' top='1'");
    EXPECT_EQ(refusal(P3{1.0, 2.0, 3.0}), "accepted");
    for (std::size_t i = 0; i < 3; ++i) {
        P3 eye;
        eye[i] = std::numeric_limits<double>::infinity();
        EXPECT_EQ(refusal(eye), "channel P1 (P1): the eye is not finite: state three numbers") << i;
    }
}

/// The eye of a mirror may be stated as it is, but for rounding.
TEST_F(ChannelSightTest, HasOneEyeInAMirror) {
    load(
        "<Screen shape='Sphere'><EyePoint x='0' y='-0.25' z='-0.5'/><Centre x='0' y='0' z='2'/><Radius value='1.5'/>"
        "<Azimuth min='-120' max='120'/><Elevation min='-60' max='60'/></Screen>",
        exportDisplays::standing("P1", "x='0' y='-0.25' z='-0.5'", "z='0' x='0'", 20, 12),
        "<TargetData type='SphericalCollimated'><Mirror radius='3'><Position x='0' y='0' "
        "z='2'/></Mirror></TargetData>");
    const ChannelSight sight(config(), channels()[0]);
    EXPECT_TRUE(sight.isInMirror());
    EXPECT_EQ(sight.eye(), (P3{0.0, -0.25, 1.5}));
    EXPECT_EQ(refusal(P3{0.0, -0.25, 1.5}), "accepted");
    // A billionth of one metre and the distance of the eye from the origin.
    EXPECT_EQ(refusal(P3{2.4e-9, -0.25, 1.5}), "accepted");
    EXPECT_EQ(refusal(P3{0.125, -0.25, 1.5}),
              "channel P1 (P1): it is seen in a mirror from 0,-0.25,1.5 alone, and not from 0.125,-0.25,1.5: leave the "
              "eye out");
    EXPECT_NE(refusal(P3{2.7e-9, -0.25, 1.5}), "accepted");
}

}  // namespace

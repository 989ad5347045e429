#include "DisplayExport/PoleZone.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/WarpCell.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;

/// A ceiling of 4 by 4 metres above an eye that stands a little aside of its middle.
class PoleZoneTest : public ExportDisplayTest {
protected:
    void loadCeiling(double height) {
        const std::string z = std::to_string(height);
        load("<Screen shape='Ruled'><EyePoint x='0.1' y='-0.2' z='0'/><LowerRail><Point x='-2' y='-2' z='" + z +
                 "'/><Point x='2' y='-2' z='" + z + "'/></LowerRail><UpperRail><Point x='-2' y='2' z='" + z +
                 "'/><Point x='2' y='2' z='" + z + "'/></UpperRail></Screen>",
             displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='4'/>"),
             "<TargetData type='PlanarBasic'/>");
    }

    [[nodiscard]] PoleZone zone(const InputChoice& choice) const {
        const ChannelSight sight(config(), channels()[0]);
        return {sight, ContentInput(config(), sight, choice)};
    }

    /// Four directions around +z or -z, one of them as far from it as stated, the others nearer; chords.
    static WarpCell cellWithin(double farthest, double up = 1) {
        WarpCell cell;
        for (std::size_t i = 0; i < 4; ++i) {
            const double chord = i == 2 ? farthest : 0.5 * farthest;
            const double angle = 2 * std::asin(chord / 2);
            const double azimuth = static_cast<double>(i);
            cell.directions[i] = {std::sin(angle) * std::sin(azimuth), std::sin(angle) * std::cos(azimuth),
                                  up * std::cos(angle)};
        }
        return cell;
    }

    static constexpr double HIGH = 2;
};

/// As far from the zenith as a fifth of the ceiling reaches, by its places one by one.
TEST_F(PoleZoneTest, ReachesAsFarAsAFifthOfThePicture) {
    loadCeiling(HIGH);
    std::vector<double> chords;
    for (int i = 0; i < 250; ++i) {
        for (int k = 0; k < 250; ++k) {
            const P3 direction{-2.1 + 4 * (i + 0.5) / 250, -1.8 + 4 * (k + 0.5) / 250, HIGH};
            chords.push_back(norm(direction * (1 / norm(direction)) - P3{0.0, 0.0, 1.0}));
        }
    }
    std::sort(chords.begin(), chords.end());
    const double fifth = chords[chords.size() / 5];
    const PoleZone panorama = zone({.kind = InputKind::EQUIRECTANGULAR});
    EXPECT_THAT(panorama.poles(), testing::ElementsAre(P3{0.0, 0.0, 1.0}, P3{0.0, 0.0, -1.0}));
    EXPECT_TRUE(panorama.holds(cellWithin(0.99 * fifth)));
    EXPECT_FALSE(panorama.holds(cellWithin(1.01 * fifth)));
    EXPECT_TRUE(panorama.holds(cellWithin(0.99 * fifth, -1))) << "around either pole";
    WarpCell both = cellWithin(0.5 * fifth);
    both.directions[1][2] = -both.directions[1][2];
    EXPECT_FALSE(panorama.holds(both)) << "all of it around one";
    EXPECT_EQ(panorama.least(), (P2{1 / (16.0 * 1920), 1 / (16.0 * 1200)}));

    const PoleZone fisheye = zone({.kind = InputKind::FISHEYE, .direction = P3{0.0, 0.0, -1.0}});
    ASSERT_EQ(fisheye.poles().size(), 1U);
    EXPECT_LT(norm(fisheye.poles().front() - P3{0.0, 0.0, 1.0}), 1e-15);
    EXPECT_FALSE(fisheye.holds(cellWithin(0.5 * fifth, -1))) << "the middle of a fisheye is no pole";
}

/// A low ceiling is all around the zenith; contents do not turn everywhere.
TEST_F(PoleZoneTest, ReachesNoFartherThanContentsTurn) {
    loadCeiling(0.3);
    const PoleZone panorama = zone({.kind = InputKind::EQUIRECTANGULAR});
    EXPECT_TRUE(panorama.holds(cellWithin(0.599)));
    EXPECT_FALSE(panorama.holds(cellWithin(0.601)));
}

/// A turn counts from a hundredth of a radian on, next to a pole alone.
TEST_F(PoleZoneTest, SeesATurn) {
    loadCeiling(HIGH);
    const PoleZone panorama = zone({.kind = InputKind::EQUIRECTANGULAR});
    const auto cellTurned = [](double turn, double chord, double up) {
        WarpCell cell;
        for (std::size_t i = 0; i < 4; ++i) {
            const double azimuth = 1 + (i == 1 || i == 2 ? turn : 0);
            const double angle = 2 * std::asin((chord + (i > 1 ? 0.001 : 0)) / 2);
            cell.directions[i] = {std::sin(angle) * std::sin(azimuth), std::sin(angle) * std::cos(azimuth),
                                  up * std::cos(angle)};
        }
        return cell;
    };
    for (const double up : {1.0, -1.0}) {
        for (const double chord : {0.01, 0.3, 0.59}) {
            EXPECT_FALSE(panorama.turnsIn(cellTurned(0.0099, chord, up))) << chord;
            EXPECT_TRUE(panorama.turnsIn(cellTurned(0.0101, chord, up))) << chord;
            EXPECT_TRUE(panorama.turnsIn(cellTurned(3, chord, up))) << chord;
        }
        EXPECT_FALSE(panorama.turnsIn(cellTurned(0.1, 0.61, up)));
    }
}

TEST_F(PoleZoneTest, IsNoneWithoutPoles) {
    loadCeiling(HIGH);
    const PoleZone cube = zone({.kind = InputKind::CUBE});
    EXPECT_TRUE(cube.poles().empty());
    EXPECT_FALSE(cube.holds(cellWithin(0.01)));
    EXPECT_FALSE(cube.turnsIn(cellWithin(0.01)));
}

}  // namespace

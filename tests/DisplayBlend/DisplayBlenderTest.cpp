#include "DisplayBlend/DisplayBlender.h"

#include "BlendDisplays.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace {

class DisplayBlenderTest : public BlendDisplayTest {
protected:
    /// The sum over a straight edge of ds / r^3, by the rule of the middle: an edge in front of a place at 0.
    static double integral(double from, double to, double distance) {
        constexpr int PIECES = 20'000;
        const double step = (to - from) / PIECES;
        double sum = 0;
        for (int i = 0; i < PIECES; ++i) {
            const double s = from + (i + 0.5) * step;
            sum += step / std::pow(s * s + distance * distance, 1.5);
        }
        return sum;
    }

    /// Expects slopes without jumps from five pixels beside the crossings on.
    /// @param crossings in pixels
    /// @return the steepest slope of its rows, per pixel
    static double steepestWithoutKinks(const BlendPicture& picture, const std::vector<P2>& crossings) {
        constexpr std::size_t EVERY = 11;
        // As much as a cubic over 300 pixels, the narrowest overlap.
        constexpr double MOST_BEND = 6.0 / (300.0 * 300.0);
        double steepest = 0;
        for (std::size_t row = 1; row + 1 < picture.height; row += EVERY) {
            for (std::size_t column = 1; column + 1 < picture.width; ++column) {
                const P2 pixel{static_cast<double>(column) + 0.5, static_cast<double>(row) + 0.5};
                double r = std::numeric_limits<double>::infinity();
                for (const P2& crossing : crossings) {
                    r = std::min(r, norm(pixel - crossing));
                }
                if (r < 5) {
                    continue;
                }
                const double here = picture.at(column, row);
                const double across = picture.at(column - 1, row) + picture.at(column + 1, row) - 2 * here;
                const double upwards = picture.at(column, row - 1) + picture.at(column, row + 1) - 2 * here;
                steepest = std::max(steepest, std::abs(picture.at(column + 1, row) - here));
                EXPECT_LT(std::max(std::abs(across), std::abs(upwards)), 10 / (r * r) + MOST_BEND)
                    << column << ' ' << row;
            }
        }
        return steepest;
    }
};

// Both pictures are 2 m wide and 2 m high on a wall of 3 m; they share 1 m. The edge of the left one ends the overlap
// on the right, that of the right one on the left.
TEST_F(DisplayBlenderTest, TwoHalfOverlappingRectanglesFollowTheIntegrals) {
    load("<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='3' height='2'/></Screen>",
         area("L", 0, 2.0 / 3, 0, 1) + area("R", 1.0 / 3, 1, 0, 1));
    const auto pictures = weights();
    for (int row = 20; row < 1180; row += 97) {
        for (int column = 0; column < 1920; column += 61) {
            const double x = 2 * (column + 0.5) / 1920;  // m from the left edge of the wall
            const double y = 2 * (row + 0.5) / 1200;
            double expected = 1;
            if (x > 1) {
                const double left = 1 / integral(-y, 2 - y, 2 - x);
                const double right = 1 / integral(-y, 2 - y, x - 1);
                expected = left / (left + right);
            }
            const float found = pictures[0].at(static_cast<std::size_t>(column), static_cast<std::size_t>(row));
            EXPECT_NEAR(found, expected, 2e-3) << column << ' ' << row;
            const float other = pictures[1].at(static_cast<std::size_t>(1919 - column), static_cast<std::size_t>(row));
            EXPECT_NEAR(other, found, 1e-6) << "the other one is the same in a mirror";
        }
    }
}

TEST_F(DisplayBlenderTest, AChannelAloneKeepsAllItsLight) {
    load(displays::FLAT, area("A", 0, 1, 0, 1));
    const auto pictures = weights();
    EXPECT_THAT(pictures.at(0).light, testing::Each(1.0F));
    EXPECT_EQ(pictures.at(0).light.size(), 1920U * 1200U);
}

// Around the screen on all sides: what lands beside it has the light of what lands next to it.
TEST_F(DisplayBlenderTest, APictureKeepsItsLightBeyondTheScreen) {
    load(displays::FLAT, sized(camera("A", {0, 0, 1}, 7, 3, 35, 25), 331, 203),
         "<TargetData type='ProjectorCentric'/>");
    EXPECT_THAT(weights().at(0).light, testing::Each(1.0F));
    // Two halves beside each other, the screen cut off at the top and at the bottom.
    load(displays::FLAT, sized(area("L", 0, 0.6, -0.5, 1.5) + area("R", 0.4, 1, -0.5, 1.5), 331, 203));
    const auto pictures = weights();
    for (std::size_t column = 0; column < 331; ++column) {
        // Of 203 rows those from 51 to 151 land.
        for (const auto& [beyond, rim] : {std::pair<std::size_t, std::size_t>{0, 51}, {30, 51}, {202, 151}}) {
            EXPECT_NEAR(pictures[0].at(column, beyond), pictures[0].at(column, rim), 2e-3) << column << ' ' << beyond;
        }
    }
    EXPECT_LT(pictures[0].at(330, 0), 1e-3F);
}

TEST_F(DisplayBlenderTest, PicturesThatOnlyTouchKeepAllTheirLight) {
    load(displays::FLAT, area("A", 0, 0.5, 0, 1) + area("B", 0.5, 1, 0, 1));
    for (const BlendPicture& picture : weights()) {
        EXPECT_THAT(picture.light, testing::Each(1.0F));
    }
}

// They light the same places, each a side of its own.
TEST_F(DisplayBlenderTest, PicturesOnTheTwoSidesOfASheetKeepAllTheirLight) {
    load(displays::FLAT,
         sized(camera("Front", {0, 0, 1}, 0, 0, 20, 10) + camera("Back", {0.1, 10, 1}, 180, 0, 20, 10), 320, 200),
         "<TargetData type='ProjectorCentric'/>");
    for (const BlendPicture& picture : weights()) {
        EXPECT_THAT(picture.light, testing::Each(1.0F));
    }
}

TEST_F(DisplayBlenderTest, PicturesOnTopOfEachOtherShareEvenly) {
    load(displays::FLAT, area("A", 0, 1, 0, 1) + area("B", 0, 1, 0, 1) + area("C", 0, 1, 0, 1));
    for (const BlendPicture& picture : weights()) {
        EXPECT_THAT(picture.light, testing::Each(testing::FloatNear(1.0F / 3, 1e-6F)));
    }
}

TEST_F(DisplayBlenderTest, AnInsetHasTheLightInItsMiddleAndNoneOnItsEdge) {
    load(displays::FLAT, area("Wide", 0, 1, 0, 1) + area("Inset", 0.4, 0.6, 0.4, 0.6));
    const auto pictures = weights();
    EXPECT_GT(pictures[1].at(960, 600), 0.89F);
    EXPECT_NEAR(pictures[0].at(960, 600) + pictures[1].at(960, 600), 1, 1e-4);
    for (std::size_t i = 0; i < 1200; ++i) {
        EXPECT_LT(pictures[1].at(0, i), 1e-4F);
        EXPECT_LT(pictures[1].at(1919, i), 1e-4F);
        EXPECT_LT(pictures[1].at(i, 0), 1e-4F);
        EXPECT_LT(pictures[1].at(i, 1199), 1e-4F);
    }
    EXPECT_EQ(pictures[0].at(100, 100), 1.0F);
}

TEST_F(DisplayBlenderTest, WhereFourMeetInTheMiddleEachHasAQuarter) {
    load(displays::FLAT,
         area("A", 0, 0.6, 0, 0.6) + area("B", 0.4, 1, 0, 0.6) + area("C", 0, 0.6, 0.4, 1) + area("D", 0.4, 1, 0.4, 1));
    const auto pictures = weights();
    EXPECT_NEAR(pictures[0].between({5.0 / 6, 5.0 / 6}), 0.25, 1e-4);
    EXPECT_NEAR(pictures[3].between({1.0 / 6, 1.0 / 6}), 0.25, 1e-4);
}

// Slices of a sphere from pole to pole. In the picture of a slice its edges are straight; usual for its width is that
// at an elevation of 45 degrees.
TEST_F(DisplayBlenderTest, ThreeLunesFollowTheIntegrals) {
    load(displays::SPHERE, area("A", 0, 0.4, 0, 1) + area("B", 0.3, 0.7, 0, 1) + area("C", 0.6, 1, 0, 1));
    const auto pictures = weights();
    const double width = 5 * std::sqrt(0.5) * 0.4 * 2 * std::numbers::pi;
    const double height = 5 * std::numbers::pi;
    for (int row = 20; row < 1180; row += 97) {
        for (int column = 0; column < 1920; column += 61) {
            const double u = (column + 0.5) / 1920;
            const double y = height * (row + 0.5) / 1200;
            double expected = 1;
            // A quarter of the middle one at either side is shared.
            if (const double shared = std::min(u, 1 - u); shared < 0.25) {
                const double own =
                    1 / (integral(-y, height - y, width * shared) + integral(-y, height - y, width * (1 - shared)));
                // The other one may end on both of its sides; those of A and C end at the seam, which lies in no
                // picture.
                const double other = 1 / integral(-y, height - y, width * (0.25 - shared));
                expected = own / (own + other);
            }
            const auto x = static_cast<std::size_t>(column);
            EXPECT_NEAR(pictures[1].at(x, static_cast<std::size_t>(row)), expected, 3e-3) << column << ' ' << row;
        }
    }
}

// Away from a crossing at the distance r, what changes with the direction from it alone bends by some 1 / r^2; a kink
// would bend by a whole slope from one pixel to the next.
TEST_F(DisplayBlenderTest, NoSlopeJumps) {
    struct Area {
        double left, right, bottom, top;
    };
    const std::vector<Area> areas{
        {0, 0.6, 0, 0.55}, {0.4, 1, 0, 0.6}, {0, 0.6, 0.4, 1}, {0.4, 1, 0.42, 1}, {0.2, 0.5, 0.3, 0.7}};
    std::string projectors;
    for (const Area& one : areas) {
        projectors += area("P" + std::to_string(projectors.size()), one.left, one.right, one.bottom, one.top);
    }
    load(displays::FLAT, projectors);
    const auto pictures = weights();
    for (std::size_t i = 0; i < areas.size(); ++i) {
        // Where the outlines cross, in the picture of this one.
        std::vector<P2> crossings;
        for (const double x : {0.0, 0.2, 0.4, 0.5, 0.6}) {
            for (const double y : {0.0, 0.3, 0.4, 0.42, 0.55, 0.6, 0.7}) {
                crossings.push_back({(x - areas[i].left) / (areas[i].right - areas[i].left) * 1920,
                                     (y - areas[i].bottom) / (areas[i].top - areas[i].bottom) * 1200});
            }
        }
        EXPECT_GT(steepestWithoutKinks(pictures[i], crossings), 0.002) << "there is something to see";
    }
}

TEST_F(DisplayBlenderTest, AShadowEndsAPictureSmoothly) {
    // A panel before a wall, higher than the pictures are; two projectors, of which the left one throws its shadow to
    // the right.
    m_folder.write("wall.obj",
                   "v -2 5 -2\nv 2 5 -2\nv 2 5 2\nv -2 5 2\n"
                   "v -0.3 4 -0.5\nv 0.3 4 -0.5\nv 0.3 4 0.5\nv -0.3 4 0.5\n"
                   "f 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
    load(
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='wall.obj'/>"
        "<ImportOrientation up='Z' forward='Y'/></Screen>",
        sized(camera("L", {-1.5, 0, 0}, 0, 0, 35, 5.2) + camera("R", {1.5, 0, 0}, 0, 0, 35, 5.2), 1920, 300),
        "<TargetData type='ProjectorCentric'/>");
    const auto pictures = weights();
    // The shadow's edge on the wall: from (-1.5, 0) past (0.3, 4) to y = 5 at x = 0.75. The right one lights that.
    const auto lights =
        Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry());
    const auto weightAt = [&](std::size_t channel, double x) {
        P2 picture;
        EXPECT_TRUE(lights.lights[channel]->findPicture({{x, 5, 0.1}, {}, false}, picture));
        return pictures[channel].between(picture);
    };
    double last = 0;
    for (const double beyond : {0.01, 0.05, 0.1, 0.2, 0.4}) {
        const double left = weightAt(0, 0.75 + beyond);
        EXPECT_NEAR(left + weightAt(1, 0.75 + beyond), 1, 1e-3) << beyond;
        EXPECT_GT(left, last) << beyond;
        last = left;
    }
    EXPECT_LT(weightAt(0, 0.76), 2e-3) << "nothing next to the shadow";
    EXPECT_GT(last, 0.01) << "four tenths from its edge, where the other one is three from its own";
    EXPECT_NEAR(weightAt(1, 0.7), 1, 1e-6) << "all in the shadow";
}

TEST_F(DisplayBlenderTest, TheLiftRaisesWhatOneLightsToTheBlackOfTwo) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
    const DisplayBlender blender(*m_config);
    EXPECT_NEAR(blender.liftedBlack({0.002, 0.002}), 0.004, 1e-12);
    const BlendPicture lift = blender.lift(0, {0.002, 0.002});
    EXPECT_NEAR(lift.at(100, 600), 0.002 / 0.998, 1e-6) << "alone";
    EXPECT_EQ(lift.at(1600, 600), 0.0F) << "in the middle of the overlap";
    EXPECT_NEAR(lift.at(1282, 600), 0.002 / 0.998, 5e-6) << "at the border of the other picture";
    for (std::size_t column = 1; column < 1920; ++column) {
        EXPECT_LT(std::abs(lift.at(column, 600) - lift.at(column - 1, 600)), 0.002F / 16) << column;
    }
}

// No projector adds more than all the light that it has, and none less than nothing.
TEST_F(DisplayBlenderTest, TheLiftIsNoMoreThanAProjectorHas) {
    load(displays::FLAT, sized(area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1), 320, 200));
    const DisplayBlender blender(*m_config);
    EXPECT_NEAR(blender.liftedBlack({0.9, 0.8}), 1.7, 1e-12);
    const BlendPicture weights = blender.weights(0);
    const BlendPicture lift = blender.lift(0, {0.9, 0.8});
    double most = 0;
    for (std::size_t i = 0; i < lift.light.size(); ++i) {
        EXPECT_GE(lift.light[i], 0.0F);
        EXPECT_LE(lift.light[i], weights.light[i] + 1e-4F);
        most = std::max(most, static_cast<double>(lift.light[i]));
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(lift.at(10, 100), 1.0F) << "alone: eight tenths more of the one tenth that it has";
}

TEST_F(DisplayBlenderTest, WithoutADifferenceThereIsNoLift) {
    load(displays::FLAT, area("A", 0, 0.5, 0, 1) + area("B", 0.5, 1, 0, 1));
    const DisplayBlender blender(*m_config);
    EXPECT_THAT(blender.lift(1, {0.003, 0.003}).light, testing::Each(0.0F));
    EXPECT_NEAR(blender.lift(1, {0.003, 0.001}).at(5, 5), 0.002 / 0.999, 1e-7);
}

TEST_F(DisplayBlenderTest, BadResidualsAreRefused) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
    const DisplayBlender blender(*m_config);
    const auto messageFor = [&](const std::vector<double>& residual) {
        try {
            static_cast<void>(blender.lift(0, residual));
        } catch (const VeltraniException& fault) {
            return fault.message;
        }
        return std::wstring();
    };
    EXPECT_EQ(messageFor({0.1}), L"There are 1 residual lights for 2 channels: give one for each");
    EXPECT_EQ(messageFor({0.1, 1.0}),
              L"The residual light of channel B is 100.000000 per cent of its white: expected 0 or more and less than "
              L"100");
    EXPECT_EQ(messageFor({-0.1, 0.1}),
              L"The residual light of channel A is -10.000000 per cent of its white: expected 0 or more and less than "
              L"100");
    EXPECT_EQ(messageFor({0, 0.999}), L"") << "both ends of the range";
    EXPECT_NE(messageFor({std::nan(""), 0.1}), L"");
}

TEST_F(DisplayBlenderTest, AChannelWithoutPixelsStillTakesPartInTheOthers) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) +
                             "<Projector id='B'><Name>B</Name><ScreenArea left='0.4' right='1' bottom='0' top='1'/>"
                             "</Projector>");
    const DisplayBlender blender(*m_config);
    EXPECT_EQ(blender.channels().at(1).fault, "its resolution is not known: give it a Resolution");
    EXPECT_LT(blender.weights(0).at(1919, 600), 1e-4F);
    try {
        static_cast<void>(blender.weights(1));
        ADD_FAILURE() << "accepted";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"channel B (B) has no blend: its resolution is not known: give it a Resolution");
    }
    EXPECT_THROW(static_cast<void>(blender.weights(2)), std::out_of_range);
}

// The first of three has no map: the others are those of a display of two.
TEST_F(DisplayBlenderTest, AChannelWithoutLightHasNoPartInTheOthers) {
    const auto writeMap = [this](const std::string& name, double left, double right, double bottom, double top) {
        const auto node = [](double x, double y, double s, double t) {
            return std::to_string(x) + ' ' + std::to_string(y) + ' ' + std::to_string(s) + ' ' + std::to_string(t) +
                   " 1\n";
        };
        m_folder.write(name, "2\n2 2\n" + node(-1.6, -1, left, bottom) + node(1.6, -1, right, bottom) +
                                 node(-1.6, 1, left, top) + node(1.6, 1, right, top) + "pixels 320 200\n");
    };
    writeMap("l.map", 0, 0.6, 0, 0.8);
    writeMap("r.map", 0.4, 1, 0.2, 1);
    load(displays::FLAT,
         sized(displays::projector("None", "") + displays::projector("L", "<CustomPlanarMap file='l.map'/>") +
                   displays::projector("R", "<CustomPlanarMap file='r.map'/>"),
               320, 200),
         "<TargetData type='CustomPlanar'/>");
    const DisplayBlender blender(*m_config);
    ASSERT_EQ(blender.channels().size(), 3U);
    EXPECT_NE(blender.channels()[0].fault, "");
    EXPECT_FALSE(blender.channels()[0].lights);
    EXPECT_TRUE(blender.channels()[1].lights);
    EXPECT_THROW(static_cast<void>(blender.weights(0)), VeltraniException);
    EXPECT_THAT(blender.channels()[0].crossings, testing::IsEmpty());
    EXPECT_THAT(blender.channels()[1].crossings, testing::SizeIs(2));
    EXPECT_THAT(blender.channels()[2].crossings, testing::SizeIs(2));
    const BlendPicture left = blender.weights(1);
    const BlendPicture right = blender.weights(2);
    EXPECT_EQ(left.at(0, 100), 1.0F);
    EXPECT_LT(left.at(319, 100), 1e-3F);
    for (std::size_t column = 0; column < 320; ++column) {
        EXPECT_NEAR(left.at(column, 50), right.at(319 - column, 149), 1e-5) << column;
    }
    EXPECT_NEAR(blender.liftedBlack({0.5, 0.02, 0.01}), 0.03, 1e-12);
    EXPECT_NEAR(blender.lift(2, {0.5, 0.02, 0.01}).at(300, 180), 0.02 / 0.99, 1e-6);
}

TEST_F(DisplayBlenderTest, WithoutAScreenThereIsNoBlend) {
    m_config = displays::parsed(displays::FLAT, area("A", 0, 1, 0, 1));
    try {
        const DisplayBlender blender(*m_config);
        ADD_FAILURE() << "accepted";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"There is no screen to blend pictures on");
    }
}

TEST_F(DisplayBlenderTest, ProgressEndsWithTheLastRow) {
    load(displays::FLAT, area("A", 0, 1, 0, 1));
    std::vector<std::size_t> done;
    static_cast<void>(DisplayBlender(*m_config).weights(0, [&](std::size_t rows, std::size_t total) {
        EXPECT_EQ(total, 1200U);
        done.push_back(rows);
    }));
    EXPECT_EQ(done.front(), 0U);
    EXPECT_EQ(done.back(), 1200U);
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
}

}  // namespace

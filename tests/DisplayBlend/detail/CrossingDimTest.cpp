#include "DisplayBlend/detail/CrossingDim.h"

#include "BlendDisplays.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using Veltrani::DisplayBlendDetail::dimCrossings;

class CrossingDimTest : public BlendDisplayTest {
protected:
    /// What the light around the crossings of a display is off by.
    struct Off {
        double most = 0;   ///< sum minus one, within five pixels
        double least = 0;  ///< the same, below zero
        double far = 0;    ///< beyond five pixels: times the square of the pixels
    };

    /// @param pixel native units
    [[nodiscard]] Off aroundCrossings(double pixel) const {
        const DisplayBlender blender(*m_config);
        const auto lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry());
        const auto pictures = weights();
        std::mt19937 random(7);
        std::uniform_real_distribution<double> beside(-12, 12);
        Off off;
        for (const P2& crossing : blender.channels().front().crossings) {
            const P3 middle = lights.lights.front()->landingOf(crossing).on.place;
            for (int i = 0; i < 40'000; ++i) {
                const P2 pixels{beside(random), beside(random)};
                double light = 0;
                bool isLit = false;
                for (std::size_t channel = 0; channel < pictures.size(); ++channel) {
                    P2 place;
                    const P3 point = middle + P3{pixel * pixels[0], 0, pixel * pixels[1]};
                    if (lights.lights[channel]->findPicture({point, {}, false}, place) && place[0] >= 0 &&
                        place[0] <= 1 && place[1] >= 0 && place[1] <= 1) {
                        isLit = true;
                        light += pictures[channel].between(place);
                    }
                }
                const double r = norm(pixels);
                if (isLit && r < 5) {
                    off.most = std::max(off.most, light - 1);
                    off.least = std::min(off.least, light - 1);
                } else if (isLit) {
                    off.far = std::max(off.far, std::abs(light - 1) * r * r);
                }
            }
        }
        return off;
    }
};

TEST_F(CrossingDimTest, DimsAThirdAtACrossingAndNothingFromAPixelAndAHalfOn) {
    BlendPicture picture{8, 6, std::vector<float>(48, 1.0F)};
    // The middle of pixel (3, 2), and a place outside of all others' reach.
    const std::vector<P2> crossings{{3.5 / 8, 2.5 / 6}, {3.5 / 8, 2.5 / 6}};
    dimCrossings(picture, crossings);
    EXPECT_FLOAT_EQ(picture.at(3, 2), 2.0F / 3) << "once, though it stands there twice";
    const double beside = 1 - 1 / (1.5 * 1.5);
    EXPECT_NEAR(picture.at(4, 2), 1 - beside * beside / 3, 1e-6);
    EXPECT_NEAR(picture.at(3, 1), 1 - beside * beside / 3, 1e-6);
    EXPECT_EQ(std::count(picture.light.begin(), picture.light.end(), 1.0F), 48 - 9) << "corners of the nine, too";
}

TEST_F(CrossingDimTest, ReachesToTheEdgesOfAPicture) {
    BlendPicture picture{4, 3, std::vector<float>(12, 0.5F)};
    dimCrossings(picture, std::vector<P2>{{1, 1}, {0, 0}});
    const double corner = 1 - 0.5 / (1.5 * 1.5);
    EXPECT_NEAR(picture.at(3, 2), 0.5 * (1 - corner * corner / 3), 1e-6);
    EXPECT_NEAR(picture.at(0, 0), 0.5 * (1 - corner * corner / 3), 1e-6);
    EXPECT_EQ(picture.at(0, 2), 0.5F);
}

// Two pictures of which one reaches further down and the other one further up: the outlines cross twice. The light is
// read at places all around the upper one, in pixels of the first.
TEST_F(CrossingDimTest, TheLightAtACrossingIsOffByLittleMoreThanItHasToBe) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> any(0, 1);
    constexpr double PIXEL = 0.6 / 1920;  // of the wall
    constexpr double ROW = 0.8 / 1200;
    double worst = 0;
    for (int shift = 0; shift < 4; ++shift) {
        const double left = 0.4 + shift / 4.0 * PIXEL;
        const double top = 0.8;
        load(displays::FLAT, area("A", 0, 0.6, 0, top) + area("B", left, left + 0.6, 0.2, 1));
        const DisplayBlender blender(*m_config);
        ASSERT_THAT(blender.channels()[0].crossings, testing::SizeIs(2));
        const auto pictures = weights();
        for (int i = 0; i < 20'000; ++i) {
            const double across = 24 * any(random) - 12;
            const double upwards = 24 * any(random) - 12;
            const P2 inA{(left + across * PIXEL) / 0.6, 1 + upwards / 1200};
            const P2 inB{across * PIXEL / 0.6, (top - 0.2 + upwards * ROW) / 0.8};
            const double sum =
                (upwards < 0 ? pictures[0].between(inA) : 0) + (across > 0 ? pictures[1].between(inB) : 0);
            const double r = std::hypot(across, upwards);
            if (upwards < 0 || across > 0) {
                ASSERT_LT(std::abs(sum - 1), r < 5 ? 0.5 : 0.3 / (r * r)) << across << ' ' << upwards;
                worst = std::max(worst, std::abs(sum - 1));
            }
        }
    }
    EXPECT_GT(worst, 1.0 / 3) << "no pictures can be nearer to one";
}

// One picture is turned about a corner of the other one: at one of their two crossings the overlap is a wedge that is
// narrower than a right angle by the turn, and at the other one it is wider by as much. How the pixels of both lie to
// the crossings counts, too: the pictures are moved by parts of a pixel.
TEST_F(CrossingDimTest, TheNarrowerTheOverlapAtACrossingTheBrighterItIs) {
    constexpr double PIXEL = 2 * 5 * 0.17632698070846498 / 960;  // 5 m away, 10 degrees to each side
    const auto offAt = [&](const char* turn) {
        Off worst;
        for (int i = 0; i < 6; ++i) {
            std::string turned = camera("B", {0.5 + 0.37 * i * PIXEL, 0, 1.3 + 0.21 * i * PIXEL}, 0, 0, 10, 6.3);
            const std::string none = " y='0'/><Frustum";
            turned.replace(turned.find(none), none.size(), " y='" + std::string(turn) + "'/><Frustum");
            load(displays::FLAT, sized(camera("A", {-0.3, 0, 0.9}, 0, 0, 10, 6.3) + turned, 960, 600),
                 "<TargetData type='ProjectorCentric'/>");
            const Off off = aroundCrossings(PIXEL);
            worst = {std::max(worst.most, off.most), std::min(worst.least, off.least), std::max(worst.far, off.far)};
        }
        return worst;
    };
    const auto expectBetween = [](double value, double least, double most) {
        EXPECT_GE(value, least);
        EXPECT_LE(value, most);
    };
    const Off right = offAt("0");
    expectBetween(right.most, 0.3, 0.45);
    expectBetween(-right.least, 0.3, 0.45);
    EXPECT_LT(right.far, 0.3);
    const Off narrow = offAt("30");
    expectBetween(narrow.most, 0.4, 0.57);
    expectBetween(-narrow.least, 0.4, 0.52);
    EXPECT_LT(narrow.far, 0.7);
    const Off narrowest = offAt("60");
    expectBetween(narrowest.most, 0.5, 0.84);
    expectBetween(-narrowest.least, 0.4, 0.58);
    EXPECT_LT(narrowest.far, 2.5);
}

TEST_F(CrossingDimTest, CrossingsAreWhereOutlinesCrossAtTheRimOfAllLight) {
    const auto crossingsOf = [this](std::size_t channel) {
        return DisplayBlender(*m_config).channels()[channel].crossings;
    };
    const auto near = [](double u, double v) {
        return testing::ElementsAre(testing::DoubleNear(u, 1e-5), testing::DoubleNear(v, 1e-5));
    };
    const auto coordinates = [](const std::vector<P2>& points) {
        std::vector<std::vector<double>> all;
        for (const P2& point : points) {
            all.push_back({point[0], point[1]});
        }
        return all;
    };
    const std::string a = area("A", 0, 0.6, 0, 0.8);
    const std::string b = area("B", 0.4, 1, 0.2, 1);
    load(displays::FLAT, a + b);
    EXPECT_THAT(coordinates(crossingsOf(0)), testing::UnorderedElementsAre(near(1, 0.25), near(2.0 / 3, 1)));
    EXPECT_THAT(coordinates(crossingsOf(1)), testing::UnorderedElementsAre(near(0, 0.75), near(1.0 / 3, 0)));
    // A third one covers the upper one.
    load(displays::FLAT, a + b + area("C", 0.3, 0.5, 0.7, 0.9));
    EXPECT_THAT(coordinates(crossingsOf(0)), testing::Contains(near(1, 0.25)));
    EXPECT_THAT(coordinates(crossingsOf(0)), testing::Not(testing::Contains(near(2.0 / 3, 1))));
    // Outlines that end at the same height, or beside the screen, do not cross.
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
    EXPECT_THAT(coordinates(crossingsOf(0)), testing::IsEmpty());
    load(displays::FLAT, camera("A", {-1, 0, 0.9}, 0, 0, 15, 20) + camera("B", {1, 0, 1.1}, 0, 0, 15, 20),
         "<TargetData type='ProjectorCentric'/>");
    EXPECT_THAT(coordinates(crossingsOf(0)), testing::IsEmpty());
}

}  // namespace

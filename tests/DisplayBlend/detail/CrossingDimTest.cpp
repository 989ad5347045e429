#include "DisplayBlend/detail/CrossingDim.h"

#include "BlendDisplays.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using Veltrani::DisplayBlendDetail::dimCrossings;

class CrossingDimTest : public BlendDisplayTest {};

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

#include "DisplayBlend/detail/PlaceSampler.h"

#include "BlendDisplays.h"

#include <tuple>
#include <utility>

namespace {

using Veltrani::DisplayBlendDetail::PlaceSampler;
using Veltrani::DisplayBlendDetail::PlaceSamples;

/// One landing, and how another channel stands to it.
PlaceSamples sampled(int side, const Veltrani::DisplayReport::ChannelLight::Reach& reach) {
    PlaceSamples samples;
    samples.landings.push_back({{}, true, side});
    samples.reaches = {{}, {reach}};
    return samples;
}

TEST(PlaceSamplesTest, LightComesFromTheSideThatIsLit) {
    for (const int side : {-1, 0, 1}) {
        for (const int other : {-1, 0, 1}) {
            const bool isOne = side == other || side == 0 || other == 0;
            EXPECT_EQ(sampled(side, {{0.5, 0.5}, true, true, other}).inSight(1, 0), isOne) << side << ' ' << other;
            EXPECT_EQ(sampled(side, {{0.5, 0.5}, true, true, other}).isLit(1, 0), isOne);
            EXPECT_EQ(sampled(side, {{0.5, 0.5}, true, true, other}).isInside(1, 0), isOne);
            EXPECT_FALSE(sampled(side, {{0.5, 0.5}, true, false, other}).inSight(1, 0)) << "something stands between";
        }
    }
}

/// The edge is lit, what lies next to it by a millionth of the picture is the same edge.
TEST(PlaceSamplesTest, TheEdgeIsLitAndNotInside) {
    const auto standsAt = [](double u, double v) {
        const PlaceSamples samples = sampled(1, {{u, v}, true, true, 1});
        return std::pair(samples.isLit(1, 0), samples.isInside(1, 0));
    };
    for (const double along : {0.3, 0.7}) {
        for (const auto& [place, isLit, isInside] : {std::tuple(-1e-9, false, false),
                                                     {0.0, true, false},
                                                     {0.9e-6, true, false},
                                                     {1.1e-6, true, true},
                                                     {1 - 1.1e-6, true, true},
                                                     {1 - 0.9e-6, true, false},
                                                     {1.0, true, false},
                                                     {1 + 1e-9, false, false}}) {
            EXPECT_EQ(standsAt(place, along), std::pair(isLit, isInside)) << place;
            EXPECT_EQ(standsAt(along, place), std::pair(isLit, isInside)) << place;
        }
    }
}

class PlaceSamplerTest : public BlendDisplayTest {
protected:
    /// What many points show at once is what each light reports for one; returns how often one is lit, and not.
    void expectAgreement(int leastLit, int leastDark) const {
        const auto lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
                .lights;
        std::mt19937 random(3);
        std::uniform_real_distribution<double> part(0, 1);
        std::vector<P2> pictures;
        for (int i = 0; i < 2000; ++i) {
            pictures.emplace_back(part(random), part(random));
        }
        PlaceSamples samples;
        PlaceSampler(lights).sample(0, pictures, samples);
        int lit = 0;
        int dark = 0;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const auto landing = lights[0]->landingOf(pictures[i]);
            ASSERT_EQ(samples.lands(i), landing.hits);
            if (!landing.hits) {
                continue;
            }
            EXPECT_EQ(samples.landings[i].on.place, landing.on.place);
            P2 picture;
            EXPECT_EQ(samples.reaches[1][i].hasPicture, lights[1]->findPicture(landing.on, picture));
            EXPECT_EQ(samples.reaches[1][i].picture, picture);
            EXPECT_EQ(samples.isLit(1, i), lights[1]->lights(landing.on)) << pictures[i][0] << ' ' << pictures[i][1];
            (samples.isLit(1, i) ? lit : dark) += 1;
        }
        EXPECT_GT(lit, leastLit);
        EXPECT_GT(dark, leastDark);
    }
};

TEST_F(PlaceSamplerTest, RaysAgreeOneByOne) {
    m_folder.write("wall.obj",
                   "v -2 5 -2\nv 2 5 -2\nv 2 5 2\nv -2 5 2\n"
                   "v -0.3 4 -0.5\nv 0.3 4 -0.5\nv 0.3 4 0.5\nv -0.3 4 0.5\n"
                   "f 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
    load(
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='wall.obj'/>"
        "<ImportOrientation up='Z' forward='Y'/></Screen>",
        camera("L", {-1.5, 0, 0}, 0, 0, 30, 20) + camera("R", {1.5, 0, 0}, 0, 0, 30, 20),
        "<TargetData type='ProjectorCentric'/>");
    expectAgreement(500, 50);
}

TEST_F(PlaceSamplerTest, AreasAgreeOneByOne) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
    expectAgreement(300, 300);
}

// A sheet that both light, each from its side: neither is seen by the other one.
TEST_F(PlaceSamplerTest, TheOtherSideOfASheetIsNotLit) {
    m_folder.write("wall.obj", "v -2 0 -2\nv 2 0 -2\nv 2 0 2\nv -2 0 2\nf 1 2 3\nf 1 3 4\n");
    load(
        "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='wall.obj'/>"
        "<ImportOrientation up='Z' forward='Y'/></Screen>",
        camera("Front", {0, -4, 0}, 0, 0, 20, 20) + camera("Back", {0, 4, 0}, 180, 0, 20, 20),
        "<TargetData type='ProjectorCentric'/>");
    const auto pictures = weights();
    EXPECT_THAT(pictures[0].light, testing::Each(1.0F));
    EXPECT_THAT(pictures[1].light, testing::Each(1.0F));
}

}  // namespace

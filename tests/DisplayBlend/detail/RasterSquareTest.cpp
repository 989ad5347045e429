#include "DisplayBlend/detail/RasterSquare.h"

#include "BlendDisplays.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

using namespace Veltrani::DisplayBlendDetail;

/// A square of a picture with another one that lights it, both as wide as each other.
class RasterSquareTest : public BlendDisplayTest {
protected:
    static constexpr std::size_t CORNERS = 9;

    void loadTwo() {
        load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
        takeLights();
    }
    /// A board three metres before the first one throws its shadow on a wall that the second one lights.
    void loadShadow() {
        m_folder.write("room.obj",
                       "v -6 5 -6\nv 6 5 -6\nv 6 5 6\nv -6 5 6\nv -3 3 -0.1\nv 3 3 -0.1\nv 3 3 0.1\nv -3 3 0.1\n"
                       "f 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
        load(
            "<Screen shape='Mesh' fileUnit='m'><ContentMesh file='room.obj'/>"
            "<ImportOrientation up='Z' forward='Y'/></Screen>",
            camera("Shadowed", {0, 0, 0}, 0, 0, 10, 8) + camera("Above", {0, 0, 4}, 0, -38.66, 26, 16),
            "<TargetData type='ProjectorCentric'/>");
        takeLights();
    }
    void takeLights() {
        m_lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
                .lights;
    }

    [[nodiscard]] ChannelFields fields() const {
        return {m_lights, std::vector<Point<int, 2>>(m_lights.size(), {1920, 1200})};
    }

    /// Sixteen pixels wide and high around a place of a picture, linear both ways, as the other one lies aside.
    void placeSquare(const P2& middle, std::size_t own = 0, const P2& aside = {-2.0 / 3, 0.0}) {
        m_own = own;
        for (std::size_t i = 0; i < 3; ++i) {
            m_square.x[i] = middle[0] * 1920 + 8 * static_cast<double>(i) - 8;
            m_square.y[i] = middle[1] * 1200 + 8 * static_cast<double>(i) - 8;
        }
        m_samples.landings.resize(CORNERS);
        m_samples.reaches.assign(2, std::vector<ChannelLight::Reach>(CORNERS));
        for (std::size_t i = 0; i < CORNERS; ++i) {
            m_square.corners[i] = {&m_samples, i};
            const P2 picture = pictureOf(i);
            m_samples.landings[i].hits = true;
            m_samples.landings[i].on.place = {3 * picture[0], 5.0, 2 * picture[1]};
            m_samples.reaches[1 - m_own][i] = {picture + aside, true, true, 0};
        }
    }
    [[nodiscard]] P2 pictureOf(std::size_t i) const { return {m_square.x[i % 3] / 1920, m_square.y[i / 3] / 1200}; }

    /// The weight w of the first one changes by w (1 - w) times the parts by which shares change.
    [[nodiscard]] double expected(const ChannelFields& fields, double ownOff, double otherOff) const {
        double most = 0;
        for (std::size_t i = 0; i < CORNERS; ++i) {
            const P3& place = m_samples.landings[i].on.place;
            const P2& there = m_samples.reaches[1 - m_own][i].picture;
            const double p = fields.potential(m_own, pictureOf(i), place);
            const double q = fields.potential(1 - m_own, there, place);
            const double own = fields.shareOf(m_own, p);
            const double other = isInPicture(there) ? fields.shareOf(1 - m_own, q) : 0;
            const double weight = own / (own + other);
            most = std::max(most, weight * (1 - weight) * 8 * (ownOff * std::sqrt(p) + otherOff * std::sqrt(q)));
        }
        return most;
    }

    [[nodiscard]] double weightOff(const ChannelFields& fields) const {
        const std::array<std::size_t, 1> lighting{1 - m_own};
        return m_square.weightOff(fields, m_own, lighting);
    }

    Veltrani::DisplayReport::ChannelLights m_lights;
    RasterSquare m_square;
    PlaceSamples m_samples;
    std::size_t m_own = 0;
};

TEST_F(RasterSquareTest, IsExactWhereTheOtherPictureIsLinear) {
    loadTwo();
    const ChannelFields two = fields();
    placeSquare({0.85, 0.6});
    EXPECT_LT(weightOff(two), 1e-12);
    EXPECT_EQ(m_square.weightOff(two, 0, {}), 0);
    // How places on the screen lie does not matter without shadows.
    m_samples.landings[4].on.place += P3{1.0, 1.0, 1.0};
    EXPECT_LT(weightOff(two), 1e-12);
}

/// What a corner between two others is off from their middle: as a whole when it is that corner, by half when it is one
/// of the two.
TEST_F(RasterSquareTest, IsOffAsItsCornersAreFromTheMiddlesOfOthers) {
    loadTwo();
    const ChannelFields two = fields();
    for (const P2& away : {P2{3e-4, 0.0}, P2{0.0, -2e-4}, P2{2e-4, 3e-4}}) {
        const double distance = norm(P2{2.4 * away[0], 2.0 * away[1]});
        for (std::size_t i = 0; i < CORNERS; ++i) {
            placeSquare({0.85, 0.6});
            m_samples.reaches[1][i].picture += away;
            const bool isBetween = i % 2 == 1 || i == 4;
            const double off = expected(two, 0, isBetween ? distance : distance / 2);
            EXPECT_GT(off, 1e-5);
            EXPECT_NEAR(weightOff(two), off, 1e-9 * off) << i << ' ' << away;
        }
    }
}

/// Next to the edge of the other picture: where it has ended it has no share.
TEST_F(RasterSquareTest, CountsTheOtherOneWhereItsPictureReaches) {
    loadTwo();
    const ChannelFields two = fields();
    placeSquare({2.0 / 3, 0.6});
    m_samples.reaches[1][5].picture += P2{0.0, 1e-4};
    const double off = expected(two, 0, 2e-4);
    EXPECT_GT(off, 1e-7);
    EXPECT_NEAR(weightOff(two), off, 1e-9 * off);
    placeSquare({0.4, 0.6});
    m_samples.reaches[1][5].picture += P2{0.0, 1e-4};
    EXPECT_EQ(weightOff(two), 0) << "nowhere in the square";
}

/// The edges of shadows are measured on the screen: of either channel, where the places bend.
TEST_F(RasterSquareTest, IsOffByItsPlacesBesideAShadow) {
    loadShadow();
    const ChannelFields both = fields();
    ASSERT_TRUE(both.hasShadows(0));
    ASSERT_FALSE(both.hasShadows(1));
    for (const std::size_t own : {0U, 1U}) {
        for (const std::size_t i : {1U, 4U, 7U}) {
            placeSquare({0.5, 0.7}, own, {0.01, 0.0});
            EXPECT_LT(weightOff(both), 1e-12);
            m_samples.landings[i].on.place += P3{0.0, 3e-4, 4e-4};
            const double off = expected(both, own == 0 ? 5e-4 : 0, own == 0 ? 0 : 5e-4);
            EXPECT_GT(off, 1e-6);
            EXPECT_NEAR(weightOff(both), off, 1e-9 * off) << own << ' ' << i;
            // And the other one by its picture.
            m_samples.reaches[1 - own][i].picture += P2{1e-4, 0.0};
            const double aside = 1e-4 * both.pictureSize(1 - own)[0];
            const double together = expected(both, own == 0 ? 5e-4 : 0, own == 0 ? aside : aside + 5e-4);
            EXPECT_NEAR(weightOff(both), together, 1e-9 * together) << own << ' ' << i;
        }
    }
}

}  // namespace

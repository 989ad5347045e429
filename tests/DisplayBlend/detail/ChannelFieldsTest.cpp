#include "DisplayBlend/detail/ChannelFields.h"

#include "BlendDisplays.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using Veltrani::DisplayBlendDetail::ChannelFields;

class ChannelFieldsTest : public BlendDisplayTest {
protected:
    /// Of the display that is loaded.
    [[nodiscard]] ChannelFields fields(const std::vector<Point<int, 2>>& pixels) {
        m_lights =
            Veltrani::DisplayReport::DisplayLights::of(*m_config, ScreenManager::getInstance()->getScreenGeometry())
                .lights;
        return {m_lights, pixels};
    }
    [[nodiscard]] ChannelFields fields(std::size_t channels) {
        return fields(std::vector<Point<int, 2>>(channels, {1920, 1200}));
    }

    Veltrani::DisplayReport::ChannelLights m_lights;
};

/// Pictures of 2.4 by 2 and of 2 by 1 metres on a wall of 4 by 2.
TEST_F(ChannelFieldsTest, KnowsTheSizesOfPicturesAndTheirPixels) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.5, 1, 0.5, 1) + area("C", 0.5, 1, 0, 0.6));
    const ChannelFields all = fields({{960, 400}, {0, 1200}, {1920, 0}});
    ASSERT_EQ(all.size(), 3U);
    EXPECT_LT(norm(all.pictureSize(0) - P2{2.4, 2.0}), 1e-9);
    EXPECT_LT(norm(all.pictureSize(1) - P2{2.0, 1.0}), 1e-9);
    EXPECT_EQ(all.pixels(0), (Point<int, 2>{960, 400}));
    EXPECT_EQ(all.pixels(1), (Point<int, 2>{1920, 1200})) << "without a width";
    EXPECT_EQ(all.pixels(2), (Point<int, 2>{1920, 1200})) << "without a height";
    // 2.5 mm by 5 mm.
    EXPECT_NEAR(all.pixelSize(0), std::sqrt(0.0025 * 0.005), 1e-12);
    EXPECT_NEAR(all.pixelSize(1), std::sqrt(2.0 / 1920 / 1200), 1e-12);
    EXPECT_FALSE(all.hasShadows(0));
}

/// A quarter of the picture misses the screen: what lands states its size.
TEST_F(ChannelFieldsTest, KnowsTheSizeOfAPictureThatReachesBeyondTheScreen) {
    load(displays::FLAT, area("A", -0.25, 0.75, 0.5, 1.5));
    EXPECT_LT(norm(fields(1).pictureSize(0) - P2{4.0, 2.0}), 1e-9);
    load(displays::FLAT, area("A", 1.25, 1.75, 0.5, 1.5));
    EXPECT_EQ(fields(1).pictureSize(0), (P2{1.0, 1.0})) << "nothing lands";
}

/// One by the potential; what lies on no edge has the share of an edge four diagonals away.
TEST_F(ChannelFieldsTest, WeighsByThePotential) {
    load(displays::FLAT, area("A", 0, 0.6, 0, 1) + area("B", 0.4, 1, 0, 1));
    const ChannelFields two = fields(2);
    const double floor = 1 / (16 * (2.4 * 2.4 + 2 * 2));
    EXPECT_NEAR(two.shareOf(0, 0) * floor, 1, 1e-9);
    EXPECT_NEAR(two.shareOf(1, 3) * (3 + floor), 1, 1e-9);
    // On the left of A, an endless way from its inner edge on the right: as that has it in the picture, 2.4 m away.
    EXPECT_NEAR(two.potential(0, {0, 0.5}, {}), two.potential(1, {1, 0.5}, {}), 1e-9);
    EXPECT_NEAR(two.potential(0, {1 - 0.01 / 2.4, 0.5}, {}) * 1e-4, 1, 1e-3);
}

/// An inset weighs more, by so much that it has nine tenths of the light somewhere on its lattice and nowhere more.
TEST_F(ChannelFieldsTest, AnInsetHasNineTenthsOfTheLightSomewhere) {
    for (const bool isOverASeam : {false, true}) {
        const std::vector<std::pair<double, double>> wide =
            isOverASeam ? std::vector<std::pair<double, double>>{{0, 0.55}, {0.45, 1}}
                        : std::vector<std::pair<double, double>>{{0, 1}};
        std::string projectors = area("Inset", 0.38, 0.6, 0.3, 0.62);
        for (const auto& [left, right] : wide) {
            projectors += area("W" + std::to_string(left), left, right, 0, 1);
        }
        load(displays::FLAT, projectors);
        const ChannelFields all = fields(wide.size() + 1);
        double most = 0;
        for (int row = 0; row < 40; ++row) {
            for (int column = 0; column < 64; ++column) {
                const P2 picture{(column + 0.5) / 64, (row + 0.5) / 40};
                const double s = 0.38 + 0.22 * picture[0];
                const double t = 0.3 + 0.32 * picture[1];
                const double own = all.shareOf(0, all.potential(0, picture, {}));
                double sum = own;
                for (std::size_t i = 0; i < wide.size(); ++i) {
                    const auto& [left, right] = wide[i];
                    if (s >= left && s <= right) {
                        sum += all.shareOf(i + 1, all.potential(i + 1, {(s - left) / (right - left), t}, {}));
                    }
                }
                most = std::max(most, own / sum);
            }
        }
        EXPECT_NEAR(most, 0.9, 1e-9) << isOverASeam;
    }
}

/// Smoothly from nothing to a 64th.
TEST_F(ChannelFieldsTest, IsPresentFromASixtyFourthOn) {
    EXPECT_EQ(ChannelFields::presenceOf(0), 0);
    EXPECT_DOUBLE_EQ(ChannelFields::presenceOf(1.0 / 256), 0.25 * 1.75);
    EXPECT_DOUBLE_EQ(ChannelFields::presenceOf(1.0 / 128), 0.75);
    EXPECT_EQ(ChannelFields::presenceOf(1.0 / 64), 1);
    EXPECT_EQ(ChannelFields::presenceOf(0.5), 1);
    EXPECT_EQ(ChannelFields::presenceOf(1), 1);
}

TEST_F(ChannelFieldsTest, FindsWhereMostResidualLightComes) {
    load(displays::FLAT,
         area("A", 0, 0.5, 0, 1) + area("B", 0.3, 0.8, 0, 1) + area("C", 0.7, 1, 0, 0.5) + area("D", 0.8, 1, 0.5, 1));
    const ChannelFields four = fields(4);
    EXPECT_NEAR(four.mostResidual({0.01, 0.02, 0.005, 0}), 0.03, 1e-12);
    EXPECT_NEAR(four.mostResidual({0.01, 0.02, 0.04, 0}), 0.06, 1e-12);
    EXPECT_NEAR(four.mostResidual({0.01, 0.02, 0.04, 0.5}), 0.5, 1e-12) << "it overlaps none";
    EXPECT_EQ(four.mostResidual({0, 0, 0, 0}), 0);
}

}  // namespace

#include "KelvoScreen/detail/RayAim.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

TEST(RayAim, IsTheDifferenceOfTheTwoPoints) {
    const RayAim aim({1.0, 2.0, 3.0}, {4.0, 6.0, 3.0});
    EXPECT_TRUE(aim.isUsable());
    EXPECT_EQ(aim.direction, (Vector{3.0, 4.0, 0.0}));
    EXPECT_EQ(aim.length2, 25);
    EXPECT_EQ(aim.scale, 1);
}

TEST(RayAim, ScalesWhatIsExtremelyShortOrLong) {
    for (const double length : {1e-308, 1e-180, 1e180, 1e308}) {
        const RayAim aim({0.0, 0.0, 0.0}, {length, 0.0, -length});
        EXPECT_TRUE(aim.isUsable()) << length;
        EXPECT_EQ(aim.direction, (Vector{1.0, 0.0, -1.0}));
        EXPECT_EQ(aim.length2, 2);
        EXPECT_DOUBLE_EQ(aim.scale, 1 / length);
    }
}

TEST(RayAim, PutsTheStartAtZeroHoweverShortItIs) {
    for (const double length : {5e-324, 1e-310, 1.0, 1e308}) {
        EXPECT_EQ(RayAim({0.0, 0.0, 0.0}, {length, 0.0, 0.0}).positionOf(0), 0) << length;
    }
    EXPECT_EQ(RayAim({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}).positionOf(3), 3);
    EXPECT_EQ(RayAim({0.0, 0.0, 0.0}, {1e-310, 0.0, 0.0}).positionOf(3), std::numeric_limits<double>::infinity());
}

TEST(RayAim, IsNotUsableWithoutALengthOrWhenNotFinite) {
    EXPECT_FALSE(RayAim({1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}).isUsable());
    EXPECT_FALSE(RayAim({-1e308, 0.0, 0.0}, {1e308, 0.0, 0.0}).isUsable());
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        for (std::size_t i = 0; i < 3; ++i) {
            Vector to{1.0, 2.0, 3.0};
            to[i] = bad;
            EXPECT_FALSE(RayAim({0.0, 0.0, 0.0}, to).isUsable());
        }
    }
}

}  // namespace

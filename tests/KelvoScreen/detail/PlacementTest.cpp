#include "KelvoScreen/detail/Placement.h"

#include "KelvoScreen/RoundOracle.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

TEST(Placement, TurnsByTheThreeAnglesAndBack) {
    const Vector angles{0.4, -0.3, 0.2};
    const Placement placement({1.0, 2.0, 3.0}, angles);
    EXPECT_EQ(placement.centre(), (Vector{1.0, 2.0, 3.0}));
    const Vector own{3.0, -5.0, 7.0};
    const Vector world = placement.toWorld(own);
    EXPECT_LE(norm(oracle::exact(world) - oracle::turned(angles, oracle::exact(own))), 1e-14L);
    EXPECT_LE(norm(placement.toOwn(world) - own), 1e-14);
}

TEST(Placement, IsTheWorldFrameByDefault) {
    const Vector v{3.0, -5.0, 7.0};
    EXPECT_EQ(Placement().toOwn(v), v);
    EXPECT_EQ(Placement().toWorld(v), v);
    EXPECT_EQ(Placement().centre(), Vector{});
}

}  // namespace

#include "DisplayExport/RenderConvention.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>

namespace {

using Veltrani::DisplayExport::RenderConvention;
using Depth = RenderConvention::Depth;
using World = RenderConvention::World;
using Handed = RenderConvention::Handed;
using testing::ElementsAre;

TEST(RenderConvention, HasANameForEachOfItsParts) {
    EXPECT_THAT(RenderConvention::depthNames(), ElementsAre("opengl", "direct3d", "reversed-z"));
    EXPECT_THAT(RenderConvention::worldNames(), ElementsAre("z-up", "y-up"));
    EXPECT_THAT(RenderConvention::handedNames(), ElementsAre("right", "left"));
    for (const auto& [depth, name] :
         {std::pair(Depth::OPENGL, "opengl"), {Depth::DIRECT3D, "direct3d"}, {Depth::REVERSED_Z, "reversed-z"}}) {
        EXPECT_EQ(RenderConvention::nameOf(depth), name);
        EXPECT_EQ(RenderConvention::depthOf(name), depth);
    }
    for (const auto& [world, name] : {std::pair(World::Z_UP, "z-up"), {World::Y_UP, "y-up"}}) {
        EXPECT_EQ(RenderConvention::nameOf(world), name);
        EXPECT_EQ(RenderConvention::worldOf(name), world);
    }
    for (const auto& [handed, name] : {std::pair(Handed::RIGHT, "right"), {Handed::LEFT, "left"}}) {
        EXPECT_EQ(RenderConvention::nameOf(handed), name);
        EXPECT_EQ(RenderConvention::handedOf(name), handed);
    }
    EXPECT_FALSE(RenderConvention::depthOf("OpenGL"));
    EXPECT_FALSE(RenderConvention::worldOf("up"));
    EXPECT_FALSE(RenderConvention::handedOf(""));
}

/// Row by row, written by hand. A zero with a sign would be written as one.
TEST(RenderConvention, TurnsTheAxesOfTheDisplayIntoThoseOfTheEngine) {
    using Rows = std::array<double, 9>;
    for (const auto& [world, handed, rows] : {std::tuple(World::Z_UP, Handed::RIGHT, Rows{1, 0, 0, 0, 1, 0, 0, 0, 1}),
                                              {World::Z_UP, Handed::LEFT, Rows{0, 1, 0, 1, 0, 0, 0, 0, 1}},
                                              {World::Y_UP, Handed::RIGHT, Rows{1, 0, 0, 0, 0, 1, 0, -1, 0}},
                                              {World::Y_UP, Handed::LEFT, Rows{1, 0, 0, 0, 0, 1, 0, 1, 0}}}) {
        const auto matrix = RenderConvention{.world = world, .handed = handed}.engineFromWorld();
        for (std::size_t i = 0; i < 9; ++i) {
            EXPECT_EQ(matrix(i / 3, i % 3), rows[i]) << i;
            EXPECT_FALSE(rows[i] == 0 && std::signbit(matrix(i / 3, i % 3))) << i;
        }
    }
}

}  // namespace

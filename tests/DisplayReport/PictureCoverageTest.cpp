#include "DisplayReport/PictureCoverage.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;

class PictureCoverageTest : public LitDisplayTest {
protected:
    [[nodiscard]] PictureCoverage of(std::size_t channel) const { return PictureCoverage::of(lights(), channel); }
};

TEST_F(PictureCoverageTest, SharesWhatItsRectangleSharesWithAnother) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>") +
                             displays::projector("B", "<ScreenArea left='0.2' right='0.7' bottom='0.25' top='1'/>"));
    const PictureCoverage first = of(0);
    EXPECT_NEAR(first.landed, 1.0, 1e-12);
    ASSERT_EQ(first.sharedWith.size(), 2U);
    EXPECT_NEAR(first.sharedWith[0], 1.0, 1e-12);
    EXPECT_NEAR(first.sharedWith[1], 0.6 * 0.75, 1e-4 * 0.45);
    EXPECT_NEAR(of(1).sharedWith[0], 0.6, 1e-4 * 0.6);
    EXPECT_EQ(first.extent.size(), (P3{2, 0, 2}));
}

TEST_F(PictureCoverageTest, WhatLandsBesideTheScreenMisses) {
    // The wall of 4 x 2 stands 5 m away from the floor up to 2 m; the camera looks at its right part.
    load(displays::FLAT, camera("A", "-10", "40", "-20", "20", "<Position x='0.5' y='0' z='1'/>"),
         displays::PROJECTORS);
    const auto tangent = [](double degrees) { return std::tan(radians(degrees)); };
    const double across = (1.5 / 5 - tangent(-10)) / (tangent(40) - tangent(-10));
    const double upwards = (1.0 / 5 + 1.0 / 5) / (tangent(20) - tangent(-20));
    EXPECT_NEAR(of(0).landed, across * upwards, 2e-4 * across * upwards);
}

TEST_F(PictureCoverageTest, HolesOfAMapMiss) {
    m_folder.write("a.map",
                   "2\n4 3\n-1.5 -1 0 0 1\n-0.5 -1 0.3 0 1\n0.5 -1 0.6 0 1\n1.5 -1 0.9 0 1\n"
                   "-1.5 0 0 0.5 1\n-0.5 0 0.3 0.5 -1\n0.5 0 0.6 0.5 1\n1.5 0 0.9 0.5 1\n"
                   "-1.5 1 0 1 1\n-0.5 1 0.3 1 1\n0.5 1 0.6 1 1\n1.5 1 0.9 1 1\npixels 1920 1200\n");
    load(displays::FLAT, displays::projector("A", "<CustomPlanarMap file='a.map'/>"),
         "<TargetData type='CustomPlanar'/>");
    EXPECT_NEAR(of(0).landed, 1.0 / 3, 1e-4 / 3) << "four of six cells touch the node that is not used";
}

TEST_F(PictureCoverageTest, TellsEveryRow) {
    load(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    std::size_t rows = 0;
    static_cast<void>(PictureCoverage::of(lights(), 0, [&rows] { ++rows; }));
    EXPECT_EQ(rows, PictureCoverage::ROWS);
}

}  // namespace

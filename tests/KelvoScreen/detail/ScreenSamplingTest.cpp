#include "KelvoScreen/detail/ScreenSampling.h"

#include "Common/VeltraniException.h"

#include "KelvoScreen/SphericalScreen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using Vector = Point<double, 3>;
using Grid = ScreenGeometry::Grid;

/// Records what it is asked. A ray hits when its second point has y > 0; the normal is (0, z of the hit, 0), so that a
/// test chooses the side of each ray by the height that it is aimed at.
class RecordingScreen : public ScreenGeometry {
public:
    [[nodiscard]] bool isValid() const override { return true; }
    [[nodiscard]] IntersectionSet intersect(const Vector& /*from*/, const Vector& to) const override {
        return to[1] > 0 ? IntersectionSet{{to, 1.0}} : IntersectionSet{};
    }
    [[nodiscard]] Vector getScreenNormal(const Vector& point) const override { return {0.0, point[2], 0.0}; }
    bool mapInto3D(const Point<double, 2>& st, Vector& out, bool extrapolate) const override {
        asked.push_back(st);
        flags.push_back(extrapolate);
        out = {st[0], 0.0, st[1]};
        return std::abs(st[0]) <= reach;
    }
    [[nodiscard]] std::array<unsigned char, 20> getUniqueDataHash() const override { return {}; }
    void updateGeometry(const IScreenConfig* /*screen*/) override {}
    void sampleHorizontally(double /*y*/, double /*xMin*/, double /*xMax*/, int /*columns*/, int /*row*/,
                            Grid& /*grid*/, bool /*extrapolate*/) const override {}
    [[nodiscard]] IntersectionSet intersectExtrapolatedWithSpecifiedNormal(const Vector& /*from*/, const Vector& to,
                                                                           int sign) const override {
        signs.push_back(sign);
        return to[0] < 0 ? IntersectionSet{} : IntersectionSet{{{to[0], 0.0, 0.0}, 1.0}, {{-9.0, 0.0, 0.0}, 2.0}};
    }
    [[nodiscard]] std::vector<Vector> intersectChannelBoundary(const std::vector<Ray>& /*boundary*/,
                                                               const std::vector<Ray>& /*centre*/) const override {
        return {};
    }

    double reach = std::numeric_limits<double>::infinity();
    mutable std::vector<Point<double, 2>> asked;
    mutable std::vector<bool> flags;
    mutable std::vector<int> signs;
};

Ray front(double x = 0) {
    return {{0.0, 0.0, 0.0}, {x, 1.0, 1.0}};
}
Ray back(double x = 0) {
    return {{0.0, 0.0, 0.0}, {x, 1.0, -1.0}};
}
Ray across() {
    return {{0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
}
Ray miss(double x = 0) {
    return {{0.0, 0.0, 0.0}, {x, -1.0, 1.0}};
}

TEST(SampleRow, EvaluatesInTheGivenOrder) {
    const RecordingScreen screen;
    Grid grid;
    Veltrani::KelvoScreenDetail::sampleRow(screen, 0.25, 0.2, 1.0, 4, 7, grid, true);
    ASSERT_EQ(screen.asked.size(), 4U);
    EXPECT_EQ(screen.asked[3][0], 1.0000000000000002) << "not 1.0, as xMax or a look-alike formula would give";
    EXPECT_EQ(screen.asked[1][0], 0.46666666666666667);
    for (int i = 0; i < 4; ++i) {
        const double x = ((1.0 - 0.2) * i) / 3 + 0.2;
        EXPECT_EQ(screen.asked[static_cast<std::size_t>(i)], (Point<double, 2>{x, 0.25}));
        EXPECT_EQ((grid[{i, 7}]), (Vector{x, 0.0, 0.25}));
    }
    EXPECT_EQ(screen.flags, std::vector<bool>(4, true));
}

TEST(SampleRow, RunsBackwardsWhenTheRangeDoes) {
    const RecordingScreen screen;
    Grid grid;
    Veltrani::KelvoScreenDetail::sampleRow(screen, 0, 2, 0, 3, 0, grid, false);
    EXPECT_EQ(screen.asked, (std::vector<Point<double, 2>>{{2.0, 0.0}, {1.0, 0.0}, {0.0, 0.0}}));
}

TEST(SampleRow, ASingleColumnStandsAtTheStart) {
    const RecordingScreen screen;
    Grid grid;
    Veltrani::KelvoScreenDetail::sampleRow(screen, 0.5, 0.3, 0.9, 1, 2, grid, false);
    EXPECT_EQ(screen.asked, (std::vector<Point<double, 2>>{{0.3, 0.5}}));
    EXPECT_EQ(grid, (Grid{{{0, 2}, Vector{0.3, 0.0, 0.5}}}));
}

TEST(SampleRow, WithoutColumnsNothingIsAsked) {
    const RecordingScreen screen;
    Grid grid;
    Veltrani::KelvoScreenDetail::sampleRow(screen, 0, 0, 1, 0, 0, grid, false);
    Veltrani::KelvoScreenDetail::sampleRow(screen, 0, 0, 1, -3, 0, grid, false);
    EXPECT_TRUE(screen.asked.empty());
    EXPECT_TRUE(grid.empty());
}

TEST(SampleRow, KeepsWhatStandsWhereNothingMaps) {
    RecordingScreen screen;
    screen.reach = 0.5;
    Grid grid{{{1, 0}, Vector{9.0, 9.0, 9.0}}};
    Veltrani::KelvoScreenDetail::sampleRow(screen, 0, 0, 1, 2, 0, grid, false);
    EXPECT_EQ(grid, (Grid{{{0, 0}, Vector{}}, {{1, 0}, Vector{9.0, 9.0, 9.0}}}));
}

TEST(ChannelBoundary, TheMajorityOfTheCentreRaysDecides) {
    const RecordingScreen screen;
    (void)Veltrani::KelvoScreenDetail::channelBoundary(screen, {back(), back(), back()},
                                                       {front(), front(), back(), miss()});
    EXPECT_EQ(screen.signs, (std::vector<int>{1, 1, 1}));
}

TEST(ChannelBoundary, TiesAndGrazingRaysGiveTheBack) {
    const RecordingScreen tie;
    (void)Veltrani::KelvoScreenDetail::channelBoundary(tie, {front()}, {front(), back()});
    EXPECT_EQ(tie.signs, (std::vector<int>{-1}));
    const RecordingScreen grazing;
    (void)Veltrani::KelvoScreenDetail::channelBoundary(grazing, {front()}, {across(), across(), front()});
    EXPECT_EQ(grazing.signs, (std::vector<int>{-1}));
}

TEST(ChannelBoundary, WhenNoCentreRayHitsTheBoundaryRaysDecide) {
    const RecordingScreen screen;
    (void)Veltrani::KelvoScreenDetail::channelBoundary(screen, {front(), miss(), front(), back()}, {miss()});
    EXPECT_EQ(screen.signs, (std::vector<int>{1, 1, 1, 1}));
    const RecordingScreen noCentre;
    (void)Veltrani::KelvoScreenDetail::channelBoundary(noCentre, {front()}, {});
    EXPECT_EQ(noCentre.signs, (std::vector<int>{1}));
}

TEST(ChannelBoundary, WhenNothingHitsThereIsNoOutline) {
    const RecordingScreen screen;
    EXPECT_TRUE(Veltrani::KelvoScreenDetail::channelBoundary(screen, {miss(), miss()}, {miss()}).empty());
    EXPECT_TRUE(Veltrani::KelvoScreenDetail::channelBoundary(screen, {}, {}).empty());
    EXPECT_TRUE(screen.signs.empty()) << "no continuation is asked for";
}

TEST(ChannelBoundary, TakesTheFirstHitOfEachRayInOrderAndDropsTheRest) {
    const RecordingScreen screen;
    const std::vector<Vector> outline =
        Veltrani::KelvoScreenDetail::channelBoundary(screen, {front(3), front(-1), miss(1), back(2)}, {front()});
    EXPECT_EQ(outline, (std::vector<Vector>{{3.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {2.0, 0.0, 0.0}}));
}

TEST(SnapToEdge, MovesWhatIsABillionthOutsideOntoTheEdge) {
    EXPECT_EQ(Veltrani::KelvoScreenDetail::snapToEdge(-1e-9), 0);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::snapToEdge(1 + 1e-9), 1);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::snapToEdge(-1.001e-9), -1.001e-9);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::snapToEdge(1 + 1.001e-9), 1 + 1.001e-9);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::snapToEdge(1e-12), 1e-12) << "inside nothing moves";
    EXPECT_TRUE(std::isnan(Veltrani::KelvoScreenDetail::snapToEdge(std::numeric_limits<double>::quiet_NaN())));
}

TEST(IsWithinUnit, IncludesTheEdgesAndNoNaN) {
    EXPECT_TRUE(Veltrani::KelvoScreenDetail::isWithinUnit(0, 1));
    EXPECT_FALSE(Veltrani::KelvoScreenDetail::isWithinUnit(-1e-300, 0.5));
    EXPECT_FALSE(Veltrani::KelvoScreenDetail::isWithinUnit(0.5, 1.0000000000000002));
    EXPECT_FALSE(Veltrani::KelvoScreenDetail::isWithinUnit(std::numeric_limits<double>::quiet_NaN(), 0.5));
    EXPECT_FALSE(Veltrani::KelvoScreenDetail::isWithinUnit(0.5, std::numeric_limits<double>::quiet_NaN()));
}

TEST(StoreIfFinite, LeavesTheOutputAloneOtherwise) {
    Vector out{7.0, 8.0, 9.0};
    EXPECT_FALSE(Veltrani::KelvoScreenDetail::storeIfFinite({0.0, std::numeric_limits<double>::infinity(), 0.0}, out));
    EXPECT_EQ(out, (Vector{7.0, 8.0, 9.0}));
    EXPECT_TRUE(Veltrani::KelvoScreenDetail::storeIfFinite({1.0, 2.0, 3.0}, out));
    EXPECT_EQ(out, (Vector{1.0, 2.0, 3.0}));
}

TEST(KeepSide, KeepsTheHitsWithThatSideInTheirOrder) {
    // A sphere's normal points outward: the ray enters from side -1 and leaves from side +1.
    const SphericalScreen sphere(Vector{}, 1, -4 * std::atan(1.0), 4 * std::atan(1.0), -2 * std::atan(1.0),
                                 2 * std::atan(1.0));
    const IntersectionSet hits{{{0.0, -1.0, 0.0}, 1}, {{0.0, 1.0, 0.0}, 3}};
    const Vector direction{0.0, 2.0, 0.0};
    ASSERT_EQ(Veltrani::KelvoScreenDetail::keepSide(sphere, hits, direction, -1).size(), 1U);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::keepSide(sphere, hits, direction, -1).first().t, 1);
    ASSERT_EQ(Veltrani::KelvoScreenDetail::keepSide(sphere, hits, direction, 1).size(), 1U);
    EXPECT_EQ(Veltrani::KelvoScreenDetail::keepSide(sphere, hits, direction, 1).first().t, 3);
    EXPECT_TRUE(Veltrani::KelvoScreenDetail::keepSide(sphere, hits, direction, 0).empty());
    EXPECT_EQ(Veltrani::KelvoScreenDetail::keepSide(sphere, hits, {1.0, 0.0, 0.0}, 0).size(), 2U);
}

}  // namespace

#include "DisplayReport/coverage/LightCutter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// A plane on which a formula tells the light.
class Plane : public LitDomain {
public:
    using Light = std::function<unsigned long(const P2&)>;

    Plane(Light light, const LightSteps& steps) : m_light(std::move(light)), m_steps(steps) {}

    [[nodiscard]] LightSteps stepsIn(const LitTriangle&) const override { return m_steps; }
    [[nodiscard]] LitPoint between(const LitPoint& from, const LitPoint& to, double part,
                                   const LitBy& among) const override {
        LitPoint point = at(placeOf(from) + (placeOf(to) - placeOf(from)) * part);
        point.by &= among;
        return point;
    }
    [[nodiscard]] double distance(const LitPoint& a, const LitPoint& b) const override {
        return norm(a.on.place - b.on.place);
    }
    [[nodiscard]] LitPoint at(const P2& place) const {
        return {{{place[0], place[1], 0}, {}, false}, LitBy(m_light(place))};
    }

    /// Areas by light, of the unit square.
    [[nodiscard]] std::map<unsigned long, double> areas() const {
        std::map<unsigned long, double> areas;
        const LightCutter cutter(*this, [&](const LitTriangle& piece, const LitBy& by) {
            const P2 a = placeOf(piece[1]) - placeOf(piece[0]);
            const P2 b = placeOf(piece[2]) - placeOf(piece[0]);
            areas[by.to_ulong()] += std::abs(a[0] * b[1] - a[1] * b[0]) / 2;
        });
        cutter.cut({at({0, 0}), at({1, 0}), at({0, 1})});
        cutter.cut({at({1, 1}), at({0, 1}), at({1, 0})});
        return areas;
    }

private:
    static P2 placeOf(const LitPoint& point) { return {point.on.place[0], point.on.place[1]}; }

    Light m_light;
    LightSteps m_steps;
};

/// The area of a triangle where x + 0.3 y > 0.4321: its corners there, and where its edges cross that line.
double litArea(const std::array<P2, 3>& corners) {
    std::vector<P2> outline;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto beyond = [](const P2& p) { return p[0] + 0.3 * p[1] - 0.4321; };
        const P2& from = corners[i];
        const P2& to = corners[(i + 1) % 3];
        if (beyond(from) > 0) {
            outline.push_back(from);
        }
        if ((beyond(from) > 0) != (beyond(to) > 0)) {
            outline.push_back(from + (to - from) * (beyond(from) / (beyond(from) - beyond(to))));
        }
    }
    double twice = 0;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const P2& next = outline[(i + 1) % outline.size()];
        twice += outline[i][0] * next[1] - outline[i][1] * next[0];
    }
    return std::abs(twice) / 2;
}

constexpr LightSteps USUAL{1.0 / 32, 1.0 / 128};

TEST(LightCutter, LightAllOverIsTakenAllOver) {
    const auto areas = Plane([](const P2&) { return 1UL; }, USUAL).areas();
    EXPECT_EQ(areas.size(), 1U);
    EXPECT_NEAR(areas.at(1), 1.0, 1e-14);
}

TEST(LightCutter, StraightBordersAreExactWhateverTheirSlope) {
    for (const double slope : {0.0, 0.1234, 1.0, -0.77, 40.0}) {
        const auto light = [slope](const P2& p) { return p[1] - 0.437 < slope * (p[0] - 0.5) ? 1UL : 0UL; };
        // The area below a line through (0.5, 0.437), by a fine sum of columns.
        double expected = 0;
        constexpr int COLUMNS = 200000;
        for (int i = 0; i < COLUMNS; ++i) {
            expected += std::min(1.0, std::max(0.0, 0.437 + slope * ((i + 0.5) / COLUMNS - 0.5))) / COLUMNS;
        }
        EXPECT_NEAR(Plane(light, USUAL).areas()[1], expected, 2e-5) << slope;
    }
}

TEST(LightCutter, ADiscIsRightToSecondOrder) {
    const auto light = [](const P2& p) { return norm(p - P2{0.47, 0.51}) < 0.3 ? 1UL : 0UL; };
    // A hundred and more steps across, as a picture has. Where a border bulges into a triangle between its corners less
    // is seen: a few millionths of the disc in all.
    auto areas = Plane(light, {0.6 / 128, 0.6 / 256}).areas();
    EXPECT_NEAR(areas[1], std::numbers::pi * 0.09, 2e-5);
    EXPECT_NEAR(areas[0] + areas[1], 1.0, 1e-12) << "nothing is taken twice";
}

TEST(LightCutter, AStripThatIsThinnerThanEveryStepIsMeasuredBetweenTwoLights) {
    // 1 to the left, 2 to the right, and both in a strip of a thousandth.
    const auto light = [](const P2& p) { return (p[0] < 0.5123 ? 1UL : 0UL) | (p[0] > 0.5113 ? 2UL : 0UL); };
    auto areas = Plane(light, USUAL).areas();
    EXPECT_NEAR(areas[3], 0.001, 1e-6);
    EXPECT_NEAR(areas[1], 0.5113, 1e-6);
    EXPECT_NEAR(areas[2], 1 - 0.5123, 1e-6);
    EXPECT_LE(areas[0], 1e-9);
}

TEST(LightCutter, CornersAreRightToTheFineStep) {
    const auto light = [](const P2& p) {
        return (p[0] > 0.2 && p[0] < 0.6 && p[1] > 0.1 && p[1] < 0.7 ? 1UL : 0UL) |
               (p[0] > 0.4 && p[0] < 0.9 && p[1] > 0.5 && p[1] < 0.95 ? 2UL : 0UL);
    };
    auto areas = Plane(light, USUAL).areas();
    EXPECT_NEAR(areas[3], 0.04, 1e-4);
    EXPECT_NEAR(areas[1] + areas[3], 0.24, 1e-4);
    EXPECT_NEAR(areas[2] + areas[3], 0.225, 1e-4);
}

TEST(LightCutter, ASpotAsLargeAsTheCoarseStepIsSeenBetweenDarkCorners) {
    const auto light = [](const P2& p) { return norm(p - P2{0.37, 0.61}) < 0.03 ? 1UL : 0UL; };
    // Two steps across: seen, and measured to a tenth.
    EXPECT_NEAR(Plane(light, USUAL).areas()[1], std::numbers::pi * 0.0009, 3e-4);
}

TEST(LightCutter, ASliverFallsIntoPiecesAsItIsLong) {
    const auto light = [](const P2& p) { return p[0] + 0.3 * p[1] > 0.4321 ? 1UL : 0UL; };
    const double step = 1.0 / 128;
    // With an acute end, a right angle, an obtuse one, and along a diagonal.
    for (const auto& [a, b, c] : {std::array<P2, 3>{P2{0, 0}, {1, 0}, {1, 1e-3}},
                                  {P2{0, 0}, {1, 0}, {0, 1e-3}},
                                  {P2{0, 0}, {1, 0}, {0.3, 1e-4}},
                                  {P2{0, 0}, {1, 1}, {0.999, 1.001}},
                                  {P2{0, 0}, {1, 0}, {0.5, 0.1}}}) {
        const Plane plane(light, {step, step / 4});
        double lit = 0;
        double all = 0;
        int pieces = 0;
        const LightCutter cutter(plane, [&](const LitTriangle& piece, const LitBy& by) {
            const P3 area = cross(piece[1].on.place - piece[0].on.place, piece[2].on.place - piece[0].on.place);
            all += norm(area) / 2;
            lit += by.any() ? norm(area) / 2 : 0.0;
            ++pieces;
        });
        cutter.cut({plane.at(a), plane.at(b), plane.at(c)});
        const double whole = std::abs((b - a)[0] * (c - a)[1] - (b - a)[1] * (c - a)[0]) / 2;
        EXPECT_NEAR(all, whole, 1e-9 * whole);
        EXPECT_NEAR(lit, litArea({a, b, c}), 1e-4 * whole);
        const double length = norm(b - a);
        EXPECT_LT(pieces, 2.5 * length / step + 8 * whole / (step * step) + 40) << b[1] << ' ' << c[1];
        EXPECT_GT(pieces, length / step);
    }
}

TEST(LightCutter, OfATriangleWithoutAFiniteExtentNothingIsTaken) {
    for (const double odd : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const Plane plane([](const P2&) { return 0UL; }, USUAL);
        int taken = 0;
        const LightCutter cutter(plane, [&taken](const LitTriangle&, const LitBy&) { ++taken; });
        cutter.cut({plane.at({0, 0}), plane.at({odd, 0}), plane.at({0, 1})});
        EXPECT_EQ(taken, 0);
    }
}

}  // namespace

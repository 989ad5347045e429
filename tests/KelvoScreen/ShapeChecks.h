#pragma once

#include "KelvoScreen/RoundOracle.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

/// What holds for every shape that is built from the numbers of a description.
namespace shapes {

/// Expects the answers of a screen that is not valid.
inline void expectNothing(const ScreenGeometry& screen) {
    EXPECT_FALSE(screen.isValid());
    EXPECT_NE(screen.faultOfShape(), L"") << "why it is not valid";
    for (const Point<double, 3>& to : {Point<double, 3>{0.0, 1.0, 0.0}, {1.0, -2.0, 3.0}, {0.0, 0.0, -1.0}}) {
        EXPECT_TRUE(screen.intersect({0.1, 0.2, 0.3}, to).empty());
        EXPECT_TRUE(screen.intersectExtrapolatedWithSpecifiedNormal({0.1, 0.2, 0.3}, to, 1).empty());
        EXPECT_EQ(screen.getScreenNormal(to), (Point<double, 3>{}));
    }
    Point<double, 3> out{7.0, 8.0, 9.0};
    EXPECT_FALSE(screen.mapInto3D({0.5, 0.5}, out, false));
    EXPECT_FALSE(screen.mapInto3D({0.5, 0.5}, out, true));
    EXPECT_EQ(out, (Point<double, 3>{7.0, 8.0, 9.0})) << "untouched";
    ScreenGeometry::Grid grid;
    screen.sampleHorizontally(0.5, 0, 1, 3, 0, grid, true);
    EXPECT_TRUE(grid.empty());
    EXPECT_NE(screen.getUniqueDataHash(), (std::array<unsigned char, 20>{}));
}

/// Expects a good description to make a valid screen, and each fault alone one that is not.
template <class Screen>
void expectNotValid(const ScreenConfigDouble& good,
                    const std::vector<std::function<void(ScreenConfigDouble&)>>& faults) {
    EXPECT_TRUE(Screen(&good).isValid());
    EXPECT_EQ(Screen(&good).faultOfShape(), L"");
    for (std::size_t i = 0; i < faults.size(); ++i) {
        SCOPED_TRACE("fault " + std::to_string(i));
        ScreenConfigDouble config = good;
        faults[i](config);
        expectNothing(Screen(&config));
    }
}

using Number = std::function<double&(ScreenConfigDouble&)>;

inline Number number(double ScreenConfigDouble::*member) {
    return [member](ScreenConfigDouble& config) -> double& { return config.*member; };
}

inline Number number(Point<double, 3> ScreenConfigDouble::*member, std::size_t component) {
    return [member, component](ScreenConfigDouble& config) -> double& { return (config.*member)[component]; };
}

/// The nine numbers that every round shape has: where it stands, its radius and its azimuths.
inline std::vector<Number> roundNumbers() {
    std::vector<Number> numbers{number(&ScreenConfigDouble::radius), number(&ScreenConfigDouble::azimuthMin),
                                number(&ScreenConfigDouble::azimuthMax)};
    for (std::size_t i = 0; i < 3; ++i) {
        numbers.push_back(number(&ScreenConfigDouble::centre, i));
        numbers.push_back(number(&ScreenConfigDouble::orientation, i));
    }
    return numbers;
}

/// Expects the last bit of every number to change the hash, and equal descriptions to have equal ones.
template <class Screen>
void expectHashFollows(const ScreenConfigDouble& config, const std::vector<Number>& numbers) {
    std::vector<std::array<unsigned char, 20>> seen{Screen::calcUniqueDataHash(&config)};
    EXPECT_EQ(Screen(&config).getUniqueDataHash(), seen.front());
    const ScreenConfigDouble equal = config;
    EXPECT_EQ(Screen::calcUniqueDataHash(&equal), seen.front());
    for (const Number& number : numbers) {
        ScreenConfigDouble changed = config;
        number(changed) = std::nextafter(number(changed), std::numeric_limits<double>::infinity());
        const auto hash = Screen::calcUniqueDataHash(&changed);
        EXPECT_EQ(std::count(seen.begin(), seen.end(), hash), 0) << "number " << seen.size() - 1;
        EXPECT_EQ(Screen(&changed).getUniqueDataHash(), hash);
        seen.push_back(hash);
    }
}

/// Expects a screen to take a change from a description of its own shape, and from no other.
template <class Screen>
void expectUpdates(ScreenConfigDouble config, const std::wstring& otherShape,
                   const std::function<void(ScreenConfigDouble&)>& change) {
    const std::wstring ownShape = config.shape;
    Screen screen(&config);
    const auto before = screen.getUniqueDataHash();
    screen.updateGeometry(nullptr);
    EXPECT_EQ(screen.getUniqueDataHash(), before);
    change(config);
    config.shape = otherShape;
    screen.updateGeometry(&config);
    EXPECT_EQ(screen.getUniqueDataHash(), before) << "another shape";
    config.shape = ownShape;
    screen.updateGeometry(&config);
    EXPECT_EQ(screen.getUniqueDataHash(), Screen::calcUniqueDataHash(&config));
    Point<double, 3> updated;
    Point<double, 3> fresh;
    ASSERT_TRUE(screen.mapInto3D({1.0, 0.5}, updated, false));
    ASSERT_TRUE(Screen(&config).mapInto3D({1.0, 0.5}, fresh, false));
    EXPECT_EQ(updated, fresh);
}

/// Expects a row that ends outside to hold what `mapInto3D` answers for its columns, and to leave the rest alone.
template <class Screen>
void expectRow(const ScreenConfigDouble& config) {
    using Vector = Point<double, 3>;
    const Screen screen(&config);
    const Vector old{9.0, 9.0, 9.0};
    ScreenGeometry::Grid grid{{{1, 4}, old}, {{0, 3}, old}};
    screen.sampleHorizontally(0.25, 0.5, 1.5, 3, 4, grid, false);
    ASSERT_EQ(grid.size(), 3U);
    Vector expected;
    ASSERT_TRUE(screen.mapInto3D({0.5, 0.25}, expected, false));
    EXPECT_EQ((grid[{0, 4}]), expected);
    ASSERT_TRUE(screen.mapInto3D({1.0, 0.25}, expected, false));
    EXPECT_EQ((grid[{1, 4}]), expected) << "overwritten";
    EXPECT_EQ((grid[{0, 3}]), old);
    // ((1.0 - 0.2) * 3) / 3 + 0.2 is one last bit above 1: still the edge.
    ScreenGeometry::Grid full;
    screen.sampleHorizontally(1.0, 0.2, 1.0, 4, 0, full, false);
    EXPECT_EQ(full.size(), 4U);
}

/// Expects every (s, t), edges and the tolerance beyond them included, to map to where the formula says.
template <class Screen>
void expectMapping(const ScreenConfigDouble& config) {
    const Screen screen(&config);
    const oracle::RoundOracle truth(config);
    for (const double s : {0.0, 0.1, 0.5, 0.9, 1.0}) {
        for (const double t : {0.0, 0.2, 0.5, 0.7, 1.0}) {
            Point<double, 3> out;
            ASSERT_TRUE(screen.mapInto3D({s, t}, out, false));
            EXPECT_LE(norm(oracle::exact(out) - truth.mapped(s, t)), 1e-14L) << s << ' ' << t;
        }
    }
    Point<double, 3> corner;
    Point<double, 3> beside;
    ASSERT_TRUE(screen.mapInto3D({1.0, 0.0}, corner, false));
    ASSERT_TRUE(screen.mapInto3D({1 + 1e-9, -1e-9}, beside, false));
    EXPECT_EQ(beside, corner);
    const Point<double, 3> before = corner;
    EXPECT_FALSE(screen.mapInto3D({1 + 2e-9, 0.5}, corner, false));
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(screen.mapInto3D({bad, 0.5}, corner, true));
        EXPECT_FALSE(screen.mapInto3D({0.5, bad}, corner, true));
    }
    EXPECT_EQ(corner, before) << "untouched";
}

}  // namespace shapes

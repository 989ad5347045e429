#include "DisplayReport/coverage/PeakSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using Veltrani::DisplayReport::PeakSearch;
using Veltrani::DisplayReport::PixelWindow;

constexpr int WIDTH = 1280;
constexpr int HEIGHT = 800;
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

/// A search on the lattice that pictures are searched on.
PeakSearch searchOf(const PeakSearch::Function& function) {
    return {function, PeakSearch::spread(0, WIDTH - 1, 33), PeakSearch::spread(0, HEIGHT - 1, 21)};
}

/// Every pixel.
double greatestOf(const PeakSearch::Function& function) {
    double greatest = -std::numeric_limits<double>::infinity();
    for (int row = 0; row < HEIGHT; ++row) {
        for (int column = 0; column < WIDTH; ++column) {
            greatest = std::fmax(greatest, function(column, row));
        }
    }
    return greatest;
}

/// The greatest value is found as well as is promised, by looking at a hundredth of the pixels at most.
void expectFound(const PeakSearch::Function& function, const std::string& what) {
    int looks = 0;
    const double found = searchOf([&](int column, int row) {
                             ++looks;
                             return function(column, row);
                         }).greatest();
    const double expected = greatestOf(function);
    EXPECT_LE(found, expected) << what;
    EXPECT_GE(found, expected - PeakSearch::TOLERANCE) << what;
    EXPECT_LT(looks, WIDTH * HEIGHT / 100) << what;
}

TEST(PeakSearch, FindsAPeakBetweenThePointsOfItsLattice) {
    for (const double x : {20.0, 333.3, 641.0, 1270.0}) {
        for (const double y : {3.0, 421.7, 780.0}) {
            expectFound(
                [=](int column, int row) {
                    return -1e-5 * (std::pow(column - x, 2) + 0.3 * (column - x) * (row - y) + std::pow(row - y, 2));
                },
                "round peak at " + std::to_string(x) + ", " + std::to_string(y));
            expectFound([=](int column, int row) { return -2e-3 * std::abs(column - x) - 1e-3 * std::abs(row - y); },
                        "pointed peak at " + std::to_string(x) + ", " + std::to_string(y));
        }
    }
}

TEST(PeakSearch, FindsWhatStandsOnABorder) {
    for (const double slope : {0.0, 0.37, -1.9}) {
        // Rising towards a straight border, and a little along it.
        expectFound(
            [=](int column, int row) {
                const double beyond = row - 431.0 - slope * (column - 600.0);
                return beyond > 0 ? NONE : 1e-3 * beyond + 2e-5 * column;
            },
            "border of slope " + std::to_string(slope));
    }
    expectFound(
        [](int column, int row) {
            const double away = std::hypot(column - 500.0, row - 390.0);
            return away > 301.3 ? NONE : 1e-3 * away + 1e-4 * row;
        },
        "rim of a disc");
}

TEST(PeakSearch, FindsTheHigherSideOfAStep) {
    for (const double sign : {1.0, -1.0}) {
        expectFound(
            [=](int column, int row) {
                const double beyond = column - 617.0 - 0.21 * row;
                return (beyond > 0 ? sign * 0.02 : 0.0) - 1e-4 * std::abs(beyond) + 1e-5 * row;
            },
            "step of " + std::to_string(sign));
    }
}

TEST(PeakSearch, FindsThePointOfAWedge) {
    // Of ten degrees: no point of the lattice is near its end.
    for (const double slope : {0.0, 0.3, -0.8}) {
        expectFound(
            [=](int column, int row) {
                const double ahead = 1003.0 - column;
                return ahead < 0 || std::abs(row - 411.0 + slope * ahead) > 0.09 * ahead ? NONE : -1e-4 * ahead;
            },
            "wedge of slope " + std::to_string(slope));
    }
}

TEST(PeakSearch, FindsASpotWhereItIsOffered) {
    const auto spot = [](int column, int row) {
        return std::abs(column - 777) > 2 || std::abs(row - 333) > 3 ? NONE : 1.0 + column - 0.1 * row;
    };
    PeakSearch search = searchOf(spot);
    EXPECT_EQ(search.greatest(), -std::numeric_limits<double>::infinity());
    search.offer({760, 794, 320, 346});
    EXPECT_EQ(search.greatest(), greatestOf(spot));
    PeakSearch other = searchOf(spot);
    other.scan({770, 779, -20, 332});
    EXPECT_EQ(other.greatest(), greatestOf(spot));
}

TEST(PeakSearch, AFlatFunctionIsNotSearched) {
    for (const double slope : {0.0, 1e-3}) {
        int looks = 0;
        PeakSearch search = searchOf([&](int column, int row) {
            ++looks;
            return slope * (column + row);
        });
        EXPECT_EQ(search.greatest(), slope * (WIDTH + HEIGHT - 2));
        EXPECT_EQ(looks, 33 * 21);
    }
}

TEST(PeakSearch, AFunctionWithoutValuesHasNone) {
    EXPECT_EQ(searchOf([](int, int) { return NONE; }).greatest(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(PeakSearch([](int, int) { return 1.0; }, {}, {}).greatest(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(PeakSearch([](int, int) { return 1.0; }, {7}, {3}).greatest(), 1);
}

TEST(PeakSearch, AJaggedFunctionEndsToo) {
    std::uint64_t looks = 0;
    PeakSearch search = searchOf([&](int column, int row) {
        ++looks;
        return static_cast<double>(
                   (static_cast<std::uint64_t>(column) * 7919 + static_cast<unsigned int>(row) * 104729U) % 1000) /
               1000;
    });
    EXPECT_GT(search.greatest(), 0.99);
    EXPECT_LT(looks, 3000U);
}

TEST(PeakSearch, SpreadsNumbersWithBothEnds) {
    EXPECT_EQ(PeakSearch::spread(3, 3, 5), (std::vector<int>{3}));
    EXPECT_EQ(PeakSearch::spread(3, 5, 5), (std::vector<int>{3, 4, 5}));
    EXPECT_EQ(PeakSearch::spread(0, 100, 3), (std::vector<int>{0, 50, 100}));
    EXPECT_EQ(PeakSearch::spread(0, 2147483646, 3), (std::vector<int>{0, 1073741823, 2147483646}));
    EXPECT_TRUE(PeakSearch::spread(5, 3, 5).empty());
}

}  // namespace

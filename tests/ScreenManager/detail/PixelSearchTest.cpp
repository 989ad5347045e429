#include "ScreenManager/detail/PixelSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

using Veltrani::ScreenManagerDetail::PixelSearch;

namespace {

/// The squared distance of a pixel to a place on a picture of a tenth of the accepted distance.
auto distanceTo(double x, double y) {
    return [x, y](int column, int row) {
        constexpr double STEP = 0.00005;
        return STEP * STEP * ((column - x) * (column - x) + (row - y) * (row - y));
    };
}

/// Ever nearer to a pixel, but never near enough; keeps the pixels.
class NeverNear {
public:
    NeverNear(int x, int y) : m_x(x), m_y(y) {}
    double operator()(int x, int y) const {
        ++asked;
        leastX = std::min(leastX, x);
        mostX = std::max(mostX, x);
        leastY = std::min(leastY, y);
        mostY = std::max(mostY, y);
        return 1.0 + std::hypot(x - m_x, y - m_y);
    }

    mutable int asked = 0;
    mutable int leastX = std::numeric_limits<int>::max();
    mutable int mostX = -1;
    mutable int leastY = std::numeric_limits<int>::max();
    mutable int mostY = -1;

private:
    int m_x;
    int m_y;
};

TEST(PixelSearch, TheFirstSampleThatIsNearEnoughIsTaken) {
    const auto found = PixelSearch(1920, 1200).nearest(distanceTo(480.0, 303.0));
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->x, 480);
    EXPECT_EQ(found->y, 300) << "three pixels off, but near enough";
}

TEST(PixelSearch, NeverLeavesTheGrid) {
    for (int width = 1; width < 60; width += 7) {
        for (int height = 1; height < 60; height += 9) {
            for (const auto& [x, y] : {std::pair(0, 0), {width, height}, {width / 2, height}, {0, height / 3}}) {
                const NeverNear score(x, y);
                EXPECT_FALSE(PixelSearch(width, height).nearest(score).has_value());
                EXPECT_GT(score.asked, 0);
                EXPECT_GE(score.leastX, 0);
                EXPECT_LE(score.mostX, width);
                EXPECT_GE(score.leastY, 0);
                EXPECT_LE(score.mostY, height);
            }
        }
    }
}

TEST(PixelSearch, AsksAFewHundredTimesForAPictureOfAMillionPixels) {
    const NeverNear score(700, 300);
    EXPECT_FALSE(PixelSearch(1024, 1024).nearest(score).has_value());
    EXPECT_EQ(score.asked, 7 * 25 + 8 * 8);
}

TEST(PixelSearch, EverythingButTheFarEdgesIsSearchedWherePixelsAreFew) {
    const NeverNear score(3, 3);
    EXPECT_FALSE(PixelSearch(9, 30).nearest(score).has_value());
    EXPECT_EQ(score.asked, 9 * 30);
    EXPECT_EQ(score.mostX, 8);
    EXPECT_EQ(score.mostY, 29);
}

TEST(PixelSearch, EveryPixelThatIsScoredWasAnnouncedItselfOrItsNeighbour) {
    for (const auto& size : {std::pair(107, 61), {9, 30}, {30, 9}, {64, 48}, {1, 1}}) {
        const int width = size.first;
        const int height = size.second;
        std::set<std::pair<int, int>> announced;
        int surprises = 0;
        const NeverNear distance(width / 3, height / 2);
        const auto score = [&](int x, int y) {
            surprises += announced.count({x, y}) + announced.count({x - 1, y}) > 0 ? 0 : 1;
            return distance(x, y);
        };
        const auto announce = [&](int x, int y) {
            EXPECT_TRUE(0 <= x && x <= width && 0 <= y && y <= height);
            announced.emplace(x, y);
        };
        EXPECT_FALSE(PixelSearch(width, height).nearest(score, announce).has_value());
        EXPECT_EQ(surprises, 0) << width << " x " << height;
        EXPECT_GT(distance.asked, 0);
    }
}

TEST(PixelSearch, WithoutAnyScoreTheSearchEndsWithTheFirstPass) {
    for (const double none : {std::numeric_limits<double>::max(), std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()}) {
        int asked = 0;
        const auto score = [&](int, int) {
            ++asked;
            return none;
        };
        EXPECT_FALSE(PixelSearch(64, 48).nearest(score).has_value());
        EXPECT_EQ(asked, 25);
        EXPECT_FALSE(PixelSearch(3, 3).nearest(score).has_value());
        EXPECT_EQ(asked, 25 + 9);
    }
}

TEST(PixelSearch, SizesOfZeroAndLessHaveNoPixels) {
    const int least = std::numeric_limits<int>::min();
    for (const auto& [width, height] :
         {std::pair(0, 0), {0, 100}, {100, 0}, {-1, 100}, {100, -1}, {least, least}, {-100, -100}}) {
        const NeverNear score(0, 0);
        EXPECT_FALSE(PixelSearch(width, height).nearest(score).has_value());
        EXPECT_EQ(score.asked, 0) << width << " x " << height;
    }
}

TEST(PixelSearch, TheLargestSizesDoNotOverflow) {
    const int largest = std::numeric_limits<int>::max();
    for (const int target : {0, largest / 3, largest}) {
        const auto found = PixelSearch(largest, largest).nearest(distanceTo(target, target));
        ASSERT_TRUE(found.has_value()) << target;
        EXPECT_LE(std::hypot(found->x - double(target), found->y - double(target)), 10.0);
    }
}

/// Where distance grows evenly in every direction, the search finds what looking at every pixel finds.
TEST(PixelSearch, AgreesWithLookingAtEveryPixelOnASmoothPicture) {
    constexpr int WIDTH = 47;
    constexpr int HEIGHT = 38;
    int lost = 0;
    for (int y = 0; y < HEIGHT; ++y) {
        for (int x = 0; x < WIDTH; ++x) {
            const auto score = [x, y](int column, int row) {
                return 1e-3 * ((column - x) * (column - x) + (row - y) * (row - y));
            };
            const auto found = PixelSearch(WIDTH, HEIGHT).nearest(score);
            lost += found.has_value() && found->x == x && found->y == y ? 0 : 1;
        }
    }
    EXPECT_EQ(lost, 0);
}

}  // namespace

#include "EyeMapFixture.h"
#include "MadeUpPicture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <set>
#include <sstream>

/// The search of the collimated map, compared with what a second program has written down: every layout point that is
/// asked for, in order.

namespace collimatedSearches {

bool smooth(double u, double v, Point<double, 3>& layout) {
    layout = {2 * u - 1, v, 0.25 * u * v};
    return true;
}

bool folded(double u, double v, Point<double, 3>& layout) {
    layout = {std::abs(2 * u - 1), v, 0.0};
    return true;
}

bool holed(double u, double v, Point<double, 3>& layout) {
    return (0.3 < u && u < 0.6 && v > 0.4) ? false : smooth(u, v, layout);
}

bool missed(double, double, Point<double, 3>&) {
    return false;
}

bool stepped(double u, double v, Point<double, 3>& layout) {
    layout = {std::floor(8 * u) / 8, std::floor(8 * v) / 8, 0.0};
    return true;
}

bool distant(double u, double, Point<double, 3>& layout) {
    layout = {1e200 * (u + 1), 1e200, 0.0};
    return true;
}

bool small(double u, double v, Point<double, 3>& layout) {
    layout = {0.004 * u, 0.004 * v, 0.0};
    return true;
}

}  // namespace collimatedSearches

namespace {

using namespace collimatedSearches;
using Pixels = std::vector<Point<int, 2>>;
using Vector = Point<double, 3>;

constexpr std::size_t SAMPLES = 25;

/// As a second program writes them.
std::string textOf(const Pixels& pixels) {
    std::string text;
    for (const Point<int, 2>& pixel : pixels) {
        text += (text.empty() ? "" : " ") + MadeUpPicture::text(pixel);
    }
    return text;
}

/// "x0-x1xy0-y1" of two corners; the second one counts.
std::string windowOf(const Point<int, 2>& first, const Point<int, 2>& last) {
    std::ostringstream text;
    text << first[0] << "-" << last[0] << "x" << first[1] << "-" << last[1];
    return text.str();
}

/// The windows that a search without a cache went through, told by what it asked for. What is searched pixel by pixel
/// at the end goes up to, not including, its far edges.
std::string windowsOf(const Pixels& asked, const Search& search) {
    std::string text;
    std::size_t begin = 0;
    const bool isSampled = search.width >= 10 && search.height >= 10;
    // Samples end with the far corner of their window; the pixels of the last window begin with another column.
    while (isSampled && begin + SAMPLES <= asked.size() && asked[begin + 1][1] == asked[begin][1]) {
        text += (text.empty() ? "" : " ") + windowOf(asked[begin], asked[begin + SAMPLES - 1]);
        begin += SAMPLES;
    }
    if (begin < asked.size()) {
        const Point<int, 2> last{asked.back()[0] + 1, asked.back()[1] + 1};
        text += (text.empty() ? "" : " ") + windowOf(asked[begin], last);
    }
    return text;
}

class CollimatedSearchTest : public EyeMapFixture {
protected:
    MadeUpPicture picture(int width, int height, Formula formula, bool isCached) {
        addToTable(pictureOf(width, height));
        return {&config, table, isCached, {width, height}, formula};
    }
};

TEST_F(CollimatedSearchTest, AsksForTheRecordedPixelsInOrder) {
    std::set<std::string> answers;
    for (const Search& search : SEARCHES) {
        SCOPED_TRACE(search.title);
        MadeUpPicture map = picture(search.width, search.height, search.formula, search.isCached);
        for (const Step& step : search.steps) {
            map.asked.clear();
            const std::string answer = map.search(step.wanted);
            EXPECT_EQ(answer, step.answer);
            EXPECT_EQ(textOf(map.asked), step.asked);
            EXPECT_TRUE(map.isAlwaysAskedForPixels);
            answers.insert(answer);
        }
    }
    EXPECT_GT(answers.size(), 10U);
    EXPECT_EQ(answers.count("none"), 1U);
}

TEST_F(CollimatedSearchTest, NarrowsTheRecordedWindows) {
    int compared = 0;
    for (const Search& search : SEARCHES) {
        MadeUpPicture map = picture(search.width, search.height, search.formula, false);
        for (const Step& step : search.steps) {
            map.asked.clear();
            static_cast<void>(map.search(step.wanted));
            if (!search.isCached && search.width > 0) {
                EXPECT_EQ(windowsOf(map.asked, search), step.windows) << search.title;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 20);
}

TEST_F(CollimatedSearchTest, LosesThePixelsThatAreListedAndNoOthers) {
    for (const Closure& closure : CLOSURES) {
        const std::string cache = closure.cache;
        SCOPED_TRACE(std::to_string(closure.width) + " x " + std::to_string(closure.height) + ", cache: " + cache);
        const auto make = [&] { return picture(closure.width, closure.height, closure.formula, cache != "none"); };
        MadeUpPicture map = make();
        std::string lost;
        int found = 0;
        for (int y = 0; y <= closure.height; ++y) {
            for (int x = 0; x <= closure.width; ++x) {
                Vector wanted;
                if (!map.show({x, y}, wanted)) {
                    continue;
                }
                if (cache == "new") {
                    map = make();
                }
                const std::string answer = map.search(wanted);
                const std::string pixel = MadeUpPicture::text({x, y});
                lost += answer != pixel ? (lost.empty() ? "" : " ") + pixel + ">" + answer : "";
                found += answer == pixel ? 1 : 0;
            }
        }
        EXPECT_EQ(lost, closure.lost);
        EXPECT_GT(found, closure.width * closure.height / 2);
    }
}

TEST_F(CollimatedSearchTest, TheDistanceThatIsAcceptedIsHalfAThousandth) {
    const double least = 0.0005;
    ASSERT_EQ(least * least, 2.5e-7);
    for (const auto& [size, isCached] : {std::pair(8, false), {8, true}, {16, false}, {16, true}}) {
        MadeUpPicture map = picture(size, size, smooth, isCached);
        Vector wanted;
        ASSERT_TRUE(map.show({0, 0}, wanted));
        EXPECT_EQ(map.search(wanted + Vector{0.0, 0.0, least}), "0,0");
        EXPECT_EQ(map.search(wanted + Vector{0.0, 0.0, std::nextafter(least, 1.0)}), "none");
    }
}

TEST_F(CollimatedSearchTest, OfEquallyNearPixelsTheFirstColumnAndInItTheFirstRowIsTaken) {
    MadeUpPicture map = picture(8, 8, stepped, false);
    // Nothing but the middle of the picture is at (0.5, 0.5).
    EXPECT_EQ(map.search({0.5, 0.5, 0.0}), "4,4");
    MadeUpPicture halves = picture(
        8, 8,
        [](double u, double v, Vector& layout) {
            layout = {std::floor(2 * u) + std::floor(2 * v), 0.0, 0.0};
            return true;
        },
        false);
    EXPECT_EQ(halves.search({1.0, 0.0, 0.0}), "0,4") << "columns come first";
    MadeUpPicture samples = picture(
        16, 16,
        [](double u, double v, Vector& layout) {
            layout = {std::floor(2 * u) + std::floor(2 * v), 0.0, 0.0};
            return true;
        },
        false);
    EXPECT_EQ(samples.search({1.0, 0.0, 0.0}), "8,0") << "of samples rows come first";
}

TEST_F(CollimatedSearchTest, AWarmCacheAsksForNothing) {
    MadeUpPicture map = picture(64, 48, smooth, true);
    Vector wanted;
    ASSERT_TRUE(map.show({20, 11}, wanted));
    EXPECT_EQ(map.search(wanted), "20,11");
    EXPECT_GT(map.asked.size(), 50U);
    map.asked.clear();
    EXPECT_EQ(map.search(wanted), "20,11");
    EXPECT_TRUE(map.asked.empty());
}

TEST_F(CollimatedSearchTest, CopiesShareTheCache) {
    MadeUpPicture first = picture(64, 48, smooth, true);
    Vector wanted;
    ASSERT_TRUE(first.show({20, 11}, wanted));
    MadeUpPicture second = first;
    MadeUpPicture third(&config, table, true, {64, 48}, smooth);
    third = first;
    EXPECT_EQ(second.search(wanted), "20,11");
    first.asked.clear();
    EXPECT_EQ(first.search(wanted), "20,11");
    EXPECT_EQ(third.search(wanted), "20,11");
    EXPECT_TRUE(first.asked.empty()) << "filled through its copy";
    EXPECT_TRUE(third.asked.empty());
    // The cache lives as long as one of them.
    auto original = std::make_unique<MadeUpPicture>(third);
    MadeUpPicture last = *original;
    original.reset();
    EXPECT_EQ(last.search(wanted), "20,11");
    EXPECT_TRUE(last.asked.empty());
}

/// How often a map asks for layout points in two searches, the second time and the first time.
std::pair<std::size_t, std::size_t> askedTwice(MadeUpPicture map, const Vector& wanted) {
    static_cast<void>(map.search(wanted));
    const std::size_t first = map.asked.size();
    static_cast<void>(map.search(wanted));
    return {first, map.asked.size() - first};
}

TEST_F(CollimatedSearchTest, APlaceIsEmptyWhenAllThreeOfItsComponentsAreTheLargestNumber) {
    constexpr double LARGEST = std::numeric_limits<double>::max();
    const auto all = [](double, double, Vector& layout) {
        layout = {LARGEST, LARGEST, LARGEST};
        return true;
    };
    const auto two = [](double, double, Vector& layout) {
        layout = {LARGEST, LARGEST, 0.0};
        return true;
    };
    EXPECT_EQ(askedTwice(picture(4, 3, all, true), {}), std::pair(std::size_t(12), std::size_t(12)));
    EXPECT_EQ(askedTwice(picture(4, 3, two, true), {}), std::pair(std::size_t(12), std::size_t(0)));
}

TEST_F(CollimatedSearchTest, WhatIsWrittenCountsWhateverTheAnswerIs) {
    const auto writeAndRefuse = [](double u, double v, Vector& layout) {
        static_cast<void>(smooth(u, v, layout));
        return false;
    };
    for (const bool isCached : {false, true}) {
        MadeUpPicture map = picture(64, 48, writeAndRefuse, isCached);
        Vector wanted;
        static_cast<void>(map.show({20, 11}, wanted));
        EXPECT_EQ(map.search(wanted), "20,11");
    }
    EXPECT_EQ(askedTwice(picture(4, 3, writeAndRefuse, true), {5.0, 5.0, 5.0}).second, 0U);
}

TEST_F(CollimatedSearchTest, WhatIsThrownPassesThroughAndLeavesThePlaceEmpty) {
    static int calls;
    calls = 0;
    MadeUpPicture map = picture(
        4, 3,
        [](double u, double v, Vector& layout) {
            if (calls++ == 5) {
                throw std::runtime_error("no");
            }
            return smooth(u, v, layout);
        },
        true);
    EXPECT_THROW(static_cast<void>(map.search({5.0, 5.0, 5.0})), std::runtime_error);
    EXPECT_EQ(map.search({5.0, 5.0, 5.0}), "none");
    EXPECT_EQ(map.asked.size(), 6U + 7U) << "the one that failed is asked for again";
}

}  // namespace

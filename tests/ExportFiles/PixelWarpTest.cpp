#include "ExportFiles/PixelWarp.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/DeepPngPicture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Veltrani::ExportFiles::PixelWarp;
using P2 = Point<double, 2>;

/// What stands in a file for the middle of one pixel.
using Numbers = std::array<float, 3>;

std::string pfm(const std::string& size, const std::vector<Numbers>& pixels) {
    std::string file = "PF\n" + size + "\n-1.0\n";
    for (const Numbers& numbers : pixels) {
        // Machines of the program have the least byte first, as the file.
        std::string bytes(sizeof numbers, '\0');
        std::memcpy(bytes.data(), numbers.data(), sizeof numbers);
        file += bytes;
    }
    return file;
}

std::unique_ptr<const PixelWarp> warpOf(const std::string& size, const std::vector<Numbers>& pixels) {
    return PixelWarp::ofPfm(pfm(size, pixels), "x.pfm", false);
}

std::string faultOf(const std::string& bytes) {
    try {
        static_cast<void>(PixelWarp::ofPfm(bytes, "x.pfm", false));
    } catch (const VeltraniParseException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "";
}

void expectShown(const PixelWarp& warp, const P2& place, const P2& content, const P2& alongU, const P2& alongV) {
    const auto shown = warp.shownAt(place);
    ASSERT_TRUE(shown) << place;
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(shown->content[i], content[i], 1e-6) << place;
        EXPECT_NEAR(shown->alongU[i], alongU[i], 1e-5) << place;
        EXPECT_NEAR(shown->alongV[i], alongV[i], 1e-5) << place;
    }
}

/// By the four corners of a cell of 3 x 2 pixels, rows from the bottom: within a cell content is bilinear.
TEST(PixelWarp, BetweenFourMiddlesContentIsBilinear) {
    const auto warp = warpOf("3 2", {{0.0F, 0.0F, 1},
                                     {0.25F, 0.125F, 1},
                                     {0.375F, 0.5F, 1},  //
                                     {0.5F, 0.75F, 1},
                                     {1.0F, 0.25F, 1},
                                     {0.875F, 1.0F, 1}});
    EXPECT_EQ(warp->pixels(), (Point<int, 2>{3, 2}));
    expectShown(*warp, {0.5 / 3, 0.25}, {0.0, 0.0}, {0.75, 0.375}, {1.0, 1.5});
    expectShown(*warp, {1.0 / 3, 0.5}, {0.4375, 0.28125}, {3 * 0.375, 3 * -0.1875}, {2 * 0.625, 2 * 0.4375});
    expectShown(*warp, {1.5 / 3, 0.75}, {1.0, 0.25}, {3 * -0.125, 3 * 0.75}, {2 * 0.75, 2 * 0.125});
    expectShown(*warp, {2.25 / 3, 0.25}, {0.34375, 0.40625}, {3 * 0.125, 3 * 0.375}, {2 * 0.5625, 2 * 0.40625});
    // Beyond the outermost middles the outermost cells go on.
    expectShown(*warp, {0.0, 0.25}, {-0.125, -0.0625}, {0.75, 0.375}, {2 * 0.375, 2 * 1.0625});
    expectShown(*warp, {1.0, 1.0}, {1.0, 1.71875}, {3 * -0.25, 3 * 0.9375}, {2 * 0.375, 2 * 0.6875});
}

TEST(PixelWarp, ALineOfPixelsAndASingleOneAreTheSameAllAcross) {
    expectShown(*warpOf("1 1", {{0.25F, 0.75F, 1}}), {0.9, 0.1}, {0.25, 0.75}, {0.0, 0.0}, {0.0, 0.0});
    const auto row = warpOf("2 1", {{0.25F, 0.5F, 1}, {0.75F, 0.0F, 1}});
    expectShown(*row, {0.5, 0.9}, {0.5, 0.25}, {1.0, -1.0}, {0.0, 0.0});
    const auto column = warpOf("1 2", {{0.25F, 0.5F, 1}, {0.75F, 0.0F, 1}});
    expectShown(*column, {0.9, 0.5}, {0.5, 0.25}, {0.0, 0.0}, {1.0, -1.0});
}

TEST(PixelWarp, APixelWithoutContentOrWithAnInfiniteOneShowsNothing) {
    constexpr float NONE = std::numeric_limits<float>::quiet_NaN();
    constexpr float INFINITE = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(warpOf("1 1", {{0.5F, 0.5F, 0.5F}})->shownAt({0.5, 0.5}));
    for (const Numbers& numbers :
         {Numbers{0.5F, 0.5F, 0}, Numbers{0.5F, 0.5F, -1}, Numbers{0.5F, 0.5F, NONE}, Numbers{NONE, 0.5F, 1},
          Numbers{0.5F, NONE, 1}, Numbers{INFINITE, 0.5F, 1}, Numbers{0.5F, -INFINITE, 1}}) {
        EXPECT_FALSE(warpOf("1 1", {numbers})->shownAt({0.5, 0.5})) << numbers[0] << ' ' << numbers[1];
    }
}

TEST(PixelWarp, AHeadThatIsNoneIsRefused) {
    const std::vector<Numbers> twelve(12, {0.5F, 0.5F, 1});
    EXPECT_EQ(faultOf(pfm("4 3", twelve)), "");
    for (const char* const size : {"", "4", "4 ", "4  3", " 4 3", "4 3 ", "4 3x", "x 3", "4x 3", "4,3", "4 x", "0 3",
                                   "4 0", "-4 -3", "-4 3", "4 -3", "99999999999 3", "4 99999999999"}) {
        EXPECT_THAT(faultOf(pfm(size, twelve)),
                    StartsWith("x.pfm: found something else in line 2, expected width and height, at most "))
            << size;
    }
    const std::string good = pfm("4 3", twelve);
    EXPECT_THAT(faultOf(good + ' '), StartsWith("x.pfm: found 145 bytes of numbers, expected 144: "));
    EXPECT_THAT(faultOf(good.substr(0, good.size() - 1)), HasSubstr("found 143 bytes of numbers, expected 144: "));
    EXPECT_THAT(faultOf("PF"), HasSubstr("line 2"));
    EXPECT_THAT(faultOf(""), HasSubstr("line 1"));
}

std::string pngOf(std::size_t width, std::size_t height, const std::vector<std::uint16_t>& colours) {
    std::ostringstream out;
    Veltrani::DisplayReport::DeepPngPicture{width, height, colours}.write(out);
    return out.str();
}

/// Rows of the file go downwards.
TEST(PixelWarp, APngHasItsFirstRowAtTheTop) {
    const auto warp = PixelWarp::ofPng(pngOf(2, 3,
                                             {0, 65535, 65535, 13107, 0, 1,  //
                                              26214, 39321, 65535, 0, 0, 0,  //
                                              52428, 13107, 65535, 65535, 65535, 65535}),
                                       "x.png", false);
    EXPECT_EQ(warp->pixels(), (Point<int, 2>{2, 3}));
    // The right pixel in the middle shows nothing, and with it nothing beside it.
    EXPECT_FALSE(warp->shownAt({0.75, 0.5}));
    EXPECT_FALSE(warp->shownAt({0.25, 1.0 / 6}));
    const auto left =
        PixelWarp::ofPng(pngOf(1, 3, {0, 65535, 65535, 26214, 39321, 1, 52428, 13107, 65535}), "x.png", false);
    expectShown(*left, {0.5, 5.0 / 6}, {0.0, 1.0}, {0.0, 0.0}, {3 * -0.4, 3 * 0.4});
    expectShown(*left, {0.5, 0.5}, {0.4, 0.6}, {0.0, 0.0}, {3 * -0.4, 3 * 0.4});
    expectShown(*left, {0.5, 1.0 / 6}, {0.8, 0.2}, {0.0, 0.0}, {3 * -0.4, 3 * 0.4});
}

}  // namespace

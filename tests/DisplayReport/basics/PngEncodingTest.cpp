#include "DisplayReport/basics/PngEncoding.h"

#include "Common/VeltraniException.h"
#include "support/GreyPngImage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

template <class Code>
std::string encodedAs(const PngForm& form, const std::vector<Code>& codes) {
    std::ostringstream out;
    encodePng(form, codes.data(), out);
    return out.str();
}

TEST(PngEncoding, GreyOfEightAndSixteenBitsComesBackBitByBit) {
    const GreyPngImage coarse =
        GreyPngImage::read(encodedAs<std::uint8_t>({3, 2, PngForm::Parts::GREY, 8}, {0, 1, 127, 128, 254, 255}));
    EXPECT_EQ(coarse.bits, 8);
    EXPECT_EQ(coarse.width, 3U);
    EXPECT_EQ(coarse.height, 2U);
    EXPECT_THAT(coarse.grey, ElementsAre(0, 1, 127, 128, 254, 255));
    EXPECT_THAT(coarse.opacity, IsEmpty());
    const GreyPngImage fine =
        GreyPngImage::read(encodedAs<std::uint16_t>({2, 2, PngForm::Parts::GREY, 16}, {0x0102, 0xfffe, 0x8000, 255}));
    EXPECT_EQ(fine.bits, 16);
    EXPECT_THAT(fine.grey, ElementsAre(0x0102, 0xfffe, 0x8000, 255));
}

TEST(PngEncoding, AnOpacityStandsBesideEachGrey) {
    const GreyPngImage fine =
        GreyPngImage::read(encodedAs<std::uint16_t>({1, 2, PngForm::Parts::GREY_ALPHA, 16}, {0, 0x0102, 7, 0xfffe}));
    EXPECT_THAT(fine.grey, ElementsAre(0, 7));
    EXPECT_THAT(fine.opacity, ElementsAre(0x0102, 0xfffe));
    const GreyPngImage coarse =
        GreyPngImage::read(encodedAs<std::uint8_t>({2, 1, PngForm::Parts::GREY_ALPHA, 8}, {0, 200, 9, 31}));
    EXPECT_THAT(coarse.opacity, ElementsAre(200, 31));
}

TEST(PngEncoding, StatesNoGammaAndNoColourSpace) {
    const std::string file = encodedAs<std::uint8_t>({1, 1, PngForm::Parts::GREY, 8}, {5});
    for (const char* chunk : {"gAMA", "sRGB", "cHRM", "iCCP"}) {
        EXPECT_THAT(file, Not(HasSubstr(chunk)));
    }
}

TEST(PngEncoding, WithoutAPixelItIsRefused) {
    EXPECT_THROW(static_cast<void>(encodedAs<std::uint8_t>({0, 4, PngForm::Parts::GREY, 8}, {})), VeltraniException);
    EXPECT_THROW(static_cast<void>(encodedAs<std::uint8_t>({4, 0, PngForm::Parts::GREY, 8}, {})), VeltraniException);
}

}  // namespace

#include "DisplayReport/basics/DeepPngPicture.h"

#include "Common/VeltraniException.h"
#include "support/DeepPngImage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

std::string encoded(const DeepPngPicture& picture) {
    std::ostringstream out;
    picture.write(out);
    return out.str();
}

TEST(DeepPngPicture, ComesBackBitByBit) {
    // Both bytes of a number differ, so that an exchange of them would show.
    const DeepPngPicture picture{2, 2, {0x0102, 0xfffe, 1, 0x8000, 0, 0xffff, 258, 513, 1026, 40000, 50000, 60000}};
    const DeepPngImage image = DeepPngImage::read(encoded(picture));
    EXPECT_EQ(image.width, 2U);
    EXPECT_EQ(image.height, 2U);
    EXPECT_EQ(image.colours, picture.colours);
    EXPECT_THAT(image.at(1, 0), ElementsAre(0x8000, 0, 0xffff)) << "row by row from the top";
}

// A gamma or a colour space would be a reason for a reader to bend the numbers.
TEST(DeepPngPicture, StatesNoGammaAndNoColourSpace) {
    const std::string file = encoded({1, 1, {1, 2, 3}});
    for (const char* chunk : {"gAMA", "sRGB", "cHRM", "iCCP"}) {
        EXPECT_THAT(file, Not(HasSubstr(chunk)));
    }
}

TEST(DeepPngPicture, WithoutAPixelOrWithAnotherNumberOfColoursItIsRefused) {
    for (const DeepPngPicture& picture :
         {DeepPngPicture{}, DeepPngPicture{0, 4, {}}, DeepPngPicture{2, 1, {1, 2, 3}}}) {
        try {
            static_cast<void>(encoded(picture));
            ADD_FAILURE() << "it was written";
        } catch (const VeltraniException& fault) {
            EXPECT_EQ(fault.message, L"The picture cannot be encoded: it has no pixels");
        }
    }
}

TEST(DeepPngPicture, MoreColumnsThanAFileMayHaveAreRefused) {
    constexpr std::size_t COLUMNS = 1'000'001;
    const DeepPngPicture picture{COLUMNS, 1, std::vector<std::uint16_t>(3 * COLUMNS)};
    EXPECT_THROW(static_cast<void>(encoded(picture)), VeltraniException);
}

}  // namespace

#include "DisplayReport/basics/PngPicture.h"

#include "Common/VeltraniException.h"
#include "support/PngImage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

void expectRefused(const PngPicture& picture) {
    std::ostringstream out;
    try {
        picture.write(out);
        ADD_FAILURE() << "it was written";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"The picture cannot be encoded: it has no pixels");
    }
    EXPECT_EQ(out.str(), "");
}

TEST(PngPicture, APictureComesBackAsItWasWritten) {
    PngPicture picture{3, 2, {}};
    for (int i = 0; i < 18; ++i) {
        picture.colours.push_back(static_cast<unsigned char>(i * 14));
    }
    std::ostringstream out;
    picture.write(out);
    EXPECT_THAT(out.str(), StartsWith("\x89PNG\r\n\x1A\n"));
    const PngImage image = PngImage::read(out.str());
    EXPECT_EQ(image.width, 3U);
    EXPECT_EQ(image.height, 2U);
    EXPECT_EQ(image.bytes, picture.colours);
    EXPECT_EQ(image.at(1, 1), (PngImage::Colour{168, 182, 196})) << "row by row from the top";
}

TEST(PngPicture, StatesThatItsColoursAreSrgb) {
    std::ostringstream out;
    PngPicture{1, 1, {10, 20, 30}}.write(out);
    EXPECT_THAT(out.str(), HasSubstr(std::string("\0\0\0\1sRGB\0", 9)));
    EXPECT_THAT(out.str(), Not(HasSubstr("gAMA")));
}

TEST(PngPicture, OnePixelIsAPicture) {
    std::ostringstream out;
    PngPicture{1, 1, {10, 20, 30}}.write(out);
    EXPECT_EQ(PngImage::read(out.str()).at(0, 0), (PngImage::Colour{10, 20, 30}));
}

TEST(PngPicture, WithoutAPixelItIsRefused) {
    expectRefused({});
    expectRefused({0, 5, {}});
}

TEST(PngPicture, FewerOrMoreColoursThanPixelsAreRefused) {
    expectRefused({2, 2, {1, 2, 3}});
    expectRefused({1, 1, {1, 2, 3, 4}});
}

}  // namespace

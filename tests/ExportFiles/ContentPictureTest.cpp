#include "ExportFiles/ContentPicture.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/DeepPngPicture.h"
#include "DisplayReport/basics/PngPicture.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

namespace {

using namespace Veltrani::ExportFiles;
using testing::ElementsAre;
using testing::HasSubstr;

using Bytes = std::vector<unsigned char>;

std::string pngOf(std::size_t width, std::size_t height, const Bytes& colours) {
    std::ostringstream out;
    Veltrani::DisplayReport::PngPicture{width, height, colours}.write(out);
    return out.str();
}

/// Black, red; green, white: the upper row first.
ContentPicture fourPixels() {
    return ContentPicture::parse(pngOf(2, 2, {0, 0, 0, 255, 0, 0, 0, 255, 0, 255, 255, 255}), "four");
}

TEST(ContentPicture, ItsFirstRowIsTheUpperOne) {
    const ContentPicture picture = fourPixels();
    EXPECT_EQ(picture.width(), 2U);
    EXPECT_EQ(picture.height(), 2U);
    EXPECT_THAT(picture.at({0.25, 0.75}, false), ElementsAre(0, 0, 0));
    EXPECT_THAT(picture.at({0.75, 0.75}, false), ElementsAre(255, 0, 0));
    EXPECT_THAT(picture.at({0.25, 0.25}, false), ElementsAre(0, 255, 0));
    EXPECT_THAT(picture.at({0.75, 0.25}, false), ElementsAre(255, 255, 255));
}

TEST(ContentPicture, BetweenTheMiddlesOfPixelsItMixesThem) {
    const ContentPicture picture = fourPixels();
    EXPECT_THAT(picture.at({0.5, 0.75}, false), ElementsAre(128, 0, 0));
    EXPECT_THAT(picture.at({0.25, 0.5}, false), ElementsAre(0, 128, 0));
    EXPECT_THAT(picture.at({0.375, 0.75}, false), ElementsAre(64, 0, 0));
    EXPECT_THAT(picture.at({0.5, 0.5}, false), ElementsAre(128, 128, 64));
}

TEST(ContentPicture, OfFourInALineTwoAreMixed) {
    const Bytes line{0, 0, 0, 40, 0, 0, 120, 0, 0, 240, 0, 0};
    const ContentPicture row(4, 1, line);
    const ContentPicture column(1, 4, line);
    for (const auto& [along, red] :
         {std::pair{0.125, 0}, {0.25, 20}, {0.375, 40}, {0.5, 80}, {0.75, 180}, {1.0, 240}}) {
        EXPECT_THAT(row.at({along, 0.5}, false), ElementsAre(red, 0, 0)) << along;
        EXPECT_THAT(column.at({0.5, 1 - along}, false), ElementsAre(red, 0, 0)) << along;
    }
}

TEST(ContentPicture, OutsideItIsBlackAndItsEdgesAreAsTheirPixels) {
    const ContentPicture picture = fourPixels();
    EXPECT_THAT(picture.at({1, 0}, false), ElementsAre(255, 255, 255));
    EXPECT_THAT(picture.at({0, 0}, false), ElementsAre(0, 255, 0));
    for (const auto& place : {Point<double, 2>{-0.01, 0.25}, {1.01, 0.25}, {0.75, -0.01}, {0.75, 1.01}}) {
        EXPECT_THAT(picture.at(place, false), ElementsAre(0, 0, 0));
    }
}

TEST(ContentPicture, APanoramaGoesOnAtItsOtherEdge) {
    const ContentPicture picture = fourPixels();
    EXPECT_THAT(picture.at({1.25, 0.25}, true), ElementsAre(0, 255, 0));
    EXPECT_THAT(picture.at({-0.25, 0.25}, true), ElementsAre(255, 255, 255));
    EXPECT_THAT(picture.at({0, 0.25}, true), ElementsAre(128, 255, 128)) << "halfway between the last and the first";
    EXPECT_THAT(picture.at({1, 0.25}, true), ElementsAre(128, 255, 128));
    EXPECT_THAT(picture.at({0.25, 1.01}, true), ElementsAre(0, 0, 0)) << "but not over its poles";
}

TEST(ContentPicture, SixteenBitsAreRead) {
    std::ostringstream out;
    Veltrani::DisplayReport::DeepPngPicture{1, 1, {65535, 0, 65535}}.write(out);
    EXPECT_THAT(ContentPicture::parse(out.str(), "deep").at({0.5, 0.5}, false), ElementsAre(255, 0, 255));
}

void expectRefused(const std::string& bytes, const std::wstring& what, std::size_t most = 1000) {
    try {
        static_cast<void>(ContentPicture::parse(bytes, "a.png", most));
        ADD_FAILURE() << "it was read";
    } catch (const VeltraniParseException& fault) {
        EXPECT_THAT(fault.message, testing::StartsWith(L"a.png: "));
        EXPECT_THAT(fault.message, HasSubstr(what));
    }
}

TEST(ContentPicture, EveryBeginningOfAFileIsRefused) {
    const std::string file = pngOf(3, 2, Bytes(18, 77));
    // Without the last chunk, which holds nothing, the picture is whole.
    constexpr std::size_t END_CHUNK = 12;
    for (std::size_t size = 0; size < file.size() - END_CHUNK; ++size) {
        expectRefused(file.substr(0, size), L"name a whole PNG file");
    }
    expectRefused("P6 1 1 255\nabc", L"is no picture that can be shown");
}

TEST(ContentPicture, MorePixelsThanAllowedAreRefusedBeforeTheyAreRead) {
    expectRefused(pngOf(40, 30, Bytes(3600)), L"has 40 x 30 pixels: at most 1199 can be shown", 1199);
}

TEST(ContentPicture, HasThreePartsForEachOfItsPixels) {
    EXPECT_NO_THROW(ContentPicture(2, 1, Bytes(6)));
    EXPECT_THROW(ContentPicture(2, 1, Bytes(5)), VeltraniException);
    EXPECT_THROW(ContentPicture(2, 1, Bytes(7)), VeltraniException);
    EXPECT_THROW(ContentPicture(0, 1, {}), VeltraniException);
    EXPECT_THROW(ContentPicture(1, 0, {}), VeltraniException);
}

TEST(ContentPicture, AFileThatIsNotThereIsNamed) {
    const TemporaryFolder folder;
    EXPECT_THROW(static_cast<void>(ContentPicture::read(folder.file("gone.png"))), VeltraniMissingFileException);
    const std::string file = folder.write("one.png", pngOf(1, 1, {1, 2, 3}));
    EXPECT_THAT(ContentPicture::read(file).at({0.5, 0.5}, false), ElementsAre(1, 2, 3));
}

}  // namespace

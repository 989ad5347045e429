#include "DisplayReport/basics/Base64.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Veltrani::DisplayReport;

std::string ofText(const std::string& text) {
    return base64(std::as_bytes(std::span(text)));
}

// The test vectors of RFC 4648.
TEST(Base64, KnowsTheVectorsOfItsStandard) {
    EXPECT_EQ(ofText(""), "");
    EXPECT_EQ(ofText("f"), "Zg==");
    EXPECT_EQ(ofText("fo"), "Zm8=");
    EXPECT_EQ(ofText("foo"), "Zm9v");
    EXPECT_EQ(ofText("foobar"), "Zm9vYmFy");
    EXPECT_EQ(ofText("\xfb\xff\xbf"), "+/+/");
}

TEST(Base64, NumbersAreTheirBytes) {
    EXPECT_EQ(base64Of(std::vector<float>{1.0F}), "AACAPw==");
    EXPECT_EQ(base64Of(std::vector<std::uint32_t>{}), "");
}

}  // namespace

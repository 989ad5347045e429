#include "KelvoScreen/detail/ObjText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Veltrani::KelvoScreenDetail::ObjSizeEstimate;

/// Vertices, then texture coordinates, then faces of `corners` corners, as files usually have them.
std::string sections(int vertices, int textureCoordinates, int faces, int corners) {
    std::string text = "# a file\n";
    for (int i = 0; i < vertices; ++i) {
        text += "v " + std::to_string(i) + ".125 -3.25 17\n";
    }
    for (int i = 0; i < textureCoordinates; ++i) {
        text += "vt 0.5 0.5\n";
    }
    for (int i = 0; i < faces; ++i) {
        text += "f";
        for (int corner = 1; corner <= corners; ++corner) {
            text += ' ' + std::to_string(corner + i) + '/' + std::to_string(corner);
        }
        text += "\r\n";
    }
    return text;
}

TEST(ObjSizeEstimate, CountsAShortTextWhole) {
    for (const int corners : {3, 4, 7}) {
        const auto estimate = ObjSizeEstimate::of(sections(10, 5, 8, corners));
        EXPECT_EQ(estimate.vertices, 10U);
        EXPECT_EQ(estimate.textureCoordinates, 5U);
        EXPECT_EQ(estimate.triangles, 8U * static_cast<unsigned>(corners - 2));
    }
}

TEST(ObjSizeEstimate, CountsNothingWhereThereIsNothing) {
    for (const std::string& text :
         {std::string(), std::string("\n"), std::string("v"), std::string("f 1\nf\nfo 1 2 3\nvn 1 2 3\n"),
          std::string(1'000'000, '\n'), std::string(1'000'000, 'v')}) {
        const auto estimate = ObjSizeEstimate::of(text);
        EXPECT_EQ(estimate.vertices, 0U);
        EXPECT_EQ(estimate.textureCoordinates, 0U);
        EXPECT_EQ(estimate.triangles, 0U);
    }
}

/// Room for a tenth more than there is costs nothing; too little costs a copy.
TEST(ObjSizeEstimate, EstimatesALongTextToWithinATenth) {
    const auto estimate = ObjSizeEstimate::of(sections(100'000, 50'000, 200'000, 3));
    EXPECT_NEAR(static_cast<double>(estimate.vertices), 100'000, 10'000);
    EXPECT_NEAR(static_cast<double>(estimate.textureCoordinates), 50'000, 5'000);
    EXPECT_NEAR(static_cast<double>(estimate.triangles), 200'000, 20'000);
}

}  // namespace

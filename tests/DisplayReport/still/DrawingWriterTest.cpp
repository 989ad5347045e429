#include "DisplayReport/still/DrawingWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;

TEST(DrawingWriter, EveryFormatHasItsWriter) {
    EXPECT_THAT(DrawingWriter::formats(), ElementsAre("png", "svg"));
    for (const std::string& format : DrawingWriter::formats()) {
        EXPECT_NE(DrawingWriter::ofFormat(format), nullptr) << format;
    }
}

TEST(DrawingWriter, OtherFormatsHaveNone) {
    EXPECT_EQ(DrawingWriter::ofFormat("bmp"), nullptr);
    EXPECT_EQ(DrawingWriter::ofFormat("PNG"), nullptr);
    EXPECT_EQ(DrawingWriter::ofFormat(""), nullptr);
}

TEST(DrawingWriter, AFileOfShapesShowsLessThanAFileOfPixels) {
    EXPECT_LT(DrawingWriter::ofFormat("svg")->limits().triangles, DrawingWriter::ofFormat("png")->limits().triangles);
    EXPECT_LT(DrawingWriter::ofFormat("svg")->limits().points, DrawingWriter::ofFormat("png")->limits().points);
}

}  // namespace

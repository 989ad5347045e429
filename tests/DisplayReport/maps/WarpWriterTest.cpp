#include "DisplayReport/maps/WarpWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;

TEST(WarpWriter, KnowsItsFormats) {
    EXPECT_THAT(WarpWriter::formats(), ElementsAre("mesh", "pfm", "png16", "png"));
    for (const std::string& format : WarpWriter::formats()) {
        ASSERT_NE(WarpWriter::ofFormat(format), nullptr) << format;
        EXPECT_EQ(WarpWriter::ofFormat(format)->hasNodes(), format == "mesh");
        EXPECT_EQ(WarpWriter::ofFormat(format)->isText(), format == "mesh");
    }
    EXPECT_EQ(WarpWriter::ofFormat("PNG"), nullptr);
    EXPECT_EQ(WarpWriter::ofFormat(""), nullptr);
}

}  // namespace

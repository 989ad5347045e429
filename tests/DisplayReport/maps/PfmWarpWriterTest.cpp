#include "DisplayReport/maps/WarpWriter.h"

#include "DisplayReport/maps/PictureWarp.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

TEST(PfmWarpWriter, WritesLittleEndianNumbersFromTheBottomUp) {
    const PictureWarp warp({1, 2}, 1, 2, {{{0.5, 1}, true}, {}});
    std::ostringstream out;
    WarpWriter::ofFormat("pfm")->write(warp, out);
    // 0.5 is 3f000000, 1 is 3f800000, -1 is bf800000.
    const std::string expected = std::string("PF\n1 2\n-1.0\n") +
                                 std::string("\0\0\0\x3f\0\0\x80\x3f\0\0\x80\x3f", 12) +
                                 std::string("\0\0\x80\xbf\0\0\x80\xbf\0\0\0\0", 12);
    EXPECT_EQ(out.str(), expected);
}

TEST(PfmWarpWriter, RowsFollowOneAnother) {
    const PictureWarp warp({3, 2}, 3, 2, std::vector<WarpSample>(6));
    std::ostringstream out;
    WarpWriter::ofFormat("pfm")->write(warp, out);
    EXPECT_EQ(out.str().size(), std::string("PF\n3 2\n-1.0\n").size() + 6 * 3 * 4);
}

}  // namespace

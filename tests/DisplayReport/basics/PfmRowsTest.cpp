#include "DisplayReport/basics/PfmRows.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

using Veltrani::DisplayReport::PfmRows;

TEST(PfmRows, StandFromTheBottomUpAndLittleEndian) {
    std::ostringstream out;
    PfmRows rows(out, 1, 2);
    rows.add(0.5F, 1, -1);
    rows.add(2, std::numeric_limits<float>::infinity(), 0);
    // 0.5 is 3f000000, 1 is 3f800000, -1 is bf800000, 2 is 40000000, infinity is 7f800000.
    EXPECT_EQ(out.str(), std::string("PF\n1 2\n-1.0\n") +
                             std::string("\0\0\0\x3f\0\0\x80\x3f\0\0\x80\xbf\0\0\0\x40\0\0\x80\x7f\0\0\0\0", 24));
}

TEST(PfmRows, AreWrittenAsSoonAsTheyAreWhole) {
    std::ostringstream out;
    PfmRows rows(out, 3, 1);
    const std::size_t head = out.str().size();
    rows.add(1, 2, 3);
    rows.add(1, 2, 3);
    EXPECT_EQ(out.str().size(), head);
    rows.add(1, 2, 3);
    EXPECT_EQ(out.str().size(), head + 36);
}

}  // namespace

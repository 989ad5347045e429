#include "DeviceFramework2/detail/PjlinkMessages.h"

#include "DeviceTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using device_testing::faultOf;
using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::DeviceFramework2Detail::LineBuffer;

std::vector<std::string> linesOf(const std::vector<std::string>& pieces) {
    LineBuffer buffer;
    std::vector<std::string> lines;
    for (const std::string& piece : pieces) {
        buffer.append(piece);
        while (auto line = buffer.takeLine()) {
            lines.push_back(*line);
        }
    }
    return lines;
}

TEST(LineBuffer, EveryKindOfLineEndEndsALine) {
    EXPECT_THAT(linesOf({"a\rb\nc\r\nd\r"}), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(linesOf({"\r\n\n\ra\r\r\r\nb\n"}), ElementsAre("a", "b"));
    EXPECT_THAT(linesOf({"unfinished"}), IsEmpty());
}

TEST(LineBuffer, SplitsMakeNoDifference) {
    const std::string text = "PJLINK 0\r\n%1POWR=1\r%1INST=11 12\n";
    for (std::size_t i = 0; i <= text.size(); ++i) {
        for (std::size_t j = i; j <= text.size(); ++j) {
            EXPECT_THAT(linesOf({text.substr(0, i), text.substr(i, j - i), text.substr(j)}),
                        ElementsAre("PJLINK 0", "%1POWR=1", "%1INST=11 12"));
        }
    }
}

TEST(LineBuffer, BytesThatBringNoLineAreAFaultBeyondTheLimit) {
    const std::string longest(LineBuffer::LONGEST_LINE, 'x');
    EXPECT_THAT(linesOf({longest, "\r"}), ElementsAre(longest));
    EXPECT_EQ(faultOf([&] { linesOf({longest, "x"}); }), "it sent more than 1024 bytes without a line");
    EXPECT_EQ(faultOf([&] { linesOf({longest + "x\r"}); }), "it sent more than 1024 bytes without a line");
    EXPECT_EQ(faultOf([&] { linesOf(std::vector<std::string>(1025, "\r")); }),
              "it sent more than 1024 bytes without a line");
}

TEST(LineBuffer, EmptyLinesCountOnlyUntilTheNextLine) {
    std::vector<std::string> pieces;
    for (int i = 0; i < 10; ++i) {
        pieces.push_back(std::string(500, '\n') + "a\r");
    }
    EXPECT_EQ(linesOf(pieces).size(), 10U);
}

TEST(LineBuffer, IsIdleWhenOnlyLineEndsAreLeft) {
    LineBuffer buffer;
    EXPECT_TRUE(buffer.isIdle());
    buffer.append("a\r\n");
    EXPECT_FALSE(buffer.isIdle());
    EXPECT_EQ(buffer.takeLine(), "a");
    EXPECT_TRUE(buffer.isIdle());
    buffer.append("b");
    EXPECT_FALSE(buffer.isIdle());
}

}  // namespace

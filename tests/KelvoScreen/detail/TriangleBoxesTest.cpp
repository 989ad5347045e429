#include "KelvoScreen/detail/TriangleBoxes.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using KelvoScreenDetail::TriangleBoxes;

TEST(TriangleBoxes, AreNoneAtFirst) {
    EXPECT_EQ(TriangleBoxes().size(), 0U);
}

TEST(TriangleBoxes, HoldOneTriangleOrTwoInOrder) {
    TriangleBoxes boxes;
    boxes.addSingle();
    boxes.addSingle();
    boxes.addToLast();
    boxes.addSingle();
    ASSERT_EQ(boxes.size(), 3U);
    EXPECT_EQ(boxes[0].first, 0U);
    EXPECT_FALSE(boxes[0].isPair);
    EXPECT_EQ(boxes[1].first, 1U);
    EXPECT_TRUE(boxes[1].isPair);
    EXPECT_EQ(boxes[2].first, 3U);
    EXPECT_FALSE(boxes[2].isPair);
}

TEST(TriangleBoxes, AgreeWithAListOfTheirTriangles) {
    std::mt19937 random(7);
    for (const unsigned pairsOfEight : {0U, 1U, 4U, 8U}) {
        TriangleBoxes boxes;
        std::vector<TriangleBoxes::Content> expected;
        std::uint32_t triangle = 0;
        for (int i = 0; i < 1000; ++i) {
            const bool isPair = random() % 8 < pairsOfEight;
            boxes.addSingle();
            expected.push_back({triangle, isPair});
            if (isPair) {
                boxes.addToLast();
            }
            triangle += isPair ? 2 : 1;
        }
        ASSERT_EQ(boxes.size(), expected.size());
        for (std::uint32_t i = 0; i < boxes.size(); ++i) {
            ASSERT_EQ(boxes[i].first, expected[i].first) << "box " << i;
            ASSERT_EQ(boxes[i].isPair, expected[i].isPair) << "box " << i;
        }
    }
}

}  // namespace

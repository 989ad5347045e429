#include "Common/StrongId.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

struct FirstTag {};
struct SecondTag {};
using FirstId = StrongId<std::string, FirstTag>;
using SecondId = StrongId<std::string, SecondTag>;

TEST(StrongId, IsEmptyByDefault) {
    EXPECT_EQ(FirstId().value(), "");
}

TEST(StrongId, IsNeverMadeSilentlyOrFromAnotherKind) {
    static_assert(!std::is_convertible_v<std::string, FirstId>);
    static_assert(!std::is_constructible_v<FirstId, SecondId>);
}

TEST(StrongId, ComparesAndOrdersByItsText) {
    EXPECT_EQ(FirstId("a"), FirstId("a"));
    EXPECT_NE(FirstId("a"), FirstId("b"));
    EXPECT_LT(FirstId("a"), FirstId("b"));
}

}  // namespace

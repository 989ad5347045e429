#include "KelvoControl/KelvoProjectorUID.h"

#include <gtest/gtest.h>

#include <map>
#include <type_traits>

namespace {

TEST(KelvoProjectorUID, KeepsTheConfigurationId) {
    EXPECT_EQ(KelvoProjectorUID(L"020000000001").value(), L"020000000001");
    EXPECT_EQ(KelvoProjectorUID(std::wstring()).value(), L"");
    static_assert(std::is_convertible_v<std::wstring, KelvoProjectorUID>);
}

TEST(KelvoProjectorUID, IsOrderedByTheTextOfTheId) {
    const KelvoProjectorUID a(L"A");
    const KelvoProjectorUID aa(L"AA");
    const KelvoProjectorUID b(L"B");
    const KelvoProjectorUID small(L"a");
    EXPECT_TRUE(a < aa);
    EXPECT_TRUE(aa < b);
    EXPECT_TRUE(b < small) << "case counts";
    EXPECT_FALSE(b < a);
    EXPECT_FALSE(a < KelvoProjectorUID(L"A"));
    EXPECT_FALSE(KelvoProjectorUID(L"A") < a) << "neither way: the same projector";
    EXPECT_TRUE(::operator<(a, b)) << "callers outside of all namespaces find it";
}

TEST(KelvoProjectorUID, KeysATable) {
    const std::map<KelvoProjectorUID, int> table{{KelvoProjectorUID(L"P2"), 2}, {KelvoProjectorUID(L"P1"), 1}};
    EXPECT_EQ(table.at(KelvoProjectorUID(L"P1")), 1);
    EXPECT_EQ(table.begin()->first.value(), L"P1");
    EXPECT_EQ(table.count(KelvoProjectorUID(L"P3")), 0U);
}

}  // namespace

#include "ScreenManager/TargetLocatorParams.h"

#include "ScreenManager/PlanarTargetLocator.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A second kind of record.
struct RadiusParams : TargetLocatorParams {
    explicit RadiusParams(double value) : radius(value) {}

    double radius;
    mutable int comparisons = 0;

protected:
    bool equals(const TargetLocatorParams& other) const override {
        ++comparisons;
        return radius == static_cast<const RadiusParams&>(other).radius;
    }
};

/// A kind that replaces the equality itself.
struct NeverEqualParams : RadiusParams {
    using RadiusParams::RadiusParams;

    bool operator==(const TargetLocatorParams&) const override { return false; }
};

#pragma GCC diagnostic pop

/// Compares through the base, as the cache of locators does.
bool equal(const TargetLocatorParams& a, const TargetLocatorParams& b) {
    return a == b;
}

bool unequal(TargetLocatorParams& a, const TargetLocatorParams& b) {
    return a != b;
}

TEST(TargetLocatorParams, TwoKindsAreUnequalWhateverTheirFieldsAndNeverAskedForThem) {
    PlanarTargetLocatorParams planar;
    RadiusParams radius(0.0);
    EXPECT_FALSE(equal(planar, radius));
    EXPECT_FALSE(equal(radius, planar));
    EXPECT_TRUE(unequal(planar, radius));
    EXPECT_TRUE(unequal(radius, planar));
    EXPECT_EQ(radius.comparisons, 0);
}

TEST(TargetLocatorParams, AKindIsUnequalToOneDerivedFromIt) {
    RadiusParams radius(1.0);
    const NeverEqualParams derived(1.0);
    EXPECT_FALSE(equal(radius, derived));
    EXPECT_EQ(radius.comparisons, 0);
}

TEST(TargetLocatorParams, OneKindIsComparedByItsFields) {
    RadiusParams one(1.0);
    RadiusParams same(1.0);
    RadiusParams other(2.0);
    EXPECT_TRUE(equal(one, same));
    EXPECT_FALSE(unequal(one, same));
    EXPECT_FALSE(equal(one, other));
    EXPECT_TRUE(unequal(one, other));
    EXPECT_EQ(one.comparisons, 4);
}

TEST(TargetLocatorParams, MinusZeroEqualsZero) {
    EXPECT_TRUE(equal(RadiusParams(-0.0), RadiusParams(0.0)));
}

TEST(TargetLocatorParams, ARecordWithANanIsUnequalEvenToItself) {
    RadiusParams record(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(equal(record, record));
    EXPECT_TRUE(unequal(record, record));
}

TEST(TargetLocatorParams, InequalityHonoursAReplacedEquality) {
    NeverEqualParams record(1.0);
    EXPECT_TRUE(unequal(record, record));
    EXPECT_EQ(record.comparisons, 0);
}

TEST(TargetLocatorParams, TheSignaturesAreThoseThatOtherRecordsOverride) {
    static_assert(std::is_same_v<decltype(&TargetLocatorParams::operator==),
                                 bool (TargetLocatorParams::*)(const TargetLocatorParams&) const>);
    static_assert(std::is_same_v<decltype(&TargetLocatorParams::operator!=),
                                 bool (TargetLocatorParams::*)(const TargetLocatorParams&)>);
    static_assert(!std::has_virtual_destructor_v<TargetLocatorParams>);
    static_assert(std::is_abstract_v<TargetLocatorParams>);
}

}  // namespace

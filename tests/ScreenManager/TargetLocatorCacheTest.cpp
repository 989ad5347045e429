#include "Common/VeltraniException.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "TargetLocatorFixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

/// When a cached locator is kept, when another one is made, and what a fault in the making leaves.

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

using Factory = std::function<TargetLocator*()>;
using Params = PlanarTargetLocatorParams;

const Params ONE(1.0, 1.0, 1.0, 1.0);
const Params TWO(2.0, 2.0, 2.0, 2.0);

class TargetLocatorCacheTest : public TargetLocatorFixture {
protected:
    static bool check(const std::wstring& name, const TargetLocatorParams& params, const Factory& factory) {
        return ScreenManagerTestAccess::checkOrCreateTargetLocator(*TargetLocatorManager::getInstance(), name, params,
                                                                   factory);
    }
    /// A factory that counts its calls.
    Factory planar(const Params& params) {
        return [this, params] {
            ++made;
            return new PlanarTargetLocator(params);
        };
    }
    template <class Fault>
    static Factory throwing(Fault fault) {
        return [fault]() -> TargetLocator* { throw fault; };
    }
    /// Null when nothing is cached under the name.
    static std::shared_ptr<const TargetLocator> cached(const std::wstring& name) {
        const auto& cache = ScreenManagerTestAccess::cacheOf(*TargetLocatorManager::getInstance());
        const auto found = cache.find(name);
        return found == cache.end() ? nullptr : found->second;
    }

    int made = 0;
};

TEST_F(TargetLocatorCacheTest, TheFirstRequestMakesALocatorAndTheNextEqualOneKeepsIt) {
    EXPECT_TRUE(check(L"P", ONE, planar(ONE)));
    const auto first = cached(L"P");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first.use_count(), 2) << "the cache owns it";
    EXPECT_TRUE(check(L"P", Params(1.0, 1.0, 1.0, 1.0), planar(ONE)));
    EXPECT_EQ(cached(L"P"), first);
    EXPECT_EQ(made, 1);
}

TEST_F(TargetLocatorCacheTest, TheFactoryIsNotTouchedForAnEqualRecord) {
    check(L"P", ONE, planar(ONE));
    EXPECT_TRUE(check(L"P", ONE, Factory())) << "not even an empty one is called";
    EXPECT_TRUE(check(L"P", ONE, throwing(std::runtime_error("called"))));
}

TEST_F(TargetLocatorCacheTest, AnotherRecordMakesAnotherLocator) {
    check(L"P", ONE, planar(ONE));
    const auto first = cached(L"P");
    EXPECT_TRUE(check(L"P", TWO, planar(TWO)));
    EXPECT_NE(cached(L"P"), first);
    EXPECT_EQ(first.use_count(), 1) << "only this handle";
    EXPECT_TRUE(first->getTargetLocatorParams() == ONE) << "the locator that was handed out lives";
    EXPECT_EQ(cacheSize(), 1U);
}

TEST_F(TargetLocatorCacheTest, NamesAreToldApartExactly) {
    for (const wchar_t* name : {L"P", L"p", L"P ", L""}) {
        EXPECT_TRUE(check(name, ONE, planar(ONE)));
    }
    EXPECT_EQ(cacheSize(), 4U);
    EXPECT_EQ(made, 4);
}

TEST_F(TargetLocatorCacheTest, ARecordWithANanMakesALocatorAtEveryRequest) {
    const Params nan(std::nan(""), 1.0, 1.0, 1.0);
    check(L"P", nan, planar(nan));
    check(L"P", nan, planar(nan));
    EXPECT_EQ(made, 2);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A kind whose equality is its own, and tells who was asked.
struct AskedParams : Params {
    mutable int asked = 0;
    bool operator==(const TargetLocatorParams&) const override {
        ++asked;
        return true;
    }
};

#pragma GCC diagnostic pop

TEST_F(TargetLocatorCacheTest, TheNewRecordIsAskedWhetherItEqualsTheCachedOne) {
    check(L"P", ONE, planar(ONE));
    const AskedParams asked;
    EXPECT_TRUE(check(L"P", asked, planar(TWO)));
    EXPECT_EQ(asked.asked, 1);
    EXPECT_EQ(made, 1);
}

TEST_F(TargetLocatorCacheTest, AnEmptyFactoryIsABadCallAndLeavesTheCache) {
    EXPECT_THROW(check(L"P", ONE, Factory()), std::bad_function_call);
    EXPECT_EQ(cacheSize(), 0U);
    check(L"P", ONE, planar(ONE));
    const auto first = cached(L"P");
    EXPECT_THROW(check(L"P", TWO, Factory()), std::bad_function_call);
    EXPECT_EQ(cached(L"P"), first);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorCacheTest, ExceptionsThatAreNotTheSuitesPassThroughAndLeaveTheCache) {
    check(L"P", ONE, planar(ONE));
    const auto first = cached(L"P");
    EXPECT_THROW(check(L"P", TWO, throwing(std::runtime_error("broken"))), std::runtime_error);
    EXPECT_THROW(check(L"P", TWO, throwing(std::bad_alloc())), std::bad_alloc);
    EXPECT_THROW(check(L"P", TWO, throwing(42)), int);
    EXPECT_EQ(cached(L"P"), first);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorCacheTest, AnExceptionOfTheSuiteIsOneInfoRecordAndTheOldLocatorGoes) {
    check(L"P", ONE, planar(ONE));
    const auto first = cached(L"P");
    EXPECT_FALSE(check(L"P", TWO, throwing(VeltraniException("a.cpp", 7, L"no lens"))));
    EXPECT_EQ(cached(L"P"), nullptr);
    EXPECT_EQ(cacheSize(), 0U);
    ASSERT_THAT(log.messages(),
                ElementsAre("INFO Failed creating target locator due to following error: no lens @ a.cpp:7"));
    const LogTrap::Record& record = log.records().front();
    EXPECT_EQ(record.logger, "Dravix.ScreenManager.TargetLocatorManager");
    EXPECT_THAT(record.file, EndsWith("TargetLocatorManager.cpp"));
    EXPECT_THAT(record.function, HasSubstr("checkOrCreateTargetLocator"));
    EXPECT_GT(record.line, 0);
    EXPECT_TRUE(first->getTargetLocatorParams() == ONE);

    EXPECT_TRUE(check(L"P", ONE, planar(ONE)));
    EXPECT_NE(cached(L"P"), first) << "what went does not come back";
}

TEST_F(TargetLocatorCacheTest, EveryExceptionOfTheSuiteCounts) {
    EXPECT_FALSE(check(L"P", ONE, throwing(VeltraniExceptionBase("", -1, L"base"))));
    EXPECT_FALSE(check(L"P", ONE, throwing(VeltraniParseException(L"parse"))));
    EXPECT_FALSE(check(L"P", ONE, throwing(VeltraniMissingFileException(L"missing \u00c4"))));
    EXPECT_THAT(log.messages(),
                ElementsAre("INFO Failed creating target locator due to following error: base",
                            "INFO Failed creating target locator due to following error: parse",
                            "INFO Failed creating target locator due to following error: missing \xc3\x84"));
}

TEST_F(TargetLocatorCacheTest, ADescriptionThatIsNoTextIsDropped) {
    const std::wstring surrogate(1, static_cast<wchar_t>(0xD800));
    EXPECT_FALSE(check(L"P", ONE, throwing(VeltraniException(L"lens " + surrogate))));
    EXPECT_THAT(log.messages(), ElementsAre("INFO Failed creating target locator due to following error: "));
}

TEST_F(TargetLocatorCacheTest, NothingIsLoggedWhenInfoIsOff) {
    const LogTrap warnings(log4cxx::Level::getWarn());
    check(L"P", ONE, planar(ONE));
    EXPECT_FALSE(check(L"P", TWO, throwing(VeltraniException(L"no lens"))));
    EXPECT_THAT(warnings.records(), IsEmpty());
    EXPECT_EQ(cached(L"P"), nullptr);
}

TEST_F(TargetLocatorCacheTest, AFactoryWithoutMemoryIsAFailureWithoutARecord) {
    check(L"P", ONE, planar(ONE));
    EXPECT_FALSE(check(L"P", TWO, []() -> TargetLocator* { return nullptr; }));
    EXPECT_EQ(cached(L"P"), nullptr);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorCacheTest, AFailureOfOneProjectorLeavesTheOthers) {
    check(L"A", ONE, planar(ONE));
    check(L"B", ONE, planar(ONE));
    const auto other = cached(L"A");
    EXPECT_FALSE(check(L"B", TWO, []() -> TargetLocator* { return nullptr; }));
    EXPECT_EQ(cached(L"A"), other);
    EXPECT_EQ(cacheSize(), 1U);
}

TEST_F(TargetLocatorCacheTest, TheOldLocatorIsThereWhileTheNewOneIsMade) {
    check(L"P", ONE, planar(ONE));
    bool there = false;
    check(L"P", TWO, [&] {
        there = cached(L"P") != nullptr;
        return new PlanarTargetLocator(TWO);
    });
    EXPECT_TRUE(there);
}

TEST_F(TargetLocatorCacheTest, AScreenThatChangesWhileALocatorIsMadeIsNoFault) {
    check(L"P", ONE, planar(ONE));
    EXPECT_TRUE(check(L"P", TWO, [] {
        TargetLocatorManager::getInstance()->screenDefinitionChanged();
        return new PlanarTargetLocator(TWO);
    }));
    ASSERT_NE(cached(L"P"), nullptr);
    EXPECT_TRUE(cached(L"P")->getTargetLocatorParams() == TWO);
}

}  // namespace

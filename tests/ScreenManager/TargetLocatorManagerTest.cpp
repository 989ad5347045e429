#include "ScreenManager/TargetLocatorManager.h"

#include "Common/VeltraniException.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "TargetLocatorFixture.h"
#include "support/AllocationFault.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>
#include <type_traits>

/// Instance, choice of the kind, use of what is cached, and failures, as callers see them.

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class TargetLocatorManagerTest : public TargetLocatorFixture {};

TEST_F(TargetLocatorManagerTest, TheInstanceAppearsWithItsFirstUseAndGoesWhenDeleted) {
    EXPECT_FALSE(ScreenManagerTestAccess::hasTargetLocatorManager());
    TargetLocatorManager* const manager = TargetLocatorManager::getInstance();
    EXPECT_EQ(TargetLocatorManager::getInstance(), manager);
    TargetLocatorManager::deleteInstance();
    EXPECT_FALSE(ScreenManagerTestAccess::hasTargetLocatorManager());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorManagerTest, DeletingTwiceIsHarmless) {
    TargetLocatorManager::getInstance();
    TargetLocatorManager::deleteInstance();
    TargetLocatorManager::deleteInstance();
    EXPECT_FALSE(ScreenManagerTestAccess::hasTargetLocatorManager());
}

TEST_F(TargetLocatorManagerTest, AnInstanceAfterADeletedOneIsEmpty) {
    const auto before = request();
    EXPECT_EQ(before.use_count(), 2) << "the cache and this handle";
    TargetLocatorManager::deleteInstance();
    EXPECT_EQ(before.use_count(), 1) << "the cache has gone, the locator that was handed out lives";
    EXPECT_EQ(cacheSize(), 0U);
    EXPECT_NE(request(), before);
}

TEST_F(TargetLocatorManagerTest, IsMadeAndDestroyedByItselfOnlyAndIsAProvider) {
    using Manager = TargetLocatorManager;
    static_assert(!std::is_destructible_v<Manager> && !std::is_default_constructible_v<Manager>);
    static_assert(!std::is_copy_constructible_v<Manager> && !std::is_copy_assignable_v<Manager>);
    static_assert(std::is_convertible_v<Manager*, ITargetLocatorProvider*>);
    EXPECT_EQ(slotOf(&ITargetLocatorProvider::getTargetLocator), 0U) << "before the destructor";
    EXPECT_EQ(slotOf(&Manager::getTargetLocator), 0U);
    ITargetLocatorProvider* const provider = Manager::getInstance();
    EXPECT_EQ(provider->getTargetLocator(&config, &projector), request());
}

TEST_F(TargetLocatorManagerTest, AnUnchangedConfigurationGivesTheSameLocator) {
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_PLANAR_ADVANCED,
                                     BaseConfig::TARGET_DATA_SPHERICAL, BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED,
                                     BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, BaseConfig::TARGET_DATA_3D}) {
        const auto locator = request(type);
        ASSERT_NE(locator, nullptr);
        EXPECT_EQ(request(type), locator);
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorManagerTest, ALocatorIsUsedAgainForAnotherTypeWithTheSameRecord) {
    const auto basic = request(BaseConfig::TARGET_DATA_PLANAR_BASIC);
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_PLANAR_ADVANCED), basic);
    targetData.targetPosition = projector.position;
    const auto sphere = request(BaseConfig::TARGET_DATA_SPHERICAL);
    EXPECT_NE(sphere, basic);
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC), sphere);
}

TEST_F(TargetLocatorManagerTest, AChangedBoundGivesANewLocatorAndHandlesToTheOldOneStayValid) {
    const auto old = request();
    projector.screenRight = 0.95;
    const auto fresh = request();
    ASSERT_NE(fresh, nullptr);
    EXPECT_NE(fresh, old);
    EXPECT_EQ(paramsOf<PlanarTargetLocatorParams>(old).screenRight, 0.9);
    EXPECT_EQ(paramsOf<PlanarTargetLocatorParams>(fresh).screenRight, 0.95);
    EXPECT_EQ(old.use_count(), 1) << "only this handle";
    EXPECT_EQ(cacheSize(), 1U);
}

TEST_F(TargetLocatorManagerTest, AnotherKindTakesThePlaceOfTheLocator) {
    const auto planar = request(BaseConfig::TARGET_DATA_PLANAR_BASIC);
    const auto sphere = request(BaseConfig::TARGET_DATA_SPHERICAL);
    EXPECT_NE(dynamic_cast<const SphereTargetLocator*>(sphere.get()), nullptr);
    EXPECT_NE(request(BaseConfig::TARGET_DATA_PLANAR_BASIC), planar) << "one locator per projector is kept";
    EXPECT_EQ(cacheSize(), 1U);
}

TEST_F(TargetLocatorManagerTest, EachProjectorHasItsOwnLocatorUnderItsIdentity) {
    ProjectorConfigDouble second = projector;
    second.identity = L"P2";
    const auto first = request();
    const auto other = TargetLocatorManager::getInstance()->getTargetLocator(&config, &second);
    EXPECT_NE(first, other);
    EXPECT_EQ(request(), first);
    EXPECT_EQ(TargetLocatorManager::getInstance()->getTargetLocator(&config, &second), other);
    second.identity = L"P1";
    EXPECT_EQ(TargetLocatorManager::getInstance()->getTargetLocator(&config, &second), first)
        << "the identity counts, not the record";
    EXPECT_EQ(cacheSize(), 2U);
}

TEST_F(TargetLocatorManagerTest, AnUnlistedTypeIsOneWarningAndNothing) {
    for (const auto& [type, text] : {std::pair{L"", ""},
                                     {L"planarbasic", "planarbasic"},
                                     {L"PlanarBasic ", "PlanarBasic "},
                                     {L"Planar", "Planar"},
                                     {L"%s", "%s"},
                                     {L"\u00c4quator", "\xc3\x84quator"}}) {
        log.clear();
        EXPECT_EQ(request(type), nullptr);
        ASSERT_THAT(log.messages(), ElementsAre(notFound(text)));
        const LogTrap::Record& record = log.records().front();
        EXPECT_EQ(record.logger, "Dravix.ScreenManager.TargetLocatorManager");
        EXPECT_THAT(record.file, EndsWith("TargetLocatorManager.cpp"));
        EXPECT_THAT(record.function, HasSubstr("getTargetLocator"));
        EXPECT_GT(record.line, 0);
    }
    EXPECT_EQ(cacheSize(), 0U);
}

TEST_F(TargetLocatorManagerTest, AnUnlistedTypeLeavesTheLocatorThatIsThere) {
    const auto locator = request();
    EXPECT_EQ(request(L"Nonsense"), nullptr);
    EXPECT_EQ(request(BaseConfig::TARGET_DATA_PLANAR_BASIC), locator);
}

TEST_F(TargetLocatorManagerTest, NullArgumentsAndMissingTargetDataAreAnEmptyType) {
    TargetLocatorManager* const manager = TargetLocatorManager::getInstance();
    EXPECT_EQ(manager->getTargetLocator(nullptr, &projector), nullptr);
    EXPECT_EQ(manager->getTargetLocator(&config, nullptr), nullptr);
    EXPECT_EQ(manager->getTargetLocator(nullptr, nullptr), nullptr);
    config.targetLocators = nullptr;
    EXPECT_EQ(manager->getTargetLocator(&config, &projector), nullptr);
    EXPECT_THAT(log.messages(), ElementsAre(notFound(""), notFound(""), notFound(""), notFound("")));
    EXPECT_EQ(cacheSize(), 0U);
}

TEST_F(TargetLocatorManagerTest, AfterAChangeOfTheScreenEveryLocatorIsNew) {
    for (const std::wstring& type :
         {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_SPHERICAL,
          BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC}) {
        const auto old = request(type);
        ASSERT_NE(old, nullptr);
        TargetLocatorManager::getInstance()->screenDefinitionChanged();
        EXPECT_EQ(cacheSize(), 0U);
        EXPECT_EQ(old.use_count(), 1) << "only this handle";
        const auto fresh = request(type);
        ASSERT_NE(fresh, nullptr);
        EXPECT_NE(fresh, old);
        EXPECT_EQ(request(type), fresh);
    }
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorManagerTest, AfterAChangeOfTheScreenTheLocatorsOfAllProjectorsAreForgotten) {
    request();
    for (const wchar_t* id : {L"P0", L"P2"}) {
        projector.identity = id;
        request();
    }
    EXPECT_EQ(cacheSize(), 3U);
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    EXPECT_EQ(cacheSize(), 0U);
}

TEST_F(TargetLocatorManagerTest, AnEntryThatChangesItsIdentityMeanwhileHasNoLocatorUnderTheNewOne) {
    class Renamed : public ProjectorConfigDouble {
    public:
        using ProjectorConfigDouble::ProjectorConfigDouble;
        mutable bool second = false;
        std::wstring getIdentity() const override {
            second = !second;
            return second ? L"before" : L"after";
        }
    };
    Renamed renamed(L"");
    renamed.screenLeft = renamed.screenRight = renamed.screenTop = renamed.screenBottom = 0.5;
    TargetLocatorManager* const manager = TargetLocatorManager::getInstance();
    EXPECT_EQ(manager->getTargetLocator(&config, &renamed), nullptr);
    EXPECT_EQ(cacheSize(), 2U) << "the locator, and an empty handle under the later identity";
    projector.identity = L"after";
    EXPECT_NE(request(), nullptr) << "the empty handle is no locator";
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorManagerTest, WhatTheConfigurationThrowsPassesThroughAndLeavesTheCache) {
    const auto locator = request();
    for (const char* operation :
         {"getScreenLeft", "getScreenRight", "getScreenTop", "getScreenBottom", "getIdentity"}) {
        projector.throwOnce(operation, VeltraniException(L"no entry"));
        EXPECT_THROW(request(), VeltraniException) << operation;
    }
    config.throwOnce("getTargetLocatorConfig", VeltraniParseException(L"broken"));
    EXPECT_THROW(request(), VeltraniParseException);
    targetData.throwOnce("getTargetDataType", std::runtime_error("broken"));
    EXPECT_THROW(request(), std::runtime_error);
    EXPECT_EQ(request(), locator);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorManagerTest, WithoutMemoryForTheLocatorThereIsNoneAndNoneOfBefore) {
    // Which allocation is that of the locator is found by trying: the others throw and leave the cache as it was.
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_SPHERICAL,
                                     BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, BaseConfig::TARGET_DATA_3D}) {
        int refused = 0;
        bool happened = true;
        for (std::size_t allocation = 0; happened; ++allocation) {
            TargetLocatorManager::deleteInstance();
            const auto old = request(BaseConfig::TARGET_DATA_PLANAR_BASIC);
            projector.screenLeft += 1e-3;
            projector.recordTo(nullptr);
            targetData.recordTo(nullptr);
            config.recordTo(nullptr);
            targetData.targetDataType = type;
            const LogTrap silence(log4cxx::Level::getOff());
            std::shared_ptr<const TargetLocator> fresh;
            bool threw = false;
            {
                const AllocationFault fault(allocation);
                try {
                    fresh = request();
                } catch (const std::bad_alloc&) {
                    threw = true;
                }
                happened = fault.happened();
            }
            EXPECT_EQ(fresh != nullptr, !happened);
            if (threw) {
                EXPECT_EQ(ScreenManagerTestAccess::cacheOf(*TargetLocatorManager::getInstance()).at(L"P1"), old);
            } else if (happened) {
                ++refused;
                EXPECT_EQ(cacheSize(), 0U) << "the locator that no longer fits has gone";
            }
            EXPECT_NE(request(), nullptr) << "with memory again there is a locator again";
        }
        EXPECT_EQ(refused, 1) << "one allocation is that of the locator itself";
    }
}

}  // namespace

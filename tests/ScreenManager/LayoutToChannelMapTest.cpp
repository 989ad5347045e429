#include "ScreenManager/LayoutToChannelMap.h"

#include "LayoutMapFixture.h"
#include "support/VirtualSlot.h"

#include <stdexcept>
#include <type_traits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Shows what the base keeps for its kinds.
class BareMap : public LayoutToChannelMap {
public:
    using LayoutToChannelMap::config;
    using LayoutToChannelMap::LayoutToChannelMap;
    using LayoutToChannelMap::projectorIds;
    using LayoutToChannelMap::projectors;

    explicit BareMap(XMLConfigManager* theConfig, bool* isGone) : LayoutToChannelMap(theConfig), m_isGone(isGone) {}
    BareMap(const BareMap&) = default;
    BareMap& operator=(const BareMap&) = default;
    ~BareMap() override {
        if (m_isGone != nullptr) {
            *m_isGone = true;
        }
    }

    bool mapLayoutToChannel(const Point<double, 3>&, Point<double, 2>&, std::size_t) override { return false; }
    bool mapChannelToLayout(const Point<double, 2>&, Point<double, 3>&, std::size_t) override { return false; }

private:
    bool* m_isGone = nullptr;
};

using LayoutToChannelMapTest = LayoutMapFixture;

TEST_F(LayoutToChannelMapTest, TheRecordsAreThoseOfTheListedIdsInTheirOrder) {
    config.projectors = {&second, &first};
    const BareMap map(&config);
    EXPECT_THAT(map.projectors(), ElementsAre(&second, &first));
    EXPECT_EQ(map.config(), &config);
    EXPECT_THAT(trace.lines(), ElementsAre("config.getProjectorConfigIds()", "config.getProjectorConfig(\"P2\")",
                                           "config.getProjectorConfig(\"P1\")"));
}

TEST_F(LayoutToChannelMapTest, ARecordThatIsMissingKeepsItsPlace) {
    IncompleteConfigDouble incomplete(config, L"P1");
    const BareMap map(&incomplete);
    EXPECT_THAT(map.projectors(), ElementsAre(nullptr, &second));
}

TEST_F(LayoutToChannelMapTest, TheRecordsAreThoseOfTheTimeWhenItWasBuiltAndTheIdsThoseOfNow) {
    const BareMap map(&config);
    config.projectors = {&second};
    EXPECT_THAT(map.projectors(), ElementsAre(&first, &second));
    EXPECT_THAT(map.projectorIds(), ElementsAre(L"P2"));
}

TEST_F(LayoutToChannelMapTest, WithoutAConfigurationThereAreNoChannels) {
    const BareMap map(nullptr);
    EXPECT_EQ(map.config(), nullptr);
    EXPECT_THAT(map.projectors(), IsEmpty());
    EXPECT_THAT(map.projectorIds(), IsEmpty());
}

TEST_F(LayoutToChannelMapTest, WhatTheConfigurationThrowsPassesThrough) {
    config.throwFrom("getProjectorConfig", std::runtime_error("broken"), 1);
    EXPECT_THROW(BareMap{&config}, std::runtime_error);
}

TEST_F(LayoutToChannelMapTest, CopiesHaveTheSameRecords) {
    BareMap assigned(nullptr);
    {
        const BareMap original(&config);
        const BareMap copy = original;
        EXPECT_EQ(copy.projectors(), original.projectors());
        assigned = copy;
    }
    EXPECT_EQ(assigned.config(), &config);
    EXPECT_THAT(assigned.projectors(), ElementsAre(&first, &second));
}

TEST_F(LayoutToChannelMapTest, AMapDiesThroughItsBase) {
    bool isGone = false;
    { const std::unique_ptr<LayoutToChannelMap> map = std::make_unique<BareMap>(nullptr, &isGone); }
    EXPECT_TRUE(isGone);
}

TEST_F(LayoutToChannelMapTest, TheOperationsKeepTheirPlaces) {
    EXPECT_EQ(slotOf(&LayoutToChannelMap::mapLayoutToChannel), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&LayoutToChannelMap::mapChannelToLayout), 3U);
    EXPECT_EQ(slotOf(&LayoutToChannelMap::mapChannelPointsToLayout), 4U) << "behind those that others call";
    static_assert(std::is_abstract_v<LayoutToChannelMap> && std::has_virtual_destructor_v<LayoutToChannelMap>);
}

}  // namespace

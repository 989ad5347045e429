#include "ScreenManager/detail/ChannelEntries.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/Configuration.h"
#include "support/BlendDouble.h"
#include "support/ConfigManagerDouble.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BlendOwnersTest : public testing::Test {
protected:
    BlendOwnersTest() { config.projectors = {&second, &first}; }

    const KelvoProjector* add(const std::wstring& id) {
        table.add(KelvoProjectorUID(id), std::make_unique<KelvoProjector>(std::make_shared<BlendDouble>()));
        return table.getProjectors().at(KelvoProjectorUID(id));
    }
    std::wstring fault(const KelvoControl::Configuration* from) const {
        try {
            const auto owners = Veltrani::ScreenManagerDetail::blendOwners(&config, from);
        } catch (const VeltraniException& thrown) {
            return thrown.message;
        }
        return {};
    }

    Trace trace;
    ConfigManagerDouble config{&trace};
    ProjectorConfigDouble first{L"P1"};
    ProjectorConfigDouble second{L"P2"};
    KelvoControl::Configuration table;
};

TEST_F(BlendOwnersTest, AreTheEntriesOfTheListedIdsInTheOrderOfTheList) {
    const KelvoProjector* const one = add(L"P1");
    const KelvoProjector* const two = add(L"P2");
    add(L"P3");
    EXPECT_THAT(Veltrani::ScreenManagerDetail::blendOwners(&config, &table), ElementsAre(two, one));
    EXPECT_THAT(trace.lines(), ElementsAre("config.getProjectorConfigIds()"));
}

TEST_F(BlendOwnersTest, TheFirstIdThatTheTableLacksIsNamed) {
    add(L"P2");
    add(L"P0");
    add(L"P11");
    EXPECT_EQ(fault(&table), L"Projector \"P1\" is configured, but the table of the channel maps has no entry for it")
        << "neither the one before nor the one behind it in the table will do";
    EXPECT_EQ(fault(nullptr), L"Projector \"P2\" is configured, but the table of the channel maps has no entry for it");
}

TEST_F(BlendOwnersTest, WithoutAConfigurationOrProjectorsThereAreNone) {
    EXPECT_THAT(Veltrani::ScreenManagerDetail::blendOwners(nullptr, &table), IsEmpty());
    config.projectors.clear();
    EXPECT_THAT(Veltrani::ScreenManagerDetail::blendOwners(&config, nullptr), IsEmpty());
}

}  // namespace

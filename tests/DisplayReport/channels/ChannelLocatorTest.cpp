#include "DisplayReport/channels/ChannelLocator.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

class ChannelLocatorTest : public LitDisplayTest {
protected:
    [[nodiscard]] ChannelLocator only() const {
        return ChannelLocator::of(*m_config, *m_config->getProjectorConfig(m_config->getProjectorConfigIds().at(0)));
    }
};

TEST_F(ChannelLocatorTest, IsThatOfTheManager) {
    load(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    const ChannelLocator channel = only();
    EXPECT_EQ(channel.fault, "");
    EXPECT_EQ(channel.locator, TargetLocatorManager::getInstance()->getTargetLocator(
                                   m_config.get(), m_config->getProjectorConfig(L"A")));
}

TEST_F(ChannelLocatorTest, NamesWhatTheConfigurationLacks) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='1' bottom='0'/>"));
    EXPECT_EQ(only().locator, nullptr);
    EXPECT_THAT(only().fault, HasSubstr("screen area without top"));
    load(displays::FLAT, displays::projector("A", displays::WHOLE_AREA), "");
    EXPECT_THAT(only().fault, HasSubstr("add a TargetData element"));
}

TEST_F(ChannelLocatorTest, WhatTheManagerThrowsIsTheFault) {
    load(displays::FLAT, displays::projector("A", "<ProjectionModel name='Sideways'/>"), displays::PROJECTORS);
    EXPECT_EQ(only().locator, nullptr);
    EXPECT_THAT(only().fault, HasSubstr("Sideways"));
}

}  // namespace

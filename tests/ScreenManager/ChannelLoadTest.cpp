#include "ChannelFixture.h"
#include "Common/Utf8.h"

/// Many channels at once.

namespace {

constexpr int MANY = 100;

class ChannelLoadTest : public ChannelFixture {
protected:
    static std::wstring nameOf(int number) {
        std::wstring name = L"Channel ";
        return name += std::to_wstring(number);
    }

    void makeMany() {
        std::vector<std::wstring> names;
        for (int i = 0; i < MANY; ++i) {
            names.push_back(nameOf(i));
        }
        makeChannels(names);
    }
};

TEST_F(ChannelLoadTest, AHundredChannelsAreFoundEveryWay) {
    makeMany();
    ASSERT_EQ(manager->getNumberOfChannels(), MANY);
    for (int i = 0; i < MANY; ++i) {
        const std::wstring id = entry(static_cast<std::size_t>(i)).identity;
        const Channel::ProjectorId projectorId(Veltrani::toUtf8(id));
        const Channel channel = manager->getChannelInfo(i);
        EXPECT_EQ(channel.getName(), nameOf(i));
        EXPECT_EQ(manager->getChannelIndexByName(nameOf(i)), i);
        EXPECT_EQ(manager->getChannelIndexByID(id), i);
        EXPECT_TRUE(manager->getChannelInfo(channel.getChannelId()) == channel);
        EXPECT_TRUE(manager->getChannelInfoRefactor(projectorId) == channel);
        EXPECT_EQ(manager->getProjectorIdRefactor(i), projectorId);
        EXPECT_EQ(manager->getDeviceRefactor(i), &device(static_cast<std::size_t>(i)));
    }
    EXPECT_EQ(manager->getChannelInfoMap().size(), static_cast<std::size_t>(MANY));
}

TEST_F(ChannelLoadTest, AChannelThatWandersThroughAHundredLeavesTheOthersInOrder) {
    makeMany();
    for (int i = 0; i + 1 < MANY; ++i) {
        ASSERT_TRUE(manager->moveChannel(i, 1));
    }
    for (int i = 0; i + 1 < MANY; ++i) {
        EXPECT_EQ(manager->getChannelIndexByName(nameOf(i + 1)), i);
    }
    EXPECT_EQ(manager->getChannelIndexByName(nameOf(0)), MANY - 1);
    EXPECT_EQ(config.projectors.back()->identity, L"P0");
}

TEST_F(ChannelLoadTest, AHundredChannelsGoOneByOne) {
    makeMany();
    for (int left = MANY; left > 0; --left) {
        ASSERT_EQ(manager->getNumberOfChannels(), left);
        ASSERT_TRUE(manager->removeChannel(manager->getChannelInfo(left / 2)));
    }
    EXPECT_EQ(devices.calls("releaseDevice"), static_cast<std::size_t>(MANY));
    EXPECT_TRUE(config.projectors.empty());
}

TEST_F(ChannelLoadTest, AHundredProjectorsArePrepared) {
    makeMany();
    manager->setupProjectorState(IChannelManager::Black);
    for (std::size_t i = 0; i < MANY; ++i) {
        ASSERT_EQ(device(i).calls("execute"), 4U);
    }
}

}  // namespace

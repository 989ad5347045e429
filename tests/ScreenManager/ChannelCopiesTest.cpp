#include "DeviceFramework2/DeviceManager.h"
#include "ScreenManager/ChannelManager.h"
#include "support/AllocationFault.h"
#include "support/ConfigManagerDouble.h"
#include "support/DeviceManagerDouble.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>

/// Every allocation of this program is counted; that is why the test is a program of its own. A copy of a channel with
/// a long name and a long id allocates both, a move allocates nothing.

namespace {

template <class Step>
std::size_t allocationsOf(Step&& step) {
    const std::size_t before = AllocationFault::allocations();
    [[maybe_unused]] const auto keep = step();
    return AllocationFault::allocations() - before;
}

class ChannelCopiesTest : public testing::Test {
protected:
    ChannelCopiesTest() {
        Veltrani::DeviceFramework2::DeviceManager::setInstance(&devices);
        manager = std::make_unique<ChannelManager>(&config);
        for (int i = 0; i < COUNT; ++i) {
            const std::wstring id = L"projector that has the number " + std::to_wstring(i);
            entries.push_back(std::make_unique<ProjectorConfigDouble>(id));
            entries.back()->name = L"channel that has the number " + std::to_wstring(i);
            entries.back()->deviceSnippet = id;
            config.projectors.push_back(entries.back().get());
            projectors.push_back(std::make_unique<DeviceDouble>(id));
            devices.creatable[{id, true}] = projectors.back().get();
        }
        manager->initialize(false);
    }
    ~ChannelCopiesTest() override {
        manager.reset();
        Veltrani::DeviceFramework2::DeviceManager::setInstance(nullptr);
    }

    LogTrap log{log4cxx::Level::getOff()};
    static constexpr int COUNT = 100;
    /// Of a text of this length: a growing string.
    static constexpr std::size_t LARGEST_CONVERSION = 8;
    ConfigManagerDouble config;
    DeviceManagerDouble devices;
    std::vector<std::unique_ptr<ProjectorConfigDouble>> entries;
    std::vector<std::unique_ptr<DeviceDouble>> projectors;
    std::unique_ptr<ChannelManager> manager;
};

TEST_F(ChannelCopiesTest, AListOfAllChannelsCopiesEachOnce) {
    const std::vector<Channel> channels = manager->getChannels();
    ASSERT_EQ(channels.size(), static_cast<std::size_t>(COUNT));
    const std::size_t once = allocationsOf([&] { return std::vector<Channel>(channels); });
    EXPECT_EQ(once, 2U * COUNT + 1) << "name and id of each, and the list";
    EXPECT_EQ(allocationsOf([&] { return manager->getChannels(); }), once);
}

TEST_F(ChannelCopiesTest, AMapOfAllChannelsCopiesEachOnce) {
    const std::vector<Channel> channels = manager->getChannels();
    std::size_t ids = 0;
    for (const Channel& channel : channels) {
        ids += allocationsOf([&] { return channel.getChannelId(); });
    }
    const std::size_t node = 1;
    EXPECT_EQ(allocationsOf([&] { return manager->getChannelInfoMap(); }), ids + (2U + node) * COUNT);
}

TEST_F(ChannelCopiesTest, LookupsByTextAllocateNothing) {
    const std::wstring name = entries.back()->name;
    const std::wstring id = entries.back()->identity;
    EXPECT_EQ(allocationsOf([&] { return manager->getChannelIndexByName(name); }), 0U);
    EXPECT_EQ(allocationsOf([&] { return manager->getChannelIndexByID(id); }), 0U);
}

TEST_F(ChannelCopiesTest, ALookupByIdConvertsTheIdOnceAndCopiesTheChannelOnce) {
    const auto lookup = [&](int index) {
        const Channel::Id id = manager->getChannelInfo(index).getChannelId();
        return allocationsOf([&] { return manager->getChannelInfo(id); });
    };
    EXPECT_EQ(lookup(COUNT - 1), lookup(COUNT - 2)) << "however many channels stand before it";
    EXPECT_LE(lookup(COUNT - 1), 2U + LARGEST_CONVERSION);
}

}  // namespace

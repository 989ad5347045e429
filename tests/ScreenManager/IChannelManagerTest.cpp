#include "ScreenManager/IChannelManager.h"

#include "support/VirtualSlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

using testing::ElementsAre;

TEST(IChannelManager, TheStatesHaveTheNumbersThatCallersStore) {
    EXPECT_EQ(static_cast<int>(IChannelManager::Black), 0);
    EXPECT_EQ(static_cast<int>(IChannelManager::Gray50), 1);
    EXPECT_EQ(static_cast<int>(IChannelManager::Clear), 2);
    static_assert(std::is_same_v<std::underlying_type_t<IChannelManager::ProjectorState>, int>);
}

TEST(IChannelManager, TheSharedNamesAreThoseThatCallersCompareWith) {
    EXPECT_EQ(INVALID_SLOT_INDEX, -1);
    EXPECT_EQ(DISABLED_SLOT_INDEX, -2);
    EXPECT_EQ(k_INVALID_SLOT_INDEX, L"Invalid Slot Index");
    EXPECT_EQ(k_DISABLED_SLOT_INDEX, L"Disabled Slot Index");
    EXPECT_EQ(k_CONVERGENCE, L"convergence");
    EXPECT_EQ(k_WARP, L"warp");
}

TEST(IChannelManager, IsAbstractLikeItsBase) {
    static_assert(std::is_abstract_v<IChannelManager> && std::is_abstract_v<IProjectorProvider>);
    static_assert(std::is_base_of_v<IProjectorProvider, IChannelManager>);
    static_assert(std::has_virtual_destructor_v<IProjectorProvider>);
}

// Programs that were built with an older version of the library call the operations by their places.
TEST(IChannelManager, TheOperationsKeepTheirPlaces) {
    using I = IChannelManager;
    using Id = const Channel::Id&;
    const std::vector<std::size_t> places{
        slotOf(&IProjectorProvider::getAbstractDeviceRefactor),
        slotOf(&IProjectorProvider::getProjectorConfig),
        slotOf(&I::getNumberOfChannels),
        slotOf(&I::isChannelIndexInBounds),
        slotOf(static_cast<Channel (I::*)(Id)>(&I::getChannelInfo)),
        slotOf(static_cast<Channel (I::*)(int)>(&I::getChannelInfo)),
        slotOf(&I::setChannelInfo),
        slotOf(&I::setChannelNames),
        slotOf(&I::getChannelIndexByName),
        slotOf(&I::getChannelIndexByID),
        slotOf(&I::getChannelInputs),
        slotOf(&I::setChannelInputs),
        slotOf(&I::initialize),
        slotOf(&I::addChannel),
        slotOf(&I::removeChannel),
        slotOf(&I::moveChannel),
        slotOf(&I::setupProjectorState),
        slotOf(&I::getDisplayDeviceIds),
        slotOf(&I::getChannels),
        slotOf(&I::getChannelInfoMap),
        slotOf(static_cast<Veltrani::DeviceFramework2::AbstractDevice* (I::*)(Id) const>(&I::getDeviceRefactor)),
        slotOf(static_cast<Veltrani::DeviceFramework2::AbstractDevice* (I::*)(int) const>(&I::getDeviceRefactor)),
        slotOf(&I::getChannelInfoRefactor),
        slotOf(&I::getChannelIdRefactor),
        slotOf(&I::getProjectorIdRefactor),
        slotOf(&I::getConfig)};
    // The destructor takes two places, behind the operations of the base.
    EXPECT_THAT(places, ElementsAre(0, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24,
                                    25, 26, 27));
}

}  // namespace

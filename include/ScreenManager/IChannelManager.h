#pragma once

#include "ScreenManager/Channel.h"
#include "ScreenManager/IProjectorProvider.h"

#include <map>
#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2 {

class Device;
class IDeviceManager;

}  // namespace Veltrani::DeviceFramework2

/// Indices that stand for no input slot, with their texts.
inline constexpr int INVALID_SLOT_INDEX = -1;
inline constexpr int DISABLED_SLOT_INDEX = -2;
inline const std::wstring k_INVALID_SLOT_INDEX = L"Invalid Slot Index";
inline const std::wstring k_DISABLED_SLOT_INDEX = L"Disabled Slot Index";

/// The names of two kinds of correction.
inline const std::wstring k_CONVERGENCE = L"convergence";
inline const std::wstring k_WARP = L"warp";

/// The ordered channels of the display.
///
/// A channel is found by its index, its name, its channel id (the name in UTF-8) or its projector id (the configuration
/// id in UTF-8). Texts are compared exactly; where several channels match, the first one counts. A projector id also
/// finds a projector that had this id before the configuration was updated (`ProjectorConfig::getOldUID`).
///
/// Queries return copies of channels. An index that is not below the number of channels makes them throw
/// `std::logic_error` "Channel index out of bounds..". Exceptions of devices and of the configuration pass through.
class IChannelManager : public IProjectorProvider {
public:
    /// What the projectors show before and after a measurement.
    enum ProjectorState : int {
        Black = 0,   ///< black, picture corrections off
        Gray50 = 1,  ///< half grey, picture corrections off
        Clear = 2    ///< their input
    };

    IChannelManager() = default;
    IChannelManager(const IChannelManager&) = default;
    IChannelManager& operator=(const IChannelManager&) = default;
    ~IChannelManager() override;

    [[nodiscard]] virtual int getNumberOfChannels() const = 0;
    [[nodiscard]] virtual bool isChannelIndexInBounds(int index) const = 0;
    /// Throws `VeltraniException` when there is no such channel.
    virtual Channel getChannelInfo(const Channel::Id& channelId) = 0;
    virtual Channel getChannelInfo(int index) = 0;
    /// Replaces a channel; returns false, and changes nothing, when another one has the name already.
    virtual bool setChannelInfo(int index, Channel channel) = 0;
    /// Renames the first channels, and their configuration entries, in order. Names that are not UTF-8 become empty.
    /// Throws the `std::logic_error` of an index out of bounds for more names than channels, and then renames none.
    virtual void setChannelNames(const std::vector<std::string>& names) = 0;
    /// Returns -1 when there is none.
    [[nodiscard]] virtual int getChannelIndexByName(const std::wstring& name) const = 0;
    /// Finds by configuration id, in spite of its name; returns -1 when there is none.
    [[nodiscard]] virtual int getChannelIndexByID(const std::wstring& projectorConfigId) const = 0;
    /// Returns the input that each channel's projector shows, 0 where the projector does not report it.
    virtual std::vector<int> getChannelInputs() = 0;
    /// Shows these inputs on the projectors that can switch; does nothing unless there is one for every channel.
    virtual void setChannelInputs(const std::vector<int>& inputs) = 0;
    /// Adds a channel for every projector of the configuration behind those that are there.
    ///
    /// Each entry gets its device, the id that the device has, and a name that no other channel has. Throws
    /// `ChannelInitializationException` when a projector cannot be reached, and `ChannelSwapException` when it is
    /// another one than configured or has a channel already; the channels before it stay.
    /// @param replaceMissingWithOffline puts a virtual projector in the place of one that cannot be reached
    virtual void initialize(bool replaceMissingWithOffline) = 0;
    /// Adds a channel for a device whose UID has an entry in the configuration; a device that has a channel already is
    /// released and is no fault. Throws `VeltraniException` when the device manager is not the one that is in use.
    /// @return false, and nothing changed, for null and for a device without an entry
    virtual bool addChannel(Veltrani::DeviceFramework2::Device* device,
                            Veltrani::DeviceFramework2::IDeviceManager* deviceManager) = 0;
    /// Removes the channel with the configuration id of the record, its configuration entry and its device. The device
    /// is found by the name in the record, which must be the channel's current one for the device to be released.
    /// @return false when there is no such channel
    virtual bool removeChannel(Channel channel) = 0;
    /// Moves a channel and its configuration entry by one place: 1 later, -1 earlier. False for any other direction and
    /// for a move past either end, although the configuration's own `moveProjectorConfig` has been called first even
    /// then: intended, callers rely on the configuration deciding for itself.
    virtual bool moveChannel(int index, int direction) = 0;
    /// Brings every projector into a state; values that are no state do nothing. Throws `VeltraniException`, before
    /// anything is sent, when a channel has no device. Commands that were sent before a fault stay in effect.
    virtual void setupProjectorState(ProjectorState state) = 0;
    /// Returns the projector ids of all channels, in order.
    [[nodiscard]] virtual std::vector<Channel::ProjectorId> getDisplayDeviceIds() const = 0;
    [[nodiscard]] virtual std::vector<Channel> getChannels() const = 0;
    /// Returns the channels by their ids; the first of several channels with one id.
    [[nodiscard]] virtual std::map<Channel::Id, const Channel> getChannelInfoMap() const = 0;
    /// Returns null when there is no such channel or it has no device.
    virtual Veltrani::DeviceFramework2::AbstractDevice* getDeviceRefactor(const Channel::Id& channelId) const = 0;
    /// Returns null for a negative index and for a channel without a device.
    virtual Veltrani::DeviceFramework2::AbstractDevice* getDeviceRefactor(int index) const = 0;
    /// Throws the `std::logic_error` of an index out of bounds when there is no such channel.
    virtual Channel getChannelInfoRefactor(const Channel::ProjectorId& projectorId) const = 0;
    /// Returns an empty id when there is no such channel.
    [[nodiscard]] virtual Channel::Id getChannelIdRefactor(const Channel::ProjectorId& projectorId) const = 0;
    virtual Channel::ProjectorId getProjectorIdRefactor(int index) = 0;
    /// Returns the entry that the configuration has for the channel now; null when there is no such channel or no
    /// entry.
    [[nodiscard]] virtual ProjectorConfig* getConfig(const Channel::Id& channelId) const = 0;
};

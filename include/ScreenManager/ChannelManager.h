#pragma once

#include "ScreenManager/IChannelManager.h"

#include <log4cxx/logger.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::ScreenManagerDetail {

class ProjectorBinding;

}  // namespace Veltrani::ScreenManagerDetail

/// The channels of the display, in display order, kept in step with the configuration and with the devices.
///
///     ChannelManager channels(config.get());
///     channels.initialize(true);                                   // virtual projectors for missing ones
///     channels.setupProjectorState(IChannelManager::Black);
///
/// The configuration and the device manager are not owned and must outlive the manager. Without a device manager
/// (`DeviceManager::setInstance(nullptr)`) no channel has a device. Not safe to use from two threads at once.
///
/// A copy shares the channels of its original until either gains, loses or moves one; renaming shows in both. Each
/// releases the devices of its channels at its end.
class ChannelManager : public IChannelManager {
public:
    /// No channels yet, and the device manager of the process.
    explicit ChannelManager(XMLConfigManager* config);
    ChannelManager(const ChannelManager&) = default;
    ChannelManager& operator=(const ChannelManager&) = default;
    /// Releases the device of every channel, in order. What a device manager throws is logged.
    ~ChannelManager() override;

    /// Returns the pond-of-mirror size that suits a projector (see `DeviceEntry`); the usual one for null.
    static int getPondOfMirrorSizeForChannel(Veltrani::DeviceFramework2::Device* device);

    /// Replaces the device manager by one that knows the device of every channel. Throws `VeltraniException` for null
    /// and for any other one, and keeps the old one.
    void setDeviceManager(Veltrani::DeviceFramework2::IDeviceManager* deviceManager);

    Veltrani::DeviceFramework2::AbstractDevice* getAbstractDeviceRefactor(
        const std::wstring& projectorConfigId) override;
    ProjectorConfig* getProjectorConfig(const std::wstring& projectorConfigId) override;
    [[nodiscard]] int getNumberOfChannels() const override;
    [[nodiscard]] bool isChannelIndexInBounds(int index) const override;
    Channel getChannelInfo(const Channel::Id& channelId) override;
    Channel getChannelInfo(int index) override;
    bool setChannelInfo(int index, Channel channel) override;
    void setChannelNames(const std::vector<std::string>& names) override;
    [[nodiscard]] int getChannelIndexByName(const std::wstring& name) const override;
    [[nodiscard]] int getChannelIndexByID(const std::wstring& projectorConfigId) const override;
    std::vector<int> getChannelInputs() override;
    void setChannelInputs(const std::vector<int>& inputs) override;
    void initialize(bool replaceMissingWithOffline) override;
    bool addChannel(Veltrani::DeviceFramework2::Device* device,
                    Veltrani::DeviceFramework2::IDeviceManager* deviceManager) override;
    bool removeChannel(Channel channel) override;
    bool moveChannel(int index, int direction) override;
    void setupProjectorState(ProjectorState state) override;
    [[nodiscard]] std::vector<Channel::ProjectorId> getDisplayDeviceIds() const override;
    [[nodiscard]] std::vector<Channel> getChannels() const override;
    [[nodiscard]] std::map<Channel::Id, const Channel> getChannelInfoMap() const override;
    Veltrani::DeviceFramework2::AbstractDevice* getDeviceRefactor(const Channel::Id& channelId) const override;
    Veltrani::DeviceFramework2::AbstractDevice* getDeviceRefactor(int index) const override;
    Channel getChannelInfoRefactor(const Channel::ProjectorId& projectorId) const override;
    [[nodiscard]] Channel::Id getChannelIdRefactor(const Channel::ProjectorId& projectorId) const override;
    Channel::ProjectorId getProjectorIdRefactor(int index) override;
    [[nodiscard]] ProjectorConfig* getConfig(const Channel::Id& channelId) const override;

private:
    friend struct ScreenManagerTestAccess;

    static log4cxx::LoggerPtr log;

    /// Returns the base, or the first of base_01, base_02, ... that is not the name of a channel.
    [[nodiscard]] std::wstring generateUniqueChannelName(const std::wstring& base) const;

    /// Throws the `std::logic_error` of `IChannelManager` for an index that is out of bounds.
    [[nodiscard]] Channel& channelAt(int index) const;
    [[nodiscard]] int indexOfChannelId(const Channel::Id& channelId) const;
    [[nodiscard]] int indexOfProjectorId(const Channel::ProjectorId& projectorId) const;
    /// Returns the configuration's entry; null when there is none.
    [[nodiscard]] ProjectorConfig* entryOf(const std::wstring& projectorConfigId) const;
    /// Returns the device manager's device; null when there is none.
    [[nodiscard]] Veltrani::DeviceFramework2::AbstractDevice* deviceOf(const std::wstring& projectorConfigId) const;
    void releaseDevice(Veltrani::DeviceFramework2::AbstractDevice* device) const;

    void initializeChannel(const std::wstring& id, const Veltrani::ScreenManagerDetail::ProjectorBinding& binding);
    [[nodiscard]] bool isAtThePlaceOfAChannel(const Veltrani::DeviceFramework2::Device& device) const;
    static void logUnreleased(const Channel& channel) noexcept;
    void appendChannel(ProjectorConfig& entry, const std::wstring& projectorConfigId);

    std::vector<std::shared_ptr<Channel>> m_channels;
    XMLConfigManager* m_config;
    Veltrani::DeviceFramework2::IDeviceManager* m_deviceManager;
};

#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/VirtualProjector.h"
#include "DravixDiagnostics/DravixDiagnostics.h"
#include "ScreenManager/ChannelManager.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

/// Channels over real files and the real device manager, with virtual projectors: what is changed and saved comes back.

namespace {

using testing::ElementsAre;

std::string entryText(int number, const std::string& name) {
    const std::string digit = std::to_string(number);
    return "<Projector id='02000000000" + digit + "'><Name>" + name +
           "</Name><Resolution width='1920' height='1200'/>"
           "<Device><Device type='PJLink' mac='02:00:00:00:00:0" +
           digit + "' host='192.0.2." + digit + "'/></Device></Projector>";
}

class ChannelFileTest : public testing::Test {
protected:
    ChannelFileTest() : m_previous(Veltrani::DeviceFramework2::DeviceManager::getInstance()) {
        Veltrani::DeviceFramework2::DeviceManager::setInstance(&devices);
        DravixDiagnostics::setVirtualLoad(true);
    }
    ~ChannelFileTest() override {
        DravixDiagnostics::setVirtualLoad(false);
        Veltrani::DeviceFramework2::DeviceManager::setInstance(m_previous);
    }

    /// The channels of a file, as "name: projector id", in order.
    static std::vector<std::string> channelsOf(const ChannelManager& manager) {
        std::vector<std::string> texts;
        for (const Channel& channel : manager.getChannels()) {
            texts.push_back(channel.getChannelId().value() + ": " + channel.getProjectorId().value());
        }
        return texts;
    }

    static std::vector<std::string> freshlyLoaded(const std::string& path) {
        const auto config = XMLConfigFile::load(path);
        ChannelManager manager(config.get());
        manager.initialize(false);
        return channelsOf(manager);
    }

    TemporaryFolder folder;
    const std::string path =
        folder.write("display.xml", "<Display version='1' lengthUnit='m'><Units native='m'/><!-- kept --><Projectors>" +
                                        entryText(1, "Left") + entryText(2, "Middle") + entryText(3, "Right") +
                                        "</Projectors></Display>");
    LogTrap log;
    Veltrani::DeviceFramework2::DeviceManager devices;

private:
    Veltrani::DeviceFramework2::IDeviceManager* m_previous;
};

TEST_F(ChannelFileTest, ChangesThatAreSavedGiveTheSameChannelsInTheSameOrder) {
    std::vector<std::string> saved;
    {
        const auto config = XMLConfigFile::load(path);
        ChannelManager manager(config.get());
        manager.initialize(false);
        ASSERT_THAT(channelsOf(manager),
                    ElementsAre("Left: 020000000001", "Middle: 020000000002", "Right: 020000000003"));
        EXPECT_TRUE(manager.moveChannel(0, 1));
        EXPECT_TRUE(manager.removeChannel(manager.getChannelInfo(2)));
        manager.getChannelInfo(1).setName(L"copies rename the entry only");
        manager.setChannelNames({"K\xc3\xb6ln", "Left & <first>"});
        saved = channelsOf(manager);
        config->save(path);
    }
    EXPECT_THAT(saved, ElementsAre("K\xc3\xb6ln: 020000000002", "Left & <first>: 020000000001"));
    EXPECT_EQ(freshlyLoaded(path), saved);
    EXPECT_THAT(folder.read("display.xml"), testing::HasSubstr("<!-- kept -->"));
    EXPECT_EQ(devices.deviceCount(), 0U);
}

TEST_F(ChannelFileTest, EachKindOfChangeAloneSurvivesASave) {
    const auto changes = std::vector<std::function<void(ChannelManager&)>>{
        [](ChannelManager& manager) { manager.moveChannel(2, -1); },
        [](ChannelManager& manager) { manager.moveChannel(0, -1); },
        [](ChannelManager& manager) { manager.moveChannel(2, 1); },
        [](ChannelManager& manager) { manager.moveChannel(0, 2); },
        [](ChannelManager& manager) { manager.removeChannel(manager.getChannelInfo(0)); },
        [](ChannelManager& manager) {
            manager.setChannelNames({"a", "b", "c"});
        }};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const auto config = XMLConfigFile::load(path);
        ChannelManager manager(config.get());
        manager.initialize(false);
        changes[i](manager);
        const std::string copy = folder.file("changed-" + std::to_string(i) + ".xml");
        config->save(copy);
        EXPECT_EQ(freshlyLoaded(copy), channelsOf(manager)) << "change " << i;
    }
}

TEST_F(ChannelFileTest, OfflineReplacementLosesNothingOfTheRealProjector) {
    const auto snippetsOf = [](const XMLConfigFile& config) {
        std::vector<std::wstring> snippets;
        for (const std::wstring& id : config.getProjectorConfigIds()) {
            snippets.push_back(config.getProjectorConfig(id)->getDeviceSnippet());
        }
        return snippets;
    };
    const auto config = XMLConfigFile::load(path);
    const std::vector<std::wstring> before = snippetsOf(*config);
    ASSERT_THAT(before.at(0), testing::HasSubstr(L"192.0.2.1"));
    ChannelManager manager(config.get());
    manager.initialize(false);
    config->save(path);
    EXPECT_EQ(snippetsOf(*XMLConfigFile::load(path)), before);
}

TEST_F(ChannelFileTest, APreparationReachesEveryProjector) {
    const auto config = XMLConfigFile::load(path);
    ChannelManager manager(config.get());
    manager.initialize(false);
    manager.setupProjectorState(IChannelManager::Gray50);
    using Sent = Veltrani::DeviceFramework2::VirtualProjector::SentCommand;
    for (int i = 0; i < manager.getNumberOfChannels(); ++i) {
        const auto* projector =
            dynamic_cast<Veltrani::DeviceFramework2::VirtualProjector*>(manager.getDeviceRefactor(i));
        ASSERT_NE(projector, nullptr);
        EXPECT_THAT(
            projector->sentCommands(),
            ElementsAre(Sent{"RunFill50GrayTo", 5}, Sent{"DisableWhiteLevelWarp", std::nullopt},
                        Sent{"DisableWhiteLevelBlend", std::nullopt}, Sent{"DisableBlackLevelBlend", std::nullopt}));
    }
}

TEST_F(ChannelFileTest, ADiscoveredProjectorBecomesAChannelThatIsSaved) {
    {
        const auto config = XMLConfigFile::load(path);
        ChannelManager manager(config.get());
        manager.initialize(false);
        auto* const projector = devices.createDevice(
            L"<Wrapper><Projector Width='800' Height='600'><Device type='PJLink' mac='02:00:00:00:00:04' "
            L"host='192.0.2.4'/></Projector></Wrapper>",
            false, L"");
        ASSERT_NE(projector, nullptr);
        EXPECT_FALSE(manager.addChannel(projector, &devices)) << "no entry yet";
        config->addProjectorConfig(projector->getUID());
        EXPECT_TRUE(manager.addChannel(projector, &devices));
        EXPECT_EQ(config->getProjectorConfig(L"020000000004")->getHeight(), 600);
        config->save(path);
    }
    EXPECT_THAT(freshlyLoaded(path), ElementsAre("Left: 020000000001", "Middle: 020000000002", "Right: 020000000003",
                                                 "Virtual projector 020000000004: 020000000004"));
}

}  // namespace

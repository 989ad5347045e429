#include "DeviceFramework2/PJLinkProjector.h"

#include "DeviceTesting.h"
#include "support/LogTrap.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// A simulator and the projector that talks to it.
class Pair {
public:
    explicit Pair(const std::vector<std::string>& options = {}, const PjlinkSettings& settings = patientSettings())
        : simulator(options), projector(snippetFor(simulator.port()), settings) {}

    /// After the first contact, whose line is not in `lines`.
    static std::unique_ptr<Pair> contacted(const std::vector<std::string>& options = {}) {
        auto pair = std::make_unique<Pair>(options);
        pair->projector.contact();
        return pair;
    }

    template <class Kind, class... Arguments>
    std::shared_ptr<Kind> send(Arguments... arguments) {
        auto command = std::make_shared<Kind>(arguments...);
        projector.execute(command);
        return command;
    }

    template <class Kind, class... Arguments>
    std::string faultOfSending(Arguments... arguments) {
        return faultOf([&] { send<Kind>(arguments...); });
    }

    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> all = simulator.lines();
        if (!all.empty() && all.front() == "%1CLSS ?") {
            all.erase(all.begin());
        }
        return all;
    }

    [[nodiscard]] std::string name() const {
        return "PJLink projector 020000000001 at 127.0.0.1:" + std::to_string(simulator.port());
    }

    PjlinkSimulator simulator;
    PJLinkProjector projector;
};

TEST(PJLinkProjector, DescribesItselfWithoutAConnection) {
    const Pair pair;
    const std::wstring port = std::to_wstring(pair.simulator.port());
    EXPECT_EQ(pair.projector.getUID(), L"020000000001");
    EXPECT_EQ(pair.projector.getUidSourceText(), L"02:00:00:00:00:01");
    EXPECT_EQ(pair.projector.getDeviceSnippet(),
              L"<Device type='PJLink' mac='02:00:00:00:00:01' host='127.0.0.1' port='" + port + L"'/>");
    EXPECT_EQ(pair.projector.getLocation()->getDescription(), L"PJLink 127.0.0.1:" + port);
    EXPECT_EQ(pair.projector.getTypeCode(), 0);
    EXPECT_THAT(pair.simulator.journal(), IsEmpty());
}

TEST(PJLinkProjector, ASnippetWithoutAHostIsRefused) {
    const auto snippet = DeviceSnippet::parse(L"<Device type='PJLink' mac='02:00:00:00:00:01'/>");
    EXPECT_EQ(faultOf([&] { const PJLinkProjector projector(snippet, patientSettings()); }),
              "PJLink projector 020000000001: no usable address is given");
}

TEST(PJLinkProjector, BlackIsTheShutterAndClearOpensIt) {
    const auto pair = Pair::contacted();
    pair->send<Device::Drawing::RunFillBlackTo>(5);
    pair->send<Device::Drawing::RunClearTo>(2);
    EXPECT_THAT(pair->lines(), ElementsAre("%1AVMT 11", "%1AVMT 10"));
}

TEST(PJLinkProjector, AProjectorThatOnlyMutesPictureAndSoundIsMutedSo) {
    const auto pair = Pair::contacted({"--answer", "AVMT 11=ERR2", "--answer", "AVMT 10=ERR2"});
    pair->send<Device::Drawing::RunFillBlackTo>(5);
    pair->send<Device::Drawing::RunClearTo>(2);
    pair->send<Device::Drawing::RunClearTo>(2);
    EXPECT_THAT(pair->lines(), ElementsAre("%1AVMT 11", "%1AVMT 31", "%1AVMT 30", "%1AVMT 10", "%1AVMT 30"));
}

TEST(PJLinkProjector, TheInputIsThePositionInTheProjectorsOwnList) {
    const auto pair = Pair::contacted();
    EXPECT_EQ(pair->send<GetActiveInputSignalIndex>()->getResult(), 2);
    pair->send<SetActiveInputSignalIndex>(4);
    EXPECT_EQ(pair->send<GetActiveInputSignalIndex>()->getResult(), 4);
    EXPECT_THAT(pair->lines(), ElementsAre("%2INST ?", "%2INPT ?", "%2INST ?", "%2INPT 5A", "%2INST ?", "%2INPT ?"));
}

TEST(PJLinkProjector, AClass1ProjectorIsAskedInClass1) {
    const auto pair = Pair::contacted({"--class", "1"});
    EXPECT_EQ(pair->send<GetActiveInputSignalIndex>()->getResult(), 2);
    pair->send<SetActiveInputSignalIndex>(0);
    EXPECT_THAT(pair->lines(), ElementsAre("%1INST ?", "%1INPT ?", "%1INST ?", "%1INPT 11"));
}

TEST(PJLinkProjector, AClass2ProjectorThatKnowsInputsInClass1AloneIsAskedSoFromThenOn) {
    const auto pair = Pair::contacted({"--answer", "2INST=ERR1", "--answer", "2INPT=ERR1"});
    EXPECT_EQ(pair->send<GetActiveInputSignalIndex>()->getResult(), 2);
    pair->send<SetActiveInputSignalIndex>(0);
    EXPECT_THAT(pair->lines(), ElementsAre("%2INST ?", "%1INST ?", "%1INPT ?", "%1INST ?", "%1INPT 11"));
}

TEST(PJLinkProjector, AnInputOutsideTheListIsAFaultAndNothingIsSet) {
    const auto pair = Pair::contacted();
    for (const int index : {-1, 5}) {
        EXPECT_EQ(pair->faultOfSending<SetActiveInputSignalIndex>(index),
                  pair->name() + ", command SetActiveInputSignalIndex: input index " + std::to_string(index) +
                      ": the projector has 5 inputs, 0 is the first");
    }
    EXPECT_THAT(pair->lines(), ElementsAre("%2INST ?", "%2INST ?"));
}

TEST(PJLinkProjector, AnInputThatIsNotInTheListIsAFault) {
    const auto pair = Pair::contacted({"--answer", "INPT ?=41"});
    EXPECT_EQ(pair->faultOfSending<GetActiveInputSignalIndex>(),
              pair->name() +
                  ", command GetActiveInputSignalIndex: it shows input 41, which is not in its own list of inputs");
}

TEST(PJLinkProjector, FirmwareAndResolutionNeedClass2) {
    const auto second = Pair::contacted();
    EXPECT_TRUE(second->projector.supports(GetFirmware()));
    EXPECT_TRUE(second->projector.supports(GetNativeResolution()));
    EXPECT_EQ(second->send<GetFirmware>()->getResult(), "1.02.003");
    EXPECT_EQ(second->send<GetNativeResolution>()->getResult(), (Point<int, 2>{1920, 1200}));
    EXPECT_THAT(second->lines(), ElementsAre("%2SVER ?", "%2RRES ?"));

    const auto first = Pair::contacted({"--class", "1"});
    EXPECT_FALSE(first->projector.supports(GetFirmware()));
    EXPECT_FALSE(first->projector.supports(GetNativeResolution()));
    EXPECT_EQ(first->faultOfSending<GetFirmware>(),
              first->name() + ", command GetFirmware: it needs PJLink class 2, the projector has class 1");
    EXPECT_THAT(first->lines(), IsEmpty());
}

TEST(PJLinkProjector, FirmwareTextIsMadeReadable) {
    const auto pair = Pair::contacted({"--answer", "SVER=v\xff\x01 B\xc3\xbchne"});
    EXPECT_EQ(pair->send<GetFirmware>()->getResult(), "v\xc3\xbf  B\xc3\x83\xc2\xbchne") << "UTF-8 whatever was sent";
}

TEST(PJLinkProjector, PowerAndMuteAreAsked) {
    const auto pair = Pair::contacted();
    EXPECT_EQ(pair->send<GetPowerState>()->getResult(), PowerState::ON);
    EXPECT_FALSE(pair->send<GetPictureMute>()->getResult());
    pair->send<Device::Drawing::RunFillBlackTo>(5);
    EXPECT_TRUE(pair->send<GetPictureMute>()->getResult());
    EXPECT_THAT(pair->lines(), ElementsAre("%1POWR ?", "%1AVMT ?", "%1AVMT 11", "%1AVMT ?"));
    EXPECT_EQ(Pair::contacted({"--power", "3"})->send<GetPowerState>()->getResult(), PowerState::WARMING_UP);
}

TEST(PJLinkProjector, NameAndModelAreAskedInClass1) {
    const auto pair = Pair::contacted({"--class", "1", "--answer", "NAME=B\xc3\xbchne\x1b[2J"});
    EXPECT_EQ(pair->send<GetProjectorName>()->getResult(), "B\xc3\xbchne [2J") << "safe for a terminal";
    EXPECT_EQ(pair->send<GetModel>()->getResult(), "Loopback SIM-1");
    EXPECT_THAT(pair->lines(), ElementsAre("%1NAME ?", "%1INF1 ?", "%1INF2 ?"));
}

TEST(PJLinkProjector, AnEmptyNameOrMakerIsNoFault) {
    const auto pair = Pair::contacted({"--answer", "NAME=", "--answer", "INF1="});
    EXPECT_EQ(pair->send<GetProjectorName>()->getResult(), "");
    EXPECT_EQ(pair->send<GetModel>()->getResult(), "SIM-2");
}

TEST(PJLinkProjector, AnUnknownPowerOrMuteIsAFault) {
    const auto pair = Pair::contacted({"--answer", "POWR=9", "--answer", "AVMT=41"});
    EXPECT_EQ(pair->faultOfSending<GetPowerState>(),
              pair->name() + ", command GetPowerState: POWR ?: its answer \"9\" cannot be understood");
    EXPECT_EQ(pair->faultOfSending<GetPictureMute>(),
              pair->name() + ", command GetPictureMute: AVMT ?: its answer \"41\" cannot be understood");
}

TEST(PJLinkProjector, SupportsWhatTheStandardHas) {
    const auto pair = Pair::contacted();
    EXPECT_TRUE(pair->projector.supports(Device::Drawing::RunFillBlackTo(5)));
    EXPECT_TRUE(pair->projector.supports(Device::Drawing::RunClearTo(2)));
    EXPECT_TRUE(pair->projector.supports(GetActiveInputSignalIndex()));
    EXPECT_TRUE(pair->projector.supports(SetActiveInputSignalIndex(0)));
    EXPECT_TRUE(pair->projector.supports(GetPowerState()));
    EXPECT_TRUE(pair->projector.supports(GetPictureMute()));
    EXPECT_TRUE(pair->projector.supports(GetProjectorName()));
    EXPECT_TRUE(pair->projector.supports(GetModel()));
    EXPECT_FALSE(pair->projector.supports(Device::Drawing::RunFill50GrayTo(5)));
    EXPECT_FALSE(pair->projector.supports(Device::Geometry::DisableWhiteLevelWarp()));
    EXPECT_FALSE(pair->projector.supports(Device::Geometry::DisableWhiteLevelBlend()));
    EXPECT_FALSE(pair->projector.supports(Device::Geometry::DisableBlackLevelBlend()));
}

TEST(PJLinkProjector, GreyIsAFaultAndNothingIsSent) {
    const auto pair = Pair::contacted();
    EXPECT_EQ(pair->faultOfSending<Device::Drawing::RunFill50GrayTo>(5),
              pair->name() + ", command RunFill50GrayTo: the PJLink standard has no such command");
    EXPECT_THAT(pair->lines(), IsEmpty());
}

TEST(PJLinkProjector, WarpAndBlendAreOneWarningPerProjectorAndNothingIsSent) {
    const auto pair = Pair::contacted();
    LogTrap trap;
    pair->send<Device::Geometry::DisableWhiteLevelBlend>();
    pair->send<Device::Geometry::DisableWhiteLevelWarp>();
    pair->send<Device::Geometry::DisableBlackLevelBlend>();
    EXPECT_THAT(trap.messages(),
                ElementsAre("WARN " + pair->name() +
                            ", command DisableWhiteLevelBlend: not in the PJLink standard, nothing was sent. Make sure "
                            "that the projector's own warp and blend are switched off"));
    EXPECT_EQ(trap.records().front().logger, "Dravix.DeviceFramework2.PJLinkProjector");
    EXPECT_THAT(pair->lines(), IsEmpty());
}

TEST(PJLinkProjector, EveryErrorCodeIsAFaultThatNamesProjectorAddressAndCommand) {
    const std::map<std::string, std::string> meanings{
        {"ERR1", "it does not know the command (ERR1)"},
        {"ERR2", "it does not take the parameter (ERR2)"},
        {"ERR3", "not available now: standby, warming up or cooling (ERR3)"},
        {"ERR4", "the projector reports a failure of its own (ERR4)"}};
    for (const auto& [code, meaning] : meanings) {
        const auto pair = Pair::contacted({"--answer", "AVMT=" + code, "--answer", "RRES=" + code});
        const std::string parameter = code == "ERR2" ? "31" : "11";
        EXPECT_EQ(pair->faultOfSending<Device::Drawing::RunFillBlackTo>(5),
                  pair->name() + ", command RunFillBlackTo: AVMT " + parameter + ": " + meaning);
        EXPECT_EQ(pair->faultOfSending<GetNativeResolution>(),
                  pair->name() + ", command GetNativeResolution: RRES ?: " + meaning);
    }
}

TEST(PJLinkProjector, StandbyIsAFault) {
    const auto pair = Pair::contacted({"--power", "0"});
    EXPECT_THAT(pair->faultOfSending<Device::Drawing::RunFillBlackTo>(5),
                EndsWith("standby, warming up or cooling (ERR3)"));
    EXPECT_THAT(pair->faultOfSending<GetActiveInputSignalIndex>(), HasSubstr("INST ?: not available now"));
}

TEST(PJLinkProjector, AnAnswerThatCannotBeUnderstoodLeavesNoResult) {
    const auto pair = Pair::contacted({"--answer", "RRES=big"});
    auto command = std::make_shared<GetNativeResolution>();
    EXPECT_EQ(faultOf([&] { pair->projector.execute(command); }),
              pair->name() + ", command GetNativeResolution: RRES ?: its answer \"big\" cannot be understood");
    EXPECT_THROW(static_cast<void>(command->getResult()), CmdResultNotAvailableException);
}

TEST(PJLinkProjector, AValueInPlaceOfAnAcknowledgementIsAFault) {
    const auto pair = Pair::contacted({"--answer", "AVMT=11"});
    EXPECT_THAT(pair->faultOfSending<Device::Drawing::RunFillBlackTo>(5),
                EndsWith("AVMT 11: it answered with a value \"11\""));
}

TEST(PJLinkProjector, AnUnknownClassEndsTheFirstContact) {
    Pair pair({"--answer", "CLSS=0"});
    EXPECT_EQ(faultOf([&] { pair.projector.contact(); }),
              pair.name() + ", first contact: CLSS ?: its answer \"0\" cannot be understood");
    EXPECT_FALSE(pair.projector.supports(GetFirmware())) << "taken for class 1";
}

TEST(PJLinkProjector, ALaterClassIsUsedAsClass2) {
    const auto pair = Pair::contacted({"--answer", "CLSS=3"});
    EXPECT_EQ(pair->send<GetFirmware>()->getResult(), "1.02.003");
    EXPECT_EQ(pair->send<GetActiveInputSignalIndex>()->getResult(), 2);
    EXPECT_THAT(pair->lines(), ElementsAre("%2SVER ?", "%2INST ?", "%2INPT ?"));
}

TEST(PJLinkProjector, TheCauseOfAFaultTellsWhatWasPutOff) {
    const auto causeOf = [](const std::vector<std::string>& options) {
        const auto pair = Pair::contacted(options);
        try {
            pair->send<Device::Drawing::RunFillBlackTo>(5);
        } catch (const DeviceException& fault) {
            return std::optional(fault.cause);
        }
        return std::optional<DeviceException::Cause>();
    };
    EXPECT_EQ(causeOf({"--power", "0"}), DeviceException::Cause::NOT_NOW);
    EXPECT_EQ(causeOf({"--answer", "AVMT=ERR4"}), DeviceException::Cause::DEVICE);
}

TEST(PJLinkProjector, TheClassInWordsIsUnderstood) {
    const auto pair = Pair::contacted({"--class", "1", "--answer", "CLSS=Class 1"});
    EXPECT_FALSE(pair->projector.supports(GetFirmware()));
}

TEST(PJLinkProjector, OneThatDoesNotKnowTheQuestionForItsClassHasClass1) {
    const auto pair = Pair::contacted({"--answer", "CLSS=ERR1"});
    EXPECT_FALSE(pair->projector.supports(GetFirmware()));
    EXPECT_TRUE(pair->projector.supports(Device::Drawing::RunFillBlackTo(5)));
}

TEST(PJLinkProjector, AFailureAtTheFirstContactIsAFault) {
    Pair pair({"--answer", "CLSS=ERR4"});
    EXPECT_EQ(faultOf([&] { pair.projector.contact(); }),
              pair.name() + ", first contact: CLSS ?: the projector reports a failure of its own (ERR4)");
}

TEST(PJLinkProjector, NoCommandAndUnknownCommandsAreFaults) {
    class Unknown : public Command {
    public:
        [[nodiscard]] std::string typeName() const override { return "Unknown"; }
    };
    const auto pair = Pair::contacted();
    EXPECT_FALSE(pair->projector.supports(Unknown()));
    EXPECT_EQ(pair->faultOfSending<Unknown>(),
              pair->name() + ", command Unknown: the PJLink standard has no such command");
    EXPECT_EQ(faultOf([&] { pair->projector.execute(nullptr); }), pair->name() + ": no command was given");
}

TEST(PJLinkProjector, TheFaultOfASessionNamesProjectorAddressAndCommand) {
    Pair pair({"--greeting", "-"}, impatientSettings());
    EXPECT_EQ(pair.faultOfSending<Device::Drawing::RunClearTo>(2),
              pair.name() + ", command RunClearTo: no answer within 150 ms");
}

TEST(PJLinkProjector, SessionsAreShortAndOneAtATime) {
    const auto pair = Pair::contacted();
    for (int i = 0; i < 20; ++i) {
        pair->send<Device::Drawing::RunFillBlackTo>(5);
        pair->send<GetActiveInputSignalIndex>();
    }
    EXPECT_EQ(pair->simulator.mostConnections(), 1);
    EXPECT_EQ(pair->lines().size(), 60U);
}

TEST(PJLinkProjector, LogsInForEverySession) {
    const Environment password("SM_TEST_PJLINK_PASSWORD_020000000001", "12345678");
    const auto pair = Pair::contacted({"--seed", "61fa922e", "--digest", "5ad047bf382a444610f5785503f77783"});
    pair->send<Device::Drawing::RunFillBlackTo>(5);
    EXPECT_THAT(pair->lines(),
                ElementsAre("5ad047bf382a444610f5785503f77783%1CLSS ?", "5ad047bf382a444610f5785503f77783%1AVMT 11"));
}

}  // namespace

#include "DeviceFramework2/detail/PjlinkConversation.h"

#include "DeviceTesting.h"
#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using namespace Veltrani::DeviceFramework2Detail;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::wstring UID = L"020000000001";
const PjlinkRequest CLASS_QUESTION{'1', "CLSS", "?"};

// The first published example of a login.
const std::string SEED = "498e4a67";
const std::string PASSWORD = "JBMIAProjectorLink";
const std::string DIGEST = "5d8409bc1c3fa39749434aa3a5c38682";

Endpoint endpointOf(const PjlinkSimulator& simulator) {
    return *Endpoint::parse("127.0.0.1", simulator.port());
}

/// What one question on a connection of its own brings: the value, or the fault.
std::string askOnce(const PjlinkSimulator& simulator, const PjlinkSettings& settings,
                    const PjlinkRequest& request = CLASS_QUESTION) {
    std::string value;
    const std::string fault = faultOf([&] {
        PjlinkSession session(endpointOf(simulator), UID, settings);
        value = session.ask(request).value;
    });
    return fault == "no fault" ? value : fault;
}

TEST(PjlinkSession, AsksAndAnswers) {
    const PjlinkSimulator simulator;
    PjlinkSession session(endpointOf(simulator), UID, patientSettings());
    EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2");
    EXPECT_EQ(session.ask({'1', "AVMT", "11"}).outcome, PjlinkReply::Outcome::DONE);
    EXPECT_EQ(session.ask({'1', "AVMT", "?"}).value, "11");
    EXPECT_THAT(simulator.lines(), ElementsAre("%1CLSS ?", "%1AVMT 11", "%1AVMT ?"));
}

TEST(PjlinkSession, EveryLineEndIsAccepted) {
    for (const char* end : {"cr", "lf", "crlf"}) {
        const PjlinkSimulator simulator({"--line-end", end});
        PjlinkSession session(endpointOf(simulator), UID, patientSettings());
        EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2") << end;
        EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2") << end;
    }
}

TEST(PjlinkSession, LinesThatArriveByteByByteAreAccepted) {
    const PjlinkSimulator simulator({"--split", "1", "--line-end", "crlf"});
    EXPECT_EQ(askOnce(simulator, patientSettings()), "2");
}

TEST(PjlinkSession, ASlowProjectorIsWaitedFor) {
    const PjlinkSimulator simulator({"--delay", "300"});
    EXPECT_EQ(askOnce(simulator, patientSettings()), "2");
}

TEST(PjlinkSession, AnErrorOfTheProjectorIsAnAnswer) {
    const PjlinkSimulator simulator({"--answer", "CLSS=ERR3"});
    PjlinkSession session(endpointOf(simulator), UID, patientSettings());
    EXPECT_EQ(session.ask(CLASS_QUESTION).outcome, PjlinkReply::Outcome::NOT_NOW);
    EXPECT_EQ(session.ask(CLASS_QUESTION).outcome, PjlinkReply::Outcome::NOT_NOW) << "the session goes on";
}

TEST(PjlinkSession, TheLoginGoesBeforeTheFirstCommandOnly) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", PASSWORD);
    const PjlinkSimulator simulator({"--seed", SEED, "--digest", DIGEST});
    PjlinkSession session(endpointOf(simulator), UID, patientSettings());
    EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2");
    EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2");
    EXPECT_THAT(simulator.lines(), ElementsAre(DIGEST + "%1CLSS ?", "%1CLSS ?"));
}

TEST(PjlinkSession, AWrongPasswordIsAFaultThatDoesNotShowIt) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", "wrong-one");
    const PjlinkSimulator simulator({"--seed", SEED, "--digest", DIGEST});
    const std::string fault = askOnce(simulator, patientSettings());
    EXPECT_EQ(fault, "it refused the password (ERRA)");
    EXPECT_THAT(fault, Not(HasSubstr("wrong-one")));
    EXPECT_EQ(simulator.lines().size(), 1U) << "tried once: repeated failures may lock the projector";
}

TEST(PjlinkSession, WithoutAPasswordNothingIsSent) {
    const PjlinkSimulator simulator({"--seed", SEED, "--digest", DIGEST});
    EXPECT_EQ(askOnce(simulator, patientSettings()),
              "it wants a password and none is configured, nothing was sent: set the environment variable "
              "SM_TEST_PJLINK_PASSWORD, or name a password file in SM_TEST_PJLINK_PASSWORD_FILE");
    EXPECT_THAT(simulator.lines(), IsEmpty());
}

TEST(PjlinkSession, ALoginThatComesBackIsNotShown) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", PASSWORD);
    const PjlinkSimulator simulator({"--seed", SEED, "--digest", DIGEST, "--raw-answer", DIGEST + "%1CLSS ?"});
    EXPECT_EQ(askOnce(simulator, patientSettings()), "it sent the login back, so it is no projector");
}

TEST(PjlinkSession, AGreetingThatRefusesIsAFault) {
    const PjlinkSimulator simulator({"--greeting", "PJLINK ERRA"});
    EXPECT_EQ(askOnce(simulator, patientSettings()), "it refuses logins (ERRA)");
}

TEST(PjlinkSession, AnotherServiceIsNotTakenForAProjector) {
    const PjlinkSimulator simulator({"--greeting", "220 mail.example ESMTP ready\x1b[2J"});
    EXPECT_EQ(askOnce(simulator, patientSettings()),
              "it greeted with \"220 mail.example ESMTP ready [2J\", which is not PJLink");
    EXPECT_THAT(simulator.lines(), IsEmpty());
}

TEST(PjlinkSession, ASilentGreetingEndsAtItsLimit) {
    const PjlinkSimulator simulator({"--greeting", "-"});
    std::string fault;
    const auto time = timeOf([&] { fault = askOnce(simulator, impatientSettings()); });
    EXPECT_EQ(fault, "no answer within 150 ms");
    EXPECT_GE(time, IMPATIENT);
    EXPECT_LT(time, IMPATIENT + GRACE);
}

TEST(PjlinkSession, ASilentCommandEndsAtItsLimitAndTheSessionWithIt) {
    const PjlinkSimulator simulator({"--silent-after", "1"});
    PjlinkSession session(endpointOf(simulator), UID, impatientSettings());
    EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2");
    const auto ask = [&] { static_cast<void>(session.ask({'1', "AVMT", "11"})); };
    std::string fault;
    const auto time = timeOf([&] { fault = faultOf(ask); });
    EXPECT_EQ(fault, "no answer within 150 ms");
    EXPECT_LT(time, IMPATIENT + GRACE);
    EXPECT_EQ(faultOf(ask), "the session ended with an earlier fault");
    EXPECT_THAT(simulator.lines(), ElementsAre("%1CLSS ?", "%1AVMT 11")) << "nothing is sent twice";
}

TEST(PjlinkSession, AnAnswerThatTricklesInDoesNotProlongTheLimit) {
    // Each byte comes within the limit, the line does not.
    const PjlinkSimulator simulator({"--split", "100"});
    std::string fault;
    const auto time = timeOf([&] { fault = askOnce(simulator, impatientSettings()); });
    EXPECT_EQ(fault, "no answer within 150 ms");
    EXPECT_LT(time, IMPATIENT + GRACE);
}

TEST(PjlinkSession, AConnectionThatTheProjectorClosesIsAFault) {
    const PjlinkSimulator simulator({"--close-after", "1"});
    PjlinkSession session(endpointOf(simulator), UID, patientSettings());
    EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2");
    EXPECT_THAT(faultOf([&] { static_cast<void>(session.ask(CLASS_QUESTION)); }),
                testing::AnyOf("it closed the connection", "it closed the connection without an answer",
                               StartsWith("the connection broke: ")));
}

TEST(PjlinkSession, AHalfClosedConnectionIsAFault) {
    const PjlinkSimulator simulator({"--half-close", "yes"});
    EXPECT_THAT(askOnce(simulator, patientSettings()), StartsWith("it closed the connection"));
}

TEST(PjlinkSession, NobodyListeningIsAFault) {
    PjlinkSimulator simulator;
    simulator.kill();
    EXPECT_EQ(askOnce(simulator, patientSettings()), "no connection: Connection refused");
}

TEST(PjlinkSession, TheAnswerToAnotherCommandIsAFault) {
    const PjlinkSimulator simulator({"--raw-answer", "%1POWR=1"});
    EXPECT_EQ(askOnce(simulator, patientSettings()), "it answered CLSS ? with \"%1POWR=1\"");
}

TEST(PjlinkSession, AnAnswerInTheOtherClassIsAccepted) {
    const PjlinkSimulator simulator({"--raw-answer", "%1RRES=1920x1200"});
    EXPECT_EQ(askOnce(simulator, patientSettings(), {'2', "RRES", "?"}), "1920x1200");
}

TEST(PjlinkSession, ASecondAnswerToOneCommandIsAFault) {
    const PjlinkSimulator simulator({"--raw-answer", "%1CLSS=2\r%1CLSS=1"});
    PjlinkSession session(endpointOf(simulator), UID, patientSettings());
    EXPECT_EQ(session.ask(CLASS_QUESTION).value, "2");
    EXPECT_EQ(faultOf([&] { static_cast<void>(session.ask(CLASS_QUESTION)); }), "it sent what nobody asked for");
}

TEST(PjlinkSession, GarbageIsAFaultThatIsSafeToShow) {
    const PjlinkSimulator simulator({"--raw-answer", "\x1b[2J\xff\xfe" + std::string(100, 'g')});
    EXPECT_EQ(askOnce(simulator, patientSettings()),
              "it answered CLSS ? with \" [2J\u00ff\u00fe" + std::string(34, 'g') + "\"");
}

TEST(PjlinkSession, AnAnswerWithoutALineEndIsNone) {
    const PjlinkSimulator simulator({"--endless", "30"});
    EXPECT_EQ(askOnce(simulator, impatientSettings()), "no answer within 150 ms");
}

TEST(PjlinkSession, ARequestThatCannotBeSentIsAFaultAndNothingIsSent) {
    const PjlinkSimulator simulator;
    EXPECT_EQ(askOnce(simulator, patientSettings(), {'1', "AVMT", "11\r%1POWR 0"}),
              "the parameter of AVMT cannot be sent");
    EXPECT_THAT(simulator.lines(), IsEmpty());
}

TEST(PjlinkSession, AMebibyteWithoutALineEndIsCutOffEarly) {
    const PjlinkSimulator simulator({"--endless", "1048576"});
    std::string fault;
    const auto time = timeOf([&] { fault = askOnce(simulator, patientSettings()); });
    EXPECT_EQ(fault, "it sent more than 1024 bytes without a line");
    EXPECT_LT(time, PATIENT);
}

TEST(PjlinkSession, AFloodOfLinesIsAFault) {
    const PjlinkSimulator simulator({"--flood", "4194304"});
    EXPECT_THAT(askOnce(simulator, patientSettings()),
                testing::AnyOf("it sent what nobody asked for", "it answered CLSS ? with \"%1POWR=1\""));
}

}  // namespace

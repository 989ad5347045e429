#include "DeviceFramework2/detail/PjlinkProtocol.h"

#include "DeviceTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace device_testing;
using namespace Veltrani::DeviceFramework2;
using namespace Veltrani::DeviceFramework2Detail;
using testing::HasSubstr;
using testing::Not;

const PjlinkRequest CLASS_QUESTION{'1', "CLSS", "?"};

PjlinkProtocol protocol() {
    return {L"020000000001", patientSettings().passwords};
}

/// A protocol whose projector has greeted and wants no login.
PjlinkProtocol greeted() {
    PjlinkProtocol session = protocol();
    session.receive("PJLINK 0\r");
    return session;
}

TEST(PjlinkProtocol, GreetsThenCarriesOneRequestAtATime) {
    PjlinkProtocol session = protocol();
    EXPECT_FALSE(session.isIdle());
    session.receive("PJLINK 0\r");
    ASSERT_TRUE(session.isIdle());
    EXPECT_EQ(session.takeReply(), std::nullopt);
    EXPECT_EQ(session.send(CLASS_QUESTION), "%1CLSS ?\r");
    EXPECT_FALSE(session.isIdle());
    session.receive("%1CLSS=2\r");
    ASSERT_TRUE(session.isIdle());
    EXPECT_EQ(session.takeReply().value().value, "2");
    EXPECT_EQ(session.takeReply(), std::nullopt) << "once";
}

TEST(PjlinkProtocol, ALineMayArriveInPiecesOfAnySize) {
    PjlinkProtocol session = protocol();
    for (const char byte : std::string("\r\nPJLINK 0\r\n")) {
        session.receive(std::string(1, byte));
    }
    ASSERT_TRUE(session.isIdle());
    static_cast<void>(session.send(CLASS_QUESTION));
    for (const char byte : std::string("%1CLSS=1")) {
        session.receive(std::string(1, byte));
        EXPECT_FALSE(session.isIdle());
    }
    session.receive("\n");
    EXPECT_EQ(session.takeReply().value().value, "1");
}

TEST(PjlinkProtocol, TheLoginGoesBeforeTheFirstRequestOnly) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", "JBMIAProjectorLink");
    PjlinkProtocol session = protocol();
    session.receive("PJLINK 1 498e4a67\r");
    EXPECT_EQ(session.send(CLASS_QUESTION), "5d8409bc1c3fa39749434aa3a5c38682%1CLSS ?\r");
    session.receive("%1CLSS=1\r");
    EXPECT_EQ(session.send(CLASS_QUESTION), "%1CLSS ?\r");
}

TEST(PjlinkProtocol, AMissingPasswordIsAFaultOfThisMachine) {
    PjlinkProtocol session = protocol();
    try {
        session.receive("PJLINK 1 498e4a67\r");
        FAIL() << "no fault";
    } catch (const DeviceException& fault) {
        EXPECT_EQ(fault.cause, DeviceException::Cause::THIS_MACHINE);
    }
}

TEST(PjlinkProtocol, AGreetingWithAWrongSeedIsNoGreeting) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", "secret");
    for (const std::string seed : {"", "498e4a6", "498e4a677", "498e4a6g", "498e 4a6"}) {
        PjlinkProtocol session = protocol();
        const std::string fault = faultOf([&] { session.receive("PJLINK 1 " + seed + "\r"); });
        EXPECT_EQ(fault, "it greeted with \"PJLINK 1 " + seed + "\", which is not PJLink");
    }
}

TEST(PjlinkProtocol, WhatComesUnaskedEndsTheSessionBeforeTheNextRequest) {
    for (const std::string extra : {"%1CLSS=1\r", "x", "\r\nx"}) {
        PjlinkProtocol early = protocol();
        early.receive("PJLINK 0\r" + extra);
        EXPECT_EQ(faultOf([&] { static_cast<void>(early.send(CLASS_QUESTION)); }), "it sent what nobody asked for");
        PjlinkProtocol late = greeted();
        late.receive(extra);
        EXPECT_EQ(faultOf([&] { static_cast<void>(late.send(CLASS_QUESTION)); }), "it sent what nobody asked for");
    }
    PjlinkProtocol harmless = greeted();
    harmless.receive("\r\n\r\n");
    EXPECT_EQ(harmless.send(CLASS_QUESTION), "%1CLSS ?\r");
}

TEST(PjlinkProtocol, AnEndIsAFaultAtAnyTime) {
    const std::string end;
    EXPECT_EQ(faultOf([&] { protocol().receive(end); }), "it closed the connection without an answer");
    EXPECT_EQ(faultOf([&] { greeted().receive(end); }), "it closed the connection");
    PjlinkProtocol session = greeted();
    static_cast<void>(session.send(CLASS_QUESTION));
    session.receive("%1CLSS=");
    EXPECT_EQ(faultOf([&] { session.receive(end); }), "it closed the connection without an answer");
}

TEST(PjlinkProtocol, TheLoginIsInNoMessage) {
    const Environment password("SM_TEST_PJLINK_PASSWORD", "JBMIAProjectorLink");
    for (const std::string reply : {"%1XXXX=5d8409bc1c3fa39749434aa3a5c38682\r", "PJLINK ERRA\r", "nonsense\r"}) {
        PjlinkProtocol session = protocol();
        session.receive("PJLINK 1 498e4a67\r");
        static_cast<void>(session.send(CLASS_QUESTION));
        const std::string fault = faultOf([&] { session.receive(reply); });
        EXPECT_NE(fault, "no fault");
        EXPECT_THAT(fault, Not(HasSubstr("5d8409bc")));
        EXPECT_THAT(fault, Not(HasSubstr("JBMIA")));
    }
    PjlinkProtocol session = protocol();
    session.receive("PJLINK 1 498e4a67\r");
    static_cast<void>(session.send(CLASS_QUESTION));
    session.receive("%1CLSS=1\r");
    static_cast<void>(session.send(CLASS_QUESTION));
    EXPECT_EQ(faultOf([&] { session.receive("5d8409bc1c3fa39749434aa3a5c38682\r"); }),
              "it sent the login back, so it is no projector")
        << "not with a later reply either";
}

}  // namespace

#include "DeviceFramework2/detail/PjlinkMessages.h"

#include "DeviceTesting.h"

#include <gtest/gtest.h>

namespace {

using device_testing::faultOf;
using Veltrani::DeviceFramework2Detail::PjlinkReply;
using Veltrani::DeviceFramework2Detail::PjlinkRequest;
using Outcome = PjlinkReply::Outcome;

TEST(PjlinkReply, AValueIsKeptAsSent) {
    const auto reply = PjlinkReply::parse("%1NAME=Left wall = \xc3\xbc");
    ASSERT_TRUE(reply.has_value());
    EXPECT_EQ(reply->outcome, Outcome::VALUE);
    EXPECT_EQ(reply->body, "NAME");
    EXPECT_EQ(reply->value, "Left wall = \xc3\xbc");
    EXPECT_EQ(PjlinkReply::parse("%2SNUM=").value().value, "");
}

TEST(PjlinkReply, EveryStandardAnswerIsKnownInAnyCase) {
    EXPECT_EQ(PjlinkReply::parse("%1POWR=OK").value().outcome, Outcome::DONE);
    EXPECT_EQ(PjlinkReply::parse("%1powr=ok").value().outcome, Outcome::DONE);
    EXPECT_EQ(PjlinkReply::parse("%1powr=ok").value().body, "POWR");
    EXPECT_EQ(PjlinkReply::parse("%1POWR=ERR1").value().outcome, Outcome::UNKNOWN_COMMAND);
    EXPECT_EQ(PjlinkReply::parse("%1POWR=Err2").value().outcome, Outcome::BAD_PARAMETER);
    EXPECT_EQ(PjlinkReply::parse("%2POWR=ERR3").value().outcome, Outcome::NOT_NOW);
    EXPECT_EQ(PjlinkReply::parse("%1POWR=err4").value().outcome, Outcome::FAILURE);
    EXPECT_EQ(PjlinkReply::parse("PJLINK ERRA").value().outcome, Outcome::LOGIN_REFUSED);
    EXPECT_EQ(PjlinkReply::parse("PJLink erra").value().outcome, Outcome::LOGIN_REFUSED);
}

TEST(PjlinkReply, WhatOnlyBeginsLikeAStandardAnswerIsAValue) {
    EXPECT_EQ(PjlinkReply::parse("%1NAME=OKAY").value().outcome, Outcome::VALUE);
    EXPECT_EQ(PjlinkReply::parse("%1NAME=ERR5").value().outcome, Outcome::VALUE);
    EXPECT_EQ(PjlinkReply::parse("%1NAME= OK").value().outcome, Outcome::VALUE);
}

TEST(PjlinkReply, ABodyIsOfLettersAndDigitsUpToTheirEnds) {
    EXPECT_EQ(PjlinkReply::parse("%1A0Z9=1").value().body, "A0Z9");
    for (const char* line : {"%1PO@R=1", "%1PO[R=1", "%1PO/R=1", "%1PO:R=1"}) {
        EXPECT_FALSE(PjlinkReply::parse(line).has_value()) << line;
    }
}

TEST(PjlinkReply, AnythingElseIsNone) {
    for (const char* line :
         {"", "%", "%1", "%1POWR", "%1POWR 1", "%1POW=1", "%3POWR=1", "%0POWR=1", "1POWR=1", " %1POWR=1", "%1PO R=1",
          "%1PO\xc3\xbc=1", "PJLINK 0", "PJLINK ERRA ", "garbage", "%1POWR?=1"}) {
        EXPECT_FALSE(PjlinkReply::parse(line).has_value()) << line;
    }
}

TEST(PjlinkReply, EveryOutcomeIsDescribedDifferently) {
    const Outcome all[] = {Outcome::VALUE,   Outcome::DONE,    Outcome::UNKNOWN_COMMAND, Outcome::BAD_PARAMETER,
                           Outcome::NOT_NOW, Outcome::FAILURE, Outcome::LOGIN_REFUSED};
    for (const Outcome a : all) {
        for (const Outcome b : all) {
            EXPECT_EQ(PjlinkReply::describe(a) == PjlinkReply::describe(b), a == b);
        }
    }
}

TEST(PjlinkRequest, IsOneLine) {
    EXPECT_EQ((PjlinkRequest{'1', "POWR", "?"}.line()), "%1POWR ?\r");
    EXPECT_EQ((PjlinkRequest{'2', "INPT", "5A"}.line()), "%2INPT 5A\r");
    EXPECT_EQ((PjlinkRequest{'2', "INPT", "5A"}.text()), L"INPT 5A");
}

TEST(PjlinkRequest, CannotSmuggleInASecondCommandOrExceedTheStandard) {
    EXPECT_EQ(faultOf([] {
                  static_cast<void>(PjlinkRequest{'1', "AVMT", "11\r%1POWR 0"}.line());
              }),
              "the parameter of AVMT cannot be sent");
    EXPECT_EQ(faultOf([] {
                  static_cast<void>(PjlinkRequest{'1', "AVMT", "11\n"}.line());
              }),
              "the parameter of AVMT cannot be sent");
    EXPECT_EQ((PjlinkRequest{'1', "AVMT", std::string(128, 'x')}.line().size()), 136U);
    EXPECT_EQ(faultOf([] {
                  static_cast<void>(PjlinkRequest{'1', "AVMT", std::string(129, 'x')}.line());
              }),
              "the parameter of AVMT cannot be sent");
}

}  // namespace

#include "DeviceFramework2/detail/PjlinkMessages.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DeviceFramework2Detail::PjlinkGreeting;
using Veltrani::DeviceFramework2Detail::pjlinkLoginDigest;
using Kind = PjlinkGreeting::Kind;

TEST(PjlinkGreeting, TheThreeGreetingsAreRead) {
    const auto open = PjlinkGreeting::parse("PJLINK 0");
    ASSERT_TRUE(open.has_value());
    EXPECT_EQ(open->kind, Kind::OPEN);
    const auto login = PjlinkGreeting::parse("PJLINK 1 498e4a67");
    ASSERT_TRUE(login.has_value());
    EXPECT_EQ(login->kind, Kind::LOGIN);
    EXPECT_EQ(login->seed, "498e4a67");
    const auto refused = PjlinkGreeting::parse("PJLINK ERRA");
    ASSERT_TRUE(refused.has_value());
    EXPECT_EQ(refused->kind, Kind::REFUSED);
}

TEST(PjlinkGreeting, CaseMattersOnlyInTheSeed) {
    EXPECT_EQ(PjlinkGreeting::parse("pjlink 1 498E4a67").value().seed, "498E4a67");
    EXPECT_EQ(PjlinkGreeting::parse("PJLink erra").value().kind, Kind::REFUSED);
}

TEST(PjlinkGreeting, AnythingElseIsNone) {
    for (const char* line : {"", "PJLINK", "PJLINK ", "PJLINK 1", "PJLINK 1 ", "PJLINK 1 498e4a6", "PJLINK 1 498e4a677",
                             "PJLINK 1 498e4a6g", "PJLINK 2 498e4a67", "PJLINK 0 ", " PJLINK 0", "PJLINK  0",
                             "PJLINK ERR1", "SSH-2.0-OpenSSH_9.2", "%1POWR=1", "HTTP/1.1 400 Bad Request"}) {
        EXPECT_FALSE(PjlinkGreeting::parse(line).has_value()) << line;
    }
}

// The two published examples of the standard.
TEST(PjlinkLogin, TheDigestIsThatOfThePublishedExamples) {
    EXPECT_EQ(pjlinkLoginDigest("498e4a67", "JBMIAProjectorLink"), "5d8409bc1c3fa39749434aa3a5c38682");
    EXPECT_EQ(pjlinkLoginDigest("61fa922e", "12345678"), "5ad047bf382a444610f5785503f77783");
}

// MD5 of nothing, from its own standard.
TEST(PjlinkLogin, TheDigestIsMd5) {
    EXPECT_EQ(pjlinkLoginDigest("", ""), "d41d8cd98f00b204e9800998ecf8427e");
}

}  // namespace

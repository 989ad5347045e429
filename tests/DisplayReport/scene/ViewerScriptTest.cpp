#include "DisplayReport/scene/ViewerScript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;
using testing::Not;

TEST(ViewerScript, CannotEndItsElement) {
    const std::string script(viewerScript());
    EXPECT_GT(script.size(), 100000U);
    EXPECT_THAT(script, Not(HasSubstr("</script")));
    EXPECT_THAT(script, Not(HasSubstr("<!--")));
    EXPECT_TRUE(std::all_of(script.begin(), script.end(), [](char c) { return static_cast<unsigned char>(c) < 128; }));
    EXPECT_THAT(script, HasSubstr("Permission is hereby granted, free of charge")) << "the licence of the 3D library";
}

TEST(ViewerScript, ReachesForNoNetwork) {
    const std::string script(viewerScript());
    for (const char* way : {"importScripts(", "new WebSocket", "EventSource(", "sendBeacon"}) {
        EXPECT_THAT(script, Not(HasSubstr(way)));
    }
}

}  // namespace

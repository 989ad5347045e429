#include "ExportFiles/ExportViews.h"

#include "Common/VeltraniException.h"
#include "ExportedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Veltrani::ExportFiles::ExportView;
using Veltrani::ExportFiles::ExportViews;
using Eyes = std::vector<Point<double, 3>>;

const std::string CHANNELS =
    "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Centre x='0' y='5' z='1'/>"
    "<Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>"
    "<Projector id='P1'><Name>Left</Name><Resolution width='32' height='16'/>"
    "<ScreenArea left='0' right='0.5' bottom='0' top='1'/></Projector>"
    "<Projector id='P2'><Name>Right</Name><Resolution width='32' height='16'/>"
    "<ScreenArea left='0.5' right='1' bottom='0' top='1'/></Projector></Projectors></Display>";

/// Which channel each view is of, and which eye sees it.
std::vector<std::pair<std::size_t, std::size_t>> channelsAndEyes(const std::vector<ExportView>& views) {
    std::vector<std::pair<std::size_t, std::size_t>> found;
    for (const ExportView& view : views) {
        found.emplace_back(view.channel.index, view.eye ? view.eyeNumber : 0);
    }
    return found;
}

TEST(ExportViewsTest, HasEveryChannelUnlessSomeAreStated) {
    const auto config = XMLConfigFile::parse(CHANNELS, "display.xml");
    EXPECT_THAT(channelsAndEyes(ExportViews::of(*config, {}, {})), ElementsAre(Pair(0, 0), Pair(1, 0)));
    EXPECT_THAT(channelsAndEyes(ExportViews::of(*config, {"Right"}, {})), ElementsAre(Pair(1, 0)));
}

TEST(ExportViewsTest, HasEachChannelOnceInTheOrderOfTheConfiguration) {
    const auto config = XMLConfigFile::parse(CHANNELS, "display.xml");
    EXPECT_THAT(channelsAndEyes(ExportViews::of(*config, {"P2", "Left", "Right"}, {})),
                ElementsAre(Pair(0, 0), Pair(1, 0)));
}

TEST(ExportViewsTest, HasEveryEyeOfEachChannel) {
    const auto config = XMLConfigFile::parse(CHANNELS, "display.xml");
    const auto views = ExportViews::of(*config, {}, Eyes{{0, 0, 1}, {0.5, 0, 1}});
    EXPECT_THAT(channelsAndEyes(views), ElementsAre(Pair(0, 1), Pair(0, 2), Pair(1, 1), Pair(1, 2)));
    EXPECT_EQ(*views[3].eye, (Point<double, 3>{0.5, 0, 1}));
    EXPECT_EQ(views[3].eyes, 2U);
}

TEST(ExportViewsTest, RefusesAChannelThatTheDisplayDoesNotHave) {
    const auto config = XMLConfigFile::parse(CHANNELS, "display.xml");
    EXPECT_THROW(static_cast<void>(ExportViews::of(*config, {"Left", "Middle"}, {})), VeltraniException);
}

TEST(ExportViewsTest, PlacesTheTargetsOfTheChannelOfEachView) {
    const exported_displays::ExportedChannel display(CHANNELS);
    auto views = ExportViews::of(display.config(), {"Right"}, {});
    std::size_t calls = 0;
    ExportViews::placeTargets(display.config(), views, [&calls](std::size_t, std::size_t) { ++calls; });
    EXPECT_EQ(views.front().targets.size(), 160U) << "a grid of 16 x 10";
    EXPECT_EQ(calls, 3U) << "before each channel, and at the end";
    for (const Point<double, 2>& target : views.front().targets) {
        EXPECT_TRUE(target[0] >= 0 && target[0] <= 1 && target[1] >= 0 && target[1] <= 1);
    }
}

TEST(ExportViewsTest, LeavesAChannelWithoutTargetsWithNone) {
    std::string text = CHANNELS;
    const std::string area = "left='0.5' right='1'";
    text.replace(text.find(area), area.size(), "left='1.5' right='2'");
    const exported_displays::ExportedChannel display(text);
    auto views = ExportViews::of(display.config(), {}, {});
    ExportViews::placeTargets(display.config(), views, {});
    EXPECT_EQ(views.front().targets.size(), 160U);
    EXPECT_THAT(views.back().targets, IsEmpty());
}

}  // namespace

#include "ScreenManager/Channel.h"

#include "Common/VeltraniException.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/TargetLocator.h"
#include "support/ProjectorConfigDouble.h"
#include "support/Trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace {

using Grid = std::map<Point<int, 2>, Point<double, 3>>;
using testing::ElementsAre;
using testing::IsEmpty;

/// A locator that writes down what it is asked and answers one point.
class LocatorDouble : public TargetLocator, public Recorder {
public:
    explicit LocatorDouble(Trace* trace) : Recorder("locator", trace) {}

    void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                        Grid& grid) const override {
        record("project", uMin, uMax, vMin, vMax, columns, rows);
        grid[{columns, rows}] = {1.0, 2.0, 3.0};
    }
    const TargetLocatorParams& getTargetLocatorParams() const override { return m_params; }
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const override {
        record("projectBoundary", samplesPerEdge);
        return {{4.0, 5.0, 6.0}};
    }

private:
    PlanarTargetLocatorParams m_params;
};

class ChannelTest : public testing::Test {
protected:
    Trace trace;
    ProjectorConfigDouble entry{L"020000000001", &trace};
    Channel channel{L"Left", &entry, L"020000000001", 3, -4};
    std::shared_ptr<LocatorDouble> locator = std::make_shared<LocatorDouble>(&trace);
};

TEST_F(ChannelTest, AnswersWhatItWasMadeFrom) {
    EXPECT_EQ(channel.getName(), L"Left");
    EXPECT_EQ(channel.getProjectorConfigId(), L"020000000001");
    EXPECT_EQ(channel.getConfig(), &entry);
    EXPECT_EQ(std::as_const(channel).getConfig(), &entry);
    EXPECT_EQ(channel.getChannelId(), Channel::Id("Left"));
    EXPECT_EQ(channel.getProjectorId(), Channel::ProjectorId("020000000001"));
    int x = 0;
    int y = 0;
    channel.getChannelLocation(x, y);
    EXPECT_EQ(std::make_pair(x, y), std::make_pair(3, -4));
    EXPECT_THAT(trace.lines(), IsEmpty()) << "the entry is not asked";
}

TEST_F(ChannelTest, HandsAConstantEntryOutOfAConstantChannel) {
    static_assert(std::is_same_v<decltype(std::declval<const Channel&>().getConfig()), const ProjectorConfig*>);
    static_assert(std::is_same_v<decltype(std::declval<Channel&>().getConfig()), ProjectorConfig*>);
}

TEST_F(ChannelTest, TheLocationIsStored) {
    channel.setChannelLocation(-2147483647 - 1, 2147483647);
    int x = 0;
    int y = 0;
    channel.getChannelLocation(x, y);
    EXPECT_EQ(x, -2147483647 - 1);
    EXPECT_EQ(y, 2147483647);
}

TEST_F(ChannelTest, ChannelsThatDifferInTheLocatorOnlyAreEqual) {
    Channel other = channel;
    other.setTargetLocator(locator);
    EXPECT_TRUE(channel == other);
    other.setTargetLocator(nullptr);
    EXPECT_TRUE(channel == other);
}

TEST_F(ChannelTest, EveryOtherFieldMakesADifference) {
    ProjectorConfigDouble twin(L"020000000001");
    EXPECT_TRUE(channel == Channel(L"Left", &entry, L"020000000001", 3, -4));
    EXPECT_FALSE(channel == Channel(L"left", &entry, L"020000000001", 3, -4));
    EXPECT_FALSE(channel == Channel(L"Left", &twin, L"020000000001", 3, -4));
    EXPECT_FALSE(channel == Channel(L"Left", nullptr, L"020000000001", 3, -4));
    EXPECT_FALSE(channel == Channel(L"Left", &entry, L"020000000002", 3, -4));
    EXPECT_FALSE(channel == Channel(L"Left", &entry, L"020000000001", 4, -4));
    EXPECT_FALSE(channel == Channel(L"Left", &entry, L"020000000001", 3, 4));
}

TEST_F(ChannelTest, TheIdOfANonAsciiNameIsItsUtf8) {
    const Channel umlaut(L"K\u00f6ln \u6771 \U0001f3a5", &entry, L"P\u00e4", 0, 0);
    EXPECT_EQ(umlaut.getChannelId().value(), "K\xc3\xb6ln \xe6\x9d\xb1 \xf0\x9f\x8e\xa5");
    EXPECT_GT(umlaut.getChannelId().value().size(), umlaut.getName().size());
    EXPECT_EQ(umlaut.getProjectorId().value(), "P\xc3\xa4");
}

TEST_F(ChannelTest, ANameThatIsEmptyOrNoTextHasAnEmptyId) {
    const std::wstring loneSurrogate(1, static_cast<wchar_t>(0xD800));
    EXPECT_EQ(Channel(L"", &entry, L"P", 0, 0).getChannelId(), Channel::Id());
    EXPECT_EQ(Channel(L"Left" + loneSurrogate, &entry, L"P", 0, 0).getChannelId(), Channel::Id());
    EXPECT_EQ(Channel(L"Left", &entry, loneSurrogate, 0, 0).getProjectorId(), Channel::ProjectorId());
}

TEST_F(ChannelTest, RenamingChangesTheId) {
    channel.setName(L"Right");
    EXPECT_EQ(channel.getChannelId(), Channel::Id("Right"));
}

TEST_F(ChannelTest, IncludesItsProjectorByTheConfigurationIdAndNotByTheName) {
    const Channel misleading(L"020000000009", &entry, L"020000000001", 0, 0);
    EXPECT_TRUE(misleading.includesProjector(Channel::ProjectorId("020000000001")));
    EXPECT_FALSE(misleading.includesProjector(Channel::ProjectorId("020000000009")));
    EXPECT_FALSE(misleading.includesProjector(Channel::ProjectorId("02000000000")));
    EXPECT_FALSE(misleading.includesProjector(Channel::ProjectorId()));
    const Channel umlaut(L"", &entry, L"P\u00e4", 0, 0);
    EXPECT_TRUE(umlaut.includesProjector(Channel::ProjectorId("P\xc3\xa4")));
    EXPECT_FALSE(umlaut.includesProjector(Channel::ProjectorId("P\xe4"))) << "not another encoding";
}

TEST_F(ChannelTest, RenamingRenamesTheEntry) {
    channel.setName(L"Links au\u00dfen");
    EXPECT_EQ(channel.getName(), L"Links au\u00dfen");
    EXPECT_EQ(entry.name, L"Links au\u00dfen");
    EXPECT_THAT(trace.lines(), ElementsAre("projector.setName(\"Links au\xc3\x9f"
                                           "en\")"));
}

TEST_F(ChannelTest, RenamingToItsOwnNameStillRenamesTheEntry) {
    entry.name = L"stale";
    channel.setName(channel.getName());
    EXPECT_EQ(channel.getName(), L"Left");
    EXPECT_EQ(entry.name, L"Left");
}

TEST_F(ChannelTest, ANameThatTheEntryRefusesIsTheChannelsAlready) {
    entry.name = L"Left";
    entry.throwFrom("setName", std::runtime_error("refused"));
    EXPECT_THROW(channel.setName(L"Right"), std::runtime_error);
    EXPECT_EQ(channel.getName(), L"Right");
    EXPECT_EQ(channel.getChannelId(), Channel::Id("Right"));
    EXPECT_EQ(entry.name, L"Left");
    EXPECT_THAT(trace.lines(), ElementsAre("projector.setName(\"Right\")")) << "handed over once";
}

TEST_F(ChannelTest, RenamingWithoutAnEntryIsAFaultThatNamesTheChannel) {
    Channel homeless(L"Left", nullptr, L"P", 0, 0);
    try {
        homeless.setName(L"Right");
        FAIL() << "renamed";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"setName: channel \"Left\" has no configuration entry");
        EXPECT_NE(fault.line, -1);
        EXPECT_NE(fault.file.find("Channel.cpp"), std::string::npos);
    }
    EXPECT_EQ(homeless.getName(), L"Left");
}

TEST_F(ChannelTest, CopiesShareTheLocator) {
    channel.setTargetLocator(locator);
    const Channel copy = channel;
    EXPECT_EQ(locator.use_count(), 3);
    Channel assigned(L"", nullptr, L"", 0, 0);
    assigned = copy;
    EXPECT_EQ(locator.use_count(), 4);
    EXPECT_TRUE(assigned == channel);
}

TEST_F(ChannelTest, MovesTakeTheLocatorOver) {
    channel.setTargetLocator(locator);
    const Channel original = channel;
    Channel moved = std::move(channel);
    EXPECT_EQ(locator.use_count(), 3) << "this handle, the original's, the moved channel's";
    Channel assigned(L"", nullptr, L"", 0, 0);
    assigned = std::move(moved);
    EXPECT_EQ(locator.use_count(), 3);
    EXPECT_TRUE(assigned == original);
    static_assert(std::is_nothrow_move_constructible_v<Channel> && std::is_nothrow_move_assignable_v<Channel>);
}

TEST_F(ChannelTest, TheLocatorLivesUntilItsLastHolderLetsGo) {
    const std::weak_ptr<const TargetLocator> watch = locator;
    {
        Channel holder = channel;
        holder.setTargetLocator(std::move(locator));
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_TRUE(watch.expired());
}

TEST_F(ChannelTest, PlacingTargetsPassesEveryArgumentOnUnchanged) {
    channel.setTargetLocator(locator);
    Grid grid{{{9, 9}, {0.0, 0.0, 0.0}}};
    channel.projectOnTargetLocationSurface(0.1, 0.9, 0.8, 0.2, 7, 5, grid);
    EXPECT_THAT(trace.lines(), ElementsAre("locator.project(0.1, 0.9, 0.8, 0.2, 7, 5)"));
    EXPECT_EQ(grid, (Grid{{{7, 5}, {1.0, 2.0, 3.0}}, {{9, 9}, {0.0, 0.0, 0.0}}})) << "the grid itself is handed on";
}

TEST_F(ChannelTest, PlacingTargetsWithoutALocatorIsAFaultThatNamesTheChannel) {
    Grid grid;
    try {
        channel.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
        FAIL() << "placed";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"projectOnTargetLocationSurface: channel \"Left\" has no target locator");
        EXPECT_NE(fault.line, -1);
        EXPECT_NE(fault.file.find("Channel.cpp"), std::string::npos);
    }
    EXPECT_TRUE(grid.empty());
}

TEST_F(ChannelTest, TheBoundaryIsTheLocators) {
    channel.setTargetLocator(locator);
    EXPECT_THAT(channel.projectBoundaryOnTargetLocationSurface(-12), ElementsAre(Point<double, 3>{4.0, 5.0, 6.0}));
    EXPECT_THAT(trace.lines(), ElementsAre("locator.projectBoundary(-12)"));
}

TEST_F(ChannelTest, WithoutALocatorTheBoundaryIsEmptyAndNothingFails) {
    EXPECT_THAT(channel.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
}

TEST_F(ChannelTest, ADerivedRecordStartsWithoutNameIdAndLocator) {
    struct Derived : Channel {
        Derived() = default;
    };
    static_assert(!std::is_default_constructible_v<Channel>);
    const Derived empty;
    EXPECT_EQ(empty.getName(), L"");
    EXPECT_EQ(empty.getProjectorConfigId(), L"");
    EXPECT_THAT(empty.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
}

}  // namespace

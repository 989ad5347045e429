#include "DisplayReport/basics/ChannelPalette.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace {

using namespace Veltrani::DisplayReport;

TEST(ChannelPalette, SixteenChannelsHaveColoursOfTheirOwn) {
    std::set<std::string> colours;
    for (std::size_t channel = 0; channel < 16; ++channel) {
        colours.insert(hexText(channelColour(channel)));
    }
    EXPECT_EQ(colours.size(), 16U);
    EXPECT_EQ(channelColour(16), channelColour(0));
    EXPECT_EQ(hexText(channelColour(0)), "#e69f00");
    EXPECT_EQ(hexText(channelColour(2)), "#009e73");
}

/// As eyes weigh the three lights, of the standard for screens; between 0 and 1.
double brightness(const Colour& colour) {
    const auto light = [](unsigned char part) { return std::pow(part / 255.0, 2.2); };
    return 0.2126 * light(colour.red) + 0.7152 * light(colour.green) + 0.0722 * light(colour.blue);
}

TEST(ChannelPalette, CountsGrowBrighterUpToThree) {
    for (std::size_t count = 1; count < 4; ++count) {
        EXPECT_GT(brightness(countColour(count)), 1.3 * brightness(countColour(count - 1))) << count;
    }
    EXPECT_EQ(countColour(4), countColour(3));
}

TEST(ChannelPalette, ColoursMixByShare) {
    EXPECT_EQ(mixed({0, 100, 200}, {100, 100, 100}, 0.5), (Colour{50, 100, 150}));
    EXPECT_EQ(mixed({1, 2, 3}, {9, 9, 9}, 0), (Colour{1, 2, 3}));
    EXPECT_EQ(mixed({1, 2, 3}, {9, 9, 9}, 1), (Colour{9, 9, 9}));
}

}  // namespace

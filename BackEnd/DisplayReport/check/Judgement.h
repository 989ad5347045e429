#pragma once

#include "DisplayReport/check/DisplayFacts.h"
#include "DisplayReport/check/FindingList.h"

#include <string>
#include <string_view>

/// The rules, each a small function over the facts. What a number means in a rule stands in the list of rules.
namespace Veltrani::DisplayReport {

/// A display with a screen, and where its findings go.
struct ScreenCase {
    const DisplayFacts& display;
    const IScreenConfig& screen;
    FindingList& found;

    void report(std::string_view rule, const std::string& where, const std::string& what) const {
        found.add(Rule::named(rule), where, display.allowed, what);
    }
};

/// One channel of a display, and where its findings go.
struct ChannelCase {
    const DisplayFacts& display;
    const ChannelFacts& channel;
    const ProjectorConfig& projector;
    FindingList& found;

    void report(std::string_view rule, const std::string& what) const {
        found.add(Rule::named(rule), channel.where(), channel.allowed(), what);
    }
};

/// The rules about the numbers of the screen, the eye and the target data.
void judgeScreen(const DisplayFacts& display, FindingList& found);

/// The rules about how the surface lies and runs.
void judgeSurface(const DisplayFacts& display, FindingList& found);

/// The rules about where the screen lies around the eye.
void judgePlace(const DisplayFacts& display, FindingList& found);

/// The rules about what was measured, mesh and cloud, against what was designed.
void judgeMeasured(const DisplayFacts& display, FindingList& found);

/// The rules about the numbers of single channels.
void judgeChannels(const DisplayFacts& display, FindingList& found);

/// The rules about what a channel sees through its frustum or its lens; `judgeChannels` calls it.
void judgeView(const ChannelCase& c);

/// The rule about files that were made for a picture of `size` pixels.
/// @param what the file, "map left.map"
/// @param made what was done with it for these pixels, "made"
void judgePixels(const ChannelCase& c, const std::string& what, const std::string& made, const Point<double, 2>& size);

/// The rules about the resolutions of pictures, and their shapes.
void judgePictures(const DisplayFacts& display, FindingList& found);

/// The rules about where the light of single channels lands; nothing where it was not measured.
void judgeLight(const DisplayFacts& display, FindingList& found);

/// The rules about the devices of channels, and whether two channels have one.
void judgeDevices(const DisplayFacts& display, FindingList& found);

/// The rules about channels beside each other: names, copies.
void judgeSets(const DisplayFacts& display, FindingList& found);

/// The rules about one channel among others that are alike.
void judgeGroups(const DisplayFacts& display, FindingList& found);

/// The rule about names that hold a side, against where the eye sees the pictures.
void judgeNamedSides(const DisplayFacts& display, FindingList& found);

}  // namespace Veltrani::DisplayReport

#pragma once

#include "DisplayReport/check/DisplayFacts.h"
#include "DisplayReport/check/FindingList.h"

/// The rules, each a small function over the facts. What a number means in a rule stands in the list of rules.
namespace Veltrani::DisplayReport {

/// The rules about the screen, its files, the eye and the target data.
void judgeScreen(const DisplayFacts& display, FindingList& found);

/// The rules about the numbers of single channels.
void judgeChannels(const DisplayFacts& display, FindingList& found);

/// The rules about where the light of single channels lands; nothing where it was not measured.
void judgeLight(const DisplayFacts& display, FindingList& found);

/// The rules about channels beside each other: names, devices, copies.
void judgeSets(const DisplayFacts& display, FindingList& found);

/// The rule about names that hold a side, against where the eye sees the pictures.
void judgeNamedSides(const DisplayFacts& display, FindingList& found);

}  // namespace Veltrani::DisplayReport

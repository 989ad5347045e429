#pragma once

#include <cstddef>

class TargetLocator;

namespace Veltrani::DisplayReport {

/// How many places an outline is sampled at, before those that miss the screen are left out: the kinds of locators step
/// along their edges in different ways.
///
/// @param samplesPerEdge zero or more, as the locator is asked for
[[nodiscard]] std::size_t outlineSamples(const TargetLocator& locator, int samplesPerEdge);

}  // namespace Veltrani::DisplayReport

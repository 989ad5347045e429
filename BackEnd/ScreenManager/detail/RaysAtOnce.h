#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <memory>

class TargetLocator;

/// True for the surfaces whose answers are known not to depend on when and in which order they are asked; others may
/// count, or change the screen while they are asked.
[[nodiscard]] bool answersInAnyOrder(const ScreenGeometry& screen);

/// The current screen, where its `intersectRays` answers many rays to the last bit as the locator's
/// `intersectWithTargetLocationSurface` answers them one by one, and nobody can tell that the locator was not asked.
/// Empty otherwise: for locators that reach the screen in a roundabout way or are of a class that is not known here,
/// for screens that are not known to answer in any order, and without a screen.
[[nodiscard]] std::shared_ptr<const ScreenGeometry> screenForRaysOf(const TargetLocator& locator);

#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <array>
#include <memory>
#include <span>
#include <string_view>

class IScreenConfig;

/// One shape that the description of a screen can name (`IScreenConfig::getShape`), and how its geometry is made.
struct ScreenShape {
    /// The name in the description; compared exactly.
    std::wstring_view name;
    /// The geometry of a description, never null; null itself for the shape whose surface is read from a file.
    std::shared_ptr<ScreenGeometry> (*make)(const IScreenConfig* screen) = nullptr;
    /// The hash of that geometry, without making it; null together with `make`.
    std::array<unsigned char, 20> (*hashOf)(const IScreenConfig* screen) = nullptr;

    /// Returns true for the shape that the content mesh of the description gives.
    [[nodiscard]] bool isReadFromFile() const { return make == nullptr; }

    /// Every shape there is. This is the only list of them that knows their classes.
    [[nodiscard]] static std::span<const ScreenShape> all();

    /// Returns the shape of this name; null for a name that no shape has.
    [[nodiscard]] static const ScreenShape* named(std::wstring_view name);

    /// Returns whether a description is of a shape that is read from a file; false for null.
    [[nodiscard]] static bool isReadFromFile(const IScreenConfig* screen);
};

#pragma once

#include "ScreenManager/LayoutMapFactory.h"

#include <cstddef>
#include <span>
#include <string_view>

class ProjectorConfig;
class TargetLocator;
class TargetLocatorManager;
class XMLConfigManager;

/// One kind of display, that is one type of target data (`TargetLocatorConfig::getTargetDataType`), with everything
/// that differs from kind to kind. Code that depends on the kind of a display looks it up here.
struct DisplayKind {
    /// What the place of a picture on the screen follows from.
    enum class Addressing {
        SCREEN_PARAMETERS,  ///< the 2D parameters of the screen
        EYE,                ///< rays from the target position
        PROJECTOR,          ///< rays from the position of the projector
    };

    /// What the layout is.
    enum class Layout {
        PLANE,   ///< a plane of its own, on which each channel has a rectangle; no screen is needed
        SCREEN,  ///< (s, 0, t), the 2D parameters of the screen
        WORLD,   ///< points in space
    };

    /// What the target locator of a channel is built from.
    enum class Source {
        SCREEN_AREA,
        FRUSTUM,
        FRUSTUM_AND_MIRROR,
        MAP_FILE,
        MODEL_OR_FRUSTUM,  ///< the projection model of the projector; its frustum where it names none
    };

    /// Makes the manager keep the locator of a projector; returns false when it cannot be built.
    using LocatorMaker = bool (*)(TargetLocatorManager& manager, const XMLConfigManager* config,
                                  const ProjectorConfig* projector);
    /// As `LayoutMapFactory::create`, for a configuration of this kind.
    using MapMaker = LayoutMap (*)(XMLConfigManager* config, bool useCache);

    /// The name in the configuration; compared exactly.
    std::wstring_view type;
    Addressing addressedBy;
    Layout layout;
    Source source;
    /// Whether the layout map counts in pixels, so that every picture needs a size.
    bool countsPixels;
    LocatorMaker makeLocator;
    MapMaker makeMap;

    /// Returns whether the display is seen in a mirror, beside whose middle its eye is given.
    [[nodiscard]] bool hasMirror() const { return source == Source::FRUSTUM_AND_MIRROR; }

    /// Every kind there is. This is the only list of them.
    [[nodiscard]] static std::span<const DisplayKind> all();

    /// Returns the kind of this type; null for a type that no kind has.
    [[nodiscard]] static const DisplayKind* named(std::wstring_view type);

    /// Returns the kind of the display that a configuration describes; null without target data and for an unknown
    /// type.
    [[nodiscard]] static const DisplayKind* of(const XMLConfigManager& config);
};

/// One kind of target locator, that is one class, with everything that callers need to know of a locator beside its
/// operations.
struct LocatorKind {
    /// How a point of the picture reaches the screen.
    enum class Path {
        UNKNOWN,      ///< nothing may be concluded from the record of the locator
        SCREEN_AREA,  ///< through the rectangle of a `PlanarTargetLocatorParams`
        MAP_FILE,     ///< through the file of a `CustomPlanarTargetLocatorParams`
        LENS,         ///< as a ray of the model of a `CustomProjectionTargetLocatorParams`
        FRUSTUM,      ///< as a ray of a `SphereTargetLocatorParams`, straight once its heading is bent
        MIRROR,       ///< as such a ray, by way of the mirror of a `CollimatedTargetLocatorParams`
        FOLLOWED,     ///< as such a ray, on a way that `SphereTargetLocator::locate` alone knows
    };

    /// What `intersectWithTargetLocationSurface` does with a ray.
    enum class Rays {
        OWN,        ///< what only the locator knows: it must be called for every ray
        STRAIGHT,   ///< intersects it with the current screen
        REFLECTED,  ///< intersects what `CollimatedTargetLocator::reflect` makes of it with the current screen
    };

    /// How many places an outline is sampled at, before those that miss the screen are left out.
    using OutlineCounter = std::size_t (*)(const TargetLocator& locator, int samplesPerEdge);

    Path path = Path::UNKNOWN;
    Rays rays = Rays::OWN;
    /// False where `projectOnTargetLocationSurface` throws.
    bool offersGrid = true;
    /// Whether the first row of a grid over the whole picture lies at the top of the picture.
    bool firstRowIsAtTheTop = true;
    /// Counts the samples of an outline; null where their number is not known.
    OutlineCounter outlineSamples = nullptr;

    /// Returns whether rays through a frustum make the grid, so that a single column or row has no extent.
    [[nodiscard]] bool looksThroughFrustum() const {
        return path == Path::FRUSTUM || path == Path::MIRROR || path == Path::FOLLOWED;
    }

    /// Returns the kind of a locator, by its exact class: a class derived from one of this library may replace what the
    /// rows state. One that is derived from `SphereTargetLocator` has a followed path; of every other class nothing is
    /// known. No operation of the locator is called.
    [[nodiscard]] static const LocatorKind& of(const TargetLocator& locator);
};

#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// How large the pixels of a channel are on the screen: the side of the square that covers as much of the surface as a
/// pixel does, in native units. Measured along the surface, so a pixel that arrives at a slant is larger; on a curved
/// screen it is the size on the tangent plane.
///
/// Right to less than a thousandth. Pixels that miss the screen or lie across an edge of it, in part, are left out, and
/// those across a fold of it unless there are no others. Where light grazes the surface, pixels grow beyond all bounds
/// towards the ray that touches it, each row of the picture to another last whole one: the greatest found is one of
/// them, and a larger one may be left.
struct PixelPitch {
    double least = 0;
    double most = 0;
    std::size_t measured = 0;  ///< pixels that were; none for a picture without pixels
};

/// What one channel does on the screen. Areas in square native units, along the surface.
struct ChannelCoverage {
    std::string name;         ///< UTF-8
    std::string projectorId;  ///< UTF-8
    int width = 0;            ///< of the picture, pixels; 0 when not known
    int height = 0;
    double area = 0;          ///< of the screen that it lights
    double landed = 0;        ///< part of its picture, 0 to 1, that lands on the screen
    PixelPitch pitch;         ///< the least and the most
    std::string fault;        ///< what is wrong with it, UTF-8; empty when nothing is
    bool isLighting = false;  ///< false when its light is not known, or nothing of it lands

    [[nodiscard]] double pixels() const;
    /// The part of its picture, 0 to 1, that misses the screen; 0 for less than 20 in a million.
    [[nodiscard]] double missed() const;
    /// The pitch of a pixel of mean area: the root of the lit area per pixel on it; 0 when no pixel lands.
    [[nodiscard]] double meanPitch() const;
};

/// Where two channels light the same part of the screen.
struct ChannelOverlap {
    std::size_t first = 0;  ///< places in the list of channels
    std::size_t second = 0;
    double area = 0;
    double partOfFirst = 0;   ///< of the first one's picture, 0 to 1
    double partOfSecond = 0;  ///< of the second one's
};

/// How the channels of a display cover its screen.
struct CoverageReport {
    std::string unit;   ///< name of the native unit
    std::string fault;  ///< why nothing could be measured, UTF-8; empty when something was
    double screenArea = 0;
    std::vector<double> areaByCount;        ///< lit by 0, 1, 2, ... channels
    std::vector<ChannelCoverage> channels;  ///< in configuration order
    std::vector<ChannelOverlap> overlaps;   ///< pairs that overlap, in configuration order

    /// The area that is lit by so many channels.
    [[nodiscard]] double areaLitBy(std::size_t channels) const;
    /// By so many channels and more.
    [[nodiscard]] double areaLitByAtLeast(std::size_t channels) const;
    /// A part of the screen, 0 to 1; 0 of a screen without area.
    [[nodiscard]] double partOfScreen(double area) const;
    /// True when every channel was measured and nothing is wrong with any.
    [[nodiscard]] bool complete() const;
};

/// A piece of the screen's surface, and how many channels light it.
struct CoveredPiece {
    std::array<Point<double, 3>, 3> corners;
    std::size_t channels = 0;
};

}  // namespace Veltrani::DisplayReport

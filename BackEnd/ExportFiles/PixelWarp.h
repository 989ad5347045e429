#pragma once

#include "ExportFiles/PlayerWarp.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ExportFiles {

/// A warp with one place of the input for the middle of each pixel. Between four middles a place shows what lies
/// between what they show.
class PixelWarp : public PlayerWarp {
public:
    /// The file of 32-bit numbers. Throws `VeltraniParseException`, naming the file, for anything else.
    /// @param wrapsAround whether the left edge of the input goes on at its right one
    [[nodiscard]] static std::unique_ptr<const PixelWarp> ofPfm(std::string_view bytes, const std::string& path,
                                                                bool wrapsAround);
    /// The picture of 16 bits. Throws `VeltraniParseException`, naming the file, for anything else.
    [[nodiscard]] static std::unique_ptr<const PixelWarp> ofPng(std::string_view bytes, const std::string& path,
                                                                bool wrapsAround);

    [[nodiscard]] const Point<int, 2>& pixels() const { return m_pixels; }

    [[nodiscard]] std::optional<Shown> shownAt(const Point<double, 2>& picture) const override;

private:
    /// Of the middle of a pixel.
    struct Entry {
        Point<double, 2> content;
        bool isMapped = false;
    };

    PixelWarp(const Point<int, 2>& pixels, bool wrapsAround);

    Point<int, 2> m_pixels;
    bool m_wrapsAround;
    std::vector<Entry> m_entries;  ///< row by row from the bottom
};

}  // namespace Veltrani::ExportFiles

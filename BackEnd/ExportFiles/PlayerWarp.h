#pragma once

#include "Common/Point.h"
#include "ExportFiles/ExportedDisplay.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::ExportFiles {

/// The warp of one channel as a player has it: from its file, with what the player interpolates in between.
class PlayerWarp {
public:
    /// What a place of the picture of the channel shows.
    struct Shown {
        Point<double, 2> content;  ///< place in the whole input, (0, 0) bottom left; a cube has six faces beside each
                                   ///< other. Beyond 0 and 1 where a panorama goes on
        Point<double, 2> alongU;   ///< how it changes with u of the picture, per unit
        Point<double, 2> alongV;   ///< and with v
    };

    virtual ~PlayerWarp();
    PlayerWarp(const PlayerWarp&) = delete;
    PlayerWarp& operator=(const PlayerWarp&) = delete;

    /// Of the formats that a view has, the one that its content was drawn by: triangles before a mesh, either before
    /// pixels. Null when it has none of them.
    ///
    /// Throws `VeltraniException`, naming the file, for one that cannot be read or is of another picture, and what
    /// `ExportedDisplay::bytesOf` throws.
    [[nodiscard]] static std::unique_ptr<const PlayerWarp> read(const ExportedDisplay& display,
                                                                const ExportedChannelView& view);
    /// A file of one of the formats "obj", "mesh", "pfm" and "png16".
    /// @param bytes of the file
    /// @param path of the file, for messages
    [[nodiscard]] static std::unique_ptr<const PlayerWarp> parse(std::string_view bytes, const std::string& path,
                                                                 const std::string& format,
                                                                 const ExportedChannelView& view);

    /// None where the warp shows nothing, and beyond the picture.
    [[nodiscard]] virtual std::optional<Shown> shownAt(const Point<double, 2>& picture) const = 0;

protected:
    PlayerWarp() = default;
};

}  // namespace Veltrani::ExportFiles

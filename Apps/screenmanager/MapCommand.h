#pragma once

#include "ColumnsByRows.h"
#include "DisplayReport/InputProjection.h"
#include "Verbosity.h"

#include <optional>
#include <string>
#include <vector>

/// `screenmanager map FILE`: converts points between the picture of a channel and the layout of its display, or writes
/// the map of the whole picture.
class MapCommand {
public:
    struct Options {
        std::string file;     ///< the configuration
        std::string channel;  ///< name or id
        std::string output;   ///< file to write; empty for standard output
        Verbosity verbosity = Verbosity::NORMAL;

        bool toChannel = false;           ///< from the layout to the picture, else the other way
        bool useCache = false;            ///< see `LayoutMapFactory::create`
        std::vector<std::string> points;  ///< "U,V" or "X,Y,Z"
        std::string pointFile;            ///< "-" for standard input, as when there are no points either

        bool grid = false;            ///< the whole picture instead of points
        std::string format = "mesh";  ///< one of `WarpWriter::formats`
        /// None for the corners of all pixels.
        std::optional<ColumnsByRows> nodes;
        /// None for the usual one.
        std::optional<Veltrani::DisplayReport::Panorama> panorama;
    };

    MapCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};

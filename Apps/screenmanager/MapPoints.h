#pragma once

#include "Command.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/maps/PointMapping.h"
#include "InputOptions.h"

#include <optional>
#include <string>
#include <vector>

class XMLConfigFile;

/// What `map` is to do.
struct MapOptions : CommandOptions {
    std::string file;     ///< the configuration
    std::string channel;  ///< name or id
    std::string output;   ///< file to write; empty for standard output

    bool toChannel = false;  ///< from points in space to the picture, else the other way
    std::optional<Veltrani::DisplayReport::PointSpace> space;  ///< none: what the points state
    bool useCache = false;                                     ///< see `LayoutMapFactory::create`
    std::vector<std::string> points;                           ///< "U,V" or "X,Y,Z"
    std::string pointFile;  ///< "-" for standard input, as when there are no points either

    bool grid = false;   ///< the whole picture instead of points
    std::string format;  ///< one of those of `formatsOf`
    InputOptions input;  ///< without nodes: the corners of all pixels
    std::string eye;     ///< "x,y,z"; empty: that of the channel

    [[nodiscard]] Veltrani::DisplayReport::PointKind pointKind() const {
        using Kind = Veltrani::DisplayReport::PointKind;
        return toChannel ? Kind::LAYOUT : Kind::PICTURE;
    }
    [[nodiscard]] bool readsStandardInput() const { return pointFile.empty() || pointFile == "-"; }
    /// The source of the points as messages name it.
    [[nodiscard]] std::string pointSource() const { return readsStandardInput() ? "standard input" : pointFile; }
};

/// Maps the points of the command line, of a file or of standard input, and writes them; returns an `ExitCode`, with
/// what is wrong reported.
int mapPoints(XMLConfigFile& config, const Veltrani::DisplayReport::ChannelChoice& channel, const MapOptions& options);

#pragma once

#include "FitSession/MeasuredPoints.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>

class XMLConfigManager;

namespace Veltrani::FitSession {

/// Reads tables of measured points: comma-separated values whose header names the columns; `docs/fitting.md` describes
/// them. What `targets` and `map` write are such tables.
///
/// | Columns | Meaning |
/// |---|---|
/// | `channel` or `projector` | id or unique name of the channel; not needed on a display of one channel |
/// | `u,v` or `px,py` | the place in its picture, normalised or in pixels, from the bottom left corner |
/// | `x,y,z` | the place measured, in the unit that the table or the caller states |
/// | `sx,sy,sz` or `cxx,cxy,cxz,cyy,cyz,czz` | its standard deviations or covariance, the latter in the unit squared |
/// | `suv` | standard deviation of the place in the picture: of u and of v, or in pixels where it is in pixels |
/// | `set` | name of the station, whose frame is its own |
/// | `X,Y,Z` | of a control point, whose place in the display is known: that place, in the same unit as x, y, z |
/// | `mapped` | 0: the row is passed over |
///
/// Names are compared without regard to case, but for x, y, z. Other columns are ignored. Cells may be empty where a
/// row has none of a group; rows without u, v and X, Y, Z are passed over.
class MeasuredPointReader {
public:
    /// More is no list of measurements: it would only fill the memory.
    static constexpr std::size_t MOST_POINTS = 1'000'000;

    struct Options {
        std::string unit;        ///< of lengths: "mm", "cm", "m", "in", "ft"; empty: the table states it
        bool isFromTop = false;  ///< v and py count from the top left corner downwards, as cameras give them
        std::function<void()> pulse = nullptr;  ///< called now and then while reading; what it throws comes out
    };

    /// @param config the display, which must outlive the reader
    MeasuredPointReader(const XMLConfigManager& config, Options options);

    /// Reads a table to its end. Lengths are converted to native units.
    ///
    /// Throws `VeltraniParseException`, on one line with document, line, column, what was found, what is expected and
    /// the remedy, for the first fault. `VeltraniMissingFileException` when the file cannot be read.
    /// @param document named in messages, UTF-8
    [[nodiscard]] MeasuredPoints read(std::istream& in, const std::string& document) const;
    [[nodiscard]] MeasuredPoints readFile(const std::string& utf8Path) const;

private:
    const XMLConfigManager& m_config;
    Options m_options;
};

}  // namespace Veltrani::FitSession

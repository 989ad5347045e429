#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {
class TableReader;
}

namespace Veltrani::FitSession {

/// Where the columns of a table of measured points stand: what its header names.
class MeasuredColumns {
public:
    template <std::size_t N>
    using Places = std::optional<std::array<std::size_t, N>>;

    /// What to do about a line that is no measurement.
    static constexpr const char* EXAMPLE =
        "write one measurement per line, such as left,0.5,0.25,1.5,4,-0.25 below channel,u,v,x,y,z";

    /// Reads the current line of the table, which is the header. Throws `VeltraniParseException` for what is none.
    explicit MeasuredColumns(const DisplayReport::TableReader& table);

    /// Refuses the current line of the table, which has not as many cells as the header.
    [[noreturn]] void refuseRow(const DisplayReport::TableReader& table) const;

    /// "column 4, sx" for messages.
    [[nodiscard]] std::string describe(std::size_t place) const;

    [[nodiscard]] std::size_t count() const { return m_names.size(); }
    /// The names of columns that mean nothing here.
    [[nodiscard]] std::vector<std::string> ignored() const;

    Places<1> channel, projector, set, mapped, pictureDeviation;
    Places<2> normalised;  ///< u, v
    Places<2> pixels;      ///< px, py
    Places<3> point;       ///< x, y, z; always there
    Places<3> deviations;  ///< sx, sy, sz
    Places<6> covariance;  ///< cxx, cxy, cxz, cyy, cyz, czz
    Places<3> known;       ///< X, Y, Z

private:
    /// The places of a group, none where the header names none of it.
    template <std::size_t N>
    [[nodiscard]] Places<N> take(const DisplayReport::TableReader& table, const std::array<const char*, N>& names);
    void requireWhatIsNeeded(const DisplayReport::TableReader& table) const;

    std::vector<std::string> m_names;
    std::vector<bool> m_isTaken;
};

}  // namespace Veltrani::FitSession

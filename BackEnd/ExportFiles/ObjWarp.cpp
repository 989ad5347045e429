#include "ExportFiles/ObjWarp.h"

#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/maps/WarpGrid.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <string>

namespace Veltrani::ExportFiles {

namespace {

using DisplayExport::ChannelWarp;
using DisplayExport::WarpCorner;
using DisplayExport::WarpNode;
using DisplayExport::WarpPiece;
using DisplayReport::exactText;
using DisplayReport::WarpGrid;

/// Writes one mesh.
class ObjMesh {
public:
    ObjMesh(const ChannelWarp& warp, const ContentStrip& strip, std::ostream& out)
        : m_warp(warp), m_strip(strip), m_out(out) {}

    void write() {
        m_out << "# x, y: place in the picture of the channel; vt: place in its input, (0, 0) bottom left\n";
        for (std::size_t row = 0; row < m_warp.rows(); ++row) {
            for (std::size_t column = 0; column < m_warp.columns(); ++column) {
                const WarpNode& node = m_warp.at(column, row);
                addCorner(WarpGrid::fromMiddle(column, m_warp.columns()), WarpGrid::fromMiddle(row, m_warp.rows()),
                          node.isUsable() ? m_strip.placeOf(node.content, node.face) : Point<double, 2>());
            }
        }
        m_warp.forEachPiece([this](const WarpPiece& piece) { addPiece(piece); });
    }

private:
    /// @param x, y -1 to 1
    void addCorner(double x, double y, const Point<double, 2>& input) {
        m_out << "v " + exactText(WarpGrid::aspectOf(m_warp.pixels()) * x) + ' ' + exactText(y) + " 0\nvt " +
                     exactText(input[0]) + ' ' + exactText(input[1]) + '\n';
        ++m_corners;
    }

    void addPiece(const WarpPiece& piece) {
        std::array<std::size_t, 3> numbers{};
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            numbers[i] = numberOf(piece.corners[i], piece.face);
        }
        const auto corner = [](std::size_t number) {
            const std::string text = std::to_string(number);
            return ' ' + text + '/' + text;
        };
        m_out << 'f' + corner(numbers[0]) + corner(numbers[1]) + corner(numbers[2]) + '\n';
    }

    /// The number of a corner, from 1: that of the node that it is, else that of one of its own.
    std::size_t numberOf(const WarpCorner& corner, std::uint8_t face) {
        const auto nearest = [](double part, std::size_t count) {
            return static_cast<std::size_t>(std::lround(part * static_cast<double>(count - 1)));
        };
        const std::size_t column = nearest(corner.picture[0], m_warp.columns());
        const std::size_t row = nearest(corner.picture[1], m_warp.rows());
        const WarpNode& node = m_warp.at(column, row);
        if (node.isUsable() && node.face == face && node.content == corner.content &&
            m_warp.pictureOf(column, row) == corner.picture) {
            return row * m_warp.columns() + column + 1;
        }
        addCorner(2 * corner.picture[0] - 1, 2 * corner.picture[1] - 1, m_strip.placeOf(corner.content, face));
        return m_corners;
    }

    const ChannelWarp& m_warp;
    const ContentStrip& m_strip;
    std::ostream& m_out;
    std::size_t m_corners = 0;  ///< that have been written
};

}  // namespace

void writeObj(const ChannelWarp& warp, const ContentStrip& strip, std::ostream& out) {
    ObjMesh(warp, strip, out).write();
}

}  // namespace Veltrani::ExportFiles

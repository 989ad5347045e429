#include "DisplayReport/PlyCoverageWriter.h"

#include "Common/QuotedText.h"
#include "DisplayReport/NumberText.h"

#include <algorithm>
#include <array>
#include <map>
#include <ostream>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Colour = std::array<int, 3>;

/// By the number of projectors, the last for more; from the colours of Okabe and Ito (2008).
constexpr std::array<Colour, 4> COLOURS{{{40, 40, 40}, {0, 114, 178}, {230, 159, 0}, {240, 228, 66}}};

/// Pieces that meet share the vertices between them when they have the same colour.
class Vertices {
public:
    std::size_t add(const Point<double, 3>& place, std::size_t projectors) {
        const auto [entry, isNew] = m_numbers.try_emplace({projectors, place}, m_list.size());
        if (isNew) {
            m_list.push_back(&entry->first);
        }
        return entry->second;
    }

    [[nodiscard]] std::size_t size() const { return m_list.size(); }

    void write(std::ostream& out) const {
        for (const Key* vertex : m_list) {
            const auto& [projectors, place] = *vertex;
            std::string line;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                line += exactText(place[axis]) + ' ';
            }
            for (const int part : COLOURS[std::min(projectors, COLOURS.size() - 1)]) {
                line += std::to_string(part) + ' ';
            }
            out << line << projectors << '\n';
        }
    }

private:
    using Key = std::pair<std::size_t, Point<double, 3>>;

    std::map<Key, std::size_t> m_numbers;
    std::vector<const Key*> m_list;
};

}  // namespace

void PlyCoverageWriter::write(const CoverageReport& report, const std::vector<CoveredPiece>& pieces,
                              std::ostream& out) {
    Vertices vertices;
    std::vector<std::array<std::size_t, 3>> faces;
    for (const CoveredPiece& piece : pieces) {
        std::array<std::size_t, 3> face{};
        for (std::size_t i = 0; i < 3; ++i) {
            face[i] = vertices.add(piece.corners[i], piece.channels);
        }
        if (face[0] != face[1] && face[1] != face[2] && face[2] != face[0]) {
            faces.push_back(face);
        }
    }
    out << "ply\nformat ascii 1.0\ncomment lengths in " << onOneLine(report.unit) << '\n'
        << "comment colours by number of projectors: black 0, blue 1, orange 2, yellow 3 and more\n"
        << "element vertex " << vertices.size() << '\n'
        << "property double x\nproperty double y\nproperty double z\n"
           "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty int projectors\n"
        << "element face " << faces.size() << "\nproperty list uchar int vertex_indices\nend_header\n";
    vertices.write(out);
    for (const auto& face : faces) {
        out << "3 " << face[0] << ' ' << face[1] << ' ' << face[2] << '\n';
    }
}

}  // namespace Veltrani::DisplayReport

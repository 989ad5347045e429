#include "KelvoControl/detail/WarpMesh.h"

#include "Common/DecimalText.h"
#include "Common/FileFault.h"
#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "KelvoControl/WarpMeshLimits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Veltrani::KelvoControlDetail {

namespace {

using namespace Veltrani::WarpMeshLimits;

/// "0 0 0 0 0" and its line end: no node is shorter.
constexpr std::size_t SHORTEST_NODE_BYTES = 10;

constexpr int LARGEST_PICTURE = 1'000'000;

constexpr std::string_view BLANKS = " \t\r\v\f";
constexpr const char* CUT_OFF = "write the file again: it may be cut off, or its counts may be wrong";

/// One more than any valid line has: a line with too many is distinguished from a valid one.
constexpr std::size_t MOST_WORDS = 6;

/// The words of one line.
struct Line {
    std::string_view text;
    std::array<std::string_view, MOST_WORDS> words;
    std::size_t count = 0;  ///< at most MOST_WORDS
};

Line wordsOf(std::string_view text) {
    Line line{text, {}, 0};
    std::size_t first = text.find_first_not_of(BLANKS);
    while (first != std::string_view::npos && line.count < MOST_WORDS) {
        const std::size_t end = std::min(text.find_first_of(BLANKS, first), text.size());
        line.words[line.count++] = text.substr(first, end - first);
        first = text.find_first_not_of(BLANKS, end);
    }
    return line;
}

class Parser {
public:
    Parser(std::string_view text, const std::string& document) : m_rest(text), m_document(document) {}

    [[nodiscard]] std::shared_ptr<const WarpMesh> parse() {
        readType();
        readCounts();
        readNodes();
        const Point<double, 2> size = readPicture();
        requireEnd();
        placeInPicture(size);
        return std::make_shared<const WarpMesh>(std::move(m_lattice), size);
    }

private:
    /// Returns the next line that holds words; one without any at the end of the text.
    [[nodiscard]] Line next() {
        while (!m_rest.empty()) {
            const std::size_t end = std::min(m_rest.find('\n'), m_rest.size());
            const Line line = wordsOf(m_rest.substr(0, end));
            m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
            ++m_line;
            if (line.count > 0) {
                return line;
            }
        }
        return {};
    }

    [[noreturn]] void fail(const std::string& element, const Line& found, const std::string& expected,
                           const std::string& remedy) const {
        failWith(element, found.count == 0 ? "the end of the file" : Veltrani::inQuotes(found.text), expected, remedy);
    }

    [[noreturn]] void failWith(const std::string& element, const std::string& found, const std::string& expected,
                               const std::string& remedy) const {
        Veltrani::throwFault(m_document, {std::max(m_line, 1), element, found, expected, remedy});
    }

    void readType() {
        const Line line = next();
        if (line.count != 1 || line.words[0] != "2") {
            fail("mesh type", line, "2 (rectangular)", "name a rectangular warp mesh");
        }
    }

    void readCounts() {
        const Line line = next();
        const auto columns = line.count == 2 ? Veltrani::parseCount(line.words[0], MOST_NODES_IN_ROW) : std::nullopt;
        const auto rows = line.count == 2 ? Veltrani::parseCount(line.words[1], MOST_NODES_IN_ROW) : std::nullopt;
        if (!columns || !rows || *columns < 2 || *rows < 2) {
            fail("node counts", line, "two whole numbers from 2 to " + std::to_string(MOST_NODES_IN_ROW), CUT_OFF);
        }
        m_lattice.columns = static_cast<std::size_t>(*columns);
        m_lattice.rows = static_cast<std::size_t>(*rows);
        const std::size_t most = m_rest.size() / SHORTEST_NODE_BYTES;
        if (nodeCount() > most) {
            fail("node counts", line, "at most " + std::to_string(most) + " nodes, for which the file has room",
                 CUT_OFF);
        }
        if (nodeCount() > MOST_NODES) {
            fail("node counts", line, "at most " + std::to_string(MOST_NODES) + " nodes",
                 "thin the mesh out: between its nodes it is interpolated");
        }
    }

    [[nodiscard]] std::size_t nodeCount() const { return m_lattice.columns * m_lattice.rows; }

    void readNodes() {
        const std::size_t count = nodeCount();
        m_lattice.picture.reserve(count);
        m_lattice.screen.reserve(count);
        m_lattice.unused.reserve(count);
        for (std::size_t node = 0; node < count; ++node) {
            readNode(node);
        }
    }

    void readNode(std::size_t node) {
        const Line line = next();
        std::array<double, 5> numbers{};
        bool good = line.count == numbers.size();
        for (std::size_t i = 0; good && i < numbers.size(); ++i) {
            const std::optional<double> number = Veltrani::parseFinite(line.words[i]);
            good = number && std::abs(*number) <= LARGEST_COORDINATE;
            numbers[i] = number.value_or(0);
        }
        const auto [x, y, u, v, brightness] = numbers;
        if (!good || brightness > 1) {
            fail(nameOf(node), line,
                 "five numbers x y u v i with decimal points, none beyond 10000 in size, i at most 1", CUT_OFF);
        }
        m_lattice.picture.push_back({x, y});
        m_lattice.screen.push_back({u, v});
        m_lattice.unused.push_back(brightness < 0);
    }

    [[nodiscard]] std::string nameOf(std::size_t node) const {
        return "node (" + std::to_string(node % m_lattice.columns) + ", " + std::to_string(node / m_lattice.columns) +
               ")";
    }

    [[nodiscard]] Point<double, 2> readPicture() {
        const Line line = next();
        const bool good = line.count == 3 && line.words[0] == "pixels";
        const auto width = good ? Veltrani::parseCount(line.words[1], LARGEST_PICTURE) : std::nullopt;
        const auto height = good ? Veltrani::parseCount(line.words[2], LARGEST_PICTURE) : std::nullopt;
        if (!width || !height) {
            fail("picture size", line, "pixels W H, two whole numbers from 1 to " + std::to_string(LARGEST_PICTURE),
                 "add the line behind the last node, or correct the node counts");
        }
        return {*width, *height};
    }

    void requireEnd() {
        const Line line = next();
        if (line.count != 0) {
            fail("end", line, "nothing behind the picture size", "remove the line, or correct the node counts");
        }
    }

    /// Converts from the unit of the file to pixels.
    void placeInPicture(const Point<double, 2>& size) {
        double aspect = 0;
        for (const Point<double, 2>& node : m_lattice.picture) {
            aspect = std::max(aspect, node[0]);
        }
        if (!(aspect >= SMALLEST_ASPECT)) {
            failWith("nodes", "no x above zero", "x up to the picture's width / height",
                     "give x from -aspect to aspect, y from -1 to 1");
        }
        for (Point<double, 2>& node : m_lattice.picture) {
            node = {(node[0] + aspect) / (2 * aspect) * size[0], (node[1] + 1) / 2 * size[1]};
        }
    }

    std::string_view m_rest;
    const std::string& m_document;
    int m_line = 0;
    CellLattice m_lattice;
};

}  // namespace

WarpMesh::WarpMesh(CellLattice lattice, const Point<double, 2>& pictureSize)
    : m_lattice(std::move(lattice)),
      m_pictureSize(pictureSize),
      m_picture(m_lattice, m_lattice.picture, pictureSize * EDGE_TOLERANCE),
      m_screen(m_lattice, m_lattice.screen, SCREEN_SIZE * EDGE_TOLERANCE) {}

bool WarpMesh::toScreenByIndex(const Point<double, 2>& pixel, Point<double, 2>& screen) const {
    CellPlace place;
    if (!m_picture.locateByGuess(pixel, place)) {
        return toScreenBySearch(pixel, screen);
    }
    screen = screenAt(place);
    return true;
}

bool WarpMesh::toScreenBySearch(const Point<double, 2>& pixel, Point<double, 2>& screen) const {
    CellPlace place;
    if (!m_picture.locateBySearch(pixel, place)) {
        return false;
    }
    screen = screenAt(place);
    return true;
}

bool WarpMesh::toPictureByIndex(const Point<double, 2>& screen, Point<double, 2>& pixel) const {
    CellPlace place;
    if (!m_screen.locateByGuess(screen, place)) {
        return toPictureBySearch(screen, pixel);
    }
    pixel = pictureAt(place);
    return true;
}

bool WarpMesh::toPictureBySearch(const Point<double, 2>& screen, Point<double, 2>& pixel) const {
    CellPlace place;
    if (!m_screen.locateBySearch(screen, place)) {
        return false;
    }
    pixel = pictureAt(place);
    return true;
}

double WarpMesh::ontoEdge(double value, double last) {
    const double tolerance = last * EDGE_TOLERANCE;
    if (value < 0) {
        return value >= -tolerance ? 0 : value;
    }
    return value > last && value <= last + tolerance ? last : value;
}

std::shared_ptr<const WarpMesh> WarpMeshFile::read(const std::wstring& file) {
    const std::string path = Veltrani::toUtf8(file);
    return parse(Veltrani::contentOf(path, Veltrani::WarpMeshLimits::MOST_BYTES), path);
}

std::shared_ptr<const WarpMesh> WarpMeshFile::parse(std::string_view text, const std::string& document) {
    return Parser(text, document).parse();
}

}  // namespace Veltrani::KelvoControlDetail

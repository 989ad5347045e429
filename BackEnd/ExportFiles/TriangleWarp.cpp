#include "ExportFiles/TriangleWarp.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::ExportFiles {

namespace {

using P2 = Point<double, 2>;

/// Of a triangle: a place on the edge between two of them belongs to both.
constexpr double ON_EDGE = -1e-9;
/// A few triangles for each bucket.
constexpr double PER_BUCKET = 2;
constexpr double MOST_BUCKETS = 512;

double crossOf(const P2& a, const P2& b) {
    return a[0] * b[1] - a[1] * b[0];
}

}  // namespace

TriangleWarp::TriangleWarp(const TriangleMesh& mesh, const Point<int, 2>& pixels) {
    const double aspect = static_cast<double>(pixels[0]) / pixels[1];
    const double pieces = static_cast<double>(mesh.triangles.size()) / PER_BUCKET;
    m_side = static_cast<std::size_t>(std::clamp(std::sqrt(pieces), 1.0, MOST_BUCKETS));
    m_buckets.resize(m_side * m_side);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Piece piece;
        for (std::size_t corner = 0; corner < piece.size(); ++corner) {
            const Point<double, 3>& vertex = mesh.vertices[mesh.triangles[i][corner]];
            piece[corner] = {{(vertex[0] / aspect + 1) / 2, (vertex[1] + 1) / 2},
                             mesh.textureCoordinates[mesh.textureTriangles[i][corner]]};
        }
        addPiece(piece);
    }
}

std::size_t TriangleWarp::bucketOf(double along) const {
    const auto side = static_cast<double>(m_side);
    return static_cast<std::size_t>(std::clamp(along * side, 0.0, side - 1));
}

TriangleWarp::Places TriangleWarp::reachOf(const Piece& piece) const {
    const auto [left, right] = std::minmax({piece[0].picture[0], piece[1].picture[0], piece[2].picture[0]});
    const auto [bottom, top] = std::minmax({piece[0].picture[1], piece[1].picture[1], piece[2].picture[1]});
    return {bucketOf(left), bucketOf(right), bucketOf(bottom), bucketOf(top)};
}

void TriangleWarp::addPiece(const Piece& piece) {
    const double area = crossOf(piece[1].picture - piece[0].picture, piece[2].picture - piece[0].picture);
    if (!(std::abs(area) > 0)) {
        return;
    }
    const auto [left, right, bottom, top] = reachOf(piece);
    for (std::size_t row = bottom; row <= top; ++row) {
        for (std::size_t column = left; column <= right; ++column) {
            m_buckets[row * m_side + column].push_back(static_cast<std::uint32_t>(m_pieces.size()));
        }
    }
    m_pieces.push_back(piece);
}

std::optional<PlayerWarp::Shown> TriangleWarp::shownAt(const P2& picture) const {
    for (const std::uint32_t i : m_buckets[bucketOf(picture[1]) * m_side + bucketOf(picture[0])]) {
        const auto& [a, b, c] = m_pieces[i];
        const P2 toB = b.picture - a.picture;
        const P2 toC = c.picture - a.picture;
        const double area = crossOf(toB, toC);
        const P2 place = picture - a.picture;
        const double ofB = crossOf(place, toC) / area;
        const double ofC = crossOf(toB, place) / area;
        if (ofB >= ON_EDGE && ofC >= ON_EDGE && 1 - ofB - ofC >= ON_EDGE) {
            const P2 contentB = b.content - a.content;
            const P2 contentC = c.content - a.content;
            return Shown{a.content + ofB * contentB + ofC * contentC,
                         (toC[1] * contentB - toB[1] * contentC) * (1 / area),
                         (toB[0] * contentC - toC[0] * contentB) * (1 / area)};
        }
    }
    return std::nullopt;
}

}  // namespace Veltrani::ExportFiles

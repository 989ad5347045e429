#include "KelvoScreen/ObjReader.h"

#include "KelvoScreen/ObjLoadException.h"
#include "KelvoScreen/detail/ObjText.h"
#include "KelvoScreen/detail/PolygonCutter.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using Veltrani::KelvoScreenDetail::ObjCursor;
using Veltrani::KelvoScreenDetail::ObjIndices;
using Veltrani::KelvoScreenDetail::ObjSizeEstimate;
using Veltrani::KelvoScreenDetail::PolygonCutter;
using Triangle = TriangleMesh::Triangle;

constexpr const char* CUT_FACE = "cut it into smaller faces where the mesh was made";

/// A face of more than three corners, held as the fan of triangles around its first corner until all vertices are
/// known.
struct Polygon {
    std::size_t firstTriangle;
    std::size_t corners;
    std::size_t line;
};

struct Corner {
    std::uint32_t vertex = 0;
    std::uint32_t texture = 0;
};

/// Returns corner number i of the polygon that a fan of triangles stands for.
std::uint32_t fanCorner(const Triangle* fan, std::size_t i) {
    return i < 2 ? fan[0][i] : fan[i - 2][2];
}

/// Releases the room that an estimate reserved in excess, where that is worth a copy.
template <class T>
void trim(std::vector<T>& elements) {
    if (elements.capacity() / 4 * 3 > elements.size()) {
        elements.shrink_to_fit();
    }
}

class MeshBuilder {
public:
    explicit MeshBuilder(std::string_view text) : m_cursor(text) {
        const auto estimate = ObjSizeEstimate::of(text);
        m_mesh.vertices.reserve(estimate.vertices);
        m_mesh.textureCoordinates.reserve(estimate.textureCoordinates);
        m_mesh.triangles.reserve(estimate.triangles);
        if (estimate.textureCoordinates > 0) {
            m_mesh.textureTriangles.reserve(estimate.triangles);
        }
    }

    TriangleMesh build() {
        while (m_cursor.findStatement()) {
            readStatement(m_cursor.takeKeyword());
            m_cursor.skipStatement();
        }
        for (const ObjIndices* indices : {&m_vertices, &m_textures, &m_normals}) {
            indices->requireAllDefined();
        }
        cutPolygons();
        finish();
        return std::move(m_mesh);
    }

private:
    void readStatement(std::string_view keyword) {
        if (keyword == "v") {
            readVertex();
        } else if (keyword == "vt") {
            readTextureCoordinate();
        } else if (keyword == "vn") {
            readNormal();
        } else if (keyword == "f") {
            readFace();
        }
    }

    /// Reads the numbers of the statement; when there are more than there is room for, only the count is right.
    template <std::size_t N>
    std::size_t readNumbers(std::array<double, N>& numbers) {
        std::size_t count = 0;
        for (; m_cursor.findWord(); ++count) {
            const double number = m_cursor.takeNumber();
            if (count < N) {
                numbers[count] = number;
            }
        }
        return count;
    }

    void readVertex() {
        std::array<double, 3> xyz{};
        const std::size_t count = readNumbers(xyz);
        if (count < 3 || count == 5 || count > 7) {
            m_cursor.failStatement("a vertex of 3, 4, 6 or 7 numbers",
                                   "give x, y and z, with or without a weight and a colour");
        }
        m_mesh.vertices.push_back({xyz[0], xyz[1], xyz[2]});
        m_vertices.define();
    }

    void readTextureCoordinate() {
        std::array<double, 2> st{};
        const std::size_t count = readNumbers(st);
        if (count < 1 || count > 3) {
            m_cursor.failStatement("a texture coordinate of 1, 2 or 3 numbers", "give s and t");
        }
        m_mesh.textureCoordinates.push_back({st[0], st[1]});
        m_textures.define();
    }

    void readNormal() {
        std::array<double, 3> normal{};
        if (readNumbers(normal) != 3) {
            m_cursor.failStatement("a normal of 3 numbers", "give x, y and z");
        }
        m_normals.define();
    }

    void readFace() {
        const std::size_t line = m_cursor.line();
        const std::size_t firstTriangle = m_mesh.triangles.size();
        std::size_t corners = 0;
        Corner first;
        Corner previous;
        for (; m_cursor.findWord(); ++corners) {
            const Corner corner = readCorner();
            if (corners == 0) {
                first = corner;
            } else if (corners > 1) {
                addTriangle(first, previous, corner);
            }
            if (corners == ObjReader::MAX_FACE_CORNERS) {
                m_cursor.failStatement("a face of at most " + std::to_string(corners) + " corners", CUT_FACE);
            }
            previous = corner;
        }
        if (corners < 3) {
            m_cursor.failStatement("a face of at least 3 corners", "give its corners on one line, or remove it");
        }
        if (corners > 3) {
            m_polygons.push_back({firstTriangle, corners, line});
        }
    }

    Corner readCorner() {
        Corner corner;
        corner.vertex = m_vertices.resolve(m_cursor.takeIndex(), m_cursor);
        bool hasTexture = false;
        if (m_cursor.take('/')) {
            bool hasNormal = m_cursor.take('/');
            if (!hasNormal) {
                corner.texture = m_textures.resolve(m_cursor.takeIndex(), m_cursor);
                hasTexture = true;
                hasNormal = m_cursor.take('/');
            }
            if (hasNormal) {
                (void)m_normals.resolve(m_cursor.takeIndex(), m_cursor);
            }
        }
        m_cursor.requireWordEnd();
        m_isParameterised = m_isParameterised && hasTexture;
        return corner;
    }

    void addTriangle(const Corner& a, const Corner& b, const Corner& c) {
        m_mesh.triangles.push_back({a.vertex, b.vertex, c.vertex});
        if (m_isParameterised) {
            m_mesh.textureTriangles.push_back({a.texture, b.texture, c.texture});
        }
    }

    void cutPolygons() {
        PolygonCutter cutter;
        for (const Polygon& polygon : m_polygons) {
            gatherCorners(polygon);
            const auto triangles = cutter.cut(m_corners);
            if (triangles.empty()) {
                throw ObjLoadException(polygon.line, "a face of " + std::to_string(polygon.corners) + " corners",
                                       "faces that can be cut into triangles in reasonable time", CUT_FACE);
            }
            replaceFan(m_mesh.triangles, polygon, triangles);
            if (m_isParameterised) {
                replaceFan(m_mesh.textureTriangles, polygon, triangles);
            }
        }
    }

    void gatherCorners(const Polygon& polygon) {
        m_corners.clear();
        const Triangle* const fan = &m_mesh.triangles[polygon.firstTriangle];
        for (std::size_t i = 0; i < polygon.corners; ++i) {
            m_corners.push_back(m_mesh.vertices[fanCorner(fan, i)]);
        }
    }

    void replaceFan(std::vector<Triangle>& all, const Polygon& polygon, std::span<const PolygonCutter::Triangle> cut) {
        Triangle* const place = &all[polygon.firstTriangle];
        m_fan.assign(place, place + cut.size());
        for (std::size_t i = 0; i < cut.size(); ++i) {
            for (std::size_t k = 0; k < 3; ++k) {
                place[i][k] = fanCorner(m_fan.data(), cut[i][k]);
            }
        }
    }

    void finish() {
        if (!m_isParameterised || m_mesh.triangles.empty()) {
            m_mesh.textureCoordinates = {};
            m_mesh.textureTriangles = {};
        }
        trim(m_mesh.vertices);
        trim(m_mesh.triangles);
        trim(m_mesh.textureCoordinates);
        trim(m_mesh.textureTriangles);
    }

    ObjCursor m_cursor;
    ObjIndices m_vertices{"vertex"};
    ObjIndices m_textures{"texture coordinate"};
    ObjIndices m_normals{"normal"};
    TriangleMesh m_mesh;
    bool m_isParameterised = true;  ///< so far
    std::vector<Polygon> m_polygons;
    std::vector<Point<double, 3>> m_corners;  ///< of the polygon at hand
    std::vector<Triangle> m_fan;              ///< of the polygon at hand
};

}  // namespace

TriangleMesh ObjReader::read(std::string_view text) {
    return MeshBuilder(text).build();
}

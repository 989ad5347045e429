#include "KelvoScreen/Meshes.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <numbers>

namespace meshes {

namespace {

using Vector = Point<double, 3>;

std::uint32_t indexOf(std::size_t i) {
    return static_cast<std::uint32_t>(i);
}

/// Collects quadrilaterals, one vertex per place.
class Faces {
public:
    void addQuad(const Vector& a, const Vector& b, const Vector& c, const Vector& d) {
        const std::uint32_t first = vertex(a);
        const std::uint32_t third = vertex(c);
        mesh.triangles.push_back({first, vertex(b), third});
        mesh.triangles.push_back({first, third, vertex(d)});
    }

    /// The parallelogram at `corner`, cut into cells x cells, normal along u x v.
    void addFace(const Vector& corner, const Vector& u, const Vector& v, int cells) {
        const auto at = [&](int i, int j) { return corner + (1.0 * i / cells) * u + (1.0 * j / cells) * v; };
        for (int i = 0; i < cells; ++i) {
            for (int j = 0; j < cells; ++j) {
                addQuad(at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
            }
        }
    }

    void addBox(const Vector& low, const Vector& size, int cells) {
        const Vector x{size[0], 0.0, 0.0};
        const Vector y{0.0, size[1], 0.0};
        const Vector z{0.0, 0.0, size[2]};
        addFace(low, y, x, cells);
        addFace(low, x, z, cells);
        addFace(low, z, y, cells);
        addFace(low + z, x, y, cells);
        addFace(low + y, z, x, cells);
        addFace(low + x, y, z, cells);
    }

    TriangleMesh mesh;

private:
    /// Places that differ by rounding alone are one: the edges of a box are computed from both faces.
    std::uint32_t vertex(const Vector& place) {
        constexpr double GRID = 1e6;
        const Point<long, 3> key{std::lround(place[0] * GRID), std::lround(place[1] * GRID),
                                 std::lround(place[2] * GRID)};
        const auto [found, isNew] = m_vertices.try_emplace(key, indexOf(mesh.vertices.size()));
        if (isNew) {
            mesh.vertices.push_back(place);
        }
        return found->second;
    }

    std::map<Point<long, 3>, std::uint32_t> m_vertices;
};

}  // namespace

TriangleMesh place(TriangleMesh mesh, const Placement& placement) {
    for (Vector& vertex : mesh.vertices) {
        vertex = placement.offset + placement.scale * vertex;
    }
    return mesh;
}

TriangleMesh wall(double width, double height, int columns, int rows) {
    return surface(columns, rows, [&](double s, double t) { return Vector{s * width, 0.0, t * height}; });
}

TriangleMesh surface(int columns, int rows, const std::function<Vector(double s, double t)>& pointAt) {
    TriangleMesh mesh;
    for (int row = 0; row <= rows; ++row) {
        for (int column = 0; column <= columns; ++column) {
            const double s = 1.0 * column / columns;
            const double t = 1.0 * row / rows;
            mesh.vertices.push_back(pointAt(s, t));
            mesh.textureCoordinates.push_back({s, t});
        }
    }
    const auto index = [columns](int column, int row) {
        return static_cast<std::uint32_t>(row * (columns + 1) + column);
    };
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            mesh.triangles.push_back({index(column, row), index(column + 1, row + 1), index(column + 1, row)});
            mesh.triangles.push_back({index(column, row), index(column, row + 1), index(column + 1, row + 1)});
        }
    }
    mesh.textureTriangles = mesh.triangles;
    return mesh;
}

TriangleMesh sampled(const ScreenGeometry& screen, int columns, int rows) {
    return surface(columns, rows, [&screen](double s, double t) {
        Vector point;
        (void)screen.mapInto3D({s, t}, point, false);
        return point;
    });
}

TriangleMesh bumpyBall(double radius, int rows, int columns) {
    TriangleMesh mesh;
    mesh.vertices.push_back({0.0, 0.0, radius});
    for (int row = 1; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const double polar = std::numbers::pi * row / rows;
            const double azimuth = 2 * std::numbers::pi * column / columns;
            const double r = radius * (1 + 0.1 * std::sin(5 * polar) * std::cos(3 * azimuth));
            mesh.vertices.push_back({r * std::sin(polar) * std::cos(azimuth), r * std::sin(polar) * std::sin(azimuth),
                                     r * std::cos(polar)});
        }
    }
    mesh.vertices.push_back({0.0, 0.0, -radius});
    const auto index = [columns](int row, int column) {
        return static_cast<std::uint32_t>(1 + (row - 1) * columns + column % columns);
    };
    const std::uint32_t south = indexOf(mesh.vertices.size() - 1);
    for (int column = 0; column < columns; ++column) {
        mesh.triangles.push_back({0, index(1, column), index(1, column + 1)});
        mesh.triangles.push_back({south, index(rows - 1, column + 1), index(rows - 1, column)});
        for (int row = 1; row < rows - 1; ++row) {
            mesh.triangles.push_back({index(row, column), index(row + 1, column), index(row, column + 1)});
            mesh.triangles.push_back({index(row, column + 1), index(row + 1, column), index(row + 1, column + 1)});
        }
    }
    return mesh;
}

TriangleMesh room(int cells) {
    Faces faces;
    faces.addBox({-5.0, -4.0, -1.5}, {10.0, 8.0, 3.0}, cells);
    faces.addBox({-1.0, 1.0, -1.4}, {2.0, 1.0, 1.0}, cells);
    for (Vector& vertex : faces.mesh.vertices) {
        const double dent = 0.03 * std::sin(3 * vertex[0] + 5 * vertex[1] + 7 * vertex[2]);
        vertex = vertex * (1 - dent * dent - 0.01);
    }
    return faces.mesh;
}

TriangleMesh fan(double radius, int slivers) {
    TriangleMesh mesh;
    mesh.vertices.push_back({0.0, 5.0, 0.0});
    mesh.textureCoordinates.push_back({0.5, 0.5});
    // Of length one and at right angles.
    const Point<double, 3> across = Point<double, 3>{2.0, 1.0, 2.0} * (1.0 / 3);
    const Point<double, 3> upwards = Point<double, 3>{-2.0, 2.0, 1.0} * (1.0 / 3);
    for (int i = 0; i < slivers; ++i) {
        const double angle = 2 * std::numbers::pi * i / slivers;
        mesh.vertices.push_back(mesh.vertices[0] + radius * (std::cos(angle) * across + std::sin(angle) * upwards));
        mesh.textureCoordinates.push_back({0.5 + 0.5 * std::cos(angle), 0.5 + 0.5 * std::sin(angle)});
        const auto first = static_cast<std::uint32_t>(i + 1);
        mesh.triangles.push_back({0, first, i + 1 < slivers ? first + 1 : 1});
    }
    mesh.textureTriangles = mesh.triangles;
    return mesh;
}

TriangleMesh triangle(const Vector& a, const Vector& b, const Vector& c) {
    TriangleMesh mesh;
    mesh.vertices = {a, b, c};
    mesh.triangles = {{0, 1, 2}};
    return mesh;
}

TriangleMesh joined(const TriangleMesh& first, const TriangleMesh& second) {
    const auto append = [](auto& triangles, const auto& more, std::size_t offset) {
        for (const TriangleMesh::Triangle& t : more) {
            triangles.push_back({t[0] + indexOf(offset), t[1] + indexOf(offset), t[2] + indexOf(offset)});
        }
    };
    TriangleMesh mesh = first;
    append(mesh.triangles, second.triangles, first.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), second.vertices.begin(), second.vertices.end());
    if (first.textureTriangles.empty() || second.textureTriangles.empty()) {
        mesh.textureTriangles.clear();
        return mesh;
    }
    append(mesh.textureTriangles, second.textureTriangles, first.textureCoordinates.size());
    mesh.textureCoordinates.insert(mesh.textureCoordinates.end(), second.textureCoordinates.begin(),
                                   second.textureCoordinates.end());
    return mesh;
}

TriangleMesh withoutSharedVertices(const TriangleMesh& mesh) {
    TriangleMesh result;
    for (const TriangleMesh::Triangle& corners : mesh.triangles) {
        const std::uint32_t first = indexOf(result.vertices.size());
        for (const std::uint32_t corner : corners) {
            result.vertices.push_back(mesh.vertices[corner]);
        }
        result.triangles.push_back({first, first + 1, first + 2});
    }
    return result;
}

}  // namespace meshes

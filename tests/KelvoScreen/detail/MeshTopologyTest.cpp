#include "KelvoScreen/detail/MeshTopology.h"

#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;

constexpr std::uint32_t NONE = MeshTopology::NONE;

/// By a table of all edges: how many triangles each has.
std::map<std::pair<std::uint32_t, std::uint32_t>, int> edgeUse(const TriangleMesh& mesh) {
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> uses;
    for (const TriangleMesh::Triangle& triangle : mesh.triangles) {
        for (std::size_t i = 0; i < 3; ++i) {
            ++uses[std::minmax(triangle[i], triangle[(i + 1) % 3])];
        }
    }
    return uses;
}

TEST(MeshTopology, AgreesWithATableOfAllEdges) {
    for (const TriangleMesh& mesh : {meshes::wall(4, 3, 5, 4), meshes::bumpyBall(1, 6, 9), meshes::room(2)}) {
        const MeshTopology topology(mesh);
        const auto uses = edgeUse(mesh);
        EXPECT_EQ(static_cast<std::ptrdiff_t>(topology.border().size()),
                  std::count_if(uses.begin(), uses.end(), [](const auto& use) { return use.second == 1; }));
        for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
            for (std::size_t side = 0; side < 3; ++side) {
                const auto edge = std::minmax(mesh.triangles[i][side], mesh.triangles[i][(side + 1) % 3]);
                const std::uint32_t other = topology.neighbours()[i][side];
                ASSERT_EQ(other != NONE, uses.at(edge) == 2) << i << ' ' << side;
                if (other != NONE) {
                    const auto& back = topology.neighbours()[other];
                    EXPECT_EQ(std::count(back.begin(), back.end(), i), 1);
                }
            }
        }
    }
}

TEST(MeshTopology, NamesTheSidesOfTheBorder) {
    const MeshTopology topology(meshes::wall(1, 1, 1, 1));
    // Triangles (0, 3, 1) and (0, 2, 3): the diagonal 0-3 joins them.
    ASSERT_EQ(topology.border().size(), 4U);
    const std::vector<std::pair<std::uint32_t, std::uint32_t>> expected{{0, 1}, {0, 2}, {1, 0}, {1, 1}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(topology.border()[i].triangle, expected[i].first);
        EXPECT_EQ(topology.border()[i].side, expected[i].second);
    }
    EXPECT_EQ(topology.neighbours()[0], (MeshTopology::Neighbours{1, NONE, NONE}));
    EXPECT_EQ(topology.neighbours()[1], (MeshTopology::Neighbours{NONE, NONE, 0}));
}

TEST(MeshTopology, VerticesAtOnePlaceAreOne) {
    const TriangleMesh wall = meshes::wall(4, 3, 4, 3);
    const MeshTopology shared(wall);
    const MeshTopology repeated(meshes::withoutSharedVertices(wall));
    EXPECT_EQ(repeated.neighbours(), shared.neighbours());
    EXPECT_EQ(std::set<std::uint32_t>(repeated.mergedVertices().begin(), repeated.mergedVertices().end()).size(), 20U);
}

TEST(MeshTopology, AnEdgeOfThreeTrianglesJoinsNone) {
    TriangleMesh mesh;
    mesh.vertices = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, -1.0, 0.0}, {0.0, 0.0, 1.0}};
    mesh.triangles = {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}};
    const MeshTopology topology(mesh);
    for (const MeshTopology::Neighbours& neighbours : topology.neighbours()) {
        EXPECT_EQ(neighbours, (MeshTopology::Neighbours{NONE, NONE, NONE}));
    }
    EXPECT_EQ(topology.border().size(), 6U) << "the common edge is not on the border";
}

TEST(MeshTopology, ATriangleOfTwoPlacesDoesNotPartItsNeighbours) {
    TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    mesh.triangles.push_back({0, 3, 3});
    const MeshTopology topology(mesh);
    EXPECT_EQ(topology.neighbours()[0][0], 1U);
    EXPECT_EQ(topology.border().size(), 4U);
    EXPECT_TRUE(MeshTopology(TriangleMesh{}).border().empty());
}

}  // namespace

#include "KelvoScreen/detail/TriangleIndex.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <set>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

constexpr double INFINITE = Box::INFINITE;

/// The triangles of a mesh, without those in `leftOut`.
class MeshSource : public TriangleIndex::Source {
public:
    explicit MeshSource(const TriangleMesh& mesh, std::set<std::uint32_t> leftOut = {})
        : m_mesh(mesh), m_leftOut(std::move(leftOut)) {}
    bool corners(std::uint32_t triangle, Corners& out) const override {
        const TriangleMesh::Triangle& t = m_mesh.triangles[triangle];
        out = {m_mesh.vertices[t[0]], m_mesh.vertices[t[1]], m_mesh.vertices[t[2]]};
        return m_leftOut.count(triangle) == 0;
    }

private:
    const TriangleMesh& m_mesh;
    std::set<std::uint32_t> m_leftOut;
};

/// Notes every visit and answers with a fixed limit.
template <class Base>
class Recorder final : public Base {
public:
    explicit Recorder(double answer) : m_answer(answer) {}
    double visit(std::uint32_t triangle) override {
        visited.insert(triangle);
        return m_answer;
    }

    std::set<std::uint32_t> visited;

private:
    double m_answer;
};

using RayRecorder = Recorder<TriangleIndex::RayVisitor>;
using PointRecorder = Recorder<TriangleIndex::PointVisitor>;

std::uint32_t countOf(const TriangleMesh& mesh) {
    return static_cast<std::uint32_t>(mesh.triangles.size());
}

TEST(TriangleIndex, WithoutTrianglesNothingIsVisited) {
    const TriangleMesh mesh;
    const TriangleIndex index(0, MeshSource(mesh));
    EXPECT_TRUE(index.box().isEmpty());
    double first = 0;
    double second = 0;
    EXPECT_FALSE(index.clip({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, first, second));
    PointRecorder recorder(INFINITE);
    index.aroundPoint({0.0, 0.0, 0.0}, INFINITE, recorder);
    EXPECT_TRUE(recorder.visited.empty());
}

TEST(TriangleIndex, EveryTriangleThatARayMeetsIsVisited) {
    oracle::Random random(41);
    for (const meshes::Placement& placement :
         {meshes::Placement{}, meshes::Placement{1e-3, {14000.0, -14000.0, 1.0}}, meshes::Placement{1e9, {}},
          meshes::Placement{1e-30, {}}, meshes::Placement{1e30, {}}}) {
        const TriangleMesh mesh = meshes::place(meshes::bumpyBall(1, 12, 20), placement);
        const TriangleIndex index(countOf(mesh), MeshSource(mesh));
        TriangleMesh single = mesh;
        single.triangles.resize(1);
        int met = 0;
        for (int i = 0; i < 300; ++i) {
            const Vector from = placement.offset + placement.scale * (3.0 * random.inCube());
            const Vector to = placement.offset + placement.scale * random.inCube();
            double first = 0;
            double second = 0;
            RayRecorder recorder(INFINITE);
            if (index.clip(from, to - from, first, second)) {
                index.alongRay(from + first * (to - from), to - from, second - first, recorder);
            }
            for (std::uint32_t k = 0; k < countOf(mesh); ++k) {
                single.triangles[0] = mesh.triangles[k];
                if (oracle::nearestHit(single, from, to)) {
                    ASSERT_EQ(recorder.visited.count(k), 1U) << "ray " << i << " triangle " << k;
                    ++met;
                }
            }
        }
        EXPECT_GT(met, 200);
    }
}

TEST(TriangleIndex, TheAnswerOfTheVisitorEndsARay) {
    TriangleMesh mesh;
    constexpr int LAYERS = 64;
    for (int i = 0; i < LAYERS; ++i) {
        mesh = meshes::joined(mesh, meshes::place(meshes::wall(1, 1, 1, 1), {1, {0.0, 1.0 * i, 0.0}}));
    }
    const TriangleIndex index(countOf(mesh), MeshSource(mesh));
    RayRecorder whole(INFINITE);
    index.alongRay({0.5, 0.0, 0.25}, {0.0, 1.0, 0.0}, 100, whole);
    EXPECT_GE(whole.visited.size(), static_cast<std::size_t>(LAYERS));
    RayRecorder cut(10);
    index.alongRay({0.5, 0.0, 0.25}, {0.0, 1.0, 0.0}, 100, cut);
    EXPECT_LT(cut.visited.size(), 2U * 20);
    EXPECT_EQ(cut.visited.count(2 * 5), 1U) << "before the limit";
    EXPECT_EQ(cut.visited.count(2 * 60), 0U) << "far behind it";
}

TEST(TriangleIndex, EveryTriangleNearAPointIsVisited) {
    oracle::Random random(42);
    const TriangleMesh mesh = meshes::bumpyBall(5, 20, 30);
    const TriangleIndex index(countOf(mesh), MeshSource(mesh));
    std::size_t fewest = mesh.triangles.size();
    for (int i = 0; i < 300; ++i) {
        const Vector point = 8.0 * random.inCube();
        const double radius = random.uniform(0.5, 5);
        PointRecorder recorder(radius);
        index.aroundPoint(point, radius, recorder);
        for (std::uint32_t k = 0; k < countOf(mesh); ++k) {
            if (oracle::distance(mesh, k, point) <= radius) {
                ASSERT_EQ(recorder.visited.count(k), 1U) << "point " << i << " triangle " << k;
            }
        }
        fewest = std::min(fewest, recorder.visited.size());
    }
    EXPECT_LT(fewest, mesh.triangles.size() / 20) << "and the far ones are not";
}

TEST(TriangleIndex, FromVeryFarAwayEveryTriangleIsVisited) {
    const TriangleMesh mesh = meshes::bumpyBall(1, 6, 8);
    const TriangleIndex index(countOf(mesh), MeshSource(mesh));
    for (const double far : {1e6, 1e15, 1e50, 1e300}) {
        PointRecorder recorder(far);
        index.aroundPoint({far, -far, far}, INFINITE, recorder);
        EXPECT_EQ(recorder.visited.size(), mesh.triangles.size()) << far;
    }
}

TEST(TriangleIndex, LeftOutTrianglesAreNeverVisited) {
    const TriangleMesh mesh = meshes::wall(1, 1, 1, 1);
    const TriangleIndex index(2, MeshSource(mesh, {0}));
    RayRecorder ray(INFINITE);
    index.alongRay({0.5, -1.0, 0.5}, {0.0, 1.0, 0.0}, 3, ray);
    EXPECT_EQ(ray.visited, (std::set<std::uint32_t>{1}));
    PointRecorder point(INFINITE);
    index.aroundPoint({0.5, 0.0, 0.1}, INFINITE, point);
    EXPECT_EQ(point.visited, (std::set<std::uint32_t>{1}));
    const TriangleIndex none(2, MeshSource(mesh, {0, 1}));
    EXPECT_TRUE(none.box().isEmpty());
}

}  // namespace

#include "KelvoScreen/MeshScreen.h"
#include "ScreenFixture.h"
#include "ScreenKinds.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

/// Whatever grids do to be fast, the targets are those of asking the screen ray by ray, to the last bit.

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;

constexpr double PI = std::numbers::pi;

/// A locator of another class is asked ray by ray, by the inherited rule here.
class RayByRay : public SphereTargetLocator {
public:
    using SphereTargetLocator::SphereTargetLocator;
};

bool areSameBits(const Grid& a, const Grid& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](const auto& one, const auto& other) {
               return one.first == other.first && screenKinds::areSameBits(one.second, other.second);
           });
}

class SphereBatchTest : public ScreenFixture {
protected:
    static Grid project(const SphereTargetLocator& locator, int columns, int rows) {
        Grid grid;
        locator.projectOnTargetLocationSurface(0.0, 1.0, 0.05, 0.95, columns, rows, grid);
        return grid;
    }
};

TEST_F(SphereBatchTest, EveryKindOfScreenGivesTheSameBitsRayByRay) {
    for (const auto& [name, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        for (const double turn : {0.0, 0.3, -0.6, 3.0}) {
            const SphereTargetLocatorParams p{{0.1, -0.2, 0.3}, -0.6, 0.7, -0.5, 0.4, turn, 0.1, 0.5 * turn, {}, {}};
            const Grid grid = project(SphereTargetLocator(p), 37, 23);
            EXPECT_TRUE(areSameBits(grid, project(RayByRay(p), 37, 23))) << name << " turned by " << turn;
            EXPECT_EQ(grid.empty(), turn == 3.0) << name;
            EXPECT_LT(grid.size(), 37U * 23U) << name;
        }
    }
}

TEST_F(SphereBatchTest, TheOtherSideOfAScreenToo) {
    for (const auto& [name, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        // From far ahead, looking back.
        const SphereTargetLocatorParams p{{0.1, 20.0, 0.3}, -0.2, 0.3, -0.1, 0.2, PI, 0.0, 0.1, {}, {}};
        const Grid grid = project(SphereTargetLocator(p), 37, 23);
        EXPECT_TRUE(areSameBits(grid, project(RayByRay(p), 37, 23))) << name;
        EXPECT_FALSE(grid.empty()) << name;
    }
}

TEST_F(SphereBatchTest, LongColumnsToo) {
    for (const auto& [name, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        const SphereTargetLocatorParams p{{0.1, -0.2, 0.3}, -0.3, 0.3, -0.5, 0.4, 0.1, 0.1, 0.2, {}, {}};
        for (const auto& [columns, rows] : {std::pair(2, 4103), {4103, 2}, {2, 2}}) {
            EXPECT_TRUE(
                areSameBits(project(SphereTargetLocator(p), columns, rows), project(RayByRay(p), columns, rows)))
                << name;
        }
    }
}

TEST_F(SphereBatchTest, NoColumnsOrRowsAreNoTargets) {
    const SphereTargetLocator locator({{0.1, -0.2, 0.3}, -0.3, 0.3, -0.5, 0.4, 0.1, 0.1, 0.2, {}, {}});
    for (const auto& [name, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        for (const auto& [columns, rows] : {std::pair(0, 3), {3, 0}, {0, 0}, {-1, 3}, {3, -1}}) {
            EXPECT_THAT(project(locator, columns, rows), testing::IsEmpty()) << name;
        }
        EXPECT_FALSE(project(locator, 3, 3).empty()) << name;
    }
}

TEST_F(SphereBatchTest, HeadingsAreBentAndLoggedInReadingOrderOnEveryKind) {
    SphereTargetLocatorParams p{{0.1, -0.2, 0.3}, -0.3, 0.3, -0.2, 0.2, 0.0, 0.0, 0.0, {}, {}};
    // A tenth to the right, as the orientation would turn them.
    p.yawTable = {{-2.0, -1.9}, {2.0, 2.1}};
    SphereTargetLocatorParams turned = p;
    turned.yawTable.clear();
    turned.rotationZ = 0.1;
    for (const auto& [name, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        log.clear();
        const Grid bent = project(SphereTargetLocator(p), 3, 2);
        ASSERT_EQ(log.records().size(), 6U) << name;
        for (const std::size_t i : {1U, 4U}) {
            EXPECT_THAT(log.records()[i].message, testing::HasSubstr(",0) mapped to (")) << "the middle column";
        }
        const Grid truth = project(SphereTargetLocator(turned), 3, 2);
        ASSERT_EQ(bent.size(), truth.size()) << name;
        EXPECT_GT(truth.size(), 3U) << name;
        for (const auto& [cell, target] : truth) {
            EXPECT_LT(norm(target - bent.at(cell)), 1e-13) << name;
        }
    }
}

/// Two slopes that meet in an edge through p and q.
TriangleMesh roof(const Vector& p, const Vector& q, const Vector& left, const Vector& right) {
    TriangleMesh mesh;
    mesh.vertices = {p, q, left, right};
    mesh.triangles = {{0, 1, 2}, {1, 0, 3}};
    return mesh;
}

// On an edge, the normal of a mesh is that of the triangle that was hit last, when it is asked for at the very point.
TEST_F(SphereBatchTest, TheMeshRemembersTheLastHitInReadingOrder) {
    int compared = 0;
    int telling = 0;
    for (int k = 0; k < 300; ++k) {
        const double lean = 0.3 * std::sin(0.7 * k);
        // The edge runs down the middle column; only the top of the right slope is there, so that its last hit comes
        // before the last of the edge in reading order and after it column by column.
        const Vector p{0.0, 3.0 + 0.1 * std::sin(k), -3.0};
        const Vector q{0.0, 3.0 + lean, 3.0};
        const TriangleMesh mesh = roof(p, q, {-3.0, 2.0 + 0.3 * std::cos(k), 0.1}, {3.0, 1.0 + lean, 6.0});
        const auto screen = std::make_shared<MeshScreen>(mesh);
        ScreenManager::getInstance()->setScreenGeometry(screen);
        const double angle = std::atan(0.4);
        const SphereTargetLocatorParams record{{0.0, 0.0, 0.0}, -angle, angle, -angle, angle, 0.0, 0.0, 0.0, {}, {}};
        const auto last = [&](const Grid& grid) { return grid.at({1, 8}); };
        const Grid grid = project(SphereTargetLocator(record), 3, 9);
        if (grid.count({1, 8}) == 0 || grid.count({2, 8}) != 0 || grid.count({2, 0}) == 0) {
            continue;
        }
        ++compared;
        const Vector normal = screen->getScreenNormal(last(grid));
        const Grid slow = project(RayByRay(record), 3, 9);
        EXPECT_EQ(normal, screen->getScreenNormal(last(slow))) << k;
        telling += normal == MeshScreen(mesh).getScreenNormal(last(grid)) ? 0 : 1;
    }
    EXPECT_GT(telling, 0) << "of " << compared << " meshes, none tells what it remembers";
}

}  // namespace

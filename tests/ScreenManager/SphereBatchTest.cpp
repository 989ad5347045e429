#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "ScreenFixture.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "support/ScreenConfigDouble.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>
#include <sstream>

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
               return one.first == other.first && std::memcmp(&one.second, &other.second, sizeof one.second) == 0;
           });
}

/// A bumpy floor with a hole and a fold, 30 x 30 cells.
TriangleMesh bumpyMesh() {
    TriangleMesh mesh;
    constexpr int CELLS = 30;
    for (int row = 0; row <= CELLS; ++row) {
        for (int column = 0; column <= CELLS; ++column) {
            const double x = 0.3 * column - 4.5;
            mesh.vertices.push_back({x, 5.0 + 0.3 * std::sin(2.0 * x) * std::cos(0.7 * row), 0.2 * row - 3.0});
        }
    }
    for (int row = 0; row < CELLS; ++row) {
        for (int column = 0; column < CELLS; ++column) {
            const auto at = [&](int r, int c) {
                return static_cast<std::uint32_t>((row + r) * (CELLS + 1) + column + c);
            };
            // The upper third is wound the other way round.
            if (row > 20) {
                mesh.triangles.push_back({at(0, 0), at(1, 0), at(1, 1)});
            } else if (row != 10 || column < 10) {
                mesh.triangles.push_back({at(0, 0), at(1, 1), at(1, 0)});
            }
            mesh.triangles.push_back({at(0, 0), at(0, 1), at(1, 1)});
        }
    }
    return mesh;
}

std::string asObj(const TriangleMesh& mesh) {
    std::ostringstream text;
    for (const Vector& v : mesh.vertices) {
        text << "v " << v[0] << " " << v[1] << " " << v[2] << "\n";
    }
    for (const auto& triangle : mesh.triangles) {
        text << "f " << triangle[0] + 1 << " " << triangle[1] + 1 << " " << triangle[2] + 1 << "\n";
    }
    return text.str();
}

/// The kinds of screens by name. The shapes are small enough for rays to miss them.
std::vector<std::pair<std::string, std::shared_ptr<ScreenGeometry>>> screens() {
    ScreenConfigDouble config;
    config.centre = {0.5, 0.25, 0.125};
    config.radius = 5.0;
    config.height = 5.0;
    config.width = 5.0;
    config.azimuthMin = -0.5;
    config.azimuthMax = 0.6;
    config.elevationMin = -0.4;
    config.elevationMax = 0.3;
    config.lowerRail = {{-2.0, 4.0, -1.0}, {2.0, 4.5, -1.5}};
    config.upperRail = {{-2.5, 5.0, 2.0}, {2.0, 3.5, 1.5}};
    ScreenConfigDouble wall(config);
    wall.centre = {0.5, 4.0, 0.125};
    std::istringstream text(asObj(bumpyMesh()));
    const auto obj = std::make_shared<OBJScreen>(L"Z", L"Y", 1.0F);
    obj->deserialize(text);
    return {{"sphere", std::make_shared<SphericalScreen>(&config)},
            {"cylinder", std::make_shared<CylinderScreen>(&config)},
            {"flat", std::make_shared<FlatScreen>(&wall)},
            {"ruled", std::make_shared<RuledSurfaceScreen>(&config)},
            {"mesh", std::make_shared<MeshScreen>(bumpyMesh())},
            {"obj", obj}};
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
    for (const auto& [name, screen] : screens()) {
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
    for (const auto& [name, screen] : screens()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        // From far ahead, looking back.
        const SphereTargetLocatorParams p{{0.1, 20.0, 0.3}, -0.2, 0.3, -0.1, 0.2, PI, 0.0, 0.1, {}, {}};
        const Grid grid = project(SphereTargetLocator(p), 37, 23);
        EXPECT_TRUE(areSameBits(grid, project(RayByRay(p), 37, 23))) << name;
        EXPECT_FALSE(grid.empty()) << name;
    }
}

TEST_F(SphereBatchTest, LongColumnsToo) {
    for (const auto& [name, screen] : screens()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        const SphereTargetLocatorParams p{{0.1, -0.2, 0.3}, -0.3, 0.3, -0.5, 0.4, 0.1, 0.1, 0.2, {}, {}};
        for (const auto& [columns, rows] : {std::pair(2, 4103), {4103, 2}, {2, 2}}) {
            EXPECT_TRUE(
                areSameBits(project(SphereTargetLocator(p), columns, rows), project(RayByRay(p), columns, rows)))
                << name;
        }
    }
}

TEST_F(SphereBatchTest, HeadingsAreBentAndLoggedInReadingOrderOnEveryKind) {
    SphereTargetLocatorParams p{{0.1, -0.2, 0.3}, -0.3, 0.3, -0.2, 0.2, 0.0, 0.0, 0.0, {}, {}};
    // A tenth to the right, as the orientation would turn them.
    p.yawTable = {{-2.0, -1.9}, {2.0, 2.1}};
    SphereTargetLocatorParams turned = p;
    turned.yawTable.clear();
    turned.rotationZ = 0.1;
    for (const auto& [name, screen] : screens()) {
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

#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "ScreenFixture.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "support/ScreenConfigDouble.h"

#include <cmath>
#include <functional>
#include <numbers>
#include <optional>

namespace {

using Vector = Point<double, 3>;
using Exact = Point<long double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;

constexpr double PI = std::numbers::pi;
/// Lengths up to ten, angles of incidence up to about 80 degrees.
constexpr double ROUNDING = 1e-13;

Exact exact(const Vector& p) {
    return {p[0], p[1], p[2]};
}

/// (a, b) turned from the first axis towards the second.
void turnPlane(long double& a, long double& b, long double angle) {
    const long double turned = a * std::cos(angle) - b * std::sin(angle);
    b = a * std::sin(angle) + b * std::cos(angle);
    a = turned;
}

/// About y (z towards x), about x (y towards z), about z backwards (y towards x): one plane after the other.
Exact turned(const SphereTargetLocatorParams& p, Exact v) {
    turnPlane(v[2], v[0], p.rotationY);
    turnPlane(v[1], v[2], p.rotationX);
    turnPlane(v[1], v[0], p.rotationZ);
    return v;
}

/// The part of a channel and its cells.
struct Part {
    double uMin = 0;
    double uMax = 1;
    double vMin = 0;
    double vMax = 1;
    int columns = 0;
    int rows = 0;
};

/// Where a ray meets a surface; nothing on a miss.
using Surface = std::function<std::optional<Exact>(const Exact& eye, const Exact& along)>;

/// The nearest of both solutions t >= 0 of a t^2 + 2 b t + c = 0 whose point is accepted.
std::optional<Exact> nearest(long double a, long double b, long double c, const Exact& eye, const Exact& along,
                             const std::function<bool(const Exact&)>& accept) {
    const long double d = b * b - a * c;
    for (const int sign : {-1, 1}) {
        const long double t = (-b + sign * std::sqrt(d)) / a;
        if (d >= 0 && t >= 0 && accept(eye + t * along)) {
            return eye + t * along;
        }
    }
    return std::nullopt;
}

class SphereTruthTest : public ScreenFixture {
protected:
    /// The target of each cell: columns from u at the left, rows from v at the top, evenly spread on the plane of the
    /// frustum.
    static std::map<Point<int, 2>, Exact> expectedGrid(const SphereTargetLocatorParams& p, const Part& part,
                                                       const Surface& surface) {
        std::map<Point<int, 2>, Exact> expected;
        const auto between = [](double from, double to, long double share) {
            const long double start = std::tan(static_cast<long double>(from));
            return start + (std::tan(static_cast<long double>(to)) - start) * share;
        };
        for (int column = 0; column < part.columns; ++column) {
            for (int row = 0; row < part.rows; ++row) {
                const long double u = part.uMin + (part.uMax - part.uMin) * column / (part.columns - 1.0L);
                const long double v = part.vMax - (part.vMax - part.vMin) * row / (part.rows - 1.0L);
                const Exact ahead{between(p.angleLeft, p.angleRight, u), 1, between(p.angleBottom, p.angleTop, v)};
                if (const auto hit = surface(exact(p.eyepoint), turned(p, ahead))) {
                    expected[{column, row}] = *hit;
                }
            }
        }
        return expected;
    }

    static Grid project(const std::shared_ptr<ScreenGeometry>& screen, const SphereTargetLocatorParams& p,
                        const Part& part) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        Grid grid;
        SphereTargetLocator(p).projectOnTargetLocationSurface(part.uMin, part.uMax, part.vMin, part.vMax, part.columns,
                                                              part.rows, grid);
        return grid;
    }

    /// Looks in many directions from many places, whole and in part. Every target must stand under its cell, and no
    /// other.
    static void expectTruth(const std::shared_ptr<ScreenGeometry>& screen, const Surface& surface,
                            std::size_t fewestHoles) {
        std::size_t targets = 0;
        std::size_t holes = 0;
        for (int k = 0; k < 24; ++k) {
            const SphereTargetLocatorParams p{{0.9 * std::sin(k), 0.7 * std::cos(2.0 * k), 0.3 * std::sin(3.0 * k)},
                                              -0.5 - 0.01 * k,
                                              0.7,
                                              -0.3,
                                              0.2 + 0.02 * k,
                                              0.25 * std::sin(5.0 * k),
                                              0.15 * std::cos(7.0 * k),
                                              0.5 * std::sin(11.0 * k),
                                              {},
                                              {}};
            const Part part = k % 2 == 0 ? Part{0, 1, 0, 1, 9, 6} : Part{0.15, 0.8, -0.1, 0.6, 5, 8};
            const Grid grid = project(screen, p, part);
            const auto expected = expectedGrid(p, part, surface);
            ASSERT_EQ(grid.size(), expected.size()) << k;
            for (const auto& [cell, target] : grid) {
                ASSERT_EQ(expected.count(cell), 1U) << k << ": " << cell[0] << ", " << cell[1];
                EXPECT_LT(norm(exact(target) - expected.at(cell)), ROUNDING);
            }
            targets += grid.size();
            holes += static_cast<std::size_t>(part.columns * part.rows) - grid.size();
        }
        EXPECT_GT(targets, 500U);
        EXPECT_GE(holes, fewestHoles);
    }
};

TEST_F(SphereTruthTest, GridsOnASphereAreExact) {
    const Exact centre{0.25L, -0.5L, 0.125L};
    const long double radius = 5;
    expectTruth(
        std::make_shared<SphericalScreen>(Vector{0.25, -0.5, 0.125}, 5.0, -PI, PI, -PI / 2, PI / 2),
        [&](const Exact& eye, const Exact& along) {
            const Exact gap = eye - centre;
            return nearest(dot(along, along), dot(gap, along), dot(gap, gap) - radius * radius, eye, along,
                           [](const Exact&) { return true; });
        },
        0);
}

TEST_F(SphereTruthTest, GridsOnAFlatScreenAreExactAndItsHolesKeepTheirPlaces) {
    ScreenConfigDouble config;
    config.centre = {0.25, 4.0, 0.5};
    config.width = 5.0;
    config.height = 3.0;
    expectTruth(
        std::make_shared<FlatScreen>(&config),
        [](const Exact& eye, const Exact& along) -> std::optional<Exact> {
            const Exact hit = eye + (4 - eye[1]) / along[1] * along;
            const bool isWithin = std::abs(hit[0] - 0.25L) <= 2.5L && std::abs(hit[2] - 0.5L) <= 1.5L;
            return isWithin && along[1] > 0 ? std::optional(hit) : std::nullopt;
        },
        100);
}

TEST_F(SphereTruthTest, GridsOnACylinderAreExactAndItsHolesKeepTheirPlaces) {
    ScreenConfigDouble config;
    config.centre = {0.25, -0.5, 0.5};
    config.radius = 5.0;
    config.height = 3.0;
    config.azimuthMin = -PI;
    config.azimuthMax = PI;
    expectTruth(
        std::make_shared<CylinderScreen>(&config),
        [](const Exact& eye, const Exact& along) {
            const long double x = eye[0] - 0.25L;
            const long double y = eye[1] + 0.5L;
            return nearest(along[0] * along[0] + along[1] * along[1], x * along[0] + y * along[1], x * x + y * y - 25,
                           eye, along, [](const Exact& hit) { return std::abs(hit[2] - 0.5L) <= 1.5L; });
        },
        100);
}

TEST_F(SphereTruthTest, FromOutsideADomeTheNearSideOfItsBackGivesTheTargets) {
    const double quarter = std::atan(0.25);
    const auto dome = std::make_shared<SphericalScreen>(Vector{0.0, 8.0, 0.0}, 5.0, -PI, PI, -PI / 2, PI / 2);
    const Grid grid =
        project(dome, {{}, -quarter, quarter, -quarter, quarter, 0.0, 0.0, 0.0, {}, {}}, {0, 1, 0, 1, 5, 5});
    ASSERT_EQ(grid.size(), 25U);
    EXPECT_LT(norm(grid.at({2, 2}) - Vector{0.0, 3.0, 0.0}), ROUNDING);
}

TEST_F(SphereTruthTest, RowsFallAndColumnsGrow) {
    const auto dome = std::make_shared<SphericalScreen>(Vector{}, 5.0, -PI, PI, -PI / 2, PI / 2);
    const Grid grid = project(dome, {{}, -0.6, 0.5, -0.4, 0.3, 0.0, 0.0, 0.0, {}, {}}, {0, 1, 0, 1, 4, 3});
    ASSERT_EQ(grid.size(), 12U);
    const auto azimuth = [&](int column, int row) {
        const Vector& p = grid.at({column, row});
        return std::atan2(p[0], p[1]);
    };
    const auto steepness = [&](int column, int row) {
        const Vector& p = grid.at({column, row});
        return std::atan2(p[2], p[1]);
    };
    EXPECT_NEAR(azimuth(0, 1), -0.6, ROUNDING);
    EXPECT_NEAR(azimuth(3, 1), 0.5, ROUNDING);
    EXPECT_NEAR(steepness(1, 0), 0.3, ROUNDING);
    EXPECT_NEAR(steepness(1, 2), -0.4, ROUNDING);
}

TEST_F(SphereTruthTest, ASingleColumnOrRowFindsNothingOnAnyScreen) {
    ScreenConfigDouble config;
    config.centre = {0.0, 4.0, 0.0};
    config.width = 100.0;
    config.height = 100.0;
    config.radius = 4.0;
    config.azimuthMin = -PI;
    config.azimuthMax = PI;
    TriangleMesh triangle;
    triangle.vertices = {{-90.0, 4.0, -90.0}, {90.0, 4.0, -90.0}, {0.0, 4.0, 90.0}};
    triangle.triangles = {{0, 1, 2}};
    const std::vector<std::shared_ptr<ScreenGeometry>> screens{
        std::make_shared<FlatScreen>(&config), std::make_shared<CylinderScreen>(&config),
        std::make_shared<SphericalScreen>(Vector{}, 5.0, -PI, PI, -PI / 2, PI / 2),
        std::make_shared<MeshScreen>(triangle)};
    const SphereTargetLocatorParams p{{}, -0.3, 0.3, -0.3, 0.3, 0.0, 0.0, 0.0, {}, {}};
    SphereTargetLocatorParams bent = p;
    bent.yawTable = {{0.0, 0.0}, {1.0, 1.0}};
    const LogTrap quiet(log4cxx::Level::getWarn());
    for (const auto& screen : screens) {
        for (const auto& record : {p, bent}) {
            EXPECT_EQ(project(screen, record, {0, 1, 0, 1, 2, 2}).size(), 4U);
            EXPECT_TRUE(project(screen, record, {0, 1, 0, 1, 1, 20}).empty());
            EXPECT_TRUE(project(screen, record, {0, 1, 0, 1, 20, 1}).empty());
            EXPECT_TRUE(project(screen, record, {0, 1, 0, 1, 1, 1}).empty());
            EXPECT_TRUE(project(screen, record, {0.5, 0.5, 0, 1, 1, 20}).empty());
        }
    }
}

/// A piece of a dome, cells x cells quadrilaterals of two triangles.
TriangleMesh domeMesh(int cells) {
    const SphericalScreen piece({}, 5.0, -1.2, 1.2, -0.9, 0.9);
    TriangleMesh mesh;
    for (int row = 0; row <= cells; ++row) {
        for (int column = 0; column <= cells; ++column) {
            Vector vertex;
            EXPECT_TRUE(piece.mapInto3D({1.0 * column / cells, 1.0 * row / cells}, vertex, false));
            mesh.vertices.push_back(vertex);
        }
    }
    const auto index = [cells](int row, int column) { return static_cast<std::uint32_t>(row * (cells + 1) + column); };
    for (int row = 0; row < cells; ++row) {
        for (int column = 0; column < cells; ++column) {
            mesh.triangles.push_back({index(row, column), index(row + 1, column + 1), index(row, column + 1)});
            mesh.triangles.push_back({index(row, column), index(row + 1, column), index(row + 1, column + 1)});
        }
    }
    return mesh;
}

TEST_F(SphereTruthTest, GridsOnAFineMeshApproachThoseOnTheDome) {
    const SphereTargetLocatorParams p{{0.4, -0.3, 0.2}, -0.6, 0.5, -0.4, 0.45, 0.2, -0.1, 0.3, {}, {}};
    const Part part{0, 1, 0, 1, 13, 11};
    const auto dome = std::make_shared<SphericalScreen>(Vector{}, 5.0, -PI, PI, -PI / 2, PI / 2);
    const Grid truth = project(dome, p, part);
    ASSERT_EQ(truth.size(), 143U);
    const auto error = [&](int cells) {
        const Grid grid = project(std::make_shared<MeshScreen>(domeMesh(cells)), p, part);
        EXPECT_EQ(grid.size(), truth.size());
        double largest = 0;
        for (const auto& [cell, target] : grid) {
            largest = std::max(largest, norm(target - truth.at(cell)));
        }
        return largest;
    };
    // A chord leaves its arc by r step^2 / 8; the diagonal of a cell is 2.4 by 1.8 over the number of cells.
    const auto sagitta = [](int cells) { return 5.0 * (2.4 * 2.4 + 1.8 * 1.8) / (8.0 * cells * cells); };
    const double coarse = error(30);
    const double fine = error(120);
    // Oblique rays see it enlarged, but by less than two here.
    EXPECT_LT(coarse, 2.0 * sagitta(30));
    EXPECT_LT(fine, 2.0 * sagitta(120));
    EXPECT_GT(coarse, 8.0 * fine) << "the square of the refinement is 16";
}

}  // namespace

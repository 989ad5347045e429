#include "DisplayLight/SurfaceChart.h"

#include "../DisplayExport/ExportDisplays.h"
#include "DisplayReport/basics/GeometryText.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace {

using Veltrani::DisplayLight::EyePlace;
using Veltrani::DisplayLight::SurfaceChart;

constexpr std::size_t PLACES = 40'000;
const std::string NO_TARGETS = "<TargetData type='ProjectorCentric'/>";

class SurfaceChartTest : public ExportDisplayTest {
protected:
    using Corners = std::array<P3, 3>;

    void loadScreen(const std::string& screen) { load(screen, displays::projector("P", ""), NO_TARGETS); }

    void loadMesh(const std::string& obj) {
        loadScreen("<Screen shape='Mesh' fileUnit='m'><ContentMesh file='" + m_files.write("mesh.obj", obj) +
                   "'/><ImportOrientation up='Z' forward='Y'/></Screen>");
    }

    static std::shared_ptr<const ScreenGeometry> screen() { return ScreenManager::getInstance()->getScreenGeometry(); }

    static Corners cornersOf(const SurfaceChart& chart, const SurfaceChart::Triangle& triangle) {
        return {chart.vertices[triangle[0]], chart.vertices[triangle[1]], chart.vertices[triangle[2]]};
    }

    /// The place that the picture shows at a point of a triangle, by the nearest pixel.
    static EyePlace shownAt(const SurfaceChart& chart, const SurfaceChart::Triangle& triangle, double b, double c) {
        const P2 at = chart.coordinates[triangle[0]] * (1 - b - c) + chart.coordinates[triangle[1]] * b +
                      chart.coordinates[triangle[2]] * c;
        const auto pixel = [](double part, std::size_t count) {
            return std::min(static_cast<std::size_t>(part * static_cast<double>(count)), count - 1);
        };
        return chart.grid.places[pixel(at[1], chart.grid.rows()) * chart.grid.width + pixel(at[0], chart.grid.width)];
    }

    /// Everywhere on the triangles the picture shows what stands there, to a step or two.
    /// @param beside how far the triangles stand off the surface
    static void expectPlacesWhereTheyAreDrawn(const SurfaceChart& chart, double beside) {
        constexpr double STEPS = 2.5;
        double worst = 0;
        for (const auto& triangle : chart.triangles) {
            const auto [a, b, c] = cornersOf(chart, triangle);
            for (const auto& [ofB, ofC] :
                 {std::pair(0.02, 0.02), {0.96, 0.02}, {0.02, 0.96}, {0.3, 0.3}, {0.48, 0.48}}) {
                const EyePlace place = shownAt(chart, triangle, ofB, ofC);
                ASSERT_TRUE(place.isSeen);
                worst = std::max(worst, norm(place.point - (a + (b - a) * ofB + (c - a) * ofC)));
            }
        }
        EXPECT_LE(worst, STEPS * chart.step + beside);
    }

    static double areaOf(const SurfaceChart& chart) {
        double area = 0;
        for (const auto& triangle : chart.triangles) {
            const auto [a, b, c] = cornersOf(chart, triangle);
            area += norm(cross(b - a, c - a)) / 2;
        }
        return area;
    }

    TemporaryFolder m_files;
};

TEST_F(SurfaceChartTest, AWallIsSpreadOutOverItsCoordinates) {
    loadScreen("<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen>");
    const SurfaceChart chart = SurfaceChart::of(screen(), PLACES);
    EXPECT_NEAR(areaOf(chart), 8, 1e-9);
    EXPECT_NEAR(chart.step, std::sqrt(8.0 / PLACES), 1e-9);
    EXPECT_EQ(chart.grid.width, 282U);
    EXPECT_EQ(chart.grid.rows(), 141U);
    ASSERT_EQ(chart.grid.parameters.size(), chart.grid.places.size());
    for (std::size_t i = 0; i < chart.grid.places.size(); i += 97) {
        const P2& at = chart.grid.parameters[i];
        EXPECT_NEAR(at[0], (static_cast<double>(i % 282) + 0.5) / 282, 1e-12);
        EXPECT_LT(norm(chart.grid.places[i].point - P3{4 * at[0] - 2, 5, 2 * at[1]}), 1e-12);
    }
    expectPlacesWhereTheyAreDrawn(chart, 0);
}

TEST_F(SurfaceChartTest, ADomeIsDrawnToItsPoleWithItsNormalOutwards) {
    loadScreen(exportDisplays::Planetarium::SCREEN);
    const SurfaceChart chart = SurfaceChart::of(screen(), PLACES);
    EXPECT_NEAR(areaOf(chart), 2 * std::numbers::pi * 25, 0.1);
    for (const auto& triangle : chart.triangles) {
        const auto [a, b, c] = cornersOf(chart, triangle);
        ASSERT_GT(dot(cross(b - a, c - a), a + b + c), 0);
    }
    expectPlacesWhereTheyAreDrawn(chart, 0.002);
}

/// A roof of two slopes and a strip that is forty times as long as wide.
const std::string ROOF =
    "v -2 4 0\nv 2 4 0\nv 2 5 1\nv -2 5 1\nv -2 4 2\nv 2 4 2\nv -2 3 0\nv 2 3 0\nv 2 3 0.1\n"
    "f 1 2 3\nf 1 3 4\nf 4 3 6\nf 4 6 5\nf 7 8 9\n";

TEST_F(SurfaceChartTest, EveryTriangleOfAMeshHasPixelsOfItsOwn) {
    loadMesh(ROOF);
    const SurfaceChart chart = SurfaceChart::of(screen(), PLACES);
    EXPECT_NEAR(areaOf(chart), 8 * std::sqrt(2.0) + 0.2, 1e-9);
    EXPECT_LE(chart.grid.places.size(), PLACES);
    expectPlacesWhereTheyAreDrawn(chart, 0);
    std::set<std::size_t> seams;
    for (const auto& [pixel, one, other] : chart.seams) {
        EXPECT_TRUE(seams.insert(pixel).second) << "of one triangle alone";
        EXPECT_FALSE(chart.grid.places[pixel].isSeen);
        EXPECT_TRUE(chart.grid.places[one].isSeen && chart.grid.places[other].isSeen);
    }
    // A part's pixels lie beside each other as its places do.
    for (std::size_t i = 1; i < chart.grid.places.size(); ++i) {
        const bool areBeside = i % chart.grid.width > 0 && chart.grid.places[i].isSeen &&
                               chart.grid.places[i - 1].isSeen && chart.grid.isOnePart(i, i - 1);
        if (areBeside) {
            ASSERT_LE(norm(chart.grid.places[i].point - chart.grid.places[i - 1].point), 1.01 * chart.step);
        }
    }
    EXPECT_GT(chart.triangles.size(), 10U) << "the strip is cut";
}

TEST_F(SurfaceChartTest, AMeshWithTextureHasTheCoordinatesOfItsPlaces) {
    loadMesh("v -2 5 0\nv 2 5 0\nv 2 5 2\nv -2 5 2\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/1 2/2 3/3\nf 1/1 3/3 4/4\n");
    const SurfaceChart chart = SurfaceChart::of(screen(), PLACES);
    ASSERT_EQ(chart.grid.parameters.size(), chart.grid.places.size());
    std::size_t seen = 0;
    for (std::size_t i = 0; i < chart.grid.places.size(); ++i) {
        if (chart.grid.places[i].isSeen) {
            const P2& at = chart.grid.parameters[i];
            ASSERT_LT(norm(chart.grid.places[i].point - P3{4 * at[0] - 2, 5, 2 * at[1]}), 1e-12);
            ++seen;
        }
    }
    EXPECT_GT(seen, PLACES / 2);
}

/// A half of a ball of 2 n^2 triangles.
std::string ball(int n) {
    std::ostringstream obj;
    for (int row = 0; row <= n; ++row) {
        for (int column = 0; column <= n; ++column) {
            const double azimuth = std::numbers::pi * (static_cast<double>(column) / n - 0.5);
            const double elevation = 2.4 * (static_cast<double>(row) / n - 0.5);
            obj << "v " << 3 * std::sin(azimuth) * std::cos(elevation) << ' '
                << 3 * std::cos(azimuth) * std::cos(elevation) << ' ' << 3 * std::sin(elevation) << '\n';
        }
    }
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            const int a = row * (n + 1) + column + 1;
            obj << "f " << a << ' ' << a + n + 2 << ' ' << a + 1 << "\nf " << a << ' ' << a + n + 1 << ' ' << a + n + 2
                << '\n';
        }
    }
    return obj.str();
}

TEST_F(SurfaceChartTest, AMeshOfManyTrianglesIsDrawnWithFewerAndLookedUpOnItself) {
    loadMesh(ball(200));
    const SurfaceChart chart = SurfaceChart::of(screen(), 1'000'000);
    EXPECT_LE(chart.triangles.size(), SurfaceChart::MOST_TRIANGLES);
    EXPECT_GT(chart.triangles.size(), SurfaceChart::MOST_TRIANGLES / 2);
    std::size_t seen = 0;
    std::size_t all = 0;
    for (std::size_t i = 0; i < chart.grid.places.size(); ++i) {
        all += chart.grid.parts[i] > 0 ? 1 : 0;
        if (chart.grid.places[i].isSeen) {
            // The chords of the mesh itself.
            ASSERT_NEAR(norm(chart.grid.places[i].point), 3, 4e-4);
            ++seen;
        }
    }
    EXPECT_GT(static_cast<double>(seen), 0.99 * static_cast<double>(all)) << "but for the very edge";
    EXPECT_TRUE(chart.grid.parameters.empty());
}

}  // namespace

#include "DisplayLight/detail/MeshChart.h"

#include "../../DisplayExport/ExportDisplays.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using Veltrani::DisplayLight::SurfaceChart;
using Veltrani::DisplayLightDetail::meshChart;

/// Of a triangle that the places stand within its edges.
constexpr double INSIDE = 1e-3;

class MeshChartTest : public ExportDisplayTest {
protected:
    SurfaceChart chartOf(const std::string& obj, std::size_t places) {
        load("<Screen shape='Mesh' fileUnit='m'><ContentMesh file='" + m_files.write("mesh.obj", obj) +
                 "'/><ImportOrientation up='Z' forward='Y'/></Screen>",
             displays::projector("P", ""), "<TargetData type='ProjectorCentric'/>");
        return meshChart(ScreenManager::getInstance()->getScreenGeometry(), places);
    }

    /// Each place of a part stands where its triangle has the middle of the pixel, moved towards the middle of the
    /// triangle.
    /// @return how many places each part has
    static std::map<std::size_t, std::size_t> expectPlaces(const SurfaceChart& chart) {
        const double rows = static_cast<double>(chart.grid.rows());
        const double width = static_cast<double>(chart.grid.width);
        std::map<std::size_t, std::size_t> counts;
        for (std::size_t i = 0; i < chart.grid.places.size(); ++i) {
            const std::uint32_t part = chart.grid.parts[i];
            EXPECT_EQ(chart.grid.places[i].isSeen, part > 0);
            if (part == 0) {
                continue;
            }
            ++counts[part];
            const auto& [a, b, c] = chart.triangles[part - 1];
            const P2 at{(static_cast<double>(i % chart.grid.width) + 0.5) / width,
                        (static_cast<double>(i / chart.grid.width) + 0.5) / rows};
            const P2 toB = chart.coordinates[b] - chart.coordinates[a];
            const P2 toC = chart.coordinates[c] - chart.coordinates[a];
            const P2 way = at - chart.coordinates[a];
            const double area = toB[0] * toC[1] - toB[1] * toC[0];
            const double ofB = (way[0] * toC[1] - way[1] * toC[0]) / area;
            const double ofC = (toB[0] * way[1] - toB[1] * way[0]) / area;
            EXPECT_GT(std::min({ofB, ofC, 1 - ofB - ofC}), -1e-9) << "it lies on its triangle";
            const P3& first = chart.vertices[a];
            const P3 middle = (first + chart.vertices[b] + chart.vertices[c]) * (1.0 / 3);
            const P3 drawn = first + (chart.vertices[b] - first) * ofB + (chart.vertices[c] - first) * ofC;
            EXPECT_LT(norm(chart.grid.places[i].point - (middle + (drawn - middle) * (1 - INSIDE))), 1e-9) << i;
        }
        return counts;
    }

    /// Beside each place, in its row and in its column, there are others of its part, or pixels that show what these
    /// do.
    static void expectRims(const SurfaceChart& chart) {
        std::map<std::size_t, std::uint32_t> partOfRim;
        for (const auto& [pixel, one, other] : chart.seams) {
            EXPECT_EQ(chart.grid.parts[one], chart.grid.parts[other]);
            partOfRim[pixel] = chart.grid.parts[one];
            for (const std::size_t within : {one, other}) {
                const auto width = static_cast<int>(chart.grid.width);
                const int way = static_cast<int>(within) - static_cast<int>(pixel);
                const int across = (way + width + 1) % width - 1;
                EXPECT_LE(std::abs(across), 1) << "it lies beside the pixel";
                EXPECT_LE(std::abs((way - across) / width), 1);
            }
        }
        EXPECT_EQ(partOfRim.size(), chart.seams.size());
        for (std::size_t i = 0; i < chart.grid.places.size(); ++i) {
            const std::uint32_t part = chart.grid.parts[i];
            for (const std::size_t beside : {i - 1, i + 1, i - chart.grid.width, i + chart.grid.width}) {
                if (part > 0) {
                    ASSERT_LT(beside, chart.grid.places.size());
                    EXPECT_EQ(chart.grid.parts[beside] > 0 ? chart.grid.parts[beside] : partOfRim[beside], part) << i;
                }
            }
        }
    }

    TemporaryFolder m_files;
};

/// A square of a metre.
const std::string SQUARE = "v 0 5 0\nv 1 5 0\nv 1 5 1\nv 0 5 1\nf 1 2 3\nf 1 3 4\n";

// Its two halves share a cell of n + 5 by n + 4 pixels, n steps along a metre: 27 are the most of which it has no more
// than a thousand. The steps grow by 3 % until that is so.
TEST_F(MeshChartTest, TwoHalvesOfASquareShareACell) {
    const SurfaceChart chart = chartOf(SQUARE, 1000);
    EXPECT_NEAR(chart.step, std::sqrt(1.0 / 1000) * std::pow(1.03, 6), 1e-9);
    EXPECT_EQ(chart.grid.width, 32U);
    EXPECT_EQ(chart.grid.rows(), 31U);
    ASSERT_EQ(chart.triangles.size(), 2U);
    EXPECT_EQ(expectPlaces(chart), (std::map<std::size_t, std::size_t>{{1, 28 * 29 / 2}, {2, 28 * 29 / 2}}));
    EXPECT_EQ(chart.seams.size(), 2U * (1 + 3 * 29));
    expectRims(chart);
    // The pixel beside the corner of the first half is the first one of all.
    EXPECT_LT(norm(chart.coordinates[0] - P2{1.5 / 32, 1.5 / 31}), 1e-12);
    EXPECT_LT(norm(chart.coordinates[1] - P2{28.5 / 32, 1.5 / 31}), 1e-12);
    EXPECT_LT(norm(chart.coordinates[2] - P2{1.5 / 32, 28.5 / 31}), 1e-12);
}

/// Walls of three sizes, the smallest one first.
const std::string WALLS =
    "v 0 5 0\nv 0.5 5 0\nv 0.5 5 0.4\nv 0 5 0.4\nv 0 6 0\nv 2 6 0\nv 2 6 2\nv 0 6 2\nv 0 7 0\nv 1 7 0\nv 1 7 0.8\n"
    "v 0 7 0.8\nf 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\nf 9 10 11\nf 9 11 12\nf 1 2 4\n";

TEST_F(MeshChartTest, TrianglesOfManySizesAreAsLargeAsTheyAre) {
    for (const std::size_t most : {std::size_t{1000}, std::size_t{2500}, std::size_t{20'000}}) {
        const SurfaceChart chart = chartOf(WALLS, most);
        EXPECT_EQ(chart.triangles.size(), 7U);
        EXPECT_LE(chart.grid.places.size(), most);
        // Not so much finer that a step less would do.
        EXPECT_GT(chart.grid.places.size(), most / 3);
        const auto counts = expectPlaces(chart);
        ASSERT_EQ(counts.size(), 7U);
        expectRims(chart);
        // Two of a cell have as many steps along their sides, those of the larger one: 2, 1, then 0.5.
        std::size_t places = 0;
        for (const auto& [part, count] : counts) {
            const double side = part <= 2 ? 2 : part <= 4 ? 1 : 0.5;
            const double steps = std::ceil(side / chart.step);
            EXPECT_EQ(static_cast<double>(count), (steps + 1) * (steps + 2) / 2) << part;
            places += count;
        }
        EXPECT_GT(static_cast<double>(places), 0.3 * static_cast<double>(most));
    }
}

/// A triangle on an edge of 4 m, that much high. Of less than a metre it is a sliver: the edge squared is more than
/// four times twice its area.
std::string sliver(const std::string& height) {
    return "v 0 5 0\nv 4 5 0\nv 2 5 " + height + "\nf -3 -2 -1\n";
}

TEST_F(MeshChartTest, ASliverIsHalvedAcrossItsLongestEdge) {
    EXPECT_EQ(chartOf(sliver("1.01"), 5000).triangles.size(), 1U);
    const SurfaceChart chart = chartOf(sliver("0.75"), 5000);
    expectPlaces(chart);
    expectRims(chart);
    ASSERT_EQ(chart.triangles.size(), 2U);
    for (const auto& [a, b, c] : chart.triangles) {
        const P3 normal = cross(chart.vertices[b] - chart.vertices[a], chart.vertices[c] - chart.vertices[a]);
        EXPECT_LT(norm(normal - P3{0.0, -1.5, 0.0}), 1e-12) << "it faces the way of the mesh";
        EXPECT_NEAR(norm(chart.vertices[c] - chart.vertices[b]), std::hypot(2, 0.75), 1e-12)
            << "opposite to the first corner";
    }
}

// Of a flat one, halves are right-angled, and of these one half is as flat: n halvings leave N(n) = 2 (1 + N(n - 2))
// triangles, with N(0) = 1 and N(1) = 2. Eight are the most, and no more than 60000 triangles may come of it.
TEST_F(MeshChartTest, AFlatTriangleIsHalvedAsOftenAsTheirNumberAllows) {
    const auto chart = chartOf(sliver("0.5"), 5000);
    EXPECT_EQ(chart.triangles.size(), 46U);
    expectPlaces(chart);
    std::string many;
    for (int i = 0; i < 7500; ++i) {
        const std::string y = std::to_string(i);
        many += "v 0 " + y + " 0\nv 4 " + y + " 0\nv 2 " + y + " 0.5\nf -3 -2 -1\n";
    }
    EXPECT_EQ(chartOf(many, 1000).triangles.size(), 6U * 7500) << "three times";
}

TEST_F(MeshChartTest, ATriangleOfLeastSizeHasItsCornersAlone) {
    std::string obj;
    for (int i = 0; i < 400; ++i) {
        const std::string x = std::to_string(i);
        obj += "v " + x + " 5 0\nv " + x + ".5 5 0\nv " + x + " 5 0.5\nf -3 -2 -1\n";
    }
    const SurfaceChart chart = chartOf(obj, 1000);
    for (const auto& [part, count] : expectPlaces(chart)) {
        EXPECT_EQ(count, 3U) << part;
    }
    EXPECT_EQ(chart.triangles.size(), 400U);
    expectRims(chart);
}

}  // namespace

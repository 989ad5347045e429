#include "DisplayReport/scene/SceneLighter.h"

#include "DisplayReport/coverage/CoverageSurvey.h"
#include "DisplayReport/scene/SceneCollector.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "LitDisplays.h"

#include <algorithm>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t PLENTY = 1000000;

class SceneLighterTest : public LitDisplayTest {
protected:
    DisplayScene lit(std::size_t mostTriangles = PLENTY) {
        const TargetSurvey survey = TargetPlacer({3, 2, 2}).place(*m_config);
        DisplayScene scene = SceneCollector().collect("title", *m_config, survey, {});
        SceneLighter(mostTriangles).addTo(scene, *m_config);
        return scene;
    }

    static const SceneShading& shadingOf(const DisplayScene& scene) { return scene.surfaces.back().shading.value(); }

    static std::string half(const std::string& id, const std::string& left, const std::string& right) {
        return displays::projector(id, "<ScreenArea left='" + left + "' right='" + right + "' bottom='0' top='1'/>");
    }

    static double areaOf(const SceneShading& shading, const ShadedRegion& region) {
        double area = 0;
        for (const auto& [a, b, c] : region.triangles) {
            area +=
                norm(cross(shading.vertices[b] - shading.vertices[a], shading.vertices[c] - shading.vertices[a])) / 2;
        }
        return area;
    }

    /// Where the regions of these channels reach to, along one axis.
    static std::pair<double, double> rangeOf(const SceneShading& shading, const std::vector<std::size_t>& channels,
                                             std::size_t axis) {
        std::pair<double, double> range(1e9, -1e9);
        for (const ShadedRegion& region : shading.regions) {
            if (region.channels == channels) {
                for (const auto& triangle : region.triangles) {
                    for (const std::uint32_t corner : triangle) {
                        range.first = std::min(range.first, shading.vertices[corner][axis]);
                        range.second = std::max(range.second, shading.vertices[corner][axis]);
                    }
                }
            }
        }
        return range;
    }
};

// Oracle: the numbers of the two areas, which overlap by half.
TEST_F(SceneLighterTest, RegionsEndWhereTheAreasOfTheChannelsDo) {
    load(displays::FLAT, half("A", "0", "0.5") + half("B", "0.25", "0.75"));
    const DisplayScene scene = lit();
    const SceneShading& shading = shadingOf(scene);
    ASSERT_EQ(shading.regions.size(), 4U);
    EXPECT_THAT(shading.regions[0].channels, IsEmpty());
    EXPECT_THAT(shading.regions[1].channels, ElementsAre(0U));
    EXPECT_THAT(shading.regions[2].channels, ElementsAre(1U));
    EXPECT_THAT(shading.regions[3].channels, ElementsAre(0U, 1U));
    for (const ShadedRegion& region : shading.regions) {
        EXPECT_NEAR(region.area, 2, 2e-4);
        EXPECT_NEAR(areaOf(shading, region), region.area, 1e-6) << "the triangles fill the region";
    }
    const auto [left, right] = rangeOf(shading, {0, 1}, 0);
    EXPECT_NEAR(left, -1, 1e-4);
    EXPECT_NEAR(right, 0, 1e-4);
}

// Two routes: the shading against the report of the coverage.
TEST_F(SceneLighterTest, PartsAgreeWithTheCoverageReport) {
    load(displays::SPHERE,
         camera("A", "-45", "45", "-40", "40", "<Position x='1' y='0' z='0'/>") +
             camera("B", "-30", "50", "-30", "45", "<Position x='-1' y='0' z='0.5'/>") +
             camera("C", "-60", "60", "-10", "10"),
         displays::PROJECTORS);
    const CoverageReport report = CoverageSurvey().of(*m_config);
    const DisplayScene scene = lit();
    const SceneShading& shading = shadingOf(scene);
    for (std::size_t count = 0; count < 4; ++count) {
        EXPECT_NEAR(shading.partLitBy(count, false), report.partOfScreen(report.areaLitBy(count)), 1e-9) << count;
    }
    for (std::size_t channel = 0; channel < 3; ++channel) {
        EXPECT_NEAR(shading.partLitByChannel(channel), report.partOfScreen(report.channels[channel].area), 1e-9);
    }
    EXPECT_GT(shading.partLitBy(3, false), 0.01) << "the pictures do overlap";
}

// A cave: triangles between places on two walls are smaller than the corner between them. Oracles: the report of the
// coverage, and the walls.
TEST_F(SceneLighterTest, PartsAgreeWithTheCoverageReportAroundRightAngles) {
    const auto rail = [](const std::string& z) {
        return "<Point x='-1.5' y='-1.5' z='" + z + "'/><Point x='-1.5' y='1.5' z='" + z +
               "'/><Point x='1.5' y='1.5' z='" + z + "'/><Point x='1.5' y='-1.5' z='" + z + "'/>";
    };
    load("<Screen shape='Ruled'><LowerRail>" + rail("0") + "</LowerRail><UpperRail>" + rail("2.4") +
             "</UpperRail></Screen>",
         camera("A", "-46", "46", "-20", "20", "<Position x='0' y='0' z='1.7'/>") +
             camera("B", "-47", "47", "-25", "20", "<Position x='0' y='0' z='1.7'/><Orientation z='90' x='0' y='0'/>"),
         displays::PROJECTORS);
    const CoverageReport report = CoverageSurvey().of(*m_config);
    const DisplayScene scene = lit();
    const SceneShading& shading = shadingOf(scene);
    EXPECT_NEAR(shading.area, 9 * 2.4, 1e-4 * 9 * 2.4);
    EXPECT_GT(shading.partLitBy(2, false), 0.001) << "on both sides of a corner";
    for (std::size_t count = 0; count < 3; ++count) {
        EXPECT_NEAR(shading.partLitBy(count, false), report.partOfScreen(report.areaLitBy(count)), 1e-9) << count;
    }
    for (std::size_t channel = 0; channel < 2; ++channel) {
        EXPECT_NEAR(shading.partLitByChannel(channel), report.partOfScreen(report.channels[channel].area), 1e-9);
    }
}

// A lens has no grid that cells could be shaded by.
TEST_F(SceneLighterTest, TheLightOfALensIsShadedUpToItsBorder) {
    load(displays::FLAT,
         camera("A", "-10", "10", "-8", "8", "<ProjectionModel name='Equidistant'/><Position x='0' y='0' z='1'/>"),
         displays::PROJECTORS);
    const DisplayScene scene = lit();
    const auto [left, right] = rangeOf(shadingOf(scene), {0}, 0);
    EXPECT_NEAR(left, -5 * std::tan(radians(10)), 1e-3);
    EXPECT_NEAR(right, 5 * std::tan(radians(10)), 1e-3);
}

// Oracle: the cylinder that the numbers describe. Where a triangle is cut and its neighbour is not, no gap may show.
TEST_F(SceneLighterTest, PartsThatAreLitAlikeStayOnACurvedScreen) {
    load("<Screen shape='Cylinder'><Radius value='4'/><Size height='2'/><Azimuth min='-180' max='180'/></Screen>",
         camera("A", "-20", "20", "-10", "10"), displays::PROJECTORS);
    const DisplayScene scene = lit();
    const SceneShading& shading = shadingOf(scene);
    std::size_t triangles = 0;
    double area = 0;
    for (const ShadedRegion& region : shading.regions) {
        triangles += region.triangles.size();
        area += areaOf(shading, region);
        for (const auto& [a, b, c] : region.triangles) {
            const P3 middle = (shading.vertices[a] + shading.vertices[b] + shading.vertices[c]) * (1.0 / 3);
            ASSERT_NEAR(std::hypot(middle[0], middle[1]), 4, 4e-3) << "a thousandth of the radius";
        }
    }
    const double whole = 2 * std::numbers::pi * 4 * 2;
    EXPECT_NEAR(area, whole, 1e-3 * whole);
    EXPECT_LT(triangles, 60000U) << "no need to thin it";
}

TEST_F(SceneLighterTest, ManyPiecesAreThinnedAndTheBordersStay) {
    load(displays::FLAT, half("A", "0.1", "0.6"));
    constexpr std::size_t MOST = 500;
    const DisplayScene all = lit();
    const DisplayScene few = lit(MOST);
    const auto count = [](const SceneShading& shading) {
        std::size_t triangles = 0;
        for (const ShadedRegion& region : shading.regions) {
            triangles += region.triangles.size();
        }
        return triangles;
    };
    EXPECT_GT(count(shadingOf(all)), 4 * MOST);
    EXPECT_LE(count(shadingOf(few)), MOST + 2 * 64);
    const auto [left, right] = rangeOf(shadingOf(few), {0}, 0);
    // Slivers beside a border may go, no wider than a pixel of a picture in which the wall is 800 pixels wide.
    EXPECT_NEAR(left, -1.6, 4.0 / 800);
    EXPECT_NEAR(right, 0.4, 4.0 / 800);
    // Where edges collapse a triangle may turn over, and cover a place twice: 1.3 % of the area as it is.
    EXPECT_NEAR(areaOf(shadingOf(few), shadingOf(few).regions[1]), 4, 0.06);
}

TEST_F(SceneLighterTest, EveryChannelHasItsLatticeAndItsArrow) {
    load(displays::FLAT, half("A", "0", "0.5") + displays::projector("B", "") + half("C", "0.5", "1"));
    const DisplayScene scene = lit();
    EXPECT_FALSE(scene.channels[0].lattice.empty());
    EXPECT_TRUE(scene.channels[1].lattice.empty());
    EXPECT_LE(norm(scene.channels[2].lattice.places.front() - P3{0, 5, 0}), 1e-12) << "of the third channel";
    EXPECT_EQ(scene.channels[0].upMark.size(), 2U);
    EXPECT_THAT(shadingOf(scene).regions.back().channels, ElementsAre(2U));
}

TEST_F(SceneLighterTest, ManyChannelsShareTheNodes) {
    std::string projectors;
    for (int i = 0; i < 60; ++i) {
        projectors += half("P" + std::to_string(i), "0", "1");
    }
    load(displays::FLAT, projectors);
    const DisplayScene scene = lit();
    std::size_t nodes = 0;
    for (const SceneChannel& channel : scene.channels) {
        nodes += channel.lattice.places.size();
    }
    EXPECT_GT(nodes, 40000U);
    EXPECT_LE(nodes, 80000U);
    EXPECT_EQ(shadingOf(scene).regions.size(), 1U);
    EXPECT_EQ(shadingOf(scene).regions[0].channels.size(), 60U);
}

TEST_F(SceneLighterTest, WithoutProjectorsTheScreenIsDark) {
    load(displays::FLAT, "");
    const DisplayScene scene = lit();
    ASSERT_EQ(shadingOf(scene).regions.size(), 1U);
    EXPECT_THAT(shadingOf(scene).regions[0].channels, IsEmpty());
}

TEST_F(SceneLighterTest, WithoutAScreenNothingIsShaded) {
    m_config = displays::parsed("", half("A", "0", "1"));
    const DisplayScene scene = lit();
    EXPECT_TRUE(scene.surfaces.empty());
    EXPECT_TRUE(scene.channels[0].lattice.empty());
}

}  // namespace

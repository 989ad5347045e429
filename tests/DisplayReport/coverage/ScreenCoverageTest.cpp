// Areas that are known in closed form. Every expectation is worked out here.
#include "DisplayReport/coverage/ScreenCoverage.h"

#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/ScreenSampling.h"
#include "LitDisplays.h"

#include <algorithm>
#include <array>
#include <numbers>
#include <numeric>
#include <string>

namespace {

using namespace Veltrani::DisplayReport;

/// Of each expected area; ten times as strict as what is promised.
constexpr double RIGHT = 1e-4;

class ScreenCoverageTest : public LitDisplayTest {
protected:
    ScreenCoverage measure() { return measure(lights()); }

    static ScreenCoverage measure(const Lights& all) {
        std::vector<LandingExtent> pictures;
        for (const auto& light : all) {
            pictures.push_back(LandingExtent::of(*light));
        }
        const ScreenCoverage coverage = ScreenCoverage::of(ScreenSampling(surface()), all, pictures);
        EXPECT_NEAR(std::accumulate(coverage.byCount.begin(), coverage.byCount.end(), 0.0), coverage.area,
                    1e-9 * coverage.area);
        return coverage;
    }

    static void expectArea(double found, double expected) { EXPECT_NEAR(found, expected, RIGHT * expected); }

    const double m_pi = std::numbers::pi;
};

TEST_F(ScreenCoverageTest, TwoHalfOverlappingRectanglesOnAWall) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>") +
                             displays::projector("B", "<ScreenArea left='0.25' right='0.75' bottom='0' top='1'/>"));
    const ScreenCoverage coverage = measure();
    expectArea(coverage.area, 8);
    expectArea(coverage.byCount[0], 2);
    expectArea(coverage.byCount[1], 4);
    expectArea(coverage.byCount[2], 2);
    expectArea(coverage.sharedBy[0][0], 4);
    expectArea(coverage.sharedBy[1][1], 4);
    expectArea(coverage.sharedBy[0][1], 2);
    EXPECT_EQ(coverage.sharedBy[1][0], coverage.sharedBy[0][1]);
}

TEST_F(ScreenCoverageTest, BoundsThatFallOnNoLineOfAnyNet) {
    load(displays::FLAT,
         displays::projector("A", "<ScreenArea left='0.1234' right='0.6171' bottom='0.0713' top='0.3337'/>"));
    expectArea(measure().sharedBy[0][0], 8 * (0.6171 - 0.1234) * (0.3337 - 0.0713));
}

TEST_F(ScreenCoverageTest, ASmallPictureIsLookedAtMoreClosely) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0.501' right='0.512' bottom='0.3' top='0.322'/>"));
    expectArea(measure().sharedBy[0][0], 8 * 0.011 * 0.022);
}

TEST_F(ScreenCoverageTest, ASphereInEqualLunes) {
    std::string projectors;
    for (int i = 0; i < 6; ++i) {
        projectors +=
            displays::projector("L" + std::to_string(i), "<ScreenArea left='" + std::to_string(i / 6.0) + "' right='" +
                                                             std::to_string((i + 1) / 6.0) + "' bottom='0' top='1'/>");
    }
    load(displays::SPHERE, projectors);
    const ScreenCoverage coverage = measure();
    expectArea(coverage.area, 100 * m_pi);
    for (std::size_t i = 0; i < 6; ++i) {
        expectArea(coverage.sharedBy[i][i], 100 * m_pi / 6);
    }
    expectArea(coverage.byCount[1], 100 * m_pi);
    EXPECT_LE(coverage.byCount[0] + coverage.byCount[2], RIGHT * 100 * m_pi);
}

TEST_F(ScreenCoverageTest, ASphereInTheSixSidesOfACube) {
    std::string projectors;
    int number = 0;
    for (const char* const orientation :
         {"z='0' x='0'", "z='90' x='0'", "z='180' x='0'", "z='-90' x='0'", "z='0' x='90'", "z='0' x='-90'"}) {
        projectors += camera("C" + std::to_string(number++), "-45", "45", "-45", "45",
                             "<Orientation " + std::string(orientation) + " y='0'/>");
    }
    load(displays::SPHERE, projectors, displays::SPHERICAL);
    const ScreenCoverage coverage = measure();
    for (std::size_t i = 0; i < 6; ++i) {
        expectArea(coverage.sharedBy[i][i], 100 * m_pi / 6);
    }
    EXPECT_LE(coverage.byCount[0], RIGHT * 100 * m_pi);
    expectArea(coverage.byCount[1], 100 * m_pi);
}

TEST_F(ScreenCoverageTest, AFrustumOnASphereHasItsSolidAngle) {
    load(displays::SPHERE, camera("A", "-35", "35", "-22", "22", "<Orientation z='47' x='31' y='12'/>"),
         displays::SPHERICAL);
    expectArea(measure().sharedBy[0][0], 25 * solidAngle(35, 22));
}

TEST_F(ScreenCoverageTest, AFrustumFromBesideTheMiddleOnAWall) {
    // The corners of the picture on the wall at y = 5: a camera at (1, 1, 1.2), turned by 25 degrees to the left.
    load("<Screen shape='Flat'><Centre x='0' y='5' z='0'/><Size width='30' height='20'/></Screen>",
         camera("A", "-20", "30", "-15", "10", "<Orientation z='-25' x='0' y='0'/><Position x='1' y='1' z='1.2'/>"),
         displays::PROJECTORS);
    const auto corner = [](double h, double v) {
        const double a = radians(-25);
        const double ahead = std::cos(a) - h * std::sin(a);
        const double aside = std::sin(a) + h * std::cos(a);
        return P2{1 + 4 * aside / ahead, 1.2 + 4 * v / ahead};
    };
    const double left = std::tan(radians(-20));
    const double right = std::tan(radians(30));
    const double bottom = std::tan(radians(-15));
    const double top = std::tan(radians(10));
    const std::array<P2, 4> corners{corner(left, bottom), corner(right, bottom), corner(right, top), corner(left, top)};
    double twice = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const P2& a = corners[i];
        const P2& b = corners[(i + 1) % 4];
        twice += a[0] * b[1] - a[1] * b[0];
    }
    expectArea(measure().sharedBy[0][0], twice / 2);
}

TEST_F(ScreenCoverageTest, AFrustumIsCutByTheEdgeOfTheWall) {
    load(displays::FLAT, camera("A", "-10", "40", "-20", "20", "<Position x='0.5' y='0' z='1'/>"),
         displays::PROJECTORS);
    expectArea(measure().sharedBy[0][0], (1.5 + 5 * std::tan(radians(10))) * 2);
}

TEST_F(ScreenCoverageTest, ACylinderInParts) {
    load("<Screen shape='Cylinder'><Radius value='3.5'/><Size height='2.2'/><Azimuth min='-110' max='110'/></Screen>",
         displays::projector("A", "<ScreenArea left='0' right='0.4' bottom='0' top='1'/>") +
             displays::projector("B", "<ScreenArea left='0.3' right='1' bottom='0.5' top='1'/>"));
    const ScreenCoverage coverage = measure();
    const double wall = 3.5 * radians(220) * 2.2;
    expectArea(coverage.sharedBy[0][0], 0.4 * wall);
    expectArea(coverage.sharedBy[1][1], 0.35 * wall);
    expectArea(coverage.sharedBy[0][1], 0.05 * wall);
}

TEST_F(ScreenCoverageTest, ALensOfEqualAnglesLightsARectangleOfAngles) {
    load(displays::SPHERE, camera("A", "-40", "40", "-10", "30", "<ProjectionModel name='Equidistant'/>"),
         displays::PROJECTORS);
    expectArea(measure().sharedBy[0][0], 25 * radians(80) * (std::sin(radians(30)) + std::sin(radians(10))));
}

TEST_F(ScreenCoverageTest, AMirrorAroundTheEyeShowsTheSolidAngleOfTheFrustum) {
    load(
        "<Screen shape='Sphere'><Radius value='1'/><Azimuth min='-180' max='180'/><Elevation min='-90' "
        "max='90'/></Screen>",
        camera("A", "-30", "30", "-20", "20"),
        "<TargetData type='SphericalCollimated'><Mirror radius='3'/></TargetData>");
    expectArea(measure().sharedBy[0][0], solidAngle(30, 20));
}

TEST_F(ScreenCoverageTest, ATableThatHalvesTheHeadingsHalvesTheArea) {
    load(displays::SPHERE, "");
    Lights halved;
    halved.push_back(bentLight(40, 20, 45));
    expectArea(measure(halved).sharedBy[0][0], 25 * solidAngle(40, 20) / 2);
}

TEST_F(ScreenCoverageTest, AShadowIsDark) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, camera("A", "-30", "30", "-30", "30"), displays::PROJECTORS);
    const ScreenCoverage coverage = measure();
    expectArea(coverage.area, 17);
    expectArea(coverage.sharedBy[0][0], 16 - 4 + 1);
    expectArea(coverage.byCount[0], 4);
}

TEST_F(ScreenCoverageTest, AShadowIsDarkInLightThatIsSearched) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, "");
    Lights searched;
    searched.push_back(bentLight(30, 30, 90));
    const ScreenCoverage coverage = measure(searched);
    expectArea(coverage.sharedBy[0][0], 16 - 4 + 1);
    expectArea(coverage.byCount[0], 4);
}

TEST_F(ScreenCoverageTest, AMeshIsLitByItsTexture) {
    m_folder.write(
        "wall.obj",
        "v 0 5 0\nv 4 5 0\nv 4 5 2\nv 0 5 2\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/1 2/2 3/3\nf 1/1 3/3 4/4\n");
    load(displays::MESH, displays::projector("A", "<ScreenArea left='0.1' right='0.43' bottom='0.2' top='0.9'/>"));
    expectArea(measure().sharedBy[0][0], 8 * 0.33 * 0.7);
}

TEST_F(ScreenCoverageTest, WithoutChannelsEverythingIsDark) {
    load(displays::SPHERE, "");
    const ScreenCoverage coverage = measure();
    ASSERT_EQ(coverage.byCount.size(), 1U);
    expectArea(coverage.byCount[0], 100 * m_pi);
}

TEST_F(ScreenCoverageTest, HandsOutEveryPieceAndTellsItsProgress) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>"));
    double lit = 0;
    std::size_t last = 0;
    const auto take = [&lit](const LitTriangle& piece, double area, const LitBy& by) {
        const P3 normal = cross(piece[1].on.place - piece[0].on.place, piece[2].on.place - piece[0].on.place);
        EXPECT_NEAR(area, norm(normal) / 2, 1e-12) << "the wall is flat";
        lit += by.any() ? area : 0.0;
    };
    const auto progress = [&last](std::size_t done, std::size_t total) {
        EXPECT_GE(done, last);
        EXPECT_LT(done, total);
        last = done;
    };
    static_cast<void>(ScreenCoverage::of(ScreenSampling(surface()), lights(), {LandingExtent()}, take, progress));
    expectArea(lit, 4);
    EXPECT_GT(last, 0U);
}

TEST_F(ScreenCoverageTest, PicturesShareWhatTheirRectanglesShare) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>") +
                             displays::projector("B", "<ScreenArea left='0.2' right='0.7' bottom='0.25' top='1'/>"));
    const ScreenCoverage coverage = measure();
    EXPECT_NEAR(coverage.partShared[0][0], 1.0, 1e-5);
    EXPECT_NEAR(coverage.partShared[0][1], 0.6 * 0.75, RIGHT * 0.45);
    EXPECT_NEAR(coverage.partShared[1][0], 0.6, RIGHT * 0.6);
    EXPECT_EQ(coverage.landed[0].minimum, (P2{0, 0}));
    EXPECT_EQ(coverage.landed[0].maximum, (P2{1, 1}));
}

TEST_F(ScreenCoverageTest, OfAPictureThatSpillsOverTheScreenAPartLands) {
    // The wall of 4 x 2 stands 5 m away from the floor up to 2 m; the camera looks at its right part.
    load(displays::FLAT, camera("A", "-10", "40", "-20", "20", "<Position x='0.5' y='0' z='1'/>"),
         displays::PROJECTORS);
    const auto tangent = [](double degrees) { return std::tan(radians(degrees)); };
    const double across = (1.5 / 5 - tangent(-10)) / (tangent(40) - tangent(-10));
    const double upwards = (1.0 / 5 + 1.0 / 5) / (tangent(20) - tangent(-20));
    const ScreenCoverage coverage = measure();
    expectArea(coverage.partShared[0][0], across * upwards);
    EXPECT_NEAR(coverage.landed[0].maximum[0], across, 1e-6);
    EXPECT_NEAR(coverage.landed[0].minimum[1], (1 - upwards) / 2, 1e-6);
}

// Nothing but the surface itself finds a screen that stands between the points of every lattice over the picture.
TEST_F(ScreenCoverageTest, AScreenThatIsTinyInThePictureIsFound) {
    load(displays::FLAT,
         displays::projector("A", "<ScreenArea left='-150.3' right='149.7' bottom='-200.2' top='99.8'/>"));
    const ScreenCoverage coverage = measure();
    expectArea(coverage.sharedBy[0][0], 8);
    expectArea(coverage.partShared[0][0], 1.0 / (300.0 * 300.0));
}

TEST_F(ScreenCoverageTest, ASmallPictureWithinALargeOneIsSharedByBoth) {
    for (const double width : {0.05, 0.01, 0.001}) {
        const std::string left = "0.6171";
        load(displays::FLAT,
             displays::projector("A", displays::WHOLE_AREA) +
                 displays::projector("B", "<ScreenArea left='" + left + "' right='" + std::to_string(0.6171 + width) +
                                              "' bottom='0.3' top='0.9'/>"));
        const ScreenCoverage coverage = measure();
        EXPECT_NEAR(coverage.partShared[0][1], 0.6 * width, 1e-3 * 0.6 * width) << width;
        EXPECT_NEAR(coverage.partShared[1][0], 1, 1e-3) << width;
        EXPECT_NEAR(coverage.sharedBy[0][1], 8 * 0.6 * width, 1e-3 * 8 * 0.6 * width) << width;
    }
}

TEST_F(ScreenCoverageTest, ACombOfSlatsIsLitSlatBySlat) {
    // 40 slats of 2 cm, 5 cm apart, 2 m high; the picture covers all of them and what is between.
    std::string obj;
    for (int i = 0; i < 40; ++i) {
        const std::string from = std::to_string(-1 + 0.05 * i);
        const std::string to = std::to_string(-1 + 0.05 * i + 0.02);
        obj += "v " + from + " 5 -1\nv " + to + " 5 -1\nv " + to + " 5 1\nv " + from + " 5 1\nf -4 -3 -2\nf -4 -2 -1\n";
    }
    m_folder.write("wall.obj", obj);
    load(displays::MESH, camera("A", "-20", "20", "-15", "15"), displays::PROJECTORS);
    const ScreenCoverage coverage = measure();
    const double picture = 100 * std::tan(radians(20)) * std::tan(radians(15));
    expectArea(coverage.sharedBy[0][0], 40 * 0.02 * 2);
    expectArea(coverage.partShared[0][0], 40 * 0.02 * 2 / picture);
}

TEST_F(ScreenCoverageTest, HolesOfAMapMiss) {
    m_folder.write("a.map",
                   "2\n4 3\n-1.5 -1 0 0 1\n-0.5 -1 0.3 0 1\n0.5 -1 0.6 0 1\n1.5 -1 0.9 0 1\n"
                   "-1.5 0 0 0.5 1\n-0.5 0 0.3 0.5 -1\n0.5 0 0.6 0.5 1\n1.5 0 0.9 0.5 1\n"
                   "-1.5 1 0 1 1\n-0.5 1 0.3 1 1\n0.5 1 0.6 1 1\n1.5 1 0.9 1 1\npixels 1920 1200\n");
    load(displays::FLAT, displays::projector("A", "<CustomPlanarMap file='a.map'/>"),
         "<TargetData type='CustomPlanar'/>");
    expectArea(measure().partShared[0][0], 1.0 / 3);
}

// Lunes that frusta cut out of a sphere from its middle: each picture spans a sixth of the headings, and as much
// upwards as below 80 degrees counts.
TEST_F(ScreenCoverageTest, ASphereInPartsOfEqualHeadingsByFrusta) {
    std::string projectors;
    for (int i = 0; i < 6; ++i) {
        projectors += camera("L" + std::to_string(i), "-30", "30", "-70", "70",
                             "<Orientation z='" + std::to_string(60 * i) + "' x='0' y='0'/>");
    }
    load(displays::SPHERE, projectors, displays::SPHERICAL);
    const ScreenCoverage coverage = measure();
    for (std::size_t i = 0; i < 6; ++i) {
        expectArea(coverage.sharedBy[i][i], 25 * solidAngle(30, 70));
        // The upper rows of such a picture are drawn out: a piece at its edge is large in it.
        EXPECT_NEAR(coverage.partShared[i][i], 1, 5 * RIGHT);
    }
    EXPECT_LE(coverage.byCount[2], RIGHT * 100 * m_pi);
}

TEST_F(ScreenCoverageTest, AStripIsSeenHoweverNarrowAndTurned) {
    load(displays::FLAT, displays::projector("A", "<ScreenArea left='0.3' right='0.301' bottom='0' top='1'/>"));
    expectArea(measure().sharedBy[0][0], 8 * 0.001);
    load("<Screen shape='Flat'><Centre x='0' y='5' z='0'/><Size width='30' height='20'/></Screen>",
         camera("A", "-0.05", "0.05", "-20", "20", "<Orientation z='0' x='0' y='40'/>"), displays::PROJECTORS);
    expectArea(measure().sharedBy[0][0], 100 * std::tan(radians(0.05)) * std::tan(radians(20)));
}

// The area against that of the cells of a fine lattice, each followed forwards: a mirror beside the eye, and a picture
// that reaches over the upper edge of the screen.
TEST_F(ScreenCoverageTest, ThroughAMirrorBesideTheEyeItIsWhatTheRaysReach) {
    load(
        "<Screen shape='Sphere'><EyePoint x='0' y='-0.3' z='-0.5'/><Centre x='0' y='0' z='1.9'/><Radius value='1.6'/>"
        "<Azimuth min='-120' max='120'/><Elevation min='-60' max='60'/></Screen>",
        camera("A", "-40", "40", "-40", "40", "<Orientation z='60' x='20' y='10'/><Position x='0' y='-0.3' z='-0.5'/>"),
        "<TargetData type='SphericalCollimated'><Mirror radius='3'><Position x='0' y='0' "
        "z='1.9'/></Mirror></TargetData>");
    const Lights all = lights();
    constexpr int CELLS = 400;
    std::vector<std::vector<ChannelLight::Landing>> rows;
    for (int row = 0; row <= CELLS; ++row) {
        std::vector<P2> picture;
        for (int column = 0; column <= CELLS; ++column) {
            picture.emplace_back(static_cast<double>(column) / CELLS, static_cast<double>(row) / CELLS);
        }
        rows.emplace_back(picture.size());
        all[0]->land(picture, rows.back());
    }
    double whole = 0;
    int wholeCells = 0;
    int cutCells = 0;
    const double longest = 0.1;  // no cell is so large, and none of the jumps behind the edge so small
    for (std::size_t row = 0; row < CELLS; ++row) {
        for (std::size_t column = 0; column < CELLS; ++column) {
            const std::array<ChannelLight::Landing, 4> corners{rows[row][column], rows[row][column + 1],
                                                               rows[row + 1][column], rows[row + 1][column + 1]};
            const auto hits = std::count_if(corners.begin(), corners.end(), [](const auto& one) { return one.hits; });
            const P3 rising = corners[3].on.place - corners[0].on.place;
            const P3 falling = corners[1].on.place - corners[2].on.place;
            const bool isWhole = hits == 4 && norm(rising) < longest && norm(falling) < longest;
            whole += isWhole ? norm(cross(rising, falling)) / 2 : 0.0;
            wholeCells += isWhole ? 1 : 0;
            cutCells += !isWhole && hits > 0 ? 1 : 0;
        }
    }
    ASSERT_GT(cutCells, 0) << "the picture reaches over the edge";
    ASSERT_LT(cutCells, CELLS);
    const ScreenCoverage coverage = measure(all);
    // Half of each cell that is cut, about.
    const double cut = 0.5 * cutCells / wholeCells;
    EXPECT_NEAR(coverage.sharedBy[0][0], whole * (1 + cut), 1e-3 * whole);
    EXPECT_NEAR(coverage.partShared[0][0], (wholeCells + 0.5 * cutCells) / (CELLS * CELLS),
                0.5 * cutCells / (CELLS * CELLS));
    EXPECT_LT(cut, 1e-3) << "sharp enough to tell";
}

TEST_F(ScreenCoverageTest, SliversFallIntoPiecesAsTheyAreLong) {
    // A disc of 3 m in 1500 slivers; the picture is a rectangle in it.
    constexpr int SLIVERS = 1500;
    std::string obj = "v 0 5 0\n";
    for (int i = 0; i < SLIVERS; ++i) {
        const double angle = 2 * m_pi * i / SLIVERS;
        obj += "v " + std::to_string(3 * std::cos(angle)) + " 5 " + std::to_string(3 * std::sin(angle)) + "\n";
    }
    for (int i = 0; i < SLIVERS; ++i) {
        obj += "f 1 " + std::to_string(i + 2) + " " + std::to_string((i + 1) % SLIVERS + 2) + "\n";
    }
    m_folder.write("wall.obj", obj);
    load(displays::MESH, camera("A", "-17", "17", "-11", "11"), displays::PROJECTORS);
    const Lights all = lights();
    std::size_t pieces = 0;
    const ScreenCoverage coverage = ScreenCoverage::of(ScreenSampling(surface()), all, {LandingExtent::of(*all[0])},
                                                       [&pieces](const auto&, double, const auto&) { ++pieces; });
    expectArea(coverage.area, 9 * m_pi);
    expectArea(coverage.sharedBy[0][0], 100 * std::tan(radians(17)) * std::tan(radians(11)));
    expectArea(coverage.partShared[0][0], 1);
    EXPECT_LT(pieces, SLIVERS * 250U);
}

}  // namespace

#include "DisplayReport/coverage/ScreenSampling.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/MeshScreen.h"
#include "LitDisplays.h"

#include <cstdint>
#include <map>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;

class ScreenSamplingTest : public LitDisplayTest {
protected:
    [[nodiscard]] double areaOf(const std::string& screen) {
        load(screen, "");
        const ScreenSampling sampling(surface());
        double area = 0;
        for (std::size_t i = 0; i < sampling.size(); ++i) {
            area += sampling.area(sampling.triangle(i));
        }
        return area;
    }

    const double m_pi = std::numbers::pi;
};

TEST_F(ScreenSamplingTest, AFlatScreenHasItsArea) {
    EXPECT_NEAR(areaOf(displays::FLAT), 8.0, 1e-12);
}

TEST_F(ScreenSamplingTest, ASphereHasItsAreaWithItsPolesAndItsSeam) {
    EXPECT_NEAR(areaOf(displays::SPHERE), 100 * m_pi, 1e-5 * 100 * m_pi);
}

TEST_F(ScreenSamplingTest, ADomeAndACylinderHaveTheirAreas) {
    const double dome = 25 * m_pi * (1 + std::sin(radians(15)));
    EXPECT_NEAR(areaOf("<Screen shape='Sphere'><Orientation z='5' x='10' y='3'/><Radius value='5'/><Azimuth min='-90' "
                       "max='90'/><Elevation min='-15' max='90'/></Screen>"),
                dome, 1e-5 * dome);
    const double wall = 3.5 * radians(220) * 2.2;
    EXPECT_NEAR(areaOf("<Screen shape='Cylinder'><Radius value='3.5'/><Size height='2.2'/><Azimuth min='-110' "
                       "max='110'/></Screen>"),
                wall, 1e-6 * wall);
}

TEST_F(ScreenSamplingTest, KinksOfARuledSurfaceLoseNothing) {
    // Three flat walls of 2, 3 and 1.7 m, which meet at right angles; 2.5 m high.
    const auto rail = [](const std::string& z) {
        return "<Point x='-1.5' y='0' z='" + z + "'/><Point x='-1.5' y='2' z='" + z + "'/><Point x='1.5' y='2' z='" +
               z + "'/><Point x='1.5' y='0.3' z='" + z + "'/>";
    };
    EXPECT_NEAR(areaOf("<Screen shape='Ruled'><LowerRail>" + rail("0") + "</LowerRail><UpperRail>" + rail("2.5") +
                       "</UpperRail></Screen>"),
                6.7 * 2.5, 1e-4 * 6.7 * 2.5);
}

TEST_F(ScreenSamplingTest, AMeshIsItsOwnTriangles) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    EXPECT_NEAR(areaOf(displays::MESH), 17.0, 1e-12);
    const ScreenSampling sampling(surface());
    EXPECT_EQ(sampling.size(), 4U);
    EXPECT_FALSE(sampling.triangle(0)[0].hasParameters);
    EXPECT_EQ(sampling.extent().size(), (P3{4, 2.5, 4}));
}

TEST_F(ScreenSamplingTest, AMeshWithTextureHasItsCoordinatesCornerByCorner) {
    m_folder.write("wall.obj", "v 0 5 0\nv 1 5 0\nv 0 5 1\nvt 0.1 0.2\nvt 0.9 0.2\nvt 0.1 0.8\nf 1/1 2/2 3/3\n");
    load(displays::MESH, "");
    const ScreenSampling sampling(surface());
    const auto triangle = sampling.triangle(0);
    EXPECT_EQ(triangle[1].parameters, (P2{0.9, 0.2}));
    const SurfacePoint middle = sampling.between(triangle[0], triangle[1], 0.25);
    EXPECT_TRUE(middle.hasParameters);
    EXPECT_LE(norm(middle.parameters - P2{0.3, 0.2}), 1e-15);
    EXPECT_EQ(middle.place, (P3{0.25, 5, 0}));
}

TEST_F(ScreenSamplingTest, TrianglesWithoutAreaAreLeftOut) {
    // On one point, on two, on a line, and on one that is none in binary.
    m_folder.write("wall.obj",
                   "v 0 5 0\nv 4 5 0\nv 4 5 2\nv 2 5 0\nv 0.1 5 0.1\nv 0.2 5 0.2\nv 0.7 5 0.7\n"
                   "f 1 1 1\nf 1 1 2\nf 1 2 3\nf 1 4 2\nf 5 6 7\n");
    EXPECT_NEAR(areaOf(displays::MESH), 4, 1e-12);
    EXPECT_EQ(ScreenSampling(surface()).size(), 1U);
}

TEST_F(ScreenSamplingTest, PointsBetweenLieOnACurvedSurface) {
    load(displays::SPHERE, "");
    const ScreenSampling sampling(surface());
    const auto triangle = sampling.triangle(700);
    EXPECT_NEAR(norm(sampling.between(triangle[0], triangle[1], 0.37).place), 5.0, 1e-14);
}

TEST_F(ScreenSamplingTest, ASurfaceThatIsNotValidIsRefused) {
    EXPECT_THROW(ScreenSampling(std::make_shared<MeshScreen>(TriangleMesh())), VeltraniException);
}

// Whatever the shape: light that was looked up for a corner is taken for every other corner of the same number.
TEST_F(ScreenSamplingTest, CornersOfOneNumberAreOnePoint) {
    // The two triangles share an edge in space; in the texture the second is apart.
    m_folder.write("wall.obj",
                   "v 0 5 0\nv 4 5 0\nv 4 5 2\nv 0 5 2\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvt 0.5 0.5\n"
                   "f 1/1 2/2 3/3\nf 1/5 3/3 4/4\n");
    for (const std::string& screen : {displays::FLAT, displays::SPHERE, displays::MESH}) {
        load(screen, "");
        const ScreenSampling sampling(surface());
        std::map<std::uint64_t, SurfacePoint> known;
        for (std::size_t i = 0; i < sampling.size(); ++i) {
            for (std::size_t corner = 0; corner < 3; ++corner) {
                const SurfacePoint point = sampling.triangle(i)[corner];
                const SurfacePoint& first = known.try_emplace(sampling.cornerNumbers(i)[corner], point).first->second;
                EXPECT_EQ(first.place, point.place);
                EXPECT_EQ(first.parameters, point.parameters);
            }
        }
        EXPECT_EQ(known.size(), screen == displays::MESH ? 5U : 33U * 33U);
    }
}

TEST_F(ScreenSamplingTest, BothSidesOfASheetAreOneSurface) {
    const std::string sheet = "v 0 5 0\nv 4 5 0\nv 4 5 2\nv 0 5 2\nf -4 -3 -2\nf -4 -2 -1\n";
    // The same once more, and then with its own vertices the other way round; and a sheet of 1 x 2 beside it.
    m_folder.write("wall.obj", sheet + "f 1 2 3\nf 2 3 1\n" +
                                   "v 0 5 0\nv 4 5 0\nv 4 5 2\nv 0 5 2\nf -2 -3 -4\nf -1 -2 -4\n"
                                   "v 5 5 0\nv 6 5 0\nv 6 5 2\nf -3 -2 -1\n");
    EXPECT_NEAR(areaOf(displays::MESH), 9, 1e-12);
    EXPECT_EQ(ScreenSampling(surface()).size(), 3U);
}

}  // namespace

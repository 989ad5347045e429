#include "KelvoScreen/detail/ShapeFaults.h"

#include "Common/Utf8.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"
#include "support/ScreenGeometryDouble.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::KelvoScreenDetail;
constexpr double PI = std::numbers::pi;

/// A wall of a cylinder, a part of a dome, a rectangle and a ruled surface in one.
ScreenConfigDouble good() {
    ScreenConfigDouble screen;
    screen.radius = 5.0;
    screen.height = 3.0;
    screen.width = 4.0;
    screen.azimuthMin = -1.0;
    screen.azimuthMax = 1.0;
    screen.elevationMin = -0.5;
    screen.elevationMax = 0.5;
    screen.lowerRail = {{-1.0, 2.0, 0.0}, {1.0, 2.0, 0.0}};
    screen.upperRail = {{-1.0, 2.5, 2.0}, {1.0, 2.5, 2.0}};
    return screen;
}

template <class Screen, class Change>
std::string faultOf(Change change) {
    ScreenConfigDouble screen = good();
    EXPECT_EQ(Screen(&screen).faultOfShape(), L"");
    change(screen);
    EXPECT_FALSE(Screen(&screen).isValid());
    return Veltrani::toUtf8(Screen(&screen).faultOfShape());
}

TEST(ShapeFaults, NameTheNumberTheExpectationAndTheRemedy) {
    EXPECT_EQ(faultOf<SphericalScreen>([](auto& screen) { screen.radius = 0.0; }),
              "its radius is 0, expected a length above 0: correct its radius");
    EXPECT_EQ(faultOf<CylinderScreen>([](auto& screen) { screen.height = -2.5; }),
              "its height is -2.5, expected a length above 0: correct its height");
    EXPECT_EQ(faultOf<FlatScreen>([](auto& screen) { screen.width = std::nan(""); }),
              "its width is nan, expected a length above 0: correct its width");
    EXPECT_EQ(faultOf<FlatScreen>([](auto& screen) { screen.height = 1e200; }),
              "its height of 1e+200 has no square that a number can hold: correct its height or the unit");
    EXPECT_EQ(faultOf<CylinderScreen>([](auto& screen) { screen.azimuthMin = screen.azimuthMax = 0.0; }),
              "its azimuths run from 0 to 0 deg, expected growing ones, one turn at most: correct its Azimuth");
    EXPECT_EQ(faultOf<SphericalScreen>([](auto& screen) { screen.elevationMax = PI; }),
              "its elevations run from -28.6479 to 180 deg, expected growing ones from -90 to 90 at most: correct its "
              "Elevation");
    EXPECT_EQ(faultOf<SphericalScreen>([](auto& screen) { screen.centre[1] = std::nan(""); }),
              "a coordinate of its centre is not finite: correct its Centre");
    EXPECT_EQ(faultOf<CylinderScreen>([](auto& screen) { screen.orientation[2] = INFINITY; }),
              "an angle of its orientation is not finite: correct its Orientation");
    EXPECT_EQ(faultOf<SphericalScreen>([](auto& screen) { screen.centre[0] = 1e20; }).find("its radius of 5 is lost"),
              0U);
}

TEST(ShapeFaults, NameWhatIsWrongWithRails) {
    EXPECT_EQ(
        faultOf<RuledSurfaceScreen>([](auto& screen) { screen.upperRail.pop_back(); }),
        "its rails have 2 points (lower) and 1 (upper), expected as many on both, two at least: correct LowerRail "
        "and UpperRail");
    EXPECT_EQ(faultOf<RuledSurfaceScreen>([](auto& screen) { screen.lowerRail[1][0] = std::nan(""); }),
              "a point of its rails is not finite: correct LowerRail and UpperRail");
    EXPECT_EQ(faultOf<RuledSurfaceScreen>([](auto& screen) { screen.upperRail = screen.lowerRail; }),
              "there is no area between its rails: move LowerRail and UpperRail apart, and their points");
}

TEST(ShapeFaults, OfAMesh) {
    TriangleMesh mesh;
    mesh.vertices = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}};
    EXPECT_EQ(MeshScreen(mesh).faultOfShape(), L"none of its 0 triangles has an area: give a mesh with faces");
    mesh.triangles = {{0, 1, 2}};
    EXPECT_EQ(MeshScreen(mesh).faultOfShape(), L"");
    mesh.vertices[1][1] = std::nan("");
    EXPECT_EQ(MeshScreen(mesh).faultOfShape(), L"a vertex of its mesh is not finite: export the mesh again");
}

TEST(ShapeFaults, OfAClassFromElsewhereAreNotKnownInDetail) {
    ScreenGeometryDouble screen;
    EXPECT_EQ(screen.faultOfShape(), L"");
    screen.valid = false;
    EXPECT_EQ(screen.faultOfShape(), L"its shape has no extent or a number that is not finite");
    EXPECT_EQ(screen.raysAtOnce(), 0U);
    EXPECT_EQ(screen.triangleMesh(), nullptr);
    EXPECT_TRUE(screen.isParameterised());
}

TEST(ShapeFaults, TheFirstOfSeveralIsReported) {
    EXPECT_EQ(firstFault({L"", L"second", L"third"}), L"second");
    EXPECT_EQ(firstFault({L"", L""}), L"");
}

}  // namespace

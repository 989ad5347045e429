#include "DisplayReport/coverage/ParameterLight.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/MeshScreen.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;

/// Two triangles side by side whose texture lies one on the other.
TriangleMesh overlapping() {
    TriangleMesh mesh;
    mesh.vertices = {{0, 5, 0}, {1, 5, 0}, {0, 5, 1}, {2, 5, 0}, {3, 5, 0}, {2, 5, 1}};
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}};
    mesh.textureCoordinates = {{0, 0}, {1, 0}, {0, 1}};
    mesh.textureTriangles = {{0, 1, 2}, {0, 1, 2}};
    return mesh;
}

const PlanarTargetLocatorParams WHOLE(0, 1, 0, 1);

TEST(ParameterLight, WhereATextureOverlapsOnlyTheTriangleThatAnswersIsLit) {
    const AreaLight light(WHOLE, std::make_shared<MeshScreen>(overlapping()));
    EXPECT_TRUE(light.lights({{0.25, 5, 0.25}, {0.25, 0.25}, true}));
    EXPECT_FALSE(light.lights({{2.25, 5, 0.25}, {0.25, 0.25}, true}));
}

TEST(ParameterLight, AGapInTheTextureMisses) {
    const AreaLight light(WHOLE, std::make_shared<MeshScreen>(overlapping()));
    EXPECT_TRUE(light.landingOf({0.25, 0.25}).hits);
    EXPECT_FALSE(light.landingOf({0.75, 0.75}).hits);
}

TEST(ParameterLight, AMeshWithoutTextureThrowsWhatItSays) {
    TriangleMesh mesh = overlapping();
    mesh.textureTriangles.clear();
    mesh.textureCoordinates.clear();
    const AreaLight light(WHOLE, std::make_shared<MeshScreen>(mesh));
    EXPECT_THROW(static_cast<void>(light.landingOf({0.5, 0.5})), VeltraniException);
    EXPECT_FALSE(light.lights({{0.25, 5, 0.25}, {}, false}));
}

}  // namespace

#include "ScreenKinds.h"

#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"

#include <cmath>
#include <cstdint>
#include <sstream>

namespace screenKinds {

namespace {

std::string asObj(const TriangleMesh& mesh) {
    std::ostringstream text;
    for (const Point<double, 3>& v : mesh.vertices) {
        text << "v " << v[0] << " " << v[1] << " " << v[2] << "\n";
    }
    for (const auto& triangle : mesh.triangles) {
        text << "f " << triangle[0] + 1 << " " << triangle[1] + 1 << " " << triangle[2] + 1 << "\n";
    }
    return text.str();
}

}  // namespace

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

std::vector<std::pair<std::string, std::shared_ptr<ScreenGeometry>>> all() {
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

}  // namespace screenKinds

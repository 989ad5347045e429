#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/ObjLoadException.h"
#include "KelvoScreen/ObjReader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

/// Any bytes are either read into a consistent mesh or refused with a line of the text, and a screen made from them
/// answers every question.

namespace {

/// Screens of more triangles than this cost more time than they find.
constexpr std::size_t MAX_SCREEN_TRIANGLES = 500;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

template <class Triangles>
void requireIndices(const Triangles& triangles, std::size_t count) {
    for (const auto& triangle : triangles) {
        for (const std::uint32_t index : triangle) {
            require(index < count, "every index is within its elements");
        }
    }
}

void requireConsistent(const TriangleMesh& mesh) {
    requireIndices(mesh.triangles, mesh.vertices.size());
    requireIndices(mesh.textureTriangles, mesh.textureCoordinates.size());
    require(mesh.textureTriangles.empty() || mesh.textureTriangles.size() == mesh.triangles.size(),
            "every triangle has texture coordinates, or none");
    require(!mesh.textureTriangles.empty() || mesh.textureCoordinates.empty(), "no texture coordinate without a use");
    for (const auto& vertex : mesh.vertices) {
        require(std::isfinite(vertex[0]) && std::isfinite(vertex[1]) && std::isfinite(vertex[2]),
                "every vertex is finite");
    }
}

std::optional<TriangleMesh> read(std::string_view text) {
    try {
        return ObjReader::read(text);
    } catch (const ObjLoadException& fault) {
        const auto ends = std::count_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; });
        require(fault.line >= 1 && fault.line <= static_cast<std::size_t>(ends) + 1,
                "a fault is on a line of the text");
        require(fault.found.size() < 300 && !fault.expected.empty() && !fault.remedy.empty(),
                "a fault is short and says what was expected and what helps");
        return std::nullopt;
    }
}

void questionScreen(const std::string& text, const TriangleMesh& mesh) {
    OBJScreen screen(L"Z", L"Y", 1.0F);
    std::istringstream stream(text);
    screen.deserialize(stream);
    require(screen.mesh().triangles == mesh.triangles, "the screen has the mesh of its text");
    require(screen.getUniqueDataHash() == MeshScreen::calcUniqueDataHash(text), "the hash is that of the bytes");
    const Point<double, 3> eye{0.25, -3.0, 0.5};
    const Point<double, 3> target = mesh.vertices[mesh.triangles.front()[0]];
    for (const auto& hits :
         {screen.intersect(eye, target), screen.intersectExtrapolatedWithSpecifiedNormal(eye, target, 1)}) {
        require(hits.empty() || std::isfinite(hits.first().t), "a hit is at a finite distance");
    }
    (void)screen.getScreenNormal(target);
    Point<double, 3> point;
    if (screen.isParameterised() && screen.mapInto3D({0.5, 0.5}, point, true)) {
        require(std::isfinite(point[0]), "a mapped point is finite");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::optional<TriangleMesh> mesh = read(text);
    if (mesh) {
        requireConsistent(*mesh);
        if (!mesh->triangles.empty() && mesh->triangles.size() <= MAX_SCREEN_TRIANGLES) {
            questionScreen(text, *mesh);
        }
    }
    return 0;
}

#include "KelvoScreen/MeshScreen.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/detail/MeshBorder.h"
#include "KelvoScreen/detail/MeshSurface.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ScreenSampling.h"
#include "KelvoScreen/detail/Sha1.h"
#include "KelvoScreen/detail/TextureMap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <typeinfo>
#include <utility>

using namespace Veltrani::KelvoScreenDetail;

namespace {

/// Fewer rays are cast one by one: one more is cast at the end of a batch.
constexpr std::size_t FEWEST_AT_ONCE = 8;

void requireIndices(const std::vector<TriangleMesh::Triangle>& triangles, std::size_t size, const std::wstring& what) {
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        for (const std::uint32_t index : triangles[i]) {
            if (index >= size) {
                throw VeltraniException(__FILE__, __LINE__,
                                        L"Triangle " + std::to_wstring(i) + L" of the mesh refers to " + what + L" " +
                                            std::to_wstring(index) + L", but there are " + std::to_wstring(size));
            }
        }
    }
}

/// Throws `VeltraniException` for a mesh whose arrays do not fit together.
void requireConsistent(const TriangleMesh& mesh) {
    if (mesh.triangles.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"A mesh of " + std::to_wstring(mesh.triangles.size()) + L" triangles is too large");
    }
    if (!mesh.textureTriangles.empty() && mesh.textureTriangles.size() != mesh.triangles.size()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The mesh has " + std::to_wstring(mesh.textureTriangles.size()) +
                                    L" texture triangles for " + std::to_wstring(mesh.triangles.size()) +
                                    L" triangles; give one for each or none");
    }
    requireIndices(mesh.triangles, mesh.vertices.size(), L"vertex");
    requireIndices(mesh.textureTriangles, mesh.textureCoordinates.size(), L"texture coordinate");
}

bool isValidMesh(const TriangleMesh& mesh) {
    const bool finite = std::all_of(mesh.vertices.begin(), mesh.vertices.end(), isFinite<3>);
    for (std::uint32_t i = 0; finite && i < mesh.triangles.size(); ++i) {
        if (hasArea(cornersOf(mesh, i))) {
            return true;
        }
    }
    return false;
}

bool hasParameterisation(const TriangleMesh& mesh) {
    return !mesh.textureTriangles.empty() &&
           std::all_of(mesh.textureCoordinates.begin(), mesh.textureCoordinates.end(), isFinite<2>);
}

Point<double, 3> normalise(const Point<double, 3>& vector) {
    return vector * (1 / norm(vector));
}

void requireParameterised(bool parameterised) {
    if (!parameterised) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The mesh has no 2D coordinates: export it with a texture coordinate at every corner");
    }
}

void addTriangles(Sha1& sha1, const std::vector<TriangleMesh::Triangle>& triangles) {
    sha1.addCount(triangles.size());
    for (const TriangleMesh::Triangle& triangle : triangles) {
        std::for_each(triangle.begin(), triangle.end(), [&sha1](std::uint32_t index) { sha1.addCount(index); });
    }
}

template <std::size_t N>
void addPoints(Sha1& sha1, const std::vector<Point<double, N>>& points) {
    sha1.addCount(points.size());
    std::for_each(points.begin(), points.end(), [&sha1](const auto& point) { sha1.addPoint(point); });
}

std::array<unsigned char, 20> hashOf(const TriangleMesh& mesh) {
    Sha1 sha1;
    sha1.addText("Mesh");
    addPoints(sha1, mesh.vertices);
    addTriangles(sha1, mesh.triangles);
    addPoints(sha1, mesh.textureCoordinates);
    addTriangles(sha1, mesh.textureTriangles);
    return sha1.finish();
}

}  // namespace

/// The mesh and what was derived from it so far. The derived parts refer to the mesh: it neither moves nor changes.
struct MeshScreen::Implementation {
    /// The last hit, whose normal is usually requested next.
    struct LastHit {
        Point<double, 3> point;
        Point<double, 3> area;  ///< along the normal
    };

    /// @param theHash none: that of the numbers, calculated when it is first requested
    Implementation(TriangleMesh theMesh, const std::optional<std::array<unsigned char, 20>>& theHash)
        : mesh(std::move(theMesh)), hash(theHash), valid(isValidMesh(mesh)), parameterised(hasParameterisation(mesh)) {}

    [[nodiscard]] const MeshSurface& getSurface() {
        if (!surface) {
            surface.emplace(mesh);
        }
        return *surface;
    }

    [[nodiscard]] const MeshBorder& getBorder() {
        if (!border) {
            border.emplace(mesh);
        }
        return *border;
    }

    [[nodiscard]] const TextureMap& getTextureMap() {
        if (!textureMap) {
            textureMap.emplace(mesh);
        }
        return *textureMap;
    }

    IntersectionSet hit(const Point<double, 3>& from, const Point<double, 3>& to, std::optional<int> side) {
        IntersectionSet set;
        if (!valid) {
            return set;
        }
        const std::optional<MeshPoint> nearest = getSurface().nearestHit(from, to, side);
        if (nearest) {
            lastHit = LastHit{nearest->point, nearest->area};
            set.add({nearest->point, nearest->t});
        }
        return set;
    }

    /// Points are compared by their bits: 0.0 and -0.0 are different points here, and a NaN may be remembered without
    /// harm.
    [[nodiscard]] bool isLastHit(const Point<double, 3>& point) const {
        return lastHit && std::memcmp(&lastHit->point, &point, sizeof point) == 0;
    }

    TriangleMesh mesh;
    std::optional<std::array<unsigned char, 20>> hash;
    bool valid;
    bool parameterised;
    std::optional<MeshSurface> surface;
    std::optional<MeshBorder> border;
    std::optional<TextureMap> textureMap;
    std::optional<LastHit> lastHit;
};

MeshScreen::MeshScreen() : m_implementation(std::make_unique<Implementation>(TriangleMesh{}, calcUniqueDataHash({}))) {}

MeshScreen::MeshScreen(TriangleMesh mesh) {
    requireConsistent(mesh);
    m_implementation = std::make_unique<Implementation>(std::move(mesh), std::nullopt);
}

MeshScreen::~MeshScreen() = default;

std::array<unsigned char, 20> MeshScreen::calcUniqueDataHash(const std::string& bytes) {
    Sha1 sha1;
    sha1.addBytes(bytes.data(), bytes.size());
    return sha1.finish();
}

void MeshScreen::setMesh(TriangleMesh mesh, const std::array<unsigned char, 20>& hash) {
    requireConsistent(mesh);
    m_implementation = std::make_unique<Implementation>(std::move(mesh), hash);
}

bool MeshScreen::isValid() const {
    return m_implementation->valid;
}

IntersectionSet MeshScreen::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return m_implementation->hit(from, to, std::nullopt);
}

Point<double, 3> MeshScreen::getScreenNormal(const Point<double, 3>& point) const {
    Implementation& self = *m_implementation;
    if (self.isLastHit(point)) {
        return normalise(self.lastHit->area);
    }
    const std::optional<MeshPoint> nearest = self.valid ? self.getSurface().nearestPoint(point) : std::nullopt;
    return nearest ? normalise(nearest->area) : Point<double, 3>{};
}

bool MeshScreen::mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const {
    Implementation& self = *m_implementation;
    requireParameterised(self.parameterised);
    const std::optional<TexturePlace> place = self.valid ? self.getTextureMap().find(st, extrapolate) : std::nullopt;
    if (!place) {
        return false;
    }
    const Point<double, 3> point = pointWithWeights(cornersOf(self.mesh, place->triangle), place->weights);
    if (!isFinite(point)) {
        return false;
    }
    out = point;
    return true;
}

std::array<unsigned char, 20> MeshScreen::getUniqueDataHash() const {
    if (!m_implementation->hash) {
        m_implementation->hash = hashOf(m_implementation->mesh);
    }
    return *m_implementation->hash;
}

void MeshScreen::updateGeometry(const IScreenConfig* /*screen*/) {}

void MeshScreen::sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                                    bool extrapolate) const {
    requireParameterised(isParameterised());
    sampleRow(*this, y, xMin, xMax, columns, row, grid, extrapolate);
}

IntersectionSet MeshScreen::intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                     const Point<double, 3>& to, int sign) const {
    Implementation& self = *m_implementation;
    const IntersectionSet hit = self.hit(from, to, sign);
    if (!hit.empty() || !self.valid) {
        return hit;
    }
    const std::optional<MeshPoint> continued = self.getBorder().continuedHit(from, to, sign);
    if (!continued) {
        return {};
    }
    return {Intersection{continued->point, continued->t}};
}

std::vector<Point<double, 3>> MeshScreen::intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                   const std::vector<Ray>& centre) const {
    return channelBoundary(*this, boundary, centre);
}

void MeshScreen::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (typeid(*this) == typeid(MeshScreen)) {
        intersectAtOnce(rays, hits);
    } else {
        ScreenGeometry::intersectRays(rays, hits);
    }
}

void MeshScreen::intersectAtOnce(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    Implementation& self = *m_implementation;
    if (rays.size() != hits.size() || rays.size() < FEWEST_AT_ONCE || !self.valid) {
        ScreenGeometry::intersectRays(rays, hits);
        return;
    }
    self.getSurface().nearestHits(rays, hits);
    // The last hit is remembered as if the rays had been cast one by one.
    const auto last = std::find_if(hits.rbegin(), hits.rend(), [](const SurfaceHit& hit) { return hit.hit; });
    if (last != hits.rend()) {
        const auto& [from, to] = rays[static_cast<std::size_t>(hits.rend() - last) - 1];
        (void)self.hit(from, to, std::nullopt);
    }
}

const TriangleMesh& MeshScreen::mesh() const {
    return m_implementation->mesh;
}

bool MeshScreen::isParameterised() const {
    return m_implementation->parameterised;
}

std::size_t MeshScreen::raysAtOnce() const {
    return typeid(*this) == typeid(MeshScreen) ? MESH_RAYS_AT_ONCE : 0;
}

const TriangleMesh* MeshScreen::triangleMesh() const {
    return &mesh();
}

std::wstring MeshScreen::faultOfShape() const {
    if (isValid()) {
        return {};
    }
    const std::vector<Point<double, 3>>& vertices = mesh().vertices;
    return std::all_of(vertices.begin(), vertices.end(), isFinite<3>)
               ? L"none of its " + std::to_wstring(mesh().triangles.size()) +
                     L" triangles has an area: give a mesh with faces"
               : L"a vertex of its mesh is not finite: export the mesh again";
}

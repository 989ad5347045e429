#include "Common/VeltraniException.h"
#include "KelvoControl/detail/WarpMesh.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>

/// Any bytes are either read as a mesh that answers every question or refused in one line that names the place.

namespace {

using Veltrani::KelvoControlDetail::CellLattice;
using Veltrani::KelvoControlDetail::WarpMesh;
using P2 = Point<double, 2>;

/// Meshes of more nodes than this cost more time than they find.
constexpr std::size_t MOST_NODES = 2000;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

std::shared_ptr<const WarpMesh> read(std::string_view text) {
    try {
        return Veltrani::KelvoControlDetail::WarpMeshFile::parse(text, "mesh");
    } catch (const VeltraniParseException& fault) {
        require(fault.message.compare(0, 5, L"mesh:") == 0, "a refusal names its file");
        require(fault.message.find(L": found ") != std::wstring::npos, "a refusal says what was found");
        require(fault.message.find(L'\n') == std::wstring::npos && fault.message.size() < 600, "a refusal is one line");
        return nullptr;
    }
}

bool isFinite(const P2& point) {
    return std::isfinite(point[0]) && std::isfinite(point[1]);
}

void question(const WarpMesh& mesh, const P2& place) {
    P2 out;
    require(!mesh.toScreen(place, out) || isFinite(out), "a place on the screen is finite");
    require(!mesh.toPicture(place, out) || isFinite(out), "a place in the picture is finite");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto mesh = read({reinterpret_cast<const char*>(data), size});
    if (mesh == nullptr || mesh->lattice().picture.size() > MOST_NODES) {
        return 0;
    }
    const CellLattice& lattice = mesh->lattice();
    require(lattice.picture.size() == lattice.columns * lattice.rows, "a mesh has all its nodes");
    require(lattice.screen.size() == lattice.picture.size(), "every node is in both planes");
    for (std::size_t node = 0; node < lattice.picture.size(); ++node) {
        require(isFinite(lattice.picture[node]) && isFinite(lattice.screen[node]), "every node is finite");
        question(*mesh, lattice.picture[node]);
        question(*mesh, lattice.screen[node]);
        question(*mesh, (lattice.screen[node] + lattice.screen.front()) * 0.5);
    }
    P2 out;
    require(!mesh->toScreen({std::numeric_limits<double>::quiet_NaN(), 0.0}, out), "what is no number is nowhere");
    question(*mesh, {1e300, -1e300});
    return 0;
}

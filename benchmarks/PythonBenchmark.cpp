#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "MeshRays.h"
#include "Ratio.h"
#include "ScreenManager/ScreenManager.h"

#include <pybind11/embed.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

/// What the bulk calls of the Python module take, against the same calls of the library in C++: the rays of a picture
/// on a mesh of a million triangles, and all pixels of a picture through a map. Both sides return results of their own,
/// and are handed the same rays; those of Python lie in arrays.

namespace {

namespace py = pybind11;
using namespace Veltrani::DisplayReport;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1200;
constexpr int RAYS_PER_SIDE = 1000;
constexpr double LIMIT = 1.05;

/// A display whose screen is a mesh of a million triangles, in a folder of its own.
class MeshDisplay {
public:
    MeshDisplay()
        : m_folder(std::filesystem::temp_directory_path() / ("python-benchmark-" + std::to_string(::getpid()))) {
        std::filesystem::create_directory(m_folder);
        const TriangleMesh mesh = meshRays::bumpySphere(meshRays::CELLS_1M);
        std::ofstream out(m_folder / "dome.obj");
        out.precision(17);
        for (const P3& vertex : mesh.vertices) {
            out << "v " << vertex[0] << ' ' << vertex[1] << ' ' << vertex[2] << '\n';
        }
        for (const TriangleMesh::Triangle& corners : mesh.triangles) {
            out << "f " << corners[0] + 1 << ' ' << corners[1] + 1 << ' ' << corners[2] + 1 << '\n';
        }
        std::ofstream(file()) << "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>"
                                 "<Screen shape='Mesh' fileUnit='m'><EyePoint x='0.5' y='1' z='0.25'/>"
                                 "<ContentMesh file='dome.obj'/><ImportOrientation up='Z' forward='Y'/></Screen>"
                                 "<TargetData type='Spherical'/><Projectors><Projector id='P1'>"
                                 "<Resolution width='"
                              << WIDTH << "' height='" << HEIGHT
                              << "'/><Frustum left='-28' right='28' bottom='-28' top='28'/></Projector></Projectors>"
                                 "</Display>";
    }
    ~MeshDisplay() {
        std::error_code gone;
        std::filesystem::remove_all(m_folder, gone);
    }
    MeshDisplay(const MeshDisplay&) = delete;
    MeshDisplay& operator=(const MeshDisplay&) = delete;

    [[nodiscard]] std::string file() const { return m_folder / "display.xml"; }

private:
    std::filesystem::path m_folder;
};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(2);
}

std::vector<Ray> rays() {
    const P3 eye{0.5, 1.0, 0.25};
    std::vector<Ray> all;
    for (int row = 0; row < RAYS_PER_SIDE; ++row) {
        for (int column = 0; column < RAYS_PER_SIDE; ++column) {
            const double across = (2.0 * column + 1) / RAYS_PER_SIDE - 1;
            const double up = (2.0 * row + 1) / RAYS_PER_SIDE - 1;
            all.emplace_back(eye, eye + P3{across, 1.0, up});
        }
    }
    return all;
}

std::vector<P2> pixels() {
    std::vector<P2> all;
    for (int row = 0; row < HEIGHT; ++row) {
        for (int column = 0; column < WIDTH; ++column) {
            all.emplace_back((column + 0.5) / WIDTH, (row + 0.5) / HEIGHT);
        }
    }
    return all;
}

/// All of them at once, as the operation describes how many it is best given.
void castRays(const std::vector<Ray>& rays) {
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    std::vector<SurfaceHit> hits(rays.size());
    const std::size_t atOnce = screen->raysAtOnce();
    for (std::size_t first = 0; first < rays.size(); first += atOnce) {
        const std::size_t count = std::min(atOnce, rays.size() - first);
        screen->intersectRays(std::span(rays).subspan(first, count), std::span(hits).subspan(first, count));
    }
    if (!hits.front().hit || !hits.back().hit) {
        fail("the rays of the library miss");
    }
}

void mapPicture(LayoutMapper& map, const std::vector<P2>& picture) {
    std::vector<LayoutPoint> layout(picture.size());
    map.toLayout(picture, layout);
    if (!layout.front().isMapped || !layout.back().isMapped) {
        fail("the picture of the library is not mapped");
    }
}

template <class Step>
ratio::Body timing(const Step& step) {
    return [step](benchmark::State& state) {
        ratio::returnMemoryToSystem();
        for (auto _ : state) {
            step();
        }
    };
}

/// The names that the calls in Python are made with.
py::dict scope(const std::string& file) {
    py::dict names;
    names["file"] = file;
    names["folder"] = SM_PYTHON_PATH;
    names["side"] = RAYS_PER_SIDE;
    py::exec(R"(
import sys
sys.path.insert(0, folder)
import numpy as np
import screenmanager
display = screenmanager.Display.load(file)
screen, channel = display.screen, display.channels[0]
along = (2.0 * np.arange(side) + 1) / side - 1
up, across = np.meshgrid(along, along, indexing="ij")
directions = np.stack([across, np.ones_like(across), up], axis=-1).reshape(-1, 3)
origins = np.tile((0.5, 1.0, 0.25), (side * side, 1))
assert screen.intersect(origins, directions).hit.all() and channel.to_layout((0.5, 0.5)).mask
)",
             names);
    return names;
}

}  // namespace

int main(int argc, char** argv) {
    const MeshDisplay display;
    const py::scoped_interpreter interpreter;
    const py::dict names = scope(display.file());
    const py::object intersect = py::eval("lambda: screen.intersect(origins, directions)", names);
    const py::object picture = py::eval("lambda: channel.layout_picture()", names);

    const auto config = XMLConfigFile::load(display.file());
    LayoutMapper map(*config, ChannelChoice::of(*config, "P1"), false);
    ratio::pair("python_million_rays_mesh_1M", timing([&] { intersect(); }), timing([all = rays()] { castRays(all); }),
                LIMIT);
    ratio::pair("python_picture_mesh_1M", timing([&] { picture(); }),
                timing([&map, all = pixels()] { mapPicture(map, all); }), LIMIT);
    return ratio::run(argc, argv);
}

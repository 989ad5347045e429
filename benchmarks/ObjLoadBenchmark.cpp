#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/ObjReader.h"
#include "Ratio.h"

#include <embree3/rtcore.h>
#include <openssl/evp.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

/// Loading a screen file of 100 MB and a million triangles with texture coordinates and normals, from the file to the
/// first ray, against the least that any loader has to do: read the file, digest it, convert every number in it and
/// let Embree build its search structure.

namespace {

/// Cells of the wall, across and up: two triangles each.
constexpr int CELLS = 707;

/// Extents of the wall in metres: bumps of up to a metre on a wall of ten by six.
constexpr double WIDTH = 10;
constexpr double HEIGHT = 6;

template <class... Values>
void print(std::string& text, const char* format, Values... values) {
    std::array<char, 160> line{};
    const int size = std::snprintf(line.data(), line.size(), format, values...);
    text.append(line.data(), static_cast<std::size_t>(size));
}

/// Calls `write` with the place of each grid node, 0 to 1 across and up, row by row.
template <class Write>
void forEachNode(const Write& write) {
    for (int row = 0; row <= CELLS; ++row) {
        for (int column = 0; column <= CELLS; ++column) {
            write(static_cast<double>(column) / CELLS, static_cast<double>(row) / CELLS);
        }
    }
}

/// A bumpy wall as modelling programs write it: six decimals, all vertices, then all texture coordinates, normals,
/// faces.
std::string wallText() {
    std::string text = "# wall\no wall\n";
    forEachNode([&](double s, double t) {
        print(text, "v %.6f %.6f %.6f\n", WIDTH * (s - 0.5), 3 + std::sin(9 * s) * std::cos(7 * t), HEIGHT * t);
    });
    forEachNode([&](double s, double t) { print(text, "vt %.6f %.6f\n", s, t); });
    forEachNode([&](double s, double t) { print(text, "vn %.4f %.4f %.4f\n", 0.3 * s, -0.9, 0.3 * t); });
    for (int cell = 0; cell < CELLS * CELLS; ++cell) {
        const int a = cell / CELLS * (CELLS + 1) + cell % CELLS + 1;
        const int b = a + 1;
        const int c = b + CELLS + 1;
        const int d = a + CELLS + 1;
        print(text, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, b, b, b, c, c, c);
        print(text, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, c, c, c, d, d, d);
    }
    return text;
}

/// The wall in a file, for as long as the program runs.
class WallFile {
public:
    WallFile() : m_path(std::filesystem::temp_directory_path() / ("wall-" + std::to_string(::getpid()) + ".obj")) {
        std::ofstream(m_path, std::ios::binary) << wallText();
    }
    ~WallFile() { std::filesystem::remove(m_path); }
    WallFile(const WallFile&) = delete;
    WallFile& operator=(const WallFile&) = delete;

    [[nodiscard]] std::string read() const {
        std::ifstream file(m_path, std::ios::binary);
        std::string bytes(std::filesystem::file_size(m_path), '\0');
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }

private:
    std::filesystem::path m_path;
};

void loadAsTheScreenDoes(const WallFile& wall) {
    std::string bytes = wall.read();
    benchmark::DoNotOptimize(MeshScreen::calcUniqueDataHash(bytes));
    OBJScreen screen(L"Z", L"Y", 1.0F);
    std::istringstream stream(std::move(bytes));
    screen.deserialize(stream);
    benchmark::DoNotOptimize(screen.isValid());
    benchmark::DoNotOptimize(screen.intersect({0.0, 0.0, 1.0}, {0.1, 1.0, 1.0}).size());
}

/// Converts every number of the text, whole numbers on the lines of faces, and keeps none.
double scanNumbers(std::string_view text) {
    double sum = 0;
    bool inFace = false;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        if (*at == '\n') {
            ++at;
            inFace = at != end && *at == 'f';
        } else if ((*at < '0' || *at > '9') && *at != '-') {
            ++at;
        } else if (inFace) {
            std::int64_t index = 0;
            at = std::from_chars(at, end, index).ptr;
            sum += static_cast<double>(index);
        } else {
            double number = 0;
            at = std::from_chars(at, end, number).ptr;
            sum += number;
        }
    }
    return sum;
}

void digest(const std::string& bytes) {
    std::array<unsigned char, 20> result{};
    EVP_Digest(bytes.data(), bytes.size(), result.data(), nullptr, EVP_sha1(), nullptr);
    benchmark::DoNotOptimize(result);
}

template <class T>
T* newBuffer(RTCGeometry geometry, RTCBufferType type, RTCFormat format, std::size_t count) {
    return static_cast<T*>(rtcSetNewGeometryBuffer(geometry, type, 0, format, 3 * sizeof(T), count));
}

/// Hands the mesh to Embree in single precision, with the settings that make it watertight, and builds.
void buildEmbreeScene(RTCDevice device, const TriangleMesh& mesh) {
    const RTCScene scene = rtcNewScene(device);
    rtcSetSceneFlags(scene, RTC_SCENE_FLAG_ROBUST);
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    auto* coordinate = newBuffer<float>(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3, mesh.vertices.size());
    for (const auto& vertex : mesh.vertices) {
        for (std::size_t i = 0; i < 3; ++i) {
            *coordinate++ = static_cast<float>(vertex[i]);
        }
    }
    auto* index = newBuffer<std::uint32_t>(geometry, RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT3, mesh.triangles.size());
    for (const auto& triangle : mesh.triangles) {
        index = std::copy(triangle.begin(), triangle.end(), index);
    }
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene, geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene);
    rtcReleaseScene(scene);
}

/// @param body one repetition; freed memory goes back to the system before it, outside the time
template <class Body>
ratio::Body repeated(const Body& body) {
    return [body](benchmark::State& state) {
        for (auto _ : state) {
            state.PauseTiming();
            ratio::returnMemoryToSystem();
            state.ResumeTiming();
            body();
        }
    };
}

}  // namespace

int main(int argc, char** argv) {
    constexpr double LOAD_LIMIT = 1.25;
    constexpr double PARSE_LIMIT = 1.25;
    const WallFile wall;
    const std::string text = wall.read();
    const TriangleMesh mesh = ObjReader::read(text);
    const RTCDevice device = rtcNewDevice("threads=1");
    std::printf("%zu bytes, %zu triangles\n", text.size(), mesh.triangles.size());

    ratio::pair("obj_load_to_first_ray", repeated([&] { loadAsTheScreenDoes(wall); }), repeated([&] {
                    const std::string bytes = wall.read();
                    digest(bytes);
                    benchmark::DoNotOptimize(scanNumbers(bytes));
                    buildEmbreeScene(device, mesh);
                }),
                LOAD_LIMIT);
    ratio::pair("obj_text_to_mesh", repeated([&] { benchmark::DoNotOptimize(ObjReader::read(text).triangles.data()); }),
                repeated([&] { benchmark::DoNotOptimize(scanNumbers(text)); }), PARSE_LIMIT);
    const int result = ratio::run(argc, argv);
    rtcReleaseDevice(device);
    return result;
}

#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/ObjReader.h"
#include "Ratio.h"
#include "WallFile.h"

#include <embree3/rtcore.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/// Loading a screen file of 100 MB and a million triangles with texture coordinates and normals, from the file to the
/// first ray, against the least that any loader has to do: read the file, digest it, convert every number in it and
/// let Embree build its search structure.

namespace {

void loadAsTheScreenDoes(const WallFile& wall) {
    const std::string bytes = wall.read();
    OBJScreen screen(L"Z", L"Y", 1.0F);
    screen.read(bytes, MeshScreen::calcUniqueDataHash(bytes));
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
    constexpr double LOAD_LIMIT = 1.1;
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

#include "Common/Utf8.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "Ratio.h"
#include "ScreenManager/Screen.h"
#include "WallFile.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

/// Loading a mesh of a million triangles through a `Screen`: the peak of memory against the size of the file, and a
/// second load of the unchanged file against the first.

namespace {

void load(Screen& screen, const std::wstring& path) {
    screen.setImportTransformParams(L"Z", L"Y");
    benchmark::DoNotOptimize(screen.loadContent(path, false));
}

/// Largest resident size, in bytes, of a process that loads the file and shoots one ray at it; 0 when that fails.
double peakOfOneLoad(const std::wstring& path) {
    const pid_t child = ::fork();
    if (child == 0) {
        Screen screen;
        load(screen, path);
        ::_exit(screen.getContent()->intersect({0.0, 0.0, 1.0}, {0.1, 1.0, 1.0}).empty() ? 1 : 0);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
        return 0;
    }
    constexpr double KIBIBYTE = 1024;
    return static_cast<double>(usage.ru_maxrss) * KIBIBYTE;
}

/// @param again false loads into a fresh screen, true once more into one that has the file already
ratio::Body loading(const std::wstring& path, bool again) {
    return [path, again](benchmark::State& state) {
        for (auto _ : state) {
            state.PauseTiming();
            ratio::returnMemoryToSystem();
            {
                Screen screen;
                if (again) {
                    load(screen, path);
                }
                state.ResumeTiming();
                load(screen, path);
                state.PauseTiming();
            }
            state.ResumeTiming();
        }
    };
}

}  // namespace

int main(int argc, char** argv) {
    constexpr double MEMORY_LIMIT = 4.5;
    constexpr double SECOND_LOAD_LIMIT = 1.05;
    const WallFile wall;
    const std::wstring path = Veltrani::fromUtf8(wall.path());
    ratio::returnMemoryToSystem();
    const double size = static_cast<double>(std::filesystem::file_size(wall.path()));
    const double peak = peakOfOneLoad(path);

    ratio::pair("second_load_of_the_unchanged_file", loading(path, true), loading(path, false), SECOND_LOAD_LIMIT);
    const int result = ratio::run(argc, argv);
    const bool within = peak > 0 && peak <= MEMORY_LIMIT * size;
    std::printf("RATIO %-44s peak %14.0f B   file      %14.0f B   ratio %6.3f  limit %5.2f  %s\n",
                "peak_memory_of_a_load", peak, size, peak / size, MEMORY_LIMIT, within ? "ok" : "ABOVE");
    return result;
}

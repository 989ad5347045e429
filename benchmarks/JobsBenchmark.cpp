#include "DisplayOfTwelve.h"
#include "Ratio.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

/// How much sooner two processes export a display than one does: the program as it is, from its start to its end, with
/// all its files on the disk. The twelve channels are equal, so that two processes could take half the time.

namespace {

namespace fs = std::filesystem;

constexpr double LIMIT = 0.65;

/// A folder with the display, and room for its exports.
class ExportPlace {
public:
    ExportPlace() : m_folder(fs::temp_directory_path() / ("jobs-benchmark-" + std::to_string(::getpid()))) {
        fs::create_directory(m_folder);
        displayOfTwelve()->save(display());
    }
    ~ExportPlace() {
        std::error_code gone;
        fs::remove_all(m_folder, gone);
    }
    ExportPlace(const ExportPlace&) = delete;
    ExportPlace& operator=(const ExportPlace&) = delete;

    void exportWith(const char* jobs) const {
        std::vector<std::string> arguments{SM_PROGRAM, "--quiet", "export",   display(),
                                           "--jobs",   jobs,      "--output", player()};
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        pid_t process = -1;
        int status = -1;
        if (::posix_spawn(&process, SM_PROGRAM, nullptr, nullptr, argv.data(), environ) != 0 ||
            ::waitpid(process, &status, 0) != process || status != 0) {
            std::fprintf(stderr, "the export fails\n");
            std::exit(2);
        }
    }
    void remove() const { fs::remove_all(player()); }

private:
    [[nodiscard]] std::string display() const { return m_folder / "display.xml"; }
    [[nodiscard]] std::string player() const { return m_folder / "player"; }

    fs::path m_folder;
};

ratio::Body exporting(const ExportPlace& place, const char* jobs) {
    return [&place, jobs](benchmark::State& state) {
        for (auto _ : state) {
            place.exportWith(jobs);
            state.PauseTiming();
            place.remove();
            state.ResumeTiming();
        }
    };
}

}  // namespace

int main(int argc, char** argv) {
    if (std::thread::hardware_concurrency() < 2) {
        std::fprintf(stderr, "two processes have one core here: nothing is measured\n");
        return 0;
    }
    const ExportPlace place;
    ratio::pair("export_of_12_channels_by_2_jobs", exporting(place, "2"), exporting(place, "1"), LIMIT,
                ratio::Clock::WALL);
    return ratio::run(argc, argv);
}

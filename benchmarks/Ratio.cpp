#include "Ratio.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace ratio {

namespace {

struct Pair {
    std::string name;
    double limit;
};

std::vector<Pair>& pairs() {
    static std::vector<Pair> registered;
    return registered;
}

const std::string OURS = "/ours";
const std::string REFERENCE = "/reference";

/// Prints as usual and keeps the time of each repetition.
class TimeCollector : public benchmark::ConsoleReporter {
public:
    TimeCollector() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                const bool isOfWall = run.run_name.time_type == "real_time";
                const double seconds = isOfWall ? run.real_accumulated_time : run.cpu_accumulated_time;
                m_nanoseconds[run.run_name.function_name].push_back(seconds * 1e9 /
                                                                    static_cast<double>(run.iterations));
            }
        }
    }

    /// Zero when the benchmark did not run.
    [[nodiscard]] double median(const std::string& name) {
        std::vector<double>& times = m_nanoseconds[name];
        if (times.empty()) {
            return 0;
        }
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> m_nanoseconds;
};

/// Prints one line of the table; false when the ratio is above its limit.
bool printRatio(TimeCollector& times, const Pair& pair) {
    const double ours = times.median(pair.name + OURS);
    const double reference = times.median(pair.name + REFERENCE);
    if (ours == 0 || reference == 0) {
        return true;
    }
    const double ratio = ours / reference;
    std::printf("RATIO %-44s ours %14.1f ns  reference %14.1f ns  ratio %6.3f  limit %5.2f  %s\n", pair.name.c_str(),
                ours, reference, ratio, pair.limit, ratio <= pair.limit ? "ok" : "ABOVE");
    return ratio <= pair.limit;
}

/// Takes `--check` out of the arguments.
bool takeCheck(std::vector<char*>& arguments) {
    const auto isCheck = [](const char* argument) { return std::strcmp(argument, "--check") == 0; };
    const auto end = std::remove_if(arguments.begin(), arguments.end(), isCheck);
    const bool taken = end != arguments.end();
    arguments.erase(end, arguments.end());
    return taken;
}

}  // namespace

void pair(const std::string& name, const Body& ours, const Body& reference, double limit, Clock clock) {
    pairs().push_back({name, limit});
    for (benchmark::internal::Benchmark* const side :
         {benchmark::RegisterBenchmark((name + OURS).c_str(), ours),
          benchmark::RegisterBenchmark((name + REFERENCE).c_str(), reference)}) {
        if (clock == Clock::WALL) {
            side->UseRealTime();
        }
    }
}

void returnMemoryToSystem() {
    malloc_trim(0);
}

int run(int argc, char** argv, const Repetitions& repetitions) {
    // Given first, so that the options of the command line override them.
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    std::string repeat = "--benchmark_repetitions=" + std::to_string(repetitions.count);
    std::string duration = "--benchmark_min_time=" + std::to_string(repetitions.seconds);
    std::vector<char*> arguments(argv, argv + argc);
    const bool check = takeCheck(arguments);
    arguments.insert(arguments.begin() + 1, {interleave.data(), repeat.data(), duration.data()});
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    TimeCollector times;
    benchmark::RunSpecifiedBenchmarks(&times);
    bool within = true;
    for (const Pair& pair : pairs()) {
        within = printRatio(times, pair) && within;
    }
    return check && !within ? 1 : 0;
}

}  // namespace ratio

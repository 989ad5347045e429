#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

/// Benchmarks that compare our code with the plain use of the library below it.
///
/// A pair is two benchmarks over the same input. All repetitions of all pairs run interleaved in random order, so that
/// a machine that is busy for a while slows both sides alike, and the ratio of the two medians is what counts. Times
/// are those of the processor unless the clock on the wall is stated, which is for processes that work at the same
/// time.
///
///     ratio::pair("normal of a hit", ours, reference, 1.5);
///     ...
///     return ratio::run(argc, argv);      // prints the table "name, ours, reference, ratio, limit"
///
/// `run` returns 1 when a ratio is above its limit and the program was started with `--check`, else 0. All options of
/// the benchmark library work as usual.
namespace ratio {

using Body = std::function<void(benchmark::State&)>;

/// Which time is measured.
enum class Clock {
    PROCESSOR,  ///< of this process alone
    WALL,       ///< until it is done: on a machine that does nothing else
};

/// @param limit the largest ratio ours / reference that is accepted
void pair(const std::string& name, const Body& ours, const Body& reference, double limit,
          Clock clock = Clock::PROCESSOR);

/// Gives freed memory back to the system. A heap that was left shuffled by the previous repetition makes the next one
/// several times slower: benchmarks that allocate call it before they start.
void returnMemoryToSystem();

/// How often each benchmark runs, and for how long at least each time.
struct Repetitions {
    int count = 0;
    double seconds = 0;
};

inline constexpr Repetitions FEW_AND_LONG{5, 0.05};
/// For what takes less than some milliseconds: a machine that is faster at one moment than at the next, as one of
/// several on the same processor is, is met in all its states by both sides, and their medians by the same ones.
inline constexpr Repetitions MANY_AND_SHORT{51, 0.005};

/// Runs everything registered and prints the table.
int run(int argc, char** argv, const Repetitions& repetitions = FEW_AND_LONG);

}  // namespace ratio

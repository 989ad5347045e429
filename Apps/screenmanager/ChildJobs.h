#pragma once

#include "DisplayReport/basics/Progress.h"

#include <signal.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class ProgressMeter;

/// Pieces of work that are done by processes of their own, several at the same time: each has a copy of everything that
/// this process has, and its memory goes with it. To be used while the process has one thread.
///
/// The children end with this process, however it ends.
class ChildJobs {
public:
    /// Does one piece and returns its result, on one line. Called in a child.
    using Work = std::function<std::string(std::size_t piece, const Veltrani::DisplayReport::Progress& progress)>;

    /// What became of a piece.
    struct Outcome {
        std::string result;        ///< what the work returned
        std::string fault;         ///< why it has no result, on one line; empty when it has one
        bool lacksMemory = false;  ///< whether too little memory is why
    };

    ChildJobs() = delete;

    /// How many processes can work at the same time: the cores that this process may use.
    [[nodiscard]] static int usualNumber();

    /// Does all pieces; the first ones begin first. None when a signal that ends the program has arrived, which is left
    /// pending: it must be blocked (see `HeldSignals`).
    /// @param atOnce processes at the same time, 1 or more
    [[nodiscard]] static std::optional<std::vector<Outcome>> run(std::size_t pieces, int atOnce, const Work& work,
                                                                 ProgressMeter& meter);
};

/// Holds the signals back that end the program, for as long as it lives: what is to be tidied up can be tidied up
/// first. Those that the program was started to ignore stay ignored.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /// Whether one has arrived.
    [[nodiscard]] static bool hasArrived();

private:
    sigset_t m_before{};
};

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
        bool isEnded = false;      ///< whether the process of the piece was ended, which the fault states
    };
    /// Whether the rest of the work is of no use after such an outcome.
    using EndsAll = std::function<bool(const Outcome& outcome)>;

    ChildJobs() = delete;

    /// How many processes can work at the same time: the cores that this process may use.
    [[nodiscard]] static int usualNumber();

    /// Does the pieces, the first ones of the order first. None when a signal that ends the program has arrived, which
    /// is left pending: it must be blocked (see `HeldSignals`).
    /// @param order each piece from 0 once
    /// @param atOnce processes at the same time, 1 or more
    /// @param endsAll where it returns true, all processes are ended, and what they had begun has no outcome
    /// @return by piece
    [[nodiscard]] static std::optional<std::vector<Outcome>> run(const std::vector<std::size_t>& order, int atOnce,
                                                                 const Work& work, const EndsAll& endsAll,
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

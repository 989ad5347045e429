#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// How long work of equal pieces will still take, by the pieces done so far. There is no estimate where the pieces say
/// nothing about those to come. What is estimated is less than a factor of ten off while the speed changes by less than
/// that: nobody can know of pieces to come that take a hundredth of the time.
class TimeEstimate {
public:
    /// After so many seconds of work, so many pieces are done.
    void note(double seconds, std::size_t done);

    /// In seconds; none in the first two, before a twentieth of the pieces and four of them are done, after the last,
    /// and while the second half of the time went three times as fast as the whole of it, or as slow.
    [[nodiscard]] std::optional<double> secondsLeft(std::size_t total) const;

    /// ", about 12 s left", ", about 3 min left"
    [[nodiscard]] static std::string text(double secondsLeft);

private:
    struct Mark {
        double seconds;
        std::size_t done;
    };

    std::vector<Mark> m_marks;  ///< a few hundred at most, all over the time
};

/// One line on standard error that shows how far a long piece of work is and how long it will still take.
///
/// Shown only on a terminal, at most ten times a second, and only once the work has taken a second unless begun at
/// once; erased at the end.
class ProgressMeter {
public:
    /// What is known about the time that a piece takes.
    enum class Pieces {
        EQUAL,         ///< about as long as the others: the time that is left is estimated
        SIDE_BY_SIDE,  ///< all are under way at the same time, and the slowest ends the work: nothing is estimated
    };

    /// @param enabled false keeps it silent
    ProgressMeter(bool enabled, std::string work, Pieces pieces = Pieces::EQUAL);
    ~ProgressMeter();
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    /// Shows at once that the work is under way, for work that cannot report how far it is.
    void begin();

    /// `done` of `total` pieces are done.
    void update(std::size_t done, std::size_t total);

    /// `update` as a function to be passed on, which the meter must outlive.
    [[nodiscard]] auto callback() {
        return [this](std::size_t done, std::size_t total) { update(done, total); };
    }

    /// Erases the line; nothing is shown afterwards.
    void end();

private:
    bool m_enabled;
    bool m_shown = false;
    std::string m_work;
    Pieces m_pieces;
    TimeEstimate m_estimate;
    double m_lastUpdate = 0;  ///< seconds since the start
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

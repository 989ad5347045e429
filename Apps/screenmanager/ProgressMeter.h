#pragma once

#include <chrono>
#include <cstddef>
#include <string>

/// One line on standard error that shows how far a long piece of work is and how long it will still take.
///
/// Shown only on a terminal, and only once the work has taken a second unless begun at once; erased at the end.
class ProgressMeter {
public:
    /// @param enabled false keeps it silent
    ProgressMeter(bool enabled, std::string work);
    ~ProgressMeter();
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    /// Shows at once that the work is under way, for work that cannot report how far it is.
    void begin();

    /// `done` of `total` equal pieces are done.
    void update(std::size_t done, std::size_t total);

    /// `update` as a function to be passed on, which the meter must outlive.
    [[nodiscard]] auto callback() {
        return [this](std::size_t done, std::size_t total) { update(done, total); };
    }

    /// Erases the line; nothing is shown afterwards.
    void end();

    /// ", about 12 s left", ", about 3 min left"; nothing before the first piece and after the last.
    [[nodiscard]] static std::string timeLeft(double secondsSpent, std::size_t done, std::size_t total);

private:
    bool m_enabled;
    bool m_shown = false;
    std::string m_work;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

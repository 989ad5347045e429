#include "ProgressMeter.h"

#include <unistd.h>

#include <cmath>
#include <iostream>
#include <utility>

namespace {

/// Work below this is not worth a line.
constexpr double SECONDS_BEFORE_SHOWN = 1.0;
constexpr double SECONDS_PER_MINUTE = 60.0;
/// From here on minutes are precise enough.
constexpr double LONGEST_IN_SECONDS = 90.0;
/// Back to the start of the line, and erase it.
constexpr const char* START_OF_LINE = "\r\x1b[K";

}  // namespace

ProgressMeter::ProgressMeter(bool enabled, std::string work)
    : m_enabled(enabled && ::isatty(STDERR_FILENO) == 1), m_work(std::move(work)) {}

ProgressMeter::~ProgressMeter() {
    end();
}

void ProgressMeter::end() {
    if (m_shown) {
        std::cerr << START_OF_LINE << std::flush;
    }
    m_shown = false;
    m_enabled = false;
}

void ProgressMeter::begin() {
    if (m_enabled) {
        m_shown = true;
        std::cerr << START_OF_LINE << m_work << " ..." << std::flush;
    }
}

void ProgressMeter::update(std::size_t done, std::size_t total) {
    const double spent = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    if (!m_enabled || spent < SECONDS_BEFORE_SHOWN) {
        return;
    }
    m_shown = true;
    std::cerr << START_OF_LINE << m_work << ": " << done << " of " << total << timeLeft(spent, done, total)
              << std::flush;
}

std::string ProgressMeter::timeLeft(double secondsSpent, std::size_t done, std::size_t total) {
    if (done == 0 || done >= total) {
        return "";
    }
    const double left = secondsSpent / static_cast<double>(done) * static_cast<double>(total - done);
    if (left <= LONGEST_IN_SECONDS) {
        return ", about " + std::to_string(std::lround(std::ceil(left))) + " s left";
    }
    return ", about " + std::to_string(std::lround(std::ceil(left / SECONDS_PER_MINUTE))) + " min left";
}

#include "ProgressMeter.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <utility>

namespace {

/// Work below this is not worth a line.
constexpr double SECONDS_BEFORE_SHOWN = 1.0;
/// The eye follows no faster.
constexpr double SECONDS_BETWEEN_UPDATES = 0.1;
/// Shorter work shows too little of its speed: caches fill, files are opened.
constexpr double SECONDS_BEFORE_ESTIMATE = 2.0;
constexpr double LEAST_SHARE = 0.05;
constexpr std::size_t LEAST_PIECES = 4;
/// Between the speed of the second half of the time and that of all of it.
constexpr double MOST_DIFFERENCE = 3.0;
constexpr std::size_t MOST_MARKS = 512;

constexpr double SECONDS_PER_MINUTE = 60.0;
/// From here on minutes are precise enough.
constexpr double LONGEST_IN_SECONDS = 90.0;
/// Back to the start of the line, and erase it.
constexpr const char* START_OF_LINE = "\r\x1b[K";

}  // namespace

void TimeEstimate::note(double seconds, std::size_t done) {
    if (m_marks.size() >= MOST_MARKS) {
        // Every second one stays.
        for (std::size_t i = 0; i < MOST_MARKS / 2; ++i) {
            m_marks[i] = m_marks[2 * i];
        }
        m_marks.resize(MOST_MARKS / 2);
    }
    m_marks.push_back({seconds, done});
}

std::optional<double> TimeEstimate::secondsLeft(std::size_t total) const {
    if (m_marks.empty() || m_marks.back().seconds < SECONDS_BEFORE_ESTIMATE) {
        return std::nullopt;
    }
    const auto [seconds, done] = m_marks.back();
    if (done < LEAST_PIECES || done >= total || static_cast<double>(done) < LEAST_SHARE * static_cast<double>(total)) {
        return std::nullopt;
    }
    const auto halfTime = std::find_if(m_marks.rbegin(), m_marks.rend(),
                                       [half = seconds / 2](const Mark& mark) { return mark.seconds <= half; });
    const Mark middle = halfTime == m_marks.rend() ? Mark{0, 0} : *halfTime;
    const double speed = static_cast<double>(done) / seconds;
    const double lately = static_cast<double>(done - middle.done) / (seconds - middle.seconds);
    if (lately > MOST_DIFFERENCE * speed || speed > MOST_DIFFERENCE * lately) {
        return std::nullopt;
    }
    return static_cast<double>(total - done) / lately;
}

std::string TimeEstimate::text(double secondsLeft) {
    if (secondsLeft <= LONGEST_IN_SECONDS) {
        return ", about " + std::to_string(std::lround(std::ceil(secondsLeft))) + " s left";
    }
    return ", about " + std::to_string(std::lround(std::ceil(secondsLeft / SECONDS_PER_MINUTE))) + " min left";
}

ProgressMeter::ProgressMeter(bool enabled, std::string work, Pieces pieces)
    : m_enabled(enabled && ::isatty(STDERR_FILENO) == 1), m_work(std::move(work)), m_pieces(pieces) {}

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
    if (!m_enabled || spent - m_lastUpdate < SECONDS_BETWEEN_UPDATES) {
        return;
    }
    m_lastUpdate = spent;
    m_estimate.note(spent, done);
    if (spent < SECONDS_BEFORE_SHOWN) {
        return;
    }
    m_shown = true;
    const auto left = m_pieces == Pieces::EQUAL ? m_estimate.secondsLeft(total) : std::nullopt;
    // In one piece, so that nothing is seen half.
    std::cerr << START_OF_LINE + m_work + ": " + std::to_string(done) + " of " + std::to_string(total) +
                     (left ? TimeEstimate::text(*left) : std::string())
              << std::flush;
}

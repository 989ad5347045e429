#include "ProgramRun.h"
#include "ProgressMeter.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <functional>

namespace {

TEST(TimeEstimate, IsTheTimeLeftAtTheSameSpeed) {
    TimeEstimate estimate;
    for (int second = 0; second <= 10; ++second) {
        estimate.note(second, static_cast<std::size_t>(second));
    }
    EXPECT_NEAR(estimate.secondsLeft(20).value(), 10, 1e-9);
    EXPECT_NEAR(estimate.secondsLeft(100).value(), 90, 1e-9);
    EXPECT_FALSE(estimate.secondsLeft(1000).has_value()) << "a hundredth says nothing of the rest";
    EXPECT_FALSE(estimate.secondsLeft(10).has_value()) << "done";
}

TEST(TimeEstimate, SaysNothingTooEarly) {
    TimeEstimate estimate;
    EXPECT_FALSE(estimate.secondsLeft(10).has_value());
    estimate.note(1.9, 5);
    EXPECT_FALSE(estimate.secondsLeft(10).has_value());
    TimeEstimate few;
    few.note(5, 2);
    EXPECT_FALSE(few.secondsLeft(4).has_value());
}

TEST(TimeEstimate, IsReadInSecondsOrMinutes) {
    EXPECT_EQ(TimeEstimate::text(10.0), ", about 10 s left");
    EXPECT_EQ(TimeEstimate::text(2.1), ", about 3 s left");
    EXPECT_EQ(TimeEstimate::text(240.0), ", about 4 min left");
}

/// How often an estimate is shown, and how far off the worst one is.
struct Judgement {
    int shown = 0;
    double worstFactor = 1;
};

/// @param duration of each of the pieces
Judgement judge(const std::function<double(int)>& duration, int pieces) {
    double whole = 0;
    for (int i = 0; i < pieces; ++i) {
        whole += duration(i);
    }
    Judgement judgement;
    TimeEstimate estimate;
    double seconds = 0;
    for (int i = 0; i < pieces; ++i) {
        seconds += duration(i);
        estimate.note(seconds, static_cast<std::size_t>(i) + 1);
        const auto left = estimate.secondsLeft(static_cast<std::size_t>(pieces));
        const double truth = whole - seconds;
        // Below a second the text is rounded up to one.
        if (left && truth > 1) {
            ++judgement.shown;
            judgement.worstFactor = std::max({judgement.worstFactor, *left / truth, truth / *left});
        }
    }
    return judgement;
}

// However uneven the pieces are, as long as those to come are not ten times as fast or as slow as those that were done.
TEST(TimeEstimate, IsNeverOffByAFactorOfTen) {
    constexpr int PIECES = 1000;
    const std::vector<std::function<double(int)>> works{
        [](int) { return 0.05; },
        [](int i) { return 0.01 + 0.0002 * i; },
        [](int i) { return 0.2 - 0.00019 * i; },
        [](int i) { return i < 60 ? 0.001 : 0.05; },
        [](int i) { return i < 100 ? 0.2 : 0.025; },
        [](int i) { return i % 7 == 0 ? 0.3 : 0.01; },
        [](int i) { return 0.05 + 0.04 * std::sin(0.05 * i); },
    };
    for (std::size_t i = 0; i < works.size(); ++i) {
        const Judgement judgement = judge(works[i], PIECES);
        EXPECT_GT(judgement.shown, 100) << i;
        EXPECT_LT(judgement.worstFactor, 10) << i;
    }
}

// Nine projectors reply at once, the tenth never: after two seconds its wait is all that is left.
TEST(TimeEstimate, AStandstillHasNone) {
    TimeEstimate estimate;
    for (int i = 1; i <= 9; ++i) {
        estimate.note(0.05 * i, static_cast<std::size_t>(i));
    }
    estimate.note(2.5, 9);
    EXPECT_FALSE(estimate.secondsLeft(10).has_value());
}

/// Standard error leads to a terminal for as long as this lives.
class ErrorsOnTerminal {
public:
    explicit ErrorsOnTerminal(const std::string& device) : m_kept(::dup(STDERR_FILENO)) {
        const int terminal = ::open(device.c_str(), O_WRONLY | O_NOCTTY);
        ::dup2(terminal, STDERR_FILENO);
        ::close(terminal);
    }
    ~ErrorsOnTerminal() {
        ::dup2(m_kept, STDERR_FILENO);
        ::close(m_kept);
    }
    ErrorsOnTerminal(const ErrorsOnTerminal&) = delete;
    ErrorsOnTerminal& operator=(const ErrorsOnTerminal&) = delete;

private:
    int m_kept;
};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(ProgressMeter, IsDrawnAtMostTenTimesASecond) {
    PseudoTerminal terminal;
    double seconds = 0;
    {
        const ErrorsOnTerminal errors(terminal.device());
        const auto start = std::chrono::steady_clock::now();
        ProgressMeter meter(true, "working");
        for (std::size_t i = 0; (seconds = secondsSince(start)) < 1.6; ++i) {
            meter.update(i, 1'000'000'000);
            terminal.take();
        }
    }
    terminal.take();
    int drawn = 0;
    for (std::size_t at = 0; (at = terminal.shown().find("working: ", at)) != std::string::npos; ++at) {
        ++drawn;
    }
    EXPECT_GE(drawn, 1);
    EXPECT_LE(drawn, 10 * seconds);
    EXPECT_TRUE(terminal.shown().ends_with("\r\x1b[K")) << "erased at the end";
}

TEST(ProgressMeter, ShowsNothingWhereThereIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        ProgressMeter meter(true, "working");
        meter.begin();
        meter.update(1, 2);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace

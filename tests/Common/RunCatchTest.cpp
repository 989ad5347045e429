#include "Common/RunCatch.h"

#include "Common/VeltraniException.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::EndsWith;

template <class Exception>
std::string described(const Exception& exception) {
    return RunCatch::describe(std::make_exception_ptr(exception));
}

/// Puts the handler list back as it was.
class HandlersRestored {
public:
    ~HandlersRestored() { RunCatch::handlers() = m_before; }

private:
    std::vector<RunCatch::Handler> m_before = RunCatch::handlers();
};

TEST(RunCatchDescribe, NullIsNothing) {
    EXPECT_EQ(RunCatch::describe(nullptr), "");
}

TEST(RunCatchDescribe, OwnExceptionsGiveTheirFullDescriptionInUtf8) {
    EXPECT_EQ(described(VeltraniException("a.cpp", 12, L"B\u00fchne")), "B\xc3\xbchne @ a.cpp:12");
    EXPECT_EQ(described(ChannelSwapException(L"A", L"B")), "A is being swapped by B");
}

TEST(RunCatchDescribe, StandardExceptionsGiveTheirText) {
    EXPECT_EQ(described(std::runtime_error("reset by peer")), "reset by peer");
}

TEST(RunCatchDescribe, AnythingElseHasNoDetails) {
    EXPECT_EQ(described(42), "(...) No details");
    EXPECT_EQ(described(VeltraniExceptionBase("", -1, L"base alone")), "(...) No details");
}

TEST(RunCatchHandlers, StartWithExactlyOne) {
    EXPECT_EQ(RunCatch::handlers().size(), 1U);
}

TEST(RunCatchRun, LogsAThrownIntegerAndSwallowsIt) {
    LogTrap trap;
    bool after = false;
    RunCatch::run([] { throw 42; });
    after = true;
    EXPECT_TRUE(after);
    EXPECT_THAT(trap.messages(), ElementsAre("ERROR Caught exception: (...) No details"));
    EXPECT_EQ(trap.records().front().logger, "Common.RunCatch");
    EXPECT_THAT(trap.records().front().file, EndsWith("RunCatch.cpp"));
}

TEST(RunCatchRun, SaysNothingWhenNothingIsThrown) {
    LogTrap trap;
    int runs = 0;
    RunCatch::run([&runs] { ++runs; });
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(trap.records().empty());
}

TEST(RunCatchRun, LogsNothingWhenErrorIsOff) {
    LogTrap trap(log4cxx::Level::getFatal());
    RunCatch::run([] { throw std::runtime_error("unheard"); });
    EXPECT_TRUE(trap.records().empty());
}

TEST(RunCatchRun, ATextThatIsNotUtf8IsStillLogged) {
    LogTrap trap;
    RunCatch::run([] { throw std::runtime_error("caf\xe9"); });
    EXPECT_THAT(trap.messages(), ElementsAre("ERROR Caught exception: caf\xc3\xa9"));
}

TEST(RunCatchHandle, CallsEveryHandlerInOrder) {
    const HandlersRestored restored;
    std::vector<std::string> calls;
    RunCatch::handlers() = {[&calls](const std::string& text) { calls.push_back("first " + text); },
                            [&calls](const std::string& text) { calls.push_back("second " + text); }};
    RunCatch::run([] { throw std::runtime_error("fault"); });
    EXPECT_THAT(calls, ElementsAre("first fault", "second fault"));
}

TEST(RunCatchHandle, AnEmptyHandlerRaisesTheStandardError) {
    const HandlersRestored restored;
    RunCatch::handlers() = {RunCatch::Handler()};
    EXPECT_THROW(RunCatch::run([] { throw 1; }), std::bad_function_call);
}

TEST(RunCatchHandle, ThrowsTheVeryObjectOn) {
    LogTrap trap;
    const void* thrown = nullptr;
    const void* caught = nullptr;
    try {
        try {
            throw VeltraniException(L"fault");
        } catch (const VeltraniException& fault) {
            thrown = &fault;
            RunCatch::handleCurrentException(true);
        }
    } catch (const VeltraniException& fault) {
        caught = &fault;
    }
    ASSERT_NE(thrown, nullptr);
    EXPECT_EQ(caught, thrown);
    EXPECT_THAT(trap.messages(), ElementsAre("ERROR Caught exception: fault"));
}

}  // namespace

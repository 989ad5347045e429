#include "Common/VeltraniLogging.h"

#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Test.Logging");

TEST(MultiLineLog, LogsTheHeaderAndThenEveryLine) {
    LogTrap trap;
    VeltraniLogging::multiLineLog(LOGGER, L"header", L"first\nsecond");
    EXPECT_THAT(trap.messages(), ElementsAre("INFO header", "INFO first", "INFO second"));
}

TEST(MultiLineLog, NLineFeedsGiveNPlusOneRecordsAfterTheHeader) {
    LogTrap trap;
    VeltraniLogging::multiLineLog(LOGGER, L"header", L"\na\n\n");
    EXPECT_THAT(trap.messages(), ElementsAre("INFO header", "INFO ", "INFO a", "INFO ", "INFO "));
}

TEST(MultiLineLog, AnEmptyBodyIsOneEmptyRecord) {
    LogTrap trap;
    VeltraniLogging::multiLineLog(LOGGER, L"header", L"");
    EXPECT_THAT(trap.messages(), ElementsAre("INFO header", "INFO "));
}

TEST(MultiLineLog, RecordsCarryTheLocationOfTheHelper) {
    LogTrap trap;
    VeltraniLogging::multiLineLog(LOGGER, L"header", L"body");
    ASSERT_EQ(trap.records().size(), 2U);
    for (const LogTrap::Record& record : trap.records()) {
        EXPECT_THAT(record.file, EndsWith("VeltraniLogging.cpp"));
        EXPECT_GT(record.line, 0);
    }
}

TEST(MultiLineLog, SaysNothingWhenInfoIsOff) {
    LogTrap trap(log4cxx::Level::getWarn());
    VeltraniLogging::multiLineLog(LOGGER, L"header", L"body");
    EXPECT_THAT(trap.records(), IsEmpty());
}

TEST(LogStatement, CarriesTextAndLocation) {
    LogTrap trap;
    const int line = __LINE__ + 1;
    VELTRANI_LOG(LOGGER, Warn, L"B\u00fchne " + std::to_wstring(true));
    ASSERT_EQ(trap.records().size(), 1U);
    const LogTrap::Record& record = trap.records().front();
    EXPECT_EQ(record.level, "WARN");
    EXPECT_EQ(record.logger, "Test.Logging");
    EXPECT_EQ(record.message, "B\xc3\xbchne 1");
    EXPECT_THAT(record.file, HasSubstr("VeltraniLoggingTest.cpp"));
    EXPECT_EQ(record.line, line);
}

TEST(LogStatement, CarriesTheLocationThatItIsGiven) {
    LogTrap trap;
    const log4cxx::spi::LocationInfo place("a/Operation.cpp", "Operation.cpp", "void Operation::run(int)", 12);
    VELTRANI_LOG_AT(place, LOGGER, Error, L"text");
    ASSERT_EQ(trap.messages(), std::vector<std::string>{"ERROR text"});
    const LogTrap::Record& record = trap.records().front();
    EXPECT_EQ(record.file, "a/Operation.cpp");
    EXPECT_EQ(record.type, "Operation");
    EXPECT_EQ(record.function, "run");
    EXPECT_EQ(record.line, 12);
}

TEST(LogStatement, BuildsNoTextForALevelThatIsOff) {
    LogTrap trap(log4cxx::Level::getError());
    int built = 0;
    const auto text = [&built] {
        ++built;
        return std::wstring(L"text");
    };
    VELTRANI_LOG(LOGGER, Info, text());
    EXPECT_EQ(built, 0);
    VELTRANI_LOG(LOGGER, Fatal, text());
    EXPECT_EQ(built, 1);
    EXPECT_THAT(trap.messages(), ElementsAre("FATAL text"));
}

}  // namespace

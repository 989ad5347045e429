#pragma once

#include <log4cxx/appender.h>
#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include <memory>
#include <string>
#include <vector>

class LogTrapAppender;
class Trace;

/// Catches every log record of the process while it lives, so that a test can assert on them and prints nothing itself.
class LogTrap {
public:
    struct Record {
        std::string level;     ///< "INFO", "WARN", "ERROR", "FATAL", ...
        std::string logger;    ///< such as "Dravix.ScreenManager.Screen"
        std::string message;   ///< UTF-8
        std::string file;      ///< source path of the statement; "?" when the record has no location
        std::string type;      ///< class of the function, as far as log4cxx makes one out
        std::string function;  ///< without arguments; "?" when the record has no location
        int line = -1;         ///< -1 when the record has no location
    };

    /// Catches at this level and above, into `trace` too when one is given, as "LEVEL logger: message".
    explicit LogTrap(const log4cxx::LevelPtr& level = log4cxx::Level::getAll(), Trace* trace = nullptr);
    ~LogTrap();
    LogTrap(const LogTrap&) = delete;
    LogTrap& operator=(const LogTrap&) = delete;

    [[nodiscard]] const std::vector<Record>& records() const;
    /// Every record as "LEVEL message", in order.
    [[nodiscard]] std::vector<std::string> messages() const;
    void clear();

private:
    log4cxx::LevelPtr m_previousLevel;
    std::vector<log4cxx::AppenderPtr> m_previousAppenders;
    std::vector<Record> m_records;
    Trace* m_trace;
    std::shared_ptr<LogTrapAppender> m_appender;
};

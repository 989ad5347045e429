#pragma once

#include <log4cxx/level.h>
#include <log4cxx/logstring.h>

#include <string>

/// Puts the log records of the process on standard error, one line each: "warning: Loading screen geometry failed:
/// ...". Always UTF-8, whatever the locale is.
class ConsoleLog {
public:
    ConsoleLog() = delete;

    /// Shows records at this level and above.
    /// @param others whether another appender receives records too, all from info on
    static void install(const log4cxx::LevelPtr& threshold, bool others);
    /// Hides the records of one logger, unless they are fatal.
    static void showOnlyFatal(const std::string& logger);
    /// Text of a log record in UTF-8; "not enough memory" where it ends in the name of that exception.
    [[nodiscard]] static std::string utf8(const log4cxx::LogString& text);

    /// While it lives, shows errors alone, unless `enabled` is false.
    class ErrorsOnly {
    public:
        explicit ErrorsOnly(bool enabled);
        ~ErrorsOnly();
        ErrorsOnly(const ErrorsOnly&) = delete;
        ErrorsOnly& operator=(const ErrorsOnly&) = delete;

    private:
        log4cxx::LevelPtr m_before;
    };
};

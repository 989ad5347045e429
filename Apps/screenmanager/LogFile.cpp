#include "LogFile.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Console.h"
#include "ConsoleLog.h"
#include "ResultFile.h"

#include <fcntl.h>
#include <log4cxx/appenderskeleton.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

using Microseconds = std::chrono::microseconds;

/// How every log begins, and by which one is recognised.
constexpr std::string_view OPENING = "# screenmanager log";

/// As in 2026-11-20T09:12:44.310Z, whatever the locale and the time zone are.
std::string timeText(Microseconds sinceEpoch) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(sinceEpoch - seconds);
    const std::time_t time = seconds.count();
    std::tm utc{};
    std::array<char, 40> text{};
    if (::gmtime_r(&time, &utc) == nullptr || std::strftime(text.data(), text.size(), "%FT%T", &utc) == 0) {
        return "?";
    }
    const std::string fraction = std::to_string(1000 + milliseconds.count()).substr(1);
    return std::string(text.data()) + "." + fraction + "Z";
}

std::string now() {
    return timeText(std::chrono::duration_cast<Microseconds>(std::chrono::system_clock::now().time_since_epoch()));
}

/// Where in the sources a record comes from; a hyphen for one that does not state it.
std::string placeText(const log4cxx::spi::LocationInfo& place) {
    return place.getLineNumber() < 0 ? "-"
                                     : std::string(place.getFileName()) + ":" + std::to_string(place.getLineNumber());
}

std::string lineOf(const log4cxx::spi::LoggingEvent& event) {
    const auto column = [](const log4cxx::LogString& text) { return Veltrani::onOneLine(ConsoleLog::utf8(text)); };
    return timeText(Microseconds(event.getTimeStamp())) + '\t' + column(event.getLevel()->toString()) + '\t' +
           column(event.getLoggerName()) + '\t' + placeText(event.getLocationInformation()) + '\t' +
           column(event.getRenderedMessage());
}

bool isLog(int descriptor) {
    struct stat status {};
    std::array<char, OPENING.size()> start{};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           ::pread(descriptor, start.data(), start.size(), 0) == static_cast<ssize_t>(start.size()) &&
           std::equal(start.begin(), start.end(), OPENING.begin());
}

void report(const std::string& path, const std::string& what) {
    Console::error("--log " + path + ": " + what);
}

std::string reasonOf(int error) {
    return std::generic_category().message(error);
}

}  // namespace

// The registration macros of log4cxx name its types without their namespace.
using namespace log4cxx;

class LogFileAppender : public AppenderSkeleton {
public:
    DECLARE_LOG4CXX_OBJECT(LogFileAppender)
    BEGIN_LOG4CXX_CAST_MAP()
    LOG4CXX_CAST_ENTRY(LogFileAppender)
    LOG4CXX_CAST_ENTRY_CHAIN(AppenderSkeleton)
    END_LOG4CXX_CAST_MAP()

    explicit LogFileAppender(LogFile* file = nullptr) : m_file(file) {}

    void close() override {}
    bool requiresLayout() const override { return false; }

    /// Drops all further records.
    void forgetFile() { m_file = nullptr; }

protected:
    void append(const spi::LoggingEventPtr& event, helpers::Pool& /*pool*/) override {
        if (m_file != nullptr) {
            m_file->add(lineOf(*event));
        }
    }

private:
    LogFile* m_file;  ///< null once that has ended
};

IMPLEMENT_LOG4CXX_OBJECT(LogFileAppender)

LogFile::~LogFile() {
    detach();
}

int LogFile::open(const std::string& path, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& others) {
    if (path.empty()) {
        return EXIT_ALL_RIGHT;
    }
    for (const std::string& other : others) {
        if (ResultFile::isSamePlace(path, other)) {
            report(path, "the command itself reads or writes this file: name another one");
            return EXIT_USAGE;
        }
    }
    if (const std::string fault = openDescriptor(path); !fault.empty()) {
        report(path, fault);
        return EXIT_OUTPUT;
    }
    m_path = path;
    std::string run;
    for (const std::string& argument : arguments) {
        run += " " + Veltrani::toUtf8(Veltrani::fromUtf8OrBytes(argument));
    }
    add(std::string(OPENING) + '\t' + now() + "\tscreenmanager " SM_VERSION ":" + Veltrani::onOneLine(run));
    m_root = Logger::getRootLogger();
    m_appender = std::make_shared<LogFileAppender>(this);
    m_root->addAppender(m_appender);
    return EXIT_ALL_RIGHT;
}

/// Returns what is wrong with the file; empty when it was opened.
std::string LogFile::openDescriptor(const std::string& path) {
    constexpr mode_t NEW_FILE_MODE = 0666;
    // A new file first, which is never one that a link leads to.
    m_descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE_MODE);
    if (m_descriptor >= 0) {
        return {};
    }
    if (errno == EEXIST) {
        // Without waiting: a pipe would wait for its other end.
        m_descriptor = ::open(path.c_str(), O_RDWR | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    if (m_descriptor < 0) {
        return "cannot be written: " + reasonOf(errno) + ": name a file in a folder that takes new files";
    }
    if (isLog(m_descriptor)) {
        return {};
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    return "exists and is no log of screenmanager; it stays as it is: name a new file, or a log to continue";
}

void LogFile::add(const std::string& line) {
    const std::string whole = line + '\n';
    std::string_view rest = whole;
    while (!rest.empty() && isOpen() && m_fault == 0) {
        const ssize_t written = ::write(m_descriptor, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            m_fault = errno;
        }
    }
}

int LogFile::close(int exitCode) {
    if (!isOpen()) {
        return exitCode;
    }
    add("# end\t" + now() + "\texit code " + std::to_string(exitCode));
    const bool isClosed = ::close(std::exchange(m_descriptor, -1)) == 0;
    m_fault = isClosed || m_fault != 0 ? m_fault : errno;
    detach();
    if (m_fault == 0) {
        return exitCode;
    }
    report(m_path, "cannot be written any further: " + reasonOf(m_fault));
    return exitCode <= EXIT_INCOMPLETE ? EXIT_OUTPUT : exitCode;
}

/// Also while an exception ends the run because memory ran out.
void LogFile::detach() noexcept {
    if (m_appender) {
        m_appender->forgetFile();
        try {
            m_root->removeAppender(m_appender);
        } catch (...) {
            // It stays with the logger, and does nothing there.
        }
        m_appender.reset();
    }
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

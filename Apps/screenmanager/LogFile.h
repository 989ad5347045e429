#pragma once

#include <log4cxx/logger.h>

#include <memory>
#include <string>
#include <vector>

class LogFileAppender;

/// The file of `--log`, which receives every log record as one line, behind what earlier runs wrote there: five columns
/// in UTF-8 with tabs between them, which are time (UTC), level, logger, place in the sources and text. Lines that
/// begin with "#" note where a run begins and ends.
///
/// Nothing but a new file and a log of this program is ever written to, so that a misspelt name destroys no file.
class LogFile {
public:
    LogFile() = default;
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Opens the file, notes the run and receives all records of the process from now on.
    /// @param path UTF-8; empty for no log at all
    /// @param arguments of the run
    /// @param others files that the run reads and writes
    /// @return an `ExitCode`; a fault has been reported then, and no file was changed
    [[nodiscard]] int open(const std::string& path, const std::vector<std::string>& arguments,
                           const std::vector<std::string>& others);

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

    /// Adds a line. The first fault is kept for `close`, and nothing is written after it.
    void add(const std::string& line);

    /// Notes the end of the run and receives no further records.
    /// @return the exit code of the run; `EXIT_OUTPUT` in place of 0 and 1 when not every line could be written, which
    /// has been reported then
    [[nodiscard]] int close(int exitCode);

private:
    [[nodiscard]] std::string openDescriptor(const std::string& path);
    void detach() noexcept;

    std::string m_path;
    int m_descriptor = -1;
    int m_fault = 0;            ///< the system's number of the first error
    log4cxx::LoggerPtr m_root;  ///< kept, as finding it may take memory
    std::shared_ptr<LogFileAppender> m_appender;
};

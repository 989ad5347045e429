#include "ResultFile.h"

#include "Common/AtomicFile.h"
#include "Common/Utf8.h"
#include "Console.h"
#include "DisplayReport/basics/NamedFiles.h"
#include "FailureReport.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

/// True for what exists and cannot be replaced as a whole: a pipe, a device, and whatever an open descriptor leads to.
bool isSpecialFile(const std::string& path) {
    std::error_code unknown;
    return path.starts_with("/dev/") || path.starts_with("/proc/") ||
           std::filesystem::is_other(std::filesystem::status(path, unknown));
}

/// Where a file is or will be, by whatever links it is named.
std::filesystem::path placeOf(const std::string& file) {
    constexpr int MOST_LINKS = 40;  // as many as the system itself follows
    std::error_code unknown;
    std::filesystem::path place = std::filesystem::absolute(file, unknown);
    // A link to a file that is not there yet counts as well; one to itself leads nowhere.
    for (int links = 0; links < MOST_LINKS && std::filesystem::is_symlink(place, unknown); ++links) {
        place = place.parent_path() / std::filesystem::read_symlink(place, unknown);
    }
    return std::filesystem::weakly_canonical(place, unknown);
}

std::unique_ptr<std::streambuf> openThrough(const std::string& path) {
    auto buffer = std::make_unique<std::filebuf>();
    // Appending keeps what a redirected descriptor has been given before.
    return buffer->open(path, std::ios::out | std::ios::binary | std::ios::app) != nullptr ? std::move(buffer)
                                                                                           : nullptr;
}

/// True when what is written there appears on a terminal.
bool leadsToTerminal(const std::string& path) {
    std::error_code unknown;
    if (ResultFile::isStandardOutput(path)) {
        return ::isatty(STDOUT_FILENO) == 1;
    }
    if (!std::filesystem::is_character_file(path, unknown)) {
        return false;
    }
    const int device = ::open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0) {
        return false;
    }
    const bool isTerminal = ::isatty(device) == 1;
    ::close(device);
    return isTerminal;
}

}  // namespace

/// A file that is replaced as a whole, as the buffer of a stream. Keeps the first fault instead of throwing it through
/// the stream, where it could not be distinguished from those of the writer.
class ResultFile::WholeFile : public std::streambuf {
public:
    explicit WholeFile(const std::string& path) : m_file(path) {
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    }

    /// Throws the first fault there was.
    void commit() {
        sync();
        if (m_fault) {
            std::rethrow_exception(m_fault);
        }
        m_file.commit();
    }

protected:
    int_type overflow(int_type next) override {
        if (sync() != 0) {
            return traits_type::eof();
        }
        if (!traits_type::eq_int_type(next, traits_type::eof())) {
            sputc(traits_type::to_char_type(next));
        }
        return traits_type::not_eof(next);
    }

    int sync() override {
        try {
            if (!m_fault) {
                m_file.write({pbase(), static_cast<std::size_t>(pptr() - pbase())});
            }
        } catch (...) {
            m_fault = std::current_exception();
        }
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
        return m_fault ? -1 : 0;
    }

private:
    static constexpr std::size_t BYTES_AT_ONCE = 65536;

    Veltrani::AtomicFile m_file;
    std::array<char, BYTES_AT_ONCE> m_bytes{};
    std::exception_ptr m_fault;
};

ResultFile::ResultFile(std::string path) : m_path(path == "-" ? std::string() : std::move(path)) {}

ResultFile::~ResultFile() = default;

bool ResultFile::open() {
    try {
        std::streambuf* buffer = std::cout.rdbuf();
        if (isSpecialFile(m_path)) {
            m_special = openThrough(m_path);
            buffer = m_special.get();
        } else if (!m_path.empty()) {
            m_whole = std::make_unique<WholeFile>(m_path);
            buffer = m_whole.get();
        }
        if (buffer == nullptr) {
            Console::error(m_path + " cannot be written");
            return false;
        }
        m_stream = std::make_unique<std::ostream>(buffer);
        return true;
    } catch (...) {
        reportFailure(m_path, std::current_exception());
        return false;
    }
}

std::ostream& ResultFile::stream() {
    return *m_stream;
}

bool ResultFile::commit() {
    try {
        const bool isTaken = static_cast<bool>(m_stream->flush());
        if (m_whole) {
            m_whole->commit();
            return true;
        }
        if (!isTaken) {
            Console::error((m_path.empty() ? "standard output" : m_path) + " cannot be written");
        }
        return isTaken;
    } catch (...) {
        reportFailure(m_path, std::current_exception());
        return false;
    }
}

bool ResultFile::write(const std::string& path, const std::function<void(std::ostream&)>& writer) {
    ResultFile result(path);
    if (!result.open()) {
        return false;
    }
    try {
        writer(result.stream());
    } catch (...) {
        reportFailure(path, std::current_exception());
        return false;
    }
    return result.commit();
}

bool ResultFile::isStandardOutput(const std::string& path) {
    constexpr std::array<std::string_view, 5> NAMES{"", "-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"};
    return std::find(NAMES.begin(), NAMES.end(), path) != NAMES.end();
}

bool ResultFile::wouldFloodTerminal(const std::string& path, const std::string& format, const std::string& option) {
    if (!leadsToTerminal(path)) {
        return false;
    }
    Console::error("a terminal cannot show " + format + ": name a file with " + option +
                   ", or pass the output to another program");
    return true;
}

bool ResultFile::isSameFile(const std::string& a, const std::string& b) {
    std::error_code unknown;
    return std::filesystem::equivalent(a, b, unknown);
}

bool ResultFile::isSamePlace(const std::string& a, const std::string& b) {
    return isSameFile(a, b) || placeOf(a) == placeOf(b);
}

bool ResultFile::replacesInput(const std::string& path, const XMLConfigManager& config,
                               const std::string& configurationFile) {
    if (path.empty()) {
        return false;
    }
    std::string what = isSameFile(path, configurationFile) ? "the configuration itself" : "";
    for (const std::wstring& file : Veltrani::DisplayReport::filesOf(config)) {
        if (isSameFile(path, Veltrani::toUtf8(file))) {
            what = "a file that the configuration names";
        }
    }
    if (!what.empty()) {
        Console::error(path + " is " + what + ": name another file with --output");
    }
    return !what.empty();
}

#include "DeviceFramework2/PasswordSource.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/MacAddress.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <system_error>

namespace Veltrani::DeviceFramework2 {

namespace {

/// Largest password file in bytes: room for a thousand projectors.
constexpr std::size_t LARGEST_FILE = 65536;
constexpr mode_t RIGHTS_OF_OTHERS = S_IRWXG | S_IRWXO;

[[noreturn]] void fail(const std::string& path, const std::wstring& reason) {
    throw DeviceException(__FILE__, __LINE__, L"password file " + fromUtf8OrBytes(path) + L": " + reason,
                          DeviceException::Cause::THIS_MACHINE);
}

class PasswordFile {
public:
    /// @param variable the environment variable that names the file, for messages
    PasswordFile(const std::string& path, const std::string& variable)
        : m_path(path),
          m_variable(L"the environment variable " + fromUtf8OrBytes(variable)),
          m_descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
        if (m_descriptor < 0) {
            failUnreadable();
        }
    }
    ~PasswordFile() { ::close(m_descriptor); }
    PasswordFile(const PasswordFile&) = delete;
    PasswordFile& operator=(const PasswordFile&) = delete;

    /// Examines what was opened, not the name, which may lead elsewhere by then.
    void requirePrivate() const {
        struct stat status {};
        if (::fstat(m_descriptor, &status) != 0) {
            failUnreadable();
        }
        if (!S_ISREG(status.st_mode)) {
            fail(m_path, L"it is not a regular file; name one in " + m_variable);
        }
        if ((status.st_uid != ::geteuid() && status.st_uid != 0) || (status.st_mode & RIGHTS_OF_OTHERS) != 0) {
            fail(m_path, L"others have rights to it: make it your own and give it the mode 600");
        }
    }

    /// Returns the text of the file; a UTF-8 byte-order mark, which editors put there unseen, is no part of it.
    [[nodiscard]] std::string text() const {
        std::string content = bytes();
        if (content.starts_with("\xff\xfe") || content.starts_with("\xfe\xff")) {
            fail(m_path, L"it is UTF-16 text; save it as UTF-8");
        }
        if (content.starts_with("\xef\xbb\xbf")) {
            content.erase(0, 3);
        }
        return content;
    }

private:
    [[nodiscard]] std::string bytes() const {
        std::string content(LARGEST_FILE + 1, '\0');
        std::size_t filled = 0;
        while (filled < content.size()) {
            const ssize_t count = ::read(m_descriptor, content.data() + filled, content.size() - filled);
            if (count == 0) {
                break;
            }
            if (count > 0) {
                filled += static_cast<std::size_t>(count);
            } else if (errno != EINTR) {
                failUnreadable();
            }
        }
        if (filled > LARGEST_FILE) {
            fail(m_path, L"it is larger than " + std::to_wstring(LARGEST_FILE) +
                             L" bytes; name a file with one line per projector in " + m_variable);
        }
        content.resize(filled);
        return content;
    }

    [[noreturn]] void failUnreadable() const {
        fail(m_path, fromUtf8OrBytes(std::generic_category().message(errno)) +
                         L"; put a file there that you can read, or correct " + m_variable);
    }

    std::string m_path;
    std::wstring m_variable;
    int m_descriptor;
};

constexpr const char* BLANKS = " \t\r";
constexpr const char* EVERY_OTHER = "*";

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(BLANKS);
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(BLANKS) + 1 - begin);
}

/// One line of the file: whose password, a UID or EVERY_OTHER, and the password.
struct PasswordLine {
    std::string name;
    std::string password;

    /// Returns nothing when the line cannot be read.
    static std::optional<PasswordLine> parse(const std::string& line) {
        const std::size_t nameEnd = std::min(line.find_first_of(BLANKS), line.size());
        const std::string name = line.substr(0, nameEnd);
        const std::string password = trimmed(line.substr(nameEnd));
        const auto mac = MacAddress::parse(fromUtf8(name));
        if (password.empty() || (!mac && name != EVERY_OTHER)) {
            return std::nullopt;
        }
        return PasswordLine{mac ? toUtf8(mac->uid()) : name, password};
    }
};

std::optional<std::string> findInFile(const std::string& path, const std::string& variable, const std::string& uid) {
    const PasswordFile file(path, variable);
    file.requirePrivate();
    std::istringstream lines(file.text());
    std::optional<std::string> forAll;
    int number = 0;
    for (std::string text; std::getline(lines, text);) {
        ++number;
        const std::string line = trimmed(text);
        if (line.empty() || line.starts_with('#')) {
            continue;
        }
        const auto known = PasswordLine::parse(line);
        if (!known) {
            // The line is named by its number only: whatever it holds may be a password.
            fail(path, L"line " + std::to_wstring(number) +
                           L" cannot be read: a MAC address or *, blanks and the password are expected; correct it");
        }
        if (known->name == uid) {
            return known->password;
        }
        if (known->name == EVERY_OTHER) {
            forAll = known->password;
        }
    }
    return forAll;
}

std::optional<std::string> environment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr || *value == '\0' ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace

std::optional<std::string> PasswordSource::find(const std::wstring& uid) const {
    const std::string name = toUtf8(uid);
    if (const auto path = environment(fileVariable)) {
        if (auto password = findInFile(*path, fileVariable, name)) {
            return password;
        }
    }
    if (auto own = environment(variable + "_" + name)) {
        return own;
    }
    return environment(variable);
}

std::wstring PasswordSource::remedy() const {
    return L"set the environment variable " + fromUtf8(variable) + L", or name a password file in " +
           fromUtf8(fileVariable);
}

}  // namespace Veltrani::DeviceFramework2

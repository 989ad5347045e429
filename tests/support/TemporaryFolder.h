#pragma once

#include <string>
#include <string_view>

/// A fresh folder below the system's folder for temporary files, removed with everything in it at the end of the scope.
///
/// All names are UTF-8 and are opened byte for byte, whatever the locale is. Every operation that fails throws
/// `std::runtime_error` naming the path: a test that cannot prepare its files must not go on.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute, without a slash at the end.
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// The path of an entry, which need not exist; `name` may hold slashes.
    [[nodiscard]] std::string file(const std::string& name) const { return m_path + "/" + name; }

    /// Writes a file, byte for byte, with the folders that lead to it; returns its path.
    std::string write(const std::string& name, std::string_view content) const;
    /// Makes a folder and those that lead to it; returns its path.
    std::string makeFolder(const std::string& name) const;
    /// The bytes of a file.
    [[nodiscard]] std::string read(const std::string& name) const;

private:
    std::string m_path;
};

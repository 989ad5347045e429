#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

class XMLConfigManager;

/// Where a command writes its result: standard output, a file that is replaced as a whole or not at all, or what
/// cannot be replaced, such as a pipe, which is written through.
///
///     if (!ResultFile::write(options.output, [&](std::ostream& out) { out << ...; })) { return EXIT_OUTPUT; }
class ResultFile {
public:
    /// @param path UTF-8; empty or "-" for standard output
    explicit ResultFile(std::string path);
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    /// False when nothing can be written there, which has been reported then.
    [[nodiscard]] bool open();

    /// Between `open` and `commit`. Goes bad when the place takes no more.
    [[nodiscard]] std::ostream& stream();

    /// Puts a file in its place; without it the old one stays. False when not everything could be written, which has
    /// been reported then.
    [[nodiscard]] bool commit();

    /// Writes a whole result. False when that failed, which has been reported then.
    [[nodiscard]] static bool write(const std::string& path, const std::function<void(std::ostream&)>& writer);

    /// True when writing there would replace a file that the display is described by; reported then.
    [[nodiscard]] static bool replacesInput(const std::string& path, const XMLConfigManager& config,
                                            const std::string& configurationFile);
    /// True when the output would show on a terminal what people cannot read there, and what may steer it; reported
    /// then. To be called before anything is computed.
    /// @param format as the message names it: "PNG"
    /// @param option that names the output
    [[nodiscard]] static bool wouldFloodTerminal(const std::string& path, const std::string& format,
                                                 const std::string& option = "--output");
    /// True for what stands for standard output: no name, "-" and the names of its device.
    [[nodiscard]] static bool isStandardOutput(const std::string& path);
    /// True when both names lead to one file, which exists.
    [[nodiscard]] static bool isSameFile(const std::string& a, const std::string& b);
    /// The same for files that need not exist yet.
    [[nodiscard]] static bool isSamePlace(const std::string& a, const std::string& b);

private:
    class WholeFile;

    std::string m_path;
    std::unique_ptr<std::streambuf> m_special;  ///< of what is written through
    std::unique_ptr<WholeFile> m_whole;
    std::unique_ptr<std::ostream> m_stream;
};

#include "DisplayReport/basics/ReportHead.h"

#include "Common/OpensslFault.h"
#include "Common/QuotedText.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/NamedFiles.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <string_view>

namespace Veltrani::DisplayReport {

namespace {

// What the lines of a comment begin with, and what separates the parts of one.
constexpr std::string_view REPORT = "# screenmanager/";
constexpr std::string_view VERSION = " version ";
constexpr std::string_view PLACES = "# x, y, z: ";
constexpr std::string_view UNIT = "; unit ";
constexpr std::string_view UNKNOWN_UNIT = "not known";

constexpr const char* PICTURE = "place in the picture of the channel, (0, 0) bottom left, (1, 1) top right";

[[noreturn]] void failDigest() {
    throwIfOpensslLacksMemory();
    throw VeltraniException(L"The report needs SHA-256, which is not available: check the OpenSSL configuration");
}

/// The digest of a file that is read piece by piece, since scans are large.
class Digest {
public:
    Digest() : m_context(EVP_MD_CTX_new(), EVP_MD_CTX_free), m_kind(fetchDigest("SHA256"), EVP_MD_free) {
        if (!m_context || !m_kind || EVP_DigestInit_ex2(m_context.get(), m_kind.get(), nullptr) != 1) {
            failDigest();
        }
    }

    void add(std::string_view bytes) {
        if (EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()) != 1) {
            failDigest();
        }
    }

    [[nodiscard]] std::string text() {
        std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
        unsigned int size = 0;
        if (EVP_DigestFinal_ex(m_context.get(), bytes.data(), &size) != 1) {
            failDigest();
        }
        constexpr std::string_view DIGITS = "0123456789abcdef";
        std::string text;
        for (unsigned int i = 0; i < size; ++i) {
            text += DIGITS[bytes[i] >> 4U];
            text += DIGITS[bytes[i] & 0xFU];
        }
        return text;
    }

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> m_context;
    std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> m_kind;
};

std::string jsonOfFile(const SourceFile& file) {
    return JsonObject().add("name", file.name).addKnown("sha256", !file.sha256.empty(), file.sha256).text();
}

}  // namespace

std::string ReportHead::comment() const {
    if (report.empty()) {
        return "";
    }
    std::string text;
    text.append(REPORT).append(report).append(VERSION).append(std::to_string(version)).append("\n");
    text.append(PLACES).append(frame).append(UNIT);
    text.append(unit.empty() ? std::string(UNKNOWN_UNIT) : onOneLine(unit));
    return text + "\n# u, v: " + PICTURE + "\n";
}

void ReportHead::read(std::string_view line) {
    const bool isReport = line.starts_with(REPORT);
    if (!isReport && !line.starts_with(PLACES)) {
        return;
    }
    const std::string_view rest = line.substr((isReport ? REPORT : PLACES).size());
    // A unit has no separator in its name, a frame of somebody else may.
    const std::size_t end = rest.rfind(isReport ? VERSION : UNIT);
    if (end == std::string_view::npos) {
        return;
    }
    const std::string_view last = rest.substr(end + (isReport ? VERSION : UNIT).size());
    if (isReport) {
        report = rest.substr(0, end);
        std::from_chars(last.data(), last.data() + last.size(), version);
    } else {
        frame = rest.substr(0, end);
        unit = last == UNKNOWN_UNIT ? "" : last;
    }
}

std::string ReportHead::members() const {
    if (report.empty()) {
        return "";
    }
    const bool hasPlaces = !frame.empty();
    return JsonObject()
        .add("schema", "screenmanager/" + report)
        .add("version", version)
        .addJson("units", JsonObject().addKnown("length", !unit.empty(), unit).text())
        .addKnown("frame", hasPlaces, frame)
        .addKnown("picture", hasPlaces, PICTURE)
        .addJson("files", jsonList(files, jsonOfFile))
        .members();
}

SourceFile ReportHead::source(const std::string& utf8Path) {
    try {
        const RegularFile file(utf8Path);
        Digest digest;
        std::vector<char> piece(std::size_t{1} << 16U);
        std::size_t offset = 0;
        for (std::size_t count = 0; (count = file.readAt(offset, piece.data(), piece.size())) > 0; offset += count) {
            digest.add({piece.data(), count});
        }
        return {utf8Path, digest.text()};
    } catch (const VeltraniMissingFileException&) {
        return {utf8Path, {}};
    }
}

std::vector<SourceFile> ReportHead::sourcesOf(const std::string& configurationFile) {
    std::vector<SourceFile> sources{source(configurationFile)};
    try {
        for (const std::wstring& file : filesOf(*XMLConfigFile::load(configurationFile))) {
            const std::string name = toUtf8(file);
            const bool isNew = std::none_of(sources.begin(), sources.end(),
                                            [&name](const SourceFile& known) { return known.name == name; });
            if (isNew) {
                sources.push_back(source(name));
            }
        }
    } catch (const VeltraniException&) {
        return sources;
    }
    return sources;
}

}  // namespace Veltrani::DisplayReport

#include "FitSession/LensFile.h"

#include "Common/AtomicFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/NumberText.h"
#include "KelvoControl/LensNumbers.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace Veltrani::FitSession {

namespace {

using DisplayReport::exactText;

constexpr int MOST_NAMES = 10'000;

std::string matrixText(const char* name, std::size_t rows, const std::vector<double>& numbers) {
    std::string data;
    for (const double number : numbers) {
        data += (data.empty() ? "" : ", ") + exactText(number);
    }
    return std::string(name) + ": !!opencv-matrix\n   rows: " + std::to_string(rows) +
           "\n   cols: " + std::to_string(numbers.size() / rows) + "\n   dt: d\n   data: [ " + data + " ]\n";
}

/// Makes an empty file under the first name that is free, which nobody else takes from then on.
std::string reserve(const std::string& stem) {
    for (int number = 1; number <= MOST_NAMES; ++number) {
        std::string path = stem + (number == 1 ? "" : "-" + std::to_string(number)) + ".yml";
        if (std::FILE* const file = std::fopen(path.c_str(), "wxe")) {
            std::fclose(file);
            return path;
        }
        if (errno != EEXIST) {
            throw VeltraniException(
                __FILE__, __LINE__,
                fromUtf8OrBytes(path + ": the lens file cannot be written: " + std::strerror(errno)));
        }
    }
    throw VeltraniException(
        __FILE__, __LINE__,
        fromUtf8OrBytes(stem + ".yml: this name and those with numbers behind it are taken: remove old lens files"));
}

}  // namespace

std::string LensFile::textOf(const LensNumbers& lens) {
    return "%YAML:1.0\n---\nimage_width: " + std::to_string(lens.imageWidth) +
           "\nimage_height: " + std::to_string(lens.imageHeight) + "\n" +
           matrixText("camera_matrix", 3, {lens.fx, 0, lens.cx, 0, lens.fy, lens.cy, 0, 0, 1}) +
           matrixText("distortion_coefficients", 1, lens.distortion);
}

LensFile::LensFile(const std::string& utf8Stem, const LensNumbers& lens) : m_path(reserve(utf8Stem)) {
    try {
        AtomicFile file(m_path);
        file.write(textOf(lens));
        file.commit();
    } catch (...) {
        std::remove(m_path.c_str());
        throw;
    }
}

LensFile::LensFile(LensFile&& other) noexcept
    : m_path(std::exchange(other.m_path, {})), m_isKept(std::exchange(other.m_isKept, true)) {}

LensFile::~LensFile() {
    if (!m_isKept && !m_path.empty()) {
        std::remove(m_path.c_str());
    }
}

std::string LensFile::name() const {
    return m_path.substr(m_path.rfind('/') + 1);
}

}  // namespace Veltrani::FitSession

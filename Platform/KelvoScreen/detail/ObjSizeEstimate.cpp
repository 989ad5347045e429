#include "KelvoScreen/detail/ObjSizeEstimate.h"

#include <algorithm>

namespace KelvoScreenDetail {

namespace {

/// Many small samples meet the boundaries between vertices and faces of a usual file to within half a percent.
constexpr std::size_t SAMPLES = 256;
constexpr std::size_t SAMPLE_BYTES = 1024;

/// Room beyond the estimate, in percent: growing once costs a copy, unused room costs nothing until it is touched.
constexpr std::size_t MARGIN_PERCENT = 4;

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// The triangles that a face line is cut into: two fewer than it has corners.
std::size_t trianglesOf(std::string_view line) {
    std::size_t words = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        words += !isBlank(line[i]) && line[i] != '\r' && isBlank(line[i - 1]) ? 1 : 0;
    }
    return words > 2 ? words - 2 : 0;
}

void countLine(std::string_view line, ObjSizeEstimate& counts) {
    if (line.size() < 2) {
        return;
    }
    if (line[0] == 'v' && isBlank(line[1])) {
        ++counts.vertices;
    } else if (line[0] == 'v' && line[1] == 't') {
        ++counts.textureCoordinates;
    } else if (line[0] == 'f' && isBlank(line[1])) {
        counts.triangles += trianglesOf(line);
    }
}

/// Counts the lines that start in the sample, to their end; returns how far it looked.
std::size_t countLines(std::string_view sample, ObjSizeEstimate& counts) {
    std::size_t begin = 0;
    while (begin < sample.size()) {
        const std::size_t end = sample.find('\n', begin);
        countLine(sample.substr(begin, end - begin), counts);
        if (end == std::string_view::npos) {
            return sample.size();
        }
        begin = end + 1;
    }
    return begin;
}

std::size_t scaled(std::size_t count, std::size_t sampledBytes, std::size_t allBytes) {
    if (sampledBytes == 0) {
        return 0;
    }
    const double whole =
        static_cast<double>(count) * (static_cast<double>(allBytes) / static_cast<double>(sampledBytes));
    return static_cast<std::size_t>(whole) / 100 * (100 + MARGIN_PERCENT);
}

}  // namespace

ObjSizeEstimate ObjSizeEstimate::of(std::string_view text) {
    ObjSizeEstimate counts;
    if (text.size() <= SAMPLES * SAMPLE_BYTES) {
        countLines(text, counts);
        return counts;
    }
    std::size_t sampledBytes = 0;
    const std::size_t stride = text.size() / SAMPLES;
    for (std::size_t i = 0; i < SAMPLES; ++i) {
        std::string_view sample = text.substr(i * stride, SAMPLE_BYTES);
        sample.remove_prefix(std::min(sample.find('\n') + 1, sample.size()));
        sample.remove_suffix(sample.size() - std::min(sample.rfind('\n') + 1, sample.size()));
        sampledBytes += countLines(sample, counts);
    }
    counts.vertices = scaled(counts.vertices, sampledBytes, text.size());
    counts.textureCoordinates = scaled(counts.textureCoordinates, sampledBytes, text.size());
    counts.triangles = scaled(counts.triangles, sampledBytes, text.size());
    return counts;
}

}  // namespace KelvoScreenDetail

#include "PcdSamples.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <stdexcept>

namespace pcd {

namespace {

std::string text(float value) {
    std::array<char, 32> buffer{};
    const auto [end, fault] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), end};
}

}  // namespace

std::string header(std::size_t points, std::string_view data) {
    const std::string number = std::to_string(points);
    return "# .PCD v0.7 - Point Cloud Data file format\n"
           "VERSION 0.7\n"
           "FIELDS x y z\n"
           "SIZE 4 4 4\n"
           "TYPE F F F\n"
           "COUNT 1 1 1\n"
           "WIDTH " +
           number +
           "\n"
           "HEIGHT 1\n"
           "VIEWPOINT 0 0 0 1 0 0 0\n"
           "POINTS " +
           number + "\nDATA " + std::string(data) + "\n";
}

std::string ascii(const std::vector<Position>& points) {
    std::string file = header(points.size(), "ascii");
    for (const Position& point : points) {
        file += text(point[0]) + " " + text(point[1]) + " " + text(point[2]) + "\n";
    }
    return file;
}

std::string binary(const std::vector<Position>& points) {
    std::string file = header(points.size(), "binary");
    for (const Position& point : points) {
        file += bytes(point);
    }
    return file;
}

std::string compressed(const std::vector<Position>& points) {
    std::string columns;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (const Position& point : points) {
            columns += bytes(point[axis]);
        }
    }
    const std::string runs = copiedRuns(columns);
    return header(points.size(), "binary_compressed") + bytes(static_cast<std::uint32_t>(runs.size())) +
           bytes(static_cast<std::uint32_t>(columns.size())) + runs;
}

std::string file(const std::vector<Column>& columns, std::string_view data) {
    std::string names = "FIELDS";
    std::string sizes = "SIZE";
    std::string types = "TYPE";
    std::string compressible;
    for (const Column& column : columns) {
        names += ' ' + column.name;
        sizes += ' ' + std::to_string(column.size);
        types += std::string(" ") + column.type;
        compressible += column.bytes;
    }
    const std::size_t points = columns.front().words.size();
    const std::string number = std::to_string(points);
    std::string text = names + '\n' + sizes + '\n' + types + "\nWIDTH " + number + "\nHEIGHT 1\nPOINTS " + number +
                       "\nDATA " + std::string(data) + '\n';
    if (data == "binary_compressed") {
        const std::string runs = copiedRuns(compressible);
        return text + bytes(static_cast<std::uint32_t>(runs.size())) +
               bytes(static_cast<std::uint32_t>(compressible.size())) + runs;
    }
    for (std::size_t i = 0; i < points; ++i) {
        for (const Column& column : columns) {
            text += data == "ascii" ? column.words[i] + ' ' : column.bytes.substr(i * column.size, column.size);
        }
        text += data == "ascii" ? "\n" : "";
    }
    return text;
}

std::string copiedRuns(std::string_view data) {
    constexpr std::size_t LONGEST_RUN = 32;
    std::string runs;
    while (!data.empty()) {
        const std::size_t length = std::min(data.size(), LONGEST_RUN);
        runs += static_cast<char>(length - 1);
        runs += data.substr(0, length);
        data.remove_prefix(length);
    }
    return runs;
}

std::string replaced(std::string file, std::string_view from, std::string_view to) {
    const std::size_t place = file.find(from);
    if (place == std::string::npos || file.find(from, place + 1) != std::string::npos) {
        throw std::invalid_argument("the text to replace must occur once: " + std::string(from));
    }
    return file.replace(place, from.size(), to);
}

}  // namespace pcd

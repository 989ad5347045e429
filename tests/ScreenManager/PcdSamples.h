#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// PCD files made by hand, byte by byte.
namespace pcd {

using Position = std::array<float, 3>;

/// The header of a cloud of x, y and z.
std::string header(std::size_t points, std::string_view data);

std::string ascii(const std::vector<Position>& points);
std::string binary(const std::vector<Position>& points);
/// Compressed in name only: the data are copied in runs of up to 32 bytes, which the format allows.
std::string compressed(const std::vector<Position>& points);

/// The bytes of numbers as they stand in a binary file.
template <class T>
std::string bytes(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(T)};
}

/// A field of one element, and its value in every point.
struct Column {
    std::string name;
    char type;
    std::size_t size;
    std::vector<std::string> words;  ///< as a text has them
    std::string bytes;               ///< one behind the other, as the other kinds have them
};

/// A column of these numbers, in the words that lead back to exactly them.
template <class T>
Column column(std::string name, char type, const std::vector<T>& values) {
    Column made{std::move(name), type, sizeof(T), {}, {}};
    for (const T& value : values) {
        std::array<char, 64> buffer{};
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
        made.words.emplace_back(buffer.data(), end);
        made.bytes += bytes(value);
    }
    return made;
}

/// A file of such fields.
/// @param data the word behind DATA
std::string file(const std::vector<Column>& columns, std::string_view data);

/// Runs of copied bytes, as the compressed kind of file holds them.
std::string copiedRuns(std::string_view data);

/// A valid file with its only occurrence of `from` replaced.
std::string replaced(std::string file, std::string_view from, std::string_view to);

}  // namespace pcd

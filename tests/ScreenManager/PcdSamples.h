#pragma once

#include <array>
#include <string>
#include <string_view>
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

/// Runs of copied bytes, as the compressed kind of file holds them.
std::string copiedRuns(std::string_view data);

/// A valid file with its only occurrence of `from` replaced.
std::string replaced(std::string file, std::string_view from, std::string_view to);

}  // namespace pcd

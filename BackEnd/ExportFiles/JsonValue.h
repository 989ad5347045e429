#pragma once

#include "Common/Point.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <utility>
#include <vector>

namespace Veltrani::ExportFiles {

/// A value of a JSON file of outside, with its place in it: "manifest.json: views[2].channel.pixels[0]". It has to be
/// what it is read as: everything else throws `VeltraniParseException` in one line, with place, found and expected
/// value.
class JsonValue {
public:
    /// @param json must outlive this
    JsonValue(const nlohmann::json& json, std::string place) : m_json(&json), m_place(std::move(place)) {}

    /// A member of an object, which must have it.
    [[nodiscard]] JsonValue at(const char* member) const;
    [[nodiscard]] bool has(const char* member) const;
    [[nodiscard]] bool isNull() const;
    [[nodiscard]] bool isText() const;
    /// The items of a list.
    [[nodiscard]] std::vector<JsonValue> items() const;

    [[nodiscard]] std::string text() const;
    [[nodiscard]] bool truth() const;
    /// Finite, with both bounds included.
    [[nodiscard]] double number(double least, double most) const;
    [[nodiscard]] int whole(int least, int most) const;
    /// Three finite numbers.
    [[nodiscard]] Point<double, 3> point() const;
    /// Two whole numbers above zero.
    [[nodiscard]] Point<int, 2> pixels() const;

    [[noreturn]] void refuse(const std::string& expected) const;

private:
    const nlohmann::json* m_json;
    std::string m_place;
};

}  // namespace Veltrani::ExportFiles

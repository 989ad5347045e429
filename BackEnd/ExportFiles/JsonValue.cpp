#include "ExportFiles/JsonValue.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace Veltrani::ExportFiles {

namespace {

using Json = nlohmann::json;

/// Of a side of a picture.
constexpr int MOST_PIXELS = 1'000'000;

/// As it stands in the file, cut where it is long.
std::string foundText(const Json& json) {
    if (json.is_object()) {
        return "an object";
    }
    if (json.is_array()) {
        return "a list of " + std::to_string(json.size());
    }
    constexpr std::size_t LONGEST = 60;
    const std::string text = onOneLine(json.dump(-1, ' ', true, Json::error_handler_t::replace));
    return text.size() <= LONGEST ? text : text.substr(0, LONGEST) + "...";
}

}  // namespace

void JsonValue::refuse(const std::string& expected) const {
    throw VeltraniParseException(fromUtf8OrBytes(m_place + ": found " + foundText(*m_json) + ", expected " + expected +
                                                 ": export the display again"));
}

JsonValue JsonValue::at(const char* member) const {
    if (!has(member)) {
        refuse("an object with the member " + std::string(member));
    }
    return {(*m_json)[member], m_place + (m_place.ends_with(": ") ? "" : ".") + member};
}

bool JsonValue::has(const char* member) const {
    return m_json->is_object() && m_json->contains(member);
}

bool JsonValue::isNull() const {
    return m_json->is_null();
}

bool JsonValue::isText() const {
    return m_json->is_string();
}

std::vector<JsonValue> JsonValue::items() const {
    if (!m_json->is_array()) {
        refuse("a list");
    }
    std::vector<JsonValue> values;
    values.reserve(m_json->size());
    for (std::size_t i = 0; i < m_json->size(); ++i) {
        values.emplace_back((*m_json)[i], m_place + '[' + std::to_string(i) + ']');
    }
    return values;
}

std::string JsonValue::text() const {
    if (!m_json->is_string()) {
        refuse("a text");
    }
    return m_json->get<std::string>();
}

bool JsonValue::truth() const {
    if (!m_json->is_boolean()) {
        refuse("true or false");
    }
    return m_json->get<bool>();
}

double JsonValue::number(double least, double most) const {
    const double value = m_json->is_number() ? m_json->get<double>() : std::numeric_limits<double>::quiet_NaN();
    if (!std::isfinite(value) || value < least || value > most) {
        const bool isBounded = most < std::numeric_limits<double>::max();
        refuse(isBounded ? "a number from " + Json(least).dump() + " to " + Json(most).dump() : "a finite number");
    }
    return value;
}

int JsonValue::whole(int least, int most) const {
    const std::string expected = "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
    if (!m_json->is_number_integer()) {
        refuse(expected);
    }
    // A number without a sign that does not fit becomes a negative one.
    const double value = m_json->get<double>();
    if (!(value >= least && value <= most)) {
        refuse(expected);
    }
    return static_cast<int>(value);
}

Point<double, 3> JsonValue::point() const {
    constexpr double ANY = std::numeric_limits<double>::max();
    const std::vector<JsonValue> parts = items();
    if (parts.size() != 3) {
        refuse("a list of three numbers");
    }
    return {parts[0].number(-ANY, ANY), parts[1].number(-ANY, ANY), parts[2].number(-ANY, ANY)};
}

Point<int, 2> JsonValue::pixels() const {
    const std::vector<JsonValue> parts = items();
    if (parts.size() != 2) {
        refuse("a list of two whole numbers");
    }
    return {parts[0].whole(1, MOST_PIXELS), parts[1].whole(1, MOST_PIXELS)};
}

}  // namespace Veltrani::ExportFiles

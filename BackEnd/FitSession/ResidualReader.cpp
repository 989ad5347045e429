#include "FitSession/ResidualReader.h"

#include "Common/QuotedText.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/XMLConfigManager.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace Veltrani::FitSession {

namespace {

using DisplayReport::DisplayResiduals;
using DisplayReport::SceneResidual;
using Json = nlohmann::json;

constexpr const char* SCHEMA = "screenmanager/fit";
constexpr std::size_t VERSION = 1;
/// Coordinates beyond this are none of a display, and cannot be squared.
constexpr double LARGEST = 1e100;
/// A place in a picture, from its middle: a program may know the light beside the picture, as far as the picture is
/// wide.
constexpr double FURTHEST = 1.5;
constexpr const char* REMEDY = "name the report that fit --format json wrote, unchanged, or run fit again";

/// A value as a message has it.
std::string shown(const Json& value) {
    constexpr std::size_t SHORT = 8;
    const auto isLong = [](const Json& item) { return item.is_structured() || item.is_string(); };
    if (value.is_string()) {
        return inQuotes(value.get_ref<const std::string&>());
    }
    if (value.is_object()) {
        return "an object";
    }
    if (value.is_array() && (value.size() > SHORT || std::any_of(value.begin(), value.end(), isLong))) {
        return "a list of " + std::to_string(value.size());
    }
    return value.dump();
}

/// A value of the report with its place in it: "channels[2].residuals[5].point".
class Element {
public:
    Element(const Json& value, const std::string& document, std::string path)
        : m_value(value), m_document(document), m_path(std::move(path)) {}

    [[nodiscard]] Element member(const char* name) const {
        if (!m_value.is_object()) {
            refuse("an object in braces");
        }
        const auto found = m_value.find(name);
        if (found == m_value.end()) {
            throw VeltraniParseException(fromUtf8(head() + "found no \"" + name + "\"; expected one; " + REMEDY));
        }
        return {*found, m_document, m_path.empty() ? name : m_path + "." + name};
    }

    [[nodiscard]] std::size_t size() const {
        if (!m_value.is_array()) {
            refuse("a list in brackets");
        }
        return m_value.size();
    }
    [[nodiscard]] Element item(std::size_t index) const {
        return {m_value.at(index), m_document, m_path + "[" + std::to_string(index) + "]"};
    }

    [[nodiscard]] std::string text() const {
        if (!m_value.is_string()) {
            refuse("a text");
        }
        return m_value.get_ref<const std::string&>();
    }
    /// Empty for null.
    [[nodiscard]] std::string textOrNull() const { return m_value.is_null() ? "" : text(); }
    [[nodiscard]] bool truth() const {
        if (!m_value.is_boolean()) {
            refuse("true or false");
        }
        return m_value.get<bool>();
    }
    [[nodiscard]] std::size_t count() const {
        if (!m_value.is_number_unsigned()) {
            refuse("a whole number from 0");
        }
        return m_value.get<std::size_t>();
    }

    /// @param mayBeNull null stands for a number that there is none of: NaN
    template <std::size_t N>
    [[nodiscard]] Point<double, N> point(bool mayBeNull) const {
        const std::string expected = std::to_string(N) + " numbers" + (mayBeNull ? " or nulls" : "");
        if (!m_value.is_array() || m_value.size() != N) {
            refuse(expected);
        }
        Point<double, N> point;
        for (std::size_t i = 0; i < N; ++i) {
            const Json& number = m_value.at(i);
            if (mayBeNull && number.is_null()) {
                point[i] = std::numeric_limits<double>::quiet_NaN();
            } else if (number.is_number() && std::abs(number.get<double>()) <= LARGEST) {
                point[i] = number.get<double>();
            } else {
                refuse(expected);
            }
        }
        return point;
    }

    [[noreturn]] void refuse(const std::string& expected, const char* remedy = REMEDY) const {
        throw VeltraniParseException(
            fromUtf8(head() + "found " + shown(m_value) + "; expected " + expected + "; " + remedy));
    }

private:
    [[nodiscard]] std::string head() const {
        return onOneLine(m_document) + ": " + (m_path.empty() ? "" : m_path + ": ");
    }

    const Json& m_value;
    const std::string& m_document;
    std::string m_path;
};

Point<double, 2> placeInPicture(const Element& picture) {
    const Point<double, 2> place = picture.point<2>(false);
    if (std::abs(place[0] - 0.5) > FURTHEST || std::abs(place[1] - 0.5) > FURTHEST) {
        picture.refuse("a place in the picture, from 0 to 1 or up to the picture's size beside it");
    }
    return place;
}

SceneResidual residualOf(const Element& row) {
    SceneResidual residual;
    const Element lines = row.member("lines");
    if (lines.size() == 0) {
        lines.refuse("a line of the table at least");
    }
    residual.line = lines.item(0).count();
    residual.picture = placeInPicture(row.member("picture"));
    residual.point = row.member("point").point<3>(false);
    residual.pixels = row.member("pixelsAfter").point<2>(true);
    residual.offset = row.member("screenAfter").point<3>(true);
    residual.isOutlier = row.member("outlier").truth();
    return residual;
}

void requireHead(const Element& report, const std::string& unit) {
    const Element schema = report.member("schema");
    if (schema.text() != SCHEMA) {
        schema.refuse(inQuotes(SCHEMA));
    }
    const Element version = report.member("version");
    if (version.count() != VERSION) {
        version.refuse(std::to_string(VERSION), "run fit again with this version of the program");
    }
    const Element length = report.member("units").member("length");
    if (length.textOrNull() != unit) {
        length.refuse(unit.empty() ? "null: the display states no unit" : inQuotes(unit) + ", the unit of the display",
                      "name the report of a fit of this display, or run fit again");
    }
}

/// Where a text is no JSON: "line 3, column 7".
std::string placeOf(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, std::min(text.size(), byte > 0 ? byte - 1 : 0));
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::size_t start = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    return "line " + std::to_string(lines + 1) + ", column " + std::to_string(before.size() - start + 1);
}

Json parsed(std::string_view json, const std::string& document) {
    try {
        return Json::parse(json);
    } catch (const Json::parse_error& fault) {
        const bool isAtEnd = fault.byte > json.size();
        const std::string found =
            isAtEnd ? "the end of the file" : inQuotes(json.substr(fault.byte > 0 ? fault.byte - 1 : 0, 20));
        throw VeltraniParseException(fromUtf8(onOneLine(document) + ": " + placeOf(json, fault.byte) + ": found " +
                                              found + "; expected JSON; " + REMEDY));
    } catch (const Json::out_of_range&) {
        throw VeltraniParseException(fromUtf8(
            onOneLine(document) + ": found a number that no computer holds; expected numbers below 1e308; " + REMEDY));
    }
}

}  // namespace

DisplayResiduals ResidualReader::read(std::string_view json, const std::string& document) const {
    if (json.size() > MOST_BYTES) {
        throw VeltraniParseException(fromUtf8(onOneLine(document) + ": found more than " +
                                              std::to_string(MOST_BYTES >> 20U) +
                                              " MiB; expected the report of a fit; " + REMEDY));
    }
    const Json tree = parsed(json, document);
    const Element report(tree, document, "");
    const IUnitsConfig* const units = m_config.getNativeUnitsConfig();
    requireHead(report, units == nullptr ? "" : toUtf8(units->getUnitName()));
    DisplayResiduals residuals;
    std::set<std::string> known;
    const Element channels = report.member("channels");
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const Element projector = channels.item(i).member("projector");
        DisplayResiduals::Channel channel{projector.text(), {}};
        if (m_config.getProjectorConfig(fromUtf8(channel.projectorId)) == nullptr) {
            projector.refuse("the id of a projector of the display", "name the report of a fit of this display");
        }
        if (!known.insert(channel.projectorId).second) {
            projector.refuse("each projector once");
        }
        const Element rows = channels.item(i).member("residuals");
        for (std::size_t row = 0; row < rows.size(); ++row) {
            channel.residuals.push_back(residualOf(rows.item(row)));
        }
        residuals.channels.push_back(std::move(channel));
    }
    return residuals;
}

DisplayResiduals ResidualReader::readFile(const std::string& utf8Path) const {
    return read(RegularFile(utf8Path).readAll(MOST_BYTES), utf8Path);
}

}  // namespace Veltrani::FitSession

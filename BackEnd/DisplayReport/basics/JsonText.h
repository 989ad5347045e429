#pragma once

#include <concepts>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

/// The same JSON, with every character that would steer a terminal (controls beyond ASCII, marks that turn the
/// direction of writing, what is not seen) written as "\u202e", which a reader takes for that character.
/// @param json valid, UTF-8, with the controls of ASCII escaped as JSON wants them
[[nodiscard]] std::string safeForTerminals(std::string json);

/// Values as JSON has them. What is no number ("nan", "inf") is null.
[[nodiscard]] std::string jsonOf(const std::string& utf8);
[[nodiscard]] std::string jsonOf(double number);
template <std::same_as<bool> Truth>
[[nodiscard]] std::string jsonOf(Truth truth) {
    return truth ? "true" : "false";
}
template <std::integral Whole>
requires(!std::same_as<Whole, bool>) [[nodiscard]] std::string jsonOf(Whole number) {
    return std::to_string(number);
}

/// "[a,b]" of a range, each item by `jsonOfItem`.
template <class Items, class JsonOfItem>
[[nodiscard]] std::string jsonList(const Items& items, JsonOfItem jsonOfItem) {
    std::string json;
    for (const auto& item : items) {
        json += (json.empty() ? "[" : ",") + jsonOfItem(item);
    }
    return json.empty() ? "[]" : json + ']';
}

/// A JSON object, member by member as text. Without a tree, which needs memory when it goes and has none where memory
/// ran out.
///
///     out << JsonObject().add("name", name).add("pixels", 1920).addJson("size", "null").text() << '\n';
class JsonObject {
public:
    /// @param members that it begins with
    explicit JsonObject(std::string members = {}) : m_members(std::move(members)) {}

    /// @param json of the value, valid
    JsonObject& addJson(const char* name, const std::string& json) {
        m_members += (m_members.empty() ? "\"" : ",\"") + std::string(name) + "\":" + json;
        return *this;
    }
    template <class Value>
    JsonObject& add(const char* name, const Value& value) {
        return addJson(name, jsonOf(value));
    }
    /// What is not known is null.
    JsonObject& addKnown(const char* name, bool isKnown, const std::string& value) {
        return addJson(name, isKnown ? jsonOf(value) : "null");
    }

    [[nodiscard]] std::string text() const { return '{' + m_members + '}'; }
    /// The members alone, for objects that are continued elsewhere.
    [[nodiscard]] const std::string& members() const { return m_members; }

private:
    std::string m_members;
};

}  // namespace Veltrani::DisplayReport

#pragma once

#include <string>
#include <utility>

/// An identifier that cannot be mixed up with another kind of identifier: the text is typed by an empty tag.
///
/// Compared and ordered by its text. A default-constructed id is empty, which stands for "none".
template <class Value, class Tag>
class StrongId {
public:
    StrongId() = default;
    explicit StrongId(Value value) : m_value(std::move(value)) {}

    [[nodiscard]] const Value& value() const { return m_value; }

    friend bool operator==(const StrongId& a, const StrongId& b) { return a.m_value == b.m_value; }
    friend bool operator<(const StrongId& a, const StrongId& b) { return a.m_value < b.m_value; }

private:
    Value m_value;
};

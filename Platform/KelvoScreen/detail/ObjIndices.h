#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace KelvoScreenDetail {

class ObjCursor;

/// The elements of one kind (vertices, texture coordinates or normals) of an OBJ text, as its faces refer to them.
///
/// Positive indices count from the first element of the whole text, which is 1, so that a face may stand before the
/// elements that it refers to; whether they exist is known at the end of the text. Negative ones count back from the
/// last element that stands before the face.
class ObjIndices {
public:
    /// @param kind what a message calls one element
    explicit ObjIndices(std::string_view kind) : m_kind(kind) {}

    /// Counts one more element.
    void define() { ++m_count; }
    [[nodiscard]] std::size_t count() const { return m_count; }

    /// The element, counted from 0, behind an index as the text has it. Throws `ObjLoadException` for the word that
    /// the cursor is in when the index is 0 or out of range.
    [[nodiscard]] std::uint32_t resolve(std::int64_t index, const ObjCursor& cursor) {
        if (index > 0 && static_cast<std::uint64_t>(index) <= m_count && index <= MAX_INDEX) {
            return static_cast<std::uint32_t>(index - 1);
        }
        return resolveUnusual(index, cursor);
    }

    /// At the end of the text: throws `ObjLoadException` with its line for the first index past the last element.
    void requireAllDefined() const;

private:
    static constexpr std::int64_t MAX_INDEX = std::int64_t{1} << 32;

    struct Forward {
        std::uint32_t element;
        std::size_t line;
    };

    [[nodiscard]] std::uint32_t resolveUnusual(std::int64_t index, const ObjCursor& cursor);

    std::string_view m_kind;
    std::size_t m_count = 0;
    /// The references to elements that were not yet defined, each further ahead than all before it: the first one out
    /// of range is always among them.
    std::vector<Forward> m_forward;
};

}  // namespace KelvoScreenDetail

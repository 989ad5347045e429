#pragma once

#include "Common/FileFault.h"

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ConfigurationDetail {

/// Everything that is wrong with one document, collected so that its author sees all of it at once.
class FaultList {
public:
    enum class Kind {
        STRUCTURE,  ///< against the form: what the published schema detects as well
        MEANING,    ///< well formed, but the values contradict each other or cannot be represented
    };

    /// @param documentName precedes the line of every fault, usually the path; UTF-8
    explicit FaultList(std::string documentName);

    /// @param fault with the plain name of an element
    void add(Kind kind, FileFault fault);

    [[nodiscard]] bool empty() const { return m_count == 0; }
    /// How many faults were added, the ones beyond the limit of the message included.
    [[nodiscard]] std::size_t size() const { return m_count; }
    [[nodiscard]] bool hasStructureFault() const { return m_hasStructureFault; }

    /// Returns one line per fault, in the order of their lines: `document:line: <element>: found ..., expected ...;
    /// remedy`.
    [[nodiscard]] std::wstring message() const;

    /// Throws `VeltraniParseException` with `message()` unless the list is empty.
    void throwIfAny() const;

    /// A document can be broken in every line; the message goes no further than this and counts the rest.
    static constexpr std::size_t MOST_FAULTS_SHOWN = 1000;

private:
    std::string m_documentName;
    std::vector<FileFault> m_faults;
    std::size_t m_count = 0;
    bool m_hasStructureFault = false;
};

/// Returns the pieces one behind the other.
[[nodiscard]] std::string concatenated(std::initializer_list<std::string_view> pieces);

}  // namespace Veltrani::ConfigurationDetail

#include "KelvoScreen/detail/ObjIndices.h"

#include "KelvoScreen/ObjLoadException.h"
#include "KelvoScreen/detail/ObjCursor.h"

#include <algorithm>
#include <string>

namespace KelvoScreenDetail {

std::uint32_t ObjIndices::resolveUnusual(std::int64_t index, const ObjCursor& cursor) {
    if (index == 0) {
        cursor.failWord("a " + std::string(m_kind) + " index other than 0: the first one is 1",
                        "correct the index; one that counts from 0 is one too small");
    }
    if (index < 0) {
        const std::int64_t element = static_cast<std::int64_t>(m_count) + index;
        if (element < 0 || element >= MAX_INDEX) {
            cursor.failWord("a " + std::string(m_kind) + " index no further back than the " + std::to_string(m_count) +
                                " before this line",
                            "correct the index, or put what it refers to before this line");
        }
        return static_cast<std::uint32_t>(element);
    }
    if (index > MAX_INDEX) {
        cursor.failWord("a " + std::string(m_kind) + " index up to " + std::to_string(MAX_INDEX), "correct the index");
    }
    const auto element = static_cast<std::uint32_t>(index - 1);
    if (m_forward.empty() || element > m_forward.back().element) {
        m_forward.push_back({element, cursor.line()});
    }
    return element;
}

void ObjIndices::requireAllDefined() const {
    const auto beyond = std::find_if(m_forward.begin(), m_forward.end(),
                                     [this](const Forward& forward) { return forward.element >= m_count; });
    if (beyond != m_forward.end()) {
        throw ObjLoadException(
            beyond->line, std::to_string(std::uint64_t{beyond->element} + 1),
            "a " + std::string(m_kind) + " index no greater than " + std::to_string(m_count) + ", their number",
            "correct the index, or export the file again if it is cut off");
    }
}

}  // namespace KelvoScreenDetail

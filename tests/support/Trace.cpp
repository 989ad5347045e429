#include "support/Trace.h"

#include <algorithm>

void Trace::add(const std::string& line) {
    m_lines.push_back(line);
}

bool operator==(const Trace& trace, std::initializer_list<std::string> expected) {
    return std::equal(trace.m_lines.begin(), trace.m_lines.end(), expected.begin(), expected.end());
}

std::ostream& operator<<(std::ostream& out, const Trace& trace) {
    for (const std::string& line : trace.m_lines) {
        out << "\n  " << line;
    }
    return out;
}

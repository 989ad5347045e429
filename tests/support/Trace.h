#pragma once

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

/// The ordered record of every call of the doubles of a test and every log record, one line each. Several doubles and a
/// log trap write into one trace, so that a test compares their order step by step.
class Trace {
public:
    void add(const std::string& line);

    [[nodiscard]] const std::vector<std::string>& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

    friend bool operator==(const Trace& trace, std::initializer_list<std::string> expected);
    friend std::ostream& operator<<(std::ostream& out, const Trace& trace);

private:
    std::vector<std::string> m_lines;
};

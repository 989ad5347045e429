#include "support/Recorder.h"

#include "Common/Utf8.h"

#include <array>
#include <charconv>

Recorder::Recorder(std::string name, Trace* trace) : m_name(std::move(name)), m_trace(trace) {}

std::size_t Recorder::calls(const std::string& operation) const {
    const auto found = m_calls.find(operation);
    return found == m_calls.end() ? 0 : found->second;
}

std::string Recorder::text(double value) {
    std::array<char, 32> buffer{};
    const auto [end, fault] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), end};
}

std::string Recorder::text(const std::wstring& value) {
    std::string quoted(1, '"');
    quoted += Veltrani::toUtf8(value);
    return quoted += '"';
}

void Recorder::recordCall(const std::string& operation, const std::string& arguments) const {
    if (m_trace != nullptr) {
        m_trace->add(m_name + "." + operation + "(" + arguments + ")");
    }
    const std::size_t call = m_calls[operation]++;
    const auto fault = m_faults.find(operation);
    if (fault != m_faults.end() && call >= fault->second.fromCall &&
        call - fault->second.fromCall < fault->second.count) {
        fault->second.raise();
    }
}

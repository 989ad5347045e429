#pragma once

#include "Common/Point.h"
#include "support/Trace.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <utility>

/// What the recording doubles have in common: every call is counted and goes into a trace as
/// "name.operation(arguments)", and any of them can be made to throw.
///
/// Texts stand in quotes, points in parentheses, doubles in their shortest form that reads back exactly, pointers as
/// "null" or "set".
class Recorder {
public:
    /// @param trace receives the calls; null when they are not needed
    explicit Recorder(std::string name, Trace* trace = nullptr);

    void recordTo(Trace* trace) { m_trace = trace; }

    /// Makes an operation throw `fault` at its call number `call` (0 is the next one) and at every later one. The call
    /// is recorded first.
    template <class Fault>
    void throwFrom(const std::string& operation, Fault fault, std::size_t call = 0) {
        m_faults[operation] = {m_calls[operation] + call, EVERY_CALL, [fault] { throw fault; }};
    }
    /// Makes the next call of an operation throw `fault`, and no later one.
    template <class Fault>
    void throwOnce(const std::string& operation, Fault fault) {
        m_faults[operation] = {m_calls[operation], 1, [fault] { throw fault; }};
    }
    void throwNoMore(const std::string& operation) { m_faults.erase(operation); }

    /// How often an operation was called.
    [[nodiscard]] std::size_t calls(const std::string& operation) const;

    [[nodiscard]] static std::string text(bool value) { return value ? "true" : "false"; }
    [[nodiscard]] static std::string text(int value) { return std::to_string(value); }
    [[nodiscard]] static std::string text(double value);
    [[nodiscard]] static std::string text(const std::wstring& value);
    template <class T>
    [[nodiscard]] static std::string text(const T* pointer) {
        return pointer == nullptr ? "null" : "set";
    }
    template <class T, std::size_t N>
    [[nodiscard]] static std::string text(const Point<T, N>& point) {
        std::string list;
        for (std::size_t i = 0; i < N; ++i) {
            list += (i == 0 ? "" : ", ") + text(point[i]);
        }
        return "(" + list + ")";
    }

protected:
    ~Recorder() = default;

    template <class... Arguments>
    void record(const std::string& operation, const Arguments&... arguments) const {
        std::string list;
        ((list += (list.empty() ? "" : ", ") + text(arguments)), ...);
        recordCall(operation, list);
    }

    /// Records arguments that are a text already; it stands without quotes.
    void recordLine(const std::string& operation, const std::string& arguments) const {
        recordCall(operation, arguments);
    }

private:
    static constexpr std::size_t EVERY_CALL = std::numeric_limits<std::size_t>::max();

    struct Fault {
        std::size_t fromCall;
        std::size_t count;
        std::function<void()> raise;
    };

    void recordCall(const std::string& operation, const std::string& arguments) const;

    std::string m_name;
    Trace* m_trace;
    mutable std::map<std::string, std::size_t> m_calls;
    std::map<std::string, Fault> m_faults;
};

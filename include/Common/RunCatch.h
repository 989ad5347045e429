#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Guarded calls: whatever was thrown becomes one line of text, goes to a list of handlers, and is then swallowed or
/// thrown on.
///
///     RunCatch::run([&] { device->execute(disableBlend); });   // a fault is reported, the preparation goes on
class RunCatch {
public:
    /// Receives the description of an exception, in UTF-8.
    using Handler = std::function<void(const std::string&)>;

    RunCatch() = delete;

    /// Returns one text (UTF-8) for any exception: nothing for a null pointer, the full description of a
    /// `VeltraniException`, the `what()` of a `std::exception`, and "(...) No details" for everything else.
    [[nodiscard]] static std::string describe(std::exception_ptr exception);

    /// Must be called inside a catch handler: describes the exception in flight and calls every handler with the text,
    /// in order. An empty handler raises `std::bad_function_call`.
    /// @param rethrow true throws the very same exception object on; false returns normally
    static void handleCurrentException(bool rethrow);

    /// Returns the handlers of the process, called in order. Starts with one, which logs "Caught exception: " and the
    /// description at error on the logger "Common.RunCatch".
    [[nodiscard]] static std::vector<Handler>& handlers();

    /// Runs a step and reports what it throws; never lets it out.
    template <class Step>
    static void run(Step&& step) {
        try {
            std::forward<Step>(step)();
        } catch (...) {
            handleCurrentException(false);
        }
    }
};

#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <memory>
#include <utility>

class DisplayState;

/// A script has ended the call, by Ctrl-C or from another handler of a signal; what that raised is set already.
struct Interrupted {};

/// One call from Python into the libraries. No class of these is safe for use from two threads at once, and they know
/// one screen at a time: there is one entry in the process at a time, and a further one waits until it has ended.
///
/// The interpreter goes on meanwhile: nothing of Python may be used between the constructor and the destructor. An
/// entry may not begin inside of another one on the same thread, as the handler of a signal could: `BusyFault`.
class Entry {
public:
    /// @param display its screen is the current one in this entry; null for a call that uses no screen
    explicit Entry(DisplayState* display);
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry();

    /// To be called now and then by what may take long: lets the handlers of signals run. Throws `Interrupted` once one
    /// has raised an exception, and at every later call.
    static void pulse();

    /// Throws `Interrupted` when the entry was interrupted and something on the way has kept that back.
    void finish() const;

    /// Destroys a display, as soon as no entry is under way. Never waits.
    static void retire(DisplayState* display) noexcept;

    /// Called when the interpreter is about to end: waits until the entry that is under way has come to a stop, some
    /// seconds at most, and lets no other one begin. Threads that are inside of one do not return.
    static void end() noexcept;

    /// Called around a fork, by the thread that splits the process: waits a moment until no other thread is inside of
    /// an entry, and keeps them out meanwhile. An entry that goes on all the same can never end in the child, where
    /// every further one is refused with a `BusyFault`.
    static void beforeFork() noexcept;
    static void afterForkInParent() noexcept;
    static void afterForkInChild() noexcept;

private:
    void wait();
    void begin(DisplayState* display);
    void checkSignals();

    PyThreadState* m_python;
    std::chrono::steady_clock::time_point m_checked;
    bool m_isInterrupted = false;
};

using DisplayPointer = std::shared_ptr<DisplayState>;

/// Runs a piece of work in an entry of its own, and returns its result, which is made without Python.
template <class Work>
auto inEntry(DisplayState* display, Work&& work) {
    Entry entry(display);
    if constexpr (std::is_void_v<decltype(work())>) {
        std::forward<Work>(work)();
        entry.finish();
    } else {
        auto result = std::forward<Work>(work)();
        entry.finish();
        return result;
    }
}

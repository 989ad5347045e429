#include "Entry.h"

#include "DisplayState.h"
#include "Refusals.h"

#include <unistd.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// Short enough for a person who presses Ctrl-C, long enough to cost nothing.
constexpr std::chrono::milliseconds BETWEEN_CHECKS{50};

/// What all entries of the process share. Never destroyed: threads may outlive the interpreter.
struct Shared {
    std::timed_mutex guard;
    DisplayState* current = nullptr;  ///< whose screen the libraries hold; null for none
    std::mutex retiredGuard;
    std::vector<DisplayState*> retired;  ///< to be destroyed
    std::atomic<bool> isBroken = false;  ///< by a fork in the middle of an entry
    std::atomic<bool> isEnding = false;
};

Shared& shared() {
    static Shared* const instance = new Shared;
    return *instance;
}

thread_local Entry* t_running = nullptr;
/// Whether this thread, which is about to fork, keeps all others out.
thread_local bool t_keepsOut = false;

[[noreturn]] void stop() noexcept {
    for (;;) {
        ::pause();
    }
}

/// Back into the interpreter. Once that has ended, it unwinds the thread instead, which nothing here could bear: the
/// thread waits for the end of the process.
void enterPython(PyThreadState* python) noexcept {
    try {
        PyEval_RestoreThread(python);
    } catch (...) {
        stop();
    }
}

/// With the guard held.
void destroy(DisplayState* display) {
    Shared& all = shared();
    if (all.current == display) {
        all.current = nullptr;
        DisplayState::clearCurrent();
    }
    delete display;
}

/// With the guard held.
void destroyRetired() noexcept {
    Shared& all = shared();
    std::vector<DisplayState*> displays;
    {
        const std::lock_guard lock(all.retiredGuard);
        displays.swap(all.retired);
    }
    for (DisplayState* const display : displays) {
        try {
            destroy(display);
        } catch (...) {
            // Memory ran out while the libraries forgot it; they do so with the next display.
            continue;
        }
    }
}

bool hasRetired() {
    const std::lock_guard lock(shared().retiredGuard);
    return !shared().retired.empty();
}

/// One that is retired while an entry ends must not wait for the next entry.
void destroyWhatIsLeft() noexcept {
    while (hasRetired() && shared().guard.try_lock()) {
        destroyRetired();
        shared().guard.unlock();
    }
}

}  // namespace

Entry::Entry(DisplayState* display) : m_python(nullptr) {
    if (t_running != nullptr) {
        throw BusyFault{
            "another call into screenmanager is under way on this thread: the handler of a signal must not "
            "use displays"};
    }
    if (shared().isBroken) {
        throw BusyFault{
            "this process was split off while another thread was inside of screenmanager: start it with the "
            "method \"spawn\" instead"};
    }
    if (shared().isEnding) {
        throw BusyFault{"the interpreter is about to end"};
    }
    m_python = PyEval_SaveThread();
    try {
        wait();
    } catch (...) {
        enterPython(m_python);
        throw;
    }
    try {
        begin(display);
    } catch (...) {
        shared().guard.unlock();
        enterPython(m_python);
        throw;
    }
    t_running = this;
}

Entry::~Entry() {
    t_running = nullptr;
    destroyRetired();
    shared().guard.unlock();
    destroyWhatIsLeft();
    enterPython(m_python);
}

void Entry::wait() {
    while (!shared().guard.try_lock_for(BETWEEN_CHECKS)) {
        if (shared().isEnding) {
            stop();
        }
        checkSignals();
    }
    m_checked = Clock::now();
}

void Entry::begin(DisplayState* display) {
    if (display != nullptr && shared().current != display) {
        shared().current = nullptr;
        display->makeCurrent();
        shared().current = display;
    }
}

void Entry::checkSignals() {
    enterPython(m_python);
    // What the handler raises stays set for this thread, until it is Python's again.
    m_isInterrupted = PyErr_CheckSignals() != 0;
    m_python = PyEval_SaveThread();
    if (m_isInterrupted) {
        throw Interrupted();
    }
}

void Entry::pulse() {
    Entry* const entry = t_running;
    if (entry == nullptr) {
        return;
    }
    if (shared().isEnding) {
        // What the process destroys at its end must not be in use.
        shared().guard.unlock();
        stop();
    }
    entry->finish();
    if (const auto now = Clock::now(); now - entry->m_checked >= BETWEEN_CHECKS) {
        entry->checkSignals();
        entry->m_checked = now;
    }
}

void Entry::finish() const {
    if (m_isInterrupted) {
        throw Interrupted();
    }
}

void Entry::retire(DisplayState* display) noexcept {
    Shared& all = shared();
    try {
        const std::lock_guard lock(all.retiredGuard);
        all.retired.push_back(display);
    } catch (...) {
        // There is no memory to note it: it stays.
        return;
    }
    // The thread of an entry, which may get here through a handler of a signal, must not try to take its guard.
    if (t_running == nullptr && !all.isBroken && !all.isEnding) {
        destroyWhatIsLeft();
    }
}

void Entry::end() noexcept {
    constexpr std::chrono::seconds LONGEST{10};
    Shared& all = shared();
    if (t_running != nullptr || all.isBroken || all.isEnding.exchange(true)) {
        return;
    }
    PyThreadState* const python = PyEval_SaveThread();
    // For good: the guard is not released any more.
    static_cast<void>(all.guard.try_lock_for(LONGEST));
    enterPython(python);
}

void Entry::beforeFork() noexcept {
    Shared& all = shared();
    // No longer than a moment: a long entry needs the interpreter, which the forking thread holds, to look for signals.
    // The thread of an entry, which gets here through a handler of a signal, goes on with it in both processes.
    t_keepsOut = t_running == nullptr && !all.isBroken && !all.isEnding && all.guard.try_lock_for(BETWEEN_CHECKS);
    // Behind the guard, as everywhere. Nobody waits for anything while holding it.
    all.retiredGuard.lock();
}

void Entry::afterForkInParent() noexcept {
    shared().retiredGuard.unlock();
    if (std::exchange(t_keepsOut, false)) {
        shared().guard.unlock();
        destroyWhatIsLeft();
    }
}

void Entry::afterForkInChild() noexcept {
    shared().retiredGuard.unlock();
    if (std::exchange(t_keepsOut, false)) {
        shared().guard.unlock();
    } else if (t_running == nullptr) {
        shared().isBroken = true;
    }
}

#include "CommandLine.h"
#include "Common/AtomicFile.h"
#include "Common/ExceptionCause.h"
#include "FailureReport.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>

namespace {

/// The signals that end the program while it may be writing a file:
/// by a user or another program, by an output that nobody reads any more, and by the limits of the shell. Those of a
/// broken program are left alone, and SIGKILL cannot be handled: after these the next run removes what is left.
constexpr int ENDING[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU, SIGXFSZ};

/// Calls nothing but what a handler may call. The handler is gone when it runs (SA_RESETHAND): the signal that is
/// raised takes its usual effect as soon as this returns.
extern "C" void endBySignal(int signal) {
    Veltrani::AtomicFile::removeTemporaryFiles();
    ::raise(signal);
}

/// Each of the signals removes the temporary files first; then the program ends as if it had not been handled, so that
/// the shell learns of it. One that the program was started to ignore, as `nohup` does with SIGHUP, stays ignored. To
/// be called before anything is written.
void handleEndingSignals() {
    for (const int signal : ENDING) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) {
            continue;
        }
        action = {};
        action.sa_handler = endBySignal;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        // No other signal interrupts the handler.
        ::sigfillset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

/// Ends the run as `reportEnd` does where memory ran out in a function that must not throw: from there no exception
/// reaches `main`. Libraries below have such places, as when the C++ library lists a folder, and the JSON library takes
/// a document apart.
[[noreturn]] void endWithoutReturn() {
    const std::exception_ptr exception = std::current_exception();
    if (exception == nullptr || !Veltrani::isOutOfMemory(exception)) {
        std::abort();
    }
    Veltrani::AtomicFile::removeTemporaryFiles();
    ::_exit(reportEnd(exception));
}

}  // namespace

int main(int argc, char** argv) {
    handleEndingSignals();
    std::set_terminate(endWithoutReturn);
    try {
        CommandLine commandLine;
        try {
            commandLine.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return commandLine.report(error);
        }
        const int code = commandLine.run();
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
        return code;
    } catch (...) {
        return reportEnd(std::current_exception());
    }
}

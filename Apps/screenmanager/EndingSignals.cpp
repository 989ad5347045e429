#include "EndingSignals.h"

#include "Common/AtomicFile.h"

#include <signal.h>

namespace {

/// By a user or another program, by an output that nobody reads any more, and by the limits of the shell. Those of a
/// broken program are left alone, and SIGKILL cannot be handled: after these the next run removes what is left.
constexpr int ENDING[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU, SIGXFSZ};

/// Calls nothing but what a handler may call. The handler is gone when it runs (SA_RESETHAND): the signal that is
/// raised takes its usual effect as soon as this returns.
extern "C" void endBySignal(int signal) {
    Veltrani::AtomicFile::removeTemporaryFiles();
    ::raise(signal);
}

}  // namespace

void EndingSignals::handle() {
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

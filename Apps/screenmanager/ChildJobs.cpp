#include "ChildJobs.h"

#include "Common/ExceptionCause.h"
#include "Common/QuotedText.h"
#include "Console.h"
#include "DisplayReport/basics/Fault.h"
#include "ProgressMeter.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using Outcome = ChildJobs::Outcome;
using Veltrani::DisplayReport::Progress;

/// What a message of a child begins with, and what ends one: a result has no line feed in it, and a fault is shown on
/// one line.
constexpr char PROGRESS = 'p';
constexpr char RESULT = 'r';
constexpr char FAULT = 'f';
constexpr char MEMORY = 'm';
constexpr char END = '\n';

/// Of one piece, so that pieces of any size count alike.
constexpr std::size_t STEPS = 1000;

/// The same that `main` handles.
constexpr int ENDING_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU, SIGXFSZ};

sigset_t endingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : ENDING_SIGNALS) {
        ::sigaddset(&signals, signal);
    }
    return signals;
}

/// A child and what it has said so far.
struct Child {
    std::size_t piece = 0;
    pid_t process = -1;
    int pipe = -1;
    std::string unread;
};

/// False when nobody reads any more.
bool send(int pipe, char kind, std::string text) {
    std::replace(text.begin(), text.end(), END, ' ');
    text.insert(text.begin(), kind);
    text.push_back(END);
    for (std::string_view rest = text; !rest.empty();) {
        const ssize_t count = ::write(pipe, rest.data(), rest.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

/// Sends how far the work is, no more often than a thousandth of it.
Progress progressTo(int pipe) {
    return [pipe, last = std::size_t{0}](std::size_t done, std::size_t total) mutable {
        const std::size_t step = total == 0 ? 0 : STEPS * done / total;
        if (step > last) {
            last = step;
            send(pipe, PROGRESS, std::to_string(step));
        }
    };
}

/// The life of a child.
[[noreturn]] void workAsChild(int pipe, std::size_t piece, const ChildJobs::Work& work) {
    try {
        send(pipe, RESULT, work(piece, progressTo(pipe)));
    } catch (...) {
        const std::exception_ptr exception = std::current_exception();
        if (Veltrani::isOutOfMemory(exception)) {
            send(pipe, MEMORY, {});
        } else {
            send(pipe, FAULT, Veltrani::onOneLine(sentenceOf(Veltrani::DisplayReport::faultOf({}, exception))));
        }
    }
    // Neither destructors nor buffers of the parent's are of any concern here.
    ::_exit(0);
}

[[noreturn]] void failToStart() {
    const int reason = errno;
    if (reason == ENOMEM) {
        throw std::bad_alloc();
    }
    throw std::system_error(reason, std::generic_category(), "No process can be started");
}

/// All children that are under way.
class Children {
public:
    explicit Children(const ChildJobs::Work& work) : m_work(work) {}
    ~Children() {
        for (const Child& child : m_children) {
            ::kill(child.process, SIGKILL);
            end(child);
        }
    }
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    [[nodiscard]] std::size_t size() const { return m_children.size(); }

    void start(std::size_t piece) {
        int ends[2];
        if (::pipe(ends) != 0) {
            failToStart();
        }
        const pid_t parent = ::getpid();
        const pid_t process = ::fork();
        if (process < 0) {
            const int reason = errno;
            ::close(ends[0]);
            ::close(ends[1]);
            errno = reason;
            failToStart();
        }
        if (process == 0) {
            // Ends with its parent; which may have ended already.
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::getppid() != parent) {
                ::_exit(1);
            }
            ::close(ends[0]);
            workAsChild(ends[1], piece, m_work);
        }
        ::close(ends[1]);
        m_children.push_back({piece, process, ends[0], {}});
    }

    /// Waits a while for what the children say. @return those pieces that have come to their end
    std::vector<std::size_t> listen(std::vector<Outcome>& outcomes, std::vector<std::size_t>& steps) {
        constexpr int MILLISECONDS = 100;
        std::vector<pollfd> pipes;
        for (const Child& child : m_children) {
            pipes.push_back({child.pipe, POLLIN, 0});
        }
        ::poll(pipes.data(), pipes.size(), MILLISECONDS);
        std::vector<std::size_t> ended;
        for (std::size_t i = pipes.size(); i-- > 0;) {
            if (pipes[i].revents != 0 && !read(m_children[i], outcomes, steps)) {
                ended.push_back(m_children[i].piece);
                finish(m_children[i], outcomes);
                m_children.erase(m_children.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        return ended;
    }

private:
    /// False at the end of what the child says.
    static bool read(Child& child, std::vector<Outcome>& outcomes, std::vector<std::size_t>& steps) {
        char bytes[65536];
        const ssize_t count = ::read(child.pipe, bytes, sizeof(bytes));
        if (count < 0) {
            return errno == EINTR || errno == EAGAIN;
        }
        child.unread.append(bytes, static_cast<std::size_t>(count));
        std::size_t begin = 0;
        for (auto end = child.unread.find(END); end != std::string::npos; end = child.unread.find(END, begin)) {
            take(child, std::string_view(child.unread).substr(begin, end - begin), outcomes, steps);
            begin = end + 1;
        }
        child.unread.erase(0, begin);
        return count > 0;
    }

    static void take(const Child& child, std::string_view message, std::vector<Outcome>& outcomes,
                     std::vector<std::size_t>& steps) {
        const char kind = message.empty() ? END : message.front();
        const std::string_view text = message.substr(std::min<std::size_t>(message.size(), 1));
        Outcome& outcome = outcomes[child.piece];
        if (kind == PROGRESS) {
            std::from_chars(text.data(), text.data() + text.size(), steps[child.piece]);
        } else if (kind == RESULT) {
            outcome.result = text;
        } else if (kind == FAULT) {
            outcome.fault = text;
        } else if (kind == MEMORY) {
            outcome.lacksMemory = true;
        }
    }

    static int end(const Child& child) {
        int status = 0;
        ::close(child.pipe);
        while (::waitpid(child.process, &status, 0) < 0 && errno == EINTR) {
        }
        return status;
    }

    static void finish(const Child& child, std::vector<Outcome>& outcomes) {
        const int status = end(child);
        Outcome& outcome = outcomes[child.piece];
        const bool isComplete = !outcome.result.empty() || !outcome.fault.empty() || outcome.lacksMemory;
        if (isComplete) {
            return;
        }
        // A place that must not throw ends it as `main` does.
        outcome.lacksMemory = WIFEXITED(status) && WEXITSTATUS(status) == EXIT_INTERNAL;
        outcome.isEnded = true;
        outcome.fault = WIFSIGNALED(status) ? endedBy(WTERMSIG(status)) : "its process ended without a result";
    }

    static std::string endedBy(int signal) {
        const char* const name = ::sigabbrev_np(signal);
        const std::string fault = "its process was ended by the signal " +
                                  (name == nullptr ? std::to_string(signal) : "SIG" + std::string(name));
        return signal == SIGKILL
                   ? fault + ", as the system does where memory runs out: allow it more, or state fewer --jobs"
                   : fault;
    }

    const ChildJobs::Work& m_work;
    std::vector<Child> m_children;
};

}  // namespace

int ChildJobs::usualNumber() {
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

std::optional<std::vector<Outcome>> ChildJobs::run(const std::vector<std::size_t>& order, int atOnce, const Work& work,
                                                   const EndsAll& endsAll, ProgressMeter& meter) {
    std::vector<Outcome> outcomes(order.size());
    std::vector<std::size_t> steps(order.size());
    Children children(work);
    auto next = order.begin();
    while (next != order.end() || children.size() > 0) {
        if (HeldSignals::hasArrived()) {
            return std::nullopt;
        }
        while (next != order.end() && children.size() < static_cast<std::size_t>(atOnce)) {
            children.start(*next++);
        }
        for (const std::size_t piece : children.listen(outcomes, steps)) {
            steps[piece] = STEPS;
            if (endsAll(outcomes[piece])) {
                return outcomes;
            }
        }
        std::size_t done = 0;
        for (const std::size_t step : steps) {
            done += step;
        }
        meter.update(done, STEPS * order.size());
    }
    return outcomes;
}

HeldSignals::HeldSignals() {
    const sigset_t signals = endingSignals();
    ::sigprocmask(SIG_BLOCK, &signals, &m_before);
}

HeldSignals::~HeldSignals() {
    ::sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

bool HeldSignals::hasArrived() {
    sigset_t pending;
    ::sigpending(&pending);
    return std::any_of(std::begin(ENDING_SIGNALS), std::end(ENDING_SIGNALS), [&pending](int signal) {
        // A signal that is ignored and blocked stays pending on some systems: it ends nothing.
        struct sigaction action {};
        const bool isIgnored = ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        return ::sigismember(&pending, signal) == 1 && !isIgnored;
    });
}

#include "HeadlessBrowser.h"

#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

namespace {

using Json = nlohmann::json;

constexpr const char* BROWSER = "/usr/bin/chromium";
/// For the slowest step, the start of the browser, on a machine that does much else.
constexpr int MOST_MILLISECONDS = 120000;

/// As a browser that is driven over pipes has them.
constexpr int COMMANDS = 3;
constexpr int ANSWERS = 4;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error("browser: " + what);
}

std::string decoded(const std::string& base64) {
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (const char c : base64) {
        const auto digit = digits.find(c);
        if (digit == std::string::npos) {
            break;
        }
        bits = bits << 6U | static_cast<unsigned>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> static_cast<unsigned>(count) & 0xFFU);
        }
    }
    return bytes;
}

}  // namespace

bool HeadlessBrowser::isInstalled() {
    return ::access(BROWSER, X_OK) == 0;
}

/// The browser itself. Messages are the texts of JSON.
class HeadlessBrowser::Process {
public:
    Process();
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    [[nodiscard]] int nextNumber() { return ++m_lastNumber; }
    void write(const std::string& message) const;
    [[nodiscard]] std::string read();

private:
    TemporaryFolder m_profiles;
    pid_t m_id = -1;
    int m_toBrowser = -1;
    int m_fromBrowser = -1;
    int m_lastNumber = 0;
    std::string m_received;
};

std::unique_ptr<HeadlessBrowser::Process>& HeadlessBrowser::process() {
    static std::unique_ptr<Process> only;
    return only;
}

HeadlessBrowser::HeadlessBrowser(int width, int height) {
    if (!process()) {
        process() = std::make_unique<Process>();
    }
    try {
        m_profile = call("Target.createBrowserContext", Json::object()).at("browserContextId");
        openWindow(width, height);
    } catch (...) {
        process().reset();
        throw;
    }
}

HeadlessBrowser::~HeadlessBrowser() {
    closeAll();
}

void HeadlessBrowser::closeAll() noexcept {
    m_session.clear();
    try {
        call("Target.disposeBrowserContext", {{"browserContextId", m_profile}});
    } catch (const std::exception&) {
        process().reset();
    }
}

std::size_t HeadlessBrowser::openWindow(int width, int height) {
    m_session.clear();
    const Json target = call("Target.createTarget", {{"url", "about:blank"},
                                                     {"newWindow", true},
                                                     {"width", width},
                                                     {"height", height},
                                                     {"browserContextId", m_profile}});
    const Json attached = call("Target.attachToTarget", {{"targetId", target.at("targetId")}, {"flatten", true}});
    m_session = attached.at("sessionId");
    m_sessions.push_back(m_session);
    for (const char* domain : {"Page.enable", "Runtime.enable", "Log.enable"}) {
        call(domain, Json::object());
    }
    resize(width, height);
    return m_sessions.size() - 1;
}

void HeadlessBrowser::resize(int width, int height) {
    call("Emulation.setDeviceMetricsOverride",
         {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
}

HeadlessBrowser::Process::Process() {
    int commands[2];
    int answers[2];
    if (::pipe2(commands, O_CLOEXEC) != 0 || ::pipe2(answers, O_CLOEXEC) != 0) {
        fail("no pipes");
    }
    const std::string profiles = "--user-data-dir=" + m_profiles.path();
    m_id = ::fork();
    if (m_id < 0) {
        fail("no process");
    }
    if (m_id == 0) {
        ::setpgid(0, 0);
        // Out of the way of the two fixed numbers first.
        const int in = ::fcntl(commands[0], F_DUPFD, 10);
        const int out = ::fcntl(answers[1], F_DUPFD, 10);
        ::dup2(in, COMMANDS);
        ::dup2(out, ANSWERS);
        const int silence = ::open("/dev/null", O_WRONLY);
        ::dup2(silence, STDOUT_FILENO);
        ::dup2(silence, STDERR_FILENO);
        ::execl(BROWSER, BROWSER, "--headless", "--no-sandbox", "--use-angle=swiftshader",
                "--enable-unsafe-swiftshader", "--disable-quic", "--no-first-run", "--disable-background-networking",
                "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--remote-debugging-pipe",
                profiles.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(commands[0]);
    ::close(answers[1]);
    m_toBrowser = commands[1];
    m_fromBrowser = answers[0];
}

HeadlessBrowser::Process::~Process() {
    ::close(m_toBrowser);
    ::close(m_fromBrowser);
    // Its helpers belong to its process group.
    ::kill(-m_id, SIGKILL);
    ::waitpid(m_id, nullptr, 0);
}

void HeadlessBrowser::Process::write(const std::string& message) const {
    const std::string text = message + '\0';
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = ::write(m_toBrowser, text.data() + sent, text.size() - sent);
        if (count <= 0) {
            fail("it does not listen");
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string HeadlessBrowser::Process::read() {
    for (;;) {
        if (const auto end = m_received.find('\0'); end != std::string::npos) {
            std::string message = m_received.substr(0, end);
            m_received.erase(0, end + 1);
            return message;
        }
        pollfd waiting{m_fromBrowser, POLLIN, 0};
        if (::poll(&waiting, 1, MOST_MILLISECONDS) <= 0) {
            fail("no answer in time");
        }
        std::string part(1U << 20U, '\0');
        const ssize_t count = ::read(m_fromBrowser, part.data(), part.size());
        if (count <= 0) {
            fail("it has ended");
        }
        m_received.append(part, 0, static_cast<std::size_t>(count));
    }
}

Json HeadlessBrowser::nextMessage() {
    if (!process()) {
        fail("it has failed before");
    }
    return Json::parse(process()->read());
}

void HeadlessBrowser::note(const Json& message) {
    // What is left of pages that are closed.
    if (std::find(m_sessions.begin(), m_sessions.end(), message.value("sessionId", "")) == m_sessions.end()) {
        return;
    }
    const std::string method = message.value("method", "");
    if (method == "Page.loadEventFired") {
        m_isLoaded = true;
    } else if (method == "Runtime.exceptionThrown") {
        m_complaints.push_back(message.at("params").at("exceptionDetails").dump());
    } else if (method == "Runtime.consoleAPICalled") {
        const std::string type = message.at("params").at("type");
        if (type == "error" || type == "warning" || type == "assert") {
            m_complaints.push_back(message.at("params").at("args").dump());
        }
    } else if (method == "Page.javascriptDialogOpening") {
        m_complaints.push_back("a dialog: " + message.at("params").at("message").get<std::string>());
        // The page stands still until it is closed.
        send("Page.handleJavaScriptDialog", {{"accept", false}});
    } else if (method == "Log.entryAdded") {
        const Json& entry = message.at("params").at("entry");
        const std::string text = entry.at("text");
        // On a busy machine the software renderer remarks that reading pixels back takes time.
        const bool isAboutSpeed = text.find("GL Driver Message (OpenGL, Performance") != std::string::npos;
        if ((entry.at("level") == "error" || entry.at("level") == "warning") && !isAboutSpeed) {
            m_complaints.push_back(text);
        }
    }
}

int HeadlessBrowser::send(const std::string& method, const Json& parameters) {
    if (!process()) {
        fail("it has failed before");
    }
    const int id = process()->nextNumber();
    Json command = {{"id", id}, {"method", method}, {"params", parameters}};
    if (!m_session.empty()) {
        command["sessionId"] = m_session;
    }
    process()->write(command.dump());
    return id;
}

Json HeadlessBrowser::call(const std::string& method, const Json& parameters) {
    const int id = send(method, parameters);
    for (;;) {
        const Json message = nextMessage();
        if (message.value("id", 0) != id) {
            note(message);
            continue;
        }
        if (message.contains("error")) {
            fail(method + ": " + message.at("error").dump());
        }
        return message.at("result");
    }
}

void HeadlessBrowser::open(const std::string& file) {
    m_isLoaded = false;
    call("Page.navigate", {{"url", "file://" + file}});
    while (!m_isLoaded) {
        note(nextMessage());
    }
}

Json HeadlessBrowser::evaluate(const std::string& expression) {
    const Json result =
        call("Runtime.evaluate", {{"expression", expression}, {"returnByValue", true}, {"awaitPromise", true}});
    if (result.contains("exceptionDetails")) {
        fail(expression + ": " + result.at("exceptionDetails").dump());
    }
    return result.at("result").value("value", Json());
}

void HeadlessBrowser::waitFor(const std::string& expression) {
    // Asked between two frames, so that waiting does not keep the page from its work.
    const std::string promise = "new Promise((done) => { const ask = () => (" + expression +
                                ") ? done(true) : requestAnimationFrame(ask); ask(); })";
    evaluate(promise);
}

void HeadlessBrowser::mouse(const std::string& type, double right, double down, int buttons) {
    call("Input.dispatchMouseEvent", {{"type", type},
                                      {"x", right},
                                      {"y", down},
                                      {"button", type == "mouseMoved" && buttons == 0 ? "none" : "left"},
                                      {"buttons", buttons},
                                      {"clickCount", 1}});
}

void HeadlessBrowser::press(const std::string& key, Held held) {
    for (const char* type : {"keyDown", "keyUp"}) {
        call("Input.dispatchKeyEvent", {{"type", type}, {"key", key}, {"modifiers", static_cast<int>(held)}});
    }
}

void HeadlessBrowser::click(double right, double down) {
    drag(right, down, right, down);
}

void HeadlessBrowser::drag(double right, double down, double toRight, double toDown) {
    mouse("mouseMoved", right, down, 0);
    mouse("mousePressed", right, down, 1);
    mouse("mouseMoved", toRight, toDown, 1);
    mouse("mouseReleased", toRight, toDown, 0);
}

PngImage HeadlessBrowser::screenshot() {
    // Whatever was asked for is drawn in the next frame.
    evaluate("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => done(true))))");
    const Json shot = call("Page.captureScreenshot", {{"format", "png"}});
    return PngImage::read(decoded(shot.at("data").get<std::string>()));
}

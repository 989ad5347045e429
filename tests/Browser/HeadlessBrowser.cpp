#include "HeadlessBrowser.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

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

HeadlessBrowser::HeadlessBrowser(int width, int height) {
    start(width, height);
    try {
        openWindow(width, height);
    } catch (...) {
        stop();
        throw;
    }
}

std::size_t HeadlessBrowser::openWindow(int width, int height) {
    m_session.clear();
    const Json target = call("Target.createTarget", {{"url", "about:blank"}, {"newWindow", true}});
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

HeadlessBrowser::~HeadlessBrowser() {
    stop();
}

void HeadlessBrowser::stop() {
    ::close(m_toBrowser);
    ::close(m_fromBrowser);
    // Its helpers belong to its process group.
    ::kill(-m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
}

void HeadlessBrowser::start(int width, int height) {
    int commands[2];
    int answers[2];
    if (::pipe2(commands, O_CLOEXEC) != 0 || ::pipe2(answers, O_CLOEXEC) != 0) {
        fail("no pipes");
    }
    const std::string profile = "--user-data-dir=" + m_profile.path();
    const std::string window = "--window-size=" + std::to_string(width) + "," + std::to_string(height);
    m_process = ::fork();
    if (m_process < 0) {
        fail("no process");
    }
    if (m_process == 0) {
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
                profile.c_str(), window.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(commands[0]);
    ::close(answers[1]);
    m_toBrowser = commands[1];
    m_fromBrowser = answers[0];
}

Json HeadlessBrowser::nextMessage() {
    for (;;) {
        if (const auto end = m_received.find('\0'); end != std::string::npos) {
            const Json message = Json::parse(m_received.substr(0, end));
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

void HeadlessBrowser::note(const Json& message) {
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
    const int id = ++m_lastCall;
    Json command = {{"id", id}, {"method", method}, {"params", parameters}};
    if (!m_session.empty()) {
        command["sessionId"] = m_session;
    }
    const std::string text = command.dump() + '\0';
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = ::write(m_toBrowser, text.data() + sent, text.size() - sent);
        if (count <= 0) {
            fail("it does not listen");
        }
        sent += static_cast<std::size_t>(count);
    }
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

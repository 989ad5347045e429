#pragma once

#include "support/PngImage.h"
#include "support/TemporaryFolder.h"

#include <sys/types.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// A real browser without a window, driven as a developer's tools drive it: over two pipes, no network, no port.
///
/// Every operation throws `std::runtime_error` when the browser does not answer in time or refuses.
class HeadlessBrowser {
public:
    /// False where the browser is not installed.
    static bool isInstalled();

    /// Starts it with one empty page.
    HeadlessBrowser(int width, int height);
    ~HeadlessBrowser();
    HeadlessBrowser(const HeadlessBrowser&) = delete;
    HeadlessBrowser& operator=(const HeadlessBrowser&) = delete;

    /// Opens another empty page in a window of its own beside those that there are; returns its number, from 0. All
    /// operations go to it until another one is chosen.
    std::size_t openWindow(int width, int height);
    void chooseWindow(std::size_t number) { m_session = m_sessions.at(number); }

    /// Opens a file from the disk and waits until it is loaded.
    void open(const std::string& file);
    /// The value of an expression in the page.
    nlohmann::json evaluate(const std::string& expression);
    /// Waits until the expression is true.
    void waitFor(const std::string& expression);
    /// Presses and releases the left button, as the hand does.
    void click(double right, double down);
    /// Presses, moves and releases.
    void drag(double right, double down, double toRight, double toDown);
    /// Moves the pointer there, no button pressed.
    void hover(double right, double down) { mouse("mouseMoved", right, down, 0); }
    /// Keys that are held while another one is pressed.
    enum Held { NOTHING = 0, CONTROL = 2, SHIFT = 8 };
    /// Presses and releases a key, by the name that the page sees.
    void press(const std::string& key, Held held = NOTHING);
    /// Gives the page another size.
    void resize(int width, int height);
    /// What the page looks like.
    PngImage screenshot();
    /// Whatever the page or the browser wrote to the console as a warning or an error, every exception that nobody
    /// caught, and every dialog that opened.
    [[nodiscard]] const std::vector<std::string>& complaints() const { return m_complaints; }

private:
    void start(int width, int height);
    void stop();
    /// Without waiting for the answer; the number that it will carry.
    int send(const std::string& method, const nlohmann::json& parameters);
    nlohmann::json call(const std::string& method, const nlohmann::json& parameters);
    nlohmann::json nextMessage();
    void note(const nlohmann::json& message);
    void mouse(const std::string& type, double right, double down, int buttons);

    TemporaryFolder m_profile;
    pid_t m_process = -1;
    int m_toBrowser = -1;
    int m_fromBrowser = -1;
    int m_lastCall = 0;
    std::vector<std::string> m_sessions;
    std::string m_session;  ///< of the page that is chosen
    std::string m_received;
    bool m_isLoaded = false;
    std::vector<std::string> m_complaints;
};

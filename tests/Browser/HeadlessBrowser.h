#pragma once

#include "support/PngImage.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

/// A real browser without a window, driven as a developer's tools drive it: over two pipes, no network, no port.
///
/// Its process, which takes longer to start than most pages take, serves all objects of a program, one after another;
/// each has a profile of its own. One that failed is replaced by a new one.
///
/// Every operation throws `std::runtime_error` when the browser does not answer in time or refuses.
class HeadlessBrowser {
public:
    /// False where the browser is not installed.
    static bool isInstalled();

    /// Starts it, where there is none, and opens one empty page.
    HeadlessBrowser(int width, int height);
    /// Closes all its pages.
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
    class Process;

    static std::unique_ptr<Process>& process();
    void closeAll() noexcept;
    /// Without waiting for the answer; the number that it will carry.
    int send(const std::string& method, const nlohmann::json& parameters);
    nlohmann::json call(const std::string& method, const nlohmann::json& parameters);
    nlohmann::json nextMessage();
    void note(const nlohmann::json& message);
    void mouse(const std::string& type, double right, double down, int buttons);

    std::string m_profile;
    std::vector<std::string> m_sessions;
    std::string m_session;  ///< of the page that is chosen
    bool m_isLoaded = false;
    std::vector<std::string> m_complaints;
};

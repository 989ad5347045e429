#pragma once

#include "HeadlessBrowser.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <optional>

/// The page of `screenmanager view` in a real browser.
namespace view_page {

inline constexpr int WIDTH = 1200;
inline constexpr int HEIGHT = 800;
/// Of a colour that is drawn without light or blending.
inline constexpr int SAME_COLOUR = 2;
inline constexpr PngImage::Colour ORANGE{230, 159, 0};
inline constexpr PngImage::Colour BLUE{86, 180, 233};

inline const std::string EXAMPLES = sourceFolder() + "/examples/";

/// Runs the program; returns its exit code.
inline int runProgram(const std::string& arguments) {
    const int status = std::system((programFile() + " --quiet " + arguments).c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class ViewPageTest : public testing::Test {
protected:
    void SetUp() override {
        if (!HeadlessBrowser::isInstalled()) {
            GTEST_SKIP() << "no browser is installed";
        }
    }

    /// Writes the page of a configuration and opens it.
    HeadlessBrowser& open(const std::string& configuration, const std::string& options = "", int exitCode = 0) {
        const std::string page = m_folder.file("page.html");
        EXPECT_EQ(runProgram("view '" + configuration + "' -o '" + page + "' " + options), exitCode);
        if (!m_browser) {
            m_browser.emplace(WIDTH, HEIGHT);
        }
        m_browser->open(page);
        m_browser->waitFor("performance.getEntriesByName('first picture').length > 0");
        return *m_browser;
    }

    /// Shows nothing but the targets, so that a pixel in the colour of a channel is one of its targets.
    static void showTargetsAlone(HeadlessBrowser& browser) {
        clickAll(browser, "['outlines', 'frusta', 'names and up marks', 'axes', 'eye point', 'none']");
    }

    /// Shows nothing but the screen and its light, as it is painted.
    static void showLightAlone(HeadlessBrowser& browser) {
        clickAll(browser, "['targets', 'outlines', 'frusta', 'names and up marks', 'axes', 'eye point']");
        browser.evaluate(
            "(() => { const range = document.querySelector('input[type=range]'); range.value = 100;"
            "  range.dispatchEvent(new Event('input')); })()");
    }

    /// Clicks the boxes of the panel with these words.
    static void clickAll(HeadlessBrowser& browser, const std::string& words) {
        browser.evaluate("for (const label of document.querySelectorAll('aside label')) { if (" + words +
                         ".includes(label.textContent)) { label.querySelector('input').click(); } }");
    }

    /// The button with these words in a section of the panel, as an expression.
    static std::string buttonIn(const std::string& section, const std::string& words) {
        return "[...[...document.querySelectorAll('aside section')].find((one) => one.querySelector('h2').textContent "
               "=== '" +
               section + "').querySelectorAll('button')].find((one) => one.textContent === '" + words + "')";
    }

    static void pressButton(HeadlessBrowser& browser, const std::string& words) {
        browser.evaluate("[...document.querySelectorAll('button')].find((one) => one.textContent === '" + words +
                         "').click()");
    }

    /// Hides or shows a channel as its box does.
    static void toggle(HeadlessBrowser& browser, const std::string& channel) {
        browser.evaluate("[...document.querySelectorAll('#channels label')].find((one) => one.textContent === '" +
                         channel + "').querySelector('input').click()");
    }

    /// The middle of a dot of that colour: right, down.
    static std::optional<std::pair<double, double>> dotOf(const PngImage& image, const PngImage::Colour& colour) {
        constexpr int NEARLY_SAME = 12;  // the edge of a dot is mixed with what is below it
        constexpr std::array<std::array<std::size_t, 2>, 5> CROSS{{{1, 1}, {0, 1}, {2, 1}, {1, 0}, {1, 2}}};
        for (std::size_t down = 1; down + 1 < image.height; ++down) {
            for (std::size_t right = PANEL; right + 1 < image.width; ++right) {
                const bool isDot = std::all_of(CROSS.begin(), CROSS.end(), [&](const auto& step) {
                    const auto found = image.at(right + step[0] - 1, down + step[1] - 1);
                    return std::abs(found[0] - colour[0]) <= NEARLY_SAME &&
                           std::abs(found[1] - colour[1]) <= NEARLY_SAME &&
                           std::abs(found[2] - colour[2]) <= NEARLY_SAME;
                });
                if (isDot) {
                    return std::pair(static_cast<double>(right), static_cast<double>(down));
                }
            }
        }
        return std::nullopt;
    }

    /// The picture without the panel, which shows the colours of the channels and the state of its buttons.
    static PngImage sceneOf(HeadlessBrowser& browser) { return browser.screenshot().rightOf(PANEL); }

    /// What the page says of what was picked.
    static std::map<std::string, std::string> readout(HeadlessBrowser& browser, const std::string& id = "readout") {
        return browser.evaluate("Object.fromEntries([...document.querySelectorAll('#" + id +
                                " dt')].map((name) => [name.textContent, name.nextSibling.textContent]))");
    }

    /// Counts what is drawn from now on: `drawings` calls, with lines of `lineEnds` ends.
    static void countDrawings(HeadlessBrowser& browser) {
        browser.evaluate(
            "(() => { const gl = WebGL2RenderingContext.prototype; window.drawings = 0; window.lineEnds = 0;"
            "  for (const name of ['drawArrays', 'drawElements']) { const call = gl['real' + name] || gl[name];"
            "    gl['real' + name] = call;"
            "    gl[name] = function (mode, ...rest) { window.drawings += 1;"
            "      window.lineEnds += mode === this.LINES ? rest[name === 'drawArrays' ? 1 : 0] : 0;"
            "      return call.call(this, mode, ...rest); }; } })()");
    }

    /// How many drawings were made since they are counted, once so many further frames are over.
    static int drawingsAfter(HeadlessBrowser& browser, int frames) {
        return browser.evaluate("new Promise((done) => { let left = " + std::to_string(frames) +
                                "; const next = () => (left-- > 0 ? requestAnimationFrame(next) : done(drawings));"
                                " next(); })");
    }

    /// Right edge of the panel; pixels.
    static constexpr std::size_t PANEL = 330;

    TemporaryFolder m_folder;
    std::optional<HeadlessBrowser> m_browser;
};

/// True for what is not the page behind everything.
inline bool isDrawn(const PngImage::Colour& colour) {
    return colour != PngImage::Colour{32, 37, 43};
}

/// The pixels of a kind: their middle, and the least box around them. Right and down, from the top left corner.
struct Spread {
    double count = 0;
    double right = 0;
    double down = 0;
    double least[2] = {1e9, 1e9};
    double most[2] = {-1, -1};
};

template <class IsOne>
[[nodiscard]] Spread spreadOf(const PngImage& image, IsOne&& isOne) {
    Spread spread;
    for (std::size_t y = 0; y < image.height; ++y) {
        for (std::size_t x = 0; x < image.width; ++x) {
            if (isOne(image.at(x, y))) {
                const double place[2] = {static_cast<double>(x), static_cast<double>(y)};
                ++spread.count;
                spread.right += place[0];
                spread.down += place[1];
                for (std::size_t axis = 0; axis < 2; ++axis) {
                    spread.least[axis] = std::min(spread.least[axis], place[axis]);
                    spread.most[axis] = std::max(spread.most[axis], place[axis]);
                }
            }
        }
    }
    spread.right /= spread.count;
    spread.down /= spread.count;
    return spread;
}

/// A wall of four by two metres at y = 5 with a channel on its left part and one on its right part; they share a fifth
/// of it.
inline std::string sharedWall() {
    const std::string channel = "<Resolution width='1920' height='1200'/><ScreenArea bottom='0' top='1' ";
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Flat'><Centre x='0' "
           "y='5' z='0'/><Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector "
           "id='A'><Name>A</Name>" +
           channel + "left='0' right='0.6'/></Projector><Projector id='B'><Name>B</Name>" + channel +
           "left='0.4' right='1'/></Projector></Projectors></Display>";
}

}  // namespace view_page

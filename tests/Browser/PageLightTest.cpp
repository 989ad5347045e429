// The page of `screenmanager view --lit` in a real browser: the light of an export on the screen, read off its pixels.
#include "ViewPage.h"

#include <cmath>

namespace {

using namespace view_page;
using testing::IsEmpty;

class PageLightTest : public ViewPageTest {
protected:
    static constexpr int GREY = 100;
    /// Of the code values of a page; light in between is rounded twice.
    static constexpr int ROUNDING = 2;

    /// Exports a wall of two with a content of checks of that code value and half of it, and opens its page.
    HeadlessBrowser& openLit(const std::string& exportOptions) {
        const std::string display = m_folder.write("wall.xml", sharedWall());
        const std::string content = m_folder.file("content.png");
        writeChecks(content);
        const std::string player = m_folder.file("player");
        EXPECT_EQ(runProgram("export '" + display + "' -o '" + player + "' --force --input screen --content '" +
                             content + "' " + exportOptions),
                  0);
        HeadlessBrowser& browser = open(display, "--lit '" + player + "'");
        waitForLight(browser, "shown");
        clickAll(browser, "['axes', 'eye point']");
        pressButton(browser, "front");
        return browser;
    }

    static void waitForLight(HeadlessBrowser& browser, const std::string& kind) {
        browser.waitFor("document.documentElement.dataset.addedLight === '" + kind + "'");
    }

    /// Ten checks across the wall and five up, of which the first one at the bottom left is dark.
    static void writeChecks(const std::string& file) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = 200;
        image.height = 100;
        image.format = PNG_FORMAT_RGB;
        std::vector<unsigned char> colours;
        for (unsigned int row = 0; row < image.height; ++row) {
            for (unsigned int column = 0; column < image.width; ++column) {
                const bool isDark = (column / 20 + (image.height - 1 - row) / 20) % 2 == 0;
                colours.insert(colours.end(), 3, static_cast<unsigned char>(isDark ? GREY / 2 : GREY));
            }
        }
        ASSERT_NE(png_image_write_to_file(&image, file.c_str(), 0, colours.data(), 0, nullptr), 0);
    }

    /// What the page shows, and where in it the wall is.
    struct Wall {
        PngImage image;
        std::size_t left = 0;
        std::size_t right = 0;
        std::size_t top = 0;
        std::size_t bottom = 0;

        /// @param s, t of the wall, 0 to 1
        [[nodiscard]] int at(double s, double t) const {
            const auto between = [](std::size_t from, std::size_t to, double part) {
                return static_cast<std::size_t>(std::lround(
                    static_cast<double>(from) + part * (static_cast<double>(to) - static_cast<double>(from))));
            };
            const PngImage::Colour colour = image.at(between(left, right, s), between(bottom, top, t));
            EXPECT_NEAR(colour[0], colour[1], ROUNDING);
            EXPECT_NEAR(colour[0], colour[2], ROUNDING);
            return colour[0];
        }
    };

    /// Its edge is drawn as a pale line, in front of a dark page.
    static Wall wallOf(HeadlessBrowser& browser) {
        Wall wall{sceneOf(browser), 0, 0, 0, 0};
        const PngImage& image = wall.image;
        wall.left = image.width;
        wall.top = image.height;
        const PngImage::Colour page = image.at(2, 2);
        for (std::size_t down = 0; down < image.height; ++down) {
            for (std::size_t right = 0; right < image.width; ++right) {
                if (image.at(right, down) != page) {
                    wall.left = std::min(wall.left, right);
                    wall.right = std::max(wall.right, right);
                    wall.top = std::min(wall.top, down);
                    wall.bottom = std::max(wall.bottom, down);
                }
            }
        }
        EXPECT_NEAR(static_cast<double>(wall.right - wall.left) / static_cast<double>(wall.bottom - wall.top), 2, 0.03);
        return wall;
    }

    /// Every check, in its middle, and beside the middle where the light ends, in the tone of the screen.
    /// @param inOverlap how many times the light
    static void expectChecks(const Wall& wall, double inOverlap) {
        const auto shown = [](int code, double times) {
            return 255 * std::pow(times * std::pow(code / 255.0, 2.2), 1 / 2.2);
        };
        for (int row = 0; row < 5; ++row) {
            for (int column = 0; column < 10; ++column) {
                const int code = (row + column) % 2 == 0 ? GREY / 2 : GREY;
                const double times = column == 4 || column == 5 ? inOverlap : 1;
                for (const double beside : {-0.03, 0.0, 0.03}) {
                    const double s = (column + 0.5) / 10 + beside;
                    EXPECT_NEAR(wall.at(s, (row + 0.5) / 5), shown(code, times), ROUNDING) << s << ' ' << row;
                }
            }
        }
    }
};

TEST_F(PageLightTest, BlendedLightIsEvenAllOver) {
    HeadlessBrowser& browser = openLit("");
    expectChecks(wallOf(browser), 1);
    // From the left to the right through the middle of a row nothing but the checks is seen.
    const Wall wall = wallOf(browser);
    for (double s = 0.02; s < 0.98; s += 0.003) {
        const double beside = std::abs(s * 10 - std::round(s * 10));
        const int code = static_cast<int>(s * 10) % 2 == 0 ? GREY / 2 : GREY;
        if (beside > 0.06) {
            EXPECT_NEAR(wall.at(s, 0.5), code, ROUNDING) << s;
        }
    }
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(PageLightTest, WithoutBlendsTheOverlapIsTwiceAsBright) {
    HeadlessBrowser& browser = openLit("--no-blend");
    expectChecks(wallOf(browser), 2);
    EXPECT_THAT(browser.evaluate("document.querySelector('#notes').textContent").get<std::string>(),
                testing::HasSubstr("no blends"));
}

TEST_F(PageLightTest, ThePanelChoosesBetweenLightAndErrors) {
    HeadlessBrowser& browser = openLit("--no-blend");
    const PngImage light = sceneOf(browser);
    clickAll(browser, "['errors of light']");
    waitForLight(browser, "unevenness");
    const Wall uneven = wallOf(browser);
    EXPECT_NEAR(uneven.image.at((uneven.left + uneven.right) / 2, (uneven.top + uneven.bottom) / 2)[0], 255, ROUNDING);
    EXPECT_LE(uneven.image.at((uneven.left + uneven.right) / 2, (uneven.top + uneven.bottom) / 2)[1], ROUNDING);
    EXPECT_NEAR(uneven.at(0.2, 0.5), 128, ROUNDING);
    EXPECT_THAT(browser.evaluate("document.querySelector('#legend').textContent").get<std::string>(),
                testing::AllOf(testing::HasSubstr("a tenth too bright"), testing::HasSubstr("places, one every")));
    clickAll(browser, "['errors of content']");
    waitForLight(browser, "shift");
    EXPECT_LE(wallOf(browser).at(0.2, 0.5), 30) << "black, but for a hundredth of a pixel";
    clickAll(browser, "['by number']");
    EXPECT_NE(sceneOf(browser).bytes, light.bytes);
    clickAll(browser, "['light added up']");
    waitForLight(browser, "shown");
    EXPECT_EQ(sceneOf(browser).bytes, light.bytes);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(PageLightTest, WithoutTheOptionThereIsNoSuchChoice) {
    HeadlessBrowser& browser = open(m_folder.write("wall.xml", sharedWall()));
    EXPECT_FALSE(
        browser.evaluate("[...document.querySelectorAll('aside label')].some((one) => one.textContent === "
                         "'light added up')"));
}

TEST_F(PageLightTest, TheOtherSideOfASheetIsAsGoodAsClear) {
    HeadlessBrowser& browser = openLit("");
    const Wall front = wallOf(browser);
    // Half a turn around, by the keys.
    browser.evaluate("document.querySelector('canvas').focus()");
    for (int i = 0; i < 36; ++i) {
        browser.press("ArrowLeft");
    }
    browser.evaluate("document.activeElement.blur()");
    const Wall behind = wallOf(browser);
    const PngImage::Colour page = behind.image.at(2, 2);
    // Right and left are exchanged: a dark check stands where a bright one does from before.
    const PngImage::Colour seen =
        behind.image.at(behind.left + (behind.right - behind.left) * 3 / 20, (behind.top + behind.bottom) / 2);
    for (std::size_t part = 0; part < page.size(); ++part) {
        EXPECT_NEAR(seen[part], page[part] + 0.14 * (GREY / 2 - page[part]), ROUNDING);
    }
    EXPECT_NEAR(front.at(0.15, 0.5), GREY, ROUNDING);
}

}  // namespace

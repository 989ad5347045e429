// The page of `screenmanager view --lit` in a real browser: the light of an export on the screen, read off its pixels.
#include "ViewPage.h"

#include <cmath>
#include <string>
#include <utility>

namespace {

using namespace view_page;
using testing::IsEmpty;

class PageLightTest : public ViewPageTest {
protected:
    static constexpr int GREY = 100;
    /// Pixels of the content.
    static constexpr unsigned int WIDE = 200;
    static constexpr unsigned int HIGH = 100;
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

    /// Ten checks across the wall and four up, of which the first one at the bottom left is dark. Even numbers, so that
    /// neither side of the wall looks like the other one.
    static void writeChecks(const std::string& file) {
        write(file, [](unsigned int column, unsigned int row) {
            return (column / 20 + (HIGH - 1 - row) / 25) % 2 == 0 ? GREY / 2 : GREY;
        });
    }

    /// Writes a grey picture.
    /// @param codeAt the code value of a column, from the left, and a row, from the top
    template <class CodeAt>
    static void write(const std::string& file, CodeAt&& codeAt) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = WIDE;
        image.height = HIGH;
        image.format = PNG_FORMAT_RGB;
        std::vector<unsigned char> colours;
        for (unsigned int row = 0; row < image.height; ++row) {
            for (unsigned int column = 0; column < image.width; ++column) {
                colours.insert(colours.end(), 3, static_cast<unsigned char>(codeAt(column, row)));
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
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 10; ++column) {
                const int code = (row + column) % 2 == 0 ? GREY / 2 : GREY;
                const double times = column == 4 || column == 5 ? inOverlap : 1;
                for (const double beside : {-0.03, 0.0, 0.03}) {
                    const double s = (column + 0.5) / 10 + beside;
                    EXPECT_NEAR(wall.at(s, (row + 0.5) / 4), shown(code, times), ROUNDING) << s << ' ' << row;
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
            EXPECT_NEAR(wall.at(s, 0.625), code, ROUNDING) << s;
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
    const PngImage::Colour seen = behind.image.at(behind.left + (behind.right - behind.left) * 3 / 20,
                                                  behind.top + (behind.bottom - behind.top) * 3 / 8);
    for (std::size_t part = 0; part < page.size(); ++part) {
        EXPECT_NEAR(seen[part], page[part] + 0.14 * (GREY / 2 - page[part]), ROUNDING);
    }
    EXPECT_NEAR(front.at(0.15, 0.625), GREY, ROUNDING);
}

// From the eye the light is as it is. From the front, which is from outside, the unlit half before it is as good as
// clear and stands before the lit one.
TEST_F(PageLightTest, OfASphereTheInsideIsSeenThroughTheOutside) {
    const std::string display = m_folder.write(
        "sphere.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><EyePoint x='0' "
        "y='0' z='0'/><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='-90' max='90'/></Screen>"
        "<TargetData type='Spherical'/><Projectors><Projector id='A'><Name>A</Name><Resolution width='400' "
        "height='400'/>"
        "<Orientation z='0' x='0' y='0'/><Frustum left='-20' right='20' bottom='-20' "
        "top='20'/></Projector></Projectors>"
        "</Display>");
    const std::string content = m_folder.file("content.png");
    write(content, [](unsigned int, unsigned int) { return GREY; });
    const std::string player = m_folder.file("player");
    ASSERT_EQ(runProgram("export '" + display + "' -o '" + player + "' --force --input equirectangular --content '" +
                         content + "'"),
              0);
    HeadlessBrowser& browser = open(display, "--lit '" + player + "'");
    waitForLight(browser, "shown");
    clickAll(browser, "['axes', 'eye point']");
    const auto middle = [&browser](const std::string& view) {
        pressButton(browser, view);
        const PngImage image = sceneOf(browser);
        return image.at(image.width / 2, image.height / 2);
    };
    const PngImage::Colour inside = middle("eye");
    const PngImage::Colour outside = middle("front");
    for (std::size_t part = 0; part < inside.size(); ++part) {
        EXPECT_NEAR(inside[part], GREY, ROUNDING);
        EXPECT_NEAR(outside[part], (1 - 0.14) * GREY, ROUNDING);
    }
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// Of two boards one behind the other the nearer one alone is seen, whichever is larger. Both show the same content, but
// two projectors light the farther one, past the nearer one.
TEST_F(PageLightTest, WhatStandsBeforeAnotherLitPlaceHidesIt) {
    const auto board = [](double y, double halfWidth, double halfHeight) {
        std::string text;
        for (const auto& [x, z] : {std::pair(-1, -1), {1, -1}, {1, 1}, {-1, 1}}) {
            text += "v " + std::to_string(x * halfWidth) + ' ' + std::to_string(y) + ' ' +
                    std::to_string(z * halfHeight) + '\n';
        }
        return text + "f -4 -3 -2\nf -4 -2 -1\n";
    };
    const auto projector = [](const std::string& id, const std::string& x, const std::string& turn, int half) {
        const std::string number = std::to_string(half);
        return "<Projector id='" + id + "'><Name>" + id + "</Name><Resolution width='200' height='200'/><Position x='" +
               x + "' y='0' z='0'/><Orientation z='" + turn + "' x='0' y='0'/><Frustum left='-" + number + "' right='" +
               number + "' bottom='-" + number + "' top='" + number + "'/></Projector>";
    };
    const std::string display = m_folder.write(
        "board.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Mesh' fileUnit='m'>"
        "<EyePoint x='0' y='0' z='0'/><ContentMesh file='board.obj'/><ImportOrientation up='Z' forward='Y'/></Screen>"
        "<TargetData type='ProjectorCentric'/><Projectors>" +
            projector("Near", "0", "0", 8) + projector("Left", "-5", "45", 8) + projector("Right", "5", "-45", 8) +
            "</Projectors></Display>");
    const std::string content = m_folder.file("content.png");
    write(content, [](unsigned int, unsigned int) { return GREY; });
    const std::string player = m_folder.file("player");
    for (const std::string& mesh : {board(3, 0.5, 0.5) + board(5, 2, 2), board(3, 1.2, 2) + board(5, 0.5, 0.5)}) {
        m_folder.write("board.obj", mesh);
        ASSERT_EQ(runProgram("export '" + display + "' -o '" + player +
                             "' --force --no-blend --input equirectangular --content '" + content + "'"),
                  0);
        HeadlessBrowser& browser = open(display, "--lit '" + player + "'");
        waitForLight(browser, "shown");
        clickAll(browser, "['axes', 'eye point']");
        pressButton(browser, "eye");
        const PngImage image = sceneOf(browser);
        const PngImage::Colour middle = image.at(image.width / 2, image.height / 2);
        for (const int part : middle) {
            EXPECT_NEAR(part, GREY, ROUNDING);
        }
    }
}

}  // namespace

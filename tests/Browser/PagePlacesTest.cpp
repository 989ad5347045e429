// The page of `screenmanager view`: what is seen, pointed at and picked is where it should be.
#include "ViewPage.h"

#include <cmath>
#include <cstdio>

namespace {

using namespace view_page;
using testing::IsEmpty;

bool isWhite(const PngImage::Colour& colour) {
    return colour[0] > 250 && colour[1] > 250 && colour[2] > 250;
}

class PagePlacesTest : public ViewPageTest {
protected:
    /// Points there, coming from the panel, and waits until the page says what light there is.
    static std::map<std::string, std::string> lightAt(HeadlessBrowser& browser, double right, double down) {
        browser.hover(PANEL / 2.0, HEIGHT / 2.0);
        browser.waitFor("document.getElementById('light').hidden");
        browser.hover(right, down);
        browser.waitFor("!document.getElementById('light').hidden");
        return readout(browser, "light");
    }

    /// What the page would still lay out.
    static void hide(HeadlessBrowser& browser, const std::string& elements) {
        browser.evaluate("document.head.append(Object.assign(document.createElement('style'), { textContent: '" +
                         elements + " { visibility: hidden; }' }))");
    }

    /// As often as that, from the view from the front.
    static void pressFromFront(HeadlessBrowser& browser, const std::string& key, int times) {
        pressButton(browser, "front");
        browser.evaluate("document.querySelector('canvas').focus()");
        for (int i = 0; i < times; ++i) {
            browser.press(key);
        }
        // Its frame is drawn as well.
        browser.evaluate("document.activeElement.blur()");
    }
};

// Oracle: the wall of the configuration, which fills its box in the picture.
TEST_F(PagePlacesTest, PointingBesideTheMiddleReadsThatPlace) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    showLightAlone(browser);
    pressButton(browser, "front");
    const Spread wall = spreadOf(sceneOf(browser), isDrawn);
    constexpr std::array<std::array<double, 2>, 2> PLACES{{{0.1, 0.2}, {0.3, 0.9}}};
    for (const auto& [s, t] : PLACES) {
        const auto light = lightAt(browser, PANEL + wall.least[0] + s * (wall.most[0] - wall.least[0]),
                                   wall.most[1] - t * (wall.most[1] - wall.least[1]));
        EXPECT_EQ(light.at("lit by"), "1 projector");
        EXPECT_NEAR(std::stod(light.at("x")), -2 + 4 * s, 0.02);
        EXPECT_NEAR(std::stod(light.at("y")), 5, 0.001);
        EXPECT_NEAR(std::stod(light.at("z")), -1 + 2 * t, 0.02);
        int column = 0;
        int row = 0;
        ASSERT_EQ(std::sscanf(light.at("A").c_str(), "pixel %d, %d;", &column, &row), 2) << light.at("A");
        EXPECT_NEAR(column, 1920 * s / 0.6, 16);
        EXPECT_NEAR(row, 1200 * t, 12);
    }
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// The camera goes the way of the arrow, around the middle of the wall: the eye point, which stands before the wall,
// goes the other way in the picture.
TEST_F(PagePlacesTest, TheArrowsTurnThePictureTheirWay) {
    std::string display = sharedWall();
    display.insert(display.find("<Centre"), "<EyePoint x='0' y='0' z='0'/>");
    HeadlessBrowser& browser = open(m_folder.write("display.xml", display));
    showLightAlone(browser);
    clickAll(browser, "['eye point']");
    hide(browser, ".label");
    const auto eyeFromWall = [&](const std::string& key, int times) {
        pressFromFront(browser, key, times);
        const PngImage image = sceneOf(browser);
        const Spread eye = spreadOf(image, isWhite);
        const Spread wall = spreadOf(image, [](const auto& colour) { return isDrawn(colour) && !isWhite(colour); });
        EXPECT_GT(eye.count, 20);
        return std::pair(eye.right - wall.right, eye.down - wall.down);
    };
    const auto [ahead, level] = eyeFromWall("ArrowLeft", 0);
    EXPECT_NEAR(ahead, 0, 5);
    const double left = eyeFromWall("ArrowLeft", 4).first;
    const double right = eyeFromWall("ArrowRight", 4).first;
    EXPECT_GT(std::abs(left), 20);
    EXPECT_NEAR(left, -right, 5);
    EXPECT_LT(left, 0);
    EXPECT_GT(eyeFromWall("ArrowUp", 4).second, level + 20);
    EXPECT_LT(eyeFromWall("ArrowDown", 4).second, level - 20);
}

// The middle of the picture from the front: of a sphere the place behind, lit on its inside, and before it, for the
// eye, the back of the other half with a target at the same pixel.
TEST_F(PagePlacesTest, OfTwoTargetsTheNearerIsPickedAndTheLightIsThatOnTheInside) {
    const std::string channel =
        "<Resolution width='1920' height='1200'/><Frustum left='-20' right='20' bottom='-20' top='20'/>";
    const std::string display = m_folder.write(
        "sphere.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><EyePoint x='0' "
        "y='0' z='0'/><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='-90' max='90'/></Screen>"
        "<TargetData type='Spherical'/><Projectors><Projector id='A'><Name>Ahead</Name>" +
            channel + "<Orientation z='0' x='0' y='0'/></Projector><Projector id='B'><Name>Behind</Name>" + channel +
            "<Orientation z='180' x='0' y='0'/></Projector></Projectors></Display>");
    HeadlessBrowser& browser = open(display, "--grid 5x5");
    pressButton(browser, "front");
    browser.screenshot();
    browser.evaluate("document.querySelector('canvas').focus()");
    browser.press("Enter");
    const auto target = readout(browser);
    ASSERT_EQ(target.count("channel"), 1U);
    EXPECT_EQ(target.at("channel"), "Behind");
    EXPECT_NEAR(std::stod(target.at("y")), -5, 0.001);
    const auto light = readout(browser, "light");
    EXPECT_EQ(light.at("lit by"), "1 projector");
    EXPECT_EQ(light.count("Ahead"), 1U);
    EXPECT_NEAR(std::stod(light.at("y")), 5, 0.05);
}

// Two routes: what the page returns against the table that the program writes of the same display. Of so many samples
// the page shows every second one only.
TEST_F(PagePlacesTest, APickedSampleOfAnOutlineIsTheOneOfTheTable) {
    const std::string display = m_folder.write("display.xml", sharedWall());
    HeadlessBrowser& browser = open(display, "--boundary 8000");
    clickAll(browser, "['targets', 'frusta', 'names and up marks', 'axes', 'eye point', 'none']");
    pressButton(browser, "front");
    const PngImage image = sceneOf(browser);
    const Spread outline = spreadOf(image, [](const auto& colour) { return colour[0] > colour[2] + 60; });
    ASSERT_GT(outline.count, 100);
    // Its left edge, below the middle.
    browser.click(PANEL + outline.least[0], outline.most[1] - 0.3 * (outline.most[1] - outline.least[1]));
    const auto picked = readout(browser);
    ASSERT_EQ(picked.count("outline sample"), 1U);
    EXPECT_NEAR(std::stod(picked.at("z")), -0.4, 0.1);
    const std::string table = m_folder.file("targets.json");
    ASSERT_EQ(runProgram("targets '" + display + "' --boundary 8000 --format json -o '" + table + "'"), 0);
    const auto samples = nlohmann::json::parse(m_folder.read("targets.json")).at("channels").at(0).at("boundary");
    const nlohmann::json& sample = samples.at(std::stoul(picked.at("outline sample")));
    for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(std::stod(picked.at(std::string(1, "xyz"[axis]))), sample.at(axis).get<double>(), 1e-4);
    }
}

TEST_F(PagePlacesTest, EachViewHoldsTheWholeScreenAndNotMuchElse) {
    HeadlessBrowser& browser = open(EXAMPLES + "dome/display.xml");
    showLightAlone(browser);
    for (const char* view : {"home", "front", "side", "top"}) {
        pressButton(browser, view);
        const PngImage image = sceneOf(browser);
        const Spread dome = spreadOf(image, isDrawn);
        const double size[2] = {static_cast<double>(image.width), static_cast<double>(image.height)};
        double filled = 0;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            EXPECT_GT(dome.least[axis], 2) << view;
            EXPECT_LT(dome.most[axis], size[axis] - 3) << view;
            filled = std::max(filled, (dome.most[axis] - dome.least[axis]) / size[axis]);
        }
        EXPECT_GT(filled, 0.5) << view;
    }
}

// The marks of a scale point outwards, and its numbers stand beyond them.
TEST_F(PagePlacesTest, TheNumbersOfTheScalesStandOutsideOfTheirBox) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    clickAll(browser, "['targets', 'outlines', 'frusta', 'names and up marks', 'eye point', 'none']");
    pressButton(browser, "front");
    hide(browser, ".label");
    const PngImage image = sceneOf(browser);
    const auto numbers = browser.evaluate(
        "[...document.querySelectorAll('.label.tick')].filter((one) => !one.hidden).map((one) => "
        "{ const box = one.getBoundingClientRect(); return [(box.left + box.right) / 2, (box.top + box.bottom) / 2]; "
        "})");
    EXPECT_GE(numbers.size(), 4U);
    // From a number towards the middle of the picture the axis is met at once.
    constexpr int NEAR = 40;
    for (const auto& number : numbers) {
        const double right = number.at(0).get<double>() - PANEL;
        const double down = number.at(1).get<double>();
        const double way[2] = {static_cast<double>(image.width) / 2 - right,
                               static_cast<double>(image.height) / 2 - down};
        const double length = std::hypot(way[0], way[1]);
        bool isMet = false;
        for (int step = 0; step < NEAR; ++step) {
            const auto x = static_cast<std::size_t>(std::lround(right + step * way[0] / length));
            const auto y = static_cast<std::size_t>(std::lround(down + step * way[1] / length));
            isMet = isMet || isDrawn(image.at(x, y)) || isDrawn(image.at(x + 1, y));
        }
        EXPECT_TRUE(isMet) << right << ", " << down;
    }
}

TEST_F(PagePlacesTest, WhatIsPickedIsMarkedUntilItIsNot) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    showTargetsAlone(browser);
    hide(browser, "#readout, #light");
    const auto dot = dotOf(browser.screenshot(), ORANGE);
    ASSERT_TRUE(dot.has_value());
    EXPECT_EQ(spreadOf(sceneOf(browser), isWhite).count, 0);
    browser.click(dot->first, dot->second);
    const Spread mark = spreadOf(sceneOf(browser), isWhite);
    EXPECT_GT(mark.count, 20);
    EXPECT_NEAR(PANEL + mark.right, dot->first, 4);
    EXPECT_NEAR(mark.down, dot->second, 4);
    browser.press("Escape");
    EXPECT_EQ(spreadOf(sceneOf(browser), isWhite).count, 0);
}

// Two routes: the panel against the table that the program writes of the same display.
TEST_F(PagePlacesTest, ThePanelCountsTheTargetsOfEachChannel) {
    const std::string display = EXAMPLES + "lens-cylinder/display.xml";
    HeadlessBrowser& browser = open(display);
    const auto texts = browser.evaluate(
        "[...document.querySelectorAll('#channels li')].map((one) => one.querySelector('small').textContent)");
    const std::string table = m_folder.file("targets.json");
    ASSERT_EQ(runProgram("targets '" + display + "' --format json -o '" + table + "'"), 0);
    const auto channels = nlohmann::json::parse(m_folder.read("targets.json")).at("channels");
    ASSERT_EQ(texts.size(), channels.size());
    std::size_t allMissed = 0;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const std::size_t placed = channels.at(i).at("grid").size();
        const std::size_t missed = channels.at(i).at("missed").at("grid");
        allMissed += missed;
        EXPECT_THAT(
            texts.at(i).get<std::string>(),
            testing::StartsWith(std::to_string(placed) + " of " + std::to_string(placed + missed) + " targets; "));
    }
    EXPECT_GT(allMissed, 0U);
}

}  // namespace

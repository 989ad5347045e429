// The page of `screenmanager view` in a real browser: what a user does with it, and what the user sees.
#include "ViewPage.h"

#include <cmath>
#include <cstdio>

namespace {

using namespace view_page;
using testing::IsEmpty;

TEST_F(ViewPageTest, EveryExampleIsShownWithoutAComplaint) {
    int shown = 0;
    for (const char* example : {"closed-cylinder", "cockpit", "collimated", "curved-wall", "cylinder", "dome",
                                "lens-cylinder", "mesh-rays", "planar-wall", "spherical-dome", "warped-wall"}) {
        HeadlessBrowser& browser = open(EXAMPLES + example + "/display.xml");
        EXPECT_THAT(browser.complaints(), IsEmpty()) << example;
        const PngImage image = sceneOf(browser);
        EXPECT_GT(image.count(ORANGE, SAME_COLOUR), 100U) << example << ": the first channel";
        EXPECT_GT(image.count(BLUE, SAME_COLOUR), 100U) << example << ": the second channel";
        ++shown;
    }
    EXPECT_EQ(shown, 11);
}

TEST_F(ViewPageTest, HidingAChannelTakesItsTargetsAway) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    showTargetsAlone(browser);
    const std::size_t before = sceneOf(browser).count(ORANGE, SAME_COLOUR);
    EXPECT_GT(before, 400U);
    const auto dot = dotOf(browser.screenshot(), ORANGE);
    ASSERT_TRUE(dot.has_value());
    const std::string first =
        browser.evaluate("document.querySelector('#channels label').textContent").get<std::string>();
    toggle(browser, first);
    EXPECT_EQ(sceneOf(browser).count(ORANGE, SAME_COLOUR), 0U);
    browser.click(dot->first, dot->second);
    EXPECT_THAT(readout(browser), testing::Not(testing::Contains(testing::Pair("channel", first))))
        << "what is hidden is not picked";
    toggle(browser, first);
    EXPECT_EQ(sceneOf(browser).count(ORANGE, SAME_COLOUR), before);
    browser.click(dot->first, dot->second);
    EXPECT_THAT(readout(browser), testing::Contains(testing::Pair("channel", first)));
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// Two routes: what the page returns against the table that the program writes of the same display.
TEST_F(ViewPageTest, APickedTargetIsOneOfTheTableAndLiesThere) {
    HeadlessBrowser& browser = open(EXAMPLES + "dome/display.xml");
    showTargetsAlone(browser);
    const auto dot = dotOf(browser.screenshot(), ORANGE);
    ASSERT_TRUE(dot.has_value());
    browser.click(dot->first, dot->second);
    const auto picked = readout(browser);
    ASSERT_EQ(picked.count("channel"), 1U);
    EXPECT_EQ(picked.at("channel"), "Lower left");
    EXPECT_EQ(picked.at("projector"), "020000000201");

    const std::string table = m_folder.file("targets.json");
    ASSERT_EQ(runProgram("targets '" + EXAMPLES + "dome/display.xml' --format json -o '" + table + "'"), 0);
    const auto channel = nlohmann::json::parse(m_folder.read("targets.json")).at("channels").at(0);
    int found = 0;
    for (const auto& target : channel.at("grid")) {
        if (std::to_string(target.at("column").get<int>()) == picked.at("column") &&
            std::to_string(target.at("row").get<int>()) == picked.at("row")) {
            ++found;
            double u = 0;
            double v = 0;
            ASSERT_EQ(std::sscanf(picked.at("u, v").c_str(), "%lf, %lf", &u, &v), 2) << picked.at("u, v");
            EXPECT_NEAR(u, target.at("u").get<double>(), 0.5e-4);
            EXPECT_NEAR(v, target.at("v").get<double>(), 0.5e-4);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const std::string text = picked.at(std::string(1, "xyz"[axis]));
                // As many digits as anyone measures of a dome of some metres.
                EXPECT_NEAR(std::stod(text), target.at("point").at(axis).get<double>(), 0.5e-4) << text;
                EXPECT_THAT(text, testing::MatchesRegex("-?[0-9]+[.][0-9]+ m"));
                EXPECT_LE(text.size(), std::string("-12.3456 m").size()) << text;
            }
        }
    }
    EXPECT_EQ(found, 1);
    browser.click(PANEL + 5, HEIGHT - 5);
    EXPECT_THAT(readout(browser), IsEmpty()) << "nothing stands in the corner";
}

TEST_F(ViewPageTest, DraggingTurnsThePictureAndPicksNothing) {
    HeadlessBrowser& browser = open(EXAMPLES + "cylinder/display.xml");
    const PngImage before = sceneOf(browser);
    browser.drag(700, 400, 800, 430);
    const PngImage after = sceneOf(browser);
    EXPECT_NE(before.bytes, after.bytes);
    EXPECT_THAT(readout(browser), IsEmpty());
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(ViewPageTest, TheMeasuredScreenGivesWayToTheContent) {
    HeadlessBrowser& browser = open(EXAMPLES + "curved-wall/display.xml");
    const PngImage measured = sceneOf(browser);
    browser.evaluate(
        "[...document.querySelectorAll('aside label')].find((one) => one.textContent === 'content')"
        ".querySelector('input').click()");
    const PngImage content = sceneOf(browser);
    EXPECT_NE(measured.bytes, content.bytes);
}

/// A flat display of one channel.
std::string flatDisplay(const std::string& name, const std::string& origin = "0", const std::string& ahead = "5") {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Flat'><EyePoint x='" +
           origin + "' y='" + origin + "' z='" + origin + "'/><Centre x='" + origin + "' y='" + ahead + "' z='" +
           origin +
           "'/><Size width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors><Projector "
           "id='A'><Name>" +
           name +
           "</Name><Resolution width='1920' height='1200'/><ScreenArea left='0' right='1' bottom='0' top='1'/>"
           "</Projector></Projectors></Display>";
}

/// The elements of the page, in their order.
std::string elementsOf(HeadlessBrowser& browser) {
    return browser.evaluate("[...document.querySelectorAll('*')].map((element) => element.localName).join(' ')");
}

// Each would run, or open a dialog, if it reached the page as HTML or ended the element of the data. Oracle: the
// elements of the same display with a plain name.
TEST_F(ViewPageTest, NamesAreTextWhateverTheyHold) {
    const std::string plain = elementsOf(open(m_folder.write("display.xml", flatDisplay("Plain"))));
    const std::pair<const char*, const char*> names[] = {
        {"&lt;/script&gt;&lt;script&gt;alert(1)&lt;/script&gt;", "</script><script>alert(1)</script>"},
        {"&lt;img src=x onerror='alert(1)'&gt;", "<img src=x onerror='alert(1)'>"},
        {"&lt;svg onload=alert(1)&gt;", "<svg onload=alert(1)>"},
        {"&quot; autofocus onfocus=alert(1) x=&quot;", "\" autofocus onfocus=alert(1) x=\""},
        {"&lt;!-- &lt;script&gt;alert(1)", "<!-- <script>alert(1)"},
        {"&#39;);alert(1);(&#39;", "');alert(1);('"},
        {"line&#10;break&#13;&#9;tab", "line\nbreak\r\ttab"},
        {"\u2028alert(1)\u2029", "\u2028alert(1)\u2029"},
        {"${alert(1)} {{alert(1)}}", "${alert(1)} {{alert(1)}}"}};
    int shown = 0;
    for (const auto& [written, name] : names) {
        HeadlessBrowser& browser = open(m_folder.write("display.xml", flatDisplay(written)));
        EXPECT_EQ(elementsOf(browser), plain) << name;
        EXPECT_EQ(browser.evaluate("document.querySelector('#channels label').textContent"), name);
        EXPECT_EQ(browser.evaluate("document.querySelector('.label.channel').textContent"), name);
        EXPECT_THAT(browser.complaints(), IsEmpty()) << name;
        ++shown;
    }
    EXPECT_EQ(shown, 9);
}

TEST_F(ViewPageTest, TheNameOfTheFileIsTextToo) {
    const std::string name = "<img src=x onerror=alert(1)> \"&amp;.xml";
    HeadlessBrowser& browser = open(m_folder.write(name, flatDisplay("Plain")));
    const std::string plain = elementsOf(browser);
    EXPECT_EQ(browser.evaluate("document.title"), m_folder.file(name));
    EXPECT_EQ(browser.evaluate("document.querySelector('h1').textContent"), m_folder.file(name));
    EXPECT_EQ(elementsOf(open(m_folder.write("display.xml", flatDisplay("Plain")))), plain);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// The other way round: what the test would see if a name did run.
TEST_F(ViewPageTest, ADialogWouldBeSeen) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", flatDisplay("Plain")));
    browser.evaluate("alert('seen')");
    EXPECT_THAT(browser.complaints(), testing::ElementsAre("a dialog: seen"));
}

TEST_F(ViewPageTest, NothingToShowIsSaid) {
    const std::string file = m_folder.write("display.xml", "<Display version='1'><Units native='m'/></Display>");
    HeadlessBrowser& browser = open(file, "", 1);
    const std::string notes = browser.evaluate("document.querySelector('#notes').textContent");
    EXPECT_THAT(notes, testing::HasSubstr("describes no screen"));
    EXPECT_THAT(notes, testing::HasSubstr("has no projectors"));
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(ViewPageTest, AScreenWithoutChannelsIsShown) {
    HeadlessBrowser& browser = open(EXAMPLES + "empty-wall/display.xml", "", 1);
    EXPECT_THAT(browser.evaluate("document.querySelector('#notes').textContent").get<std::string>(),
                testing::HasSubstr("no projectors"));
    const PngImage with = sceneOf(browser);
    browser.evaluate(
        "[...document.querySelectorAll('aside label')].find((one) => one.textContent === 'none')"
        ".querySelector('input').click()");
    EXPECT_NE(with.bytes, sceneOf(browser).bytes);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// Seven digits, which is what a graphics processor has, would not tell its targets apart.
TEST_F(ViewPageTest, FarFromTheOriginATargetIsStillPickedToItsLastDigit) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", flatDisplay("Far", "1e9", "1000000005")));
    showTargetsAlone(browser);
    const auto dot = dotOf(browser.screenshot(), ORANGE);
    ASSERT_TRUE(dot.has_value());
    browser.click(dot->first, dot->second);
    const auto picked = readout(browser);
    ASSERT_EQ(picked.count("column"), 1U);
    const double column = std::stod(picked.at("column"));
    const double row = std::stod(picked.at("row"));
    // Of the last digit that is shown.
    constexpr double ROUNDING = 0.51e-4;
    EXPECT_NEAR(std::stod(picked.at("x")) - 1e9, -2 + 4 * column / 15, ROUNDING);
    EXPECT_NEAR(std::stod(picked.at("y")) - 1e9, 5, ROUNDING);
    EXPECT_NEAR(std::stod(picked.at("z")) - 1e9, 1 - 2 * row / 9, ROUNDING);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(ViewPageTest, TextsOfTheScalesCoverNoOther) {
    HeadlessBrowser& browser = open(EXAMPLES + "warped-wall/display.xml");
    for (const char* view : {"home", "front", "side", "top"}) {
        browser.evaluate("[...document.querySelectorAll('aside button')].find((one) => one.textContent === '" +
                         std::string(view) + "').click()");
        browser.screenshot();
        const auto answer = browser.evaluate(
            "(() => { const texts = [...document.querySelectorAll('.label.tick, .label.axis')]"
            "    .filter((one) => !one.hidden).map((one) => [one.textContent, one.getBoundingClientRect()]);"
            "  const covers = (a, b) => a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;"
            "  return { shown: texts.length, covering: texts.flatMap(([name, box], i) => texts.slice(i + 1)"
            "    .filter(([, other]) => covers(box, other)).map(([other]) => `${name} and ${other}`)) }; })()");
        EXPECT_GE(answer.at("shown"), 6) << view;
        EXPECT_THAT(answer.at("covering"), IsEmpty()) << view << answer.at("covering");
    }
}

/// Pixels in which one light is much stronger than another: 0 red, 1 green, 2 blue.
std::size_t countWhere(const PngImage& image, std::size_t strong, std::size_t weak) {
    std::size_t count = 0;
    for (std::size_t down = 0; down < image.height; ++down) {
        for (std::size_t right = 0; right < image.width; ++right) {
            const auto colour = image.at(right, down);
            count += colour[strong] > colour[weak] + 60 ? 1U : 0U;
        }
    }
    return count;
}

// Oracle: the areas of the configuration. The wall is seen squarely, so that its parts in the picture are those on it.
TEST_F(ViewPageTest, TheScreenIsShadedByTheNumberOfChannelsUpToTheBordersOfTheLight) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    EXPECT_EQ(browser.evaluate("[...document.querySelectorAll('#legend li')].map((one) => one.textContent).join('; ')"),
              "1 projector, 80 % of the screen; 2 projectors, 20 % of the screen");
    showLightAlone(browser);
    pressButton(browser, "front");
    PngImage image = sceneOf(browser);
    const auto one = static_cast<double>(countWhere(image, 2, 0));
    const auto two = static_cast<double>(countWhere(image, 0, 2));
    EXPECT_GT(one, 10000);
    EXPECT_NEAR(two / (one + two), 0.2, 0.005);
    // Without the second channel nothing is lit twice.
    toggle(browser, "B");
    image = sceneOf(browser);
    EXPECT_NEAR(static_cast<double>(countWhere(image, 2, 0)) / (one + two), 0.6, 0.01);
    EXPECT_EQ(countWhere(image, 0, 2), 0U);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(ViewPageTest, ShadedByChannelTheScreenHasTheColoursOfTheChannels) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    clickAll(browser, "['by channel']");
    EXPECT_EQ(browser.evaluate("[...document.querySelectorAll('#legend li')].map((one) => one.textContent).join('; ')"),
              "A, 60 % of the screen; B, 60 % of the screen; Stripes: several channels.");
    showLightAlone(browser);
    pressButton(browser, "front");
    const PngImage image = sceneOf(browser);
    // The colour of the first channel is orange, that of the second a light blue; each fills half of the stripes.
    const auto first = static_cast<double>(countWhere(image, 0, 2));
    const auto second = static_cast<double>(countWhere(image, 2, 0));
    EXPECT_NEAR(first / (first + second), 0.5, 0.02);
    clickAll(browser, "['plain']");
    EXPECT_EQ(countWhere(sceneOf(browser), 0, 2), 0U);
}

// Two routes: the legend of the page against the report of the coverage.
TEST_F(ViewPageTest, TheLegendHasTheNumbersOfTheCoverage) {
    HeadlessBrowser& browser = open(EXAMPLES + "lens-cylinder/display.xml");
    const std::string report = m_folder.file("coverage.json");
    ASSERT_EQ(runProgram("coverage --json '" + EXAMPLES + "lens-cylinder/display.xml' -o '" + report + "'"), 0);
    const auto coverage = nlohmann::json::parse(m_folder.read("coverage.json"));
    const std::string legend = browser.evaluate("document.querySelector('#legend li').textContent");
    ASSERT_THAT(legend, testing::StartsWith("no projector, "));
    const double dark = std::stod(legend.substr(std::string("no projector, ").size()));
    const auto& lit = coverage.at("litBy");
    EXPECT_NEAR(dark, 100 * lit.at(0).at("partOfScreen").get<double>(), 0.06);
    EXPECT_GT(dark, 1);
}

TEST_F(ViewPageTest, PointingAtTheScreenReadsChannelsPixelsAndTheirSize) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    pressButton(browser, "front");
    browser.screenshot();
    const double middle = browser.evaluate(
        "(() => { const box = document.querySelector('canvas').getBoundingClientRect(); return box.left + box.width / "
        "2; "
        "})()");
    browser.hover(middle, HEIGHT / 2.0);
    browser.waitFor("!document.getElementById('light').hidden");
    const auto light = readout(browser, "light");
    EXPECT_EQ(light.at("lit by"), "2 projectors");
    // The middle of the wall is at 5/6 of the left picture and at 1/6 of the right one.
    EXPECT_THAT(light.at("A"), testing::MatchesRegex("pixel (1599|1600|1601), (599|600); 1[.]25 x 1[.]67 mm"));
    EXPECT_THAT(light.at("B"), testing::MatchesRegex("pixel (319|320|321), (599|600); 1[.]25 x 1[.]67 mm"));
    EXPECT_NEAR(std::stod(light.at("x")), 0, 0.01);
    EXPECT_NEAR(std::stod(light.at("y")), 5, 0.0002);
    browser.hover(middle, 4);
    browser.waitFor("document.getElementById('light').hidden");
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(ViewPageTest, OnAPhoneThePanelFoldsAway) {
    m_browser.emplace(390, 844);
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    const auto heightOf = [&browser](const std::string& element) {
        return browser.evaluate("document.querySelector('" + element + "').getBoundingClientRect().height")
            .get<double>();
    };
    EXPECT_EQ(browser.evaluate("document.documentElement.scrollWidth"), 390) << "nothing stands out sideways";
    EXPECT_EQ(heightOf("#body"), 0);
    EXPECT_GT(heightOf("canvas"), 600);
    EXPECT_GE(heightOf("#fold"), 44) << "large enough for a finger";
    pressButton(browser, "Show panel");
    EXPECT_GT(heightOf("#body"), 200);
    EXPECT_GT(heightOf("main"), 250) << "the picture stays in sight";
    pressButton(browser, "Hide panel");
    EXPECT_EQ(heightOf("#body"), 0);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(ViewPageTest, AfterTheLossOfItsContextThePageSaysSoAndDrawsAgain) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    const PngImage before = sceneOf(browser);
    browser.evaluate(
        "window.loss = document.querySelector('canvas').getContext('webgl2').getExtension('WEBGL_lose_context');"
        "window.loss.loseContext()");
    browser.waitFor("!document.getElementById('loss').hidden");
    EXPECT_THAT(browser.evaluate("document.getElementById('loss').textContent").get<std::string>(),
                testing::HasSubstr("reload"));
    EXPECT_NE(sceneOf(browser).bytes, before.bytes);
    browser.evaluate("window.loss.restoreContext()");
    browser.waitFor("document.getElementById('loss').hidden");
    EXPECT_EQ(sceneOf(browser).bytes, before.bytes);
}

TEST_F(ViewPageTest, TheKeyboardTurnsThePictureAndReadsItsMiddle) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    pressButton(browser, "front");
    browser.evaluate("document.querySelector('canvas').focus()");
    const PngImage before = sceneOf(browser);
    browser.press("Enter");
    EXPECT_EQ(readout(browser, "light").at("lit by"), "2 projectors");
    browser.press("Escape");
    EXPECT_THAT(readout(browser, "light"), IsEmpty());
    EXPECT_EQ(sceneOf(browser).bytes, before.bytes);
    browser.press("ArrowLeft");
    EXPECT_NE(sceneOf(browser).bytes, before.bytes);
    browser.press("ArrowRight");
    browser.press("+");
    EXPECT_NE(sceneOf(browser).bytes, before.bytes);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// For whoever measures; no test depends on the time that it takes.
TEST_F(ViewPageTest, ThePageTellsWhenItsFirstPictureWasThere) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    const std::string told = browser.evaluate("document.documentElement.dataset.firstPicture");
    EXPECT_GT(std::stod(told), 0);
    EXPECT_GE(browser.evaluate("performance.now()").get<double>(), std::stod(told));
}

}  // namespace

// The page of `screenmanager view`: each of its controls does what it says, and nothing is drawn in vain.
#include "ViewPage.h"

namespace {

using namespace view_page;
using testing::IsEmpty;
using testing::Not;

class PageControlsTest : public ViewPageTest {
protected:
    static nlohmann::json boxes(HeadlessBrowser& browser) {
        return browser.evaluate("[...document.querySelectorAll('#channels input')].map((one) => one.checked)");
    }

    static void chooseCanvas(HeadlessBrowser& browser) { browser.evaluate("document.querySelector('canvas').focus()"); }

    /// A wall with as many channels beside one another.
    static std::string wallOf(int channels) {
        std::string projectors;
        for (int i = 0; i < channels; ++i) {
            const std::string number = std::to_string(i + 1);
            projectors += "<Projector id='P" + number + "'><Name>Channel " + number +
                          "</Name><Resolution width='800' height='600'/><ScreenArea left='" +
                          std::to_string(static_cast<double>(i) / channels) + "' right='" +
                          std::to_string(static_cast<double>(i + 1) / channels) + "' bottom='0' top='1'/></Projector>";
        }
        return "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Centre x='0' y='5' "
               "z='0'/><Size width='18' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>" +
               projectors + "</Projectors></Display>";
    }
};

TEST_F(PageControlsTest, AnIdlePageDrawsNothing) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    browser.screenshot();
    countDrawings(browser);
    EXPECT_EQ(drawingsAfter(browser, 60), 0);
    // Reading the light under a pointer draws nothing either; turning does, and then rests.
    browser.hover(880, 300);
    browser.waitFor("!document.getElementById('light').hidden");
    EXPECT_EQ(drawingsAfter(browser, 20), 0);
    browser.drag(700, 400, 760, 430);
    const int drawn = drawingsAfter(browser, 20);
    EXPECT_GT(drawn, 0);
    EXPECT_EQ(drawingsAfter(browser, 60), drawn) << "no turning on by itself";
}

TEST_F(PageControlsTest, OfTwoPagesSideBySideOnlyTheOneThatIsTurnedDraws) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    const std::size_t second = browser.openWindow(WIDTH, HEIGHT);
    browser.open(m_folder.file("page.html"));
    browser.waitFor("performance.getEntriesByName('first picture').length > 0");
    for (const std::size_t window : {std::size_t{0}, second}) {
        browser.chooseWindow(window);
        EXPECT_GT(sceneOf(browser).count(ORANGE, SAME_COLOUR), 100U) << window;
        countDrawings(browser);
    }
    browser.drag(700, 400, 800, 430);
    EXPECT_GT(drawingsAfter(browser, 20), 0);
    browser.chooseWindow(0);
    EXPECT_EQ(drawingsAfter(browser, 60), 0);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(PageControlsTest, EachKeyDoesWhatItStandsFor) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    showLightAlone(browser);
    chooseCanvas(browser);
    browser.press("Home");
    const PngImage home = sceneOf(browser);
    const auto lit = [&browser] {
        const PngImage image = sceneOf(browser);
        return image.bytes.size() / 3 - image.count({32, 37, 43}, 0);
    };
    const std::size_t atHome = lit();
    browser.press("+");
    EXPECT_GT(lit(), atHome + atHome / 10) << "nearer";
    browser.press("Home");
    EXPECT_EQ(sceneOf(browser).bytes, home.bytes);
    browser.press("-");
    EXPECT_LT(lit(), atHome - atHome / 10) << "farther";
    browser.press("Home");
    std::vector<decltype(home.bytes)> views{home.bytes};
    for (const HeadlessBrowser::Held held : {HeadlessBrowser::NOTHING, HeadlessBrowser::SHIFT}) {
        for (const char* key : {"ArrowLeft", "ArrowRight", "ArrowUp", "ArrowDown"}) {
            browser.press(key, held);
            views.push_back(sceneOf(browser).bytes);
            browser.press("Home");
            EXPECT_EQ(sceneOf(browser).bytes, home.bytes) << key;
        }
    }
    std::sort(views.begin(), views.end());
    EXPECT_EQ(std::unique(views.begin(), views.end()), views.end()) << "two keys do the same";
    browser.press("ArrowLeft", HeadlessBrowser::CONTROL);
    EXPECT_EQ(sceneOf(browser).bytes, home.bytes) << "that is the browser's";
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

/// Where the light of the screen stands in the picture, on the average: right, down.
std::pair<double, double> middleOfLight(const PngImage& image) {
    double right = 0;
    double down = 0;
    double count = 0;
    for (std::size_t y = 0; y < image.height; ++y) {
        for (std::size_t x = 0; x < image.width; ++x) {
            if (image.at(x, y) != PngImage::Colour{32, 37, 43}) {
                right += static_cast<double>(x);
                down += static_cast<double>(y);
                ++count;
            }
        }
    }
    return {right / count, down / count};
}

TEST_F(PageControlsTest, WithShiftTheArrowsMoveThePictureTheirWay) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    showLightAlone(browser);
    pressButton(browser, "front");
    chooseCanvas(browser);
    const auto start = middleOfLight(sceneOf(browser));
    const auto moved = [&](const char* key) {
        browser.press(key, HeadlessBrowser::SHIFT);
        const auto end = middleOfLight(sceneOf(browser));
        pressButton(browser, "front");
        chooseCanvas(browser);
        return std::pair(end.first - start.first, end.second - start.second);
    };
    // The camera goes the way of the arrow, and the picture the other way.
    const auto left = moved("ArrowLeft");
    const auto right = moved("ArrowRight");
    EXPECT_GT(left.first, 10);
    EXPECT_NEAR(left.first, -right.first, 3);
    EXPECT_NEAR(left.second, 0, 3);
    const auto up = moved("ArrowUp");
    const auto down = moved("ArrowDown");
    EXPECT_GT(up.second, 10);
    EXPECT_NEAR(up.second, -down.second, 3);
    EXPECT_NEAR(up.first, 0, 3);
}

TEST_F(PageControlsTest, OneChannelAloneAllAndNone) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    browser.evaluate("[...document.querySelectorAll('#channels button')][1].click()");
    EXPECT_EQ(boxes(browser), nlohmann::json::parse("[false, true]"));
    showTargetsAlone(browser);
    EXPECT_EQ(sceneOf(browser).count(ORANGE, SAME_COLOUR), 0U);
    EXPECT_GT(sceneOf(browser).count(BLUE, SAME_COLOUR), 100U);
    browser.evaluate(buttonIn("Channels", "none") + ".click()");
    EXPECT_EQ(boxes(browser), nlohmann::json::parse("[false, false]"));
    EXPECT_EQ(sceneOf(browser).count(BLUE, SAME_COLOUR), 0U);
    browser.evaluate(buttonIn("Channels", "all") + ".click()");
    EXPECT_EQ(boxes(browser), nlohmann::json::parse("[true, true]"));
    EXPECT_GT(sceneOf(browser).count(ORANGE, SAME_COLOUR), 100U);
}

TEST_F(PageControlsTest, TheLightThatIsReadIsThatOfTheChannelsShown) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    pressButton(browser, "front");
    toggle(browser, "B");
    browser.screenshot();
    const double middle = browser.evaluate(
        "(() => { const box = document.querySelector('canvas').getBoundingClientRect();"
        " return box.left + box.width / 2; })()");
    browser.hover(middle, HEIGHT / 2.0);
    browser.waitFor("!document.getElementById('light').hidden");
    const auto light = readout(browser, "light");
    EXPECT_EQ(light.at("lit by"), "1 projector");
    EXPECT_EQ(light.count("A"), 1U);
    EXPECT_EQ(light.count("B"), 0U);
    // Off the picture, over the panel, nothing is read any more.
    browser.hover(PANEL / 2.0, HEIGHT / 2.0);
    browser.waitFor("document.getElementById('light').hidden");
}

TEST_F(PageControlsTest, EachBoxTakesItsOwnThingsAway) {
    HeadlessBrowser& browser = open(EXAMPLES + "collimated/display.xml");
    for (const std::string box :
         {"targets", "outlines", "frusta", "names and up marks", "eye point", "mirror", "axes"}) {
        const PngImage with = sceneOf(browser);
        clickAll(browser, "['" + box + "']");
        EXPECT_NE(sceneOf(browser).bytes, with.bytes) << box;
        clickAll(browser, "['" + box + "']");
        EXPECT_EQ(sceneOf(browser).bytes, with.bytes) << box;
    }
}

TEST_F(PageControlsTest, TheOpacityIsThatOfTheSlider) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", sharedWall()));
    showLightAlone(browser);
    pressButton(browser, "front");
    const auto middle = [&browser] {
        const PngImage image = sceneOf(browser);
        return image.at(image.width / 2, image.height / 2);
    };
    const auto opaque = middle();
    browser.evaluate(
        "(() => { const range = document.querySelector('input[type=range]'); range.value = 50;"
        "  range.dispatchEvent(new Event('input')); })()");
    const auto half = middle();
    constexpr PngImage::Colour BACKGROUND{32, 37, 43};
    for (std::size_t light = 0; light < 3; ++light) {
        EXPECT_NEAR(half[light], (opaque[light] + BACKGROUND[light]) / 2.0, 2) << light;
    }
}

TEST_F(PageControlsTest, AViewThatNobodyChangedFitsThePictureWhateverItsSize) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    browser.resize(900, 500);
    const auto refitted = browser.screenshot().bytes;
    pressButton(browser, "home");
    browser.evaluate("document.activeElement.blur()");
    EXPECT_EQ(browser.screenshot().bytes, refitted);
    browser.drag(600, 300, 660, 320);
    browser.resize(WIDTH, HEIGHT);
    const PngImage own = sceneOf(browser);
    pressButton(browser, "home");
    EXPECT_NE(sceneOf(browser).bytes, own.bytes) << "a view of one's own stays";
}

TEST_F(PageControlsTest, OnAPhoneTheLightIsSeenBetweenTheTargets) {
    m_browser.emplace(390, 844);
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    const auto lit = [&browser] {
        const PngImage image = browser.screenshot();
        std::size_t blue = 0;
        for (std::size_t down = 0; down < image.height; ++down) {
            for (std::size_t right = 0; right < image.width; ++right) {
                const auto colour = image.at(right, down);
                blue += colour[0] < 40 && colour[2] > 90 ? 1U : 0U;
            }
        }
        return static_cast<double>(blue);
    };
    const double covered = lit();
    clickAll(browser, "['targets']");
    EXPECT_GT(covered, 0.75 * lit());
}

TEST_F(PageControlsTest, TheWordsOfALabelCoverNoOther) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", wallOf(24)));
    for (const char* view : {"home", "front", "side"}) {
        pressButton(browser, view);
        browser.screenshot();
        const auto found = browser.evaluate(
            "(() => { const labels = [...document.querySelectorAll('main .label.channel')].filter((one) => !one.hidden)"
            "    .map((one) => [one.classList.contains('short'), one.getBoundingClientRect(), one.textContent]);"
            "  const covers = (a, b) => a.left < b.right - 1 && b.left < a.right - 1 && a.top < b.bottom - 1 && b.top "
            "< "
            "    a.bottom - 1;"
            "  return { shown: labels.length, covering: labels.flatMap(([isShort, box, text]) => isShort ? [] : labels"
            "    .filter(([, other, name]) => name !== text && covers(box, other)).map(([, , name]) => text + ' and ' "
            "+ "
            "    name)) }; })()");
        EXPECT_GE(found.at("shown"), 20) << view;
        EXPECT_THAT(found.at("covering"), IsEmpty()) << view << found.at("covering");
    }
}

// Two channels have one colour: number, hatching and dark middles keep them apart.
TEST_F(PageControlsTest, MoreChannelsThanColoursStayApart) {
    HeadlessBrowser& browser = open(m_folder.write("display.xml", wallOf(18)));
    const auto textsOf = [&browser](const std::string& what) {
        return browser.evaluate("[...document.querySelectorAll('" + what + "')].map((one) => one.dataset.number)");
    };
    nlohmann::json numbers = nlohmann::json::array();
    for (int i = 1; i <= 18; ++i) {
        numbers.push_back(std::to_string(i));
    }
    EXPECT_EQ(textsOf("#channels .swatch"), numbers);
    EXPECT_EQ(textsOf("main .label.channel"), numbers);
    clickAll(browser, "['by channel']");
    EXPECT_EQ(textsOf("#legend .swatch"), numbers);
    EXPECT_EQ(browser.evaluate("[...document.querySelectorAll('#legend .swatch')].map((one, i) => "
                               "one.classList.contains('hatched') ? i : -1).filter((i) => i >= 0)"),
              nlohmann::json::parse("[16, 17]"));
    // The same channel place by place: the seventeenth has the colour of the first, and darker lines in it.
    showLightAlone(browser);
    pressButton(browser, "front");
    const auto coloursOf = [&](int channel) {
        browser.evaluate("[...document.querySelectorAll('#channels button')][" + std::to_string(channel) + "].click()");
        const PngImage image = sceneOf(browser);
        std::map<PngImage::Colour, std::size_t> colours;
        for (std::size_t down = 0; down < image.height; ++down) {
            for (std::size_t right = 0; right < image.width; ++right) {
                const auto colour = image.at(right, down);
                if (colour[0] > colour[2] + 30) {
                    ++colours[colour];
                }
            }
        }
        std::size_t bright = 0;
        std::size_t dark = 0;
        for (const auto& [colour, count] : colours) {
            (colour[0] > 160 ? bright : dark) += count;
        }
        return std::pair(bright, dark);
    };
    const auto first = coloursOf(0);
    const auto seventeenth = coloursOf(16);
    EXPECT_GT(first.first, 500U);
    EXPECT_LT(first.second, first.first / 20);
    EXPECT_GT(seventeenth.first, 500U);
    EXPECT_NEAR(static_cast<double>(seventeenth.second) / static_cast<double>(seventeenth.first), 0.25, 0.1);
}

// Where the outline is dashed the rim beside it is left out; without an outline it is dashed itself, in many pieces.
TEST_F(PageControlsTest, PastTheEdgeOfTheScreenARimIsDrawnAsTheSceneHasIt) {
    const std::string dome = m_folder.write(
        "dome.xml",
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'><Radius "
        "value='5'/><Azimuth min='-180' max='180'/><Elevation min='0' max='90'/></Screen><TargetData type='Spherical'/>"
        "<Projectors><Projector id='A'><Name>A</Name><Resolution width='1920' height='1200'/><Orientation z='0' x='0' "
        "y='0'/><Frustum left='-20' right='20' bottom='-20' top='30'/></Projector></Projectors></Display>");
    const auto endsOfFrusta = [&](const std::string& options) {
        HeadlessBrowser& browser = open(dome, options);
        const auto ends = [&browser] {
            browser.drag(700, 400, 706, 400);
            pressButton(browser, "home");
            // One drawing is counted: those that were due before are over.
            countDrawings(browser);
            drawingsAfter(browser, 5);
            countDrawings(browser);
            clickAll(browser, "['eye point']");
            drawingsAfter(browser, 5);
            return browser.evaluate("lineEnds").get<int>();
        };
        const int with = ends();
        clickAll(browser, "['frusta']");
        return with - ends();
    };
    const int outlined = endsOfFrusta("--boundary 16");
    const int bare = endsOfFrusta("--boundary 0");
    EXPECT_GT(outlined, 10);
    EXPECT_GT(bare, outlined + 20);
}

}  // namespace

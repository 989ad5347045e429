// The page of `screenmanager view` of a fit: its residuals on the screen and in the picture of the chosen channel.
#include "ViewPage.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <iterator>
#include <sstream>
#include <vector>

namespace {

using namespace view_page;
using nlohmann::json;
using testing::IsEmpty;

class PageResidualsTest : public ViewPageTest {
protected:
    /// The page of a fit of the wall, of which one place in row 20 of the table was measured wrongly.
    HeadlessBrowser& openFit() {
        const std::string display = EXAMPLES + "planar-wall/display.xml";
        const std::string table = m_folder.file("measured.csv");
        EXPECT_EQ(runProgram("targets '" + display + "' --grid 6x4 --boundary 0 -o '" + table + "'"), 0);
        std::istringstream rows(m_folder.read("measured.csv"));
        std::string changed;
        int number = 0;
        for (std::string row; std::getline(rows, row);) {
            changed += (++number == 20 ? row.substr(0, row.rfind(',')) + ",0.1" : row) + '\n';
        }
        m_folder.write("measured.csv", changed);
        m_report = m_folder.file("report.json");
        EXPECT_EQ(runProgram("fit '" + display + "' --points '" + table + "' -o '" + m_folder.file("fitted.xml") +
                             "' --report '" + m_report + "'"),
                  1);
        return open(display, "--residuals '" + m_report + "'");
    }

    /// Of vectors that are long enough to have a direction in the drawing.
    void expectSameWay(const json& drawn, const json& reported) {
        if (drawn.is_null() || std::hypot(drawn[0].get<double>(), drawn[1].get<double>()) < 1) {
            return;
        }
        ++m_compared;
        const double turn = std::atan2(drawn[1].get<double>(), drawn[0].get<double>()) -
                            std::atan2(reported[1].get<double>(), reported[0].get<double>());
        EXPECT_NEAR(std::cos(turn), 1, 1e-3) << drawn << ' ' << reported;
    }

    std::string m_report;
    int m_compared = 0;
};

// Oracle: the report, and the picture's own coordinates: v upwards, the drawing downwards.
TEST_F(PageResidualsTest, ThePictureOfAChannelHasEveryPoint) {
    HeadlessBrowser& browser = openFit();
    const json report = json::parse(m_folder.read("report.json"));
    ASSERT_GE(report["channels"].size(), 2U);
    for (std::size_t i = 0; i < report["channels"].size(); ++i) {
        browser.evaluate("(() => { const choice = document.querySelector('select'); choice.value = " +
                         std::to_string(i) + "; choice.dispatchEvent(new Event('change')); })()");
        const json& residuals = report["channels"][i]["residuals"];
        const auto outliers = std::count_if(residuals.begin(), residuals.end(),
                                            [](const json& one) { return one["outlier"].get<bool>(); });
        EXPECT_EQ(browser.evaluate("document.querySelectorAll('#residuals .outlier').length"), outliers);
        EXPECT_EQ(browser.evaluate("document.querySelectorAll('#residuals .inlier').length"),
                  residuals.size() - static_cast<std::size_t>(outliers));
        const json box =
            browser.evaluate("document.getElementById('residuals').getAttribute('viewBox').split(' ').map(Number)");
        const json first = browser.evaluate(
            "(() => { const dot = document.querySelector('#residuals circle');"
            " return [Number(dot.getAttribute('cx')), Number(dot.getAttribute('cy'))]; })()");
        EXPECT_NEAR(first[0].get<double>(), residuals[0]["picture"][0].get<double>() * box[2].get<double>(), 1e-6);
        EXPECT_NEAR(first[1].get<double>(), (1 - residuals[0]["picture"][1].get<double>()) * box[3].get<double>(),
                    1e-6);
        const json vectors = browser.evaluate(
            "[...document.querySelectorAll('#residuals g')].map((one) => { const line = one.querySelector('line');"
            " const at = (name) => Number(line.getAttribute(name));"
            " return line && [at('x2') - at('x1'), at('y1') - at('y2')]; })");
        ASSERT_EQ(vectors.size(), residuals.size());
        for (std::size_t k = 0; k < residuals.size(); ++k) {
            expectSameWay(vectors[k], residuals[k]["pixelsAfter"]);
        }
    }
    EXPECT_GT(m_compared, 0);
    EXPECT_EQ(browser.evaluate("document.querySelectorAll('#residuals').length"), 1);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

TEST_F(PageResidualsTest, OnTheScreenTheyCanBeHidden) {
    HeadlessBrowser& browser = openFit();
    EXPECT_EQ(browser.evaluate("[...document.querySelectorAll('aside label')].find((one) => one.textContent === "
                               "'targets').querySelector('input').checked"),
              false)
        << "targets would hide the points";
    const PngImage shown = sceneOf(browser);
    // White, and the red of outliers: of no other thing.
    const PngImage::Colour outlier{255, 106, 90};
    EXPECT_GT(shown.count(outlier, SAME_COLOUR), 5U);
    clickAll(browser, "['residuals']");
    EXPECT_EQ(sceneOf(browser).count(outlier, SAME_COLOUR), 0U);
    EXPECT_THAT(browser.complaints(), IsEmpty());
}

// Oracle: the wall of the example, six metres wide and two and a half high from 0.4 m above the floor.
TEST_F(PageResidualsTest, OnTheScreenAnOutlierPointsToItsFittedPlace) {
    HeadlessBrowser& browser = openFit();
    clickAll(browser, "['outlines', 'frusta', 'names and up marks', 'axes', 'eye point', 'residuals']");
    pressButton(browser, "front");
    const Spread wall = spreadOf(sceneOf(browser), isDrawn);
    clickAll(browser, "['residuals', 'none']");
    const Spread drawn = spreadOf(
        sceneOf(browser), [](const auto& colour) { return colour[0] > 180 && colour[1] < 130 && colour[2] < 130; });
    ASSERT_GT(drawn.count, 20);
    std::vector<json> outliers;
    const json report = json::parse(m_folder.read("report.json"));
    for (const json& channel : report["channels"]) {
        std::copy_if(channel["residuals"].begin(), channel["residuals"].end(), std::back_inserter(outliers),
                     [](const json& one) { return one["outlier"].get<bool>(); });
    }
    ASSERT_EQ(outliers.size(), 1U);
    const json& outlier = outliers.front();
    const double measured[2] = {
        wall.least[0] + (outlier["point"][0].get<double>() + 3) / 6 * (wall.most[0] - wall.least[0]),
        wall.most[1] - (outlier["point"][2].get<double>() - 0.4) / 2.5 * (wall.most[1] - wall.least[1])};
    const double way[2] = {outlier["screenAfter"][0].get<double>(), -outlier["screenAfter"][2].get<double>()};
    const double along =
        ((drawn.right - measured[0]) * way[0] + (drawn.down - measured[1]) * way[1]) / std::hypot(way[0], way[1]);
    EXPECT_GT(along, 3);
}

TEST_F(PageResidualsTest, APageWithoutAFitHasNone) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    EXPECT_EQ(browser.evaluate("document.querySelectorAll('#residuals, select').length"), 0);
    EXPECT_EQ(browser.evaluate("[...document.querySelectorAll('aside label')].some((one) => one.textContent === "
                               "'residuals')"),
              false);
}

}  // namespace

// The page of `screenmanager view` of a fit: its residuals on the screen and in the picture of the chosen channel.
#include "ViewPage.h"

#include <nlohmann/json.hpp>

#include <sstream>

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

    std::string m_report;
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
    }
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

TEST_F(PageResidualsTest, APageWithoutAFitHasNone) {
    HeadlessBrowser& browser = open(EXAMPLES + "planar-wall/display.xml");
    EXPECT_EQ(browser.evaluate("document.querySelectorAll('#residuals, select').length"), 0);
    EXPECT_EQ(browser.evaluate("[...document.querySelectorAll('aside label')].some((one) => one.textContent === "
                               "'residuals')"),
              false);
}

}  // namespace

// Tables that one command writes and another one reads: every row comes back where it came from.
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Row = std::map<std::string, std::string>;

const std::string EXAMPLES = sourceFolder() + "/examples/";

/// The rows of a table whose cells hold no commas, by the names of their columns.
std::vector<Row> rowsOf(const std::string& output) {
    std::istringstream lines(tableOf(output));
    const auto cellsOf = [](const std::string& line) {
        std::vector<std::string> cells;
        std::istringstream text(line);
        for (std::string cell; std::getline(text, cell, ',');) {
            cells.push_back(cell);
        }
        return cells;
    };
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> names = cellsOf(line);
    std::vector<Row> rows;
    while (std::getline(lines, line)) {
        const std::vector<std::string> cells = cellsOf(line);
        Row& row = rows.emplace_back();
        for (std::size_t i = 0; i < names.size(); ++i) {
            row[names[i]] = i < cells.size() ? cells[i] : "";
        }
    }
    return rows;
}

/// The greatest difference of these columns; infinite where one of them is empty.
double differenceOf(const Row& a, const Row& b, const std::vector<std::string>& columns) {
    double greatest = 0;
    for (const std::string& column : columns) {
        const bool isThere = !a.at(column).empty() && !b.at(column).empty();
        greatest = std::max(greatest, isThere ? std::abs(std::stod(a.at(column)) - std::stod(b.at(column))) : HUGE_VAL);
    }
    return greatest;
}

class MapTables : public testing::Test {
protected:
    /// Writes the table of the targets of an example.
    void place(const std::string& example) {
        m_display = EXAMPLES + example + "/display.xml";
        const ProgramRun run =
            runScreenManager({"targets", m_display, "-q", "--grid", "7x5", "--boundary", "4", "-o", m_targets});
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        m_rows = rowsOf(m_folder.read("targets.csv"));
        m_projectors.clear();
        for (const Row& row : m_rows) {
            if (m_projectors.empty() || m_projectors.back() != row.at("projector")) {
                m_projectors.push_back(row.at("projector"));
            }
        }
    }

    /// Maps the table through one channel.
    ProgramRun map(const std::string& projector, const std::vector<std::string>& options,
                   const std::string& table = "") const {
        std::vector<std::string> all{"map",     m_display,  "--channel",
                                     projector, "--points", table.empty() ? m_targets : table};
        all.insert(all.end(), options.begin(), options.end());
        return runScreenManager(all);
    }

    [[nodiscard]] std::vector<Row> targetsOf(const std::string& projector) const {
        std::vector<Row> rows;
        std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(rows),
                     [&](const Row& row) { return row.at("projector") == projector && row.at("kind") == "grid"; });
        return rows;
    }

    TemporaryFolder m_folder;
    std::string m_targets = m_folder.file("targets.csv");
    std::string m_display;
    std::vector<Row> m_rows;
    std::vector<std::string> m_projectors;  ///< ids, as the rows follow each other
};

const std::vector<std::string> EVERY_EXAMPLE{"closed-cylinder", "cockpit",        "collimated",    "curved-wall",
                                             "cylinder",        "dome",           "lens-cylinder", "mesh-rays",
                                             "planar-wall",     "spherical-dome", "warped-wall"};
const std::vector<std::string> PICTURE{"u", "v"};
const std::vector<std::string> SPACE{"x", "y", "z"};

// Oracle: the other columns of the same row, which the targets come from.
TEST_F(MapTables, EveryTargetComesBackToItsPlaceInThePicture) {
    for (const std::string& example : EVERY_EXAMPLE) {
        SCOPED_TRACE(example);
        place(example);
        ASSERT_FALSE(m_projectors.empty());
        std::size_t compared = 0;
        for (const std::string& projector : m_projectors) {
            const ProgramRun run = map(projector, {"--to", "channel", "-q"});
            ASSERT_EQ(run.exitCode, 0) << run.errors;
            const std::vector<Row> mapped = rowsOf(run.output);
            const std::vector<Row> targets = targetsOf(projector);
            ASSERT_GE(mapped.size(), targets.size());
            for (std::size_t i = 0; i < targets.size(); ++i) {
                EXPECT_EQ(differenceOf(mapped[i], targets[i], SPACE), 0) << "read as it was written";
                EXPECT_EQ(mapped[i].at("mapped"), "1");
                // At the pole of a dome a whole edge of a picture is one place.
                const auto isThere = [&](const Row& other) { return differenceOf(other, targets[i], SPACE) < 1e-9; };
                if (std::count_if(targets.begin(), targets.end(), isThere) > 1) {
                    continue;
                }
                ++compared;
                EXPECT_LT(differenceOf(mapped[i], targets[i], PICTURE), 1e-6)
                    << projector << " column " << targets[i].at("column") << " row " << targets[i].at("row") << " u "
                    << targets[i].at("u") << " v " << targets[i].at("v") << " gave " << mapped[i].at("u") << ' '
                    << mapped[i].at("v");
            }
        }
        EXPECT_GT(compared, 60U);
    }
}

TEST_F(MapTables, EveryPlaceInThePictureComesBackToItsTarget) {
    for (const std::string& example : EVERY_EXAMPLE) {
        SCOPED_TRACE(example);
        place(example);
        for (const std::string& projector : m_projectors) {
            const ProgramRun run = map(projector, {"--to", "layout", "--xyz", "screen", "-q"});
            ASSERT_EQ(run.exitCode, 0) << run.errors;
            const std::vector<Row> mapped = rowsOf(run.output);
            const std::vector<Row> targets = targetsOf(projector);
            ASSERT_EQ(mapped.size(), targets.size()) << "samples of outlines have no u, v";
            for (std::size_t i = 0; i < targets.size(); ++i) {
                EXPECT_LT(differenceOf(mapped[i], targets[i], SPACE), 1e-6) << projector << ' ' << i;
            }
        }
    }
}

TEST_F(MapTables, TheLayoutOfATargetComesBackToo) {
    const double WHOLE_PIXEL = 0.6 / 1080;
    for (const auto& [example, exact] : std::map<std::string, double>{{"planar-wall", 1e-9},
                                                                      {"cockpit", 1e-9},
                                                                      {"warped-wall", 1e-6},
                                                                      {"spherical-dome", 1e-9},
                                                                      {"lens-cylinder", WHOLE_PIXEL},
                                                                      {"mesh-rays", WHOLE_PIXEL}}) {
        SCOPED_TRACE(example);
        place(example);
        const std::string table = m_folder.file("layout.csv");
        ASSERT_EQ(map(m_projectors[0], {"-q", "-o", table}).exitCode, 0);
        const std::vector<Row> there = rowsOf(m_folder.read("layout.csv"));
        const ProgramRun run = map(m_projectors[0], {"--to", "channel", "-q"}, table);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const std::vector<Row> back = rowsOf(run.output);
        std::size_t compared = 0;
        for (const Row& row : there) {
            if (row.at("mapped") == "1") {
                ASSERT_LT(compared, back.size());
                EXPECT_LT(differenceOf(row, back[compared], PICTURE), exact) << row.at("u") << ' ' << row.at("v");
                ++compared;
            }
        }
        EXPECT_GT(compared, 20U);
        EXPECT_EQ(compared, back.size()) << "rows without x, y, z are passed over";
    }
}

TEST_F(MapTables, WhatIsPassedOverIsCounted) {
    place("planar-wall");
    EXPECT_EQ(map(m_projectors[0], {"--to", "channel"}).errors,
              "channel Upper left (" + m_projectors[0] +
                  "): 51 of 51 points mapped to the channel; 255 rows of other channels passed over\n");
    EXPECT_THAT(map(m_projectors[0], {"--xyz", "screen"}).errors,
                HasSubstr("): 35 of 35 points mapped to the screen; 255 rows of other channels and 16 without u, v "
                          "passed over\n"));
    std::string foreign = m_folder.read("targets.csv");
    for (std::size_t at = foreign.find(m_projectors[0]); at != std::string::npos; at = foreign.find(m_projectors[0])) {
        foreign.replace(at, m_projectors[0].size(), "X");
    }
    const ProgramRun none = map(m_projectors[0], {"--to", "channel"}, m_folder.write("foreign.csv", foreign));
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.errors, HasSubstr("there are no points of it in "));
    EXPECT_THAT(none.errors, HasSubstr("306 rows of other channels passed over"));
}

TEST_F(MapTables, ARowThatIsTypedInIsMappedAsWhatItIsSaidToBe) {
    place("planar-wall");
    const Row target = targetsOf(m_projectors[0]).at(7);
    const std::string point = target.at("x") + ',' + target.at("y") + ',' + target.at("z");
    const std::vector<std::string> line{"map",  m_display, "--channel", m_projectors[0],
                                        "--to", "channel", "--point",   point};
    std::vector<std::string> screen = line;
    screen.insert(screen.end(), {"--xyz", "screen"});
    const std::vector<Row> mapped = rowsOf(runScreenManager(screen).output);
    ASSERT_THAT(mapped, SizeIs(1));
    EXPECT_LT(differenceOf(mapped[0], target, PICTURE), 1e-6);
    std::vector<std::string> other = line;
    other[3] = m_projectors[5];
    const ProgramRun run = runScreenManager(other);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("note: x, y, z were layout points; for places on the screen, as targets prints "
                                      "them, state --xyz screen\n"));
}

TEST_F(MapTables, ATableThatContradictsTheDisplayIsRefused) {
    place("planar-wall");
    const ProgramRun stated = map(m_projectors[0], {"--to", "channel", "--xyz", "layout"});
    EXPECT_EQ(stated.exitCode, 3);
    EXPECT_THAT(stated.errors, HasSubstr("which are no layout points of this display: leave out what they are"));
    EXPECT_EQ(stated.output, "");

    const std::string layout = m_folder.file("layout.csv");
    ASSERT_EQ(map(m_projectors[0], {"-q", "-o", layout}).exitCode, 0);
    EXPECT_THAT(map(m_projectors[0], {"--to", "channel", "--xyz", "screen"}, layout).errors,
                HasSubstr("which are no places on the screen of this display"));
    const ProgramRun dome = runScreenManager(
        {"map", EXAMPLES + "spherical-dome/display.xml", "--channel", "Centre", "--to", "channel", "--points", layout});
    EXPECT_EQ(dome.exitCode, 3);
    EXPECT_THAT(dome.errors, HasSubstr("it was made with a display of another kind, make it with this one"));

    std::string inches = m_folder.read("targets.csv");
    inches.replace(inches.find("; unit m\n"), 9, "; unit in\n");
    const ProgramRun unit = map(m_projectors[0], {"--to", "channel"}, m_folder.write("inches.csv", inches));
    EXPECT_EQ(unit.exitCode, 3);
    EXPECT_THAT(unit.errors, HasSubstr("lengths of this table are in in, those of the display in m: convert them"));

    std::string newer = m_folder.read("targets.csv");
    newer.replace(newer.find("version 1"), 9, "version 2");
    EXPECT_THAT(
        map(m_projectors[0], {"--to", "channel"}, m_folder.write("newer.csv", newer)).errors,
        HasSubstr("newer.csv:1: point: found \"# screenmanager/targets version 2\", expected a table of version "
                  "1"));
}

}  // namespace

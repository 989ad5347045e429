// The command that fits a display to measured points, as somebody runs it.
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"
#include "support/TextLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <thread>

namespace {

using Json = nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int GOOD = 0;
constexpr int DOUBTFUL = 1;
constexpr int WRONG_LINE = 2;
constexpr int UNUSABLE = 3;

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    if (place == std::string::npos) {
        throw std::runtime_error("no " + from);
    }
    return text.replace(place, from.size(), to);
}

/// The example with a calibrated lens, and a copy in which its first and third projector have moved.
class FitCommand : public testing::Test {
protected:
    FitCommand() {
        const std::string example = sourceFolder() + "/examples/lens-cylinder/";
        std::filesystem::create_directories(m_folder.file("show"));
        std::filesystem::copy(example + "display.xml", m_folder.file("show/true.xml"));
        std::filesystem::copy(example + "lens.yml", m_folder.file("show/lens.yml"));
        const std::string text = m_folder.read("show/true.xml");
        m_planned =
            m_folder.write("show/planned.xml", replaced(replaced(text, "x=\"-0.4\" y=\"0.3\"", "x=\"-0.2\" y=\"0.4\""),
                                                        "x=\"0.4\" y=\"0.3\"", "x=\"0.45\" y=\"0.2\""));
        EXPECT_EQ(runScreenManager({"targets", "-q", m_folder.file("show/true.xml"), "--boundary", "0", "-o",
                                    m_folder.file("measured.csv")})
                      .exitCode,
                  0);
    }

    /// Of the channels whose values the points determine: the other one is equidistant, where heading and shift are
    /// one.
    [[nodiscard]] ProgramRun fit(std::vector<std::string> more, const std::string& points = "measured.csv") const {
        std::vector<std::string> arguments{"fit",       "-q",   m_planned,   "--points", m_folder.file(points),
                                           "--channel", "Left", "--channel", "Right"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runScreenManager(arguments);
    }

    [[nodiscard]] std::vector<std::string> files(const std::string& folder = "show") const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.file(folder))) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    /// How far the targets of two channels of a configuration are from the measured points, at most.
    [[nodiscard]] double largestDeviation(const std::string& configuration) const {
        double largest = 0;
        const auto there = linesOf(runScreenManager({"targets", "-q", configuration, "--boundary", "0"}).output);
        const auto wanted = linesOf(m_folder.read("measured.csv"));
        EXPECT_EQ(there.size(), wanted.size());
        int compared = 0;
        for (std::size_t i = 4; i < std::min(there.size(), wanted.size()); ++i) {
            if (there[i].starts_with("Centre")) {
                continue;
            }
            std::istringstream a(there[i]);
            std::istringstream b(wanted[i]);
            std::string left;
            std::string right;
            for (int cell = 0; std::getline(a, left, ',') && std::getline(b, right, ','); ++cell) {
                if (cell >= 7) {
                    largest = std::max(largest, std::abs(std::stod(left) - std::stod(right)));
                    ++compared;
                }
            }
        }
        EXPECT_GT(compared, 600);
        return largest;
    }

    /// The measured points as rows of channel,u,v,x,y,z,X,Y,Z.
    [[nodiscard]] std::string rowsBesideControls() const {
        const auto lines = linesOf(m_folder.read("measured.csv"));
        std::string rows;
        for (std::size_t i = 4; i < lines.size(); ++i) {
            std::istringstream cells(lines[i]);
            std::vector<std::string> cell(1);
            while (std::getline(cells, cell.back(), ',')) {
                cell.emplace_back();
            }
            rows += cell[0] + ',' + cell[5] + ',' + cell[6] + ',' + cell[7] + ',' + cell[8] + ',' + cell[9] + ",,,\n";
        }
        return rows;
    }

    TemporaryFolder m_folder;
    std::string m_planned;
};

TEST_F(FitCommand, ADisturbedDisplayComesBackFromItsMeasurement) {
    EXPECT_GT(largestDeviation(m_planned), 0.05);
    const std::string before = m_folder.read("show/planned.xml");
    const ProgramRun run = fit({"-o", m_folder.file("show/fitted.xml")});
    EXPECT_EQ(run.exitCode, GOOD) << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output, HasSubstr("result       good\n"));
    EXPECT_THAT(run.output, HasSubstr("Written: " + m_folder.file("show/fitted.xml") + ", " +
                                      m_folder.file("show/fitted-020000000703.yml")));
    EXPECT_LT(largestDeviation(m_folder.file("show/fitted.xml")), 1e-9);
    EXPECT_EQ(m_folder.read("show/planned.xml"), before);
    EXPECT_THAT(files(), ElementsAre("fitted-020000000703.yml", "fitted.xml", "lens.yml", "planned.xml", "true.xml"));
}

TEST_F(FitCommand, InPlaceTheConfigurationIsReplacedAndItsLensKept) {
    const std::string lens = m_folder.read("show/lens.yml");
    EXPECT_EQ(fit({"--in-place"}).exitCode, GOOD);
    EXPECT_LT(largestDeviation(m_planned), 1e-9);
    EXPECT_EQ(m_folder.read("show/lens.yml"), lens) << "other channels may use it";
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned-020000000703.yml", "planned.xml", "true.xml"));
}

TEST_F(FitCommand, InPlaceNothingIsWrittenWhereNoNumberChanges) {
    EXPECT_EQ(fit({"--in-place"}).exitCode, GOOD);
    const std::string before = m_folder.read("show/planned.xml");
    const auto time = std::filesystem::last_write_time(m_planned);
    const ProgramRun again = fit({"--in-place"});
    EXPECT_EQ(again.exitCode, GOOD);
    EXPECT_THAT(again.output, HasSubstr("\nNo number of the configuration changes.\nNothing was written.\n"));
    EXPECT_EQ(m_folder.read("show/planned.xml"), before);
    EXPECT_EQ(std::filesystem::last_write_time(m_planned), time);
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned-020000000703.yml", "planned.xml", "true.xml"));
    const ProgramRun copy = fit({"-o", m_folder.file("show/copy.xml")});
    EXPECT_THAT(copy.output, HasSubstr("No number of the configuration changes.\nWritten: "));
    EXPECT_THAT(files(), ElementsAre("copy.xml", "lens.yml", "planned-020000000703.yml", "planned.xml", "true.xml"))
        << "it names the lens that is there";
}

// The report says what was done wrong, nothing is written, and the exit status says so.
TEST_F(FitCommand, YAndZExchangedAreNamedAndNotWritten) {
    auto lines = linesOf(m_folder.read("measured.csv"));
    std::string table;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t z = lines[i].rfind(',');
        const std::size_t y = lines[i].rfind(',', z - 1);
        const bool isRow = i > 3;
        table += (isRow ? lines[i].substr(0, y) + lines[i].substr(z) + lines[i].substr(y, z - y) : lines[i]) + '\n';
    }
    m_folder.write("exchanged.csv", table);
    const ProgramRun run = fit({"-o", m_folder.file("show/fitted.xml")}, "exchanged.csv");
    EXPECT_EQ(run.exitCode, UNUSABLE);
    EXPECT_THAT(run.output,
                AllOf(HasSubstr("result       unusable"),
                      HasSubstr("unusable: y and z are exchanged: space is mirrored; exchange the columns y "
                                "and z\n"),
                      HasSubstr("\nNothing was written.\n")));
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned.xml", "true.xml"));
}

TEST_F(FitCommand, InAnotherFolderItsFilesAreFound) {
    m_folder.makeFolder("fitted");
    EXPECT_EQ(fit({"--solve", "orientation,position", "-o", m_folder.file("fitted/new.xml")}).exitCode, GOOD);
    EXPECT_THAT(m_folder.read("fitted/new.xml"), HasSubstr("file=\"../show/lens.yml\""));
    EXPECT_THAT(files("fitted"), ElementsAre("new.xml")) << "the lens was held";
    EXPECT_LT(largestDeviation(m_folder.file("fitted/new.xml")), 1e-9);
}

TEST_F(FitCommand, AFrameOfItsOwnIsRegisteredByControlPoints) {
    // Turned by a quarter about z and moved: (x, y, z) becomes (-y + 10, x + 20, z + 1), in millimetres.
    std::string table = "# unit mm\nchannel,u,v,x,y,z,X,Y,Z\n";
    const auto moved = [](double x, double y, double z) {
        std::ostringstream text;
        text.precision(17);
        text << (-y + 10) * 1000 << ',' << (x + 20) * 1000 << ',' << (z + 1) * 1000;
        return text.str();
    };
    for (const auto& [x, y, z] : {std::tuple(0, 0, 0), std::tuple(3, 0, 0), std::tuple(0, 4, 0), std::tuple(0, 0, 2)}) {
        table += ",,," + moved(x, y, z) + ',' + std::to_string(x * 1000) + ',' + std::to_string(y * 1000) + ',' +
                 std::to_string(z * 1000) + '\n';
    }
    const auto measured = linesOf(m_folder.read("measured.csv"));
    for (std::size_t i = 4; i < measured.size(); ++i) {
        std::istringstream cells(measured[i]);
        std::vector<std::string> cell(1);
        while (std::getline(cells, cell.back(), ',')) {
            cell.emplace_back();
        }
        table += cell[0] + ',' + cell[5] + ',' + cell[6] + ',' +
                 moved(std::stod(cell[7]), std::stod(cell[8]), std::stod(cell[9])) + ",,,\n";
    }
    m_folder.write("station.csv", table);
    const ProgramRun run = fit({"--register", "rigid", "-o", m_folder.file("show/fitted.xml")}, "station.csv");
    EXPECT_EQ(run.exitCode, GOOD) << run.output << run.errors;
    EXPECT_THAT(run.output, HasSubstr("frame        of the measurement: 4 control points, RMS "));
    EXPECT_LT(largestDeviation(m_folder.file("show/fitted.xml")), 1e-8);
}

TEST_F(FitCommand, WhatIsNotRegisteredIsRemarked) {
    const auto run = [this](const std::string& rows) {
        m_folder.write("sets.csv", "# unit m\nset,channel,u,v,x,y,z,X,Y,Z\n" + rows);
        return runScreenManager(
            {"fit", m_planned, "--points", m_folder.file("sets.csv"), "-o", m_folder.file("show/fitted.xml")});
    };
    EXPECT_THAT(
        run("a,Left,0.5,0.5,1,2,3,5,2,3\na,,,,4,1,3,4,5,3\n").output,
        AllOf(HasSubstr("doubtful: control points of set \"a\" lie up to 4 m (line "),
              HasSubstr(") from where they should be, 2 of 2, and were not used: the measurement is not in the frame "
                        "of the display; correct X, Y, Z, or measure at least 3 control points and state --register")));
    EXPECT_THAT(run("a,Left,0.5,0.5,1,2,3,1,2,3\na,,,,4,1,3,4,1,3\n").output,
                HasSubstr("note: the control points were not used: they are where they should be"));
    EXPECT_THAT(run("a,Left,0.5,0.5,1,2,3,,,\nb,Left,0.1,0.5,1,2,3,,,\n").errors,
                HasSubstr("note: the measurements of all sets are taken as in the frame of the display"));
    EXPECT_THAT(run("a,Left,0.5,0.5,1,2,3,,,\n").errors, testing::Not(HasSubstr("note:")));
}

// The fit succeeds with a frame of its own: what it found is doubted nevertheless.
TEST_F(FitCommand, ControlPointsThatAreNotUsedMakeAFitDoubtful) {
    std::string table = "# unit m\nchannel,u,v,x,y,z,X,Y,Z\n,,,0,0,0,10,0,0\n,,,3,0,0,13,0,0\n,,,0,4,0,10,4,0\n";
    table += rowsBesideControls();
    m_folder.write("controls.csv", table);
    const ProgramRun run = fit({"-o", m_folder.file("show/fitted.xml")}, "controls.csv");
    EXPECT_EQ(run.exitCode, DOUBTFUL) << run.output;
    EXPECT_THAT(run.output, HasSubstr("doubtful: control points lie up to 10 m (line 3) from where they should be"));
}

// The frame of the display itself, with five control points of which one is off.
TEST_F(FitCommand, AControlPointThatIsWrongIsNamedByItsLine) {
    const auto run = [&](double off) {
        std::string table = "# unit m\nchannel,u,v,x,y,z,X,Y,Z\n,,,0,0,0,0,0,0\n,,,3,0,0,3,0,0\n,,,0,4,0," +
                            std::to_string(off) + ",4,0\n,,,0,0,2,0,0,2\n,,,-2,1,1,-2,1,1\n";
        table += rowsBesideControls();
        m_folder.write("controls.csv", table);
        return fit({"--register", "rigid", "-o", m_folder.file("show/fitted.xml")}, "controls.csv");
    };
    const ProgramRun far = run(1);
    EXPECT_EQ(far.exitCode, UNUSABLE);
    EXPECT_THAT(far.errors, HasSubstr("/controls.csv: control points: they deviate by"));
    EXPECT_THAT(far.errors, HasSubstr("without line 5 the others agree to"));
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned.xml", "true.xml"));
    EXPECT_EQ(run(0.001).exitCode, GOOD);
    const ProgramRun near = run(0.05);
    EXPECT_EQ(near.exitCode, DOUBTFUL);
    EXPECT_THAT(near.output,
                HasSubstr("doubtful: the control point of line 5 lies 0.05 m from where the others place it"));
}

TEST_F(FitCommand, AnOutlierIsNamedByItsLine) {
    auto lines = linesOf(m_folder.read("measured.csv"));
    lines[50] = lines[50].substr(0, lines[50].rfind(',')) + ",2.9";
    std::string table;
    for (const std::string& line : lines) {
        table += line + '\n';
    }
    m_folder.write("outlier.csv", table);
    const ProgramRun run = fit({"-o", m_folder.file("show/fitted.xml"), "--format", "json"}, "outlier.csv");
    EXPECT_EQ(run.exitCode, DOUBTFUL) << run.errors;
    const Json report = Json::parse(run.output);
    std::vector<Json> outliers;
    for (const Json& residual : report["channels"][0]["residuals"]) {
        if (residual["outlier"].get<bool>()) {
            outliers.push_back(residual["lines"]);
        }
    }
    EXPECT_THAT(outliers, ElementsAre(Json::parse("[51]")));
    EXPECT_LT(largestDeviation(m_folder.file("show/fitted.xml")), 1e-9) << "written, and right";
}

// What the report states reaches the pictures: counts, the line of an outlier, and the vectors of the page.
TEST_F(FitCommand, ItsResidualsAreDrawn) {
    auto lines = linesOf(m_folder.read("measured.csv"));
    lines[50] = lines[50].substr(0, lines[50].rfind(',')) + ",2.9";
    std::string table;
    for (const std::string& line : lines) {
        table += line + '\n';
    }
    m_folder.write("outlier.csv", table);
    const std::string report = m_folder.file("report.json");
    const std::string fitted = m_folder.file("show/fitted.xml");
    ASSERT_EQ(fit({"-o", fitted, "--report", report}, "outlier.csv").exitCode, DOUBTFUL);
    const std::size_t points = Json::parse(m_folder.read("report.json"))["channels"][0]["residuals"].size();
    const auto picture = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {"picture", "-q", fitted, "--residuals", report, "--format", "svg"});
        const ProgramRun run = runScreenManager(more);
        EXPECT_EQ(run.exitCode, GOOD) << run.errors;
        return run.output;
    };
    const std::string facts = ">" + std::to_string(points) + " measured points, 1 outlier</text>";
    EXPECT_THAT(picture({"--exaggerate", "3"}),
                AllOf(HasSubstr(facts), HasSubstr(">51</text>"),
                      HasSubstr(">residuals after the fit, drawn 3 times as long</text>")));
    EXPECT_THAT(picture({"--channel", "Left"}), AllOf(HasSubstr(facts), HasSubstr(">51</text>"),
                                                      HasSubstr(": residuals in the picture of Left</text>")));
    EXPECT_THAT(picture({"--channel", "Centre"}),
                HasSubstr(">the report has no measured point of this channel</text>"));
    const ProgramRun page = runScreenManager({"view", "-q", fitted, "--residuals", report});
    EXPECT_EQ(page.exitCode, GOOD);
    EXPECT_THAT(page.output, HasSubstr("\"facts\":[\"" + std::to_string(points) + " measured points, 1 outlier\","));
}

TEST_F(FitCommand, ResidualsThatCannotBeDrawnAreRefused) {
    const std::string report = m_folder.write("report.json", "{\"schema\":\"screenmanager/check\"}");
    const auto picture = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {"picture", "-q", m_planned, "--format", "svg"});
        return runScreenManager(more);
    };
    const ProgramRun other = picture({"--residuals", report});
    EXPECT_EQ(other.exitCode, UNUSABLE);
    EXPECT_THAT(other.errors, HasSubstr("report.json: schema: found \"screenmanager/check\"; expected "
                                        "\"screenmanager/fit\"; name the report that fit --format json wrote"));
    EXPECT_EQ(runScreenManager({"view", "-q", m_planned, "--residuals", m_folder.file("none.json")}).exitCode,
              UNUSABLE);
    EXPECT_EQ(picture({"--exaggerate", "3"}).exitCode, WRONG_LINE) << "of what?";
    EXPECT_EQ(picture({"--residuals", report, "--exaggerate", "0"}).exitCode, WRONG_LINE);
    EXPECT_EQ(picture({"--residuals", report, "--exaggerate", "nan"}).exitCode, WRONG_LINE);
    EXPECT_EQ(picture({"--residuals", report, "--axes"}).exitCode, WRONG_LINE);
    EXPECT_THAT(picture({"--residuals", report, "--channel", "Left", "--view", "top"}).errors, HasSubstr("--view"));
    const std::string before = m_folder.read("report.json");
    EXPECT_EQ(picture({"--residuals", report, "-o", report}).exitCode, WRONG_LINE);
    EXPECT_EQ(m_folder.read("report.json"), before);
}

TEST_F(FitCommand, WhatIsUnusableIsWrittenOnlyWhenForced) {
    const auto lines = linesOf(m_folder.read("measured.csv"));
    std::string few;
    for (std::size_t i = 0; i < 7; ++i) {
        few += lines[i] + '\n';
    }
    m_folder.write("few.csv", few);
    const ProgramRun run = fit({"-o", m_folder.file("show/fitted.xml")}, "few.csv");
    EXPECT_EQ(run.exitCode, UNUSABLE);
    EXPECT_THAT(run.output, AllOf(HasSubstr("result       unusable"), HasSubstr("\nNothing was written.\n")));
    EXPECT_THAT(run.errors, HasSubstr("the fit is unusable and nothing was written: see the report"));
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned.xml", "true.xml"));
    EXPECT_EQ(fit({"-o", m_folder.file("show/fitted.xml"), "--force"}, "few.csv").exitCode, UNUSABLE);
    EXPECT_TRUE(std::filesystem::exists(m_folder.file("show/fitted.xml")));
}

TEST_F(FitCommand, FaultsOfTheTableEndTheRunWithTheirPlace) {
    m_folder.write("bare.csv", "channel,u,v,x,y,z\nLeft,0.5,0.5,1,2,3\n");
    const ProgramRun bare = fit({"-o", m_folder.file("show/fitted.xml")}, "bare.csv");
    EXPECT_EQ(bare.exitCode, UNUSABLE);
    EXPECT_THAT(bare.errors, HasSubstr("bare.csv:1: unit of lengths: found none, expected mm, cm, m, in or ft"));
    m_folder.write("broken.csv", "channel,u,v,x,y,z\nLeft,0.5,0.5,1,zwei,3\n");
    EXPECT_THAT(fit({"--unit", "m", "-o", m_folder.file("show/fitted.xml")}, "broken.csv").errors,
                HasSubstr("broken.csv:2: column 5, y: found \"zwei\", expected a finite number"));
    EXPECT_THAT(fit({"-o", m_folder.file("show/fitted.xml")}, "gone.csv").errors, HasSubstr("gone.csv"));
    m_folder.write("empty.csv", "# unit m\nchannel,u,v,x,y,z\n");
    EXPECT_THAT(fit({"-o", m_folder.file("show/fitted.xml")}, "empty.csv").errors,
                HasSubstr("there are no measurements with a place in a picture"));
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned.xml", "true.xml"));
}

TEST_F(FitCommand, AWrongCommandLineIsRefusedBeforeAnythingIsComputed) {
    const std::string fitted = m_folder.file("show/fitted.xml");
    EXPECT_THAT(fit({}).errors, HasSubstr("--output: name the configuration to write, or state --in-place"));
    EXPECT_THAT(fit({"-o", fitted, "--in-place"}).errors, HasSubstr("--output: it excludes --in-place"));
    EXPECT_THAT(fit({"-o", "-"}).errors, HasSubstr("the configuration is written to a file"));
    EXPECT_THAT(fit({"-o", fitted, "--solve", "everything"}).errors,
                HasSubstr("\"everything\" is none of position, orientation, frustum, distortion, area"));
    EXPECT_THAT(fit({"-o", fitted, "--hold", "left"}).errors, HasSubstr("\"left\" is none of square-pixels"));
    EXPECT_THAT(fit({"-o", fitted, "--solve", "position", "--hold", "square-pixels"}).errors,
                HasSubstr("--hold: its numbers belong to the frustum, and no frustum is solved with this --solve"));
    for (const char* const input : {"measured.csv", "show/planned.xml", "show/lens.yml"}) {
        const std::string before = m_folder.read(input);
        EXPECT_EQ(fit({"-o", m_folder.file(input)}).exitCode, WRONG_LINE) << input;
        EXPECT_EQ(fit({"-o", fitted, "--report", m_folder.file(input), "--format", "text"}).exitCode, WRONG_LINE)
            << input;
        EXPECT_EQ(m_folder.read(input), before);
    }
    EXPECT_EQ(fit({"-o", fitted, "--report", fitted, "--format", "text"}).exitCode, WRONG_LINE);
    EXPECT_EQ(fit({"-o", fitted, "--channel", "Nobody"}).exitCode, WRONG_LINE);
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned.xml", "true.xml"));
}

TEST_F(FitCommand, AnAreaHasNothingToHold) {
    const std::string wall = sourceFolder() + "/examples/planar-wall/display.xml";
    for (const char* held : {"square-pixels", "horizontal-shift"}) {
        const ProgramRun run = runScreenManager({"fit", wall, "--points", m_folder.file("measured.csv"), "--hold", held,
                                                 "-o", m_folder.file("show/fitted.xml")});
        EXPECT_EQ(run.exitCode, WRONG_LINE);
        EXPECT_EQ(run.errors,
                  "error: --hold: its numbers belong to the frustum, and no frustum is solved on this type of display: "
                  "leave it out\n");
    }
}

TEST_F(FitCommand, AFolderIsNoFile) {
    const std::string folder = m_folder.file("show");
    const ProgramRun run = fit({"-o", folder});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.errors, "error: " + folder + " is a folder: name a file in it, such as " + folder + "/fitted.xml\n");
    EXPECT_THAT(fit({"-o", m_folder.file("show/fitted.xml"), "--report", folder, "--format", "text"}).errors,
                HasSubstr(folder + " is a folder: name a file in it, such as " + folder + "/report.txt"));
    EXPECT_THAT(files(), ElementsAre("lens.yml", "planned.xml", "true.xml"));
}

TEST_F(FitCommand, WhereItCannotBeWrittenTheOldSetStays) {
    const std::string before = m_folder.read("show/planned.xml");
    const ProgramRun run = fit({"-o", m_folder.file("gone/fitted.xml")});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.output, HasSubstr("\nNothing was written.\n")) << "the report is there";
    std::filesystem::create_hard_link(m_planned, m_folder.file("show/other.xml"));
    EXPECT_EQ(fit({"--in-place"}).exitCode, 4) << "a file of two names";
    EXPECT_EQ(m_folder.read("show/planned.xml"), before);
    EXPECT_THAT(files(), ElementsAre("lens.yml", "other.xml", "planned.xml", "true.xml"));
}

// Whenever it is killed: the configuration is the old one or the new one, and every lens that it names can be read.
TEST_F(FitCommand, AKillLeavesTheOldSetOrTheNewOne) {
    constexpr int KILLS = 40;
    const std::string before = m_folder.read("show/planned.xml");
    const std::vector<std::string> arguments{
        "fit",       "-q",   m_planned,   "--points", m_folder.file("measured.csv"),
        "--channel", "Left", "--channel", "Right",    "--in-place"};
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(runScreenManager(arguments).exitCode, GOOD);
    const auto whole = std::chrono::steady_clock::now() - start;
    int fresh = 0;
    for (int kill = 0; kill <= KILLS; ++kill) {
        m_folder.write("show/planned.xml", before);
        RunningProgram program(programFile(), arguments, {.output = "/dev/null", .errors = "/dev/null"});
        std::this_thread::sleep_for(whole * kill / KILLS);
        if (kill < KILLS) {
            program.send(SIGKILL);
        }
        program.finish();
        const bool isOld = m_folder.read("show/planned.xml") == before;
        fresh += isOld ? 0 : 1;
        EXPECT_EQ(runScreenManager({"check", m_planned}).exitCode, 0) << "killed after " << kill << " of " << KILLS;
        if (!isOld) {
            EXPECT_LT(largestDeviation(m_planned), 1e-9);
        }
    }
    EXPECT_GT(fresh, 0) << "the last one is not killed";
    EXPECT_LE(fresh, KILLS) << "the first one is killed at once";
}

}  // namespace

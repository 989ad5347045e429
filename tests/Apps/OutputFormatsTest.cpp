// Every command writes the format that is named, else that of the name of the output, else its first one.
#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

const std::string WALL = sourceFolder() + "/examples/planar-wall/display.xml";
const std::string SMALL =
    "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Size width='4' height='2'/></Screen>"
    "<TargetData type='PlanarBasic'/><Projectors><Projector id='P1'><Name>Left</Name><Resolution width='6' height='4'/>"
    "<ScreenArea left='0' right='1' bottom='0' top='1'/><Layout xMin='0' xMax='4' yMin='0' yMax='2'/></Projector>"
    "</Projectors></Display>";

class OutputFormatsTest : public testing::Test {
protected:
    /// What a command writes to a file of this name.
    std::string written(std::vector<std::string> arguments, const std::string& name) {
        arguments.insert(arguments.end(), {"-q", "-o", m_folder.file(name)});
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 0) << name << run.errors;
        return m_folder.read(name);
    }

    void expectRefused(std::vector<std::string> arguments, const std::string& name, const std::string& formats) {
        arguments.insert(arguments.end(), {"-q", "-o", m_folder.file(name)});
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 2) << name;
        EXPECT_THAT(run.errors, HasSubstr(name + " is named like no format of this command, " + formats));
        EXPECT_FALSE(std::filesystem::exists(m_folder.file(name)));
    }

    TemporaryFolder m_folder;
    std::string m_file = m_folder.write("display.xml", SMALL);
    std::vector<std::string> m_targets{"targets", m_file, "--grid", "2x2"};
    std::vector<std::string> m_points{"map", m_file, "--channel", "P1", "--point", "0.5,0.25"};
    std::vector<std::string> m_grid{"map", m_file, "--channel", "P1", "--grid"};
    std::vector<std::string> m_coverage{"coverage", m_file};
    std::vector<std::string> m_fit{"fit", m_file, "--points", m_folder.write("points.csv", "")};
    std::vector<std::string> m_picture{"picture", m_file, "--size", "300x200"};
};

TEST_F(OutputFormatsTest, TheNameOfTheFileStatesTheFormat) {
    EXPECT_EQ(Json::parse(written(m_targets, "a.json"))["channels"].size(), 1U);
    EXPECT_THAT(written(m_targets, "a.PLY"), StartsWith("ply\n"));
    EXPECT_EQ(Json::parse(written(m_points, "b.json"))["points"][0]["x"], 2.0);
    EXPECT_THAT(written(m_points, "b.csv"), HasSubstr("\n0.5,0.25,2,0.5,0,1\n"));
    EXPECT_THAT(written(m_grid, "c.pfm"), StartsWith("PF\n"));
    EXPECT_THAT(written(m_grid, "c.png"), StartsWith("\x89PNG"));
    EXPECT_THAT(written(m_grid, "c.map"), StartsWith("2\n7 5\n"));
    EXPECT_EQ(Json::parse(written(m_coverage, "d.json"))["channels"].size(), 1U);
    EXPECT_THAT(written(m_picture, "e.svg"), HasSubstr("\n<svg "));
    EXPECT_THAT(written(m_picture, "e.PDF"), StartsWith("%PDF-"));
}

TEST_F(OutputFormatsTest, ANameWithoutAnEndingLeavesTheDefault) {
    EXPECT_THAT(written(m_targets, "a"), HasSubstr("channel,projector,kind"));
    EXPECT_THAT(written(m_points, ".b"), HasSubstr("u,v,x,y,z,mapped\n"));
    EXPECT_THAT(written(m_coverage, "d"), HasSubstr("lit by"));
    EXPECT_THAT(written({"view", m_file}, "f"), StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(written(m_picture, "e"), StartsWith("\x89PNG"));
    EXPECT_THAT(written(m_grid, "c"), StartsWith("2\n7 5\n"));
}

TEST_F(OutputFormatsTest, AFileThatIsNamedLikeNoFormatIsRefused) {
    expectRefused(m_picture, "x.jpg",
                  "png, svg or pdf: end its name in .png, .svg or .pdf, or state one with --format");
    expectRefused(m_grid, "x.tiff", "mesh, obj, pfm, pfm3d, png16 or png");
    expectRefused(m_targets, "x.png", "csv, json or ply");
    expectRefused(m_points, "x.svg", "csv or json");
    expectRefused(m_coverage, "x.ply", "text or json");
    expectRefused({"view", m_file}, "x.png", "html: end its name in .html\n");
    expectRefused(m_fit, "x.json", "xml: end its name in .xml\n");
}

/// The commands that `screenmanager --help` names.
std::vector<std::string> commandsOfTheHelp() {
    std::istringstream help(runScreenManager({"--help"}).output);
    std::vector<std::string> commands;
    bool isList = false;
    for (std::string line; std::getline(help, line);) {
        const bool isCommand = isList && line.size() > 2 && line.starts_with("  ") && line[2] != ' ';
        if (isCommand) {
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
        isList = line.find("ommands:") != std::string::npos || (isList && line.starts_with("  "));
    }
    EXPECT_THAT(commands, testing::IsSupersetOf({"check", "targets", "map", "coverage", "view", "picture", "add"}));
    return commands;
}

TEST_F(OutputFormatsTest, EveryCommandThatWritesAFileRefusesEndingsThatItDoesNotKnow) {
    const std::map<std::string, std::vector<std::string>> lines{{"targets", m_targets},   {"map", m_points},
                                                                {"coverage", m_coverage}, {"view", {"view", m_file}},
                                                                {"picture", m_picture},   {"fit", m_fit}};
    std::size_t writing = 0;
    for (const std::string& command : commandsOfTheHelp()) {
        const std::string help = runScreenManager({command, "--help"}).output;
        if (help.find("--output FILE") == std::string::npos) {
            EXPECT_EQ(lines.count(command), 0U) << command;
            continue;
        }
        ASSERT_EQ(lines.count(command), 1U) << command;
        for (const char* name : {"x.htm", "x.xlsx", "x.dat", "x.out", "x.csv.gz", "x.json~"}) {
            expectRefused(lines.at(command), name, "");
        }
        ++writing;
    }
    EXPECT_EQ(writing, lines.size());
    for (const char* name : {"x.xlsx", "x.tiff", "x.csv", "x.dat"}) {
        expectRefused(m_grid, name, "mesh, obj, pfm, pfm3d, png16 or png");
    }
    EXPECT_THAT(
        runScreenManager({"fit", m_file, "--points", m_file, "--in-place", "--report", "x.xml"}).errors,
        HasSubstr("x.xml is named like no format of this command, text or json: end its name in .json or .txt"));
    const ProgramRun ply = runScreenManager({"coverage", m_file, "--ply", m_folder.file("x.obj")});
    EXPECT_EQ(ply.exitCode, 2);
    EXPECT_THAT(ply.errors, HasSubstr("--ply: "));
    EXPECT_THAT(ply.errors, HasSubstr("x.obj is named like no format of this command, ply: end its name in .ply\n"));
    EXPECT_FALSE(std::filesystem::exists(m_folder.file("x.obj")));
}

TEST_F(OutputFormatsTest, TheFormatThatIsNamedCounts) {
    m_picture.insert(m_picture.end(), {"--format", "svg"});
    EXPECT_THAT(written(m_picture, "x.jpg"), HasSubstr("\n<svg "));
    m_targets.insert(m_targets.end(), {"--format", "csv"});
    EXPECT_THAT(written(m_targets, "x.json"), HasSubstr("channel,projector,kind"));
}

TEST_F(OutputFormatsTest, JsonIsAnotherNameForTheFormatOfACoverage) {
    const ProgramRun named = runScreenManager({"coverage", m_file, "--format", "json", "-q"});
    EXPECT_EQ(Json::parse(named.output)["channels"].size(), 1U);
    EXPECT_EQ(runScreenManager({"coverage", m_file, "--json", "-q"}).output, named.output);
    EXPECT_EQ(runScreenManager({"coverage", m_file, "--json", "--format", "text"}).exitCode, 2);
}

TEST_F(OutputFormatsTest, ACheckIsJsonToo) {
    const ProgramRun run = runScreenManager({"check", WALL, "--format", "json"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const Json check = Json::parse(run.output);
    EXPECT_EQ(check["channels"].size(), 6U);
    EXPECT_EQ(check["counts"]["faults"], 0);
    EXPECT_EQ(runScreenManager({"check", WALL, "--format", "text"}).output, runScreenManager({"check", WALL}).output);

    const ProgramRun gone = runScreenManager({"check", m_folder.file("gone.xml"), "--format", "json"});
    EXPECT_EQ(gone.exitCode, 3);
    EXPECT_EQ(Json::parse(gone.output)["readable"], false);
    EXPECT_EQ(Json::parse(gone.output)["counts"]["faults"], Json::parse(gone.output)["faults"].size());
}

TEST_F(OutputFormatsTest, TheFindingsOfACheckAreThoseOfItsText) {
    std::string crossed = SMALL;
    crossed.replace(crossed.find("right='1'"), 9, "right='7'");
    const std::string file = m_folder.write("crossed.xml", crossed);
    const std::string text = runScreenManager({"check", file}).output;
    const Json check = Json::parse(runScreenManager({"check", file, "--format", "json"}).output);
    ASSERT_FALSE(check["findings"].empty());
    for (const Json& finding : check["findings"]) {
        EXPECT_THAT(text, HasSubstr(finding["where"].get<std::string>() + ": " + finding["what"].get<std::string>()));
        EXPECT_THAT(text, HasSubstr('[' + finding["rule"].get<std::string>() + ']'));
    }
}

TEST_F(OutputFormatsTest, ChannelsAreJsonToo) {
    PjlinkSimulator left;
    const std::string file =
        m_folder.write("two.xml", projector_displays::twoProjectors(left.port(), projector_displays::deadPort()));
    const ProgramRun run =
        runScreenManager({"channels", file, "--format", "json", "--timeout", projector_displays::PATIENT});
    EXPECT_EQ(run.exitCode, 1);
    const Json listing = Json::parse(run.output);
    ASSERT_EQ(listing["channels"].size(), 2U);
    EXPECT_EQ(listing["channels"][0]["state"], "on");
    EXPECT_TRUE(listing["channels"][0]["resolution"].is_string());
    EXPECT_EQ(listing["channels"][1]["state"], "missing");
    EXPECT_TRUE(listing["channels"][1]["resolution"].is_null());
    ASSERT_EQ(listing["faults"].size(), 1U);
    EXPECT_EQ(listing["faults"][0]["where"], "channel Right");
}

TEST_F(OutputFormatsTest, APreparationIsJsonToo) {
    PjlinkSimulator left;
    PjlinkSimulator right;
    const std::string file = m_folder.write("two.xml", projector_displays::twoProjectors(left.port(), right.port()));
    const ProgramRun run =
        runScreenManager({"prepare", file, "black", "--format", "json", "--timeout", projector_displays::PATIENT});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const Json done = Json::parse(run.output);
    EXPECT_EQ(done["state"], "black");
    EXPECT_EQ(done["complete"], true);
    EXPECT_EQ(done["channels"].size(), 2U);
    EXPECT_GE(done["sent"].size(), 2U);
    EXPECT_EQ(done["sent"][0]["failed"], false);
}

TEST_F(OutputFormatsTest, APreparationThatSendsNothingSaysSoInJson) {
    const int dead = projector_displays::deadPort();
    const std::string file = m_folder.write("two.xml", projector_displays::twoProjectors(dead, dead));
    const ProgramRun run =
        runScreenManager({"prepare", file, "black", "--format", "json", "--timeout", projector_displays::PATIENT});
    EXPECT_EQ(run.exitCode, 1);
    const Json done = Json::parse(run.output);
    EXPECT_EQ(done["complete"], false);
    EXPECT_EQ(done["sent"].size(), 0U);
    EXPECT_EQ(done["channels"][1]["usable"], false);
}

TEST_F(OutputFormatsTest, ASearchThatFindsNobodyIsJsonToo) {
    const ProgramRun run =
        runScreenManager({"discover", "--broadcast", "127.0.0.1:" + std::to_string(projector_displays::deadPort()),
                          "--format", "json", "--timeout", projector_displays::IMPATIENT, "--quiet"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(Json::parse(run.output)["projectors"].size(), 0U);
}

}  // namespace

// Every JSON that the program prints fits the schema of its name in docs/schemas/, by a validator of somebody else, and
// names the files that it was made from by their digests.
#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <set>

namespace {

using Json = nlohmann::json;

const std::string EXAMPLES = sourceFolder() + "/examples/";

/// The configurations of all examples.
std::vector<std::string> examples() {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLES)) {
        // A folder of programs has none.
        if (const std::string file = entry.path().string() + "/display.xml"; std::filesystem::exists(file)) {
            files.push_back(file);
        }
    }
    return files;
}

/// As another program has it.
std::string sha256(const std::string& file) {
    return runProgram("/usr/bin/sha256sum", {file}).output.substr(0, 64);
}

class Schemas : public testing::Test {
protected:
    /// Runs a command and holds its output against the schema that it names.
    Json valid(const std::vector<std::string>& arguments) {
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_NE(run.exitCode, 2) << run.errors;
        const Json document = Json::parse(run.output);
        const std::string name = document.at("schema").get<std::string>().substr(std::string("screenmanager/").size());
        EXPECT_EQ(name, arguments[0]);
        const ProgramRun validator = validate(run.output, name);
        EXPECT_EQ(validator.exitCode, 0) << arguments[0] << validator.output << validator.errors;
        m_names.insert(name);
        return document;
    }

    ProgramRun validate(const std::string& document, const std::string& name) {
        return runProgram("/usr/bin/python3",
                          {"-W", "ignore", "-m", "jsonschema", "-i", m_folder.write("document", document),
                           sourceFolder() + "/docs/schemas/" + name + ".schema.json"});
    }

    TemporaryFolder m_folder;
    std::set<std::string> m_names;
};

TEST_F(Schemas, DescribeWhatIsPrintedOfEveryExample) {
    int mapped = 0;
    for (const std::string& file : examples()) {
        valid({"targets", file, "--format", "json", "--grid", "3x2", "--boundary", "2", "-q"});
        valid({"coverage", file, "--format", "json", "-q"});
        const Json check = valid({"check", file, "--format", "json"});
        if (!check["channels"].empty()) {
            const std::string id = check["channels"][0]["projector"];
            valid({"map", file, "--channel", id, "--point", "0.5,0.5", "--point", "7,7", "--format", "json", "-q"});
            ++mapped;
        }
    }
    EXPECT_GE(mapped, 11) << "a channel of every example but the empty one";
}

TEST_F(Schemas, DescribeWhatIsPrintedOfProjectors) {
    using namespace projector_displays;
    PjlinkSimulator left;
    const std::string two = m_folder.write("two.xml", twoProjectors(left.port(), deadPort()));
    valid({"channels", two, "--format", "json", "--timeout", PATIENT});
    valid({"channels", two, "--format", "json", "--timeout", PATIENT, "--offline"});
    valid({"prepare", two, "black", "--format", "json", "--timeout", PATIENT});
    valid({"prepare", two, "clear", "--format", "json", "--timeout", PATIENT, "--offline"});
    const auto discovered = [this](int port, const std::string& time) {
        return valid({"discover", "--broadcast", "127.0.0.1:" + std::to_string(port), "--format", "json", "--timeout",
                      time})["projectors"];
    };
    EXPECT_EQ(discovered(deadPort(), IMPATIENT).size(), 0U);
    const PjlinkSimulator open({"--search-answers", "2"});
    EXPECT_EQ(discovered(open.searchPort(), "3").size(), 2U);
    const PjlinkSimulator locked({"--mac", mac(1), "--seed", "61fa922e", "--digest", "x"});
    const Json silent = discovered(locked.searchPort(), "3");
    ASSERT_EQ(silent.size(), 1U);
    EXPECT_TRUE(silent[0]["model"].is_null()) << "without the password";
}

TEST_F(Schemas, DescribeWhatIsPrintedOfEveryFit) {
    const std::string table = m_folder.file("measured.csv");
    int fitted = 0;
    for (const std::string& file : examples()) {
        runScreenManager({"targets", file, "--grid", "6x4", "--boundary", "0", "-q", "-o", table});
        const ProgramRun run = runScreenManager(
            {"fit", file, "--points", table, "-o", m_folder.file("fitted.xml"), "--format", "json", "-q"});
        if (run.output.empty()) {
            continue;
        }
        const ProgramRun validator = validate(run.output, "fit");
        EXPECT_EQ(validator.exitCode, 0) << file << validator.output << validator.errors;
        const Json fit = Json::parse(run.output);
        fitted += fit["outcome"] == "good" ? 1 : 0;
        EXPECT_EQ(fit["files"].back()["sha256"], sha256(table));
    }
    EXPECT_GE(fitted, 7);
    m_folder.write("measured.csv",
                   "# unit m\nset,channel,u,v,x,y,z,X,Y,Z\na,,,,0,0,0,1,0,0\na,,,,1,0,0,2,0,0\n"
                   "a,,,,0,1,0,1,1,0\na,020000000001,0.5,0.5,1,2,3,,,\n");
    const Json registered = valid({"fit", EXAMPLES + "planar-wall/display.xml", "--points", table, "--register",
                                   "rigid", "-o", m_folder.file("fitted.xml"), "--format", "json", "-q"});
    EXPECT_EQ(registered["outcome"], "unusable") << "one point";
    EXPECT_EQ(registered["measurement"]["frames"].size(), 1U);
    EXPECT_TRUE(registered["written"].is_null());
}

TEST_F(Schemas, DescribeFaultsToo) {
    valid({"check", m_folder.file("gone.xml"), "--format", "json"});
    const std::string file =
        m_folder.write("bad.xml",
                       "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Mesh' "
                       "fileUnit='m'><ContentMesh file='gone.obj'/></Screen></Display>");
    const Json check = valid({"check", file, "--format", "json"});
    ASSERT_EQ(check["files"].size(), 2U);
    EXPECT_TRUE(check["files"][1]["sha256"].is_null()) << "it is not there";
}

TEST_F(Schemas, DescribeTheLightOfAnExport) {
    const std::string wall = EXAMPLES + "planar-wall/display.xml";
    const std::string player = m_folder.file("player");
    // Any picture is a content.
    const std::string content = m_folder.file("content.png");
    ASSERT_EQ(runScreenManager({"picture", wall, "-q", "--size", "200x200", "-o", content}).exitCode, 0);
    ASSERT_EQ(
        runScreenManager({"export", wall, "-q", "-o", player, "--input", "screen", "--content", content}).exitCode, 0);
    const std::string figures = m_folder.file("light.json");
    const ProgramRun run = runScreenManager({"picture", wall, "-q", "--lit", player, "--size", "300x200", "-o",
                                             m_folder.file("lit.png"), "--lit-error", figures});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const ProgramRun validator = validate(m_folder.read("light.json"), "light");
    EXPECT_EQ(validator.exitCode, 0) << validator.output << validator.errors;
    const Json document = Json::parse(m_folder.read("light.json"));
    EXPECT_GT(document["lit"], 10000);
    EXPECT_EQ(document["files"].back()["sha256"], sha256(player + "/manifest.json"));
}

// The validator looks: a document with one member too many, or of another version, does not pass.
TEST_F(Schemas, RefuseWhatTheyDoNotDescribe) {
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() + "/docs/schemas")) {
        const std::string name = entry.path().filename().string();
        EXPECT_NE(validate("{}", name.substr(0, name.find('.'))).exitCode, 0) << name;
    }
    Json check = valid({"check", EXAMPLES + "empty-wall/display.xml", "--format", "json", "--quick"});
    check["version"] = 2;
    EXPECT_NE(validate(check.dump(), "check").exitCode, 0);
    check["version"] = 1;
    EXPECT_EQ(validate(check.dump(), "check").exitCode, 0);
    check["more"] = true;
    EXPECT_NE(validate(check.dump(), "check").exitCode, 0);
}

TEST_F(Schemas, EveryFileStandsThereWithItsDigest) {
    const std::string file = EXAMPLES + "warped-wall/display.xml";
    const std::string points = m_folder.write("points.csv", "0.5,0.5\n");
    const Json document = valid({"map", file, "--channel", "Left", "--points", points, "--format", "json", "-q"});
    std::set<std::string> names;
    for (const Json& source : document["files"]) {
        const std::string name = source["name"];
        EXPECT_EQ(source["sha256"], sha256(name)) << name;
        names.insert(std::filesystem::path(name).filename());
    }
    EXPECT_EQ(names, (std::set<std::string>{"display.xml", "left.map", "right.map", "points.csv"}));
}

}  // namespace

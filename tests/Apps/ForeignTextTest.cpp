// Names, ids, file names and values that would steer a terminal, given to every command: what reaches the terminal is
// text of one line, and what reaches a file or another program is quoted as its format has it.
#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A line end, and a line as the program itself would say it; controls of seven and of eight bits; marks that turn the
/// direction of writing.
const std::string FORGED = "error: forged";
const std::string HOSTILE = "A\n" + FORGED + "\r\u0085\u009b2J\u202e\u2066\u200f\u061c\u2028Z";
/// With what a file name can hold besides.
const std::string HOSTILE_FILE = "F\n" + FORGED + "\x1b[2J\x07\x7f\u009b\u202e\u2069Z";
/// And with bytes that are no UTF-8: arguments, and names of files that no configuration names.
const std::string HOSTILE_NAME = "B\n" + FORGED + "\x1b[2J\x07\x7f\x9b\xff\u202e\u2069" + "Z";

/// As a cell of a table.
std::string quoted(const std::string& text) {
    std::string cell = "\"";
    for (const char c : text) {
        cell += c == '"' ? "\"\"" : std::string(1, c);
    }
    return cell + '"';
}

/// As an attribute or a text of XML.
std::string inXml(const std::string& text) {
    std::string xml;
    for (const char c : text) {
        xml += c == '\n' ? "&#10;" : c == '\r' ? "&#13;" : std::string(1, c);
    }
    return xml;
}

std::string projector(const std::string& elements, const std::string& id = HOSTILE, const std::string& name = HOSTILE) {
    return "<Projector id='" + inXml(id) + "'><Name>" + inXml(name) + "</Name>" + elements + "</Projector>";
}

const std::string AREA =
    "<Resolution width='64' height='40'/><ScreenArea left='0' right='1' bottom='0' top='1'/>"
    "<Layout xMin='0' xMax='1' yMin='0' yMax='1'/>";

std::string display(const std::string& projectors, const std::string& type = "PlanarBasic",
                    const std::string& files = "") {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Flat'><Centre x='0' "
           "y='5' z='1'/><Size width='4' height='2'/>" +
           files + "</Screen><TargetData type='" + type + "'/><Projectors>" + projectors + "</Projectors></Display>";
}

/// Every byte is a line end of the program, or stands for a character that is seen.
void expectSeen(const std::string& text, const std::string& what) {
    for (const char* bad : {"\x1b", "\r", "\x07", "\x7f", "\xff", "\xc2\x85", "\xc2\x9b", "\xe2\x80\xae",
                            "\xe2\x81\xa6", "\xe2\x81\xa9", "\xe2\x80\x8f", "\xd8\x9c", "\xe2\x80\xa8",
                            "\n"
                            "error: forged"}) {
        EXPECT_EQ(text.find(bad), std::string::npos) << what << ":\n" << text;
    }
    EXPECT_FALSE(text.starts_with(FORGED)) << what;
}

/// Runs one command in several ways.
class ForeignText : public testing::Test {
protected:
    /// What it says, and what it prints for people.
    ProgramRun expectSeenFrom(const std::vector<std::string>& arguments, bool isTable = true) {
        ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.signal, 0);
        expectSeen(run.errors, arguments[0]);
        if (isTable) {
            expectSeen(run.output, arguments[0]);
        }
        ++m_runs;
        m_said += run.errors + run.output;
        return run;
    }

    std::string write(const std::string& content) {
        return m_folder.write(std::to_string(m_files++) + HOSTILE_FILE + ".xml", content);
    }

    /// Displays of everything that can be wrong with a name: an area beside the screen, no map, a map and files of the
    /// screen that are missing or broken, two channels of one name.
    std::vector<std::string> displays() {
        const std::string missing = inXml(HOSTILE) + "missing";
        m_folder.write(HOSTILE + "broken.obj", "v 1 2 \x1b\nf 1 2 3\n");
        m_folder.write(HOSTILE + "broken.pcd", "FIELDS x\x1b y z\n");
        m_folder.write(HOSTILE + "broken.data", "2\n\x1b\n");
        return {write(display(projector(AREA))),
                write(display(projector("<Resolution width='64' height='40'/><ScreenArea left='5' right='6' bottom='0' "
                                        "top='1'/>"))),
                write(display(projector(AREA) + projector(AREA, "Other"))),
                write(display(projector(AREA), "CustomPlanar")),
                write(display(projector(AREA + "<CustomPlanarMap file='" + missing + ".data'/>"), "CustomPlanar")),
                write(display(projector(AREA + "<CustomPlanarMap file='" + inXml(HOSTILE) + "broken.data'/>"),
                              "CustomPlanar")),
                write(display(projector(AREA + "<ProjectionModel name='" + inXml(HOSTILE) + "'/>"), "3D")),
                write(display(projector(AREA), "PlanarBasic",
                              "<MeasuredMesh file='" + inXml(HOSTILE) + "broken.obj'/><ModelCloud file='" +
                                  inXml(HOSTILE) + "broken.pcd'/>")),
                write(display(projector(AREA), "PlanarBasic",
                              "<MeasuredMesh file='" + missing + ".obj'/><ModelCloud file='" + missing + ".pcd'/>")),
                write("<Display version='1'><" + std::string("Odd") + " a='" + inXml(HOSTILE) + "'/></Display>"),
                write("<Display\x1b>"),
                m_folder.file(HOSTILE_FILE + "missing.xml"),
                m_folder.file(HOSTILE_NAME)};
    }

    void onEveryDisplay(const std::string& command, const std::vector<std::string>& options, bool isTable) {
        for (const std::string& file : displays()) {
            for (const char* loudness : {"--verbose", "--quiet"}) {
                std::vector<std::string> arguments{command, file, loudness};
                arguments.insert(arguments.end(), options.begin(), options.end());
                expectSeenFrom(arguments, isTable);
            }
        }
    }

    std::string entryAt(int port, const std::string& id, const std::string& name) {
        return projector("<Device>" + projector_displays::snippet(port, 1) + "</Device>" + AREA, id, name);
    }

    const TemporaryFolder m_folder;
    int m_files = 0;
    int m_runs = 0;
    std::string m_said;
};

class ForeignTextOfCommand : public ForeignText {
protected:
    void check() { onEveryDisplay("check", {}, true); }
    void targets() {
        onEveryDisplay("targets", {}, false);
        expectSeenFrom({"targets", write(display(projector(AREA))), "-o", m_folder.file("no\n" + FORGED + "/x\x1b")});
    }
    void map() {
        onEveryDisplay("map", {"--channel", HOSTILE, "--point", "0.5,0.5"}, true);
        onEveryDisplay("map", {"--channel", HOSTILE, "--grid", "--nodes", "3x3"}, false);
        const std::string file = write(display(projector(AREA)));
        expectSeenFrom({"map", file, "--channel", HOSTILE_NAME});
        expectSeenFrom({"map", file, "--channel", HOSTILE, "--point", HOSTILE_NAME});
        expectSeenFrom({"map", file, "--channel", HOSTILE, "--points", m_folder.file(HOSTILE_NAME)});
        expectSeenFrom({"map", file, "--channel", HOSTILE, "--points", m_folder.makeFolder(HOSTILE_NAME + "folder")});
        expectSeenFrom({"map", file, "--channel", HOSTILE, "--points", m_folder.write(HOSTILE_NAME, HOSTILE_NAME)});
        const std::string points = m_folder.write(HOSTILE_NAME, "0.5,0.5\n");
        expectSeenFrom({"map", file, "--channel", HOSTILE, "--points", points, "-o", points});
    }
    void exporting() {
        const std::string player = m_folder.file(HOSTILE + "player");
        onEveryDisplay("export", {"--nodes", "3x3", "--test-pictures", "--force", "--output", player}, true);
        const std::string file = write(display(projector(AREA)));
        expectSeenFrom({"export", file, "--output", player});
        expectSeenFrom({"export", file, "--output", m_folder.file("no\n" + FORGED + "/x\x1b")});
        expectSeenFrom({"export", file, "--output", player, "--force", "--channel", HOSTILE_NAME});
        expectSeenFrom({"export", file, "--output", player, "--force", "--content", m_folder.file(HOSTILE_NAME)});
        expectSeenFrom({"export", file, "--output", player, "--force", "--content", m_folder.write(HOSTILE, HOSTILE)});
        expectSeenFrom({"export", file, "--output", player, "--axis", HOSTILE});
        expectSeenFrom({"export", file, "--output", player, "--blend-gamma", HOSTILE});
        expectSeenFrom({"export", file, "--output", player, "--force", "--black-level", HOSTILE_NAME + "=1"});
    }
    void coverage() {
        onEveryDisplay("coverage", {}, true);
        const std::string same = m_folder.file(HOSTILE_NAME);
        const std::string file = write(display(projector(AREA)));
        expectSeenFrom({"coverage", file, "-o", same, "--ply", same});
        expectSeenFrom({"coverage", file, "-o", file});
    }
    void view() {
        onEveryDisplay("view", {}, false);
        lit("view", {});
    }
    void picture() {
        onEveryDisplay("picture", {"--size", "200x200"}, false);
        lit("picture", {"--size", "200x200", "--lit-error", m_folder.file(HOSTILE + "errors.txt")});
    }
    /// The folder of an export, under every name and with every manifest that is faulty or of another display.
    void lit(const std::string& command, const std::vector<std::string>& options) {
        const std::string file = write(display(projector(AREA)));
        const std::string content = m_folder.file("content.png");
        EXPECT_EQ(runScreenManager({"picture", file, "-q", "--size", "200x200", "-o", content}).exitCode, 0);
        const std::string player = m_folder.file(HOSTILE_FILE + command + "player");
        EXPECT_EQ(runScreenManager(
                      {"export", file, "-q", "-o", player, "--input", "screen", "--nodes", "3x3", "--content", content})
                      .exitCode,
                  0);
        const std::string manifest = player + "/manifest.json";
        std::ifstream in(manifest);
        const nlohmann::json good = nlohmann::json::parse(in);
        const auto run = [&](const nlohmann::json& document, const std::string& display) {
            std::ofstream(manifest) << document.dump();
            for (const char* loudness : {"--verbose", "--quiet"}) {
                std::vector<std::string> arguments{command,
                                                   display,
                                                   loudness,
                                                   "--lit",
                                                   player,
                                                   "-o",
                                                   m_folder.file(command == "view" ? "lit.html" : "lit.png")};
                arguments.insert(arguments.end(), options.begin(), options.end());
                const ProgramRun shown = expectSeenFrom(arguments);
                if (document == good && display == file) {
                    EXPECT_EQ(shown.exitCode, 0) << shown.errors;
                }
            }
        };
        run(good, file);
        if (command == "view") {
            // In a page names are text of its data, which spells everything out.
            const std::string page = m_folder.read("lit.html");
            const std::string data = page.substr(page.find("id=\"scene\">") + 11);
            expectSeen(data.substr(0, data.find("</script>")), command);
            EXPECT_EQ(data.find('<'), data.find("</script>"));
        } else {
            expectSeen(m_folder.read(HOSTILE + "errors.txt"), command);
        }
        run(good, write(display(projector(AREA, "Other"))));
        const auto changed = [&](const std::function<void(nlohmann::json&)>& change) {
            nlohmann::json document = good;
            change(document);
            run(document, file);
        };
        const std::string text = HOSTILE + "\x1b[2J<b>";
        changed([&](auto& document) { document["schema"] = text; });
        changed([&](auto& document) { document[text] = text; });
        changed([&](auto& document) { document["views"][0]["channel"]["name"] = text; });
        changed([&](auto& document) { document["views"][0]["channel"]["projector"] = text; });
        changed([&](auto& document) { document["views"][0]["input"]["kind"] = text; });
        for (std::size_t i = 0; i < good["views"][0]["files"].size(); ++i) {
            changed([&](auto& document) { document["views"][0]["files"][i]["name"] = text; });
            changed([&](auto& document) { document["views"][0]["files"][i]["kind"] = text; });
            changed([&](auto& document) { document["views"][0]["files"][i]["sha256"] = text; });
        }
        std::vector<std::string> missing{command, file, "--lit", m_folder.file(HOSTILE_NAME + "none")};
        missing.insert(missing.end(), {"-o", m_folder.file(command == "view" ? "lit.html" : "lit.png")});
        expectSeenFrom(missing);
    }
    /// A table for the channels of the displays, and tables that are faulty.
    void fit() {
        std::string rows;
        for (int i = 0; i < 16; ++i) {
            const double u = (i % 4) / 3.0;
            const double v = (i / 4) / 3.0;
            rows += quoted(HOSTILE) + ',' + quoted(HOSTILE) + ',' + std::to_string(u) + ',' + std::to_string(v) + ',' +
                    std::to_string(4 * u - 2) + ",5," + std::to_string(2 * v) + ",,,\n";
        }
        const std::string head = "# unit m\nset,projector,u,v,x,y,z,X,Y,Z\n";
        const std::string table = m_folder.write(HOSTILE_NAME + ".csv", head + rows);
        const std::string fitted = m_folder.file(HOSTILE_FILE + "fitted.xml");
        onEveryDisplay("fit", {"--points", table, "-o", fitted, "--force"}, true);
        const std::string file = write(display(projector(AREA)));
        expectSeenFrom({"fit", file, "--points", table, "-o", fitted, "--register", "rigid"});
        expectSeenFrom({"fit", file, "--points", m_folder.file(HOSTILE_NAME + "none"), "-o", fitted});
        expectSeenFrom({"fit", file, "--points", table, "-o", table});
        expectSeenFrom({"fit", file, "--points", table, "-o", m_folder.file("no\n" + FORGED + "/x\x1b")});
        expectSeenFrom({"fit", file, "--points", table, "-o", fitted, "--solve", HOSTILE_NAME});
        expectSeenFrom({"fit", file, "--points", table, "-o", fitted, "--channel", HOSTILE_NAME});
        for (const std::string& faulty :
             {HOSTILE_NAME, "# unit " + HOSTILE + "\nu,v,x,y,z\n", head + quoted(HOSTILE_NAME),
              head + ",X" + quoted(HOSTILE_NAME) + ",0,0,1,1,1,,,\n",
              head + "," + quoted(HOSTILE_FILE) + ",0,0,1,1,1,,,\n"}) {
            expectSeenFrom({"fit", file, "--points", m_folder.write("faulty.csv", faulty), "-o", fitted});
        }
    }
    void channels() {
        const PjlinkSimulator simulator({"--answer", "SVER=\u202e\u009b", "--answer", "INST=\u2028"});
        const std::string device = "<Device>" + projector_displays::snippet(simulator.port(), 1) + "</Device>";
        const int dead = projector_displays::deadPort();
        for (const std::string& entries :
             {entryAt(simulator.port(), HOSTILE, HOSTILE), entryAt(dead, HOSTILE, HOSTILE), std::string(),
              entryAt(dead, HOSTILE, HOSTILE) + entryAt(dead, "Other", HOSTILE),
              projector("<Device><Device type='" + inXml(HOSTILE) + "'/></Device>" + AREA)}) {
            const std::string file = write(display(entries));
            for (const char* option : {"--verbose", "--offline"}) {
                expectSeenFrom({"channels", file, "--timeout", "0.5", option});
            }
        }
        onEveryDisplay("channels", {"--timeout", "0.01"}, true);
    }
    void prepare() {
        const PjlinkSimulator simulator({"--answer", "AVMT 11=ERR4"});
        const int dead = projector_displays::deadPort();
        for (const std::string& entries :
             {entryAt(simulator.port(), HOSTILE, HOSTILE), entryAt(dead, HOSTILE, HOSTILE), std::string()}) {
            const std::string file = write(display(entries));
            for (const char* option : {"--verbose", "--offline"}) {
                expectSeenFrom({"prepare", file, "black", "--timeout", "0.5", option});
            }
        }
        onEveryDisplay("prepare", {"clear", "--offline", "--timeout", "0.01"}, true);
    }
    void discover() {
        const PjlinkSimulator simulator(
            {"--mac", "02:00:00:00:00:01", "--answer", "NAME=\u202e\u009b\u2028", "--answer", "INF2=\u200f"});
        const std::string place = "127.0.0.1:" + std::to_string(simulator.searchPort());
        expectSeenFrom({"discover", "--timeout", "0.5", "--broadcast", place});
        const PjlinkSimulator odd({"--mac", "02:00:00:00:00:01", "--greeting", "\u202e\x1b[2J"});
        expectSeenFrom(
            {"discover", "--timeout", "0.5", "--broadcast", "127.0.0.1:" + std::to_string(odd.searchPort())});
        expectSeenFrom({"discover", "--broadcast", HOSTILE_NAME});
        expectSeenFrom({"discover", "--timeout", HOSTILE_NAME});
    }
    void add() {
        const PjlinkSimulator simulator({"--mac", "02:00:00:00:00:01"});
        const std::string place = "127.0.0.1:" + std::to_string(simulator.port());
        const std::string file = write(display(""));
        const ProgramRun added = expectSeenFrom({"add", file, place, "--name", HOSTILE, "--timeout", "5"});
        EXPECT_EQ(added.exitCode, 0) << added.errors;
        expectSeenFrom({"add", file, place, "--name", HOSTILE, "--timeout", "5"});
        expectSeenFrom({"add", file, HOSTILE_NAME});
        expectSeenFrom({"add", file, place, "--mac", HOSTILE_NAME});
        expectSeenFrom({"add", file, place, "--name", HOSTILE_NAME});
        onEveryDisplay("add",
                       {"127.0.0.1:" + std::to_string(projector_displays::deadPort()), "--mac", "02:00:00:00:00:05",
                        "--timeout", "0.01"},
                       true);
    }
};

TEST_F(ForeignTextOfCommand, SteersNoTerminalWhicheverCommandItIs) {
    const std::map<std::string, std::function<void()>> ways{
        {"check", [this] { check(); }},      {"targets", [this] { targets(); }},   {"map", [this] { map(); }},
        {"export", [this] { exporting(); }}, {"coverage", [this] { coverage(); }}, {"view", [this] { view(); }},
        {"picture", [this] { picture(); }},  {"fit", [this] { fit(); }},           {"channels", [this] { channels(); }},
        {"prepare", [this] { prepare(); }},  {"discover", [this] { discover(); }}, {"add", [this] { add(); }}};
    const std::vector<std::string> commands = commandsOfTheProgram();
    ASSERT_GE(commands.size(), 10U);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        const auto way = ways.find(command);
        ASSERT_NE(way, ways.end()) << "a command that this test does not know";
        m_runs = 0;
        m_said.clear();
        way->second();
        EXPECT_GE(m_runs, 4);
        EXPECT_THAT(m_said, HasSubstr("\\n" + FORGED)) << "its names were said";
    }
}

TEST_F(ForeignText, NeitherDoesAWrongCommandLine) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{HOSTILE_NAME},
                                                      {"check", "a", HOSTILE_NAME},
                                                      {"targets", "a", "--format", HOSTILE_NAME},
                                                      {"targets", "a", "--grid", HOSTILE_NAME},
                                                      {"targets", "a", "--" + HOSTILE_NAME},
                                                      {"-" + HOSTILE_NAME}}) {
        const ProgramRun run = expectSeenFrom(arguments);
        EXPECT_EQ(run.exitCode, 2) << run.errors;
        EXPECT_THAT(run.errors, HasSubstr("\\n" + FORGED));
        EXPECT_THAT(run.errors, HasSubstr("Run with --help for more"));
    }
}

/// The cells of the first record behind the header, read as RFC 4180 has it.
std::vector<std::string> firstRecord(const std::string& csv) {
    std::vector<std::string> cells{""};
    bool isQuoted = false;
    for (std::size_t i = csv.find('\n') + 1; i < csv.size(); ++i) {
        if (isQuoted && csv[i] == '"' && i + 1 < csv.size() && csv[i + 1] == '"') {
            cells.back() += csv[++i];
        } else if (csv[i] == '"') {
            isQuoted = !isQuoted;
        } else if (!isQuoted && csv[i] == ',') {
            cells.emplace_back();
        } else if (!isQuoted && csv[i] == '\n') {
            break;
        } else {
            cells.back() += csv[i];
        }
    }
    return cells;
}

TEST_F(ForeignText, StandsAsItIsInWhatOtherProgramsRead) {
    const std::string id = HOSTILE + ",\"";
    const std::string file = write(display(projector(AREA, HOSTILE + ",&quot;", "\"" + HOSTILE + ",")));
    const auto cells = firstRecord(tableOf(runScreenManager({"targets", file, "--quiet"}).output));
    ASSERT_EQ(cells.size(), 10U);
    EXPECT_EQ(cells[0], "\"" + HOSTILE + ",");
    EXPECT_EQ(cells[1], id);
    EXPECT_EQ(cells[2], "grid");
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"targets", file, "--format", "json", "--quiet"},
          {"coverage", file, "--json", "--quiet"}}) {
        const std::string json = runScreenManager(command).output;
        expectSeen(json, "JSON has its own way to spell them out");
        const auto document = nlohmann::json::parse(json);
        EXPECT_EQ(document.at("channels").at(0).at("name"), "\"" + HOSTILE + ",");
        EXPECT_EQ(document.at("channels").at(0).at("projector"), id);
    }
    const std::string ply = runScreenManager({"targets", file, "--format", "ply", "--quiet"}).output;
    EXPECT_THAT(ply, HasSubstr("\ncomment channel 0: \"A\\n" + FORGED));
    expectSeen(ply, "a comment of a PLY file ends with its line");
}

TEST(ForeignTextInSources, HasOneWayToStandardError) {
    std::vector<std::string> ways;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() + "/Apps/screenmanager")) {
        std::ifstream in(entry.path());
        const std::string source{std::istreambuf_iterator<char>(in), {}};
        for (const char* way : {"std::cerr", "std::clog", "stderr", "STDERR_FILENO", "perror"}) {
            if (source.find(way) != std::string::npos) {
                ways.push_back(entry.path().filename().string() + ": " + way);
            }
        }
    }
    // A terminal is asked for; a fixed text is written where there is no memory for another; the meter erases its line;
    // the log must not go where standard error leads, which is named there.
    EXPECT_THAT(ways, testing::UnorderedElementsAre(
                          "CommandLine.cpp: stderr", "Console.cpp: std::cerr", "FailureReport.cpp: STDERR_FILENO",
                          "ProgressMeter.cpp: STDERR_FILENO", "ProgressMeter.cpp: std::cerr"));
}

}  // namespace

// Every command with less and less memory, and with allocations that fail: it ends as the manual page has it, says so
// in words, and what was there before stays.
#include "ProgramRun.h"
#include "ProjectorDisplays.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t MEGABYTE = 1'000'000;
constexpr int ALL_RIGHT = 0;
constexpr int INCOMPLETE = 1;
constexpr int OUT_OF_MEMORY = 5;

/// A bumpy wall of 2 n^2 triangles with texture coordinates.
std::string wall(int n) {
    std::ostringstream obj;
    for (int row = 0; row <= n; ++row) {
        for (int column = 0; column <= n; ++column) {
            const double s = static_cast<double>(column) / n;
            const double t = static_cast<double>(row) / n;
            obj << "v " << 4 * s - 2 << ' ' << 5 + 0.3 * std::sin(9 * s) * std::cos(7 * t) << ' ' << 2 * t << "\nvt "
                << s << ' ' << t << '\n';
        }
    }
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            const int a = row * (n + 1) + column + 1;
            const int c = a + n + 1;
            obj << "f " << a << '/' << a << ' ' << a + 1 << '/' << a + 1 << ' ' << c + 1 << '/' << c + 1 << ' ' << c
                << '/' << c << '\n';
        }
    }
    return obj.str();
}

std::string cloud(std::size_t points, const std::string& size, const std::string& data) {
    std::string file =
        "FIELDS x y z\nSIZE " + size + "\nTYPE F F F\nPOINTS " + std::to_string(points) + "\nDATA " + data;
    if (data == "binary") {
        return file + '\n' + std::string(points * (size == "8 8 8" ? 24 : 12), '\0');
    }
    file += '\n';
    for (std::size_t i = 0; i < points; ++i) {
        file += std::to_string(i) + ".5 2.25 -nan\n";
    }
    return file;
}

class Memory : public testing::Test {
protected:
    void SetUp() override {
        if (IS_SANITIZED) {
            GTEST_SKIP() << "the address sanitizer takes terabytes of address space for itself";
        }
        m_least = leastMemory();
        m_folder.write("wall.obj", wall(100));
        m_folder.write("cloud.pcd", cloud(300'000, "4 4 4", "binary"));
        m_folder.write("doubles.pcd", cloud(150'000, "8 8 8", "binary"));
        m_folder.write("text.pcd", cloud(50'000, "4 4 4", "ascii"));
        m_simulator.emplace(std::vector<std::string>{"--mac", "02:00:00:00:00:01"});
    }

    /// So many bytes that the program can start at all, to a megabyte.
    static std::size_t leastMemory() {
        std::size_t least = 16 * MEGABYTE;
        while (runScreenManagerUnder({{}, "", least}, {"--version"}).exitCode != ALL_RIGHT) {
            least += 4 * MEGABYTE;
            if (least > 4000 * MEGABYTE) {
                throw std::runtime_error("the program does not start");
            }
        }
        return least;
    }

    static std::string projector(const std::string& id, const std::string& device) {
        return "<Projector id='" + id + "'><Name>Channel " + id + "</Name>" + device +
               "<Resolution width='320' height='200'/><ScreenArea left='0' right='0.6' bottom='0' top='1'/><Layout "
               "xMin='0' xMax='4' yMin='0' yMax='2'/></Projector>";
    }

    static std::string display(const std::string& files, const std::string& projectors) {
        return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Mesh'>"
               "<ContentMesh file='wall.obj'/>" +
               files + "</Screen><TargetData type='PlanarBasic'/><Projectors>" + projectors + "</Projectors></Display>";
    }

    /// A configuration that itself needs memory: tens of megabytes of comments.
    [[nodiscard]] std::string longDisplay() const {
        constexpr std::size_t COMMENT = 4 * MEGABYTE;
        std::string text;
        for (int i = 0; i < 4; ++i) {
            text += "<!--" + std::string(COMMENT, 'x') + "-->";
        }
        return display("", projector("P0",
                                     "<Device>" + projector_displays::snippet(m_simulator->port(), 2) + "</Device>")) +
               text;
    }

    /// A run, and the file that it writes with what stands there before every run; no name where it writes none.
    struct Way {
        std::vector<std::string> arguments;
        std::string output;
        std::string before = "what was there before\n";
    };

    void putBack(const Way& way) const {
        if (!way.output.empty()) {
            m_folder.write(way.output, way.before);
        }
    }

    /// What can be told from a run.
    struct Outcome {
        ProgramRun run;
        std::string file;
    };

    [[nodiscard]] Outcome outcomeOf(const Way& way, const RunConditions& conditions = {}) const {
        putBack(way);
        Outcome outcome{runScreenManagerUnder(conditions, way.arguments), ""};
        if (!way.output.empty()) {
            outcome.file = m_folder.read(way.output);
        }
        return outcome;
    }

    /// As with all the memory it wants, or in words that there was too little. True when there was.
    bool expectSameOrSaid(const Way& way, const Outcome& outcome, const Outcome& usual) const {
        const ProgramRun& run = outcome.run;
        EXPECT_EQ(run.signal, 0) << run.errors;
        EXPECT_THAT(run.errors, AllOf(Not(HasSubstr("std::")), Not(HasSubstr("_M_"))));
        if (run.exitCode != OUT_OF_MEMORY) {
            EXPECT_EQ(run.exitCode, usual.run.exitCode) << run.errors << run.output;
            EXPECT_EQ(run.output, usual.run.output);
            EXPECT_TRUE(outcome.file == usual.file) << "the same result";
            return false;
        }
        EXPECT_THAT(run.errors, HasSubstr("error: not enough memory"));
        // Memory may also be missing for what is said of a result that is written already.
        EXPECT_TRUE(way.output.empty() || outcome.file == way.before || outcome.file == usual.file)
            << "the old file stays";
        return true;
    }

    /// The command with every memory from where it can start to where it succeeds twice in a row. How often memory was
    /// short.
    int expectDecency(const Way& way) {
        constexpr std::size_t STEP = 7 * MEGABYTE;
        constexpr std::size_t MOST = 2000 * MEGABYTE;
        const Outcome usual = outcomeOf(way);
        EXPECT_THAT(usual.run.exitCode, AnyOf(ALL_RIGHT, INCOMPLETE)) << usual.run.errors;
        int successes = 0;
        int failures = 0;
        for (std::size_t memory = m_least; successes < 2 && memory < MOST; memory += STEP) {
            SCOPED_TRACE(testing::PrintToString(way.arguments) + " with " + std::to_string(memory) + " bytes");
            const Outcome outcome = outcomeOf(way, {{}, "", memory});
            if (expectSameOrSaid(way, outcome, usual)) {
                ++failures;
            } else {
                EXPECT_THAT(outcome.run.errors, Not(HasSubstr("memory")));
                ++successes;
            }
        }
        EXPECT_EQ(successes, 2) << testing::PrintToString(way.arguments);
        return failures;
    }

    /// Which allocations fail, of those that a library makes once the program has started; all when it has no name.
    struct Failing {
        std::string library;
        long from = 0;
        long count = 0;
    };

    [[nodiscard]] RunConditions conditionsOf(const Failing& failing) const {
        return {{{"LD_PRELOAD", failingAllocations()},
                 {"SM_ALLOCATIONS", m_folder.file("allocations")},
                 {"SM_FAIL_IN", failing.library},
                 {"SM_FAIL_FROM", std::to_string(failing.from)},
                 {"SM_FAIL_COUNT", std::to_string(failing.count)}}};
    }

    /// Lets one allocation fail, and all from there on, at places spread over the whole run. How often that was said.
    int expectDecencyWherever(const Way& way, const std::string& library, long places) {
        const Outcome usual = outcomeOf(way, conditionsOf({library, 0, 0}));
        const long allocations = std::stol(m_folder.read("allocations"));
        EXPECT_GT(allocations, places) << library;
        int failures = 0;
        for (long place = 0; place < places; ++place) {
            for (const long count : {1L, allocations}) {
                const Failing failing{library, 1 + place * (allocations - 1) / (places - 1), count};
                SCOPED_TRACE(testing::PrintToString(way.arguments) + ", from " + std::to_string(failing.from) + " of " +
                             std::to_string(allocations) + ", " + std::to_string(count));
                const Outcome outcome = outcomeOf(way, conditionsOf(failing));
                // There the C library ends the process by itself.
                if (!outcome.run.errors.starts_with("Fatal glibc error: failed to register TLS destructor")) {
                    failures += expectSameOrSaid(way, outcome, usual) ? 1 : 0;
                }
            }
        }
        return failures;
    }

    const TemporaryFolder m_folder;
    std::optional<PjlinkSimulator> m_simulator;
    std::size_t m_least = 0;
};

TEST_F(Memory, IsMissedInWordsByEveryCommand) {
    const std::string file = m_folder.write("display.xml", display("", projector("P0", "") + projector("P1", "")));
    const std::string longFile = m_folder.write("long.xml", longDisplay());
    const std::string place = "127.0.0.1:" + std::to_string(m_simulator->port());
    const auto to = [this](const std::string& name) { return m_folder.file(name); };
    const std::string measured = to("measured.csv");
    ASSERT_EQ(runScreenManager({"targets", "-q", file, "--boundary", "0", "-o", measured}).exitCode, ALL_RIGHT);
    const std::map<std::string, std::vector<Way>> ways{
        {"check", {{{"check", file}, ""}}},
        {"targets",
         {{{"targets", file, "-o", to("o.csv"), "--grid", "200x200"}, "o.csv"},
          {{"targets", file, "-o", to("o.json"), "--format", "json", "--grid", "200x200", "-v"}, "o.json"},
          {{"targets", file, "-o", to("o.ply"), "--format", "ply", "-q"}, "o.ply"}}},
        {"map",
         {{{"map", longFile, "--channel", "P0", "--grid", "-o", to("o.data")}, "o.data"},
          {{"map", longFile, "--channel", "P0", "--grid", "--format", "png", "-o", to("o.png")}, "o.png"},
          {{"map", longFile, "--channel", "P0", "--point", "0.5,0.5", "-o", to("o.csv")}, "o.csv"}}},
        {"export",
         {{{"export", file, "--force", "--output", to("player"), "--format", "obj", "--format", "png16", "--jobs", "2"},
           ""},
          {{"export", file, "--force", "--output", to("pictures"), "--nodes", "3x3", "--test-pictures", "--black-level",
            "0.1"},
           ""}}},
        {"coverage",
         {{{"coverage", file, "-o", to("o.txt"), "--ply", to("c.ply")}, "o.txt"},
          {{"coverage", file, "--json", "-o", to("o.json")}, "o.json"}}},
        {"view", {{{"view", file, "-o", to("o.html")}, "o.html"}}},
        {"picture",
         {{{"picture", file, "-o", to("o.png")}, "o.png"},
          {{"picture", file, "-o", to("o.svg")}, "o.svg"},
          {{"picture", file, "-o", to("o.pdf")}, "o.pdf"}}},
        {"fit",
         {{{"fit", file, "--points", measured, "-o", to("o.xml")}, "o.xml"},
          {{"fit", file, "--points", measured, "-o", to("o.xml"), "--format", "json"}, "o.xml"}}},
        {"channels", {{{"channels", longFile, "--timeout", "5"}, ""}}},
        {"prepare", {{{"prepare", longFile, "clear", "--timeout", "5"}, ""}}},
        {"discover", {{{"discover", "--timeout", "0.05", "--broadcast", place}, ""}}},
        {"add", {{{"add", longFile, place, "--timeout", "5"}, "long.xml", longDisplay()}}},
    };
    for (const std::string& command : commandsOfTheProgram()) {
        const auto way = ways.find(command);
        ASSERT_NE(way, ways.end()) << "a command that this test does not know: " << command;
        for (const Way& run : way->second) {
            const int failures = expectDecency(run);
            // A search needs no more memory than a start.
            EXPECT_TRUE(failures > 0 || command == "discover") << "memory was never short for " << command;
        }
    }
}

TEST_F(Memory, IsMissedInWordsWhateverFileItIsFor) {
    for (const std::string files : {"<MeasuredMesh file='wall.obj'/>", "<ModelCloud file='cloud.pcd'/>",
                                    "<ModelCloud file='doubles.pcd'/>", "<ModelCloud file='text.pcd'/>"}) {
        const std::string file = m_folder.write("display.xml", display(files, projector("P0", "")));
        const Way way{{"targets", file, "-o", m_folder.file("o.csv"), "-v"}, "o.csv"};
        EXPECT_GT(expectDecency(way), 0) << files;
    }
}

TEST_F(Memory, IsMissedInWordsWhicheverAllocationFails) {
    const std::string file = m_folder.write("display.xml", display("", projector("P0", "") + projector("P1", "")));
    constexpr long PLACES = 12;
    for (const Way& way :
         {Way{{"check", file}, ""}, Way{{"targets", file, "-o", m_folder.file("o.csv")}, "o.csv"},
          Way{{"view", file, "-o", m_folder.file("o.html"), "--log", m_folder.file("log")}, "o.html"},
          Way{{"map", file, "--channel", "P0", "--point", "0.5,0.5", "-o", m_folder.file("o.txt")}, "o.txt"}}) {
        EXPECT_GE(expectDecencyWherever(way, "", PLACES), PLACES) << way.arguments[0];
    }
}

TEST_F(Memory, IsMissedInWordsWhileTheLightOfAnExportIsAddedUp) {
    // The light of a mesh takes longer, and no more memory.
    const std::string file = m_folder.write(
        "display.xml",
        "<Display version='1' lengthUnit='m'><Units native='m'/><Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size "
        "width='4' height='2'/></Screen><TargetData type='PlanarBasic'/><Projectors>" +
            projector("P0", "") + projector("P1", "") + "</Projectors></Display>");
    const std::string content = m_folder.file("content.png");
    ASSERT_EQ(runScreenManager({"picture", file, "-q", "--size", "200x200", "-o", content}).exitCode, ALL_RIGHT);
    const std::string player = m_folder.file("player");
    ASSERT_EQ(runScreenManager(
                  {"export", file, "-q", "-o", player, "--input", "screen", "--nodes", "5x5", "--content", content})
                  .exitCode,
              ALL_RIGHT);
    const Way picture{{"picture", file, "--lit", player, "-o", m_folder.file("o.png")}, "o.png"};
    const Way view{{"view", file, "--lit", player, "-o", m_folder.file("o.html")}, "o.html"};
    constexpr long PLACES = 6;
    for (const Way& way : {picture, view}) {
        EXPECT_GT(expectDecency(way), 0) << way.arguments[0];
        EXPECT_GE(expectDecencyWherever(way, "", PLACES), PLACES) << way.arguments[0];
    }
}

TEST_F(Memory, IsNotTakenForADigestThatIsMissing) {
    const std::string file = m_folder.write("display.xml", display("", projector("P0", "") + projector("P1", "")));
    constexpr long PLACES = 5;
    for (const Way& way : {Way{{"check", file}, ""}, Way{{"view", file, "-o", m_folder.file("o.html")}, "o.html"}}) {
        EXPECT_GE(expectDecencyWherever(way, "libcrypto", PLACES), PLACES) << way.arguments[0];
    }
}

TEST_F(Memory, IsNamedTogetherWithWhatNeedsIt) {
    // A mesh and a cloud of a terabyte that take no place on the disk.
    constexpr std::uintmax_t TERABYTE = std::uintmax_t{1} << 40;
    const std::string file = m_folder.write("display.xml", display("", projector("P0", "")));
    std::filesystem::resize_file(m_folder.file("wall.obj"), TERABYTE);
    for (const char* command : {"check", "targets", "coverage", "view"}) {
        const ProgramRun run = runScreenManagerUnder({{}, "", 1000 * MEGABYTE}, {command, file});
        EXPECT_EQ(run.exitCode, OUT_OF_MEMORY) << command;
        EXPECT_EQ(run.errors,
                  "error: not enough memory: allow the program more, or use smaller meshes, clouds, grids or pictures\n"
                  "  while: Insufficient memory to load screen file.\n")
            << command;
        EXPECT_EQ(run.output, "") << command;
    }
}

}  // namespace

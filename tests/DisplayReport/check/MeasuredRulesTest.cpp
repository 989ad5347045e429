// What was measured against what was designed.
#include "CheckedDisplays.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <numbers>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

struct Vertex {
    double x;
    double up;
    double back;
};

/// The text of a mesh with its vertices moved, and nothing else.
std::string moved(const std::string& mesh, const std::function<Vertex(Vertex)>& move) {
    std::istringstream lines(mesh);
    std::ostringstream out;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("v ")) {
            std::istringstream numbers(line.substr(2));
            Vertex vertex{};
            numbers >> vertex.x >> vertex.up >> vertex.back;
            vertex = move(vertex);
            out << "v " << vertex.x << ' ' << vertex.up << ' ' << vertex.back << '\n';
        } else {
            out << line << '\n';
        }
    }
    return out.str();
}

std::string& fileOf(sound::Display& display, const std::string& file) {
    for (auto& [name, content] : display.files) {
        if (name == file) {
            return content;
        }
    }
    throw std::out_of_range(file);
}

std::vector<std::string> foundBy(const sound::Display& display, const std::string& rule) {
    DisplayFolder folder;
    std::vector<std::string> found;
    for (const std::string& text : reported(folder.checked(display))) {
        if (text.find("[" + rule + "]") != std::string::npos) {
            found.push_back(text);
        }
    }
    return found;
}

/// A display with its measured mesh moved.
std::vector<std::string> foundMoved(const char* name, const std::function<Vertex(Vertex)>& move) {
    sound::Display display = sound::named(name);
    std::string& measured = fileOf(display, "measured.obj");
    measured = moved(measured, move);
    return foundBy(display, "measured-apart");
}

std::function<Vertex(Vertex)> turnedBy(double degrees) {
    const double angle = degrees * std::numbers::pi / 180.0;
    return [angle](Vertex v) {
        return Vertex{v.x * std::cos(angle) - v.back * std::sin(angle), v.up,
                      v.x * std::sin(angle) + v.back * std::cos(angle)};
    };
}

TEST(MeasuredMesh, WhatIsBuiltALittleOffIsLeftAlone) {
    for (const char* display : {"mesh-wall", "mesh-rays"}) {
        EXPECT_THAT(foundMoved(display, [](Vertex v) { return v; }), IsEmpty());
        EXPECT_THAT(foundMoved(display, [](Vertex v) { return Vertex{v.x + 40, v.up + 40, v.back + 40}; }), IsEmpty());
        EXPECT_THAT(foundMoved(display,
                               [](Vertex v) {
                                   return Vertex{1.01 * v.x, 1.01 * v.up, 1.01 * v.back};
                               }),
                    IsEmpty());
        EXPECT_THAT(foundMoved(display, turnedBy(1)), IsEmpty());
    }
}

/// What lies on one of the two alone is a part that the scan lacks, or a frame that the design lacks.
TEST(MeasuredMesh, PartsThatOneOfTheTwoLacksAreLeftAlone) {
    for (const auto& [content, measured] : {std::pair("half88.obj", "wall.obj"), std::pair("wall.obj", "half88.obj")}) {
        sound::Display display = sound::named("mesh-rays");
        display.text = changed(display.text, "'measured.obj'", "'[" + std::string(measured) + "]'");
        display.text = changed(display.text, "'wall.obj'", "'" + std::string(content) + "'");
        display.text = changed(display.text, "'[" + std::string(measured) + "]'", "'" + std::string(measured) + "'");
        EXPECT_THAT(foundBy(display, "measured-apart"), IsEmpty()) << content << " beside " << measured;
    }
}

TEST(MeasuredMesh, LiftedScaledAndTurnedOnesAreReported) {
    for (const char* display : {"mesh-wall", "mesh-rays"}) {
        EXPECT_THAT(foundMoved(display,
                               [](Vertex v) {
                                   return Vertex{v.x, v.up + 1000, v.back};
                               }),
                    testing::ElementsAre(
                        "measured mesh: about 35 % of it and 35 % of the content screen lie more than 0.16637 m away "
                        "from each other (at most 3 % of one of them is usual): check its scale, up and forward "
                        "of ImportOrientation, and that both files have one origin [measured-apart]"));
        EXPECT_THAT(foundMoved(display,
                               [](Vertex v) {
                                   return Vertex{1.1 * v.x, 1.1 * v.up, 1.1 * v.back};
                               }),
                    Contains(HasSubstr("about 100 % of it and 100 % of the content screen lie more than")));
        EXPECT_THAT(foundMoved(display, turnedBy(10)),
                    Contains(HasSubstr("of it and 6 % of the content screen lie more than")));
        EXPECT_THAT(foundMoved(display,
                               [](Vertex v) {
                                   return Vertex{v.x + 600, v.up, v.back};
                               }),
                    Contains(HasSubstr("[measured-apart]")));
    }
}

/// The limit is 3 % of a wall of 140 degrees and 4.02 m, beyond 0.166 m of its edge: turned by 6.6 degrees.
TEST(MeasuredMesh, TurnedOnesAreReportedFromThreePercentOn) {
    EXPECT_THAT(foundMoved("mesh-rays", turnedBy(6.0)), IsEmpty());
    EXPECT_THAT(foundMoved("mesh-rays", turnedBy(7.2)), Contains(HasSubstr("[measured-apart]")));
}

TEST(MeasuredMesh, TheSameSurfaceTheOtherWayRoundIsReported) {
    EXPECT_THAT(foundMoved("mesh-rays",
                           [](Vertex v) {
                               return Vertex{v.x, 2400 - v.up, v.back};
                           }),
                Contains(HasSubstr("measured mesh: its t runs against that of the content screen at the same places, "
                                   "as if it stood upside down: check up and forward")));
    EXPECT_THAT(foundMoved("mesh-rays",
                           [](Vertex v) {
                               return Vertex{-v.x, v.up, v.back};
                           }),
                Contains(HasSubstr("its s runs against that of the content screen at the same places, as if it stood "
                                   "with its left to the right")));
    EXPECT_THAT(foundMoved("mesh-rays",
                           [](Vertex v) {
                               return Vertex{-v.x, 2400 - v.up, v.back};
                           }),
                Contains(HasSubstr("as if it stood on its head")));
}

/// Of a display addressed by (s, t), on whose wall 0.04 are 5.6 degrees.
TEST(MeasuredMesh, ShiftedTextureCoordinatesAreReported) {
    EXPECT_THAT(foundMoved("mesh-wall", turnedBy(5)), IsEmpty());
    EXPECT_THAT(foundMoved("mesh-wall", turnedBy(6.2)),
                Contains(HasSubstr("measured mesh: its (s, t) differ by 0.04")));
    EXPECT_THAT(foundMoved("mesh-rays", turnedBy(6.2)), IsEmpty()) << "rays look at no texture";
}

TEST(MeasuredMesh, FilesThatAreCalledTheOtherWayRoundAreReported) {
    sound::Display display = sound::named("mesh-wall");
    display.files.emplace_back("wall-measured.obj", fileOf(display, "measured.obj"));
    display.text = changed(display.text, "'wall.obj'", "'wall-measured.obj'");
    display.text = changed(display.text, "'measured.obj'", "'wall.obj'");
    EXPECT_THAT(foundBy(display, "measured-apart"), Contains(HasSubstr("exchange the two, or rename them")));
    display.text = changed(display.text, "'wall.obj'", "'measured.obj'");
    EXPECT_THAT(foundBy(display, "measured-apart"), IsEmpty()) << "both are called so";
}

TEST(MeasuredMesh, OneFileIsFoundByItsBytes) {
    sound::Display display = sound::named("mesh-wall");
    display.text = changed(display.text, "'measured.obj'", "'./wall.obj'");
    EXPECT_THAT(foundBy(display, "same-file"),
                Contains("measured mesh: it is the file of the content mesh: name the mesh that was measured, or leave "
                         "MeasuredMesh out [same-file]"));
    display = sound::named("mesh-rays");
    fileOf(display, "measured.obj") = fileOf(display, "wall.obj");
    EXPECT_THAT(foundBy(display, "same-file"),
                Contains(testing::AllOf(HasSubstr("measured mesh: it has the bytes of the content mesh, "),
                                        HasSubstr("wall.obj: name the mesh that was measured"))));
    fileOf(display, "measured.obj") += "# one more byte\n";
    EXPECT_THAT(foundBy(display, "same-file"), IsEmpty());
}

std::string text(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream out;
    out << file.rdbuf();
    return out.str();
}

/// The scan of the curved wall, lifted by so many millimetres.
std::vector<std::string> foundByScan(double lift) {
    const std::string folder = sourceFolder() + "/examples/curved-wall/";
    sound::Display display = sound::named("mesh-wall");
    std::istringstream lines(text(folder + "wall-scan.pcd"));
    std::ostringstream out;
    bool isData = false;
    for (std::string line; std::getline(lines, line);) {
        Vertex v{};
        std::istringstream numbers(line);
        if (isData && numbers >> v.x >> v.up >> v.back) {
            out << v.x << ' ' << v.up + lift << ' ' << v.back << '\n';
        } else {
            out << line << '\n';
        }
        isData = isData || line == "DATA ascii";
    }
    fileOf(display, "scan.pcd") = out.str();
    return foundBy(display, "measured-apart");
}

TEST(MeasuredCloud, ADenseOneIsComparedPointByPoint) {
    EXPECT_THAT(foundByScan(0), IsEmpty());
    EXPECT_THAT(foundByScan(600), Contains(HasSubstr("model cloud: about 1")));
}

}  // namespace

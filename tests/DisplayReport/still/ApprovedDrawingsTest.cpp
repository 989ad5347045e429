// Whole drawings against those that were looked at: whatever moves, vanishes or changes its colour is seen here, also
// where no other test has a formula for it.
//
// When pictures are meant to change: look at the new ones (`screenmanager picture`), run these tests once with the
// variable SM_APPROVE_DRAWINGS set, which replaces the files in `approved/`, and read the difference before committing.
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/scene/SceneCollector.h"
#include "DisplayReport/scene/SceneLighter.h"
#include "DisplayReport/scene/SceneResiduals.h"
#include "DisplayReport/still/ChannelPicturePainter.h"
#include "DisplayReport/still/ScenePainter.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/LogTrap.h"
#include "support/TestPaths.h"
#include "support/TextLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace Veltrani::DisplayReport;

constexpr int APPROVED_WIDTH = 1000;
constexpr int APPROVED_HEIGHT = 640;
/// Pixels, beside the last digit that is written.
constexpr double ROUNDING = 0.015;
constexpr double OF_SIZE = 1e-5;

/// A drawing as lines of text: a kind, its places in pixels, how near they are, its colour.
class DrawingText {
public:
    static std::string of(const Drawing& drawing) {
        DrawingText text;
        text.addTriangles(drawing.triangles);
        for (const auto& line : drawing.lines) {
            text.begin(line.isDashed ? "dashes" : "line").place(line.from).place(line.to);
            text.colour(line.colour).number(line.width).end();
        }
        for (const auto& disc : drawing.discs) {
            text.begin("disc").place(disc.centre).colour(disc.colour).number(disc.radius).end();
        }
        text.addBoxes("box", drawing.boxes);
        for (const auto& disc : drawing.discsOnTop) {
            text.begin("disc on top").place(disc.centre).colour(disc.colour).number(disc.radius).end();
        }
        for (const auto& one : drawing.texts) {
            text.begin("text").number(one.right).number(one.down).number(one.size).colour(one.colour);
            text.m_text << ' ' << static_cast<int>(one.anchor) << (one.hasHalo ? " halo " : " ") << one.text << '\n';
        }
        text.addBoxes("box over texts", drawing.boxesOverTexts);
        return text.m_text.str();
    }

private:
    DrawingText& begin(const char* kind) {
        m_text << kind;
        return *this;
    }

    DrawingText& number(double value, const char* format = " %.2f") {
        std::array<char, 40> digits{};
        // Never "-0.00".
        std::snprintf(digits.data(), digits.size(), format, std::abs(value) < 0.005 ? 0.0 : value);
        m_text << digits.data();
        return *this;
    }

    /// How near it is, in hundredths of 1 / native unit.
    DrawingText& place(const Drawing::Place& place) {
        constexpr double ON_TOP = 1e6;
        return number(place[0]).number(place[1]).number(place[2] > ON_TOP ? -1 : 100 * place[2]);
    }

    DrawingText& colour(const Colour& colour) {
        m_text << ' ' << int{colour.red} << '/' << int{colour.green} << '/' << int{colour.blue};
        return *this;
    }

    void end() { m_text << '\n'; }

    /// Only what they cover together, by colour: how much, and around which place. How a surface is cut is no matter.
    void addTriangles(const std::vector<Drawing::Triangle>& triangles) {
        struct Cover {
            double area = 0;
            Drawing::Place moment;
        };
        std::map<std::tuple<int, int, int, double>, Cover> covers;
        for (const auto& [corners, colour, opacity] : triangles) {
            const auto a = corners[1] - corners[0];
            const auto b = corners[2] - corners[0];
            const double area = std::abs(a[0] * b[1] - a[1] * b[0]) / 2;
            Cover& cover = covers[{colour.red, colour.green, colour.blue, opacity}];
            cover.area += area;
            cover.moment += (corners[0] + corners[1] + corners[2]) * (area / 3);
        }
        for (const auto& [look, cover] : covers) {
            if (cover.area < 1) {
                continue;  // slivers, which rounding may make or not
            }
            const auto& [red, green, blue, opacity] = look;
            begin("triangles").number(cover.area).place(cover.moment * (1 / cover.area));
            m_text << ' ' << red << '/' << green << '/' << blue;
            number(opacity).end();
        }
    }

    void addBoxes(const char* kind, const std::vector<Drawing::Box>& boxes) {
        for (const auto& box : boxes) {
            begin(kind).number(box.left).number(box.top).number(box.width).number(box.height).colour(box.colour).end();
        }
    }

    std::ostringstream m_text;
};

/// Equal but for the last digits of numbers.
bool isSame(const std::string& a, const std::string& b) {
    if (a == b) {
        return true;
    }
    std::istringstream as(a);
    std::istringstream bs(b);
    std::string wordOfA;
    std::string wordOfB;
    while (as >> wordOfA) {
        if (!(bs >> wordOfB)) {
            return false;
        }
        if (wordOfA == wordOfB) {
            continue;
        }
        char* endOfA = nullptr;
        char* endOfB = nullptr;
        const double numberOfA = std::strtod(wordOfA.c_str(), &endOfA);
        const double numberOfB = std::strtod(wordOfB.c_str(), &endOfB);
        const double rounding = std::max(ROUNDING, OF_SIZE * std::abs(numberOfA));
        if (*endOfA != '\0' || *endOfB != '\0' || !(std::abs(numberOfA - numberOfB) < rounding)) {
            return false;
        }
    }
    return !(bs >> wordOfB);
}

class ApprovedDrawings : public testing::Test {
protected:
    ~ApprovedDrawings() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    /// An example with few targets, under a title of its own, since its path is another one everywhere.
    /// @param isShaded by the light, which takes a second by way of a mirror
    static DisplayScene sceneOf(const std::string& example, bool isShaded = true) {
        constexpr std::size_t FEW = 300;
        const auto config = XMLConfigFile::load(sourceFolder() + "/examples/" + example + "/display.xml");
        const auto faults = ScreenLoader::load(*config);
        DisplayScene scene = SceneCollector({FEW, FEW, FEW, FEW})
                                 .collect("The " + example, *config, TargetPlacer({4, 3, 4}).place(*config), faults);
        if (isShaded) {
            SceneLighter(FEW).addTo(scene, *config);
        }
        return scene;
    }

    /// Four measured points of every channel: one as it should be, one cut, one outlier, one without a vector.
    static void addResiduals(DisplayScene& scene) {
        constexpr double NOWHERE = std::numeric_limits<double>::quiet_NaN();
        DisplayResiduals residuals;
        std::size_t line = 2;
        for (const SceneChannel& channel : scene.channels) {
            const auto& grid = channel.targets.grid;
            const auto residualAt = [&](std::size_t target, double size, bool isOutlier) {
                const double away = size / 400;
                return SceneResidual{grid[target].picture,    grid[target].point, {size, -size / 3},
                                     {away, away / 2, -away}, isOutlier,          line++};
            };
            residuals.channels.push_back({channel.targets.projectorId,
                                          {residualAt(1, 3, false), residualAt(4, 400, false), residualAt(5, 60, true),
                                           residualAt(6, NOWHERE, false)}});
        }
        ResidualCollector(20).addTo(scene, residuals);
    }

    static void expectApproved(const Drawing& drawing, const std::string& name) {
        const std::string file = sourceFolder() + "/tests/DisplayReport/still/approved/" + name + ".txt";
        const std::string drawn = DrawingText::of(drawing);
        if (std::getenv("SM_APPROVE_DRAWINGS") != nullptr) {
            std::ofstream(file, std::ios::binary) << drawn;
        }
        std::ifstream in(file, std::ios::binary);
        std::ostringstream approved;
        approved << in.rdbuf();
        const std::vector<std::string> are = linesOf(drawn);
        const std::vector<std::string> should = linesOf(approved.str());
        EXPECT_EQ(are.size(), should.size()) << name;
        for (std::size_t i = 0; i < std::min(are.size(), should.size()); ++i) {
            ASSERT_TRUE(isSame(are[i], should[i]))
                << name << ", line " << i + 1 << "\n  drawn:    " << are[i] << "\n  approved: " << should[i];
        }
    }

    LogTrap m_log{log4cxx::Level::getWarn()};
};

TEST_F(ApprovedDrawings, OfADisplayWithAMirrorFromHome) {
    expectApproved(ScenePainter("home", APPROVED_WIDTH, APPROVED_HEIGHT).paint(sceneOf("collimated", false)),
                   "collimated-home");
}

TEST_F(ApprovedDrawings, OfAMeasuredMeshFromAbove) {
    expectApproved(ScenePainter("top", APPROVED_WIDTH, APPROVED_HEIGHT).paint(sceneOf("curved-wall")),
                   "curved-wall-top");
}

TEST_F(ApprovedDrawings, OfAnOutlinePastTheEdgeFromTheSide) {
    expectApproved(ScenePainter("side", APPROVED_WIDTH, APPROVED_HEIGHT).paint(sceneOf("lens-cylinder")),
                   "lens-cylinder-side");
}

TEST_F(ApprovedDrawings, OfResidualsOnTheScreenAndInAPicture) {
    DisplayScene scene = sceneOf("planar-wall");
    addResiduals(scene);
    expectApproved(ScenePainter("front", APPROVED_WIDTH, APPROVED_HEIGHT).paint(scene), "planar-wall-front-residuals");
    expectApproved(ChannelPicturePainter(APPROVED_WIDTH, APPROVED_HEIGHT).paint(scene, 2),
                   "planar-wall-channel-residuals");
}

}  // namespace

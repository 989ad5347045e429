#include "DisplayReport/scene/SceneMarks.h"

#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/scene/SceneCollector.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using P3 = Point<double, 3>;

const std::string FRUSTUM = "<Frustum left='-30' right='10' bottom='-20' top='25'/>";

double radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

P3 towards(double azimuth, double elevation) {
    return {std::sin(radians(azimuth)) * std::cos(radians(elevation)),
            std::cos(radians(azimuth)) * std::cos(radians(elevation)), std::sin(radians(elevation))};
}

/// The cosine of the angle between two directions of any length.
double alignment(const P3& a, const P3& b) {
    return dot(a, b) / norm(a) / norm(b);
}

class SceneMarksTest : public testing::Test {
protected:
    ~SceneMarksTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    void draw(const std::string& screen, const std::string& projectors, const std::string& targets,
              const std::wstring& only = L"") {
        m_config = XMLConfigFile::load(m_folder.write("display.xml", displays::text(screen, projectors, targets)));
        const auto faults = ScreenLoader::load(*m_config);
        ASSERT_THAT(faults, IsEmpty());
        m_scene = SceneCollector().collect("title", *m_config, TargetPlacer({5, 5, 4}).place(*m_config), faults);
        MarkCollector(*m_config, only.empty() ? nullptr : m_config->getProjectorConfig(only)).addTo(m_scene);
    }

    [[nodiscard]] std::vector<std::string> labels() const {
        std::vector<std::string> texts;
        for (const SceneMark& mark : m_scene.marks) {
            if (!mark.label.empty()) {
                texts.push_back(mark.label);
            }
        }
        return texts;
    }

    [[nodiscard]] SceneMark marked(const std::string& label) const {
        const auto found = std::find_if(m_scene.marks.begin(), m_scene.marks.end(),
                                        [&](const SceneMark& mark) { return mark.label == label; });
        EXPECT_NE(found, m_scene.marks.end()) << label;
        return found == m_scene.marks.end() ? SceneMark{{P3(), P3()}, "", P3(), {}} : *found;
    }

    [[nodiscard]] P3 wayOf(const std::string& label) const {
        const SceneMark mark = marked(label);
        return mark.line.back() - mark.line.front();
    }

    TemporaryFolder m_folder;
    LogTrap m_log{log4cxx::Level::getWarn()};
    std::unique_ptr<XMLConfigFile> m_config;
    DisplayScene m_scene;
};

TEST_F(SceneMarksTest, TheAxesOfTheWorldStandAtItsOrigin) {
    draw(displays::FLAT, displays::projector("A", displays::WHOLE_AREA), "<TargetData type='PlanarBasic'/>");
    const std::pair<const char*, P3> axes[] = {{"+x", {1, 0, 0}}, {"+y", {0, 1, 0}}, {"+z", {0, 0, 1}}};
    for (const auto& [label, direction] : axes) {
        EXPECT_EQ(marked(label).line.front(), P3()) << label;
        EXPECT_DOUBLE_EQ(alignment(wayOf(label), direction), 1) << label;
        EXPECT_TRUE(marked(label).hasArrow) << label;
    }
}

// The directions are worked out by hand: 40 to the right and 10 up, with the edges beside and above that.
TEST_F(SceneMarksTest, AnEyeHasTheDirectionAndTheAnglesOfEachChannel) {
    draw(displays::SPHERE, displays::projector("A", "<Orientation z='40' x='10' y='0'/>" + FRUSTUM),
         "<TargetData type='Spherical'/>");
    const P3 view = towards(40, 10);
    const P3 right = towards(130, 0);
    EXPECT_NEAR(alignment(wayOf("view of A"), view), 1, 1e-12);
    const auto beside = [&](double angle, const P3& side) {
        return view * std::cos(radians(angle)) + side * std::sin(radians(angle));
    };
    EXPECT_NEAR(alignment(wayOf("left -30"), beside(-30, right)), 1, 1e-12);
    EXPECT_NEAR(alignment(wayOf("right +10"), beside(10, right)), 1, 1e-12);
    EXPECT_NEAR(alignment(wayOf("bottom -20"), towards(40, -10)), 1, 1e-12);
    EXPECT_NEAR(alignment(wayOf("top +25"), towards(40, 35)), 1, 1e-12);
    EXPECT_THAT(m_scene.channels.at(0).facts,
                ElementsAre("z 40  x 10  y 0  degrees", "left -30  right 10", "bottom -20  top 25"));
}

TEST_F(SceneMarksTest, TheTurnsAreArcsFromZeroToTheirAngles) {
    draw(displays::SPHERE, displays::projector("A", "<Orientation z='40' x='10' y='30'/>" + FRUSTUM),
         "<TargetData type='Spherical'/>");
    const SceneMark z = marked("z +40");
    EXPECT_NEAR(alignment(z.line.front(), {0, 1, 0}), 1, 1e-12);
    EXPECT_NEAR(alignment(z.line.back(), towards(40, 0)), 1, 1e-12);
    const SceneMark x = marked("x +10");
    EXPECT_NEAR(alignment(x.line.front(), towards(40, 0)), 1, 1e-12);
    EXPECT_NEAR(alignment(x.line.back(), towards(40, 10)), 1, 1e-12);
    // The roll leads from upright to the right, seen along the view.
    const SceneMark y = marked("y +30");
    const P3 middle = towards(40, 10) * dot(y.line.front(), towards(40, 10));
    EXPECT_NEAR(alignment(y.line.front() - middle, towards(40, 100)), 1, 1e-12);
    EXPECT_NEAR(alignment(y.line.back() - middle, towards(130, 0)), std::sin(radians(30)), 1e-12);
    for (const SceneMark& turn : {z, x, y}) {
        EXPECT_TRUE(turn.hasArrow);
        EXPECT_EQ(turn.stroke, SceneMark::Stroke::THICK);
    }
}

TEST_F(SceneMarksTest, ATurnByNothingShowsItsPositiveWayWhereOneChannelIsDrawn) {
    const std::string two = displays::projector("A", FRUSTUM) + displays::projector("B", FRUSTUM);
    draw(displays::SPHERE, two, "<TargetData type='Spherical'/>");
    EXPECT_THAT(labels(), Not(Contains("z 0")));
    draw(displays::SPHERE, two, "<TargetData type='Spherical'/>", L"B");
    EXPECT_THAT(labels(), IsSupersetOf({"z 0", "x 0", "y 0"}));
    EXPECT_EQ(marked("z 0").stroke, SceneMark::Stroke::PALE);
    EXPECT_GT(wayOf("z 0")[0], 0) << "to the right";
    EXPECT_GT(wayOf("x 0")[2], 0) << "up";
    EXPECT_GT(wayOf("y 0")[0], 0) << "over to the right";
}

TEST_F(SceneMarksTest, OnlyTheNamedChannelIsDrawnInFull) {
    draw(displays::SPHERE, displays::projector("A", FRUSTUM) + displays::projector("B", FRUSTUM),
         "<TargetData type='Spherical'/>", L"B");
    EXPECT_THAT(labels(), Contains("view of B"));
    EXPECT_THAT(labels(), Not(Contains("view of A")));
    EXPECT_FALSE(m_scene.channels.at(0).frustum.has_value());
    EXPECT_THAT(m_scene.channels.at(0).targets.grid, IsEmpty());
    EXPECT_THAT(m_scene.channels.at(0).targets.boundary, Not(IsEmpty()));
    EXPECT_TRUE(m_scene.channels.at(1).frustum.has_value());
}

TEST_F(SceneMarksTest, AProjectorIsMeasuredFromItsPosition) {
    draw(displays::FLAT, displays::projector("A", "<Position x='0.5' y='1' z='0.75'/>" + FRUSTUM),
         "<TargetData type='ProjectorCentric'/>");
    EXPECT_EQ(marked("view of A").line.front(), (P3{0.5, 1, 0.75}));
    EXPECT_NEAR(alignment(wayOf("view of A"), {0, 1, 0}), 1, 1e-12);
}

// Left and below are where x and z are least; the picture is drawn in by a small part.
TEST_F(SceneMarksTest, ThePlacesOfThePictureGrowToTheRightAndUpwards) {
    draw(displays::FLAT, displays::projector("A", "<Position x='0' y='3' z='1'/>" + FRUSTUM),
         "<TargetData type='ProjectorCentric'/>");
    const P3 u = wayOf("u = 1");
    const P3 v = wayOf("v = 1");
    EXPECT_GT(u[0], 1);
    EXPECT_NEAR(u[2], 0, 1e-9);
    EXPECT_GT(v[2], 1);
    EXPECT_NEAR(v[0], 0, 1e-9);
    EXPECT_NEAR(norm(marked("u = 1").line.front() - marked("v = 1").line.front()), 0, 1e-12);
    EXPECT_THAT(labels(), Contains("u = v = 0"));
}

TEST_F(SceneMarksTest, AScreenThatAddressesItsChannelsHasItsCoordinatesAndNoAngles) {
    draw(displays::FLAT,
         displays::projector("A", "<Orientation z='40' x='10' y='0'/>" + FRUSTUM +
                                      "<ScreenArea left='0' right='0.5' bottom='0.25' top='1'/>"),
         "<TargetData type='PlanarBasic'/>");
    EXPECT_EQ(marked("s = 1").line.front(), (P3{-2, 5, 0}));
    EXPECT_EQ(marked("s = 1").line.back(), (P3{2, 5, 0}));
    EXPECT_EQ(marked("t = 1").line.back(), (P3{-2, 5, 2}));
    EXPECT_THAT(labels(), IsSupersetOf({"s = t = 0", "u = 1", "v = 1"}));
    EXPECT_THAT(labels(), Not(Contains(StartsWith("left"))));
    EXPECT_THAT(labels(), Not(Contains(StartsWith("z "))));
    EXPECT_GT(wayOf("u = 1")[0], 1.5);
    EXPECT_GT(wayOf("v = 1")[2], 1);
    EXPECT_THAT(m_scene.channels.at(0).facts, ElementsAre("left 0  right 0.5", "bottom 0.25  top 1"));
}

TEST_F(SceneMarksTest, AMapFileIsDrawnAsItAddressesThePicture) {
    m_folder.write("whole.map", displays::WHOLE_MAP);
    draw(displays::FLAT, displays::projector("A", "<CustomPlanarMap file='whole.map'/>"),
         "<TargetData type='CustomPlanar'/>");
    EXPECT_THAT(labels(), IsSupersetOf({"s = 1", "t = 1", "u = 1", "v = 1"}));
    EXPECT_GT(wayOf("u = 1")[0], 3);
    EXPECT_GT(wayOf("v = 1")[2], 1.5) << "upwards, although the first row lies at the bottom";
}

TEST_F(SceneMarksTest, AMirrorHasItsFrameAndTheWayToTheEye) {
    draw(displays::SPHERE, displays::projector("A", "<Orientation z='20' x='0' y='0'/>" + FRUSTUM),
         "<TargetData type='SphericalCollimated'><TargetPosition x='0' y='-0.3' z='-0.5'/><Mirror radius='3'>"
         "<Position x='0' y='0' z='1.5'/></Mirror></TargetData>");
    const P3 middle{0, 0, 1.5};
    EXPECT_EQ(marked("mirror +y").line.front(), middle);
    EXPECT_DOUBLE_EQ(alignment(wayOf("mirror +y"), {0, 1, 0}), 1);
    EXPECT_EQ(marked("EyePoint x 0 y -0.3 z -0.5").line.front(), middle);
    EXPECT_EQ(marked("EyePoint x 0 y -0.3 z -0.5").line.back(), (P3{0, -0.3, 1.0}));
    EXPECT_DOUBLE_EQ(norm(wayOf("mirror radius 3")), 3);
    EXPECT_EQ(marked("view of A").line.front(), (P3{0, -0.3, 1.0}));
    EXPECT_NEAR(alignment(wayOf("view of A"), towards(20, 0)), 1, 1e-12);
}

TEST_F(SceneMarksTest, WithoutTargetDataTheWorldAloneIsDrawn) {
    draw(displays::FLAT, displays::projector("A", FRUSTUM), "");
    EXPECT_THAT(labels(), ElementsAre("+x", "+y", "+z"));
}

}  // namespace

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/check/DisplayCheck.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/ScreenSampling.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/scene/ChannelFrustum.h"
#include "DisplayReport/scene/SceneSurface.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "KelvoScreen/ScreenShape.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphereTargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/ScreenConfigDouble.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>

/// Every kind of display and every shape, taken from their tables, goes through everything that is reported of one. A
/// failed test names the kind and what has no answer for it.

namespace {

using namespace Veltrani::DisplayReport;
using testing::IsEmpty;

class EveryKind : public testing::Test {
protected:
    ~EveryKind() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    /// A display of a kind inside a sphere, with one channel that states everything any kind is built from.
    std::unique_ptr<XMLConfigFile> displayOf(const DisplayKind& kind) {
        const std::string type = "<TargetData type='" + Veltrani::toUtf8(std::wstring(kind.type)) + "'>";
        const std::string mirror = kind.hasMirror() ? "<Mirror radius='2'/>" : "";
        return displays::parsed(displays::SPHERE,
                                displays::projector("A", displays::WHOLE_AREA + "<CustomPlanarMap file='" + m_map +
                                                             "'/><Frustum left='-30' right='30' bottom='-20' top='20'/>"
                                                             "<Layout xMin='0' xMax='2' yMin='0' yMax='1'/>"),
                                type + mirror + "</TargetData>");
    }

    const TemporaryFolder m_folder;
    const std::string m_map = m_folder.write("a.map", displays::WHOLE_MAP);
};

TEST_F(EveryKind, IsCheckedWithoutAFault) {
    for (const DisplayKind& kind : DisplayKind::all()) {
        SCOPED_TRACE(Veltrani::toUtf8(std::wstring(kind.type)));
        const auto config = displayOf(kind);
        const DisplayDescription description = DisplayCheck::ofConfiguration(*config);
        for (const Fault& fault : description.faults) {
            ADD_FAILURE() << fault.where << ": " << fault.what;
        }
        ASSERT_EQ(description.channels.size(), 1U);
        EXPECT_NE(description.channels[0].fact("targets by"), "nothing");
    }
}

TEST_F(EveryKind, HasTargetsALightAFrustumAndALayout) {
    for (const DisplayKind& kind : DisplayKind::all()) {
        SCOPED_TRACE(Veltrani::toUtf8(std::wstring(kind.type)));
        const auto config = displayOf(kind);
        ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
        const ProjectorConfig& projector = *config->getProjectorConfig(L"A");
        const auto locator = TargetLocatorManager::getInstance()->getTargetLocator(config.get(), &projector);
        ASSERT_TRUE(locator);

        const TargetSurvey survey = TargetPlacer(TargetPlan{5, 4, 8}).place(*config);
        EXPECT_THAT(survey.channels.at(0).fault, IsEmpty()) << "targets";
        EXPECT_FALSE(survey.channels.at(0).boundary.empty()) << "outline";

        const auto surface = ScreenManager::getInstance()->getScreenGeometry();
        EXPECT_TRUE(ChannelLight::of(locator, surface)->landingOf({0.5, 0.5}).hits) << "light";
        EXPECT_TRUE(FrustumTracer(locator.get(), projector, 1.0).trace().has_value()) << "frustum";

        LayoutMapper mapper(*config, ChannelChoice::of(*config, "A"), false);
        const Point<double, 2> middle{0.5, 0.5};
        LayoutPoint layout;
        mapper.toLayout({&middle, 1}, {&layout, 1});
        EXPECT_TRUE(layout.isMapped) << "layout";
        EXPECT_TRUE(InputProjection(*config, Panorama::EQUIRECTANGULAR).place(layout.point).has_value()) << "input";
    }
}

/// A class from elsewhere whose rays arrive somewhere else: a metre above the place that the screen gives.
class RaisedLocator : public SphereTargetLocator {
public:
    using SphereTargetLocator::SphereTargetLocator;

    std::pair<bool, int> intersectWithTargetLocationSurface(const Point<double, 3>& from, const Point<double, 3>& to,
                                                            Point<double, 3>& hit) const override {
        const auto answer = SphereTargetLocator::intersectWithTargetLocationSurface(from, to, hit);
        hit[2] += answer.first ? 1.0 : 0.0;
        return answer;
    }
};

TEST_F(EveryKind, AClassFromElsewhereIsLitAndDrawnWhereItsOwnRaysArrive) {
    const auto config = displays::parsed(displays::SPHERE, displays::projector("A", ""));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const SphereTargetLocatorParams params{{}, -0.5, 0.5, -0.4, 0.4, 0.0, 0.0, 0.0, {}, {}};
    const auto locator = std::make_shared<RaisedLocator>(params);
    const Point<double, 3> raised{0.0, 5.0, 1.0};

    const auto light = ChannelLight::of(locator, ScreenManager::getInstance()->getScreenGeometry());
    const ChannelLight::Landing landing = light->landingOf({0.5, 0.5});
    ASSERT_TRUE(landing.hits);
    EXPECT_LT(norm(landing.on.place - raised), 1e-12);

    const auto frustum = FrustumTracer(locator.get(), *config->getProjectorConfig(L"A"), 1.0).trace();
    ASSERT_TRUE(frustum.has_value());
    Point<double, 3> corner;
    ASSERT_TRUE(locator->locate({std::tan(-0.5), 1.0, std::tan(0.4)}, corner).first);
    EXPECT_LT(norm(frustum->rim.front() - corner), 1e-12);
}

class UnknownLocator : public TargetLocator {
public:
    void projectOnTargetLocationSurface(double, double, double, double, int, int,
                                        std::map<Point<int, 2>, Point<double, 3>>&) const override {}
    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override { return m_params; }
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int) const override { return {}; }

private:
    SphereTargetLocatorParams m_params;
};

TEST_F(EveryKind, NoFrustumIsDrawnForAClassOfWhichNothingIsKnown) {
    const auto config = displays::parsed(
        displays::SPHERE, displays::projector("A", "<Frustum left='-30' right='30' bottom='-20' top='20'/>"));
    const UnknownLocator locator;
    EXPECT_THROW(static_cast<void>(FrustumTracer(&locator, *config->getProjectorConfig(L"A"), 1.0).trace()),
                 VeltraniException);
}

/// Numbers that make every shape a valid one.
ScreenConfigDouble numbersOfAllShapes() {
    ScreenConfigDouble screen;
    screen.radius = 5.0;
    screen.height = 4.0;
    screen.width = 6.0;
    screen.azimuthMin = -1.0;
    screen.azimuthMax = 1.0;
    screen.elevationMin = -0.5;
    screen.elevationMax = 0.5;
    screen.lowerRail = {{-1.0, 2.0, 0.0}, {1.0, 2.0, 0.0}};
    screen.upperRail = {{-1.0, 2.5, 2.0}, {1.0, 2.5, 2.0}};
    return screen;
}

TEST_F(EveryKind, EveryShapeIsDrawnMeasuredAndDescribed) {
    int numeric = 0;
    for (const ScreenShape& shape : ScreenShape::all()) {
        SCOPED_TRACE(Veltrani::toUtf8(std::wstring(shape.name)));
        if (shape.isReadFromFile()) {
            continue;
        }
        const ScreenConfigDouble numbers = numbersOfAllShapes();
        const std::shared_ptr<ScreenGeometry> screen = shape.make(&numbers);
        ASSERT_TRUE(screen->isValid()) << "give this test the numbers of the shape";
        EXPECT_EQ(screen->faultOfShape(), L"");
        EXPECT_GT(screen->raysAtOnce(), 0U) << "its rays are never cast at once";
        EXPECT_FALSE(extentOf(*screen).empty());
        EXPECT_EQ(geometryText(*screen), "given by its numbers");
        EXPECT_THAT(missingParameters(*screen), IsEmpty());
        EXPECT_FALSE(SurfaceTessellator(1000).tessellate(*screen).triangles.empty());
        EXPECT_GT(ScreenSampling(screen).size(), 0U);

        const std::shared_ptr<ScreenGeometry> nothing = shape.make(nullptr);
        EXPECT_FALSE(nothing->isValid());
        EXPECT_THAT(nothing->faultOfShape(), testing::HasSubstr(L"expected"))
            << "the fault names neither number nor expectation";
        ++numeric;
    }
    EXPECT_GE(numeric, 4);
}

}  // namespace

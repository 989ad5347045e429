#include "Configuration/BaseConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "ScreenFixture.h"
#include "ScreenManager/ScreenManager.h"
#include "support/ConfigManagerDouble.h"
#include "support/ScreenConfigDouble.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

/// One shape that is built from numbers: a new one joins this list.
struct ShapeCase {
    std::wstring shape;
    std::string record;
    bool (*isOfKind)(const ScreenGeometry* geometry);
    std::array<unsigned char, 20> (*hash)(const IScreenConfig* screen);
};

template <class Kind>
ShapeCase shapeCase(const std::wstring& shape, const std::string& name) {
    return {shape, "INFO Successfully loaded Content screen: " + name,
            [](const ScreenGeometry* geometry) { return dynamic_cast<const Kind*>(geometry) != nullptr; },
            Kind::calcUniqueDataHash};
}

std::vector<ShapeCase> shapeCases() {
    return {shapeCase<SphericalScreen>(BaseConfig::SHAPE_SPHERE, "Sphere"),
            shapeCase<CylinderScreen>(BaseConfig::SHAPE_CYLINDER, "Cylinder"),
            shapeCase<RuledSurfaceScreen>(BaseConfig::SHAPE_RULED, "Ruled"),
            shapeCase<FlatScreen>(BaseConfig::SHAPE_FLAT, "Flat")};
}

class ScreenShapes : public ScreenFixture {
protected:
    ScreenShapes() {
        config.screen = &screen;
        screen.radius = 5;
        screen.width = 4;
        screen.height = 3;
        screen.azimuthMin = -1;
        screen.azimuthMax = 1;
        screen.elevationMin = -0.5;
        screen.elevationMax = 1;
        screen.lowerRail = {{-1.0, 2.0, 0.0}, {1.0, 2.0, 0.0}};
        screen.upperRail = {{-1.0, 2.5, 2.0}, {1.0, 2.5, 2.0}};
    }

    [[nodiscard]] std::size_t countOf(const std::string& record) const {
        std::size_t count = 0;
        for (const std::string& message : log.messages()) {
            count += message == record ? 1 : 0;
        }
        return count;
    }

    ScreenConfigDouble screen{&trace};
    ConfigManagerDouble config;
    ScreenManager& manager = *ScreenManager::getInstance();
};

TEST_F(ScreenShapes, EachIsBuiltFromTheConfigurationAndRebuiltOnlyWhenItChangedOrByForce) {
    for (const ShapeCase& one : shapeCases()) {
        SCOPED_TRACE(one.record);
        screen.shape = one.shape;
        log.clear();
        manager.setScreenGeometry(&config, false);
        const auto first = manager.getScreenGeometry();
        ASSERT_TRUE(one.isOfKind(first.get()));
        EXPECT_TRUE(first->isValid());
        EXPECT_EQ(first->getUniqueDataHash(), one.hash(&screen));
        EXPECT_EQ(countOf(one.record), 1U);

        manager.setScreenGeometry(&config, false);
        EXPECT_EQ(manager.getScreenGeometry(), first) << "unchanged";
        EXPECT_EQ(countOf(one.record), 1U);

        manager.setScreenGeometry(&config, true);
        EXPECT_NE(manager.getScreenGeometry(), first) << "by force";
        EXPECT_EQ(countOf(one.record), 2U);
    }
}

TEST_F(ScreenShapes, EachRereadsItsNumbersInPlace) {
    for (const ShapeCase& one : shapeCases()) {
        SCOPED_TRACE(one.record);
        screen.shape = one.shape;
        manager.setScreenGeometry(&config, false);
        const auto geometry = manager.getScreenGeometry();
        const auto before = geometry->getUniqueDataHash();
        screen.radius += 1;
        screen.height += 1;
        screen.upperRail[0][2] += 1;
        manager.updateScreenGeometry(&config);
        EXPECT_EQ(manager.getScreenGeometry(), geometry);
        EXPECT_NE(geometry->getUniqueDataHash(), before);
        EXPECT_EQ(geometry->getUniqueDataHash(), one.hash(&screen));
    }
}

TEST_F(ScreenShapes, EachAnswersAGrid) {
    for (const ShapeCase& one : shapeCases()) {
        SCOPED_TRACE(one.record);
        screen.shape = one.shape;
        manager.setScreenGeometry(&config, false);
        ScreenGeometry::Grid grid;
        manager.getScreenMatrix(0, 1, 0, 1, 5, 4, grid, false);
        EXPECT_EQ(grid.size(), 20U);
    }
}

}  // namespace

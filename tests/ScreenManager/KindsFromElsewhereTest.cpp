#include "Common/Utf8.h"
#include "EyeMapFixture.h"
#include "KelvoControl/KelvoProjector.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/ScreenShape.h"
#include "KelvoScreen/SphericalScreen.h"
#include "PlanarMapText.h"
#include "ScreenKinds.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/detail/EyeRays.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

using Veltrani::ScreenManagerDetail::RaysAtOnce;

/// Programs derive from the locators and screens of this library and replace how one ray is answered. Whatever is done
/// to answer many rays at once, such a class is called for every single one.

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;

constexpr int COLUMNS = 7;
constexpr int ROWS = 5;
constexpr std::size_t CELLS = COLUMNS * ROWS;

/// How often the operations for single rays were called.
struct Count {
    mutable std::size_t rays = 0;
};

template <class Kind>
class CountingScreen : public Kind, public Count {
public:
    using Kind::Kind;

    IntersectionSet intersect(const Vector& from, const Vector& to) const override {
        ++rays;
        return Kind::intersect(from, to);
    }
};

template <class Kind>
class CountingLocator : public Kind, public Count {
public:
    using Kind::Kind;

    std::pair<bool, int> intersectWithTargetLocationSurface(const Vector& from, const Vector& to,
                                                            Vector& hit) const override {
        ++rays;
        return Kind::intersectWithTargetLocationSurface(from, to, hit);
    }
};

/// A screen or locator under the name of the class that it is derived from, and its count.
template <class Kind>
struct Derived {
    std::string name;
    std::shared_ptr<Kind> object;
    const Count* count;
};

template <class Base, class Counting>
Derived<Base> derived(const std::string& name, const std::shared_ptr<Counting>& object) {
    return {name, object, object.get()};
}

std::vector<Derived<ScreenGeometry>> screens() {
    ScreenConfigDouble round;
    round.radius = 5.0;
    round.height = 5.0;
    round.width = 5.0;
    round.azimuthMin = -1.0;
    round.azimuthMax = 1.0;
    round.elevationMin = -0.6;
    round.elevationMax = 0.6;
    round.lowerRail = {{-3.0, 4.0, -2.0}, {3.0, 4.5, -2.5}};
    round.upperRail = {{-3.5, 5.0, 3.0}, {3.0, 3.5, 2.5}};
    ScreenConfigDouble wall(round);
    wall.centre = {0.0, 4.0, 0.0};
    std::istringstream text("v -4 4 -4\nv 4 4 -4\nv 4 4 4\nv -4 4 4\nf 1 2 3 4\n");
    const auto obj = std::make_shared<CountingScreen<OBJScreen>>(L"Z", L"Y", 1.0F);
    obj->deserialize(text);
    return {derived<ScreenGeometry>("sphere", std::make_shared<CountingScreen<SphericalScreen>>(&round)),
            derived<ScreenGeometry>("cylinder", std::make_shared<CountingScreen<CylinderScreen>>(&round)),
            derived<ScreenGeometry>("ruled", std::make_shared<CountingScreen<RuledSurfaceScreen>>(&round)),
            derived<ScreenGeometry>("flat", std::make_shared<CountingScreen<FlatScreen>>(&wall)),
            derived<ScreenGeometry>("mesh", std::make_shared<CountingScreen<MeshScreen>>(screenKinds::bumpyMesh())),
            derived<ScreenGeometry>("obj", obj)};
}

SphereTargetLocatorParams camera() {
    return {{0.1, -0.2, 0.3}, -0.3, 0.3, -0.2, 0.2, 0.0, 0.0, 0.0, {}, {}};
}

CollimatedTargetLocatorParams mirror() {
    CollimatedTargetLocatorParams params;
    static_cast<SphereTargetLocatorParams&>(params) = camera();
    params.mirrorRadius = 2.0;
    return params;
}

std::vector<Derived<TargetLocator>> locators(const TemporaryFolder& folder) {
    const std::wstring map = Veltrani::fromUtf8(folder.write("map.txt", planar_map::wholePicture(4, 3)));
    return {
        derived<TargetLocator>("planar", std::make_shared<CountingLocator<PlanarTargetLocator>>(
                                             PlanarTargetLocatorParams(0.0, 1.0, 0.0, 1.0))),
        derived<TargetLocator>("sphere", std::make_shared<CountingLocator<SphereTargetLocator>>(camera())),
        derived<TargetLocator>("collimated", std::make_shared<CountingLocator<CollimatedTargetLocator>>(mirror())),
        derived<TargetLocator>("custom planar", std::make_shared<CountingLocator<CustomPlanarTargetLocator>>(
                                                    CustomPlanarTargetLocatorParams({4, 3}, map))),
        derived<TargetLocator>("custom projection", std::make_shared<CountingLocator<CustomProjectionTargetLocator>>(
                                                        CustomProjectionTargetLocatorParams()))};
}

class KindsFromElsewhere : public EyeMapFixture {
protected:
    /// Maps picture points of a channel at once, and as the layout maps do where that is refused.
    static void mapAll(const TargetLocator& locator) {
        const auto blend = std::make_shared<BlendDouble>(straightFrustum(), nullptr);
        const KelvoProjector projector(blend);
        const Vector eye{0.1, -0.2, 0.3};
        const Veltrani::ScreenManagerDetail::EyeRays rays(projector, &locator, eye);
        std::vector<Point<double, 2>> picture;
        for (std::size_t i = 0; i < CELLS; ++i) {
            picture.emplace_back(static_cast<double>(i) / CELLS, 0.5);
        }
        std::vector<LayoutPoint> layout(picture.size());
        if (!rays.mapToLayoutAtOnce(picture, layout)) {
            for (std::size_t i = 0; i < picture.size(); ++i) {
                layout[i].isMapped = rays.mapToLayout(picture[i], layout[i].point);
            }
        }
    }

    static Grid gridOf(const TargetLocator& locator) {
        Grid grid;
        locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, COLUMNS, ROWS, grid);
        return grid;
    }

    static std::size_t since(const Count* count, std::size_t before) { return count->rays - before; }

    const TemporaryFolder folder;
};

TEST_F(KindsFromElsewhere, ThereIsOneOfEveryShapeAndOfEveryKindOfLocator) {
    EXPECT_EQ(screens().size(), ScreenShape::all().size() + 1) << "a mesh comes as numbers and as text";
    std::set<LocatorKind::Path> paths;
    for (const auto& [name, locator, count] : locators(folder)) {
        EXPECT_EQ(LocatorKind::of(*locator).rays, LocatorKind::Rays::OWN) << name;
        paths.insert(LocatorKind::of(*locator).path);
    }
    EXPECT_EQ(paths, (std::set{LocatorKind::Path::UNKNOWN, LocatorKind::Path::FOLLOWED}));
}

TEST_F(KindsFromElsewhere, AScreenIsAskedForEveryRayOfManyAtOnce) {
    for (const auto& [name, screen, count] : screens()) {
        EXPECT_EQ(screen->raysAtOnce(), 0U) << name;
        std::vector<Ray> rays;
        for (std::size_t i = 0; i < CELLS; ++i) {
            rays.emplace_back(Vector{}, Vector{0.01 * static_cast<double>(i), 4.0, 0.1});
        }
        std::vector<SurfaceHit> hits(rays.size());
        screen->intersectRays(rays, hits);
        EXPECT_EQ(count->rays, CELLS) << name;
        EXPECT_TRUE(hits.front().hit) << name;
    }
}

TEST_F(KindsFromElsewhere, AScreenIsAskedForEveryCellOfAGridAndEveryPointOfALayoutMap) {
    for (const auto& [name, screen, count] : screens()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        const SphereTargetLocator locator(camera());
        EXPECT_FALSE(gridOf(locator).empty()) << name;
        EXPECT_EQ(count->rays, CELLS) << name;
        std::size_t before = count->rays;
        mapAll(locator);
        EXPECT_EQ(since(count, before), CELLS) << name;
        before = count->rays;
        mapAll(CollimatedTargetLocator(mirror()));
        EXPECT_EQ(since(count, before), CELLS) << name << ": inside the mirror every ray meets it";
        EXPECT_FALSE(RaysAtOnce(locator).isPossible()) << name;
    }
}

TEST_F(KindsFromElsewhere, ALocatorIsAskedForEveryPointOfALayoutMapOnEveryScreen) {
    for (const auto& [screenName, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        for (const auto& [name, locator, count] : locators(folder)) {
            mapAll(*locator);
            EXPECT_EQ(count->rays, CELLS) << name << " on " << screenName;
            EXPECT_FALSE(RaysAtOnce(*locator).isPossible()) << name << " on " << screenName;
        }
    }
}

TEST_F(KindsFromElsewhere, ALocatorThatLooksThroughAFrustumIsAskedForEveryCellOfAGridOnEveryScreen) {
    for (const auto& [screenName, screen] : screenKinds::all()) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        for (const auto& [name, locator, count] : locators(folder)) {
            if (LocatorKind::of(*locator).looksThroughFrustum()) {
                static_cast<void>(gridOf(*locator));
                EXPECT_EQ(count->rays, CELLS) << name << " on " << screenName;
            }
        }
    }
}

}  // namespace

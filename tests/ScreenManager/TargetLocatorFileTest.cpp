#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "PlanarMapText.h"
#include "ScreenFixture.h"
#include "ScreenManager/Channel.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

/// Locators from a real configuration file, on a real screen, through the channel that carries them.

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using testing::IsEmpty;
using testing::SizeIs;

/// Coordinates are a few metres; the way through configuration, locator and screen rounds some dozen times.
constexpr double ROUNDING = 1e-12;

constexpr const char* DOME = "<Screen shape='Sphere'><Centre x='0' y='0' z='0'/><Radius value='4'/></Screen>";
constexpr const char* WALL = "<Screen shape='Flat'><Centre x='0' y='4' z='0'/><Size width='6' height='3'/></Screen>";

class TargetLocatorFileTest : public ScreenFixture {
protected:
    TargetLocatorFileTest() { TargetLocatorManager::deleteInstance(); }
    ~TargetLocatorFileTest() override { TargetLocatorManager::deleteInstance(); }

    /// Loads a display of one projector and builds its screen.
    void load(const std::string& screen, const std::string& type, const std::string& projector) {
        config = XMLConfigFile::load(folder.write(
            "display.xml",
            "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>" + screen + "<TargetData type='" +
                type + "'><TargetPosition x='0' y='0' z='0'/></TargetData><Projectors><Projector id='P1'>" +
                "<Resolution width='1920' height='1080'/>" + projector + "</Projector></Projectors></Display>"));
        ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
        log.clear();
    }
    std::shared_ptr<const TargetLocator> request() {
        return TargetLocatorManager::getInstance()->getTargetLocator(config.get(), config->getProjectorConfig(L"P1"));
    }
    /// The channel of the projector with the locator of the manager.
    Channel channel() {
        Channel made(L"One", config->getProjectorConfig(L"P1"), L"P1", 0, 0);
        made.setTargetLocator(request());
        return made;
    }

    const TemporaryFolder folder;
    std::unique_ptr<XMLConfigFile> config;
    Grid grid;
};

TEST_F(TargetLocatorFileTest, APlanarChannelPlacesItsTargetsInItsAreaOfTheWall) {
    load(WALL, "PlanarBasic", "<ScreenArea left='0.5' right='1' bottom='0' top='1'/>");
    channel().projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
    ASSERT_THAT(grid, SizeIs(4));
    EXPECT_LT(norm(grid[{0, 0}] - Vector{0.0, 4.0, 1.5}), ROUNDING) << "top left";
    EXPECT_LT(norm(grid[{1, 1}] - Vector{3.0, 4.0, -1.5}), ROUNDING) << "bottom right";
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(TargetLocatorFileTest, ASphericalChannelPlacesItsTargetsOnTheDomeInItsFrustum) {
    load(DOME, "Spherical", "<Orientation z='30' x='0' y='0'/><Frustum left='-20' right='20' bottom='-15' top='15'/>");
    channel().projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 3, grid);
    ASSERT_THAT(grid, SizeIs(9));
    for (const auto& [place, target] : grid) {
        EXPECT_NEAR(norm(target), 4.0, ROUNDING);
    }
    const Vector middle{4.0 * std::sin(M_PI / 6), 4.0 * std::cos(M_PI / 6), 0.0};
    EXPECT_LT(norm(grid[{1, 1}] - middle), ROUNDING) << "towards 30 degrees to the right";
}

TEST_F(TargetLocatorFileTest, ACustomPlanarChannelFollowsTheMapFileBesideTheConfiguration) {
    folder.write("warp/left.txt", planar_map::leftHalf(1920, 1080));
    load(WALL, "CustomPlanar", "<CustomPlanarMap file='warp/left.txt'/>");
    channel().projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 5, 2, grid);
    ASSERT_THAT(grid, SizeIs(6)) << "three columns of five";
    EXPECT_LT(norm(grid[{0, 0}] - Vector{-3.0, 4.0, -1.5}), ROUNDING) << "bottom left";
    EXPECT_LT(norm(grid[{2, 1}] - Vector{0.0, 4.0, 1.5}), ROUNDING) << "top middle";
    EXPECT_THAT(log.records(), IsEmpty());
}

// The part v = 0 to 0.25 in three rows. The wall reaches from z = -1.5 to 1.5.
TEST_F(TargetLocatorFileTest, APartOfThePictureCountsVFromTheTopInAnAreaAndElseFromTheBottom) {
    const auto place = [&] {
        grid.clear();
        channel().projectOnTargetLocationSurface(0.0, 1.0, 0.0, 0.25, 2, 3, grid);
        ASSERT_THAT(grid, SizeIs(6));
    };
    load(WALL, "PlanarBasic", "<ScreenArea left='0' right='1' bottom='0' top='1'/>");
    place();
    EXPECT_NEAR((grid[{0, 0}][2]), 1.5, ROUNDING) << "the uppermost quarter, its first row at v = 0";
    EXPECT_NEAR((grid[{0, 2}][2]), 0.75, ROUNDING);

    load(WALL, "Spherical", "<Frustum left='-20' right='20' bottom='-15' top='15'/>");
    place();
    const double bottom = -4.0 * std::tan(M_PI / 12);
    EXPECT_NEAR((grid[{0, 0}][2]), 0.5 * bottom, ROUNDING) << "the lowermost quarter, its first row at v = 0.25";
    EXPECT_NEAR((grid[{0, 2}][2]), bottom, ROUNDING);

    folder.write("whole.txt", planar_map::wholePicture(1920, 1080));
    load(WALL, "CustomPlanar", "<CustomPlanarMap file='whole.txt'/>");
    place();
    EXPECT_NEAR((grid[{0, 0}][2]), -1.5, ROUNDING) << "the lowermost quarter, its first row at v = 0";
    EXPECT_NEAR((grid[{0, 2}][2]), -0.75, ROUNDING);
}

TEST_F(TargetLocatorFileTest, AProjectorWithAModelOutlinesWhatTheSameFrustumOutlines) {
    // Two routes to one outline: rays of the lens model, and rays of the sphere locator from the same place. They go
    // round in opposite directions, from the bottom left and the top left corner.
    const std::string frustum =
        "<Orientation z='10' x='-5' y='3'/><Frustum left='-20' right='25' bottom='-15' top='10'/>"
        "<Position x='0.5' y='-0.25' z='0.125'/>";
    load(DOME, "ProjectorCentric", frustum);
    const std::vector<Vector> sphere = channel().projectBoundaryOnTargetLocationSurface(4);
    load(DOME, "ProjectorCentric", frustum + "<ProjectionModel name='Rectilinear'/>");
    const std::vector<Vector> lens = channel().projectBoundaryOnTargetLocationSurface(4);
    ASSERT_THAT(sphere, SizeIs(16));
    ASSERT_THAT(lens, SizeIs(16));
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_LT(norm(lens[i] - sphere[(28 - i) % 16]), ROUNDING) << i;
    }
}

TEST_F(TargetLocatorFileTest, AfterAnotherScreenALocatorKeepsItsOutlineAndANewOneFollowsTheScreen) {
    const std::string frustum = "<Frustum left='-20' right='20' bottom='-15' top='15'/>";
    load(DOME, "Spherical", frustum);
    const auto old = request();
    const std::vector<Vector> before = old->projectBoundaryOnTargetLocationSurface(1);
    ASSERT_THAT(before, SizeIs(4));

    load(WALL, "Spherical", frustum);
    EXPECT_EQ(request(), old) << "nobody has told the manager";
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    const auto fresh = request();
    EXPECT_NE(fresh, old);
    EXPECT_EQ(old->projectBoundaryOnTargetLocationSurface(1), before);
    for (const Vector& point : fresh->projectBoundaryOnTargetLocationSurface(1)) {
        EXPECT_NEAR(point[1], 4.0, ROUNDING) << "on the wall";
    }
}

TEST_F(TargetLocatorFileTest, AConfigurationThatIsReadAgainGivesTheSameLocator) {
    const std::string area = "<ScreenArea left='0.5' right='1' bottom='0' top='1'/>";
    load(WALL, "PlanarBasic", area);
    const auto locator = request();
    load(WALL, "PlanarBasic", area);
    EXPECT_EQ(request(), locator);
}

TEST_F(TargetLocatorFileTest, AChannelKeepsItsLocatorWhenTheManagerGoes) {
    load(WALL, "PlanarBasic", "<ScreenArea left='0.5' right='1' bottom='0' top='1'/>");
    const Channel keeper = channel();
    TargetLocatorManager::deleteInstance();
    EXPECT_THAT(keeper.projectBoundaryOnTargetLocationSurface(3), SizeIs(12));
}

TEST_F(TargetLocatorFileTest, AChangedNumberGivesANewLocatorAtTheNextRequestAndOneThatIsNotReadDoesNot) {
    struct Row {
        std::string type;
        std::string projector;
        std::function<void(ProjectorConfig&)> change;
        std::function<void(ProjectorConfig&)> other;
    };
    const std::string frustum = "<Frustum left='-20' right='20' bottom='-15' top='15'/><Position x='0' y='0' z='1'/>";
    const auto turn = [](ProjectorConfig& entry) { entry.setOrientationZ(0.1); };
    const auto move = [](ProjectorConfig& entry) { entry.setPosition({0.5, 0.0, 1.0}); };
    const auto relay = [](ProjectorConfig& entry) { entry.setLayoutXMax(2.0); };
    const std::vector<Row> rows{
        {"PlanarBasic", "<ScreenArea left='0.5' right='1' bottom='0' top='1'/>",
         [](ProjectorConfig& entry) { entry.setScreenLeft(0.25); }, relay},
        {"Spherical", frustum, turn, relay},
        {"Spherical", frustum, [](ProjectorConfig& entry) { entry.setFrustumTop(0.3); }, move},
        {"ProjectorCentric", frustum, move, relay},
        {"3D", frustum + "<ProjectionModel name='Rectilinear'/>", move, relay},
        {"3D", frustum, [](ProjectorConfig& entry) { entry.setProjectionModelName(L"Equidistant"); }, relay}};
    for (const auto& [type, projector, change, other] : rows) {
        load(DOME, type, projector);
        ProjectorConfig& entry = *config->getProjectorConfig(L"P1");
        const auto old = request();
        const std::vector<Vector> before = old->projectBoundaryOnTargetLocationSurface(3);
        other(entry);
        EXPECT_EQ(request(), old) << type;
        change(entry);
        const auto fresh = request();
        EXPECT_NE(fresh, old) << type;
        EXPECT_EQ(request(), fresh) << type;
        EXPECT_EQ(old->projectBoundaryOnTargetLocationSurface(3), before) << type;

        // What a program would find that reads the saved file.
        const std::vector<Vector> outline = fresh->projectBoundaryOnTargetLocationSurface(3);
        EXPECT_NE(outline, before) << type;
        config = XMLConfigFile::parse(config->text(), "display.xml");
        TargetLocatorManager::deleteInstance();
        EXPECT_EQ(request()->projectBoundaryOnTargetLocationSurface(3), outline) << type;
    }
}

TEST_F(TargetLocatorFileTest, AChangedEyePointOrTargetPositionGivesANewLocator) {
    load(DOME, "Spherical", "<Frustum left='-20' right='20' bottom='-15' top='15'/>");
    const auto old = request();
    config->getMutableScreenConfig()->setEyePoint({0.0, 0.5, 0.0});
    EXPECT_EQ(request(), old) << "the target data states a position of its own";
    config->getMutableTargetLocatorConfig()->setTargetPosition({0.0, 0.5, 0.0});
    EXPECT_NE(request(), old);
    load(DOME, "ProjectorCentric", "<Frustum left='-20' right='20' bottom='-15' top='15'/>");
    const auto following = request();
    config->getMutableScreenConfig()->setEyePoint({0.0, 0.5, 0.0});
    EXPECT_NE(request(), following) << "the projector states no position";
}

TEST_F(TargetLocatorFileTest, AChangedScreenIsFollowedWhenTheManagerIsMadeToLook) {
    load(DOME, "Spherical", "<Frustum left='-20' right='20' bottom='-15' top='15'/>");
    const auto lengthOfTarget = [&] { return norm(request()->projectBoundaryOnTargetLocationSurface(1).front()); };
    EXPECT_NEAR(lengthOfTarget(), 4.0, ROUNDING);
    const auto dome = ScreenManager::getInstance()->getScreenGeometry();
    config->getMutableScreenConfig()->setRadius(5.0);
    ScreenManager::getInstance()->updateScreenGeometry(config.get());
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    EXPECT_EQ(ScreenManager::getInstance()->getScreenGeometry(), dome);
    EXPECT_NEAR(lengthOfTarget(), 5.0, ROUNDING);

    config->getMutableScreenConfig()->setRadius(6.0);
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    EXPECT_NE(ScreenManager::getInstance()->getScreenGeometry(), dome);
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    EXPECT_NEAR(lengthOfTarget(), 6.0, ROUNDING);
}

TEST_F(TargetLocatorFileTest, AnAreaThatIsNotConfiguredIsTold) {
    load(WALL, "PlanarBasic", "<ScreenArea left='0.5' right='1' bottom='0'/>");
    EXPECT_EQ(request(), nullptr);
    EXPECT_THAT(log.messages(), SizeIs(2));
}

}  // namespace

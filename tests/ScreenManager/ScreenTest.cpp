#include "ScreenManager/Screen.h"

#include "ScreenManagerTestAccess.h"
#include "support/ScreenGeometryDouble.h"

#include <gtest/gtest.h>
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <cmath>
#include <type_traits>

namespace {

using Access = ScreenManagerTestAccess;
using std::chrono::steady_clock;
using TimePoint = steady_clock::time_point;

std::shared_ptr<ScreenGeometryDouble> geometry(bool valid, Trace* trace = nullptr, const std::string& name = "") {
    auto made = std::make_shared<ScreenGeometryDouble>(trace, name);
    made->valid = valid;
    return made;
}

Screen screenWithId() {
    return Screen(StrongId<std::string, ScreenIdTag>("Left"));
}

/// Everything but the id as at the beginning.
void expectEmpty(Screen& screen) {
    EXPECT_EQ(screen.getContent(), nullptr);
    EXPECT_EQ(screen.getMeasured(), nullptr);
    EXPECT_EQ(screen.getModelPCD(), nullptr);
    EXPECT_EQ(screen.getPreferredScreen(), nullptr);
    EXPECT_EQ(screen.getScale(), 1.0F);
    EXPECT_EQ(Access::importTransformParam1(screen), L"Y");
    EXPECT_EQ(Access::importTransformParam2(screen), L"Z");
    EXPECT_FALSE(screen.getScreenIsReal());
    EXPECT_FALSE(screen.isValid());
    EXPECT_FALSE(screen.isDualScreen());
}

TEST(Screen, ADefaultScreenIsUnknownAndItsCloudChangedAtItsConstruction) {
    const TimePoint before = steady_clock::now();
    Screen screen;
    const TimePoint after = steady_clock::now();
    EXPECT_EQ(Access::id(screen), "Unknown Screen");
    EXPECT_GE(screen.getModelPCDTimestamp(), before);
    EXPECT_LE(screen.getModelPCDTimestamp(), after);
    EXPECT_FALSE(Access::reservedFlag(screen));
    expectEmpty(screen);
}

TEST(Screen, AScreenWithAnIdHasTimeZeroUntilItsCloudChanges) {
    Screen screen = screenWithId();
    EXPECT_EQ(Access::id(screen), "Left");
    EXPECT_EQ(screen.getModelPCDTimestamp(), TimePoint{});
    expectEmpty(screen);
    screen.setModelPCD(nullptr);
    EXPECT_GT(screen.getModelPCDTimestamp(), TimePoint{});
}

TEST(Screen, SettersStoreWhatTheyAreGivenAndTouchNothingElse) {
    Screen screen = screenWithId();
    const auto content = geometry(false);
    const auto measured = geometry(false);
    screen.setContent(content);
    screen.setMeasured(measured);
    EXPECT_EQ(screen.getContent(), content);
    EXPECT_EQ(screen.getMeasured(), measured);
    EXPECT_EQ(content->calls("isValid"), 0U);
    EXPECT_EQ(content.use_count(), 2);
    EXPECT_FALSE(screen.getScreenIsReal());
    EXPECT_EQ(screen.getModelPCDTimestamp(), TimePoint{});
    screen.setContent(nullptr);
    screen.setMeasured(nullptr);
    expectEmpty(screen);
}

TEST(Screen, ACloudIsStoredUntransformedAndStampsTheTime) {
    Screen screen = screenWithId();
    screen.setScale(3.0F);
    const auto cloud = pcl::make_shared<Screen::PointCloud>();
    cloud->push_back({1.0F, 2.0F, 3.0F});
    const TimePoint before = steady_clock::now();
    screen.setModelPCD(cloud);
    EXPECT_GE(screen.getModelPCDTimestamp(), before);
    EXPECT_EQ(screen.getModelPCD(), cloud);
    EXPECT_EQ(cloud->at(0).x, 1.0F);
}

TEST(Screen, TheMeasuredScreenIsPreferredEvenWhenOnlyTheContentIsValid) {
    Screen screen;
    const auto content = geometry(true);
    const auto measured = geometry(false);
    screen.setContent(content);
    EXPECT_EQ(screen.getPreferredScreen(), content);
    screen.setMeasured(measured);
    EXPECT_EQ(screen.getPreferredScreen(), measured);
    screen.setContent(nullptr);
    EXPECT_EQ(screen.getPreferredScreen(), measured);
}

TEST(Screen, AnyContentMakesItValid) {
    Screen screen;
    screen.setMeasured(geometry(true));
    EXPECT_FALSE(screen.isValid());
    const auto content = geometry(false);
    screen.setContent(content);
    EXPECT_TRUE(screen.isValid());
    EXPECT_EQ(content->calls("isValid"), 0U) << "the content is not asked";
}

TEST(Screen, ItIsDualWhenBothGeometriesAreThereAndValid) {
    Screen screen;
    const auto content = geometry(true);
    const auto measured = geometry(true);
    screen.setContent(content);
    EXPECT_FALSE(screen.isDualScreen());
    screen.setMeasured(measured);
    EXPECT_TRUE(screen.isDualScreen());
    content->valid = false;
    EXPECT_FALSE(screen.isDualScreen());
    content->valid = true;
    measured->valid = false;
    EXPECT_FALSE(screen.isDualScreen());
    screen.setContent(nullptr);
    measured->valid = true;
    EXPECT_FALSE(screen.isDualScreen());
}

TEST(Screen, TheContentIsAskedFirstAndTheMeasuredScreenNotAfterANo) {
    Trace trace;
    Screen screen;
    const auto content = geometry(true, &trace, "content");
    screen.setContent(content);
    screen.setMeasured(geometry(true, &trace, "measured"));
    static_cast<void>(screen.isDualScreen());
    EXPECT_TRUE((trace == std::initializer_list<std::string>{"content.isValid()", "measured.isValid()"})) << trace;
    trace.clear();
    content->valid = false;
    static_cast<void>(screen.isDualScreen());
    EXPECT_TRUE((trace == std::initializer_list<std::string>{"content.isValid()"})) << trace;
}

TEST(Screen, TheScaleIsStoredAndRebuildsNothing) {
    Screen screen;
    const auto content = geometry(true);
    screen.setContent(content);
    screen.setScale(2.0F);
    EXPECT_EQ(screen.getScale(), 2.0F);
    EXPECT_EQ(screen.getContent(), content);
    screen.setScale(std::nanf(""));
    EXPECT_TRUE(std::isnan(screen.getScale()));
    screen.setScale(0.5F);
    EXPECT_EQ(screen.getScale(), 0.5F) << "a NaN is replaced";
}

TEST(Screen, AnEqualScaleIsNotStored) {
    Screen screen;
    screen.setScale(0.0F);
    screen.setScale(-0.0F);
    EXPECT_FALSE(std::signbit(screen.getScale()));
}

TEST(Screen, ResettingTheTransformsKeepsTheScale) {
    Screen screen;
    screen.setScale(2.0F);
    screen.setImportTransformParams(L"Z", L"-X");
    EXPECT_EQ(Access::importTransformParam1(screen), L"Z");
    EXPECT_EQ(Access::importTransformParam2(screen), L"-X");
    screen.resetTransforms();
    EXPECT_EQ(Access::importTransformParam1(screen), L"Y");
    EXPECT_EQ(Access::importTransformParam2(screen), L"Z");
    EXPECT_EQ(screen.getScale(), 2.0F);
}

TEST(Screen, CopiesShareTheHandlesAndCopyTheRest) {
    Screen screen = screenWithId();
    const auto content = geometry(true);
    const auto measured = geometry(true);
    const auto cloud = pcl::make_shared<Screen::PointCloud>();
    screen.setContent(content);
    screen.setMeasured(measured);
    screen.setModelPCD(cloud);
    screen.setScale(2.0F);
    screen.setImportTransformParams(L"X", L"-Y");
    Access::setReservedFlag(screen, true);

    Screen copy(screen);
    Screen assigned;
    assigned = screen;
    EXPECT_EQ(content.use_count(), 4);
    EXPECT_EQ(measured.use_count(), 4);
    EXPECT_EQ(cloud.use_count(), 4);
    for (Screen* one : {&copy, &assigned}) {
        EXPECT_EQ(Access::id(*one), "Left");
        EXPECT_EQ(one->getContent(), content);
        EXPECT_EQ(one->getMeasured(), measured);
        EXPECT_EQ(one->getModelPCD(), cloud);
        EXPECT_EQ(one->getScale(), 2.0F);
        EXPECT_EQ(Access::importTransformParam1(*one), L"X");
        EXPECT_EQ(Access::importTransformParam2(*one), L"-Y");
        EXPECT_TRUE(Access::reservedFlag(*one));
        EXPECT_EQ(one->getModelPCDTimestamp(), screen.getModelPCDTimestamp());
    }
    copy.setContent(nullptr);
    EXPECT_EQ(screen.getContent(), content);
}

TEST(Screen, ClearingLeavesTheIdAlone) {
    Screen screen = screenWithId();
    screen.setContent(geometry(true));
    screen.setMeasured(geometry(true));
    screen.setModelPCD(pcl::make_shared<Screen::PointCloud>());
    screen.setScale(2.0F);
    screen.setImportTransformParams(L"X", L"-Y");
    const TimePoint before = steady_clock::now();
    screen.clearScreens();
    expectEmpty(screen);
    EXPECT_EQ(Access::id(screen), "Left");
    EXPECT_GE(screen.getModelPCDTimestamp(), before);
}

TEST(Screen, ItsOwnTextsCanBeHandedBackToIt) {
    // The parameters are references: the second could be the text that storing the first replaces.
    Screen screen;
    screen.setImportTransformParams(L"X", L"-Y");
    Access::setImportTransformParamsSwapped(screen);
    EXPECT_EQ(Access::importTransformParam1(screen), L"-Y");
    EXPECT_EQ(Access::importTransformParam2(screen), L"X");
}

TEST(Screen, ItsDestructorIsNotVirtual) {
    static_assert(!std::has_virtual_destructor_v<Screen>);
    static_assert(std::is_polymorphic_v<Screen>);
}

}  // namespace

#include "ScreenManager/CustomProjectionTargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/Blend.h"
#include "KelvoScreen/FlatScreen.h"
#include "ScreenFixture.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "support/ProjectionModelDouble.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

CustomProjectionTargetLocatorParams paramsOf(std::shared_ptr<ProjectionModel> model) {
    CustomProjectionTargetLocatorParams params;
    params.projectionModel = std::move(model);
    return params;
}

/// Keeps the rays of the last boundary.
class RayKeeper : public ScreenGeometryDouble {
public:
    using ScreenGeometryDouble::ScreenGeometryDouble;

    mutable std::vector<Ray> boundaryRays;
    mutable std::vector<Ray> referenceRays;

    std::vector<Vector> intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                 const std::vector<Ray>& centre) const override {
        boundaryRays = boundary;
        referenceRays = centre;
        return ScreenGeometryDouble::intersectChannelBoundary(boundary, centre);
    }
};

class CustomProjectionTargetLocatorTest : public ScreenFixture {
protected:
    std::shared_ptr<RayKeeper> installRayKeeper() {
        auto keeper = std::make_shared<RayKeeper>(&trace);
        ScreenManager::getInstance()->setScreenGeometry(keeper);
        return keeper;
    }
    std::size_t raysOf(int samples) {
        const auto keeper = installRayKeeper();
        static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(samples));
        return keeper->boundaryRays.size();
    }

    const std::shared_ptr<ProjectionModelDouble> model = std::make_shared<ProjectionModelDouble>(&trace);
    const CustomProjectionTargetLocator locator{paramsOf(model)};
};

TEST_F(CustomProjectionTargetLocatorTest, AGridIsNotImplementedAndStaysAsItIs) {
    installGeometry();
    const Grid before{{{0, 0}, {1.0, 2.0, 3.0}}};
    Grid grid = before;
    try {
        locator.projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 2, 2, grid);
        FAIL() << "nothing was thrown";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message, L"Method Not Implemented");
        EXPECT_THAT(fault.file, EndsWith("CustomProjectionTargetLocator.cpp"));
        EXPECT_EQ(fault.line, 33);
    }
    EXPECT_EQ(grid, before);
    EXPECT_TRUE((trace == std::initializer_list<std::string>{})) << trace;
}

TEST_F(CustomProjectionTargetLocatorTest, TheEdgesAreWalkedRoundTheLowerLeftCornerAndTheCentreComesLast) {
    installGeometry();
    static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(1));
    EXPECT_THAT(trace.lines(), ElementsAre("model.viewport()", "model.unproject((0, 0))", "model.unproject((1, 0))",
                                           "model.unproject((1, 1))", "model.unproject((0, 1))",
                                           "model.unproject((0.5, 0.5))", "geometry.intersectChannelBoundary(4, 1)"));
}

TEST_F(CustomProjectionTargetLocatorTest, FourSamplesAreFourOnEachEdge) {
    installGeometry();
    static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(4));
    EXPECT_THAT(trace.lines(),
                ElementsAre("model.viewport()", "model.unproject((0, 0))", "model.unproject((0.25, 0))",
                            "model.unproject((0.5, 0))", "model.unproject((0.75, 0))", "model.unproject((1, 0))",
                            "model.unproject((1, 0.25))", "model.unproject((1, 0.5))", "model.unproject((1, 0.75))",
                            "model.unproject((1, 1))", "model.unproject((0.75, 1))", "model.unproject((0.5, 1))",
                            "model.unproject((0.25, 1))", "model.unproject((0, 1))", "model.unproject((0, 0.75))",
                            "model.unproject((0, 0.5))", "model.unproject((0, 0.25))", "model.unproject((0.5, 0.5))",
                            "geometry.intersectChannelBoundary(16, 1)"));
}

TEST_F(CustomProjectionTargetLocatorTest, RoundingOfTheSumGivesTenSamplesAnEleventhOnEveryEdge) {
    EXPECT_EQ(raysOf(10), 44U);
}

TEST_F(CustomProjectionTargetLocatorTest, RoundingOfTheSumGivesThreeSamplesAFourthOnFallingEdges) {
    EXPECT_EQ(raysOf(3), 14U);
    const std::vector<std::string>& lines = trace.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "model.unproject((0.6666666666666666, 0))"), 1);
    // The last falling sample is what thrice a third leaves of one.
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "model.unproject((1.1102230246251565e-16, 1))"), 1);
}

TEST_F(CustomProjectionTargetLocatorTest, RaysBeginAtTheViewportAndPassOneDirectionFurther) {
    model->place.position = {10.0, 20.0, 30.0};
    model->place.orientation = {7.0, 8.0, 9.0};
    const auto keeper = installRayKeeper();
    static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(1));
    const Vector origin{10.0, 20.0, 30.0};
    EXPECT_THAT(keeper->boundaryRays, ElementsAre(Ray{origin, {10.0, 21.0, 30.0}}, Ray{origin, {11.0, 21.0, 30.0}},
                                                  Ray{origin, {11.0, 21.0, 31.0}}, Ray{origin, {10.0, 21.0, 31.0}}));
    EXPECT_THAT(keeper->referenceRays, ElementsAre(Ray{origin, {10.5, 21.0, 30.5}}));
}

TEST_F(CustomProjectionTargetLocatorTest, ASampleThatTheModelRefusesIsARayOfNoLength) {
    model->place.position = {1.0, 2.0, 3.0};
    model->unprojection = [](const Point<double, 2>& normalised, Vector& direction) {
        if (normalised[0] > 0.0) {
            return false;
        }
        direction = {5.0, 5.0, 5.0};
        return true;
    };
    const auto keeper = installRayKeeper();
    static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(1));
    const Vector origin{1.0, 2.0, 3.0};
    const Vector seen{6.0, 7.0, 8.0};
    EXPECT_THAT(keeper->boundaryRays,
                ElementsAre(Ray{origin, seen}, Ray{origin, origin}, Ray{origin, origin}, Ray{origin, seen}))
        << "no ray keeps the direction of the one before it";
    EXPECT_THAT(keeper->referenceRays, ElementsAre(Ray{origin, origin}));
}

TEST_F(CustomProjectionTargetLocatorTest, TheOutlineIsWhatTheScreenMakesOfTheRays) {
    installGeometry()->channelBoundary = {{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}};
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4),
                ElementsAre(Vector{1.0, 2.0, 3.0}, Vector{4.0, 5.0, 6.0}));
}

TEST_F(CustomProjectionTargetLocatorTest, TheScreenIsTakenAfterTheRays) {
    const auto screen = std::make_shared<ScreenGeometryDouble>(&trace);
    screen->channelBoundary = {{1.0, 2.0, 3.0}};
    model->unprojection = [&](const Point<double, 2>&, Vector&) {
        ScreenManager::getInstance()->setScreenGeometry(screen);
        return true;
    };
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(1), SizeIs(1));
}

TEST_F(CustomProjectionTargetLocatorTest, WithoutAScreenTheOutlineIsEmptyWithoutAWord) {
    EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomProjectionTargetLocatorTest, NoSamplesGiveNoOutlineAndAskNothing) {
    installGeometry();
    for (const int samples : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_THAT(locator.projectBoundaryOnTargetLocationSurface(samples), IsEmpty());
    }
    EXPECT_TRUE((trace == std::initializer_list<std::string>{})) << trace;
}

TEST_F(CustomProjectionTargetLocatorTest, WithoutAModelTheOutlineIsEmpty) {
    installGeometry()->channelBoundary = {{1.0, 2.0, 3.0}};
    const CustomProjectionTargetLocator empty{CustomProjectionTargetLocatorParams()};
    EXPECT_THAT(empty.projectBoundaryOnTargetLocationSurface(4), IsEmpty());
}

TEST_F(CustomProjectionTargetLocatorTest, ExceptionsOfModelAndScreenPassThrough) {
    const auto geometry = installGeometry();
    geometry->throwFrom("intersectChannelBoundary", std::runtime_error("broken"));
    EXPECT_THROW(static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(4)), std::runtime_error);
    model->throwFrom("unproject", VeltraniException(L"no lens"), 2);
    EXPECT_THROW(static_cast<void>(locator.projectBoundaryOnTargetLocationSurface(4)), VeltraniException);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(CustomProjectionTargetLocatorTest, RaysMeetTheScreenAsForEveryLocatorOnIt) {
    installGeometry()->intersections = {{{5.0, 5.0, 5.0}, 1.0}};
    Vector hit;
    EXPECT_EQ(locator.intersectWithTargetLocationSurface({0.0, 0.0, 0.0}, {0.0, -1.0, 0.0}, hit),
              std::make_pair(true, -1));
    EXPECT_EQ(hit, (Vector{5.0, 5.0, 5.0}));
}

TEST_F(CustomProjectionTargetLocatorTest, TheRecordKeepsTheModelAlive) {
    std::weak_ptr<ProjectionModel> watch;
    {
        auto created = std::make_shared<ProjectionModelDouble>();
        watch = created;
        CustomProjectionTargetLocator holder(CustomProjectionTargetLocatorParams{});
        holder = CustomProjectionTargetLocator(paramsOf(std::move(created)));
        EXPECT_FALSE(watch.expired()) << "the locator that was assigned shares the model";
        const auto& params = dynamic_cast<const CustomProjectionTargetLocatorParams&>(holder.getTargetLocatorParams());
        EXPECT_EQ(params.projectionModel, watch.lock());
    }
    EXPECT_TRUE(watch.expired());
}

TEST_F(CustomProjectionTargetLocatorTest, IsAssignedButNotCopied) {
    using Locator = CustomProjectionTargetLocator;
    static_assert(!std::is_copy_constructible_v<Locator> && std::is_copy_assignable_v<Locator>);
    EXPECT_EQ(slotOf(&Locator::projectOnTargetLocationSurface), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&Locator::getTargetLocatorParams), 3U);
    EXPECT_EQ(slotOf(&Locator::projectBoundaryOnTargetLocationSurface), 4U);
    EXPECT_EQ(slotOf(&Locator::intersectWithTargetLocationSurface), 5U);
}

TEST_F(CustomProjectionTargetLocatorTest, ARealLensOutlinesAFlatScreenInClosedForm) {
    // Two units in front of the unit square at y = 0, the picture reaching a quarter unit to each side at the screen.
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<FlatScreen>());
    const double angle = std::atan(0.125);
    Viewport viewport = Viewport::fromFrustumAngles(-angle, angle, -angle, angle);
    viewport.position = {0.5, -2.0, 0.5};
    const CustomProjectionTargetLocator real{paramsOf(Blend::createProjectionModel(viewport, L"Rectilinear", L""))};
    const std::vector<Vector> expected{{0.25, 0.0, 0.25}, {0.5, 0.0, 0.25}, {0.75, 0.0, 0.25}, {0.75, 0.0, 0.5},
                                       {0.75, 0.0, 0.75}, {0.5, 0.0, 0.75}, {0.25, 0.0, 0.75}, {0.25, 0.0, 0.5}};
    const std::vector<Vector> outline = real.projectBoundaryOnTargetLocationSurface(2);
    ASSERT_THAT(outline, SizeIs(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_LT(norm(outline[i] - expected[i]), 1e-14) << i;
    }
}

/// Records of two models that say the same of themselves.
class CustomProjectionParamsTest : public testing::Test {
protected:
    CustomProjectionParamsTest() {
        for (const auto& model : {first, second}) {
            model->place.position = {1.0, 2.0, 3.0};
            model->place.orientation = {4.0, 5.0, 6.0};
            model->file = L"lens.yml";
        }
    }
    bool equal() const { return paramsOf(first) == paramsOf(second); }

    Trace trace;
    const std::shared_ptr<ProjectionModelDouble> first = std::make_shared<ProjectionModelDouble>(&trace, "first");
    const std::shared_ptr<ProjectionModelDouble> second = std::make_shared<ProjectionModelDouble>(&trace, "second");
};

TEST_F(CustomProjectionParamsTest, DistinctModelsThatSayTheSameAreEqual) {
    EXPECT_TRUE(equal());
    // What rays they send is not compared.
    second->unprojection = [](const Point<double, 2>&, Vector&) { return false; };
    EXPECT_TRUE(equal());
    EXPECT_FALSE(paramsOf(first) != paramsOf(second));
}

TEST_F(CustomProjectionParamsTest, ViewportsAreComparedFirstThenTheFirstNamesThenTheSecond) {
    EXPECT_TRUE(equal());
    EXPECT_THAT(trace.lines(), ElementsAre("first.viewport()", "second.viewport()", "first.firstName()",
                                           "second.firstName()", "first.secondName()", "second.secondName()"));
}

TEST_F(CustomProjectionParamsTest, TheComparisonEndsAtTheFirstDifference) {
    second->place.ox = 9.0;
    EXPECT_FALSE(equal());
    EXPECT_THAT(trace.lines(), ElementsAre("first.viewport()", "second.viewport()"));
    trace.clear();
    second->place.ox = first->place.ox;
    second->kind = L"double";
    EXPECT_FALSE(equal()) << "case counts";
    EXPECT_THAT(trace.lines(),
                ElementsAre("first.viewport()", "second.viewport()", "first.firstName()", "second.firstName()"));
    second->kind = first->kind;
    second->file = L"lens.yml ";
    EXPECT_FALSE(equal());
}

TEST_F(CustomProjectionParamsTest, EveryNumberOfTheViewportCounts) {
    std::vector<double*> numbers{&second->place.ox, &second->place.oy, &second->place.sx, &second->place.sy};
    for (std::size_t i = 0; i < 3; ++i) {
        numbers.push_back(&second->place.position[i]);
        numbers.push_back(&second->place.orientation[i]);
    }
    for (double* const number : numbers) {
        const double before = *number;
        *number = std::nextafter(before, 100.0);
        EXPECT_FALSE(equal());
        *number = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(equal());
        EXPECT_FALSE(paramsOf(second) == paramsOf(second)) << "a record with a NaN is unequal even to itself";
        *number = before;
    }
    for (int* const size : {&second->place.width, &second->place.height}) {
        ++*size;
        EXPECT_FALSE(equal());
        --*size;
    }
    second->place.ox = -0.0;
    EXPECT_TRUE(equal()) << "-0.0 equals 0.0, and everything is as it was";
}

TEST_F(CustomProjectionParamsTest, RecordsWithoutAModelEqualEachOtherOnly) {
    CustomProjectionTargetLocatorParams empty;
    EXPECT_EQ(empty.projectionModel, nullptr);
    EXPECT_TRUE(empty == CustomProjectionTargetLocatorParams());
    EXPECT_FALSE(empty == paramsOf(first));
    EXPECT_FALSE(paramsOf(first) == empty);
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CustomProjectionParamsTest, AnotherKindOfRecordIsUnequalAndTheModelIsNotAsked) {
    EXPECT_FALSE(paramsOf(first) == PlanarTargetLocatorParams());
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CustomProjectionParamsTest, ACopySharesTheModelAndAMoveTakesItOver) {
    CustomProjectionTargetLocatorParams source = paramsOf(first);
    const CustomProjectionTargetLocatorParams copy = source;
    EXPECT_EQ(copy.projectionModel, source.projectionModel);
    const CustomProjectionTargetLocatorParams moved = std::move(source);
    EXPECT_EQ(moved.projectionModel, first);
    EXPECT_EQ(source.projectionModel, nullptr);  // NOLINT(bugprone-use-after-move): that is the question
}

}  // namespace

#include "ScreenManager/DisplayKinds.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/detail/DisplayFormat.h"
#include "KelvoControl/Configuration.h"
#include "KelvoScreen/ScreenShape.h"
#include "PlanarMapText.h"
#include "TargetLocatorFixture.h"
#include "support/ScreenConfigDouble.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

/// What the configuration can name has a row where geometries, locators and layout maps are made, and the other way
/// round. A failed test names the type or shape that lacks one.

namespace {

using Names = std::set<std::string>;

Names namesOf(std::span<const Veltrani::ConfigurationDetail::VariantRule> variants) {
    Names names;
    for (const Veltrani::ConfigurationDetail::VariantRule& variant : variants) {
        names.emplace(variant.value);
    }
    return names;
}

class DisplayKinds : public TargetLocatorFixture {
protected:
    DisplayKinds() {
        config.folder = Veltrani::fromUtf8(folder.path());
        projector.customPlanarFile = L"map.txt";
        folder.write("map.txt", planar_map::wholePicture(1920, 1080));
        projector.width = 1920;
        projector.height = 1080;
    }

    const TemporaryFolder folder;
};

TEST_F(DisplayKinds, AreThoseThatTheConfigurationCanName) {
    Names names;
    for (const DisplayKind& kind : DisplayKind::all()) {
        const std::string name = Veltrani::toUtf8(std::wstring(kind.type));
        EXPECT_TRUE(names.insert(name).second) << name << " has two rows";
        EXPECT_EQ(DisplayKind::named(kind.type), &kind) << name;
    }
    EXPECT_EQ(names, namesOf(Veltrani::ConfigurationDetail::targetDataTypes()));
    EXPECT_EQ(DisplayKind::named(L"planarbasic"), nullptr);
    EXPECT_EQ(DisplayKind::named(L""), nullptr);
}

TEST_F(DisplayKinds, EachMakesALocatorOfAKnownKind) {
    struct FromElsewhere : SphereTargetLocator {
        using SphereTargetLocator::SphereTargetLocator;
    };
    const FromElsewhere fromElsewhere{SphereTargetLocatorParams()};
    for (const DisplayKind& kind : DisplayKind::all()) {
        const std::string name = Veltrani::toUtf8(std::wstring(kind.type));
        for (const wchar_t* const model : {L"", L"Rectilinear"}) {
            projector.projectionModelName = model;
            const auto locator = request(std::wstring(kind.type));
            ASSERT_TRUE(locator) << name;
            const LocatorKind& made = LocatorKind::of(*locator);
            EXPECT_NE(made.path, LocatorKind::Path::UNKNOWN) << name << ": its locator has no row";
            EXPECT_NE(&made, &LocatorKind::of(fromElsewhere)) << name << ": its locator has no row";
            EXPECT_NE(made.outlineSamples, nullptr) << name;
        }
    }
}

TEST_F(DisplayKinds, GridsAreOfferedByThoseWhoseLocatorDoesNotThrow) {
    installGeometry();
    for (const DisplayKind& kind : DisplayKind::all()) {
        const std::string name = Veltrani::toUtf8(std::wstring(kind.type));
        for (const wchar_t* const model : {L"", L"Rectilinear"}) {
            projector.projectionModelName = model;
            const auto locator = request(std::wstring(kind.type));
            ASSERT_TRUE(locator) << name;
            std::map<Point<int, 2>, Point<double, 3>> grid;
            bool isThrown = false;
            try {
                locator->projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, 3, 2, grid);
            } catch (const VeltraniException&) {
                isThrown = true;
            }
            EXPECT_EQ(LocatorKind::of(*locator).offersGrid, !isThrown) << name;
        }
    }
}

// The table of channel maps stands below the kinds and knows by itself which of them look through lenses.
TEST_F(DisplayKinds, ThoseWithModelsAreThoseThatTheTableOfChannelMapsReadsLensesFor) {
    projector.projectionModelName = L"Fisheye:nowhere.yml";
    for (const DisplayKind& kind : DisplayKind::all()) {
        targetData.targetDataType = kind.type;
        bool isRead = false;
        try {
            const KelvoControl::Configuration table(&config);
        } catch (const VeltraniExceptionBase&) {
            isRead = true;
        }
        EXPECT_EQ(isRead, kind.source == DisplayKind::Source::MODEL_OR_FRUSTUM)
            << Veltrani::toUtf8(std::wstring(kind.type));
    }
}

TEST_F(DisplayKinds, EveryShapeThatTheConfigurationCanNameIsMade) {
    Names names;
    ScreenConfigDouble screen;
    for (const ScreenShape& shape : ScreenShape::all()) {
        const std::string name = Veltrani::toUtf8(std::wstring(shape.name));
        EXPECT_TRUE(names.insert(name).second) << name << " has two rows";
        EXPECT_EQ(ScreenShape::named(shape.name), &shape) << name;
        screen.shape = shape.name;
        EXPECT_EQ(ScreenShape::isReadFromFile(&screen), shape.make == nullptr) << name;
        if (!shape.isReadFromFile()) {
            EXPECT_EQ(shape.make(&screen)->getUniqueDataHash(), shape.hashOf(&screen)) << name;
        }
    }
    EXPECT_EQ(names, namesOf(Veltrani::ConfigurationDetail::screenShapes()));
    EXPECT_EQ(ScreenShape::named(L"flat"), nullptr);
    EXPECT_FALSE(ScreenShape::isReadFromFile(nullptr));
}

}  // namespace

#include "DisplayReport/coverage/ParameterLight.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DisplayReport::MapFileLight;
using Veltrani::DisplayReport::SurfacePoint;

/// The picture of 200 x 100 pixels shows s from 0.25 to 0.75 and t from 0 to 0.5.
const std::string PART = "2\n2 2\n-2 -1 0.25 0 1\n2 -1 0.75 0 1\n-2 1 0.25 0.5 1\n2 1 0.75 0.5 1\npixels 200 100\n";

class MapFileLightTest : public testing::Test {
protected:
    [[nodiscard]] MapFileLight light(const std::string& map, int width = 200, int height = 100) const {
        const std::string file = m_folder.write("channel.map", map);
        return {CustomPlanarTargetLocatorParams({width, height}, std::wstring(file.begin(), file.end())),
                std::make_shared<FlatScreen>()};
    }

    static SurfacePoint at(double s, double t) { return {{s, 0, t}, {s, t}, true}; }

    TemporaryFolder m_folder;
};

TEST_F(MapFileLightTest, LandsWhereTheFileSays) {
    const auto landing = light(PART).landingOf({1.0, 0.5});
    ASSERT_TRUE(landing.hits);
    EXPECT_LE(norm(landing.on.place - Point<double, 3>{0.75, 0, 0.25}), 1e-12);
}

TEST_F(MapFileLightTest, LightsWhatTheFileCovers) {
    const MapFileLight part = light(PART);
    EXPECT_TRUE(part.lights(at(0.26, 0.49)));
    EXPECT_FALSE(part.lights(at(0.24, 0.49)));
    EXPECT_FALSE(part.lights(at(0.26, 0.51)));
}

TEST_F(MapFileLightTest, LightsItsPictureWithTheEdges) {
    const MapFileLight part = light(PART);
    for (const double s : {0.25, 0.5, 0.75}) {
        EXPECT_TRUE(part.lights(at(s, 0)) && part.lights(at(s, 0.5))) << s;
    }
    EXPECT_TRUE(part.lights(at(0.25, 0.25)) && part.lights(at(0.75, 0.25)));
}

TEST_F(MapFileLightTest, APictureSmallerThanTheFileShowsAsMuchLess) {
    const MapFileLight half = light(PART, 100, 100);
    EXPECT_TRUE(half.lights(at(0.49, 0.25)));
    EXPECT_FALSE(half.lights(at(0.51, 0.25)));
}

TEST_F(MapFileLightTest, APictureWithoutPixelsLightsNothing) {
    EXPECT_FALSE(light(PART, 0, 0).lights(at(0.5, 0.25)));
}

TEST_F(MapFileLightTest, AMissingFileIsTold) {
    EXPECT_THROW(
        MapFileLight(CustomPlanarTargetLocatorParams({1, 1}, L"/nowhere/channel.map"), std::make_shared<FlatScreen>()),
        VeltraniMissingFileException);
}

}  // namespace

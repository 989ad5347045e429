#include "DisplayReport/scene/ScreenEdge.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;

class ScreenEdgeTest : public LitDisplayTest {
protected:
    [[nodiscard]] static bool isWithin(const P3& point) { return ScreenEdge(*surface()).isWithin(point); }
};

TEST_F(ScreenEdgeTest, AWallEndsAtItsEdges) {
    load(displays::FLAT, "");
    EXPECT_TRUE(isWithin({0, 5, 1}));
    EXPECT_TRUE(isWithin({2, 5, 2})) << "a corner";
    EXPECT_TRUE(isWithin({-2, 5, 0.3})) << "an edge";
    EXPECT_FALSE(isWithin({2.01, 5, 1}));
    EXPECT_FALSE(isWithin({0, 5, -2.7}));
}

// The upper half of a sphere of five metres: the lower one continues it.
TEST_F(ScreenEdgeTest, ADomeEndsAtItsRim) {
    load(
        "<Screen shape='Sphere'><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='0' "
        "max='90'/></Screen>",
        "");
    int within = 0;
    for (int degrees = -30; degrees <= 90; degrees += 5) {
        const double elevation = radians(degrees);
        const P3 point{0, 5 * std::cos(elevation), 5 * std::sin(elevation)};
        EXPECT_EQ(isWithin(point), degrees >= 0) << degrees;
        within += isWithin(point) ? 1 : 0;
    }
    EXPECT_EQ(within, 19);
}

TEST_F(ScreenEdgeTest, AMeshEndsAtItsBorderAndAtItsHoles) {
    m_folder.write("wall.obj",
                   "v -2 5 -1\nv 0 5 -1\nv 0 5 1\nv -2 5 1\nv 1 5 -1\nv 2 5 -1\nv 2 5 1\nv 1 5 1\n"
                   "f 1 2 3\nf 1 3 4\nf 5 6 7\nf 5 7 8\n");
    load(displays::MESH, "");
    EXPECT_TRUE(isWithin({-1, 5, 0}));
    EXPECT_TRUE(isWithin({0, 5, 0.5}));
    EXPECT_TRUE(isWithin({1.5, 5, 0}));
    EXPECT_FALSE(isWithin({0.5, 5, 0})) << "between the two parts";
    EXPECT_FALSE(isWithin({-1, 5, 1.1}));
}

}  // namespace

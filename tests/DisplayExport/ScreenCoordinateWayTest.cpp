#include "DisplayExport/ScreenCoordinateWay.h"

#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <array>

namespace {

using namespace Veltrani::DisplayExport;

/// On a wall of 4 by 2 metres, around (0, 5, 1).
class ScreenCoordinateWayTest : public ExportDisplayTest {
protected:
    [[nodiscard]] std::unique_ptr<const PictureWay> way() const {
        return PictureWay::of(locator(0), ScreenManager::getInstance()->getScreenGeometry());
    }

    /// @param screen (s, t) by the place in the picture
    template <class Screen>
    static void expectWay(const PictureWay& way, const Screen& screen) {
        EXPECT_TRUE(way.goesThroughScreenCoordinates());
        EXPECT_FALSE(way.eyeOfMirror());
        const std::array<P2, 4> places{P2{0.5, 0.5}, P2{0.1, 0.3}, P2{0.95, 0.4}, P2{0.6, 0.75}};
        std::array<Arrival, 4> arrivals;
        arrivals.fill({{7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, {7.0, 7.0}, true});
        way.follow(places, arrivals);
        int lit = 0;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const P2 expected = screen(places[i]);
            const P3 point{-2 + 4 * expected[0], 5.0, 2 * expected[1]};
            const bool isLit = expected[0] >= 0 && expected[0] <= 1 && expected[1] >= 0 && expected[1] <= 1;
            lit += isLit ? 1 : 0;
            EXPECT_EQ(arrivals[i].arrives, isLit) << places[i];
            if (isLit) {
                EXPECT_LT(norm(arrivals[i].screen - expected), 1e-9) << places[i];
                EXPECT_LT(norm(arrivals[i].point - point), 1e-9) << places[i];
            }
            EXPECT_EQ(arrivals[i].leaving, P3()) << "there are no rays";
            const Arrival beyond = way.continued(places[i]);
            EXPECT_TRUE(beyond.arrives) << places[i];
            EXPECT_LT(norm(beyond.point - point), 1e-9) << places[i];
        }
        EXPECT_EQ(lit, 2);
    }
};

TEST_F(ScreenCoordinateWayTest, AnAreaIsLinearBetweenItsEdges) {
    load(displays::FLAT,
         displays::projector("P1",
                             "<ScreenArea left='0.2' right='1.1' bottom='-0.5' top='1'/>"
                             "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
         "<TargetData type='PlanarBasic'/>");
    // At v = 0.3 it lies below the screen, at u = 0.95 beside it.
    expectWay(*way(), [](const P2& place) { return P2{0.2 + 0.9 * place[0], -0.5 + 1.5 * place[1]}; });
}

TEST_F(ScreenCoordinateWayTest, AMapFileIsReadAtThePixelsOfAPlace) {
    write("p1.map", "2\n2 2\n-1.6 -1 0.2 -0.5 1\n1.6 -1 1.1 -0.5 1\n-1.6 1 0.2 1 1\n1.6 1 1.1 1 1\npixels 1920 1200\n");
    load(displays::FLAT, displays::projector("P1", "<CustomPlanarMap file='p1.map'/>"),
         "<TargetData type='CustomPlanar'/>");
    expectWay(*way(), [](const P2& place) { return P2{0.2 + 0.9 * place[0], -0.5 + 1.5 * place[1]}; });
}

}  // namespace

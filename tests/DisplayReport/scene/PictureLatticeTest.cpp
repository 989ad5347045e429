#include "DisplayReport/scene/PictureLattice.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;
using testing::IsEmpty;

class PictureLatticeTest : public LitDisplayTest {
protected:
    static std::string area(const std::string& left, const std::string& right) {
        return displays::projector("A", "<ScreenArea left='" + left + "' right='" + right + "' bottom='0' top='1'/>");
    }
};

// The wall is four wide and two high, around (0, 5, 1): the places follow from the numbers of the area.
TEST_F(PictureLatticeTest, NodesLieRowByRowFromTheBottomLeftCorner) {
    load(displays::FLAT, area("0.5", "1"));
    const PictureLattice lattice = PictureLattice::of(*lights().front(), 3, 2);
    ASSERT_EQ(lattice.places.size(), 6U);
    EXPECT_LE(norm(lattice.places[0] - P3{0, 5, 0}), 1e-12);
    EXPECT_LE(norm(lattice.places[1] - P3{1, 5, 0}), 1e-12);
    EXPECT_LE(norm(lattice.places[5] - P3{2, 5, 2}), 1e-12);
    EXPECT_EQ(lattice.lands, std::vector<bool>(6, true));
}

TEST_F(PictureLatticeTest, NodesThatMissAreMarked) {
    load(displays::FLAT, area("0.5", "1.5"));
    const PictureLattice lattice = PictureLattice::of(*lights().front(), 3, 2);
    EXPECT_EQ(lattice.lands, (std::vector<bool>{true, true, false, true, true, false}));
    EXPECT_EQ(lattice.places[2], P3());
}

TEST_F(PictureLatticeTest, TheArrowPointsUpInTheMiddleOfThePicture) {
    load(displays::FLAT, area("0", "1"));
    const auto arrow = upMarkOf(*lights().front(), 1.6);
    ASSERT_EQ(arrow.size(), 2U);
    EXPECT_LE(norm(arrow[0].front() - P3{0, 5, 1.5}), 1e-9) << "a fifth of the height below its tip";
    EXPECT_LE(norm(arrow[0].back() - P3{0, 5, 1.9}), 1e-9) << "a twentieth of the height below the edge";
    EXPECT_LE(norm(arrow[1][1] - arrow[0].back()), 1e-12);
    EXPECT_LT(arrow[1][0][0], 0);
    EXPECT_GT(arrow[1][2][0], 0);
}

// The middle of the picture lies past the right edge of the screen.
TEST_F(PictureLatticeTest, TheArrowStandsWhereThePictureLands) {
    load(displays::FLAT, area("0.5", "1.7"));
    const auto arrow = upMarkOf(*lights().front(), 1.6);
    ASSERT_EQ(arrow.size(), 2U);
    EXPECT_NEAR(arrow[0].front()[0], 4 * (0.5 + 0.3 * 1.2) - 2, 1e-9);
    load(displays::FLAT, area("1.5", "1.7"));
    EXPECT_THAT(upMarkOf(*lights().front(), 1.6), IsEmpty());
}

// Upside down: the arrow shows it.
TEST_F(PictureLatticeTest, TheArrowOfAProjectorThatHangsPointsDown) {
    load(displays::SPHERE, camera("A", "-20", "20", "-15", "15", "<Orientation z='0' x='0' y='180'/>"),
         displays::SPHERICAL);
    const auto arrow = upMarkOf(*lights().front(), 1.6);
    ASSERT_EQ(arrow.size(), 2U);
    EXPECT_LT(arrow[0].back()[2], arrow[0].front()[2]);
}

}  // namespace

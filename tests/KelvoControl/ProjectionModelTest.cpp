#include "KelvoControl/ProjectionModel.h"

#include <gtest/gtest.h>

namespace {

/// A model that knows whole pixels only.
class PixelModel : public ProjectionModel {
public:
    PixelModel() {
        m_viewport.width = 200;
        m_viewport.height = 100;
    }

    [[nodiscard]] const Viewport& viewport() const override { return m_viewport; }
    bool unproject(const Point<double, 2>& /*normalised*/, Point<double, 3>& /*direction*/) const override {
        return false;
    }
    bool unprojectPixel(const Point<double, 2>& /*pixel*/, Point<double, 3>& /*direction*/) const override {
        return false;
    }
    bool project(const Point<double, 3>& layoutPoint, Point<int, 2>& pixel) const override {
        if (layoutPoint[1] <= 0) {
            return false;
        }
        pixel = {50, -25};
        return true;
    }
    [[nodiscard]] std::wstring firstName() const override { return L"Pixels"; }
    [[nodiscard]] std::wstring secondName() const override { return {}; }

private:
    Viewport m_viewport;
};

TEST(ProjectionModel, ByDefaultANormalisedPointIsTheWholePixelInPartsOfThePicture) {
    Point<double, 2> normalised;
    ASSERT_TRUE(PixelModel().projectNormalised({0.0, 1.0, 0.0}, normalised));
    EXPECT_EQ(normalised, (Point<double, 2>{0.25, -0.25}));
}

TEST(ProjectionModel, ByDefaultThereIsNoNormalisedPointWithoutAPixel) {
    Point<double, 2> normalised{-7.0, -8.0};
    EXPECT_FALSE(PixelModel().projectNormalised({0.0, -1.0, 0.0}, normalised));
    EXPECT_EQ(normalised, (Point<double, 2>{-7.0, -8.0}));
}

TEST(ProjectionModel, ByDefaultNoCalibrationMadeIt) {
    EXPECT_EQ(PixelModel().calibratedSize(), (Point<int, 2>{0, 0}));
}

}  // namespace

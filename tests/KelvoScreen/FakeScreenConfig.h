#pragma once

#include "Configuration/IScreenConfig.h"

#include <string>

/// A screen description whose numbers are set by the test.
class FakeScreenConfig : public IScreenConfig {
public:
    [[nodiscard]] std::wstring getShape() const override { return shape; }
    [[nodiscard]] std::wstring getContentMeshFile(int /*index*/) const override { return {}; }
    [[nodiscard]] std::wstring getMeasuredMeshFile(int /*index*/) const override { return {}; }
    [[nodiscard]] std::wstring getModelPcdFile(int /*index*/) const override { return {}; }
    [[nodiscard]] std::wstring getImportOrientationParam1() const override { return {}; }
    [[nodiscard]] std::wstring getImportOrientationParam2() const override { return {}; }
    [[nodiscard]] std::wstring getUnitName() const override { return {}; }
    [[nodiscard]] double getScale() const override { return 1; }
    [[nodiscard]] Point<double, 3> getEyePoint() const override { return {}; }
    [[nodiscard]] Point<double, 3> getCentre() const override { return centre; }
    [[nodiscard]] Point<double, 3> getOrientation() const override { return orientation; }
    [[nodiscard]] double getWidth() const override { return width; }
    [[nodiscard]] double getHeight() const override { return height; }

    std::wstring shape;
    Point<double, 3> centre;
    Point<double, 3> orientation;
    double width = 0;
    double height = 0;
};

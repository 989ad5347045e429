#pragma once

#include "Configuration/IScreenConfig.h"
#include "support/Recorder.h"

/// A screen description that returns what its members state.
class ScreenConfigDouble : public IScreenConfig, public Recorder {
public:
    explicit ScreenConfigDouble(Trace* trace = nullptr) : Recorder("screen", trace) {}

    std::wstring shape;
    std::wstring contentMeshFile;
    std::wstring measuredMeshFile;
    std::wstring modelPcdFile;
    std::wstring importOrientationParam1 = L"Y";
    std::wstring importOrientationParam2 = L"Z";
    std::wstring unitName;
    double scale = 1.0;
    Point<double, 3> eyePoint;
    Point<double, 3> centre;
    Point<double, 3> orientation;
    double radius = 0.0;
    double width = 0.0;
    double height = 0.0;
    double azimuthMin = 0.0;
    double azimuthMax = 0.0;
    double elevationMin = 0.0;
    double elevationMax = 0.0;
    std::vector<Point<double, 3>> lowerRail;
    std::vector<Point<double, 3>> upperRail;

    std::wstring getShape() const override { return answer("getShape", shape); }
    std::wstring getContentMeshFile(int index) const override {
        record("getContentMeshFile", index);
        return contentMeshFile;
    }
    std::wstring getMeasuredMeshFile(int index) const override {
        record("getMeasuredMeshFile", index);
        return measuredMeshFile;
    }
    std::wstring getModelPcdFile(int index) const override {
        record("getModelPcdFile", index);
        return modelPcdFile;
    }
    std::wstring getImportOrientationParam1() const override {
        return answer("getImportOrientationParam1", importOrientationParam1);
    }
    std::wstring getImportOrientationParam2() const override {
        return answer("getImportOrientationParam2", importOrientationParam2);
    }
    std::wstring getUnitName() const override { return answer("getUnitName", unitName); }
    double getScale() const override { return answer("getScale", scale); }
    Point<double, 3> getEyePoint() const override { return answer("getEyePoint", eyePoint); }

    // The numbers of a shape are read by the geometry alone, several times over: they are not recorded.
    Point<double, 3> getCentre() const override { return centre; }
    Point<double, 3> getOrientation() const override { return orientation; }
    double getRadius() const override { return radius; }
    double getWidth() const override { return width; }
    double getHeight() const override { return height; }
    double getAzimuthMin() const override { return azimuthMin; }
    double getAzimuthMax() const override { return azimuthMax; }
    double getElevationMin() const override { return elevationMin; }
    double getElevationMax() const override { return elevationMax; }
    std::vector<Point<double, 3>> getLowerRail() const override { return lowerRail; }
    std::vector<Point<double, 3>> getUpperRail() const override { return upperRail; }

private:
    template <class T>
    T answer(const std::string& operation, const T& value) const {
        record(operation);
        return value;
    }
};

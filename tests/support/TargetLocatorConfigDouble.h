#pragma once

#include "Configuration/TargetLocatorConfig.h"
#include "support/Recorder.h"

/// Target-locator settings that return what their members state.
class TargetLocatorConfigDouble : public TargetLocatorConfig, public Recorder {
public:
    using Table = std::vector<std::pair<double, double>>;

    explicit TargetLocatorConfigDouble(Trace* trace = nullptr) : Recorder("locators", trace) {}

    std::wstring targetDataType;
    Point<double, 3> targetPosition;
    Point<double, 3> mirrorOrientation;
    Point<double, 3> mirrorPosition;
    double mirrorRadius = 0.0;
    Table yawTable;
    Table pitchTable;

    std::wstring getTargetDataType() const override { return answer("getTargetDataType", targetDataType); }
    Point<double, 3> getTargetPosition() const override { return answer("getTargetPosition", targetPosition); }
    Point<double, 3> getMirrorOrientation() const override { return answer("getMirrorOrientation", mirrorOrientation); }
    Point<double, 3> getMirrorPosition() const override { return answer("getMirrorPosition", mirrorPosition); }
    double getMirrorRadius() const override { return answer("getMirrorRadius", mirrorRadius); }
    Table getYawTable() const override { return answer("getYawTable", yawTable); }
    Table getPitchTable() const override { return answer("getPitchTable", pitchTable); }

private:
    template <class T>
    T answer(const std::string& operation, const T& value) const {
        record(operation);
        return value;
    }
};

#pragma once

#include "KelvoControl/ProjectionModel.h"
#include "support/Recorder.h"

#include <functional>

/// A projection model that returns what its members state.
class ProjectionModelDouble : public ProjectionModel, public Recorder {
public:
    explicit ProjectionModelDouble(Trace* trace = nullptr, const std::string& name = "model") : Recorder(name, trace) {}

    Viewport place;
    std::wstring kind = L"Double";
    std::wstring file;
    /// What `unproject` does; at first (u, v) -> (u, 1, v) everywhere.
    std::function<bool(const Point<double, 2>&, Point<double, 3>&)> unprojection =
        [](const Point<double, 2>& normalised, Point<double, 3>& direction) {
            direction = {normalised[0], 1.0, normalised[1]};
            return true;
        };
    /// What `project` does; at first nothing.
    std::function<bool(const Point<double, 3>&, Point<int, 2>&)> projection = [](const Point<double, 3>&,
                                                                                 Point<int, 2>&) { return false; };

    const Viewport& viewport() const override {
        record("viewport");
        return place;
    }
    bool unproject(const Point<double, 2>& normalised, Point<double, 3>& direction) const override {
        record("unproject", normalised);
        return unprojection(normalised, direction);
    }
    bool unprojectPixel(const Point<double, 2>& pixel, Point<double, 3>& direction) const override {
        record("unprojectPixel", pixel);
        return unprojection({pixel[0] / place.width, pixel[1] / place.height}, direction);
    }
    bool project(const Point<double, 3>& layoutPoint, Point<int, 2>& pixel) const override {
        record("project", layoutPoint);
        return projection(layoutPoint, pixel);
    }
    std::wstring firstName() const override {
        record("firstName");
        return kind;
    }
    std::wstring secondName() const override {
        record("secondName");
        return file;
    }
};

#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "support/Recorder.h"

#include <functional>

/// A screen geometry that returns what its members state.
class ScreenGeometryDouble : public ScreenGeometry, public Recorder {
public:
    explicit ScreenGeometryDouble(Trace* trace = nullptr, const std::string& name = "geometry")
        : Recorder(name, trace) {}

    bool valid = true;
    std::array<unsigned char, 20> hash{};
    IntersectionSet intersections;
    IntersectionSet extrapolatedIntersections;
    Point<double, 3> normal{0.0, 1.0, 0.0};
    std::vector<Point<double, 3>> channelBoundary;
    /// What `mapInto3D` does; at first (s, t) -> (s, 0, t) everywhere.
    std::function<bool(const Point<double, 2>&, Point<double, 3>&, bool)> mapping = [](const Point<double, 2>& st,
                                                                                       Point<double, 3>& out, bool) {
        out = {st[0], 0.0, st[1]};
        return true;
    };
    /// What `sampleHorizontally` does to the grid for a row at a height; at first nothing.
    std::function<void(double y, int row, Grid& grid)> sampling = [](double, int, Grid&) {};

    bool isValid() const override {
        record("isValid");
        return valid;
    }
    IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const override {
        record("intersect", from, to);
        return intersections;
    }
    Point<double, 3> getScreenNormal(const Point<double, 3>& point) const override {
        record("getScreenNormal", point);
        return normal;
    }
    bool mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const override {
        record("mapInto3D", st, extrapolate);
        return mapping(st, out, extrapolate);
    }
    std::array<unsigned char, 20> getUniqueDataHash() const override {
        record("getUniqueDataHash");
        return hash;
    }
    void updateGeometry(const IScreenConfig* screen) override { record("updateGeometry", screen); }
    void sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                            bool extrapolate) const override {
        record("sampleHorizontally", y, xMin, xMax, columns, row, extrapolate);
        sampling(y, row, grid);
    }
    IntersectionSet intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from, const Point<double, 3>& to,
                                                             int sign) const override {
        record("intersectExtrapolatedWithSpecifiedNormal", from, to, sign);
        return extrapolatedIntersections;
    }
    std::vector<Point<double, 3>> intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                           const std::vector<Ray>& centre) const override {
        record("intersectChannelBoundary", static_cast<int>(boundary.size()), static_cast<int>(centre.size()));
        return channelBoundary;
    }
};

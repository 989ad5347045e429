#pragma once

#include "DisplayFit/detail/ChannelModel.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A model of two residuals for each point that are linear in its unknowns: everything of it is what a test states.
class StatedModel : public Veltrani::DisplayFitDetail::ChannelModel {
public:
    using Spread = Veltrani::DisplayFitDetail::Spread;
    using Unknown = Veltrani::DisplayFitDetail::Unknown;

    /// A point that fits, until its members are changed.
    struct Stated {
        std::array<double, 2> pair{0, 0};  ///< residuals at the base
        std::vector<double> rows;          ///< two rows of derivatives; zeros where empty
        bool isMapped = true;
        std::optional<Spread> spread;
        std::optional<Point<double, 2>> pixels;
        std::optional<Point<double, 3>> lengths;
        std::optional<Point<double, 3>> landing;
        double distance = 1;
    };

    explicit StatedModel(std::size_t unknowns, std::size_t points = 0) : stated(points), all(unknowns) {
        for (std::size_t i = 0; i < unknowns; ++i) {
            all[i].words = std::string(1, static_cast<char>('a' + i));
        }
        for (std::size_t i = 0; i < points; ++i) {
            given.picture.push_back({0, 0});
            given.world.push_back({0, 0, 0});
            given.given.push_back(i);
        }
    }

    StatedModel(const StatedModel& other)
        : ChannelModel(),
          stated(other.stated),
          all(other.all),
          given(other.given),
          base(other.base),
          width(other.width),
          reversed(other.reversed),
          rowsOfPlace(other.rowsOfPlace) {}

    StatedModel& operator=(const StatedModel& other) {
        stated = other.stated;
        all = other.all;
        given = other.given;
        base = other.base;
        width = other.width;
        reversed = other.reversed;
        rowsOfPlace = other.rowsOfPlace;
        return *this;
    }
    ~StatedModel() override = default;

    std::vector<Stated> stated;
    std::vector<Unknown> all;
    Veltrani::DisplayFitDetail::FitPoints given;
    std::vector<double> base = std::vector<double>(all.size());
    double width = 1000;
    Point<int, 2> reversed{0, 0};
    std::function<bool(const Point<double, 2>&, double, double*)> rowsOfPlace;

    [[nodiscard]] const std::vector<Unknown>& unknowns() const override { return all; }
    [[nodiscard]] const Veltrani::DisplayFitDetail::FitPoints& points() const override { return given; }
    void evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                  bool* isMapped) const override {
        for (std::size_t i = 0; i < count; ++i) {
            const Stated& of = stated[first + i];
            isMapped[i] = of.isMapped;
            for (std::size_t r = 0; r < 2; ++r) {
                double& residual = residuals[2 * i + r];
                residual = of.isMapped ? of.pair[r] : 0;
                for (std::size_t k = 0; k < all.size(); ++k) {
                    const double by = of.rows.empty() || !of.isMapped ? 0 : of.rows[r * all.size() + k];
                    residual += by * (base[k] + step[k]);
                    if (jacobian != nullptr) {
                        jacobian[(2 * i + r) * all.size() + k] = by;
                    }
                }
            }
        }
    }
    bool spreadOf(std::size_t point, Spread& spread) const override {
        spread = stated[point].spread.value_or(Spread{});
        return stated[point].spread.has_value();
    }
    void move(const double* step) override {
        for (std::size_t k = 0; k < base.size(); ++k) {
            base[k] += step[k];
        }
    }
    void write(const double* /*step*/, Veltrani::DisplayFit::ChannelValues& /*values*/) const override {}
    bool missInPicture(std::size_t point, Point<double, 2>& pixels) const override {
        pixels = stated[point].pixels.value_or(pixels);
        return stated[point].pixels.has_value();
    }
    bool missOnScreen(std::size_t point, Point<double, 3>& lengths) const override {
        lengths = stated[point].lengths.value_or(lengths);
        return stated[point].lengths.has_value();
    }
    bool landing(std::size_t point, Point<double, 3>& place) const override {
        place = stated[point].landing.value_or(place);
        return stated[point].landing.has_value();
    }
    bool rowsAt(const Point<double, 2>& picture, double distance, double* rows) const override {
        return rowsOfPlace(picture, distance, rows);
    }
    [[nodiscard]] double distanceOf(std::size_t point) const override { return stated[point].distance; }
    [[nodiscard]] double extent() const override { return width; }
    [[nodiscard]] Point<int, 2> isReversed() const override { return reversed; }
};

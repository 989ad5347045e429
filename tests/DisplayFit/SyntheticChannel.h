#pragma once

#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/ChannelValues.h"
#include "DisplayFit/MeasuredPoint.h"
#include "support/TemporaryFolder.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// One projector that stands by itself, measured at points in general position: its truth is what the projection model
/// of the product makes of it.
class SyntheticChannel {
public:
    /// @param model "Rectilinear", "Equidistant", "BrownConrady" or "Fisheye"
    /// @param coefficients of the last two
    SyntheticChannel(const std::string& model, const std::vector<double>& coefficients, unsigned seed = 1);

    /// A display with this projector alone, on no screen.
    [[nodiscard]] std::unique_ptr<XMLConfigFile> config(const Veltrani::DisplayFit::ChannelValues& values,
                                                        const std::string& name) const;
    [[nodiscard]] const Veltrani::DisplayFit::ChannelValues& truth() const { return m_truth; }
    void setTruth(const Veltrani::DisplayFit::ChannelValues& values) { m_truth = values; }
    /// Off by 5 degrees, 0.3 units, and a tenth of the frustum or the focal lengths, without distortion.
    [[nodiscard]] Veltrani::DisplayFit::ChannelValues disturbed() const;

    /// Points of the picture, at 2 to 6 units from the projector.
    [[nodiscard]] std::vector<Veltrani::DisplayFit::MeasuredPoint> measured(std::size_t count) const;
    /// The same with noise of a deviation, native units, which is stated.
    [[nodiscard]] static std::vector<Veltrani::DisplayFit::MeasuredPoint> noisy(
        std::vector<Veltrani::DisplayFit::MeasuredPoint> points, double deviation, unsigned seed);
    /// The same with noise in the picture, which is not stated.
    [[nodiscard]] static std::vector<Veltrani::DisplayFit::MeasuredPoint> noisyInPicture(
        std::vector<Veltrani::DisplayFit::MeasuredPoint> points, double pixels, unsigned seed);

private:
    std::string m_model;
    unsigned m_seed;
    Veltrani::DisplayFit::ChannelValues m_truth;
    std::unique_ptr<TemporaryFolder> m_folder;
};

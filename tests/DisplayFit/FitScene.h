#pragma once

#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/MeasuredPoint.h"
#include "support/TemporaryFolder.h"

#include <memory>
#include <numbers>
#include <string>
#include <vector>

inline constexpr double DEGREE = std::numbers::pi / 180;

/// A display whose truth is known: what is measured of it, copies that are wrong, and what a fit makes of them.
class FitScene {
public:
    /// Loads the display and its screens.
    explicit FitScene(const std::string& file);
    /// "dome" and so on.
    [[nodiscard]] static FitScene ofExample(const std::string& name);
    ~FitScene();
    FitScene(FitScene&&) noexcept = default;

    [[nodiscard]] XMLConfigFile& truth() { return *m_truth; }

    /// What is measured without noise: the targets of a grid in every picture, placed by the display itself.
    [[nodiscard]] std::vector<Veltrani::DisplayFit::MeasuredPoint> measured(int columns = 14, int rows = 10);

    /// A copy whose projectors are off by 5 degrees, 0.3 units and a tenth of their frustum, areas by 0.05. Lenses are
    /// files of the folder.
    [[nodiscard]] std::unique_ptr<XMLConfigFile> disturbed();

    /// Writes what was found into a copy; lenses go into files of the folder.
    void apply(const Veltrani::DisplayFit::DisplayFitResult& result, XMLConfigFile& config) const;
    static void apply(const Veltrani::DisplayFit::ChannelValues& values, ProjectorConfig& projector,
                      const std::string& lensFile);

    /// The largest distance between places of the picture as two displays map them, as a part of the screen's
    /// diagonal.
    [[nodiscard]] double largestShift(XMLConfigFile& other);

    [[nodiscard]] const TemporaryFolder& folder() const { return *m_folder; }

private:
    std::string m_file;
    std::unique_ptr<XMLConfigFile> m_truth;
    std::unique_ptr<TemporaryFolder> m_folder;
};

/// The examples that can be solved, for parameterised tests.
[[nodiscard]] std::vector<std::string> solvedExamples();
/// The name that such a test has for an example.
[[nodiscard]] std::string testNameOf(std::string example);

/// The values of a channel.
[[nodiscard]] Veltrani::DisplayFit::ChannelValues valuesOf(const XMLConfigFile& config, std::size_t channel);

/// A calibration file of a lens.
[[nodiscard]] std::string lensFile(const Veltrani::LensNumbers& lens);

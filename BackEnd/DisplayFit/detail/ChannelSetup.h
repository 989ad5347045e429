#pragma once

#include "DisplayFit/ChannelValues.h"
#include "DisplayFit/FitOptions.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/PictureModel.h"
#include "ScreenManager/DisplayKinds.h"

#include <memory>
#include <optional>
#include <string>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DisplayFitDetail {

/// What is fitted of one channel, by the kind of its display.
class ChannelSetup {
public:
    /// Reads the channel, and its lens file. Throws what reading the lens throws.
    ChannelSetup(const XMLConfigManager& config, const DisplayKind& kind, const ProjectorConfig& projector);

    [[nodiscard]] const DisplayFit::ChannelValues& values() const { return m_values; }
    /// The groups that the kind has, and those that are solved unless others are wanted.
    [[nodiscard]] const DisplayFit::SolvedGroups& groups() const { return m_groups; }
    /// Why the channel cannot be solved, and the remedy; nothing where it can.
    [[nodiscard]] const std::optional<DisplayFit::FitFinding>& refusal() const { return m_refusal; }
    /// True for a projector or an eye that shows a picture without a mirror.
    [[nodiscard]] bool isPicture() const;

    /// True for a lens of equal angles, of which a shift to the side is the same as a turn: one of them is held.
    [[nodiscard]] bool shiftIsATurn() const { return m_lens == LensFormula::Kind::EQUIDISTANT; }
    /// Size of the picture; 1 x 1 where it is not configured.
    [[nodiscard]] Point<double, 2> pixels() const;
    [[nodiscard]] PictureView view() const;
    /// @param points must outlive the model
    [[nodiscard]] std::unique_ptr<ChannelModel> make(const FitPoints& points, const PictureModel::Held& held) const;

    /// The numbers of the groups that the kind has, in a fixed order: what a report lists.
    [[nodiscard]] std::vector<DisplayFit::FittedValue> list(const DisplayFit::ChannelValues& values) const;
    /// Which of these are solved.
    [[nodiscard]] std::vector<bool> solved(const PictureModel::Held& held) const;

private:
    void readLens(const ProjectorConfig& projector);
    void refuse(const std::string& text, const std::string& remedy);
    void checkValues();

    const XMLConfigManager& m_config;
    const DisplayKind& m_kind;
    DisplayFit::ChannelValues m_values;
    DisplayFit::SolvedGroups m_groups;
    LensFormula::Kind m_lens = LensFormula::Kind::RECTILINEAR;
    Point<int, 2> m_pixels;
    std::optional<DisplayFit::FitFinding> m_refusal;
};

}  // namespace Veltrani::DisplayFitDetail

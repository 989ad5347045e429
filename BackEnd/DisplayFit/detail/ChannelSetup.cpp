#include "DisplayFit/detail/ChannelSetup.h"

#include "Common/Finite.h"
#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayFit/detail/AreaModel.h"
#include "DisplayFit/detail/MirrorModel.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelValues;
using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using DisplayFit::FittedValue;
using DisplayFit::SolvedGroups;
using Quantity = FittedValue::Quantity;
using Source = DisplayKind::Source;

SolvedGroups groupsOf(Source source) {
    SolvedGroups groups;
    switch (source) {
        case Source::SCREEN_AREA:
            groups.area = true;
            break;
        case Source::FRUSTUM:
        case Source::FRUSTUM_AND_MIRROR:
            groups.orientation = groups.frustum = true;
            break;
        case Source::MODEL_OR_FRUSTUM:
            groups.position = groups.orientation = groups.frustum = true;
            break;
        case Source::MAP_FILE:
            break;
    }
    return groups;
}

}  // namespace

ChannelSetup::ChannelSetup(const XMLConfigManager& config, const DisplayKind& kind, const ProjectorConfig& projector)
    : m_config(config),
      m_kind(kind),
      m_values(ChannelValues::of(projector)),
      m_groups(groupsOf(kind.source)),
      m_pixels{projector.getWidth(), projector.getHeight()} {
    if (kind.source == Source::MAP_FILE) {
        refuse(
            "a channel with a map file is not fitted yet: moving the many nodes of the file to measured points comes "
            "in a "
            "later version",
            "until then make a new map file from the measured points");
        return;
    }
    if (kind.source == Source::MODEL_OR_FRUSTUM) {
        readLens(projector);
    }
    if (!m_refusal) {
        checkValues();
    }
}

void ChannelSetup::refuse(const std::string& text, const std::string& remedy) {
    m_refusal = FitFinding{FitFinding::Kind::KIND_NOT_SOLVED, FitOutcome::UNUSABLE, text, remedy};
}

void ChannelSetup::readLens(const ProjectorConfig& projector) {
    const std::wstring name = projector.getProjectionModelName();
    if (name.empty() || name == L"Rectilinear") {
        return;
    }
    if (name == L"Equidistant") {
        m_lens = LensFormula::Kind::EQUIDISTANT;
        return;
    }
    m_values.lens = LensNumbers::of(name);
    if (!m_values.lens) {
        refuse("a lens of the kind " + Veltrani::toUtf8(name) + " is not solved", "name one of a calibration");
        return;
    }
    m_groups.distortion = true;
}

void ChannelSetup::checkValues() {
    const auto& area = m_values.area;
    const auto& frustum = m_values.frustum;
    if (m_groups.area) {
        const auto screen = ScreenManager::getInstance()->getScreenGeometry();
        const std::array bounds{area.left, area.right, area.bottom, area.top};
        for (const double bound : bounds) {
            if (bound == ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED || !std::isfinite(bound)) {
                return refuse("the area on the screen is not complete", "state its four bounds roughly");
            }
        }
        if (area.left == area.right || area.bottom == area.top) {
            return refuse("the area on the screen has no extent", "state its four bounds roughly");
        }
        if (!screen || !screen->isParameterised()) {
            return refuse("the screen has no 2D coordinates, in which the area could be found",
                          "give the mesh of the screen texture coordinates");
        }
        return;
    }
    if (!isFinite(m_values.position) || !isFinite(m_values.orientation)) {
        return refuse("position and orientation are not finite", "state them roughly");
    }
    if (!m_values.lens) {
        const auto isAhead = [](double angle) { return std::abs(angle) < std::numbers::pi / 2; };
        if (!isAhead(frustum.left) || !isAhead(frustum.right) || !isAhead(frustum.bottom) || !isAhead(frustum.top)) {
            return refuse("an edge of the frustum is 90 degrees or more to the side", "state the frustum roughly");
        }
        if (frustum.left == frustum.right || frustum.bottom == frustum.top) {
            return refuse("the frustum spans nothing", "state its four angles roughly");
        }
    }
}

bool ChannelSetup::isPicture() const {
    return m_kind.source == Source::FRUSTUM || m_kind.source == Source::MODEL_OR_FRUSTUM;
}

Point<double, 2> ChannelSetup::pixels() const {
    return {std::max(m_pixels[0], 1), std::max(m_pixels[1], 1)};
}

PictureView ChannelSetup::view() const {
    PictureView view = PictureView::of(m_values, m_lens, m_pixels);
    if (m_kind.source != Source::MODEL_OR_FRUSTUM) {
        view.position = m_config.getTargetLocatorConfig()->getTargetPosition();
    }
    return view;
}

std::unique_ptr<ChannelModel> ChannelSetup::make(const FitPoints& points, const PictureModel::Held& held) const {
    if (m_kind.source == Source::SCREEN_AREA) {
        return std::make_unique<AreaModel>(points, m_values.area, m_pixels);
    }
    if (m_kind.source != Source::FRUSTUM_AND_MIRROR) {
        return std::make_unique<PictureModel>(points, view(), held);
    }
    const TargetLocatorConfig& targetData = *m_config.getTargetLocatorConfig();
    const auto& frustum = m_values.frustum;
    const auto& angles = m_values.orientation;
    const CollimatedTargetLocatorParams camera(
        targetData.getTargetPosition(), frustum.left, frustum.right, frustum.bottom, frustum.top, angles[0], angles[1],
        angles[2], targetData.getMirrorOrientation(), targetData.getMirrorPosition(), targetData.getMirrorRadius(),
        targetData.getPitchTable(), targetData.getYawTable());
    return std::make_unique<MirrorModel>(points, view(), held, camera);
}

std::vector<FittedValue> ChannelSetup::list(const ChannelValues& values) const {
    std::vector<FittedValue> list;
    const auto add = [&list](std::string name, Quantity quantity, double value) {
        list.push_back({std::move(name), quantity, value, value, std::nullopt});
    };
    if (m_groups.position) {
        add("position x", Quantity::LENGTH, values.position[0]);
        add("position y", Quantity::LENGTH, values.position[1]);
        add("position z", Quantity::LENGTH, values.position[2]);
    }
    if (m_groups.orientation) {
        add("orientation z", Quantity::ANGLE, values.orientation[0]);
        add("orientation x", Quantity::ANGLE, values.orientation[1]);
        add("orientation y", Quantity::ANGLE, values.orientation[2]);
    }
    if (values.lens) {
        static const std::array BROWN{"k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6", "s1", "s2", "s3", "s4"};
        const bool isFisheye = values.lens->kind == LensNumbers::Kind::FISHEYE;
        add("fx", Quantity::PIXELS, values.lens->fx);
        add("fy", Quantity::PIXELS, values.lens->fy);
        add("cx", Quantity::PIXELS, values.lens->cx);
        add("cy", Quantity::PIXELS, values.lens->cy);
        for (std::size_t i = 0; i < values.lens->distortion.size(); ++i) {
            add(isFisheye ? "k" + std::to_string(i + 1) : BROWN[i], Quantity::NUMBER, values.lens->distortion[i]);
        }
    } else if (m_groups.frustum) {
        add("frustum left", Quantity::ANGLE, values.frustum.left);
        add("frustum right", Quantity::ANGLE, values.frustum.right);
        add("frustum bottom", Quantity::ANGLE, values.frustum.bottom);
        add("frustum top", Quantity::ANGLE, values.frustum.top);
    }
    if (m_groups.area) {
        add("area left", Quantity::NUMBER, values.area.left);
        add("area right", Quantity::NUMBER, values.area.right);
        add("area bottom", Quantity::NUMBER, values.area.bottom);
        add("area top", Quantity::NUMBER, values.area.top);
    }
    return list;
}

std::vector<bool> ChannelSetup::solved(const PictureModel::Held& held) const {
    std::vector<bool> solved;
    for (const FittedValue& value : list(m_values)) {
        const std::string group = value.name.substr(0, value.name.find(' '));
        const bool isCoefficient = group.size() == 2 && (group[0] == 'k' || group[0] == 'p');
        solved.push_back(group == "position"      ? held.solved.position
                         : group == "orientation" ? held.solved.orientation
                         : group == "area"        ? held.solved.area
                         : isCoefficient          ? held.solved.distortion
                         : group[0] == 's'        ? false
                         : group == "cx"          ? held.solved.frustum && !held.horizontalShift
                                                  : held.solved.frustum);
    }
    return solved;
}

}  // namespace Veltrani::DisplayFitDetail

#include "FitScene.h"

#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "KelvoControl/LensNumbers.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/TestPaths.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace {

using namespace Veltrani::DisplayFit;
using Veltrani::LensNumbers;
using Veltrani::DisplayReport::TargetPlacer;
using Veltrani::DisplayReport::TargetSurvey;

/// A tenth wider than it is, in tangents.
double wider(double angle) {
    return std::atan(1.1 * std::tan(angle));
}

TargetSurvey targetsOf(XMLConfigFile& config, int columns, int rows) {
    TargetLocatorManager::getInstance()->screenDefinitionChanged();
    return TargetPlacer({columns, rows, 4}).place(config);
}

}  // namespace

FitScene::FitScene(const std::string& file)
    : m_file(file), m_truth(XMLConfigFile::load(file)), m_folder(std::make_unique<TemporaryFolder>()) {
    if (!Veltrani::DisplayReport::ScreenLoader::load(*m_truth).empty()) {
        throw std::runtime_error("no screen: " + file);
    }
}

FitScene FitScene::ofExample(const std::string& name) {
    return FitScene(sourceFolder() + "/examples/" + name + "/display.xml");
}

FitScene::~FitScene() {
    if (m_truth) {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }
}

std::vector<MeasuredPoint> FitScene::measured(int columns, int rows) {
    std::vector<MeasuredPoint> points;
    const TargetSurvey survey = targetsOf(*m_truth, columns, rows);
    for (std::size_t channel = 0; channel < survey.channels.size(); ++channel) {
        for (const auto& target : survey.channels[channel].grid) {
            MeasuredPoint point;
            point.channel = channel;
            point.picture = target.picture;
            point.world = target.point;
            points.push_back(point);
        }
    }
    return points;
}

void FitScene::apply(const ChannelValues& values, ProjectorConfig& projector, const std::string& lensFile) {
    projector.setPosition(values.position);
    projector.setOrientationZ(values.orientation[0]);
    projector.setOrientationX(values.orientation[1]);
    projector.setOrientationY(values.orientation[2]);
    projector.setFrustumLeft(values.frustum.left);
    projector.setFrustumRight(values.frustum.right);
    projector.setFrustumBottom(values.frustum.bottom);
    projector.setFrustumTop(values.frustum.top);
    if (values.area.left != ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED) {
        projector.setScreenLeft(values.area.left);
        projector.setScreenRight(values.area.right);
        projector.setScreenBottom(values.area.bottom);
        projector.setScreenTop(values.area.top);
    }
    if (values.lens) {
        const std::wstring name = projector.getProjectionModelName();
        projector.setProjectionModelName(name.substr(0, name.find(L':') + 1) + Veltrani::fromUtf8(lensFile));
    }
}

std::unique_ptr<XMLConfigFile> FitScene::disturbed() {
    std::unique_ptr<XMLConfigFile> copy = XMLConfigFile::load(m_file);
    const auto ids = copy->getProjectorConfigIds();
    for (std::size_t channel = 0; channel < ids.size(); ++channel) {
        ProjectorConfig& projector = *copy->getProjectorConfig(ids[channel]);
        ChannelValues values = valuesOf(*copy, channel);
        if (values.lens) {
            values.lens->fx *= 1.1;
            values.lens->fy *= 1.1;
            values.lens->cx += 30;
            values.lens->cy -= 20;
            std::fill(values.lens->distortion.begin(), values.lens->distortion.end(), 0.0);
        }
        values.position += Point<double, 3>{0.2, -0.2, 0.1};
        values.orientation += Point<double, 3>{3 * DEGREE, -3 * DEGREE, 2.6 * DEGREE};
        values.frustum = {wider(values.frustum.left), wider(values.frustum.right), wider(values.frustum.bottom),
                          wider(values.frustum.top)};
        values.area = {values.area.left - 0.05, values.area.right + 0.04, values.area.bottom + 0.03,
                       values.area.top - 0.05};
        if (projector.getScreenLeft() == ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED) {
            values.area.left = ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED;
        }
        const std::string lens =
            values.lens ? m_folder->write("disturbed-" + std::to_string(channel) + ".yml", lensFile(*values.lens)) : "";
        apply(values, projector, lens);
    }
    return copy;
}

void FitScene::apply(const DisplayFitResult& result, XMLConfigFile& config) const {
    const auto ids = config.getProjectorConfigIds();
    for (const ChannelFit& fit : result.channels) {
        const std::string lens = fit.after.lens ? m_folder->write("fitted-" + std::to_string(fit.channel) + ".yml",
                                                                  lensFile(*fit.after.lens))
                                                : "";
        apply(fit.after, *config.getProjectorConfig(ids[fit.channel]), lens);
    }
}

double FitScene::largestShift(XMLConfigFile& other) {
    const TargetSurvey mine = targetsOf(*m_truth, 24, 15);
    const TargetSurvey theirs = targetsOf(other, 24, 15);
    const auto extent = mine.extent();
    const double diagonal = norm(extent.size());
    double largest = 0;
    for (std::size_t channel = 0; channel < mine.channels.size(); ++channel) {
        const auto& here = mine.channels[channel].grid;
        const auto& there = theirs.channels[channel].grid;
        for (const auto& target : here) {
            const auto same = std::find_if(there.begin(), there.end(), [&](const auto& candidate) {
                return candidate.column == target.column && candidate.row == target.row;
            });
            // A target on the edge of the screen may fall off by rounding.
            if (same != there.end()) {
                largest = std::max(largest, norm(same->point - target.point) / diagonal);
            }
        }
        if (there.size() + 4 < here.size()) {
            return 1;
        }
    }
    return largest;
}

std::vector<std::string> solvedExamples() {
    return {"planar-wall",     "curved-wall",    "cylinder",   "dome",          "cockpit",
            "closed-cylinder", "spherical-dome", "collimated", "lens-cylinder", "mesh-rays"};
}

std::string testNameOf(std::string example) {
    std::replace(example.begin(), example.end(), '-', '_');
    return example;
}

ChannelValues valuesOf(const XMLConfigFile& config, std::size_t channel) {
    const ProjectorConfig& projector = *config.getProjectorConfig(config.getProjectorConfigIds()[channel]);
    ChannelValues values = ChannelValues::of(projector);
    if (!projector.getProjectionModelName().empty()) {
        values.lens = LensNumbers::of(projector.getProjectionModelName());
    }
    return values;
}

std::string lensFile(const LensNumbers& lens) {
    std::ostringstream text;
    text.precision(17);
    text << "%YAML:1.0\n---\nimage_width: " << lens.imageWidth << "\nimage_height: " << lens.imageHeight
         << "\ncamera_matrix: !!opencv-matrix\n   rows: 3\n   cols: 3\n   dt: d\n   data: [ " << lens.fx << ", 0., "
         << lens.cx << ", 0., " << lens.fy << ", " << lens.cy
         << ", 0., 0., 1. ]\ndistortion_coefficients: !!opencv-matrix\n   rows: " << lens.distortion.size()
         << "\n   cols: 1\n   dt: d\n   data: [ ";
    for (std::size_t i = 0; i < lens.distortion.size(); ++i) {
        text << (i == 0 ? "" : ", ") << lens.distortion[i];
    }
    text << " ]\n";
    return text.str();
}

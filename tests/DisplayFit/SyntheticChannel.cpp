#include "SyntheticChannel.h"

#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "FitScene.h"
#include "KelvoControl/Blend.h"
#include "support/Displays.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <sstream>
#include <stdexcept>

namespace {

using namespace Veltrani::DisplayFit;
using Veltrani::LensNumbers;

}  // namespace

SyntheticChannel::SyntheticChannel(const std::string& model, const std::vector<double>& coefficients, unsigned seed)
    : m_model(model), m_seed(seed), m_folder(std::make_unique<TemporaryFolder>()) {
    m_truth.position = {0.4, -1.1, 1.9};
    m_truth.orientation = {25 * DEGREE, -8 * DEGREE, 4 * DEGREE};
    m_truth.frustum = {-27 * DEGREE, 24 * DEGREE, -14 * DEGREE, 19 * DEGREE};
    if (model == "BrownConrady" || model == "Fisheye") {
        m_truth.lens = LensNumbers{model == "Fisheye" ? LensNumbers::Kind::FISHEYE : LensNumbers::Kind::BROWN_CONRADY,
                                   1920,
                                   1200,
                                   2100.5,
                                   2105.25,
                                   981.125,
                                   583.75,
                                   coefficients};
    }
}

std::unique_ptr<XMLConfigFile> SyntheticChannel::config(const ChannelValues& values, const std::string& name) const {
    std::string model;
    if (values.lens) {
        model = "<ProjectionModel name='" + m_model + "' file='" + m_folder->file("first.yml") + "'/>";
        m_folder->write("first.yml", lensFile(*values.lens));
    } else if (m_model != "Rectilinear") {
        model = "<ProjectionModel name='" + m_model + "'/>";
    }
    auto config = displays::parsed(displays::SPHERE, displays::projector("A", model), "<TargetData type='3D'/>");
    FitScene::apply(values, *config->getProjectorConfig(L"A"),
                    values.lens ? m_folder->write(name + ".yml", lensFile(*values.lens)) : "");
    return config;
}

ChannelValues SyntheticChannel::disturbed() const {
    ChannelValues values = m_truth;
    values.position += Point<double, 3>{0.2, -0.2, 0.1};
    values.orientation += Point<double, 3>{3 * DEGREE, -3 * DEGREE, 2.6 * DEGREE};
    const auto wider = [](double angle) { return std::atan(1.1 * std::tan(angle)); };
    values.frustum = {wider(values.frustum.left), wider(values.frustum.right), wider(values.frustum.bottom),
                      wider(values.frustum.top)};
    if (m_model == "Equidistant") {
        values.frustum = {1.1 * m_truth.frustum.left, 1.1 * m_truth.frustum.right, 1.1 * m_truth.frustum.bottom,
                          1.1 * m_truth.frustum.top};
    }
    if (values.lens) {
        values.lens->fx *= 1.1;
        values.lens->fy *= 1.1;
        values.lens->cx += 40;
        values.lens->cy -= 25;
        // All that are solved; the terms of thin prisms are held.
        const auto solved = static_cast<std::ptrdiff_t>(std::min<std::size_t>(values.lens->distortion.size(), 8));
        std::fill(values.lens->distortion.begin(), values.lens->distortion.begin() + solved, 0.0);
    }
    return values;
}

std::vector<MeasuredPoint> SyntheticChannel::measured(std::size_t count) const {
    const auto display = config(m_truth, "truth");
    ProjectorConfig& projector = *display->getProjectorConfig(L"A");
    const std::wstring name = m_truth.lens ? projector.getProjectionModelName() : Veltrani::fromUtf8(m_model);
    const auto model = Blend::createProjectionModel(Viewport::of(projector, name), name, L"");
    std::mt19937 random(m_seed);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    std::vector<MeasuredPoint> points;
    while (points.size() < count) {
        MeasuredPoint point;
        point.picture = {part(random), part(random)};
        const double distance = 2 + 4 * part(random);
        Point<double, 3> direction;
        if (!model->unproject(point.picture, direction)) {
            throw std::runtime_error("the lens has no ray for a point of its picture");
        }
        point.world = m_truth.position + direction * (distance / norm(direction));
        point.row = points.size() + 2;
        points.push_back(point);
    }
    return points;
}

std::vector<MeasuredPoint> SyntheticChannel::noisy(std::vector<MeasuredPoint> points, double deviation, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    for (MeasuredPoint& point : points) {
        point.world += deviation * Point<double, 3>{normal(random), normal(random), normal(random)};
        Matrix<double, 3> covariance;
        for (std::size_t i = 0; i < 3; ++i) {
            covariance(i, i) = deviation * deviation;
        }
        point.covariance = covariance;
    }
    return points;
}

std::vector<MeasuredPoint> SyntheticChannel::noisyInPicture(std::vector<MeasuredPoint> points, double pixels,
                                                            unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    for (MeasuredPoint& point : points) {
        point.picture += Point<double, 2>{pixels * normal(random) / 1920, pixels * normal(random) / 1200};
    }
    return points;
}

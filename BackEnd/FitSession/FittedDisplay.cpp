#include "FitSession/FittedDisplay.h"

#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/FitResult.h"
#include "DisplayReport/basics/TextTable.h"

namespace Veltrani::FitSession {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::ChannelValues;

/// Long enough to be different, short enough for every file system.
constexpr std::size_t LONGEST_ID_IN_NAME = 40;

/// An id as a part of a file name: letters and digits of every alphabet stay.
std::string fileNamePart(const std::string& id) {
    std::string part = DisplayReport::shortened(id, LONGEST_ID_IN_NAME);
    for (char& character : part) {
        const bool isPlain = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
                             (character >= '0' && character <= '9') || character == '-' || character == '_' ||
                             static_cast<unsigned char>(character) >= 0x80;
        character = isPlain ? character : '_';
    }
    return part;
}

void takeNumbers(const ChannelFit& fit, ProjectorConfig& projector) {
    const ChannelValues& values = fit.after;
    if (fit.solved.position) {
        projector.setPosition(values.position);
    }
    if (fit.solved.orientation) {
        projector.setOrientationZ(values.orientation[0]);
        projector.setOrientationX(values.orientation[1]);
        projector.setOrientationY(values.orientation[2]);
    }
    if (fit.solved.frustum && !values.lens) {
        projector.setFrustumLeft(values.frustum.left);
        projector.setFrustumRight(values.frustum.right);
        projector.setFrustumBottom(values.frustum.bottom);
        projector.setFrustumTop(values.frustum.top);
    }
    if (fit.solved.area) {
        projector.setScreenLeft(values.area.left);
        projector.setScreenRight(values.area.right);
        projector.setScreenBottom(values.area.bottom);
        projector.setScreenTop(values.area.top);
    }
}

}  // namespace

FittedDisplay::FittedDisplay(XMLConfigFile& config, const std::string& utf8Path, const std::string& utf8Source)
    : m_moved(utf8Path.empty() ? nullptr : config.movedTo(utf8Path)),
      m_config(m_moved ? *m_moved : config),
      m_path(utf8Path.empty() ? utf8Source : utf8Path),
      m_before(m_config.text()) {}

FittedDisplay::~FittedDisplay() = default;

void FittedDisplay::take(const ChannelFit& fit) {
    ProjectorConfig* const projector = m_config.getProjectorConfig(fromUtf8(fit.projectorId));
    if (!fit.isSolved || projector == nullptr) {
        return;
    }
    takeNumbers(fit, *projector);
    const bool isSolved = fit.solved.frustum || fit.solved.distortion;
    if (isSolved && fit.after.lens && fit.after.lens != fit.before.lens) {
        m_lensFiles.emplace_back(stemFor(fit.projectorId), *fit.after.lens);
        const std::wstring model = projector->getProjectionModelName();
        projector->setProjectionModelName(model.substr(0, model.find(L':')) + L":" +
                                          fromUtf8OrBytes(m_lensFiles.back().name()));
    }
}

bool FittedDisplay::isChanged() const {
    return m_config.text() != m_before;
}

void FittedDisplay::save() {
    m_config.save(m_path);
    keep();
}

void FittedDisplay::keep() {
    for (LensFile& file : m_lensFiles) {
        file.keep();
    }
}

std::vector<std::string> FittedDisplay::lensFiles() const {
    std::vector<std::string> paths;
    for (const LensFile& file : m_lensFiles) {
        paths.push_back(file.path());
    }
    return paths;
}

std::string FittedDisplay::stemFor(const std::string& projectorId) const {
    const std::size_t name = m_path.rfind('/') + 1;
    const std::size_t dot = m_path.rfind('.');
    const bool hasEnding = dot != std::string::npos && dot > name;
    return m_path.substr(0, hasEnding ? dot : std::string::npos) + "-" + fileNamePart(projectorId);
}

}  // namespace Veltrani::FitSession

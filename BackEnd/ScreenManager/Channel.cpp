#include "ScreenManager/Channel.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "ScreenManager/TargetLocator.h"

#include <utility>

Channel::Channel() = default;

Channel::Channel(const std::wstring& name, ProjectorConfig* config, const std::wstring& projectorConfigId, int x, int y)
    : m_name(name), m_locationX(x), m_locationY(y), m_projectorConfigId(projectorConfigId), m_config(config) {}

Channel::~Channel() = default;

bool Channel::operator==(const Channel& other) const {
    return m_name == other.m_name && m_config == other.m_config && m_projectorConfigId == other.m_projectorConfigId &&
           m_locationX == other.m_locationX && m_locationY == other.m_locationY;
}

Channel::Id Channel::getChannelId() const {
    return Id(Veltrani::toUtf8(m_name));
}

Channel::ProjectorId Channel::getProjectorId() const {
    return ProjectorId(Veltrani::toUtf8(m_projectorConfigId));
}

// Passed by value, as the callers' interface has it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
bool Channel::includesProjector(ProjectorId projectorId) const {
    return projectorId == getProjectorId();
}

void Channel::getChannelLocation(int& x, int& y) const {
    x = m_locationX;
    y = m_locationY;
}

void Channel::setChannelLocation(int x, int y) {
    m_locationX = x;
    m_locationY = y;
}

void Channel::setName(const std::wstring& name) {
    if (m_config == nullptr) {
        throw VeltraniException(__FILE__, __LINE__, L"setName: channel \"" + m_name + L"\" has no configuration entry");
    }
    if (&name != &m_name) {
        m_name = name;
    }
    m_config->setName(m_name);
}

void Channel::setTargetLocator(std::shared_ptr<const TargetLocator> locator) {
    m_targetLocator = std::move(locator);
}

void Channel::projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                             std::map<Point<int, 2>, Point<double, 3>>& grid) const {
    if (!m_targetLocator) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"projectOnTargetLocationSurface: channel \"" + m_name + L"\" has no target locator");
    }
    m_targetLocator->projectOnTargetLocationSurface(uMin, uMax, vMin, vMax, columns, rows, grid);
}

std::vector<Point<double, 3>> Channel::projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const {
    if (!m_targetLocator) {
        return {};
    }
    return m_targetLocator->projectBoundaryOnTargetLocationSurface(samplesPerEdge);
}

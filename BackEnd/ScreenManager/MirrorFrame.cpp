#include "ScreenManager/MirrorFrame.h"

#include "Configuration/TargetLocatorConfig.h"

MirrorFrame::MirrorFrame(const Point<double, 3>& orientation, const Point<double, 3>& position)
    : m_world_from_mirror(Veltrani::rotationZXY(orientation[0], orientation[1], orientation[2])),
      m_position(position) {}

MirrorFrame::MirrorFrame(const TargetLocatorConfig& config)
    : MirrorFrame(config.getMirrorOrientation(), config.getMirrorPosition()) {}

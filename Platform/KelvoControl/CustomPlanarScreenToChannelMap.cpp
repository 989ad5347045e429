#include "KelvoControl/CustomPlanarScreenToChannelMap.h"

#include "KelvoControl/detail/WarpMesh.h"

#include <utility>

CustomPlanarScreenToChannelMap::CustomPlanarScreenToChannelMap(const std::wstring& filename,
                                                               std::shared_ptr<IScreenGeometry> screen)
    : m_mesh(filename.empty() ? nullptr : Veltrani::KelvoControlDetail::WarpMeshFile::read(filename)),
      m_screen(std::move(screen)) {}

CustomPlanarScreenToChannelMap CustomPlanarScreenToChannelMap::parse(std::string_view text, const std::string& document,
                                                                     std::shared_ptr<IScreenGeometry> screen) {
    CustomPlanarScreenToChannelMap map(std::wstring(), std::move(screen));
    map.m_mesh = Veltrani::KelvoControlDetail::WarpMeshFile::parse(text, document);
    return map;
}

bool CustomPlanarScreenToChannelMap::mapChannel2DToScreen2D(const Point<double, 2>& channel,
                                                            Point<double, 2>& out) const {
    return m_mesh != nullptr && m_mesh->toScreen(channel, out);
}

bool CustomPlanarScreenToChannelMap::mapScreen2DToChannel2D(const Point<double, 2>& screen,
                                                            Point<double, 2>& out) const {
    return m_mesh != nullptr && m_mesh->toPicture(screen, out);
}

Point<double, 2> CustomPlanarScreenToChannelMap::pictureSize() const {
    return m_mesh == nullptr ? Point<double, 2>() : m_mesh->pictureSize();
}

#pragma once

#include "Common/Point.h"
#include "Common/StrongId.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class ProjectorConfig;
class TargetLocator;

namespace Veltrani {

struct ChannelIdTag;
struct _projectorId;

}  // namespace Veltrani

/// One channel of the display: one projector as the configuration names it, its place in the layout of channels, and
/// the locator that places calibration targets for it.
///
/// A value: copies are independent, except that they share the locator and point to the same configuration entry. The
/// entry belongs to the configuration and must outlive every use of `setName`.
class Channel {
public:
    /// The name in UTF-8: channels of the same name have the same id, and a renamed channel has another one. It is
    /// empty for a name that is empty or cannot be converted.
    using Id = StrongId<std::string, Veltrani::ChannelIdTag>;
    /// The configuration id in UTF-8.
    using ProjectorId = StrongId<std::string, Veltrani::_projectorId>;

    /// @param config the projector's entry in the configuration; not owned
    /// @param projectorConfigId the id of that entry, which is the UID of the projector
    /// @param x, y the place in the layout of channels
    Channel(const std::wstring& name, ProjectorConfig* config, const std::wstring& projectorConfigId, int x, int y);

    Channel(const Channel&) = default;
    Channel(Channel&&) noexcept = default;
    Channel& operator=(const Channel&) = default;
    Channel& operator=(Channel&&) noexcept = default;
    ~Channel();

    /// Equal in everything but the locator, which is deliberately left out: attaching one does not make another channel
    /// of it.
    [[nodiscard]] bool operator==(const Channel& other) const;

    [[nodiscard]] const std::wstring& getName() const { return m_name; }
    [[nodiscard]] const std::wstring& getProjectorConfigId() const { return m_projectorConfigId; }
    [[nodiscard]] const ProjectorConfig* getConfig() const { return m_config; }
    [[nodiscard]] ProjectorConfig* getConfig() { return m_config; }
    [[nodiscard]] Id getChannelId() const;
    [[nodiscard]] ProjectorId getProjectorId() const;

    /// Returns whether the projector of this channel has that id; the name of the channel does not count.
    [[nodiscard]] bool includesProjector(ProjectorId projectorId) const;

    void getChannelLocation(int& x, int& y) const;
    void setChannelLocation(int x, int y);

    /// Renames the channel, then its configuration entry. Throws `VeltraniException` without an entry, and keeps the
    /// old name then. What the entry throws passes through, and the channel has the new name already.
    void setName(const std::wstring& name);

    void setTargetLocator(std::shared_ptr<const TargetLocator> locator);

    /// Places columns x rows targets over the rectangle [uMin, uMax] x [vMin, vMax] of the channel's normalised picture
    /// (see `TargetLocator`). Throws `VeltraniException` without a locator.
    /// @param grid receives the targets (world frame, native units) under (column, row)
    void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                        std::map<Point<int, 2>, Point<double, 3>>& grid) const;

    /// Returns the outline of the channel's area, `samplesPerEdge` samples on each edge (see `TargetLocator`). Empty
    /// without a locator.
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const;

protected:
    /// No name, no projector; for derived records that fill themselves.
    Channel();

private:
    std::wstring m_name;
    int m_locationX = -1;
    int m_locationY = -1;
    std::wstring m_projectorConfigId;
    ProjectorConfig* m_config = nullptr;
    std::shared_ptr<const TargetLocator> m_targetLocator;
};

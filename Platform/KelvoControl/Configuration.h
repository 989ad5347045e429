#pragma once

#include "KelvoControl/KelvoProjector.h"
#include "KelvoControl/KelvoProjectorUID.h"

#include <map>
#include <memory>

class XMLConfigManager;

namespace KelvoControl {

/// The table of the channel maps: what they know of each projector, under its configuration id.
///
/// Owns its entries and must outlive the layout maps that were built from it. Not copyable.
class Configuration {
public:
    /// An empty table.
    Configuration();

    /// One entry per projector of a display, read once: the frustum of its picture as seen from the screen's eye point
    /// (see `Frustum::of`), with the size of the picture in pixels, and its projection model:
    ///
    /// | Display                  | Model is named | Model                                    |
    /// |--------------------------|----------------|------------------------------------------|
    /// | projector-centric and 3D | yes            | that one                                 |
    /// | projector-centric and 3D | no             | `Rectilinear`, from the frustum          |
    /// | any other                | without a file | that one, though nothing there uses it   |
    /// | any other                | with a file    | none: the file is not read               |
    /// | any other                | no             | none                                     |
    ///
    /// Null gives an empty table, a display without a screen the origin as eye point; ids that have no record get no
    /// entry. What `Viewport::of`, `Blend::createProjectionModel` and the entry itself throw of the suite's exceptions
    /// is thrown on, its message preceded by the projector.
    explicit Configuration(const XMLConfigManager* config);

    ~Configuration();
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    /// Adds an entry and destroys one that the table holds under the id. Does nothing for null.
    void add(const KelvoProjectorUID& uid, std::unique_ptr<KelvoProjector> projector);

    /// Every entry under its id; never null.
    [[nodiscard]] const std::map<KelvoProjectorUID, KelvoProjector*>& getProjectors() const;

private:
    std::map<KelvoProjectorUID, std::unique_ptr<KelvoProjector>> m_owned;
    std::map<KelvoProjectorUID, KelvoProjector*> m_projectors;  ///< the same entries as callers see them
};

}  // namespace KelvoControl

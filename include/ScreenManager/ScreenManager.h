#pragma once

#include "Common/Point.h"
#include "Common/StrongId.h"
#include "ScreenManager/Screen.h"

#include <log4cxx/logger.h>

#include <map>
#include <memory>
#include <string>

class XMLConfigManager;
class ScreenGeometry;

/// Owns the one screen of the calibration set-up: builds it from the configuration and reports where its surface is.
///
/// The single instance appears with the first `getInstance` and goes with `deleteInstance`. A caller that changes the
/// screen also calls `TargetLocatorManager::screenDefinitionChanged`: no notification is sent from here. Not safe to
/// use from two threads at once.
class ScreenManager {
public:
    /// The three geometries of the screen, for callers that distinguish them.
    static constexpr int CONTENT_SCREEN = 0;
    static constexpr int MEASURED_SCREEN = 1;
    static constexpr int PCD_SCREEN = 2;

    /// A text for the messages of callers.
    static const std::wstring k_FAILED_TO_LOAD_SCREEN_FILE;
    static const std::wstring k_UNABLE_TO_LOAD;

    /// Returns the instance, made on the first call.
    static ScreenManager* getInstance();
    /// Clears the screen and destroys the instance; nothing when there is none.
    static void deleteInstance();

    ScreenManager(const ScreenManager&) = delete;
    ScreenManager& operator=(const ScreenManager&) = delete;

    /// Builds the content, the measured and the point cloud screen from the configuration. The content of another shape
    /// than a mesh is only rebuilt when its description has changed; the files are read at every call.
    ///
    /// The unit and the axes that the configuration states for the files count for a content mesh, and for the measured
    /// mesh and the cloud beside it. Beside another shape a measured mesh and a cloud are read with the scale and the
    /// axes that the screen has: 1, "Y" up and "Z" forward, unless the caller sets them before (`Screen::setScale` with
    /// `getScaleFromXml`, `Screen::setImportTransformParams`).
    ///
    /// Whatever is thrown (`VeltraniMissingFileException` for the files, see `Screen`; `VeltraniException` for an
    /// unknown shape and a file that cannot be archived; `ObjLoadException` for a faulty content mesh) is logged and
    /// thrown on. What was done before the fault stays.
    /// @param force rebuild what has not changed, too
    void setScreenGeometry(XMLConfigManager* config, bool force);

    /// Installs a ready-made content screen, unless the current one carries the same data. An empty one clears the
    /// content.
    void setScreenGeometry(std::shared_ptr<ScreenGeometry> geometry);

    /// Makes the content screen read its numbers from the configuration again; nothing when there is none.
    void updateScreenGeometry(XMLConfigManager* config);

    /// Returns the measured screen when there is one, else the content screen; may be empty.
    [[nodiscard]] std::shared_ptr<ScreenGeometry> getScreenGeometry();
    [[nodiscard]] std::shared_ptr<ScreenGeometry> getContentModelScreenGeometry();
    [[nodiscard]] std::shared_ptr<ScreenGeometry> getMeasuredScreenGeometry();

    /// Samples the surface over a rectangle of its 2D parameters, `columns` points in each of `rows` rows from yMin to
    /// yMax, which may run downwards. Without a screen: one warning, and `grid` stays as it is. Exceptions of the
    /// geometry pass through, with the rows before them in `grid`.
    /// @param grid receives the points (world frame, native units) under (column, row)
    /// @param extrapolate whether the surface is continued past its edges
    void getScreenMatrix(double xMin, double xMax, double yMin, double yMax, int columns, int rows,
                         std::map<Point<int, 2>, Point<double, 3>>& grid, bool extrapolate);

    [[nodiscard]] Screen& getScreen();
    /// There is one screen: the same whatever the id.
    [[nodiscard]] Screen& getScreen(StrongId<std::string, ScreenIdTag> id);
    void resetScreen();

    /// Files are no longer archived. Stays so for the life of the instance.
    void disableDiagnostics();

    /// Native units per unit of the screen's files; 1.0 unless the configuration gives a value above zero.
    [[nodiscard]] double getScaleFromXml(XMLConfigManager* config);
    /// Passes the scale to the screen, for the next files that are read; only when the content is a mesh.
    void setScaleFromXml(XMLConfigManager* config);
    /// Passes the axes of its files to the screen, for the next files that are read; only when the content is a mesh.
    void setOrientationXfFromXml(XMLConfigManager* config);

protected:
    ScreenManager();
    ~ScreenManager();

    /// Rebuilds the content screen when its description has changed or `force` is set; a mesh is read at every call.
    /// @return whether the content was rebuilt or read
    bool createScreenIfDifferent(XMLConfigManager* config, bool force);

private:
    friend struct ScreenManagerTestAccess;

    static ScreenManager* m_instance;
    static log4cxx::LoggerPtr log;

    void archive(const std::wstring& file) const;

    bool m_diagnosticsEnabled = true;
    Screen m_screen;
};

#pragma once

#include "Common/StrongId.h"

#include <log4cxx/logger.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>

namespace pcl {
template <class PointT>
class PointCloud;
struct PointXYZ;
}  // namespace pcl

class ScreenGeometry;
/// Types the ids of screens.
struct ScreenIdTag {};

// Held by value and never deleted through a pointer to a base, so the destructor is not virtual.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The physical screen: its content geometry (the shape as designed), optionally its measured geometry and a point
/// cloud of it.
///
/// Each of the three is filled by its loader or setter and emptied by its loader with an empty path. Copies share them.
/// The scale (native units per unit of the files, in single precision: 0.001 is off by 0.2 micrometres in 4 m) and the
/// two axes of the files act on what is loaded next; nothing that is loaded is rebuilt. Meshes stored by a loader are
/// valid, clouds stored by it are in the world frame and native units; the setters store what they are given.
///
/// The loaders throw `VeltraniMissingFileException` with a fixed text and the path; `Veltrani::causeOf` returns the
/// reason. Files must not be rewritten in place while they are read. Not safe to use from two threads at once.
class Screen {
public:
    /// Declared only: code that makes or reads a cloud includes `<pcl/point_cloud.h>` and `<pcl/point_types.h>`.
    using PointCloud = pcl::PointCloud<pcl::PointXYZ>;

    /// "Unknown Screen", whose cloud counts as changed now.
    Screen();
    /// A screen whose cloud has not changed yet (time point zero); the default constructor intentionally differs in
    /// this.
    explicit Screen(StrongId<std::string, ScreenIdTag> id);
    Screen(const Screen&) = default;
    Screen& operator=(const Screen&) = default;
    ~Screen();

    [[nodiscard]] virtual std::shared_ptr<ScreenGeometry> getContent() const;
    [[nodiscard]] virtual std::shared_ptr<ScreenGeometry> getMeasured() const;
    /// Returns the measured geometry when there is one, valid or not, else the content; may be empty.
    [[nodiscard]] virtual std::shared_ptr<ScreenGeometry> getPreferredScreen() const;
    [[nodiscard]] virtual std::shared_ptr<PointCloud> getModelPCD() const;
    virtual void setContent(std::shared_ptr<ScreenGeometry> content);
    virtual void setMeasured(std::shared_ptr<ScreenGeometry> measured);

    /// When the cloud last changed.
    [[nodiscard]] std::chrono::steady_clock::time_point getModelPCDTimestamp() const;
    [[nodiscard]] float getScale();
    /// Returns true once a content mesh has been read from a file, until `clearScreens`.
    [[nodiscard]] bool getScreenIsReal() const;

    /// Stored as given, not transformed.
    void setModelPCD(std::shared_ptr<PointCloud> cloud);
    void setScale(float scale);
    /// The axes of the files that point up and forward: "X", "-X", "Y", ...
    void setImportTransformParams(const std::wstring& param1, const std::wstring& param2);
    /// Back to "Y" and "Z"; the scale stays.
    void resetTransforms();

    /// Returns true when there is a content geometry; its own `isValid` is not called.
    [[nodiscard]] bool isValid() const;
    /// Returns true when there are a content and a measured geometry, and both are valid.
    [[nodiscard]] bool isDualScreen() const;

    /// Reads the content from an OBJ file; an empty path installs a default flat screen and returns false.
    ///
    /// Throws `VeltraniMissingFileException` for a file that is missing, is not an ".obj" (lower case), or has no face
    /// with an area, and when memory runs out; `ObjLoadException` for a faulty text. The content stays then.
    /// @param force replace a geometry that was read from the same bytes, too
    bool loadContent(const std::wstring& path, bool force);
    /// Reads the measured geometry from an OBJ file; an empty path removes it and returns false. Throws
    /// `VeltraniMissingFileException` for every fault; the geometry stays then.
    bool loadMeasured(const std::wstring& path, bool force);
    /// Reads the point cloud from a PCD file, again at every call; an empty path removes it and returns false.
    ///
    /// Throws `VeltraniMissingFileException` when the file cannot be read: missing, refused by `Veltrani::PcdCheck` or
    /// by the reader, too large for the memory, or the module that reads clouds cannot be opened; `VeltraniException`
    /// for axes that are none. The cloud and its timestamp stay then.
    bool loadModelPCD(const std::wstring& path, bool force);

    /// Returns the spread of the cloud along its main axis: the square root of the largest eigenvalue of its
    /// covariance, times the current scale. The scale comes on top of the one that the cloud was loaded with: intended,
    /// callers compare widths that were computed so. Throws `pcl::InitFailedException` without a cloud or for fewer
    /// than 3 points, and `VeltraniException` when the module that knows clouds cannot be opened; NaN for a cloud with
    /// a NaN.
    float calcPCDWidth();

    /// Everything but the id as just constructed.
    void clearScreens();

private:
    friend struct ScreenManagerTestAccess;

    static log4cxx::LoggerPtr log;

    using Hash = std::array<unsigned char, 20>;

    /// Reads a mesh into `target`, which stays when the file has the same bytes and `force` is not set, and after a
    /// fault. False for a file that is no valid mesh; `reason`, when given, then receives why.
    bool loadMesh(const std::wstring& path, std::shared_ptr<ScreenGeometry>& target, bool force,
                  std::wstring* reason = nullptr);

    /// Returns the mesh in a file; empty for a file that is no valid mesh, and `reason`, when given, then receives why.
    /// `hash` receives the hash of the bytes of any file that can be read, whatever its name.
    static std::shared_ptr<ScreenGeometry> createMeshScreen(const std::wstring& path, const std::wstring& param1,
                                                            const std::wstring& param2, float scale, Hash& hash,
                                                            std::wstring* reason = nullptr);

    void updateModelPCDTimestamp();

    StrongId<std::string, ScreenIdTag> m_id;
    std::shared_ptr<ScreenGeometry> m_content;
    std::shared_ptr<ScreenGeometry> m_measured;
    std::shared_ptr<PointCloud> m_modelPCD;
    std::wstring m_importTransformParam1;
    std::wstring m_importTransformParam2;
    float m_scale = 1.0F;
    /// Reserved: copied with the screen, not read by the library.
    bool m_reservedFlag = false;
    bool m_screenIsReal = false;
    std::chrono::steady_clock::time_point m_modelPCDTimestamp;
};

#pragma GCC diagnostic pop

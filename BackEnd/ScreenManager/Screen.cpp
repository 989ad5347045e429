#include "ScreenManager/Screen.h"

#include "Common/ExceptionCause.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/ObjLoadException.h"
#include "ScreenManager/detail/CloudLibrary.h"
#include "ScreenManager/detail/PcdCloud.h"

#include <cmath>
#include <new>
#include <string_view>
#include <utility>

log4cxx::LoggerPtr Screen::log = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.Screen");

namespace {

constexpr std::wstring_view DEFAULT_IMPORT_TRANSFORM_PARAM_1 = L"Y";
constexpr std::wstring_view DEFAULT_IMPORT_TRANSFORM_PARAM_2 = L"Z";
constexpr float DEFAULT_SCALE = 1.0F;

constexpr const wchar_t* NO_FACES =
    L"found no faces, expected at least one; export the mesh with its faces, not as points or lines";
constexpr const wchar_t* NO_AREA =
    L"found no face with an area, expected at least one; check the vertices, and the decimals of the export";

VeltraniMissingFileException contentFault(const std::wstring& path) {
    return VeltraniMissingFileException(L"Unable to load screen file. Ensure the screen file " + path +
                                        L" exists and is a valid .obj file.");
}

VeltraniMissingFileException measuredFault(const std::wstring& path) {
    return VeltraniMissingFileException(L"Unable to load measured screen file. Ensure the screen file " + path +
                                        L" exists and is a valid .obj file.");
}

VeltraniMissingFileException cloudFault(const std::wstring& path) {
    return VeltraniMissingFileException(L"Unable to load Point Cloud Data file! Ensure the PCD file " + path +
                                        L" exists and is valid.");
}

std::wstring extensionOf(const std::wstring& path) {
    return path.substr(path.rfind(L'.') + 1);
}

void setReason(std::wstring* reason, const std::wstring& text) {
    if (reason != nullptr) {
        *reason = text;
    }
}

Eigen::Affine3f importTransform(const std::wstring& param1, const std::wstring& param2, float scale) {
    const Matrix<float, 4> world_from_file = OBJScreen::getTransformMatrix(param1, param2, scale);
    Eigen::Affine3f transform;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            transform(r, c) = world_from_file.data()[4 * r + c];
        }
    }
    return transform;
}

}  // namespace

Screen::Screen() : Screen(StrongId<std::string, ScreenIdTag>("Unknown Screen")) {
    updateModelPCDTimestamp();
}

Screen::Screen(StrongId<std::string, ScreenIdTag> id)
    : m_id(std::move(id)),
      m_importTransformParam1(DEFAULT_IMPORT_TRANSFORM_PARAM_1),
      m_importTransformParam2(DEFAULT_IMPORT_TRANSFORM_PARAM_2),
      m_scale(DEFAULT_SCALE) {}

Screen::~Screen() = default;

std::shared_ptr<ScreenGeometry> Screen::getContent() const {
    return m_content;
}

std::shared_ptr<ScreenGeometry> Screen::getMeasured() const {
    return m_measured;
}

std::shared_ptr<ScreenGeometry> Screen::getPreferredScreen() const {
    return m_measured ? m_measured : m_content;
}

std::shared_ptr<Screen::PointCloud> Screen::getModelPCD() const {
    return m_modelPCD;
}

void Screen::setContent(std::shared_ptr<ScreenGeometry> content) {
    m_content = std::move(content);
}

void Screen::setMeasured(std::shared_ptr<ScreenGeometry> measured) {
    m_measured = std::move(measured);
}

std::chrono::steady_clock::time_point Screen::getModelPCDTimestamp() const {
    return m_modelPCDTimestamp;
}

float Screen::getScale() {
    return m_scale;
}

bool Screen::getScreenIsReal() const {
    return m_screenIsReal;
}

void Screen::setModelPCD(std::shared_ptr<PointCloud> cloud) {
    updateModelPCDTimestamp();
    m_modelPCD = std::move(cloud);
}

void Screen::setScale(float scale) {
    if (scale != m_scale) {
        m_scale = scale;
    }
}

void Screen::setImportTransformParams(const std::wstring& param1, const std::wstring& param2) {
    // Copied first: the caller may pass the screen's own texts.
    std::wstring first = param1;
    std::wstring second = param2;
    m_importTransformParam1 = std::move(first);
    m_importTransformParam2 = std::move(second);
}

void Screen::resetTransforms() {
    m_importTransformParam1 = DEFAULT_IMPORT_TRANSFORM_PARAM_1;
    m_importTransformParam2 = DEFAULT_IMPORT_TRANSFORM_PARAM_2;
}

bool Screen::isValid() const {
    return m_content != nullptr;
}

bool Screen::isDualScreen() const {
    return m_content && m_measured && m_content->isValid() && m_measured->isValid();
}

bool Screen::loadContent(const std::wstring& path, bool force) {
    if (path.empty()) {
        m_content = std::make_shared<FlatScreen>();
        return false;
    }
    std::wstring reason;
    try {
        if (loadMesh(path, m_content, force, &reason)) {
            m_screenIsReal = true;
            return true;
        }
    } catch (const std::bad_alloc&) {
        Veltrani::throwWithCause(VeltraniMissingFileException(L"Insufficient memory to load screen file."));
    } catch (const ObjLoadException&) {
        throw;
    } catch (...) {
        Veltrani::throwWithCause(contentFault(path));
    }
    Veltrani::throwWithCause(contentFault(path), reason);
}

bool Screen::loadMeasured(const std::wstring& path, bool force) {
    if (path.empty()) {
        m_measured.reset();
        return false;
    }
    std::wstring reason;
    try {
        if (loadMesh(path, m_measured, force, &reason)) {
            return true;
        }
    } catch (...) {
        Veltrani::throwWithCause(measuredFault(path));
    }
    Veltrani::throwWithCause(measuredFault(path), reason);
}

bool Screen::loadModelPCD(const std::wstring& path, bool /*force*/) {
    if (path.empty()) {
        updateModelPCDTimestamp();
        m_modelPCD.reset();
        return false;
    }
    std::shared_ptr<PointCloud> cloud;
    try {
        cloud = Veltrani::ScreenManagerDetail::PcdCloud::read(Veltrani::RegularFile(Veltrani::toUtf8(path)));
    } catch (...) {
        Veltrani::throwWithCause(cloudFault(path));
    }
    const auto transform = importTransform(m_importTransformParam1, m_importTransformParam2, m_scale);
    Veltrani::ScreenManagerDetail::CloudLibrary::get().transform(*cloud, transform);
    updateModelPCDTimestamp();
    m_modelPCD = std::move(cloud);
    return true;
}

float Screen::calcPCDWidth() {
    return std::sqrt(Veltrani::ScreenManagerDetail::CloudLibrary::get().largestEigenvalue(m_modelPCD)) * m_scale;
}

void Screen::clearScreens() {
    m_scale = DEFAULT_SCALE;
    m_content.reset();
    m_measured.reset();
    m_modelPCD.reset();
    m_screenIsReal = false;
    resetTransforms();
    updateModelPCDTimestamp();
}

bool Screen::loadMesh(const std::wstring& path, std::shared_ptr<ScreenGeometry>& target, bool force,
                      std::wstring* reason) {
    const Hash oldHash = target ? target->getUniqueDataHash() : Hash{};
    Hash newHash{};
    std::shared_ptr<ScreenGeometry> candidate =
        createMeshScreen(path, m_importTransformParam1, m_importTransformParam2, m_scale, newHash, reason);
    if (!candidate || !candidate->isValid()) {
        return false;
    }
    if (newHash != oldHash || force) {
        target = std::move(candidate);
    }
    return true;
}

std::shared_ptr<ScreenGeometry> Screen::createMeshScreen(const std::wstring& path, const std::wstring& param1,
                                                         const std::wstring& param2, float scale, Hash& hash,
                                                         std::wstring* reason) {
    std::string bytes;
    try {
        bytes = Veltrani::RegularFile(Veltrani::toUtf8(path)).readAll();
    } catch (const VeltraniMissingFileException& fault) {
        setReason(reason, fault.message);
        return {};
    }
    hash = MeshScreen::calcUniqueDataHash(bytes);
    if (extensionOf(path) != L"obj") {
        setReason(reason,
                  L"found a name that does not end in \".obj\" (lower case), expected one that does; rename the file");
        return {};
    }
    auto mesh = std::make_shared<OBJScreen>(param1, param2, scale);
    mesh->read(bytes, hash);
    if (!mesh->isValid()) {
        setReason(reason, mesh->mesh().triangles.empty() ? NO_FACES : NO_AREA);
        return {};
    }
    return mesh;
}

void Screen::updateModelPCDTimestamp() {
    m_modelPCDTimestamp = std::chrono::steady_clock::now();
}

#include "ScreenManager/ScreenManager.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/UnitConverter.h"
#include "Configuration/XMLConfigManager.h"
#include "DravixDiagnostics/DravixDiagnostics.h"
#include "KelvoScreen/ScreenShape.h"

#include <array>
#include <exception>
#include <utility>

ScreenManager* ScreenManager::m_instance = nullptr;
log4cxx::LoggerPtr ScreenManager::log = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.ScreenManager");

const std::wstring ScreenManager::k_FAILED_TO_LOAD_SCREEN_FILE = L"Failed to load screen file";
const std::wstring ScreenManager::k_UNABLE_TO_LOAD = L"Unable to load";

namespace {

using Hash = std::array<unsigned char, 20>;

/// The index that every file getter of the screen is called with: its first file.
constexpr int FIRST_FILE = 0;

const IScreenConfig* screenConfigOf(const XMLConfigManager* config) {
    return config != nullptr ? config->getScreenConfig() : nullptr;
}

/// Returns an empty name, which is no shape, without a description.
std::wstring shapeOf(const IScreenConfig* screen) {
    return screen != nullptr ? screen->getShape() : std::wstring();
}

UnitConversionTable::UnitSubType unitOf(const std::wstring& name) {
    return UnitConversionTable::getUnitSubTypeFromName(name);
}

}  // namespace

ScreenManager* ScreenManager::getInstance() {
    if (m_instance == nullptr) {
        m_instance = new ScreenManager();
    }
    return m_instance;
}

void ScreenManager::deleteInstance() {
    if (m_instance == nullptr) {
        return;
    }
    m_instance->m_screen.clearScreens();
    delete m_instance;
    m_instance = nullptr;
}

ScreenManager::ScreenManager() : m_screen(StrongId<std::string, ScreenIdTag>("Singular")) {
    log->info(L"ScreenManager::ScreenManager()");
}

ScreenManager::~ScreenManager() = default;

void ScreenManager::setScreenGeometry(XMLConfigManager* config, bool force) {
    const IScreenConfig* const screen = screenConfigOf(config);
    const bool mesh = ScreenShape::isReadFromFile(screen);
    try {
        setScaleFromXml(config);
        setOrientationXfFromXml(config);
        // Throws without a description of the screen: from here on there is one.
        if (createScreenIfDifferent(config, force)) {
            VELTRANI_LOG(log, Info,
                         L"Successfully loaded Content screen: " +
                             (mesh ? screen->getContentMeshFile(FIRST_FILE) : screen->getShape()));
            if (mesh) {
                archive(screen->getContentMeshFile(FIRST_FILE));
            }
        }
        const std::wstring measured = screen->getMeasuredMeshFile(FIRST_FILE);
        if (m_screen.loadMeasured(measured, force)) {
            VELTRANI_LOG(log, Info, L"Successfully loaded Measured OBJ screen: " + measured);
            archive(measured);
        }
        const std::wstring cloud = screen->getModelPcdFile(FIRST_FILE);
        if (m_screen.loadModelPCD(cloud, force)) {
            VELTRANI_LOG(log, Info, L"Successfully loaded Point Cloud Data screen: " + cloud);
            archive(cloud);
        }
    } catch (const VeltraniException& fault) {
        VELTRANI_LOG(log, Warn, L"Loading screen geometry failed: " + fault.message);
        throw;
    } catch (const std::exception& fault) {
        VELTRANI_LOG(log, Warn, L"Loading screen geometry failed: " + Veltrani::fromUtf8OrBytes(fault.what()));
        throw;
    } catch (...) {
        VELTRANI_LOG(log, Warn, L"Loading screen geometry failed with an unknown exception");
        throw;
    }
}

void ScreenManager::setScreenGeometry(std::shared_ptr<ScreenGeometry> geometry) {
    const std::shared_ptr<ScreenGeometry> content = m_screen.getContent();
    if (content && geometry) {
        const Hash newHash = geometry->getUniqueDataHash();
        if (newHash == content->getUniqueDataHash()) {
            return;
        }
    }
    m_screen.setContent(std::move(geometry));
}

void ScreenManager::updateScreenGeometry(XMLConfigManager* config) {
    const std::shared_ptr<ScreenGeometry> content = m_screen.getContent();
    const IScreenConfig* const description = content ? screenConfigOf(config) : nullptr;
    if (description != nullptr) {
        content->updateGeometry(description);
    }
}

std::shared_ptr<ScreenGeometry> ScreenManager::getScreenGeometry() {
    return m_screen.getPreferredScreen();
}

std::shared_ptr<ScreenGeometry> ScreenManager::getContentModelScreenGeometry() {
    return m_screen.getContent();
}

std::shared_ptr<ScreenGeometry> ScreenManager::getMeasuredScreenGeometry() {
    return m_screen.getMeasured();
}

void ScreenManager::getScreenMatrix(double xMin, double xMax, double yMin, double yMax, int columns, int rows,
                                    std::map<Point<int, 2>, Point<double, 3>>& grid, bool extrapolate) {
    const std::shared_ptr<ScreenGeometry> geometry = getScreenGeometry();
    if (!geometry) {
        log->warn(L"getScreenMatrix(), m_screenGeometry == NULL, object initialization error");
        return;
    }
    for (int row = 0; row < rows; ++row) {
        // Evaluated in this order: other forms of it differ in the last bit.
        const double y = rows == 1 ? yMin : ((yMax - yMin) * row) / (rows - 1) + yMin;
        geometry->sampleHorizontally(y, xMin, xMax, columns, row, grid, extrapolate);
    }
}

Screen& ScreenManager::getScreen() {
    return m_screen;
}

// The id is passed by value, as the callers' interface has it, and is not read.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
Screen& ScreenManager::getScreen(StrongId<std::string, ScreenIdTag> /*id*/) {
    return m_screen;
}

void ScreenManager::resetScreen() {
    m_screen.clearScreens();
}

void ScreenManager::disableDiagnostics() {
    m_diagnosticsEnabled = false;
}

double ScreenManager::getScaleFromXml(XMLConfigManager* config) {
    constexpr int LENGTH = 1;
    const IScreenConfig* const screen = screenConfigOf(config);
    const auto screenUnits = screen != nullptr ? unitOf(screen->getUnitName()) : UnitConversionTable::UNIT_NONE;
    const IUnitsConfig* const native = config != nullptr ? config->getNativeUnitsConfig() : nullptr;
    const auto nativeUnits = native != nullptr ? unitOf(native->getUnitName()) : UnitConversionTable::UNIT_NONE;

    const double scale = screenUnits == UnitConversionTable::UNIT_CUSTOM
                             ? screen->getScale()
                             : UnitConverter<5, 0, 5>(nativeUnits, LENGTH).getNativeFromTarget(1.0, screenUnits);
    // A NaN is returned as it is: the next file is refused with it, and the fault is seen.
    return scale <= 0.0 ? 1.0 : scale;
}

void ScreenManager::setScaleFromXml(XMLConfigManager* config) {
    if (ScreenShape::isReadFromFile(screenConfigOf(config))) {
        m_screen.setScale(static_cast<float>(getScaleFromXml(config)));
    }
}

void ScreenManager::setOrientationXfFromXml(XMLConfigManager* config) {
    const IScreenConfig* const screen = screenConfigOf(config);
    if (ScreenShape::isReadFromFile(screen)) {
        const std::wstring param1 = screen->getImportOrientationParam1();
        const std::wstring param2 = screen->getImportOrientationParam2();
        m_screen.setImportTransformParams(param1, param2);
    }
}

bool ScreenManager::createScreenIfDifferent(XMLConfigManager* config, bool force) {
    const IScreenConfig* const description = screenConfigOf(config);
    const std::wstring shape = shapeOf(description);
    log->info(L"About to createScreenIfDifferent(" + shape + L")...");

    const std::shared_ptr<ScreenGeometry> content = force ? nullptr : m_screen.getContent();
    // Zeros, which no geometry has, stand for "rebuild whatever it is".
    const Hash oldHash = content ? content->getUniqueDataHash() : Hash{};

    if (const ScreenShape* const known = ScreenShape::named(shape)) {
        if (known->isReadFromFile()) {
            return m_screen.loadContent(description->getContentMeshFile(FIRST_FILE), force);
        }
        const bool isDifferent = known->hashOf(description) != oldHash;
        if (isDifferent) {
            m_screen.setContent(known->make(description));
        }
        return isDifferent;
    }
    const std::wstring fault =
        L"ERROR: ScreenManager::createContentScreenIfDifferent(), screen type (" + shape + L") not found";
    log->warn(fault);
    throw VeltraniException(fault);
}

void ScreenManager::archive(const std::wstring& file) const {
    if (m_diagnosticsEnabled) {
        DravixDiagnostics::archiveFileToDataSubDirectory(file);
    }
}

#pragma once

#include "Configuration/XMLConfigFile.h"
#include "ScreenManager/Screen.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

class ProjectorConfig;
class ScreenGeometry;

namespace Veltrani::DisplayReport {

class PointMap;
struct ChannelChoice;
struct SourceFile;

}  // namespace Veltrani::DisplayReport

/// One display as a script holds it: its configuration, its screens, and the maps of its channels.
///
/// The libraries know one screen at a time. A display keeps its own and takes the place of the others in every `Entry`;
/// every operation but the constructor is called inside of one for this display.
class DisplayState {
public:
    /// Which screen of a display is meant.
    enum class Part { PREFERRED, CONTENT, MEASURED };
    /// What x, y, z of a map are.
    enum class Space { LAYOUT, SCREEN };

    explicit DisplayState(std::unique_ptr<XMLConfigFile> config);
    DisplayState(const DisplayState&) = delete;
    DisplayState& operator=(const DisplayState&) = delete;
    ~DisplayState();

    /// Puts the screen of this display into the `ScreenManager` and forgets the target locators of others.
    void makeCurrent();
    /// The libraries hold nothing of this display any more.
    static void clearCurrent();

    [[nodiscard]] XMLConfigFile& config() { return *m_config; }

    /// Throws `VeltraniException`, with the list of channels, where there is no such entry.
    [[nodiscard]] ProjectorConfig& channel(const std::wstring& id);
    [[nodiscard]] Veltrani::DisplayReport::ChannelChoice choice(const std::wstring& id);

    /// The configuration, and the files that it names, each as it is now.
    /// @param path of the configuration
    /// @param digest of its text, which stands for the file unless that holds the same
    [[nodiscard]] std::vector<Veltrani::DisplayReport::SourceFile> sources(const std::string& path,
                                                                           const std::string& digest) const;

    /// To be called after every change: maps are made anew.
    void channelsChanged();
    /// To be called after every change of the shape: screens are made anew, too.
    void screenChanged();

    /// Builds the screens where they are not, or no longer, what the configuration describes. Throws
    /// `VeltraniException` with one fault per line when one of them cannot be built.
    void requireScreen();

    /// Takes over the screens that the libraries hold, which were built of this configuration without a fault.
    void adoptScreen();

    /// Null for a measured screen that the display does not have. Throws what `requireScreen` throws, and
    /// `VeltraniException` without a content screen.
    [[nodiscard]] std::shared_ptr<ScreenGeometry> surface(Part part);

    /// The points of the screen as it was scanned; null without any. Throws what `requireScreen` throws. They are not
    /// changed any more, and stay as long as they are held.
    [[nodiscard]] std::shared_ptr<const Screen::PointCloud> cloud();

    /// The map of a channel, kept until the next change. Throws what its constructor throws.
    [[nodiscard]] Veltrani::DisplayReport::PointMap& mapOf(const std::wstring& id, Space space, bool useCache);

private:
    using MapKey = std::tuple<std::wstring, Space, bool>;

    std::unique_ptr<XMLConfigFile> m_config;
    Screen m_screen;
    bool m_isScreenBuilt = false;
    std::map<MapKey, std::unique_ptr<Veltrani::DisplayReport::PointMap>> m_maps;
};

#include "Layers.h"

#include <array>
#include <regex>
#include <sstream>
#include <string_view>

namespace layers {

namespace {

struct Layer {
    std::string_view library;  ///< first folder of an included name
    std::array<std::string_view, 2> folders;
    int level;
};

// Inside Platform the libraries stand in the order in which they may use each other.
constexpr std::array<Layer, 9> LAYERS{{{"Common", {"Common/", "include/Common/"}, 10},
                                       {"Configuration", {"Platform/Configuration/", ""}, 20},
                                       {"DravixDiagnostics", {"Platform/DravixDiagnostics/", ""}, 21},
                                       {"DeviceFramework2", {"Platform/DeviceFramework2/", ""}, 22},
                                       {"KelvoScreen", {"Platform/KelvoScreen/", ""}, 23},
                                       {"KelvoControl", {"Platform/KelvoControl/", ""}, 24},
                                       {"ScreenManager", {"BackEnd/ScreenManager/", "include/ScreenManager/"}, 30},
                                       {"DisplayReport", {"BackEnd/DisplayReport/", ""}, 40},
                                       {"screenmanager", {"Apps/screenmanager/", ""}, 50}}};

}  // namespace

int ofFile(const std::string& path) {
    for (const Layer& layer : LAYERS) {
        for (const std::string_view folder : layer.folders) {
            if (!folder.empty() && path.starts_with(folder)) {
                return layer.level;
            }
        }
    }
    return -1;
}

int ofInclude(const std::string& name) {
    for (const Layer& layer : LAYERS) {
        if (name.starts_with(std::string(layer.library) + "/")) {
            return layer.level;
        }
    }
    return -1;
}

std::vector<std::string> quotedIncludes(const std::string& text) {
    static const std::regex INCLUDE(R"re(^\s*#\s*include\s*"([^"]+)")re");
    std::vector<std::string> names;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_search(line, match, INCLUDE)) {
            names.push_back(match[1]);
        }
    }
    return names;
}

std::vector<std::string> upwardIncludes(const std::string& path, const std::string& text) {
    std::vector<std::string> faults;
    const int own = ofFile(path);
    if (own < 0) {
        return faults;
    }
    for (const std::string& name : quotedIncludes(text)) {
        if (ofInclude(name) > own) {
            faults.push_back(path + " includes " + name + ", which stands above it");
        }
    }
    return faults;
}

}  // namespace layers

#include "Layers.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <utility>

namespace layers {

namespace {

/// Parts of the C library and the system; every library may use them, no exported header does.
const std::vector<std::string_view> SYSTEM{"arpa",      "dirent.h", "dlfcn.h", "emmintrin.h", "fcntl.h",
                                           "ifaddrs.h", "net",      "netdb.h", "netinet",     "poll.h",
                                           "signal.h",  "sys",      "unistd.h"};

/// The libraries that reports are made from.
const std::vector<std::string_view> BELOW_REPORTS{"Common",       "Configuration", "DeviceFramework2",
                                                  "KelvoControl", "KelvoScreen",   "ScreenManager"};

bool contains(const std::vector<std::string_view>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The first folder of a name, or all of it.
std::string topOf(const std::string& name) {
    return name.substr(0, name.find('/'));
}

/// True for the folder itself and for what lies below it.
bool liesIn(std::string_view name, std::string_view folder) {
    return name.starts_with(folder) && (name.size() == folder.size() || name[folder.size()] == '/');
}

/// The library or the room that an included name belongs to; null for none.
const Library* named(const std::string& name) {
    const auto found = std::find_if(all().begin(), all().end(),
                                    [&name](const Library& library) { return liesIn(name, library.name); });
    return found == all().end() ? nullptr : &*found;
}

bool mayUse(const Library& library, const Library& used) {
    return std::any_of(library.mayUse.begin(), library.mayUse.end(),
                       [&used](std::string_view name) { return liesIn(used.name, name); });
}

/// A room of the library of reports: what it may use beside the libraries below and the rooms that it names.
Library room(std::string_view name, std::vector<std::string_view> folders, std::vector<std::string_view> rooms,
             std::vector<std::string_view> packages) {
    rooms.insert(rooms.end(), BELOW_REPORTS.begin(), BELOW_REPORTS.end());
    return {name, std::move(folders), std::move(rooms), std::move(packages), {}};
}

/// Headers of the C++ library have neither folder nor extension.
bool isOfTheLanguage(const std::string& name) {
    return name.find_first_of("/.") == std::string::npos;
}

std::vector<std::string> matches(const std::string& text, const std::regex& include) {
    std::vector<std::string> names;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_search(line, match, include)) {
            names.push_back(match[1]);
        }
    }
    return names;
}

}  // namespace

const std::vector<Library>& all() {
    static const std::vector<Library> LIBRARIES{
        {"Common", {"Common/", "include/Common/"}, {}, {"libxml", "log4cxx", "openssl", "utf8.h"}, {"log4cxx"}},
        {"Configuration", {"Platform/Configuration/"}, {"Common"}, {"libxml", "utf8.h"}, {}},
        {"DravixDiagnostics", {"Platform/DravixDiagnostics/"}, {"Common"}, {}, {}},
        {"DeviceFramework2", {"Platform/DeviceFramework2/"}, {"Common"}, {"libxml", "openssl"}, {}},
        {"KelvoScreen", {"Platform/KelvoScreen/"}, {"Common", "Configuration"}, {"Eigen", "embree3", "openssl"}, {}},
        {"KelvoControl",
         {"Platform/KelvoControl/"},
         {"Common", "Configuration", "DeviceFramework2", "DravixDiagnostics", "KelvoScreen"},
         {"libxml", "yaml.h"},
         {}},
        {"ScreenManager",
         {"BackEnd/ScreenManager/", "include/ScreenManager/"},
         {"Common", "Configuration", "DeviceFramework2", "DravixDiagnostics", "KelvoControl", "KelvoScreen"},
         {"Eigen", "log4cxx", "pcl"},
         {"log4cxx"}},
        room("DisplayReport/basics", {"BackEnd/DisplayReport/basics/", "include/DisplayReport/basics/"}, {},
             {"nlohmann", "openssl", "png.h"}),
        room("DisplayReport/channels", {"BackEnd/DisplayReport/channels/", "include/DisplayReport/channels/"},
             {"DisplayReport/basics"}, {}),
        room("DisplayReport/coverage", {"BackEnd/DisplayReport/coverage/", "include/DisplayReport/coverage/"},
             {"DisplayReport/basics", "DisplayReport/channels"}, {"nanoflann.hpp", "nlohmann"}),
        room("DisplayReport/maps", {"BackEnd/DisplayReport/maps/", "include/DisplayReport/maps/"},
             {"DisplayReport/basics", "DisplayReport/channels", "DisplayReport/coverage"}, {}),
        room("DisplayReport/targets", {"BackEnd/DisplayReport/targets/", "include/DisplayReport/targets/"},
             {"DisplayReport/basics", "DisplayReport/channels", "DisplayReport/maps"}, {"nlohmann"}),
        room("DisplayReport/check", {"BackEnd/DisplayReport/check/", "include/DisplayReport/check/"},
             {"DisplayReport/basics", "DisplayReport/channels", "DisplayReport/coverage"}, {"pcl"}),
        room("DisplayReport/scene", {"BackEnd/DisplayReport/scene/"},
             {"DisplayReport/basics", "DisplayReport/channels", "DisplayReport/coverage", "DisplayReport/targets"},
             {"meshoptimizer.h", "nlohmann", "openssl", "pcl"}),
        room("DisplayReport/still", {"BackEnd/DisplayReport/still/"}, {"DisplayReport/basics", "DisplayReport/scene"},
             {"cairo-ft.h", "cairo-pdf.h", "cairo-svg.h", "cairo.h", "fontconfig", "fribidi.h", "hb.h"}),
        {"DisplayBlend",
         {"BackEnd/DisplayBlend/", "include/DisplayBlend/"},
         {"Common", "Configuration", "KelvoScreen", "ScreenManager", "DisplayReport/basics", "DisplayReport/coverage"},
         {},
         {}},
        {"DisplayFit",
         {"BackEnd/DisplayFit/", "include/DisplayFit/"},
         {"Common", "Configuration", "KelvoControl", "KelvoScreen", "ScreenManager"},
         {"Eigen", "ceres", "glog"},
         {}},
        {"DisplayExport",
         {"BackEnd/DisplayExport/", "include/DisplayExport/"},
         {"Common", "Configuration", "KelvoControl", "KelvoScreen", "ScreenManager", "DisplayReport/basics",
          "DisplayReport/channels"},
         {},
         {}},
        {"ExportFiles",
         {"BackEnd/ExportFiles/"},
         {"Common", "Configuration", "DisplayBlend", "DisplayExport", "DisplayReport", "KelvoControl", "KelvoScreen"},
         {"nlohmann", "png.h"},
         {}},
        {"DisplayLight",
         {"BackEnd/DisplayLight/"},
         {"Common", "Configuration", "DisplayBlend", "DisplayExport", "DisplayReport", "ExportFiles", "KelvoScreen",
          "ScreenManager"},
         {},
         {}},
        {"ProjectorSession",
         {"BackEnd/ProjectorSession/"},
         {"Common", "Configuration", "DeviceFramework2", "ScreenManager", "DisplayReport/basics"},
         {},
         {}},
        {"FitSession",
         {"BackEnd/FitSession/"},
         {"Common", "Configuration", "DisplayFit", "DisplayReport/basics", "DisplayReport/channels",
          "DisplayReport/scene", "KelvoControl"},
         {"Eigen", "nlohmann"},
         {}},
        {"screenmanager",
         {"Apps/screenmanager/"},
         {"Common", "Configuration", "DeviceFramework2", "DisplayBlend", "DisplayExport", "DisplayFit", "DisplayLight",
          "DisplayReport", "ExportFiles", "FitSession", "ProjectorSession", "ScreenManager"},
         {"CLI", "log4cxx"},
         {}},
        {"python",
         {"Apps/python/"},
         {"Common", "Configuration", "DisplayExport", "DisplayFit", "DisplayReport", "ExportFiles", "FitSession",
          "KelvoScreen", "ScreenManager"},
         {"log4cxx", "pcl", "pthread.h", "pybind11"},
         {}}};
    return LIBRARIES;
}

const Library* ofFile(const std::string& path) {
    for (const Library& library : all()) {
        for (const std::string_view folder : library.folders) {
            if (path.starts_with(folder)) {
                return &library;
            }
        }
    }
    return nullptr;
}

bool isExported(const std::string& path) {
    return (path.starts_with("include/") || path.starts_with("Platform/")) && path.ends_with(".h") &&
           path.find("/detail/") == std::string::npos;
}

std::vector<std::string> quotedIncludes(const std::string& text) {
    static const std::regex INCLUDE(R"re(^\s*#\s*include\s*"([^"]+)")re");
    return matches(text, INCLUDE);
}

std::vector<std::string> systemIncludes(const std::string& text) {
    static const std::regex INCLUDE(R"re(^\s*#\s*include\s*<([^>]+)>)re");
    return matches(text, INCLUDE);
}

std::vector<std::string> faultsOf(const std::string& path, const std::string& text) {
    std::vector<std::string> faults;
    const Library* const own = ofFile(path);
    if (own == nullptr) {
        return faults;
    }
    const bool exported = isExported(path);
    for (const std::string& name : quotedIncludes(text)) {
        const Library* const used = named(name);
        const bool isForeign = used != nullptr && used != own;
        const bool isPrivate = name.find("/detail/") != std::string::npos;
        if (isForeign && !mayUse(*own, *used)) {
            faults.push_back(path + " includes " + name + ", which " + std::string(own->name) + " may not use");
        }
        if (isPrivate && (isForeign || exported)) {
            faults.push_back(path + " includes " + name + ", which is private");
        }
    }
    for (const std::string& name : systemIncludes(text)) {
        const std::string package = topOf(name);
        const bool isAllowed =
            exported ? contains(own->exports, package) : contains(own->packages, package) || contains(SYSTEM, package);
        if (!isOfTheLanguage(name) && !isAllowed) {
            faults.push_back(path + " includes <" + name + ">, which " +
                             (exported ? "is private" : std::string(own->name) + " may not use"));
        }
    }
    return faults;
}

}  // namespace layers

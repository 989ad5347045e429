#include "Common/VeltraniException.h"
#include "ExportFiles/ExportedDisplay.h"
#include "ExportFiles/PlayerWarp.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

/// Any bytes are either read as the manifest of an export, and as a warp, or refused in one line that names the file.

namespace {

using Veltrani::ExportFiles::ExportedChannelView;
using Veltrani::ExportFiles::ExportedDisplay;
using Veltrani::ExportFiles::PlayerWarp;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

void requireRefusal(const std::wstring& message) {
    require(message.compare(0, 4, L"file") == 0, "a refusal names its file");
    require(message.find(L'\n') == std::wstring::npos && message.size() < 2000, "a refusal is one line");
}

void readManifest(std::string_view bytes) {
    try {
        const ExportedDisplay display = ExportedDisplay::parse(bytes, "file", "folder");
        require(!display.views().empty(), "an export has a view");
        for (const ExportedChannelView& view : display.views()) {
            require(view.pixels[0] > 0 && view.pixels[1] > 0, "a picture has a pixel");
            require(std::isfinite(norm(view.frustum.view.forward)), "axes are finite");
            require(view.frustum.left < view.frustum.right, "a frustum has a width");
            for (const auto& file : view.files) {
                require(file.name.find('/') == std::string::npos && !file.name.empty(), "a file lies in the folder");
                require(view.fileOf(file.kind) != nullptr, "a file is found by its kind");
            }
        }
    } catch (const VeltraniParseException& fault) {
        requireRefusal(fault.message);
    }
}

void readWarp(std::string_view bytes, const char* format, const Point<int, 2>& pixels) {
    ExportedChannelView view;
    view.pixels = pixels;
    view.wrapsAround = true;
    try {
        const auto warp = PlayerWarp::parse(bytes, "file", format, view);
        for (const double u : {0.0, 0.3, 1.0}) {
            for (const double v : {0.0, 0.7, 1.0}) {
                static_cast<void>(warp->shownAt({u, v}));
            }
        }
    } catch (const VeltraniParseException& fault) {
        requireRefusal(fault.message);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes{reinterpret_cast<const char*>(data), size};
    readManifest(bytes);
    readWarp(bytes, "pfm", {4, 2});
    readWarp(bytes, "obj", {4, 2});
    readWarp(bytes, "mesh", {4, 2});
    return 0;
}

#pragma once

#include <string_view>

namespace Veltrani::DisplayReport {

/// The script of the page that shows a scene, with the 3D library in it: one classic script, ASCII, without any text
/// that would end its element. Kept beside its sources in `page/`; `page/README.md` describes how to make it anew.
[[nodiscard]] std::string_view viewerScript();

}  // namespace Veltrani::DisplayReport

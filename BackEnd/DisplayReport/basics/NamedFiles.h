#pragma once

#include <string>
#include <vector>

class IScreenConfig;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// The content meshes of a screen, resolved; only the first is ever loaded.
[[nodiscard]] std::vector<std::wstring> contentMeshesOf(const IScreenConfig& screen);

/// Every file that a configuration names, resolved: meshes, cloud, channel maps and the files of projection models.
[[nodiscard]] std::vector<std::wstring> filesOf(const XMLConfigManager& config);

}  // namespace Veltrani::DisplayReport

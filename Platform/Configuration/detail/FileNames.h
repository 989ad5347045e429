#pragma once

#include "Configuration/detail/FolderPath.h"

#include <libxml/tree.h>

#include <string>

/// The names of files in a configuration when it moves to another folder.
namespace Veltrani::ConfigurationDetail::FileNames {

/// Returns what leads from one folder to another, "../dome/", by the places where both are; absolute when they have no
/// folder in common but the root. Empty when they are one.
///
/// Throws `VeltraniException` naming the folder that does not exist.
[[nodiscard]] std::string wayBetween(const FolderPath& from, const FolderPath& to);

/// Puts a text before every relative file name of a checked document.
void prefix(xmlNode* root, const std::string& text);

}  // namespace Veltrani::ConfigurationDetail::FileNames

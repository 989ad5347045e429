#pragma once

#include <string>

namespace Veltrani::DisplayReport {

/// The same JSON, with every character that would steer a terminal (controls beyond ASCII, marks that turn the
/// direction of writing, what is not seen) written as "\u202e", which a reader takes for that character.
/// @param json valid, UTF-8, with the controls of ASCII escaped as JSON wants them
[[nodiscard]] std::string safeForTerminals(std::string json);

}  // namespace Veltrani::DisplayReport

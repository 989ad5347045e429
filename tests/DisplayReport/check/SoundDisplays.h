#pragma once

#include <string>
#include <utility>
#include <vector>

/// Displays that are as they are meant: no rule of the check may find a fault or a warning in them, and every slip of
/// the tests starts from one of them.
namespace sound {

struct Display {
    std::string name;
    std::string text;  ///< the configuration
    /// The files that it names, and what is in them.
    std::vector<std::pair<std::string, std::string>> files;
};

[[nodiscard]] const std::vector<Display>& all();

/// Those of them that hardly occur, and are meant all the same.
[[nodiscard]] std::vector<Display> uncommon();

/// Throws `std::out_of_range` for a name that none has.
[[nodiscard]] const Display& named(const std::string& name);

}  // namespace sound

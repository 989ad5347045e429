#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Configurations that the tests of this folder start from.

/// Every element and attribute there is for a collimated dome, with comments and a vendor's own content.
[[nodiscard]] std::string fullConfiguration();

/// The least that can be read.
[[nodiscard]] std::string smallConfiguration();

/// A display in metres and degrees, each element on its own line from line 2 on, around the given elements.
[[nodiscard]] std::string displayAround(std::string_view elements);

/// As `displayAround`, inside a <Projectors>.
[[nodiscard]] std::string projectors(std::string_view elements);

/// Valid configurations of every shape and kind of target data, together holding every element of the format.
[[nodiscard]] std::vector<std::string> validConfigurations();

/// `text` with the first `before` replaced; throws `std::logic_error` when it does not occur.
[[nodiscard]] std::string replaced(std::string text, std::string_view before, std::string_view after);

/// The lines of the message that a faulty text is refused with, each without "test.xml:"; none when it is accepted.
[[nodiscard]] std::vector<std::string> faultsOf(std::string_view text);

#pragma once

#include <optional>
#include <string>

namespace Veltrani::DeviceFramework2 {

/// The source of the login passwords of projectors. They never come from a snippet, which is shown and stored in the
/// open.
///
/// Searched in this order; the first that knows the projector counts:
///
/// 1. the file that the environment variable `fileVariable` names: one projector per line, its MAC address (plain or in
///    pairs, in either case; or `*` for all others), blanks, the password; blanks around a line do not count, empty
///    lines, those that begin with `#` and a UTF-8 byte-order mark neither. It must be owned by the user (or the
///    administrator), and no other user may have any right to it.
/// 2. the environment variable `variable` + "_" + UID;
/// 3. the environment variable `variable`.
///
/// An empty password counts as none. Everything is read afresh at each login, and nothing is kept.
struct PasswordSource {
    std::string variable = "SCREENMANAGER_PJLINK_PASSWORD";
    std::string fileVariable = "SCREENMANAGER_PJLINK_PASSWORD_FILE";

    /// Throws `DeviceException` of this machine, naming the file and the remedy but nothing of its content, for a file
    /// that cannot be used or has a line that cannot be read, which is named by its number; no line is skipped
    /// silently.
    [[nodiscard]] std::optional<std::string> find(const std::wstring& uid) const;

    /// How a user can provide one, for messages.
    [[nodiscard]] std::wstring remedy() const;
};

}  // namespace Veltrani::DeviceFramework2

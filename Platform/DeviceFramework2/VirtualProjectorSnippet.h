#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

/// The snippet of a virtual projector that replaces a real one. It wraps the real one's snippet:
///
///     <Wrapper><Projector Width='1920' Height='1200'><Device .../></Projector></Wrapper>
///
/// `Width` and `Height` are pixels, 0 when not known. `Input` (optional) is the index of the input that is shown, 0
/// when absent. Nothing but blanks is allowed around the two elements; the wrapped text is any well-formed XML content,
/// empty for an entry that never had a device.
struct VirtualProjectorSnippet {
    /// Throws `DeviceException` naming the snippet, what was found and what was expected.
    [[nodiscard]] static VirtualProjectorSnippet parse(const std::wstring& text);

    int width = 0;
    int height = 0;
    int input = 0;
    std::wstring wrapped;  ///< the text inside `<Projector ...>`, character by character
};

}  // namespace Veltrani::DeviceFramework2
